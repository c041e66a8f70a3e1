#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Object.h"
#include "Variant.h"

namespace QuillFormatAPA::host {

// The host's bridge object, registered as a running object.
class BridgeRef {
 public:
  explicit BridgeRef(ObjectRef bridge) : o_(std::move(bridge)) {}
  ObjectRef ErrorParams() const;

 private:
  ObjectRef o_;
};

// The host's diagnostics service: keeps the call stack, writes dumps, talks to
// the user. Every member raises AutomationError when the call fails.
class DiagnosticsServiceRef {
 public:
  explicit DiagnosticsServiceRef(const ObjectRef& service) : o_(service) {}

  void vbwProcIn(std::string_view qualifiedName, std::string& parameterText) const;
  void vbwProcOut() const;
  std::string vbwReportParameter(std::string_view name, const Variant& value) const;
  void vbwBeforeDump(std::string_view project, std::string_view module, std::string_view procedure,
                     int16_t line, int16_t number, std::string_view description,
                     int16_t lastSystemError) const;
  void vbwOpenDumpFile() const;
  void vbwReportToFile(std::string& text) const;
  void vbwReportVariable(std::string_view name, Variant& value, int32_t flag) const;
  void vbwReportObject(std::string_view name, const ObjectRef& object) const;
  void vbwCloseDumpFile() const;
  int32_t vbwAfterDump() const;
  void vbwExitThread(bool flag) const;

 private:
  const ObjectRef& o_;
};

}  // namespace QuillFormatAPA::host
