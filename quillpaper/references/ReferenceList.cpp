#include "quillpaper/references/ReferenceList.h"

#include <sstream>

#include "host/CallSite.h"
#include "quillpaper/Json.h"
#include "quillpaper/PaperFormat.h"
#include "quillpaper/SettingsDictionary.h"
#include "quillpaper/docx/DocxWriter.h"
#include "strings/StringUtility.h"

namespace quillpaper {

namespace {

const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }

bool listed(const FormattedReference& r) { return r.excludedBecause.empty(); }

// The runs to write: the formatted entry, or the entry as typed.
std::vector<TextRun> shown(const FormattedReference& r) {
  if (r.ok()) return r.runs;
  return {{r.input, false}};
}

std::string sortKey(const FormattedReference& r) {
  std::string key;
  // The names that open the entry: its authors, or the editors of an edited book.
  const std::vector<PersonName>& lead = r.editorsLead ? r.editors : r.authors;
  if (!lead.empty()) {
    for (const PersonName& n : lead) key += n.family + " " + n.given + "\x01";
  } else {
    std::string title = r.ok() ? r.title : r.input;
    for (const char* article : {"The ", "An ", "A "})
      if (str().stripLeading(title, article)) break;
    key = title + "\x01";
  }
  // Letter by letter: case and punctuation do not count.
  std::string folded;
  for (char c : str().lower(key))
    if (std::isalnum(static_cast<unsigned char>(c)) || static_cast<unsigned char>(c) >= 0x80 || c == '\x01')
      folded += c;
  const std::string year = r.year == "n.d." || r.year.empty() ? "0000" : r.year;
  return folded + "\x02" + year + "\x02" + str().lower(r.title);
}

std::string htmlEscape(std::string_view s) {
  std::string out;
  for (char c : s) {
    switch (c) {
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '&': out += "&amp;"; break;
      case '"': out += "&quot;"; break;
      default: out += c;
    }
  }
  return out;
}

std::string markdownEscape(std::string_view s) {
  std::string out;
  for (char c : s) {
    if (c == '*' || c == '_' || c == '\\' || c == '[' || c == ']' || c == '`') out += '\\';
    out += c;
  }
  return out;
}

// A run in Markdown: blanks stay outside the emphasis, as Markdown wants them.
std::string markdownRun(const TextRun& run) {
  const std::string& t = run.text;
  if (!run.italic || str().trimmed(t).empty()) return markdownEscape(t);
  const size_t lead = t.find_first_not_of(' ');
  const size_t tail = t.find_last_not_of(' ');
  return t.substr(0, lead) + "*" + markdownEscape(t.substr(lead, tail - lead + 1)) + "*" + t.substr(tail + 1);
}

void names(JsonWriter& w, const std::vector<PersonName>& list) {
  w.beginArray();
  for (const PersonName& n : list) {
    w.beginObject();
    w.key("family").value(n.family);
    w.key("given").value(n.given);
    w.endObject();
  }
  w.endArray();
}

// One entry as a line of JSON: its line number, type, fields, the text shown,
// its runs, its problems and, for an entry left out, the reason.
std::string jsonLine(const FormattedReference& r) {
  JsonWriter w;
  w.beginObject();
  w.key("line").value(r.line);
  w.key("input").value(r.input);
  w.key("type").value(r.type);
  w.key("reader").value(r.reader);
  if (r.reader != "apa" || r.readerConfidence != 0) w.key("reader_confidence").value(r.readerConfidence);
  w.key("fields").beginObject();
  w.key("authors");
  names(w, r.authors);
  w.key("editors");
  names(w, r.editors);
  const std::pair<const char*, const std::string*> scalars[] = {
      {"year", &r.year},     {"title", &r.title},         {"container_title", &r.containerTitle},
      {"volume", &r.volume}, {"issue", &r.issue},         {"pages", &r.pages},
      {"publisher", &r.publisher}, {"publisher_place", &r.place}, {"edition", &r.edition},
      {"doi", &r.doi},       {"url", &r.url}};
  for (const auto& [name, value] : scalars)
    if (!value->empty()) w.key(name).value(*value);
  w.endObject();
  w.key("formatted_text").value(plainText(shown(r)));
  w.key("runs").beginArray();
  for (const TextRun& run : shown(r)) {
    w.beginObject();
    w.key("text").value(run.text);
    w.key("italic").value(run.italic);
    w.endObject();
  }
  w.endArray();
  w.key("problems").beginArray();
  for (const std::string& p : r.problems) w.value(p);
  w.endArray();
  if (!r.excludedBecause.empty()) w.key("excluded").value(r.excludedBecause);
  w.endObject();
  return w.str();
}

}  // namespace

