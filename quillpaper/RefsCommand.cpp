// quillpaper refs: a reference list, as people type them, back in APA form.
#include <algorithm>
#include <fstream>
#include <iostream>
#include <sstream>

#include "quillpaper/CommandLine.h"
#include "quillpaper/Commands.h"
#include "quillpaper/Json.h"
#include "quillpaper/ReferenceList.h"
#include "quillpaper/ReferencePipeline.h"

namespace quillpaper {

namespace {

constexpr const char* kUsage =
    "usage: quillpaper refs [FILE|-] [--format=text|html|markdown|json|docx] [--output=FILE] [--sort]\n"
    "\n"
    "Reads a reference list, one reference per line (from FILE, or standard input when it is\n"
    "'-' or missing; blank lines are skipped), recognises the type of each reference, splits it\n"
    "into its fields and writes it back in APA form (6th edition):\n"
    "  text      one reference a line (the default)\n"
    "  html      a page with italics as <i> and hanging indents\n"
    "  markdown  italics as *...*\n"
    "  json      JSON Lines: the line number, the type (0 book or other non-periodical work,\n"
    "            1 periodical article, 4 electronic source), every field, the formatted text and\n"
    "            its runs\n"
    "  docx      a References page: heading, hanging indent, double spacing, in APA order\n"
    "A reference that cannot be made sense of is kept as typed and reported on standard error\n"
    "with its line number. --sort orders the list as APA orders a reference list (the .docx is\n"
    "always sorted). --output writes to FILE instead of standard output (needed for docx).\n";

std::vector<std::pair<int, std::string>> readLines(std::istream& in) {
  std::vector<std::pair<int, std::string>> lines;
  std::string line;
  int n = 0;
  while (std::getline(in, line)) {
    ++n;
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
    lines.emplace_back(n, line);
  }
  return lines;
}

}  // namespace

int refsCommand(CommandLine& cl, std::ostream& out, std::ostream& err) {
  if (cl.flag("help")) {
    out << kUsage;
    return 0;
  }
  const std::string format = cl.option("format").value_or("text");
  const std::optional<std::string> output = cl.option("output");
  const bool sort = cl.flag("sort") || format == "docx";
  const std::vector<std::string> files = cl.positional();
  if (files.size() > 1) throw UsageError("one input file at most, not '" + files[1] + "'");
  if (format != "text" && format != "html" && format != "markdown" && format != "json" && format != "docx")
    throw UsageError("--format must be text, html, markdown, json or docx, not '" + format + "'");
  if (format == "docx" && !output) throw UsageError("--format=docx needs --output=FILE.docx");
  Session session(cl.diagnostics());
  cl.finish();

  std::vector<std::pair<int, std::string>> lines;
  if (files.empty() || files[0] == "-") {
    lines = readLines(std::cin);
  } else {
    std::ifstream in(files[0], std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + files[0]);
    lines = readLines(in);
  }

  ReferencePipeline pipeline(session);
  std::vector<FormattedReference> references;
  references.reserve(lines.size());
  for (const auto& [n, line] : lines) references.push_back(pipeline.format(line, n));
  for (const FormattedReference& r : references) {
    if (!r.ok()) err << "quillpaper refs: line " << r.line << ": kept as typed: " << r.problems.front() << "\n";
    if (!r.excludedBecause.empty())
      err << "quillpaper refs: line " << r.line << ": left out of the list: " << r.excludedBecause << "\n";
  }
  if (sort) sortReferenceList(references);

  if (format == "docx") {
    writeReferenceListDocx(references, session, *output);
    out << "wrote " << *output << "\n";
    return 0;
  }
  std::ostringstream text;
  if (format == "text") writeText(references, text);
  else if (format == "html") writeHtml(references, text);
  else if (format == "markdown") writeMarkdown(references, text);
  else writeJsonLines(references, text);
  if (output) {
    std::ofstream file(*output, std::ios::binary | std::ios::trunc);
    if (!file || !(file << text.str())) throw std::runtime_error("cannot write " + *output);
    out << "wrote " << *output << "\n";
  } else {
    out << text.str();
  }
  return 0;
}

}  // namespace quillpaper
