// quillpaper new: writes the skeleton of an APA paper as a .docx.
#include <algorithm>
#include <cctype>
#include <fstream>
#include <iostream>
#include <tuple>

#include "builder/SeventhEdition.h"
#include "quillpaper/CommandLine.h"
#include "quillpaper/Commands.h"
#include "quillpaper/DataTables.h"
#include "quillpaper/Paper.h"
#include "quillpaper/StartupForm.h"
#include "quillpaper/StatisticsTables.h"
#include "quillpaper/references/ReferenceInput.h"
#include "strings/StringUtility.h"

namespace quillpaper {

namespace {

constexpr const char* kUsage =
    "usage: quillpaper new [OUTPUT.docx] [options]\n"
    "\n"
    "Writes the skeleton of an APA paper to OUTPUT.docx (default paper.docx): "
    "title page,\n"
    "abstract, introduction, method, results, discussion and references, each "
    "with its\n"
    "headings and hints. Fields left out become placeholders you fill with one "
    "click.\n"
    "\n"
    "  --edition=N    7 (the default): the APA manual's 7th edition; 6: the "
    "6th edition\n"
    "\n"
    "Title page:\n"
    "  --title=TEXT               the paper's title\n"
    "  --author=NAME[:N,...]      an author (repeatable, in byline order); in "
    "the 7th edition\n"
    "                             the numbers say which affiliations the "
    "author belongs to\n"
    "  --affiliation=TEXT         an affiliation: department and university "
    "(repeatable;\n"
    "                             numbered 1, 2, ... in the order given)\n"
    "  --second-author=NAME       a second author (as a second --author)\n"
    "  --second-affiliation=TEXT  the second author's affiliation (as a second "
    "--affiliation)\n"
    "  --college=TEXT             the college that grants the degree (student "
    "papers and theses)\n"
    "  --short-title=TEXT         the running head, at most 50 characters (the "
    "title by\n"
    "                             default; in the 7th edition a professional "
    "paper's only)\n"
    "  --course=TEXT              course number and name (7th edition student "
    "papers)\n"
    "  --instructor=NAME          the instructor (7th edition student papers)\n"
    "  --due-date=TEXT            the assignment's due date (7th edition "
    "student papers)\n"
    "  --font=NAME                the 7th edition's fonts: \"Times New Roman\" "
    "(12 pt, the\n"
    "                             default), Calibri, Arial, Georgia (11 pt) or "
    "\"Lucida Sans\n"
    "                             Unicode\" (10 pt)\n"
    "\n"
    "Kind of paper:\n"
    "  --paper-type=N   0 undergraduate paper: title, author and college on the title page; the\n"
    "                     body opens with the title and runs on without page breaks\n"
    "                   1 master's thesis, 2 doctoral dissertation: title, author and college;\n"
    "                     contents and lists of tables and figures on by default; Introduction,\n"
    "                     Method, Results and Discussion each on a new page\n"
    "                   3 manuscript for publication (the default): authors "
    "with their\n"
    "                     affiliations and an author note; the body runs on "
    "like type 0\n"
    "                   In the 7th edition types 0 to 2 are student papers (no "
    "running head;\n"
    "                   course, instructor and due date on the title page) and "
    "type 3 is a\n"
    "                   professional paper (a running head on every page, the "
    "author note at\n"
    "                   the foot of the title page). The 6th edition names two "
    "authors at most.\n"
    "\n"
    "Sections (by their names on the start-up form; see 'quillpaper form'):\n"
    "  --with=SECTION     include a section, e.g. --with=appendix --with=\"list of tables\"\n"
    "  --without=SECTION  leave one out, e.g. --without=abstract\n"
    "  --chapters=N       start N chapters before the references (theses)\n"
    "  --table=KIND       put a statistics table on the tables page (repeatable; see\n"
    "                     'quillpaper table --list')\n"
    "  --data=FILE        compute the tables named descriptives, correlation, regression,\n"
    "                     anova and ttest from FILE (CSV), with the options of 'quillpaper\n"
    "                     table' (--columns, --by, --missing, --ci, --dv, --iv, --block,\n"
    "                     --between), e.g. --table=correlation --data=scores.csv\n"
    "  --refs=FILE        put the reference list in FILE (one reference a line, any form)\n"
    "                     on the References page, in APA form and order\n"
    "  --no-hints         leave out the hints and sample subsections; keep the placeholders\n";

namespace seventh = QuillFormatAPA::DocumentBuilder::seventh;

const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }

// A font the 7th edition accepts, by its name in any case, with its size in
// points.
std::pair<std::string, int> fontNamed(const std::string& name, int edition) {
  static const std::pair<const char*, int> fonts[] = {
      {"Times New Roman", 12}, {"Calibri", 11}, {"Arial", 11}, {"Georgia", 11}, {"Lucida Sans Unicode", 10}};
  for (const auto& [font, size] : fonts) {
    if (str().lower(font) != str().lower(str().trimmed(name))) continue;
    if (edition == 6 && size != 12)
      throw UsageError("the 6th edition asks for Times New Roman; " + name + " comes with --edition=7");
    return {font, size};
  }
  throw UsageError("--font=" + name +
                   ": the fonts are Times New Roman, Calibri, Arial, Georgia "
                   "and Lucida Sans Unicode");
}

// "Ana Ruiz:1,3": a name and the numbers of the affiliations it belongs to.
std::pair<std::string, std::string> authorAndAffiliations(const std::string& option, int affiliations) {
  const size_t colon = option.rfind(':');
  if (colon == std::string::npos) return {option, ""};
  const std::string numbers = option.substr(colon + 1);
  for (const std::string& n : str().split(numbers, ",", -1)) {
    const std::string t = str().trimmed(n);
    const bool digits =
        !t.empty() && t.size() <= 2 && std::all_of(t.begin(), t.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (!digits || std::stoi(t) < 1 || std::stoi(t) > affiliations)
      throw UsageError("--author=" + option + ": after the colon come affiliation numbers, 1 to " +
                       std::to_string(affiliations) + ", one for each --affiliation");
  }
  return {str().trimmed(option.substr(0, colon)), numbers};
}

// The title page's fields by their keys: "Title", "Author", "2nd Author",
// "Author 3", "Affiliation", "Affiliation 2", "Author 1 Affiliations", ...
std::map<std::string, std::string> titlePageFields(CommandLine& cl, int edition) {
  std::map<std::string, std::string> fields;
  struct Field {
    const char* option;
    const char* key;
    bool seventhOnly;
  };
  const Field single[] = {
      {"title", "Title", false},  {"college", "College", false},      {"short-title", "Short Title", false},
      {"course", "Course", true}, {"instructor", "Instructor", true}, {"due-date", "Due Date", true}};
  for (const Field& f : single) {
    const auto value = cl.option(f.option);
    if (!value) continue;
    if (f.seventhOnly && edition == 6)
      throw UsageError(std::string("--") + f.option + " belongs to the 7th edition's title page (--edition=7)");
    fields[f.key] = *value;
  }

  std::vector<std::string> authors = cl.options("author");
  std::vector<std::string> affiliations = cl.options("affiliation");
  if (const auto second = cl.option("second-author")) authors.push_back(*second);
  if (const auto second = cl.option("second-affiliation")) affiliations.push_back(*second);
  const size_t most = edition == 7 ? seventh::kMostAuthors : 2;
  if (authors.size() > most || affiliations.size() > most)
    throw UsageError("the " + std::string(edition == 7 ? "7th" : "6th") + " edition's title page names " +
                     std::to_string(most) + " authors and " + std::to_string(most) + " affiliations at most");
  for (size_t k = 0; k < affiliations.size(); ++k) {
    // The 6th edition's second affiliation is the second author's.
    const int number = static_cast<int>(k) + 1;
    fields[edition == 6 && number == 2 ? "2nd Author's Affil." : seventh::affiliationKey(number)] = affiliations[k];
  }
  for (size_t k = 0; k < authors.size(); ++k) {
    const int number = static_cast<int>(k) + 1;
    if (edition == 6) {
      fields[seventh::authorKey(number)] = authors[k];
      continue;
    }
    const auto [name, numbers] = authorAndAffiliations(authors[k], static_cast<int>(affiliations.size()));
    fields[seventh::authorKey(number)] = name;
    if (!numbers.empty()) fields[seventh::authorAffiliationsKey(number)] = numbers;
  }
  // A field is one line of the title page: the blanks typed around and within
  // it ("  northfield  college ") are not part of it.
  for (auto& [key, value] : fields) {
    std::string tidy;
    for (char c : value)
      if (!std::isspace(static_cast<unsigned char>(c)))
        tidy += c;
      else if (!tidy.empty() && tidy.back() != ' ')
        tidy += ' ';
    if (!tidy.empty() && tidy.back() == ' ') tidy.pop_back();
    value = tidy;
  }
  return fields;
}

std::set<int> chooseParts(CommandLine& cl, const StartupForm& form, int paperType) {
  std::set<int> parts;
  for (const auto& s : form.sections)
    if (form.defaultFor(s.index, paperType)) parts.insert(s.index);
  auto sectionOf = [&](const std::string& name) {
    const int index = form.sectionIndex(name);
    if (index >= 0) return index;
    std::string known;
    for (const auto& s : form.sections) known += (known.empty() ? "" : ", ") + s.caption;
    throw UsageError("no section is called '" + name + "'; the sections are " + known);
  };
  for (const std::string& name : cl.options("with")) parts.insert(sectionOf(name));
  for (const std::string& name : cl.options("without")) parts.erase(sectionOf(name));
  return parts;
}

}  // namespace

int newCommand(CommandLine& cl, std::ostream& out, std::ostream& err) {
  if (cl.flag("help")) {
    out << kUsage;
    return 0;
  }
  PaperRequest request;
  request.paperType = static_cast<int16_t>(cl.integer("paper-type", 3, 0, 3));
  request.edition = static_cast<int16_t>(cl.edition());
  request.fields = titlePageFields(cl, request.edition);
  if (const auto font = cl.option("font")) std::tie(request.font, request.fontSize) = fontNamed(*font, request.edition);
  request.hints = !cl.flag("no-hints");
  request.chapters = cl.integer("chapters", 0, 0, 50);
  const std::vector<std::string> rest = cl.positional();
  if (rest.size() > 1) throw UsageError("one output file at most, not '" + rest[1] + "'");
  const std::filesystem::path output = rest.empty() ? "paper.docx" : rest.front();
  std::vector<std::filesystem::path> inputs{output};
  const std::optional<std::string> refs = cl.option("refs");
  if (refs) inputs.emplace_back(*refs);
  Session session(cl.diagnostics(inputs));
  const StartupForm form = StartupForm::load(session.main2());
  request.parts = chooseParts(cl, form, request.paperType);
  const std::vector<std::string> tables = cl.options("table");
  const std::optional<DataTableRequest> data = dataTableOptions(cl);
  if (refs) {
    const std::unique_ptr<std::istream> in = openReferenceList(*refs);
    ReferenceReader reader(*in);
    ReferenceLine line;
    while (reader.next(line)) {
      if (line.longLine)
        throw std::runtime_error("line " + std::to_string(line.number) + " of " + *refs + " is longer than " +
                                 std::to_string(kLongestEntry) + " bytes: no reference is");
      request.references.emplace_back(line.number, std::move(line.text));
    }
  }
  cl.finish();
  if (data) {
    std::vector<std::string> kinds;
    std::copy_if(tables.begin(), tables.end(), std::back_inserter(kinds), isDataTableKind);
    if (kinds.empty()) throw UsageError(std::string("--data needs a --table computed from it: ") + kDataTableKinds);
    checkOptionsApply(*data, kinds);
  }
  if (!tables.empty()) {
    const std::vector<TableButton> buttons = tableButtons(session);
    for (const std::string& kind : tables) {
      if (data && isDataTableKind(kind)) {
        try {
          request.tables.push_back({0, buildDataTable(forKind(*data, kind), 0)});
        } catch (const quillstats::DataError& e) {
          err << "quillpaper new: " << e.what() << "\nquillpaper new: nothing was written\n";
          return 1;
        }
        continue;
      }
      const int index = findTableButton(buttons, kind);
      if (index == 0) throw UsageError("no table is called '" + kind + "' (quillpaper table --list shows them)");
      request.tables.push_back({index, nullptr});
    }
    request.parts.insert(form.sectionIndex("Tables"));
  }

  const Paper paper = makePaper(session, request);
  if (const std::string problem = session.errorSummary(); !problem.empty() &&
                                                          session.service().policyStopsOutput()) {
    err << "quillpaper new: " << problem << "\nquillpaper new: nothing was written\n";
    return 1;
  }
  writePaperFile(paper, request, output);
  for (const std::string& note : paper.referenceNotes) err << "quillpaper new: references: " << note << "\n";
  if (!paper.runningHeadNote.empty()) err << "quillpaper new: " << paper.runningHeadNote << "\n";
  if (const std::string problem = session.errorSummary(); !problem.empty())
    err << "quillpaper new: warning: " << problem << "\n";
  out << "wrote " << output.string() << "\n";
  return session.finish(err);
}

}  // namespace quillpaper
