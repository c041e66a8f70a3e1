#pragma once

#include <gtest/gtest.h>

#include <string>

#include "quillpaper/ReferencePipeline.h"

// What the reference tests share: one session for the whole test program
// (its diagnostics service is the one the library reports to), and the
// pipeline run on one entry.
namespace quillpaper::testing {

inline Session& session() {
  static Session s(DiagnosticsService::Options{ErrorPolicy::Exit, {}, ::testing::TempDir()});
  return s;
}

inline FormattedReference format(const std::string& entry) { return ReferencePipeline(session()).format(entry, 1); }

}  // namespace quillpaper::testing
