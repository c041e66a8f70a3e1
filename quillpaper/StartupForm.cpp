#include "quillpaper/StartupForm.h"

#include <cctype>

#include "builder/SeventhEdition.h"
#include "host/Array.h"
#include "host/CallSite.h"
#include "quillpaper/Json.h"

namespace quillpaper {

using namespace QuillFormatAPA;

const char* paperTypeName(int paperType) {
  switch (paperType) {
    case 0: return "undergraduate paper";
    case 1: return "master's thesis";
    case 2: return "doctoral dissertation";
    case 3: return "manuscript for publication";
    default: return "unknown paper type";
  }
}

const char* paperTypeEffect(int paperType) {
  switch (paperType) {
    case 0:
      return "title page with title, author and college; the body opens with the paper's title and Method, "
             "Results and Discussion run on without page breaks";
    case 1:
    case 2:
      return "title page with title, author and college; contents and lists of tables and figures are offered "
             "and on by default; Introduction, Method, Results and Discussion each start a new page";
    case 3:
      return "title page with up to two authors and their affiliations and an author note; the body opens "
             "with the paper's title and Method, Results and Discussion run on without page breaks";
    default: return "";
  }
}

bool isPostgraduate(int paperType) { return paperType == 1 || paperType == 2; }

StartupForm StartupForm::load(const ObjectRef& main2, int edition) {
  Array sections, titles, postGrad, alwaysOn, postgradDefaults;
  int16_t paperType = 3;
  callByName(main2, "getStartupFormSettings", byRef(sections), byRef(titles), byRef(postGrad), byRef(alwaysOn),
             byRef(postgradDefaults), byRef(paperType));
  auto contains = [](const Array& list, int value) {
    if (list.dimensions() != 1) return false;
    for (const Variant& element : list.elements())
      if (element.toInteger() == value) return true;
    return false;
  };
  StartupForm form;
  for (const std::string& record : toStrings(sections)) {
    // An instruction record: the code's digits, then the caption.
    size_t digits = record.starts_with("-") ? 1 : 0;
    while (digits < record.size() && std::isdigit(static_cast<unsigned char>(record[digits]))) ++digits;
    Section s;
    s.index = static_cast<int>(form.sections.size());
    s.code = std::stoi(record.substr(0, digits));
    s.caption = record.substr(digits);
    s.onByDefault = contains(alwaysOn, s.index);
    s.postgraduateOnly = contains(postGrad, s.index);
    s.onByDefaultForPostgraduates = contains(postgradDefaults, s.index);
    form.sections.push_back(s);
  }
  if (titles.dimensions() == 2) {
    for (int32_t p = titles.lowerBound(1); p <= titles.upperBound(1); ++p) {
      std::vector<Field> fields;
      for (int32_t j = titles.lowerBound(2); j <= titles.upperBound(2); ++j) {
        const std::string value = titles.get(p, j).toString();
        if (value.empty()) continue;
        const size_t mark = value.find("^^^");
        fields.push_back(mark == std::string::npos ? Field{value, ""}
                                                   : Field{value.substr(mark + 3), value.substr(0, mark)});
      }
      form.fieldsByPaperType.push_back(fields);
    }
  }
  if (edition == 7) {
    form.edition = 7;
    for (size_t p = 0; p < form.fieldsByPaperType.size(); ++p) {
      form.fieldsByPaperType[p].clear();
      for (const auto& f : QuillFormatAPA::DocumentBuilder::seventh::titleFields(static_cast<int>(p)))
        form.fieldsByPaperType[p].push_back(Field{f.key, f.hint});
    }
  }
  return form;
}

namespace {
std::string squeeze(const std::string& s) {
  std::string out;
  for (char c : s)
    if (std::isalnum(static_cast<unsigned char>(c))) out += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}
}  // namespace

int StartupForm::sectionIndex(const std::string& name) const {
  const std::string wanted = squeeze(name);
  for (const Section& s : sections)
    if (squeeze(s.caption) == wanted) return s.index;
  return -1;
}

bool StartupForm::defaultFor(int index, int paperType) const {
  const Section& s = sections.at(static_cast<size_t>(index));
  if (s.postgraduateOnly) return isPostgraduate(paperType) && s.onByDefaultForPostgraduates;
  return s.onByDefault;
}

std::string StartupForm::text() const {
  std::string out = "APA edition: " + std::to_string(edition) +
                    "\n\nSections (index, caption; default on for paper types 0 1 2 3):\n";
  for (const Section& s : sections) {
    std::string line = (s.index < 10 ? "   " : "  ") + std::to_string(s.index) + "  ";
    line += (s.code == 3 ? "  " : "") + s.caption;
    line.resize(std::max<size_t>(line.size() + 1, 32), ' ');
    for (int p = 0; p <= 3; ++p) line += defaultFor(s.index, p) ? " on " : " -- ";
    if (s.postgraduateOnly) line += "  (postgraduate papers only)";
    out += line + "\n";
  }
  for (size_t p = 0; p < fieldsByPaperType.size(); ++p) {
    out += "\nTitle-page fields, paper type " + std::to_string(p) + " (" + paperTypeName(static_cast<int>(p)) + "):\n";
    for (const Field& f : fieldsByPaperType[p])
      out += "  " + f.caption + (f.hint.empty() ? "" : "\n      " + f.hint) + "\n";
  }
  return out;
}

std::string StartupForm::json() const {
  JsonWriter w;
  w.beginObject();
  w.key("edition").value(edition);
  w.key("sections").beginArray();
  for (const Section& s : sections) {
    w.beginObject();
    w.key("index").value(s.index);
    w.key("caption").value(s.caption);
    w.key("code").value(s.code);
    w.key("nestedInBody").value(s.code == 3);
    w.key("postgraduateOnly").value(s.postgraduateOnly);
    w.key("defaultByPaperType").beginArray();
    for (int p = 0; p <= 3; ++p) w.value(defaultFor(s.index, p));
    w.endArray();
    w.endObject();
  }
  w.endArray();
  w.key("paperTypes").beginArray();
  for (size_t p = 0; p < fieldsByPaperType.size(); ++p) {
    w.beginObject();
    w.key("paperType").value(static_cast<int>(p));
    w.key("name").value(paperTypeName(static_cast<int>(p)));
    w.key("titleFields").beginArray();
    for (const Field& f : fieldsByPaperType[p]) {
      w.beginObject();
      w.key("caption").value(f.caption);
      w.key("hint").value(f.hint);
      w.endObject();
    }
    w.endArray();
    w.endObject();
  }
  w.endArray();
  w.endObject();
  return w.str() + "\n";
}

}  // namespace quillpaper
