#include <gtest/gtest.h>

#include <filesystem>

#include "quillpaper/DiagnosticsService.h"

namespace quillpaper {
namespace {

// A dump that cannot be written is not pointed to: the error says why there
// is none. Catches "details in …/dump-….txt" naming a file that never was.
TEST(DiagnosticsServiceTest, ADumpThatCannotBeWrittenIsNotPointedTo) {
  auto service = make<DiagnosticsService>(DiagnosticsService::Options{ErrorPolicy::Exit, {}, "/dev/null/dumps"});
  service->vbwBeforeDump("QuillFormatAPA", "Module", "procedure", 3, 13, "Type mismatch", 0);
  service->vbwOpenDumpFile();
  service->vbwCloseDumpFile();
  ASSERT_EQ(service->errors().size(), 1u);
  EXPECT_EQ(service->errors().back().dumpFile, "");
  EXPECT_NE(service->errors().back().dumpProblem.find("no dump: cannot write /dev/null/dumps/dump-"), std::string::npos)
      << service->errors().back().dumpProblem;

  auto writable = make<DiagnosticsService>(DiagnosticsService::Options{ErrorPolicy::Exit, {}, ::testing::TempDir()});
  writable->vbwBeforeDump("QuillFormatAPA", "Module", "procedure", 3, 13, "Type mismatch", 0);
  writable->vbwOpenDumpFile();
  writable->vbwCloseDumpFile();
  EXPECT_TRUE(std::filesystem::exists(writable->errors().back().dumpFile));
  std::filesystem::remove(writable->errors().back().dumpFile);
}

// Catches a trace asked for in a folder that is not there being dropped in silence.
TEST(DiagnosticsServiceTest, ATraceThatCannotBeOpenedIsAnError) {
  EXPECT_THROW(DiagnosticsService(DiagnosticsService::Options{ErrorPolicy::Exit, "/dev/null/trace.txt", {}}),
               std::runtime_error);
}

}  // namespace
}  // namespace quillpaper
