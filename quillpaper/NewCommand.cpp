// quillpaper new: writes the skeleton of an APA paper as a .docx.
#include <fstream>
#include <iostream>

#include "quillpaper/CommandLine.h"
#include "quillpaper/Commands.h"
#include "quillpaper/Paper.h"
#include "quillpaper/references/ReferenceInput.h"
#include "quillpaper/StartupForm.h"
#include "quillpaper/StatisticsTables.h"

namespace quillpaper {

namespace {

constexpr const char* kUsage =
    "usage: quillpaper new [OUTPUT.docx] [options]\n"
    "\n"
    "Writes the skeleton of an APA paper (6th edition) to OUTPUT.docx (default paper.docx):\n"
    "title page, abstract, introduction, method, results, discussion and references, each\n"
    "with its headings and hints. Fields left out become placeholders you fill with one click.\n"
    "\n"
    "Title page:\n"
    "  --title=TEXT               the paper's title (also the running head, in capitals)\n"
    "  --author=NAME              the (first) author\n"
    "  --second-author=NAME       a second author (manuscripts)\n"
    "  --affiliation=TEXT         the first author's institution (manuscripts)\n"
    "  --second-affiliation=TEXT  the second author's institution (manuscripts)\n"
    "  --college=TEXT             the college that grants the degree (student papers and theses)\n"
    "\n"
    "Kind of paper:\n"
    "  --paper-type=N   0 undergraduate paper: title, author and college on the title page; the\n"
    "                     body opens with the title and runs on without page breaks\n"
    "                   1 master's thesis, 2 doctoral dissertation: title, author and college;\n"
    "                     contents and lists of tables and figures on by default; Introduction,\n"
    "                     Method, Results and Discussion each on a new page\n"
    "                   3 manuscript for publication (the default): up to two authors with their\n"
    "                     affiliations and an author note; the body runs on like type 0\n"
    "\n"
    "Sections (by their names on the start-up form; see 'quillpaper form'):\n"
    "  --with=SECTION     include a section, e.g. --with=appendix --with=\"list of tables\"\n"
    "  --without=SECTION  leave one out, e.g. --without=abstract\n"
    "  --chapters=N       start N chapters before the references (theses)\n"
    "  --table=KIND       put a statistics table on the tables page (repeatable; see\n"
    "                     'quillpaper table --list')\n"
    "  --refs=FILE        put the reference list in FILE (one reference a line, any form)\n"
    "                     on the References page, in APA form and order\n"
    "  --no-hints         leave out the hints and sample subsections; keep the placeholders\n";

std::map<std::string, std::string> fieldOptions() {
  return {{"title", "Title"},
          {"author", "Author"},
          {"second-author", "2nd Author"},
          {"affiliation", "Affiliation"},
          {"second-affiliation", "2nd Author's Affil."},
          {"college", "College"}};
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
  for (const auto& [option, caption] : fieldOptions())
    if (const auto value = cl.option(option)) request.fields[caption] = *value;
  request.hints = !cl.flag("no-hints");
  request.chapters = cl.integer("chapters", 0, 0, 50);
  const std::vector<std::string> rest = cl.positional();
  if (rest.size() > 1) throw UsageError("one output file at most, not '" + rest[1] + "'");
  const std::filesystem::path output = rest.empty() ? "paper.docx" : rest.front();
  std::vector<std::filesystem::path> inputs{output};
  if (const auto refs = cl.option("refs")) inputs.emplace_back(*refs);
  Session session(cl.diagnostics(inputs));
  const StartupForm form = StartupForm::load(session.main2());
  request.parts = chooseParts(cl, form, request.paperType);
  const std::vector<std::string> tables = cl.options("table");
  if (const auto refs = cl.option("refs")) {
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
  if (!tables.empty()) {
    const std::vector<TableButton> buttons = tableButtons(session);
    for (const std::string& kind : tables) {
      const int index = findTableButton(buttons, kind);
      if (index == 0) throw UsageError("no table is called '" + kind + "' (quillpaper table --list shows them)");
      request.tables.push_back(index);
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
  if (const std::string problem = session.errorSummary(); !problem.empty())
    err << "quillpaper new: warning: " << problem << "\n";
  out << "wrote " << output.string() << "\n";
  return session.finish(err);
}

}  // namespace quillpaper
