#include "ServiceProxy.h"

#include "CallSite.h"

namespace QuillFormatAPA::host {

ObjectRef BridgeRef::ErrorParams() const {
  static const CallSite site("ErrorParams");
  return site.call(o_).toObject();
}

void DiagnosticsServiceRef::vbwProcIn(std::string_view qualifiedName, std::string& parameterText) const {
  static const CallSite site("vbwProcIn");
  site.call(o_, qualifiedName, byRef(parameterText));
}

void DiagnosticsServiceRef::vbwProcOut() const {
  static const CallSite site("vbwProcOut");
  site.call(o_);
}

std::string DiagnosticsServiceRef::vbwReportParameter(std::string_view name, const Variant& value) const {
  static const CallSite site("vbwReportParameter");
  return site.call(o_, name, value).toString();
}

void DiagnosticsServiceRef::vbwBeforeDump(std::string_view project, std::string_view module,
                                          std::string_view procedure, int16_t line, int16_t number,
                                          std::string_view description, int16_t lastSystemError) const {
  static const CallSite site("vbwBeforeDump");
  site.call(o_, project, module, procedure, line, number, description, lastSystemError);
}

void DiagnosticsServiceRef::vbwOpenDumpFile() const {
  static const CallSite site("vbwOpenDumpFile");
  site.call(o_);
}

void DiagnosticsServiceRef::vbwReportToFile(std::string& text) const {
  static const CallSite site("vbwReportToFile");
  site.call(o_, byRef(text));
}

void DiagnosticsServiceRef::vbwReportVariable(std::string_view name, Variant& value, int32_t flag) const {
  static const CallSite site("vbwReportVariable");
  site.call(o_, name, byRef(value), flag);
}

void DiagnosticsServiceRef::vbwReportObject(std::string_view name, const ObjectRef& object) const {
  static const CallSite site("vbwReportObject");
  site.call(o_, name, object);
}

void DiagnosticsServiceRef::vbwCloseDumpFile() const {
  static const CallSite site("vbwCloseDumpFile");
  site.call(o_);
}

int32_t DiagnosticsServiceRef::vbwAfterDump() const {
  static const CallSite site("vbwAfterDump");
  return site.call(o_).toLong();
}

void DiagnosticsServiceRef::vbwExitThread(bool flag) const {
  static const CallSite site("vbwExitThread");
  site.call(o_, flag);
}

}  // namespace QuillFormatAPA::host
