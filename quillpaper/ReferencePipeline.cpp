#include "quillpaper/ReferencePipeline.h"

#include "command/ClassFactory.h"
#include "host/Array.h"
#include "host/CallSite.h"
#include "quillpaper/ReferenceFormatter.h"
#include "quillpaper/ReferenceSource.h"
#include "strings/StringUtility.h"

namespace quillpaper {

namespace {

const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }

// Replaces, case-insensitively, every `from` with `to`.
void replaceNoCase(std::string& text, std::string_view from, std::string_view to) {
  const std::string lower = str().lower(text);
  if (lower.size() != text.size()) return;  // case changes that move bytes: leave the text alone
  std::string out;
  size_t at = 0;
  for (size_t p = lower.find(from); p != std::string::npos; p = lower.find(from, at)) {
    out.append(text, at, p - at);
    out += to;
    at = p + from.size();
  }
  out.append(text, at, std::string::npos);
  text = std::move(out);
}

std::string yearOf(const std::string& date) {
  for (size_t i = 0; i + 4 <= date.size(); ++i)
    if (std::isdigit(static_cast<unsigned char>(date[i])) && std::isdigit(static_cast<unsigned char>(date[i + 1])) &&
        std::isdigit(static_cast<unsigned char>(date[i + 2])) && std::isdigit(static_cast<unsigned char>(date[i + 3])))
      return date.substr(i, 4);
  return date;
}

std::string withoutLabel(std::string text, std::initializer_list<std::string_view> labels) {
  for (std::string_view label : labels)
    if (str().stripLeading(text, label)) return str().trimmed(text);
  return text;
}

// The fields of the parsed entry under the names a reader of the list knows.
// A chapter's book is its container; an author list tagged "(Ed.)" or
// "(Eds.)" names the editors of the work.
void readFields(const ReferenceSource& source, FormattedReference& r) {
  const std::string tag = source.text("editorTag");
  (tag.empty() ? r.authors : r.editors) = source.authors();
  if (r.editors.empty()) r.editors = parseGivenFirstNames(source.text("editorStr"));
  std::string date = source.text("publishDate");
  if (date.empty()) date = source.text("OnlinePublishDate");
  r.year = yearOf(date);
  r.title = source.text("title");
  r.containerTitle = source.text("Periodical");
  if (r.containerTitle.empty()) r.containerTitle = source.text("subwork");
  r.volume = withoutLabel(source.text("volume"), {"Vols.", "Vol."});
  r.issue = source.text("Number");
  r.pages = source.text("pageRange");
  if (r.pages.empty()) r.pages = source.text("BookPageRange");
  r.publisher = source.text("publisher");
  r.place = source.text("place");
  r.edition = source.text("editionBook");
  if (source.addressIsDoi())
    r.doi = source.address();
  else
    r.url = source.url();
}

}  // namespace

std::string tidyEntry(std::string_view raw) {
  std::string text;
  text.reserve(raw.size());
  bool blank = false;
  for (unsigned char c : raw) {
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == 0x0B || c == 0x0C) {
      blank = true;
      continue;
    }
    if (c < 0x20 || c == 0x7F) continue;
    if (blank && !text.empty()) text += ' ';
    blank = false;
    text += static_cast<char>(c);
  }
  if (str().beginsWith(text, "\xEF\xBB\xBF")) text.erase(0, 3);
  for (std::string_view form : {"https://doi.org/", "http://doi.org/", "https://dx.doi.org/", "http://dx.doi.org/",
                                "doi: ", "doi:"})
    replaceNoCase(text, form, "doi:");
  return text;
}

