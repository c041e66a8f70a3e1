#include "quillpaper/ReferenceList.h"

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
  if (!r.authors.empty()) {
    for (const PersonName& n : r.authors) key += n.family + " " + n.given + "\x01";
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

}  // namespace

void sortReferenceList(std::vector<FormattedReference>& references) {
  std::stable_sort(references.begin(), references.end(),
                   [](const FormattedReference& a, const FormattedReference& b) { return sortKey(a) < sortKey(b); });
}

void writeText(const std::vector<FormattedReference>& references, std::ostream& out) {
  for (const FormattedReference& r : references)
    if (listed(r)) out << plainText(shown(r)) << "\n";
}

void writeHtml(const std::vector<FormattedReference>& references, std::ostream& out) {
  out << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>References</title>\n"
         "<style>body{font-family:\"Times New Roman\",serif;font-size:12pt;line-height:2;max-width:6.5in;"
         "margin:1in auto}h1{font-size:12pt;font-weight:normal;text-align:center}"
         "p.reference{margin:0;padding-left:0.5in;text-indent:-0.5in}</style>\n</head>\n<body>\n"
         "<h1>References</h1>\n";
  for (const FormattedReference& r : references) {
    if (!listed(r)) continue;
    out << "<p class=\"reference\">";
    for (const TextRun& run : shown(r))
      out << (run.italic ? "<i>" : "") << htmlEscape(run.text) << (run.italic ? "</i>" : "");
    out << "</p>\n";
  }
  out << "</body>\n</html>\n";
}

void writeMarkdown(const std::vector<FormattedReference>& references, std::ostream& out) {
  for (const FormattedReference& r : references) {
    if (!listed(r)) continue;
    for (const TextRun& run : shown(r)) {
      // Blanks stay outside the emphasis, as Markdown wants them.
      const std::string t = run.text;
      if (!run.italic || str().trimmed(t).empty()) {
        out << markdownEscape(t);
        continue;
      }
      const size_t lead = t.find_first_not_of(' ');
      const size_t tail = t.find_last_not_of(' ');
      out << t.substr(0, lead) << "*" << markdownEscape(t.substr(lead, tail - lead + 1)) << "*" << t.substr(tail + 1);
    }
    out << "\n\n";
  }
}

void writeJsonLines(const std::vector<FormattedReference>& references, std::ostream& out) {
  for (const FormattedReference& r : references) {
    JsonWriter w;
    w.beginObject();
    w.key("line").value(r.line);
    w.key("input").value(r.input);
    w.key("type").value(r.type);
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
    out << w.str() << "\n";
  }
}

std::vector<doc::Paragraph> referenceParagraphs(const std::vector<FormattedReference>& references) {
  std::vector<doc::Paragraph> paragraphs;
  for (const FormattedReference& r : references) {
    if (!listed(r)) continue;
    doc::Paragraph p;
    p.style = doc::Style::Bibliography;
    for (const TextRun& run : shown(r)) {
      doc::Inline i;
      i.text = run.text;
      i.italic = run.italic;
      p.inlines.push_back(std::move(i));
    }
    paragraphs.push_back(std::move(p));
  }
  return paragraphs;
}

void writeReferenceListDocx(const std::vector<FormattedReference>& references, Session& session,
                            const std::filesystem::path& path) {
  auto settings = make<SettingsDictionary>();
  callByName(session.main2(), "getMetaData", ObjectRef(settings));
  doc::Document document;
  auto section = std::make_shared<doc::Section>();
  auto page = std::make_shared<doc::Page>();
  page->part = -1;
  doc::PageWriter w(*page);
  w.setStyle(doc::Style::Heading1);
  // The label of the list, centred and not bold, as APA sets it.
  w.text("References\r\n", true);
  for (doc::Paragraph& p : referenceParagraphs(references)) page->blocks.emplace_back(std::move(p));
  section->pages.push_back(page);
  document.sections.push_back(section);
  docx::PaperOptions options;
  options.title = "References";
  options.format = PaperFormat::fromSettings(*settings, false);
  options.editingHints = false;
  docx::writePaper(docx::Layout::of(document, [](int) { return true; }), options, path);
}

}  // namespace quillpaper
