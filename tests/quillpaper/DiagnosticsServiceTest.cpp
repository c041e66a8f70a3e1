#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

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

// Threads sharing the service (quillpaper refs --jobs) each keep their own
// call stack, dump and error count. Catches one thread's procedures in
// another's dump, an error counted against the wrong entry, and (under
// ThreadSanitizer) unguarded shared state.
TEST(DiagnosticsServiceTest, ThreadsKeepTheirOwnStacksAndErrors) {
  auto service = make<DiagnosticsService>(DiagnosticsService::Options{ErrorPolicy::Ignore, {}, ::testing::TempDir()});
  constexpr int kThreads = 4, kRounds = 50;
  std::vector<std::vector<std::string>> dumps(kThreads);
  std::vector<size_t> counted(kThreads);
  std::vector<std::thread> threads;
  for (int k = 0; k < kThreads; ++k)
    threads.emplace_back([&, k] {
      const std::string mine = "Thread" + std::to_string(k);
      std::string noParameters;
      for (int round = 0; round < kRounds; ++round) {
        service->vbwProcIn(mine + ".outer", noParameters);
        service->vbwProcIn(mine + ".inner", noParameters);
        if (round % 10 == k) {
          service->vbwBeforeDump("QuillFormatAPA", mine, "inner", 1, 5, "failed in " + mine, 0);
          service->vbwOpenDumpFile();
          std::string text = "variables of " + mine;
          service->vbwReportToFile(text);
          service->vbwCloseDumpFile();
          EXPECT_EQ(service->vbwAfterDump(), 5);
          dumps[k].push_back(service->lastErrorOnThisThread().dumpFile);
        }
        service->vbwProcOut();
        service->vbwProcOut();
      }
      counted[k] = service->errorsOnThisThread();
    });
  for (std::thread& t : threads) t.join();
  EXPECT_EQ(service->errors().size(), static_cast<size_t>(kThreads * kRounds / 10));
  for (int k = 0; k < kThreads; ++k) {
    EXPECT_EQ(counted[k], static_cast<size_t>(kRounds / 10));
    const std::string mine = "Thread" + std::to_string(k);
    for (const std::string& file : dumps[k]) {
      std::ifstream in(file, std::ios::binary);
      std::stringstream text;
      text << in.rdbuf();
      EXPECT_EQ(text.str(), "Error 5 (failed in " + mine + ") in QuillFormatAPA." + mine + ".inner, line 1\r\n" +
                                "Call stack:\r\n  " + mine + ".inner\r\n  " + mine + ".outer\r\nvariables of " + mine);
      std::filesystem::remove(file);
    }
  }
}

}  // namespace
}  // namespace quillpaper