FormattedReference ReferencePipeline::format(std::string_view entry, int line) {
  FormattedReference r;
  r.line = line;
  r.input = std::string(entry);
  const size_t errorsBefore = session_.service().errors().size();
  auto settings = make<FormatterSettings>();
  const ObjectRef main2 = session_.main2();
  std::string text = tidyEntry(entry);
  auto source = make<ReferenceSource>(settings, text);
  if (text.empty()) {
    r.problems.push_back("the entry is empty");
    return r;
  }
  try {
    // The title first, as a periodical reads it; the classifier compares it
    // with the entry and looks for the periodical's mark in it.
    const ObjectRef probe = createObject("QuillFormatAPA.Periodical");
    bool isFootnote = false;
    std::string decorated, subTitle;
    callByName(probe, "FindTitleImpl", text, byRef(isFootnote), byRef(decorated), byRef(subTitle));
    r.type = callByName(main2, "GetReferenceType", text, byRef(decorated), byRef(subTitle), ObjectRef(source)).toInteger();

    const ObjectRef entryObject =
        callByName(main2, "ReferenceBuilder", static_cast<int16_t>(r.type), ObjectRef(settings), "quillpaper").toObject();
    if (!entryObject) {
      r.problems.push_back("no entry class for reference type " + std::to_string(r.type));
      return r;
    }
    ObjectRef sourceObject(source);
    callByName(entryObject, "setDataSource", byRef(sourceObject));
    std::string titleStr = callByName(entryObject, "FindTitleImpl", text, byRef(isFootnote), byRef(decorated),
                                      byRef(subTitle))
                               .toString();
    std::string rest = text;
    callByName(entryObject, "parseEntry", byRef(rest), byRef(titleStr), byRef(isFootnote));

    OutputTemplate& output = settings->output();
    const int last = output.lastIndex();
    if (last < 0) {
      r.problems.push_back("the entry class registered no output template");
      return r;
    }
    Array checks = Array::vector(0, last, VarType::Boolean);
    if (entryObject->idOfName("initChecking") != kUnknownDispId)
      callByName(entryObject, "initChecking", byRef(isFootnote), byRef(checks));
    Array items = Array::vector(0, last, VarType::String);
    Array formatted = Array::vector(0, last, VarType::Object);
    std::vector<Ref<FormattedText>> texts(static_cast<size_t>(last + 1));
    for (int i = 0; i <= last; ++i) {
      texts[static_cast<size_t>(i)] = make<FormattedText>();
      formatted.set(i, ObjectRef(texts[static_cast<size_t>(i)]));
    }
    bool shortened = false;
    callByName(entryObject, "toFormattedStringImpl", byRef(isFootnote), byRef(items), byRef(formatted),
               byRef(shortened));

    std::vector<std::string> plain = toStrings(items);
    std::vector<std::vector<TextRun>> runs;
    std::vector<bool> checking;
    for (int i = 0; i <= last; ++i) {
      runs.push_back(texts[static_cast<size_t>(i)]->runs());
      checking.push_back(checks.get(i).toBool());
    }
    r.runs = output.join(plain, runs, checking);
  } catch (const AutomationError& e) {
    r.problems.push_back(e.what());
  }

  readFields(*source, r);
  // An entry the template is told to keep out of the reference list.
  const std::string disabled = settings->text("disableKey(1)");
  if (!disabled.empty()) {
    const auto eq = disabled.find('=');
    if (eq != std::string::npos && source->text(disabled.substr(0, eq)) == disabled.substr(eq + 1))
      r.excludedBecause = settings->text("disableReason(1)") + " (" + settings->text("disableReference(1)") + ")";
  }

  if (session_.service().errors().size() > errorsBefore)
    r.problems.push_back("the formatting library reported an error (" + session_.service().errors().back().description +
                         " in " + session_.service().errors().back().where + ")");
  if (r.ok() && r.title.empty() && r.authors.empty()) r.problems.push_back("no author and no title found");
  if (r.ok() && (r.year.empty() || r.year == "n.d.") && !str().contains(text, "n.d."))
    r.problems.push_back("no date found: APA writes the year in parentheses after the author, or \"(n.d.)\"");
  if (r.ok() && str().trimmed(r.text()).empty()) r.problems.push_back("nothing could be formatted");
  return r;
}

}  // namespace quillpaper
