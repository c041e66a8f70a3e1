#pragma once

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "host/MemberTable.h"

namespace quillpaper {

using namespace QuillFormatAPA;

// What to do when the library reports an error.
enum class ErrorPolicy {
  Exit,    // leave the failing procedure (the default: the command then fails)
  Ignore,  // go on with the next statement; the output may lack a piece
  Retry,   // run the failing statement again (at most a few times)
  Ask,     // ask on the terminal
};

// One error the library reported, as the command line tells the user.
struct ReportedError {
  std::string where;  // "DocumentBuilder.AddTitlePage"
  int32_t number = 0;
  std::string description;
  std::string dumpFile;     // empty when the dump could not be written
  std::string dumpProblem;  // then why
};

// The template's diagnostics service: keeps the library's call stack, writes
// an indented trace when asked, writes each error dump to a file of its own
// and answers errors by the program's policy. Threads may share it: each has
// its own call stack and dump in progress.
class DiagnosticsService : public Dispatchable<DiagnosticsService> {
 public:
  struct Options {
    ErrorPolicy policy = ErrorPolicy::Exit;
    std::filesystem::path traceFile;  // empty: no trace
    std::filesystem::path dumpFolder;
  };
  explicit DiagnosticsService(Options options);
  ~DiagnosticsService() override;
  static const MemberTable& members();

  // Every error reported so far; read it once the threads that report are done.
  const std::vector<ReportedError>& errors() const { return errors_; }
  // How many errors the calling thread has reported, and its last one.
  size_t errorsOnThisThread();
  ReportedError lastErrorOnThisThread();
  // Whether the policy makes an error fail the command (exit, retry, ask) or
  // lets it go on with what was made (ignore).
  bool policyStopsOutput() const { return options_.policy != ErrorPolicy::Ignore; }
  // Why the trace asked for could not be written, or nothing.
  std::string traceProblem();
  // The default dump folder: $XDG_STATE_HOME/quillpaper (or ~/.local/state/quillpaper).
  static std::filesystem::path defaultDumpFolder();

  void vbwProcIn(std::string_view name, std::string& parameterText);
  void vbwProcOut();
  std::string vbwReportParameter(const std::string& name, const Variant& value);
  void vbwBeforeDump(const std::string& project, const std::string& module, const std::string& procedure,
                     int16_t line, int16_t number, const std::string& description, int16_t systemError);
  void vbwOpenDumpFile();
  void vbwReportToFile(std::string& text);
  void vbwReportVariable(const std::string& name, Variant& value, int32_t flag);
  void vbwReportObject(const std::string& name, const ObjectRef& object);
  void vbwCloseDumpFile();
  int32_t vbwAfterDump();
  void vbwExitThread(bool flag);

  // A value as the trace and the dumps show it: "\"text\"", "12", "True",
  // "<Page>", "Nothing", "Array(0 To 4)".
  static std::string describe(const Variant& value);

 private:
  // The procedures a thread is in, innermost last. A procedure left keeps
  // its name's room for the next one entered: entering allocates nothing once
  // the stack has been as deep before.
  class CallStack {
   public:
    void push(std::string_view name) {
      if (depth_ < names_.size()) names_[depth_].assign(name);
      else names_.emplace_back(name);
      ++depth_;
    }
    void pop() {
      if (depth_) --depth_;
    }
    void clear() { depth_ = 0; }
    size_t size() const { return depth_; }
    std::span<const std::string> names() const { return {names_.data(), depth_}; }

   private:
    std::vector<std::string> names_;
    size_t depth_ = 0;
  };
  // What the service keeps for one thread of the library.
  struct ThreadRecord {
    CallStack stack;
    std::ofstream dump;
    std::string pendingHeader;
    int retries = 0;
    size_t errors = 0;
    size_t lastError = 0;  // index in errors_
  };
  ThreadRecord& thisThread();
  int32_t ask(const ReportedError& e) const;
  void dumpFailed(ThreadRecord& t, const std::string& reason);

  Options options_;
  const uint64_t serial_;  // tells a thread's cached record of this service from one of an earlier service
  bool tracing_ = false;
  std::mutex mutex_;       // guards what follows
  std::ofstream trace_;
  std::map<std::thread::id, ThreadRecord> threads_;
  std::vector<ReportedError> errors_;
};

// The bridge the library finds among the running objects; its ErrorParams
// property gives the service.
class BridgeToVB : public Dispatchable<BridgeToVB> {
 public:
  explicit BridgeToVB(ObjectRef service) : service_(std::move(service)) {}
  static const MemberTable& members();
  ObjectRef ErrorParams() const { return service_; }

 private:
  ObjectRef service_;
};

// Registers the bridge for the life of the object. After, only its own
// registration is undone, and the one it replaced comes back: sessions may
// nest, and a later one's bridge stays.
class ServiceRegistration {
 public:
  explicit ServiceRegistration(const ObjectRef& service);
  ~ServiceRegistration();
  ServiceRegistration(const ServiceRegistration&) = delete;
  ServiceRegistration& operator=(const ServiceRegistration&) = delete;

 private:
  ObjectRef bridge_;
  ObjectRef replaced_;
};

}  // namespace quillpaper
