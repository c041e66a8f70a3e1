#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "diagnostics/Procedure.h"
#include "tests/fakes/FakeService.h"

namespace QuillFormatAPA {
namespace {

using fakes::FakeService;
using fakes::ServiceRegistration;

int16_t moduleCounter = 7;
const StaticModule kModule("TestModule", [](const VariableReport& r) { r.variable("counter", moduleCounter); });

// Three statements; the second fails `failures` times with error `number`.
std::string flaky(int32_t failures, int32_t number, int32_t& runs) {
  std::string note = "start";
  return traced(kModule, "flaky", params(arg("failures", failures), arg("number", number)), [&](Procedure& proc) {
    proc.local("note", note);
    proc.step([&] { note = "first"; });
    proc.step([&] {
      ++runs;
      if (runs <= failures) throw AutomationError(number, "test");
      note += "+second";
    });
    proc.step([&] { note += "+third"; });
    return note;
  });
}

// Calls flaky with an error number beyond 16 bits inside one of its own statements.
std::string outer(int32_t number) {
  return traced(kModule, "outer", [&](Procedure& proc) {
    std::string got;
    proc.step([&] {
      int32_t runs = 0;
      got = flaky(1, number, runs);
    });
    return got;
  });
}

// Diagnostics state is per thread, and the answered latch never resets: each
// scenario gets a thread of its own.
template <class F>
void onFreshThread(F f) {
  std::thread t(f);
  t.join();
}

class ErrorTailTest : public ::testing::Test {
 protected:
  Ref<FakeService> service = make<FakeService>();
  ServiceRegistration registration{service};
};

TEST_F(ErrorTailTest, EveryProcedureIsTracedInAndOut) {
  onFreshThread([&] {
    int32_t runs = 0;
    EXPECT_EQ(flaky(0, 0, runs), "first+second+third");
  });
  EXPECT_EQ(service->calls, (std::vector<std::string>{"vbwProcIn QuillFormatAPA.TestModule.flaky", "vbwProcOut"}));
}

// Catches a retry that skips the statement, or a retry that stops later errors being asked about.
TEST_F(ErrorTailTest, RetryRunsTheStatementAgainAndAsksAgainNextTime) {
  service->actions = {4, 4};
  onFreshThread([&] {
    int32_t runs = 0;
    EXPECT_EQ(flaky(1, kTypeMismatch, runs), "first+second+third");
    EXPECT_EQ(runs, 2);
    runs = 0;
    EXPECT_EQ(flaky(1, kTypeMismatch, runs), "first+second+third");
  });
  EXPECT_EQ(service->dumps, 2);
  EXPECT_EQ(service->afterDumpCalls, 2);
}

// Catches an ignore that re-runs or leaves, and a latch that keeps asking.
TEST_F(ErrorTailTest, IgnoreSkipsAndLaterErrorsAreDumpedWithoutAsking) {
  service->actions = {5};
  onFreshThread([&] {
    int32_t runs = 0;
    EXPECT_EQ(flaky(1, kTypeMismatch, runs), "first+third");
    runs = 0;
    EXPECT_EQ(flaky(1, kOverflow, runs), "first+third");
    runs = 0;
    EXPECT_EQ(flaky(1, kObjectNotSet, runs), "first+third");
  });
  EXPECT_EQ(service->dumps, 3);
  EXPECT_EQ(service->afterDumpCalls, 1);
}

// Catches an exit that goes on with the body or forgets the exit trace.
TEST_F(ErrorTailTest, ExitLeavesWithTheDefaultResult) {
  service->actions = {1};
  onFreshThread([&] {
    int32_t runs = 0;
    EXPECT_EQ(flaky(1, kTypeMismatch, runs), "");
    EXPECT_EQ(runs, 1);
  });
  EXPECT_EQ(service->depth, 0);
  EXPECT_EQ(service->calls.back(), "vbwProcOut");
}

// Catches an end that keeps the old service instead of looking it up again.
TEST_F(ErrorTailTest, EndDropsTheServiceAndTheNextCallLooksItUpAgain) {
  service->actions = {3};
  onFreshThread([&] {
    int32_t runs = 0;
    EXPECT_EQ(flaky(1, kTypeMismatch, runs), "");
    EXPECT_EQ(registration.bridge->reads, 2);  // the first lookup, then again for the exit trace
    runs = 0;
    flaky(0, 0, runs);
    EXPECT_EQ(registration.bridge->reads, 2);
  });
  EXPECT_EQ(service->linesStartingWith("vbwExitThread"), (std::vector<std::string>{"vbwExitThread True"}));
}

// Catches reports in the wrong order, a missing banner or a missing runtime object.
TEST_F(ErrorTailTest, DumpReportsInOrder) {
  service->actions = {5};
  onFreshThread([&] {
    int32_t runs = 0;
    flaky(1, kTypeMismatch, runs);
  });
  const std::vector<std::string> expected = {
      "vbwProcIn QuillFormatAPA.TestModule.flaky",
      "vbwBeforeDump QuillFormatAPA TestModule flaky 13 Type mismatch 0",
      "vbwOpenDumpFile",
      "vbwReportToFile * LOCAL LEVEL VARIABLES  *",
      "vbwReportVariable failures=1",
      "vbwReportVariable number=13",
      "vbwReportVariable note=first",
      "vbwReportToFile * MODULE LEVEL VARIABLES *",
      "vbwReportVariable counter=7",
      "vbwReportToFile * GLOBAL LEVEL VARIABLES *",
      "vbwReportVariable vbwProtector.vbwTraceProc=True",
      "vbwReportVariable vbwProtector.vbwTraceParameters=False",
      "vbwReportObject App=App",
      "vbwReportObject Err=ErrObject",
      "vbwReportObject Screen=Screen",
      "vbwReportObject Printer=Printer",
      "vbwCloseDumpFile",
      "vbwAfterDump",
      "vbwProcOut",
  };
  EXPECT_EQ(service->calls, expected);
}

// Catches a tail that swallows its own failure instead of passing it to the caller.
TEST_F(ErrorTailTest, ErrorNumberBeyondSixteenBitsFailsTheTailAndReachesTheCaller) {
  service->actions = {5};
  onFreshThread([&] { EXPECT_EQ(outer(40000), ""); });
  EXPECT_EQ(service->linesStartingWith("vbwBeforeDump"),
            (std::vector<std::string>{"vbwBeforeDump QuillFormatAPA TestModule outer 6 Overflow 0"}));
}

// Catches a frame that forgets its exit trace when an error escapes its
// statements (a host call outside a step): the service's call stack must
// stay balanced, and a later registration must reach every thread.
TEST_F(ErrorTailTest, AFrameTracesItselfOutOnEveryWayOut) {
  onFreshThread([&] {
    EXPECT_THROW(traced(kModule, "escaping", [](Procedure&) { throw AutomationError(kTypeMismatch, "outside a step"); }),
                 AutomationError);
  });
  EXPECT_EQ(service->depth, 0);
  EXPECT_EQ(service->calls,
            (std::vector<std::string>{"vbwProcIn QuillFormatAPA.TestModule.escaping", "vbwProcOut"}));
}

// A nested registration reaches a thread that had looked the service up, and
// the outer one comes back once the nested one is undone by its owner.
TEST_F(ErrorTailTest, NestedRegistrationsComeAndGoInTurn) {
  onFreshThread([&] {
    int32_t runs = 0;
    flaky(0, 0, runs);
    auto nested = make<FakeService>();
    {
      ServiceRegistration inner{nested};
      flaky(0, 0, runs);
    }
    flaky(0, 0, runs);
    EXPECT_EQ(nested->linesStartingWith("vbwProcIn").size(), 1u);
  });
  EXPECT_EQ(service->linesStartingWith("vbwProcIn").size(), 2u);
}

// Catches failures of the service that should be ignored but stop the dump, and the reverse.
TEST_F(ErrorTailTest, WhichServiceFailuresAreIgnored) {
  service->failing = {{"vbwReportVariable", kInternalError}, {"vbwAfterDump", kInternalError}};
  onFreshThread([&] {
    int32_t runs = 0;
    EXPECT_EQ(flaky(1, kTypeMismatch, runs), "");  // after-dump failing reads as exit
  });
  EXPECT_EQ(service->linesStartingWith("vbwCloseDumpFile").size(), 1u);

  service->failing = {{"vbwOpenDumpFile", kInternalError}};
  service->calls.clear();
  onFreshThread([&] {
    try {
      int32_t runs = 0;
      flaky(1, kTypeMismatch, runs);
      ADD_FAILURE() << "a failing vbwOpenDumpFile must reach the caller";
    } catch (const AutomationError& e) {
      EXPECT_EQ(e.number(), kInternalError);
    }
  });
  EXPECT_TRUE(service->linesStartingWith("vbwCloseDumpFile").empty());
}

TEST(ErrorTailNoServiceTest, AMissingBridgeReachesTheCaller) {
  onFreshThread([] {
    try {
      int32_t runs = 0;
      flaky(0, 0, runs);
      ADD_FAILURE();
    } catch (const AutomationError& e) {
      EXPECT_EQ(e.number(), kCannotCreateObject);
    }
  });
}

// Catches a parameter text built with the switch off, or in the wrong shape with it on.
TEST_F(ErrorTailTest, ParameterTextFollowsTheTraceSwitch) {
  const auto dir = std::filesystem::temp_directory_path() / ("qfa-trace-" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir / "QuillFormatAPA");
  std::ofstream(dir / "QuillFormatAPA" / "settings.ini") << "[Other]\nvbwTrace=0\r\n[init]\r\nVBWTRACE = 1\r\n";
  const char* old = std::getenv("XDG_CONFIG_HOME");
  const std::string saved = old ? old : "";
  ::setenv("XDG_CONFIG_HOME", dir.c_str(), 1);
  onFreshThread([&] {
    int32_t runs = 0;
    flaky(0, 13, runs);
    traced(kModule, "noParams", [](Procedure&) {});
  });
  old ? ::setenv("XDG_CONFIG_HOME", saved.c_str(), 1) : ::unsetenv("XDG_CONFIG_HOME");
  std::filesystem::remove_all(dir);
  EXPECT_EQ(service->linesStartingWith("vbwProcIn"),
            (std::vector<std::string>{"vbwProcIn QuillFormatAPA.TestModule.flaky (failures=0, number=13) ",
                                      "vbwProcIn QuillFormatAPA.TestModule.noParams ()"}));
}

}  // namespace
}  // namespace QuillFormatAPA
