#include "quillpaper/references/ReferenceFormatter.h"

#include "quillpaper/references/ReferenceTests.h"
#include "strings/StringUtility.h"

namespace quillpaper {

namespace {

const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }

constexpr std::string_view kCheckingCondition = "=__CALLBACK_FOR_CHECKING__";

// Positional argument `i`; raises "argument not optional" when the caller left it out.
const Variant& argument(Args& args, size_t i) {
  if (i >= args.positional().size()) throw AutomationError(kArgumentNotOptional, "argument " + std::to_string(i + 1));
  return args.positional()[i].deref();
}

std::string positionalText(Args& args, size_t i) {
  return i < args.positional().size() ? args.positional()[i].toString() : std::string();
}

// Appends a separator to the entry so far: a full stop is not doubled after
// one that ends the item ("Harlow, T." and ". (" give "Harlow, T. ("), nor
// after "?" or "!"; blanks before it go.
void appendSeparator(std::vector<TextRun>& runs, std::string_view separator) {
  if (separator.empty()) return;
  const char first = separator.front();
  if (first == '.' || first == ',' || first == ')' || first == ':' || first == ';') {
    while (!runs.empty()) {
      std::string& t = runs.back().text;
      while (!t.empty() && t.back() == ' ') t.pop_back();
      if (!t.empty()) break;
      runs.pop_back();
    }
  }
  if (first == '.' && !runs.empty()) {
    std::string_view t = runs.back().text;
    // A closing quotation mark may follow the item's own punctuation: “… works!”
    if (t.ends_with("\u201D") || t.ends_with("\"")) t.remove_suffix(t.ends_with("\"") ? 1 : 3);
    if (!t.empty() && (t.back() == '.' || t.back() == '?' || t.back() == '!')) separator.remove_prefix(1);
  }
  appendRun(runs, std::string(separator), false);
}

}  // namespace

// ---- ComponentTemplate -------------------------------------------------------------

bool ComponentTemplate::call(const std::string& name, Args& args, Variant&) {
  if (name == "reset") {
    for (size_t i = 0; i < args.positional().size(); ++i)
      setProperty("value(" + std::to_string(i) + ")", args.positional()[i].deref());
    for (const NamedArg& n : args.named()) setProperty(n.name, n.value.deref());
    return true;
  }
  if (name == "cloneforeditors") {
    // The editors' template takes the author template's rules, and its own two flags.
    auto* target = dynamic_cast<ComponentTemplate*>(argument(args, 0).toObject().get());
    if (!target) throw AutomationError(kTypeMismatch, "CloneForEditors needs a component template");
    for (const auto& [k, v] : properties()) target->setProperty(k, v);
    target->setProperty("twoEditorsIsOnlyCaseHaveNoComma", argument(args, 1).deref());
    target->setProperty("reverseEditors", argument(args, 2).deref());
    return true;
  }
  if (name == "cloneforheadingcapitalization") {
    auto* source = dynamic_cast<ComponentTemplate*>(argument(args, 0).toObject().get());
    if (!source) throw AutomationError(kTypeMismatch, "CloneForHeadingCapitalization needs a component template");
    for (const auto& [k, v] : source->properties()) setProperty(k, v);
    setProperty("titleTypes", argument(args, 1).deref());
    return true;
  }
  return false;
}

// ---- OutputTemplate ---------------------------------------------------------------------

bool OutputTemplate::call(const std::string& name, Args& args, Variant& result) {
  if (name == "reset") {
    if (args.positional().empty()) throw AutomationError(kArgumentNotOptional, "Reset: the last item index");
    lastIndex_ = args.positional()[0].toInteger();
    if (lastIndex_ < 0 || lastIndex_ > 63) throw AutomationError(kInvalidProcedureCall, "Reset: last index");
    texts_ = args.positional().size() > 1 ? str().split(args.positional()[1].toString(), "||", -1)
                                          : std::vector<std::string>();
    rows_.clear();
    return true;
  }
  if (name == "add") {
    if (args.positional().size() < 3) throw AutomationError(kArgumentNotOptional, "Add: a row");
    const int item = args.positional()[0].toInteger();
    if (item < 0 || item > lastIndex_) throw AutomationError(kSubscriptOutOfRange, "Add: item " + std::to_string(item));
    Row row;
    row.formatted = args.positional()[1].toBool();
    row.checking = positionalText(args, 2) == kCheckingCondition;
    for (size_t i = 3; i < args.positional().size(); ++i) row.strings.push_back(positionalText(args, i));
    // Prefix, one separator per later item, terminator: twice for a checking row.
    const size_t perSet = static_cast<size_t>(lastIndex_ - item + 2);
    if (row.strings.size() != (row.checking ? 2 * perSet : perSet))
      throw AutomationError(kWrongNumberOfArguments, "Add: row " + std::to_string(item) + " has " +
                                                         std::to_string(row.strings.size()) + " strings, not " +
                                                         std::to_string(row.checking ? 2 * perSet : perSet));
    rows_[item] = std::move(row);
    return true;
  }
  if (name == "isyear") {
    result = isYearText(positionalText(args, 0));
    return true;
  }
  if (name == "ispage") {
    result = isPageText(positionalText(args, 0));
    return true;
  }
  return false;
}

