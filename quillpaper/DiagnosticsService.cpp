#include "quillpaper/DiagnosticsService.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <iostream>

#include "host/Array.h"
#include "host/CallSite.h"
#include "host/RunningObjects.h"

namespace quillpaper {

namespace {

constexpr int32_t kEnd = 3;
constexpr int32_t kRetry = 4;
constexpr int32_t kIgnore = 5;
constexpr int32_t kExit = 1;
// A statement that fails this often in a row is not going to succeed.
constexpr int kMaxRetries = 3;

std::atomic<uint64_t> nextServiceSerial{1};

std::string timestamp() {
  const auto now = std::chrono::system_clock::now();
  const std::time_t t = std::chrono::system_clock::to_time_t(now);
  std::tm tm{};
  localtime_r(&t, &tm);
  char buf[32];
  std::strftime(buf, sizeof buf, "%Y%m%d-%H%M%S", &tm);
  return buf;
}

}  // namespace

const MemberTable& DiagnosticsService::members() {
  static const MemberTable& table =
      ClassBuilder<DiagnosticsService>("ErrorParams")
          .method<&DiagnosticsService::vbwProcIn>("vbwProcIn", {"name", "parameterText"})
          .method<&DiagnosticsService::vbwProcOut>("vbwProcOut")
          .method<&DiagnosticsService::vbwReportParameter>("vbwReportParameter", {"name", "value"})
          .method<&DiagnosticsService::vbwBeforeDump>(
              "vbwBeforeDump", {"project", "module", "procedure", "line", "number", "description", "systemError"})
          .method<&DiagnosticsService::vbwOpenDumpFile>("vbwOpenDumpFile")
          .method<&DiagnosticsService::vbwReportToFile>("vbwReportToFile", {"text"})
          .method<&DiagnosticsService::vbwReportVariable>("vbwReportVariable", {"name", "value", "flag"})
          .method<&DiagnosticsService::vbwReportObject>("vbwReportObject", {"name", "object"})
          .method<&DiagnosticsService::vbwCloseDumpFile>("vbwCloseDumpFile")
          .method<&DiagnosticsService::vbwAfterDump>("vbwAfterDump")
          .method<&DiagnosticsService::vbwExitThread>("vbwExitThread", {"flag"})
          .build();
  return table;
}

DiagnosticsService::DiagnosticsService(Options options) : options_(std::move(options)), serial_(nextServiceSerial++) {
  if (options_.dumpFolder.empty()) options_.dumpFolder = defaultDumpFolder();
  if (options_.traceFile.empty()) return;
  trace_.open(options_.traceFile, std::ios::out | std::ios::trunc);
  tracing_ = true;
  if (!trace_)
    throw std::runtime_error("cannot write the trace to " + options_.traceFile.string() + ": " + std::strerror(errno));
}

std::string DiagnosticsService::traceProblem() {
  if (options_.traceFile.empty()) return {};
  trace_.flush();
  if (trace_) return {};
  return "the trace could not be written to " + options_.traceFile.string() + " (is the disk full?)";
}

DiagnosticsService::~DiagnosticsService() = default;

// The calling thread's record, found without a lock once the thread has one.
DiagnosticsService::ThreadRecord& DiagnosticsService::thisThread() {
  thread_local uint64_t cachedFor = 0;
  thread_local ThreadRecord* cached = nullptr;
  if (cachedFor == serial_) return *cached;
  std::lock_guard lock(mutex_);
  cached = &threads_[std::this_thread::get_id()];
  cachedFor = serial_;
  return *cached;
}

size_t DiagnosticsService::errorsOnThisThread() { return thisThread().errors; }

ReportedError DiagnosticsService::lastErrorOnThisThread() {
  ThreadRecord& t = thisThread();
  if (t.errors == 0) return {};
  std::lock_guard lock(mutex_);
  return errors_[t.lastError];
}

std::filesystem::path DiagnosticsService::defaultDumpFolder() {
  if (const char* state = std::getenv("XDG_STATE_HOME"); state && *state)
    return std::filesystem::path(state) / "quillpaper";
  if (const char* home = std::getenv("HOME"); home && *home)
    return std::filesystem::path(home) / ".local" / "state" / "quillpaper";
  return std::filesystem::temp_directory_path() / "quillpaper";
}

std::string DiagnosticsService::describe(const Variant& value) {
  switch (value.type()) {
    case VarType::Empty: return "Empty";
    case VarType::Null: return "Null";
    case VarType::Missing: return "Missing";
    case VarType::String: return "\"" + value.toString() + "\"";
    case VarType::Object: {
      const ObjectRef o = value.toObject();
      return o ? "<" + std::string(o->typeName()) + ">" : "Nothing";
    }
    case VarType::Array: {
      const Array& a = value.array();
      if (a.dimensions() == 0) return "Array()";
      std::string text = "Array(" + std::to_string(a.lowerBound()) + " To " + std::to_string(a.upperBound());
      if (a.dimensions() == 2)
        text += ", " + std::to_string(a.lowerBound(2)) + " To " + std::to_string(a.upperBound(2));
      return text + ")";
    }
    default: return value.toString();
  }
}

void DiagnosticsService::vbwProcIn(std::string_view name, std::string& parameterText) {
  ThreadRecord& t = thisThread();
  if (tracing_) {
    std::lock_guard lock(mutex_);
    if (trace_) trace_ << std::string(2 * t.stack.size(), ' ') << name << (parameterText.empty() ? "" : " ")
                       << parameterText << '\n';
  }
  t.stack.push(name);
}

void DiagnosticsService::vbwProcOut() {
  ThreadRecord& t = thisThread();
  t.stack.pop();
}

std::string DiagnosticsService::vbwReportParameter(const std::string& name, const Variant& value) {
  return name + "=" + describe(value);
}

void DiagnosticsService::vbwBeforeDump(const std::string& project, const std::string& module,
                                       const std::string& procedure, int16_t line, int16_t number,
                                       const std::string& description, int16_t systemError) {
  ThreadRecord& t = thisThread();
  ReportedError e;
  e.where = module + "." + procedure;
  e.number = number;
  e.description = description;
  static std::atomic<int> serial{0};
  e.dumpFile = (options_.dumpFolder / ("dump-" + timestamp() + "-" + std::to_string(::getpid()) + "-" +
                                       std::to_string(++serial) + ".txt"))
                   .string();
  t.pendingHeader = "Error " + std::to_string(number) + " (" + description + ") in " + project + "." + e.where +
                    ", line " + std::to_string(line) + (systemError ? ", system error " + std::to_string(systemError) : "") +
                    "\r\nCall stack:\r\n";
  const std::span<const std::string> names = t.stack.names();
  for (auto it = names.rbegin(); it != names.rend(); ++it) t.pendingHeader += "  " + *it + "\r\n";
  std::lock_guard lock(mutex_);
  t.lastError = errors_.size();
  ++t.errors;
  errors_.push_back(std::move(e));
  if (trace_) trace_ << std::string(2 * t.stack.size(), ' ') << "!! error " << number << " (" << description << ")\n";
}

void DiagnosticsService::vbwOpenDumpFile() {
  ThreadRecord& t = thisThread();
  std::error_code ec;
  std::filesystem::create_directories(options_.dumpFolder, ec);
  std::string file;
  {
    std::lock_guard lock(mutex_);
    file = errors_[t.lastError].dumpFile;
  }
  t.dump.clear();
  t.dump.open(file, std::ios::out | std::ios::trunc | std::ios::binary);
  if (!t.dump) dumpFailed(t, std::strerror(errno));
  t.dump << t.pendingHeader;
}

// A dump that could not be written is not pointed to.
void DiagnosticsService::dumpFailed(ThreadRecord& t, const std::string& reason) {
  std::lock_guard lock(mutex_);
  ReportedError& e = errors_[t.lastError];
  if (e.dumpFile.empty()) return;
  e.dumpProblem = "no dump: cannot write " + e.dumpFile + ": " + reason;
  e.dumpFile.clear();
}

void DiagnosticsService::vbwReportToFile(std::string& text) { thisThread().dump << text; }

void DiagnosticsService::vbwReportVariable(const std::string& name, Variant& value, int32_t) {
  thisThread().dump << name << " = " << describe(value) << "\r\n";
}

void DiagnosticsService::vbwReportObject(const std::string& name, const ObjectRef& object) {
  std::ofstream& dump = thisThread().dump;
  dump << name << ":\r\n";
  if (!object || !object->memberTable()) return;
  // Every property that can be read without arguments.
  for (const MemberInfo& m : object->memberTable()->members()) {
    if (m.kind == MemberKind::Method || !m.params.empty()) continue;
    std::string text;
    try {
      text = describe(callByName(object, m.name));
    } catch (const AutomationError& e) {
      text = "<" + e.description() + ">";
    }
    dump << "  " << m.name << " = " << text << "\r\n";
  }
}

void DiagnosticsService::vbwCloseDumpFile() {
  ThreadRecord& t = thisThread();
  t.dump.flush();
  if (!t.dump && t.errors > 0) dumpFailed(t, "the disk may be full");
  t.dump.close();
}

int32_t DiagnosticsService::vbwAfterDump() {
  ThreadRecord& t = thisThread();
  switch (options_.policy) {
    case ErrorPolicy::Ignore: return kIgnore;
    case ErrorPolicy::Exit: return kExit;
    case ErrorPolicy::Retry: return ++t.retries <= kMaxRetries ? kRetry : kExit;
    case ErrorPolicy::Ask: {
      // One question at a time on the terminal.
      std::lock_guard lock(mutex_);
      return t.errors > 0 ? ask(errors_[t.lastError]) : kExit;
    }
  }
  return kExit;
}

int32_t DiagnosticsService::ask(const ReportedError& e) const {
  if (!::isatty(STDIN_FILENO)) return kExit;
  std::cerr << "quillpaper: error " << e.number << " (" << e.description << ") in " << e.where
            << "\n  " << (e.dumpFile.empty() ? e.dumpProblem : "dump: " + e.dumpFile) << "\n  [r]etry, [i]gnore and go on, [e]xit the procedure, [a]bort? ";
  std::string answer;
  if (!std::getline(std::cin, answer) || answer.empty()) return kExit;
  switch (answer[0]) {
    case 'r': return kRetry;
    case 'i': return kIgnore;
    case 'a': return kEnd;
    default: return kExit;
  }
}

void DiagnosticsService::vbwExitThread(bool) { thisThread().stack.clear(); }

const MemberTable& BridgeToVB::members() {
  static const MemberTable& table =
      ClassBuilder<BridgeToVB>("BridgeToVB").get<&BridgeToVB::ErrorParams>("ErrorParams").build();
  return table;
}

ServiceRegistration::ServiceRegistration(const ObjectRef& service)
    : bridge_(make<BridgeToVB>(service)), replaced_(RunningObjects::lookup("QuillPaperDot.BridgeToVB")) {
  RunningObjects::registerObject("QuillPaperDot.BridgeToVB", bridge_);
}

ServiceRegistration::~ServiceRegistration() {
  RunningObjects::replaceIf("QuillPaperDot.BridgeToVB", bridge_.get(), replaced_);
}

}  // namespace quillpaper
