#include "quillpaper/ReferenceSource.h"

#include <cctype>

#include "quillpaper/ReferenceTests.h"
#include "strings/StringUtility.h"

namespace quillpaper {

namespace {

const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }

// Whether `content` (between parentheses) is the date of an APA reference:
// a year, "n.d.", "in press", or a year with month, day or season.
bool isDateGroup(std::string_view content) {
  if (content == "n.d." || content == "in press" || content == "In press") return true;
  if (content.size() < 4 || content.size() > 40) return false;
  for (size_t i = 0; i < 4; ++i)
    if (content[i] < '0' || content[i] > '9') return false;
  return content.size() == 4 || content[4] == ',' || (content.size() == 5 && std::isalpha(static_cast<unsigned char>(content[4]))) ||
         content[4] == '-' || content.substr(4, 3) == "\xE2\x80\x93";
}

// The position of the blank before the reference's date group, or npos.
size_t dateGroup(std::string_view text) {
  // A date is short: only the next 41 characters are looked at for its ")".
  for (size_t at = text.find(" ("); at != std::string_view::npos; at = text.find(" (", at + 1)) {
    const size_t close = text.substr(at + 2, 41).find(')');
    if (close != std::string_view::npos && isDateGroup(text.substr(at + 2, close))) return at;
  }
  return std::string_view::npos;
}

// The editor tags an author list may carry: "(Ed.)", "(Eds.)", "(Comp.)", "(Comps.)".
std::string takeEditorTag(std::string& authors) {
  for (const char* tag : {"(Eds.)", "(Ed.)", "(Comps.)", "(Comp.)"}) {
    std::string t = str().trimmed(authors);
    str().stripTrailing(t, ".");
    if (str().stripTrailing(t, tag)) {
      authors = str().trimmed(t);
      return std::string(tag).substr(1, std::string(tag).size() - 2);
    }
  }
  return {};
}

}  // namespace

bool ReferenceSource::addressIsDoi() const { return str().beginsWith(address_, "10."); }

// An address may follow the name of its site: "Agency website: i.org/x".
std::pair<std::string, std::string> ReferenceSource::labelAndAddress() const {
  const size_t blank = address_.rfind(' ');
  if (blank == std::string::npos) return {"", address_};
  return {address_.substr(0, blank + 1), address_.substr(blank + 1)};
}

std::string ReferenceSource::url() const {
  const std::string address = labelAndAddress().second;
  if (address.empty() || addressIsDoi()) return {};
  // The parser takes "http://" off; an address typed without it stays so.
  if (str().contains(address, "://") || (!str().contains(entry_, "http://" + address) && str().contains(entry_, address)))
    return address;
  if (!str().contains(address, ".")) return {};
  return "http://" + address;
}

std::string ReferenceSource::retrievalStatement() const {
  if (address_.empty()) return {};
  if (addressIsDoi()) return "doi:" + address_;
  const std::string where = url().empty() ? address_ : labelAndAddress().first + url();
  const std::string accessDate = text("accessDate");
  if (!accessDate.empty() && !settings_->text("accessDateFormat").empty())
    return "Retrieved " + accessDate + ", from " + where;
  return "Retrieved from " + where;
}

bool ReferenceSource::readComputed(const std::string& key, Variant& value) const {
  if (key == "website") {
    value = retrievalStatement();
    return true;
  }
  if (key == "isnewspaper") {
    value = text("periodicalType") == "Newspaper";
    return true;
  }
  if (key == "defaultoutputtemplate") {
    value = ObjectRef(tests_);
    return true;
  }
  return false;
}

bool ReferenceSource::writeComputed(const std::string& key, const Variant& value) {
  if (key == "website") {
    address_ = str().trimmed(value.toString());
    return true;
  }
  if (key == "author") {
    // The author list as written; its names for the author string.
    authors_ = parseNames(value.toString(), &authorsShortened_);
    return false;
  }
  return false;
}

bool ReferenceSource::call(const std::string& name, Args& args, Variant& result) {
  if (name == "authorstr") {
    std::string list = formatNames(authors_, settings_->authorStyle(), authorsShortened_);
    const std::string tag = text("editorTag");
    if (!list.empty() && !tag.empty()) list += " (" + tag + ")";
    result = list;
    return true;
  }
  if (name == "titlestr") {
    result = text("title");
    return true;
  }
  if (name == "isyear") {
    result = isYearText(args.positional().empty() ? "" : args.positional()[0].toString());
    return true;
  }
  if (name == "parsecommon") {
    if (args.positional().size() < 2) throw AutomationError(kArgumentNotOptional, "parseCommon(mode, str)");
    Variant& slot = args.positional()[1].deref();
    std::string text = slot.toString();
    result = parseCommon(static_cast<int>(args.positional()[0].toInteger()), text);
    if (args.positional()[1].isByRef()) slot = text;
    return true;
  }
  return false;
}

// Mode 0 reads an author alone ("Smith, J." of a personal communication)
// when no date follows it; the other modes need the date.
std::string ReferenceSource::parseCommon(int mode, std::string& text) {
  std::string s = str().trimmed(text);
  if (s.empty() || s[0] == '(' || s[0] == '[') return {};
  size_t at = dateGroup(s);
  if (at == std::string::npos && mode != 0) return {};
  if (at == std::string::npos) at = s.size();
  std::string authors = s.substr(0, at);
  setProperty("editorTag", takeEditorTag(authors));
  setProperty("author", authors);
  text = at < s.size() ? s.substr(at + 1) : std::string();
  return authors;
}

}  // namespace quillpaper
