// The whole reference pipeline on arbitrary lines, as `quillpaper refs` runs
// it, with every output form written: a result or a clear problem, never a
// crash and never an error inside the library.
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>

#include "quillpaper/ReferenceList.h"
#include "quillpaper/ReferencePipeline.h"
#include "quillpaper/Session.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static quillpaper::Session session(
      quillpaper::DiagnosticsService::Options{quillpaper::ErrorPolicy::Exit, {}, std::filesystem::temp_directory_path()});
  quillpaper::ReferencePipeline pipeline(session);
  const quillpaper::FormattedReference r =
      pipeline.format(std::string_view(reinterpret_cast<const char*>(data), size), 1);
  for (const std::string& problem : r.problems)
    if (problem.starts_with("the formatting library reported an error")) std::abort();
  std::vector<quillpaper::FormattedReference> list{r};
  std::ostringstream out;
  quillpaper::writeText(list, out);
  quillpaper::writeHtml(list, out);
  quillpaper::writeMarkdown(list, out);
  quillpaper::writeJsonLines(list, out);
  return 0;
}
