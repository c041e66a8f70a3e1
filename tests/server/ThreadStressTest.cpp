// The library used from many threads at once through its C interface: each
// thread with objects of its own, all of them calling back host objects they
// share (the diagnostics service, a settings dictionary) and reporting errors
// to one service. Run under ThreadSanitizer in CI.

#include <gtest/gtest.h>
#include <strings.h>

#include <atomic>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "server/quillformatapa.h"

namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 60;

std::string textOf(qfa_variant* v) {
  const char* text = nullptr;
  size_t length = 0;
  return qfa_variant_get_string(v, &text, &length) == QFA_OK ? std::string(text, length) : std::string();
}

// A host object shared by every thread: its callbacks lock what they share,
// as any host's must. It answers as a dictionary ("Add", "Item", "Exists"),
// as the diagnostics service ("ErrorParams" and the vbw… members) and fails
// "Fail" with 5.
struct SharedHost {
  static constexpr const char* kMembers[] = {
      "Add",         "Item",         "Exists",           "ErrorParams",     "vbwProcIn",
      "vbwProcOut",  "vbwReportParameter", "vbwBeforeDump", "vbwOpenDumpFile", "vbwReportToFile",
      "vbwReportVariable", "vbwReportObject", "vbwCloseDumpFile", "vbwAfterDump",  "vbwExitThread",
      "Fail"};
  std::mutex mutex;
  std::map<std::string, std::string> values;
  std::atomic<int> calls{0};
  std::atomic<int> dumps{0};
  std::atomic<bool> released{false};
  qfa_object* self = nullptr;

  static int32_t idOfName(void*, const char* name) {
    for (size_t i = 0; i < std::size(kMembers); ++i)
      if (strcasecmp(kMembers[i], name) == 0) return static_cast<int32_t>(i);
    return -1;
  }
  static int32_t invoke(void* p, int32_t id, int32_t kind, qfa_variant* const* args, size_t argc, const char* const*,
                        size_t, qfa_variant* result) {
    auto* h = static_cast<SharedHost*>(p);
    ++h->calls;
    const std::string member = kMembers[id];
    if (member == "Fail") {
      qfa_set_error(5, "the host refuses");
      return 5;
    }
    if (member == "ErrorParams") qfa_variant_set_object(result, h->self);
    if (member == "vbwBeforeDump") ++h->dumps;
    if (member == "vbwAfterDump") qfa_variant_set_long(result, 1);  // leave the failing procedure
    std::lock_guard lock(h->mutex);
    if ((member == "Add" || (member == "Item" && (kind & QFA_PROPERTY_PUT))) && argc == 2)
      h->values[textOf(args[0])] = textOf(args[1]);
    if (member == "Exists" && argc == 1) qfa_variant_set_bool(result, h->values.count(textOf(args[0])) > 0);
    return 0;
  }
  static void release(void* p) { static_cast<SharedHost*>(p)->released = true; }
  static const char* typeName(void*) { return "SharedHost"; }
};

int32_t call(qfa_object* target, const char* member, std::vector<qfa_variant*> args, qfa_variant* result) {
  return qfa_invoke(target, member, QFA_METHOD | QFA_PROPERTY_GET, args.data(), args.size(), nullptr, 0, result);
}

