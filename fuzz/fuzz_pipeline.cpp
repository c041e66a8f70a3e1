// The whole reference pipeline on arbitrary lines, as `quillpaper refs` runs
// it, with every output form written: a result or a clear problem, never a
// crash and never an error inside the library. What the list shows is the
// entry as typed, or an APA form that loses and adds no word but for what
// APA changes in the names of authors and editors (initials, also typed
// together, the names between the sixth and the last) and a list's numbering.
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <sstream>
#include <string>

#include "quillpaper/Session.h"
#include "quillpaper/references/ReaderModel.h"
#include "quillpaper/references/ReferenceList.h"
#include "quillpaper/references/ReferencePipeline.h"
#include "quillpaper/references/WordAudit.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static quillpaper::Session session(
      quillpaper::DiagnosticsService::Options{quillpaper::ErrorPolicy::Exit, {}, std::filesystem::temp_directory_path()});
  // With the learned reader, as `quillpaper refs` reads: entries in other styles go to it.
  static std::string problem;
  static const quillreader::Model* model = quillpaper::readerModel(problem);
  quillpaper::ReferencePipeline pipeline(
      session, {.edition = 6, .reader = model, .readerThreshold = quillpaper::kReaderThreshold});
  const quillpaper::FormattedReference r =
      pipeline.format(std::string_view(reinterpret_cast<const char*>(data), size), 1);
  for (const std::string& problem : r.problems)
    if (problem.starts_with("the formatting library reported an error")) std::abort();
  std::vector<quillpaper::FormattedReference> list{r};
  std::ostringstream text;
  quillpaper::writeText(list, text);
  const std::string shown = text.str().substr(0, text.str().size() - (r.excludedBecause.empty() ? 1 : 0));
  if (r.excludedBecause.empty() && shown != r.input) {
    quillpaper::Rewrites names;
    for (const auto* people : {&r.authors, &r.editors})
      for (const quillpaper::PersonName& n : *people) {
        // Initials typed together ("KF", Vancouver's) are the same initials.
        std::string together;
        for (char c : n.given)
          if (c != '.' && c != ' ') together += c;
        names.mayLose.insert(names.mayLose.end(), {n.family, n.given, together});
        names.mayAdd.insert(names.mayAdd.end(), {quillpaper::initialsOf(n.given), "&"});
      }
    if (shown.find("\u2026") != std::string::npos) names.mayLose.push_back("&");  // the ellipsis stands for it
    // A list's numbering ("[3]", "(3)", "3.") is no part of the work.
    static const std::regex kNumbering(R"(^\s*(?:\[([0-9]+)\]|\(([0-9]+)\)|([0-9]+)\.)\s)");
    if (std::smatch m; std::regex_search(r.input, m, kNumbering))
      names.mayLose.push_back(m[1].matched ? m[1].str() : m[2].matched ? m[2].str() : m[3].str());
    if (!quillpaper::auditWords(r.input, shown, names).clean()) std::abort();
  }
  std::ostringstream out;
  quillpaper::writeHtml(list, out);
  quillpaper::writeMarkdown(list, out);
  quillpaper::writeJsonLines(list, out);
  return 0;
}