bool OutputTemplate::isFormatted(int item) const {
  auto it = rows_.find(item);
  return it != rows_.end() && it->second.formatted;
}

std::vector<TextRun> OutputTemplate::join(const std::vector<std::string>& plain,
                                          const std::vector<std::vector<TextRun>>& formatted,
                                          const std::vector<bool>& checks) const {
  auto content = [&](int i) {
    std::vector<TextRun> runs;
    const size_t k = static_cast<size_t>(i);
    if (isFormatted(i)) {
      if (k < formatted.size()) runs = formatted[k];
    } else if (k < plain.size() && !str().trimmed(plain[k]).empty()) {
      appendRun(runs, str().trimmed(plain[k]), false);
    }
    return runs;
  };
  std::vector<int> present;
  std::map<int, std::vector<TextRun>> contents;
  for (int i = 0; i <= lastIndex_; ++i) {
    std::vector<TextRun> c = content(i);
    if (!str().trimmed(plainText(c)).empty() && rows_.count(i)) {
      present.push_back(i);
      contents[i] = std::move(c);
    }
  }
  std::vector<TextRun> out;
  for (size_t k = 0; k < present.size(); ++k) {
    const int i = present[k];
    const Row& row = rows_.at(i);
    const size_t perSet = static_cast<size_t>(lastIndex_ - i + 2);
    const bool second = row.checking && static_cast<size_t>(i) < checks.size() && checks[static_cast<size_t>(i)];
    const std::string* set = row.strings.data() + (second ? perSet : 0);
    if (k == 0) appendRun(out, set[0], false);
    for (const TextRun& r : contents[i]) appendRun(out, r.text, r.italic);
    if (k + 1 < present.size())
      appendSeparator(out, set[1 + static_cast<size_t>(present[k + 1] - i - 1)]);
    else
      appendSeparator(out, set[perSet - 1]);
  }
  return out;
}

// ---- FormatterSettings -----------------------------------------------------------------

ComponentTemplate& FormatterSettings::component(int index) {
  Ref<ComponentTemplate>& c = components_[index];
  if (!c) c = make<ComponentTemplate>();
  return *c;
}

AuthorStyle FormatterSettings::authorStyle() {
  AuthorStyle style;
  ComponentTemplate& authors = component(0);
  auto number = [&](const char* name, int fallback) {
    const Variant v = authors.property(name);
    return v.isEmpty() ? fallback : v.toInteger();
  };
  if (const std::string and_ = authors.text("andSeparator"); !and_.empty()) style.andSeparator = and_;
  style.etAlFrom = number("numAuthorsToTriggerEtAl", style.etAlFrom);
  style.etAlShown = number("numAuthorsInEtAl", style.etAlShown);
  if (const Variant e = authors.property("etAlUsesElipses"); !e.isEmpty()) style.ellipsis = e.toBool();
  if (const Variant i = authors.property("initialsOnly"); !i.isEmpty()) style.initialsOnly = i.toBool();
  return style;
}

bool FormatterSettings::readComputed(const std::string& key, Variant& value) const {
  if (key == "outputtemplate") {
    value = ObjectRef(output_);
    return true;
  }
  if (key == "citationoutputtemplate") {
    value = ObjectRef(citation_);
    return true;
  }
  if (key.starts_with("outputtemplates(") && key.ends_with(")")) {
    double index = 0;
    if (!parseNumber(key.substr(16, key.size() - 17), index) || index < 0 || index > 99)
      throw AutomationError(kSubscriptOutOfRange, key);
    Ref<ComponentTemplate>& c = components_[static_cast<int>(index)];
    if (!c) c = make<ComponentTemplate>();
    value = ObjectRef(c);
    return true;
  }
  return false;
}

bool FormatterSettings::writeComputed(const std::string& key, const Variant&) {
  if (key == "outputtemplate" || key == "citationoutputtemplate" || key.starts_with("outputtemplates("))
    throw AutomationError(kWrongNumberOfArguments, key + " cannot be assigned");
  return false;
}

}  // namespace quillpaper