void sortReferenceList(std::vector<FormattedReference>& references) {
  std::vector<std::pair<std::string, size_t>> keys;
  keys.reserve(references.size());
  for (size_t i = 0; i < references.size(); ++i) keys.emplace_back(sortKey(references[i]), i);
  std::stable_sort(keys.begin(), keys.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<FormattedReference> sorted;
  sorted.reserve(references.size());
  for (const auto& [key, i] : keys) sorted.push_back(std::move(references[i]));
  references = std::move(sorted);
}

void ReferenceListWriter::begin() {
  if (format_ != ListFormat::Html) return;
  out_ << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>References</title>\n"
          "<style>body{font-family:\"Times New Roman\",serif;font-size:12pt;line-height:2;max-width:6.5in;"
          "margin:1in auto}h1{font-size:12pt;font-weight:normal;text-align:center}"
          "p.reference{margin:0;padding-left:0.5in;text-indent:-0.5in}</style>\n</head>\n<body>\n"
          "<h1>References</h1>\n";
}

void ReferenceListWriter::end() {
  if (format_ == ListFormat::Html) out_ << "</body>\n</html>\n";
}

void ReferenceListWriter::add(const FormattedReference& r) {
  if (format_ == ListFormat::Json) {
    out_ << jsonLine(r) << "\n";
    return;
  }
  if (!listed(r)) return;
  switch (format_) {
    case ListFormat::Text: out_ << plainText(shown(r)) << "\n"; break;
    case ListFormat::Html:
      out_ << "<p class=\"reference\">";
      for (const TextRun& run : shown(r))
        out_ << (run.italic ? "<i>" : "") << htmlEscape(run.text) << (run.italic ? "</i>" : "");
      out_ << "</p>\n";
      break;
    case ListFormat::Markdown:
      for (const TextRun& run : shown(r)) out_ << markdownRun(run);
      out_ << "\n\n";
      break;
    case ListFormat::Json: break;
  }
}

void ReferenceListWriter::beginAsTyped(int line, const std::string& problem) {
  problem_ = problem;
  switch (format_) {
    case ListFormat::Json: out_ << "{\"line\":" << line << ",\"type\":-1,\"formatted_text\":\""; break;
    case ListFormat::Html: out_ << "<p class=\"reference\">"; break;
    default: break;
  }
}

void ReferenceListWriter::asTypedPiece(std::string_view piece) {
  switch (format_) {
    case ListFormat::Text: out_ << piece; break;
    case ListFormat::Html: out_ << htmlEscape(piece); break;
    case ListFormat::Markdown: out_ << markdownEscape(piece); break;
    case ListFormat::Json: out_ << JsonWriter::escape(piece); break;
  }
}

void ReferenceListWriter::endAsTyped() {
  switch (format_) {
    case ListFormat::Text: out_ << "\n"; break;
    case ListFormat::Html: out_ << "</p>\n"; break;
    case ListFormat::Markdown: out_ << "\n\n"; break;
    case ListFormat::Json: out_ << "\",\"problems\":[" << JsonWriter::quote(problem_) << "]}\n"; break;
  }
}

void writeList(ListFormat format, const std::vector<FormattedReference>& references, std::ostream& out) {
  ReferenceListWriter w(format, out);
  w.begin();
  for (const FormattedReference& r : references) w.add(r);
  w.end();
}

namespace {

// An entry of the list; one kept as typed says why beside it.
doc::Paragraph paragraphOf(const std::vector<TextRun>& runs, const std::string& keptBecause) {
  doc::Paragraph p;
  p.style = doc::Style::Bibliography;
  for (const TextRun& run : runs) {
    doc::Inline i;
    i.text = run.text;
    i.italic = run.italic;
    p.inlines.push_back(std::move(i));
  }
  if (!keptBecause.empty()) {
    doc::Inline remark;
    remark.kind = doc::Inline::Kind::Remark;
    remark.text = "Kept as typed: " + keptBecause;
    p.inlines.push_back(std::move(remark));
  }
  return p;
}

std::string keptBecause(const FormattedReference& r) { return r.ok() ? "" : r.problems.front(); }

}  // namespace

std::vector<doc::Paragraph> referenceParagraphs(const std::vector<FormattedReference>& references) {
  std::vector<doc::Paragraph> paragraphs;
  for (const FormattedReference& r : references)
    if (listed(r)) paragraphs.push_back(paragraphOf(shown(r), keptBecause(r)));
  return paragraphs;
}

void SortedReferenceList::add(const FormattedReference& r) {
  Entry e;
  e.key = sortKey(r);
  if (format_) {
    std::ostringstream shown;
    ReferenceListWriter(*format_, shown).add(r);
    e.shown = shown.str();
  } else if (listed(r)) {
    e.runs = shown(r);
    e.keptBecause = keptBecause(r);
  } else {
    return;
  }
  entries_.push_back(std::move(e));
}

void SortedReferenceList::sort() {
  std::stable_sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) { return a.key < b.key; });
}

void SortedReferenceList::write(std::ostream& out) {
  sort();
  ReferenceListWriter w(format_.value_or(ListFormat::Text), out);
  w.begin();
  for (const Entry& e : entries_) out << e.shown;
  w.end();
}

std::vector<doc::Paragraph> SortedReferenceList::paragraphs() {
  sort();
  std::vector<doc::Paragraph> out;
  out.reserve(entries_.size());
  for (Entry& e : entries_) {
    out.push_back(paragraphOf(e.runs, e.keptBecause));
    e.runs.clear();
    e.runs.shrink_to_fit();
  }
  return out;
}

void writeReferenceListDocx(std::vector<doc::Paragraph> paragraphs, Session& session,
                            const std::filesystem::path& path, int edition) {
  auto settings = make<SettingsDictionary>();
  if (edition == 7) settings->Add("APAEdition", Variant(int16_t{7}));
  callByName(session.main2(), "getMetaData", ObjectRef(settings));
  doc::Document document;
  auto section = std::make_shared<doc::Section>();
  auto page = std::make_shared<doc::Page>();
  page->part = -1;
  doc::PageWriter w(*page);
  w.setStyle(doc::Style::Heading1);
  // The label of the list, centred; bold in the 7th edition, not in the 6th.
  w.text("References\r\n", edition != 7);
  page->trimEnd();  // the entries follow the heading, with no blank line between
  for (doc::Paragraph& p : paragraphs) page->blocks.emplace_back(std::move(p));
  paragraphs.clear();
  section->pages.push_back(page);
  document.sections.push_back(section);
  docx::PaperOptions options;
  options.title = "References";
  options.format = PaperFormat::fromSettings(*settings, false);
  options.editingHints = false;
  docx::writePaper(docx::Layout::of(document, [](int) { return true; }), options, path);
}

}  // namespace quillpaper
