#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/AutomationError.h"
#include "host/Object.h"
#include "host/Variant.h"

namespace QuillFormatAPA {

// The library's side of the diagnostics contract: it finds the host's
// diagnostics service and forwards trace and dump calls to it. State is kept
// per thread; the first use on a thread reads the trace switch.
namespace vbwProtector {

// The project name that prefixes every traced procedure.
inline constexpr std::string_view kProject = "QuillFormatAPA";
// The class name under which the host registers its bridge.
inline constexpr std::string_view kBridgeClass = "QuillPaperDot.BridgeToVB";

// The state of the calling thread; the first use on a thread runs its start-up.
struct ThreadState {
  ThreadState();
  ~ThreadState();
  bool vbwTraceProc = true;        // entry and exit are always traced
  bool vbwTraceParameters = false;  // parameter texts only with the trace switch on
  ObjectRef mErrorParams;           // the service, once looked up
  uint64_t lookedUpAt = 0;          // the running objects' generation then
  bool answered = false;            // an error was answered other than with retry
  AutomationError currentError{0, "", ""};
};
ThreadState& threadState();

bool vbwTraceProc();
bool vbwTraceParameters();

// The trace switch: the per-user setting Init/vbwTrace equal to "1", or
// "/trace" anywhere on the process command line.
bool readTraceSwitch();
// Where the per-user setting is kept ($XDG_CONFIG_HOME/QuillFormatAPA/settings.ini).
std::string settingsFilePath();

// The diagnostics service, looked up through the bridge on first use and
// cached until the thread-exit notice. Raises when the bridge is not running.
const ObjectRef& errorParams(ThreadState& state = threadState());

// Forwarders. Those whose failure the contract ignores never raise.
void procIn(ThreadState& state, std::string_view qualifiedName, std::string& parameterText);
void procOut(ThreadState& state);
std::string reportParameter(std::string_view name, const Variant& value) noexcept;
void beforeDump(std::string_view module, std::string_view procedure, int16_t line, int16_t number,
                std::string_view description, int16_t lastSystemError);
void openDumpFile();
void reportToFile(std::string text);
void reportVariable(std::string_view name, Variant value, int32_t flag = 0) noexcept;
void reportObject(std::string_view name, const ObjectRef& object);
void closeDumpFile();
// The service's answer after a dump, with the answered latch: once an error
// was answered other than with retry (4), every later one is ignored (5).
int32_t afterDumpAction() noexcept;
// Tells the service this thread is done and drops it (nothing when none is held).
void exitThread(bool flag) noexcept;

// The error the thread is handling, as the runtime's error object shows it.
void setCurrentError(const AutomationError& error);
const AutomationError& currentError();

}  // namespace vbwProtector

}  // namespace QuillFormatAPA
