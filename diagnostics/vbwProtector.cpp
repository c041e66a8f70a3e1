#include "diagnostics/vbwProtector.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "host/RunningObjects.h"
#include "host/ServiceProxy.h"
#include "strings/StringUtility.h"

namespace QuillFormatAPA::vbwProtector {

namespace {

host::DiagnosticsServiceRef service() { return host::DiagnosticsServiceRef(errorParams()); }

bool settingIsOn() {
  std::ifstream in(settingsFilePath());
  if (!in) return false;
  const auto& str = QuillStrings::strings();
  std::string line;
  bool inInit = false;
  while (std::getline(in, line)) {
    const std::string t = str.trimmed(line);
    if (t.empty() || t[0] == ';' || t[0] == '#') continue;
    if (t.front() == '[' && t.back() == ']') {
      // Section and key names are read without regard to case, as such settings files are.
      inInit = str.lower(str.trimmed(std::string_view(t).substr(1, t.size() - 2))) == "init";
      continue;
    }
    const auto eq = t.find('=');
    if (inInit && eq != std::string::npos && str.lower(str.trimmed(t.substr(0, eq))) == "vbwtrace")
      return str.trimmed(t.substr(eq + 1)) == "1";
  }
  return false;
}

bool commandLineAsksForTrace() {
  std::ifstream in("/proc/self/cmdline", std::ios::binary);
  std::ostringstream all;
  all << in.rdbuf();
  std::string line = all.str();
  for (char& c : line)
    if (c == '\0') c = ' ';
  return line.find("/trace") != std::string::npos;
}

}  // namespace

namespace {
// Set once the thread's state is gone: objects released while a thread (or
// the process) ends may still trace.
thread_local bool stateGone = false;
}  // namespace

// The start-up of a thread: the switch decides parameter tracing only.
ThreadState::ThreadState() : vbwTraceParameters(readTraceSwitch()) {}
ThreadState::~ThreadState() { stateGone = true; }

ThreadState& threadState() {
  thread_local ThreadState s;
  if (!stateGone) return s;
  // After the end: a state of its own, never destroyed.
  thread_local ThreadState* afterlife = new ThreadState;
  return *afterlife;
}

bool vbwTraceProc() { return threadState().vbwTraceProc; }
bool vbwTraceParameters() { return threadState().vbwTraceParameters; }

std::string settingsFilePath() {
  std::string base;
  if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg)
    base = xdg;
  else if (const char* home = std::getenv("HOME"); home && *home)
    base = std::string(home) + "/.config";
  else
    base = ".config";
  return base + "/QuillFormatAPA/settings.ini";
}

bool readTraceSwitch() { return settingIsOn() || commandLineAsksForTrace(); }

namespace {
// Kept apart, so that the common case (the service already known) is a test and a return.
[[gnu::noinline]] const ObjectRef& lookUpErrorParams(ThreadState& s, uint64_t now) {
  ObjectRef bridge = RunningObjects::lookup(kBridgeClass);
  if (!bridge) throw AutomationError(kCannotCreateObject, std::string(kBridgeClass) + " is not running");
  s.mErrorParams = host::BridgeRef(bridge).ErrorParams();
  s.lookedUpAt = now;
  return s.mErrorParams;
}
}  // namespace

// The service is looked up again when the host has registered another bridge
// (or taken its own back) since: each thread reports to the bridge running now.
const ObjectRef& errorParams(ThreadState& s) {
  const uint64_t now = RunningObjects::generation();
  if (s.mErrorParams && s.lookedUpAt == now) [[likely]]
    return s.mErrorParams;
  return lookUpErrorParams(s, now);
}

void procIn(ThreadState& state, std::string_view qualifiedName, std::string& parameterText) {
  host::DiagnosticsServiceRef(errorParams(state)).vbwProcIn(qualifiedName, parameterText);
}

void procOut(ThreadState& state) { host::DiagnosticsServiceRef(errorParams(state)).vbwProcOut(); }

std::string reportParameter(std::string_view name, const Variant& value) noexcept {
  try {
    return service().vbwReportParameter(name, value);
  } catch (...) {
    return {};
  }
}

void beforeDump(std::string_view module, std::string_view procedure, int16_t line, int16_t number,
                std::string_view description, int16_t lastSystemError) {
  service().vbwBeforeDump(kProject, module, procedure, line, number, description, lastSystemError);
}

void openDumpFile() { service().vbwOpenDumpFile(); }

void reportToFile(std::string text) { service().vbwReportToFile(text); }

void reportVariable(std::string_view name, Variant value, int32_t flag) noexcept {
  try {
    service().vbwReportVariable(name, value, flag);
  } catch (...) {
  }
}

void reportObject(std::string_view name, const ObjectRef& object) { service().vbwReportObject(name, object); }

void closeDumpFile() { service().vbwCloseDumpFile(); }

int32_t afterDumpAction() noexcept {
  ThreadState& s = threadState();
  if (s.answered) return 5;
  int32_t action = 0;
  try {
    action = service().vbwAfterDump();
  } catch (...) {
    action = 0;
  }
  if (action != 4) s.answered = true;
  return action;
}

void exitThread(bool flag) noexcept {
  ThreadState& s = threadState();
  if (!s.mErrorParams) return;
  try {
    host::DiagnosticsServiceRef(s.mErrorParams).vbwExitThread(flag);
  } catch (...) {
  }
  s.mErrorParams = ObjectRef();
}

void setCurrentError(const AutomationError& error) { threadState().currentError = error; }
const AutomationError& currentError() { return threadState().currentError; }

}  // namespace QuillFormatAPA::vbwProtector
