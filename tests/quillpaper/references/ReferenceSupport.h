#pragma once

#include <gtest/gtest.h>

#include <string>

#include "quillpaper/references/ReferencePipeline.h"

// What the reference tests share: one session for the whole test program
// (its diagnostics service is the one the library reports to), and the
// pipeline run on one entry.
namespace quillpaper::testing {

inline Session& session() {
  static Session s(DiagnosticsService::Options{ErrorPolicy::Exit, {}, ::testing::TempDir()});
  return s;
}

inline FormattedReference format(const std::string& entry) { return ReferencePipeline(session()).format(entry, 1); }

// The entry as shown, italics as *...*.
inline std::string markdown(const FormattedReference& r) {
  std::string out;
  for (const TextRun& run : r.ok() ? r.runs : std::vector<TextRun>{{r.input, false}})
    out += run.italic ? "*" + run.text + "*" : run.text;
  return out;
}

}  // namespace quillpaper::testing
