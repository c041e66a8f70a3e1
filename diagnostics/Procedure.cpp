#include "diagnostics/Procedure.h"

#include <limits>
#include <new>

#include "diagnostics/RuntimeObjects.h"

namespace QuillFormatAPA {

namespace {

// The service's answers after a dump.
constexpr int32_t kEnd = 3;
constexpr int32_t kRetry = 4;
constexpr int32_t kIgnore = 5;

constexpr std::string_view kLocalBanner =
    "\r\n**************************\r\n* LOCAL LEVEL VARIABLES  *\r\n**************************\r\n";
constexpr std::string_view kModuleBanner =
    "\r\n**************************\r\n* MODULE LEVEL VARIABLES *\r\n**************************\r\n";
constexpr std::string_view kGlobalBanner =
    "\r\n**************************\r\n* GLOBAL LEVEL VARIABLES *\r\n**************************\r\n";

// The dump fields are 16 bits wide by design: a wider value makes the error
// tail itself fail, and that failure goes to the caller.
int16_t narrow16(int64_t value, const char* field) {
  if (value < std::numeric_limits<int16_t>::min() || value > std::numeric_limits<int16_t>::max())
    throw AutomationError(kOverflow, std::string("error tail: ") + field + " " + std::to_string(value));
  return static_cast<int16_t>(value);
}

AutomationError asAutomationError(std::exception_ptr error) {
  try {
    std::rethrow_exception(error);
  } catch (const AutomationError& e) {
    return e;
  } catch (const std::bad_alloc&) {
    return AutomationError(kOutOfMemory);
  } catch (const std::exception& e) {
    return AutomationError(kInternalError, e.what());
  } catch (...) {
    return AutomationError(kInternalError);
  }
}

}  // namespace

Variant toVariant(const std::vector<std::string>& list) { return stringArray(list); }

std::string Procedure::parameterText() const {
  if (params_.empty()) return "()";
  std::string text = "(";
  for (size_t i = 0; i < params_.size(); ++i) {
    if (i) text += ", ";
    text += vbwProtector::reportParameter(params_[i].name, params_[i].read(params_[i].address));
  }
  text += ") ";
  return text;
}

std::string qualifiedName(const Module& module, std::string_view procedure) {
  std::string out(vbwProtector::kProject);
  out += '.';
  out += module.moduleName();
  out += '.';
  out += procedure;
  return out;
}

void Procedure::enter() {
  if (!state_.vbwTraceProc) return;
  std::string text;
  if (state_.vbwTraceParameters) text = parameterText();
  vbwProtector::procIn(state_, qualifiedName_, text);
  tracedIn_ = true;
}

void Procedure::exit() {
  if (!tracedIn_ || tracedOut_) return;
  tracedOut_ = true;
  vbwProtector::procOut(state_);
}

void Procedure::leave() { exit(); }

Procedure::~Procedure() {
  try {
    exit();
  } catch (...) {
    // The service failed to take the exit: nothing more can be told it here.
  }
}

bool Procedure::errorTail(std::exception_ptr error, uint32_t line) {
  const AutomationError e = asAutomationError(error);
  vbwProtector::setCurrentError(e);
  const int16_t line16 = narrow16(line, "line");
  const int16_t number16 = narrow16(e.number(), "error number");
  const int16_t system16 = narrow16(e.lastDllError(), "system error");
  vbwProtector::beforeDump(module_.moduleName(), name_, line16, number16, e.description(), system16);
  vbwProtector::openDumpFile();
  dump();
  vbwProtector::closeDumpFile();
  switch (vbwProtector::afterDumpAction()) {
    case kEnd:
      vbwProtector::exitThread(true);
      throw detail::LeaveProcedure{};
    case kRetry: return true;
    case kIgnore: return false;
    default: throw detail::LeaveProcedure{};
  }
}

void Procedure::dump() const {
  vbwProtector::reportToFile(std::string(kLocalBanner));
  for (const VarRef& p : params_) vbwProtector::reportVariable(p.name, p.read(p.address));
  for (size_t i = 0; i < localCount_; ++i)
    vbwProtector::reportVariable(locals_[i].name, locals_[i].read(locals_[i].address));
  for (const VarRef& l : moreLocals_) vbwProtector::reportVariable(l.name, l.read(l.address));

  vbwProtector::reportToFile(std::string(kModuleBanner));
  module_.reportVariables(VariableReport{});

  vbwProtector::reportToFile(std::string(kGlobalBanner));
  vbwProtector::reportVariable("vbwProtector.vbwTraceProc", state_.vbwTraceProc);
  vbwProtector::reportVariable("vbwProtector.vbwTraceParameters", state_.vbwTraceParameters);
  // A library has no open forms; then the runtime's own objects, in order.
  vbwProtector::reportObject("App", runtime::appObject());
  vbwProtector::reportObject("Err", runtime::errObject());
  vbwProtector::reportObject("Screen", runtime::screenObject());
  vbwProtector::reportObject("Printer", runtime::printerObject());
}

}  // namespace QuillFormatAPA