// One thread's work: its own command object, calls that reach the shared
// host, an error reported to the shared service. Answers what went wrong.
std::string work(qfa_object* shared) {
  std::string wrong;
  for (int round = 0; round < kRounds && wrong.empty(); ++round) {
    qfa_object* main2 = nullptr;
    if (qfa_create_object("QuillFormatAPA.Main2", &main2) != QFA_OK) return "no Main2";
    qfa_variant* result = qfa_variant_new();
    qfa_variant* caption = qfa_variant_new();
    qfa_variant* code = qfa_variant_new();
    qfa_variant* dictionary = qfa_variant_new();
    qfa_variant_set_string(caption, "Title", 5);
    qfa_variant_set_long(code, 3);
    qfa_variant_set_object(dictionary, shared);
    if (call(main2, "buildInstruction", {caption, code}, result) != QFA_OK || textOf(result) != "3Title")
      wrong = "buildInstruction: " + textOf(result);
    // Writes the paper settings into the shared dictionary, through its callbacks.
    if (wrong.empty() && call(main2, "getMetaData", {dictionary}, result) != QFA_OK)
      wrong = std::string("getMetaData: ") + qfa_error_description();
    // A host object that fails: the error tail reports to the shared service.
    qfa_variant* failing = qfa_variant_new();
    qfa_variant_set_object(failing, shared);
    qfa_variant* command = qfa_variant_new();
    qfa_variant_set_string(command, "InitializeBuilder", 17);
    call(main2, "Execute", {command, failing}, result);
    qfa_variant_free(failing);
    qfa_variant_free(command);
    qfa_variant_free(result);
    qfa_variant_free(caption);
    qfa_variant_free(code);
    qfa_variant_free(dictionary);
    qfa_object_release(main2);
  }
  qfa_thread_done();
  return wrong;
}

// Catches races on a shared host object's member cache, on the running-object
// registry and on the diagnostics service: a crash, a wrong answer, a report
// lost, or an object of the library left alive.
TEST(ThreadStressTest, ThreadsShareHostObjectsSafely) {
  static const qfa_host_vtable vtable{SharedHost::idOfName, SharedHost::invoke, SharedHost::release,
                                      SharedHost::typeName};
  SharedHost host;
  qfa_object* shared = qfa_host_object_new(&vtable, &host);
  host.self = shared;
  ASSERT_EQ(qfa_register_running_object("QuillPaperDot.BridgeToVB", shared), QFA_OK);

  std::vector<std::string> wrong(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) threads.emplace_back([&, t] { wrong[static_cast<size_t>(t)] = work(shared); });
  for (std::thread& t : threads) t.join();
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(wrong[static_cast<size_t>(t)], "") << "thread " << t;

  {
    std::lock_guard lock(host.mutex);
    EXPECT_FALSE(host.values.empty());
  }
  // Every thread's failing Execute reached the service.
  EXPECT_GE(host.dumps.load(), kThreads * kRounds);

  qfa_thread_done();
  ASSERT_EQ(qfa_revoke_running_object("QuillPaperDot.BridgeToVB"), QFA_OK);
  host.self = nullptr;
  qfa_object_release(shared);
  EXPECT_TRUE(host.released);
  EXPECT_EQ(DllCanUnloadNow(), 1) << "a library object outlived its threads";
}

// A release callback that revokes a running object, as a host tearing down
// does: replacing the registration must not hold the registry meanwhile.
TEST(ThreadStressTest, AReleaseCallbackMayRevokeARunningObject) {
  struct Revoker {
    static int32_t idOfName(void*, const char*) { return -1; }
    static int32_t invoke(void*, int32_t, int32_t, qfa_variant* const*, size_t, const char* const*, size_t,
                          qfa_variant*) {
      return 438;
    }
    static void release(void*) { qfa_revoke_running_object("QuillPaper.Other"); }
    static const char* typeName(void*) { return "Revoker"; }
  };
  static const qfa_host_vtable vtable{Revoker::idOfName, Revoker::invoke, Revoker::release, Revoker::typeName};
  qfa_object* first = qfa_host_object_new(&vtable, nullptr);
  qfa_object* second = qfa_host_object_new(&vtable, nullptr);
  ASSERT_EQ(qfa_register_running_object("QuillPaper.Revoking", first), QFA_OK);
  qfa_object_release(first);
  std::thread t([&] { EXPECT_EQ(qfa_register_running_object("QuillPaper.Revoking", second), QFA_OK); });
  t.join();  // deadlocks if the registry is held while `first` goes
  qfa_object_release(second);
  EXPECT_EQ(qfa_revoke_running_object("QuillPaper.Revoking"), QFA_OK);
  EXPECT_EQ(DllCanUnloadNow(), 1);
}

}  // namespace
