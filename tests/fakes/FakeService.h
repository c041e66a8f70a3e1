#pragma once

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "host/MemberTable.h"

namespace QuillFormatAPA::fakes {

// The host's diagnostics service as the tests script it: it records every
// call ("vbwProcIn QuillFormatAPA.Main2.Execute", "vbwReportVariable title=..."),
// answers vbwAfterDump from a queue of actions, and can make any member fail.
class FakeService : public Dispatchable<FakeService> {
 public:
  static const MemberTable& members();

  // The actions vbwAfterDump answers, in order; when the queue is empty it answers `defaultAction`.
  std::deque<int32_t> actions;
  int32_t defaultAction = 1;
  // Members that fail every time they are called, with the given error number.
  std::map<std::string, int32_t> failing;

  std::vector<std::string> calls;  // one line per call
  int32_t depth = 0;               // vbwProcIn minus vbwProcOut
  int32_t dumps = 0;               // vbwOpenDumpFile calls
  int32_t afterDumpCalls = 0;

  // Lines of `calls` that start with `prefix`.
  std::vector<std::string> linesStartingWith(std::string_view prefix) const;

  void vbwProcIn(const std::string& name, std::string& parameterText);
  void vbwProcOut();
  std::string vbwReportParameter(const std::string& name, const Variant& value);
  void vbwBeforeDump(const std::string& project, const std::string& module, const std::string& procedure,
                     int16_t line, int16_t number, const std::string& description, int16_t systemError);
  void vbwOpenDumpFile();
  void vbwReportToFile(std::string& text);
  void vbwReportVariable(const std::string& name, Variant& value, int32_t flag);
  void vbwReportObject(const std::string& name, ObjectRef object);
  void vbwCloseDumpFile();
  int32_t vbwAfterDump();
  void vbwExitThread(bool flag);

 private:
  void note(const std::string& member, const std::string& detail);
};

// The host's bridge: its ErrorParams property gives the service.
class FakeBridge : public Dispatchable<FakeBridge> {
 public:
  explicit FakeBridge(ObjectRef service) : service_(std::move(service)) {}
  static const MemberTable& members();
  ObjectRef ErrorParams() const {
    ++reads;
    return service_;
  }
  mutable int reads = 0;

 private:
  ObjectRef service_;
};

// Registers a bridge to `service` for the lifetime of the object.
class ServiceRegistration {
 public:
  explicit ServiceRegistration(ObjectRef service);
  ~ServiceRegistration();
  ServiceRegistration(const ServiceRegistration&) = delete;
  ServiceRegistration& operator=(const ServiceRegistration&) = delete;

  Ref<FakeBridge> bridge;
  ObjectRef replaced;
};

// The text a value shows in the recorded lines.
std::string describe(const Variant& v);

}  // namespace QuillFormatAPA::fakes
