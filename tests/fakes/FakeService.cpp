#include "tests/fakes/FakeService.h"

#include "diagnostics/vbwProtector.h"
#include "host/RunningObjects.h"

namespace QuillFormatAPA::fakes {

std::string describe(const Variant& v) {
  switch (v.type()) {
    case VarType::Object: {
      ObjectRef o = v.toObject();
      return o ? std::string(o->typeName()) : "Nothing";
    }
    case VarType::Array: return "Array(" + std::to_string(v.array().size()) + ")";
    case VarType::Missing: return "Missing";
    case VarType::Null: return "Null";
    default: return v.toString();
  }
}

const MemberTable& FakeService::members() {
  static const MemberTable& table =
      ClassBuilder<FakeService>("FakeService")
          .method<&FakeService::vbwProcIn>("vbwProcIn", {"name", "parameterText"})
          .method<&FakeService::vbwProcOut>("vbwProcOut")
          .method<&FakeService::vbwReportParameter>("vbwReportParameter", {"name", "value"})
          .method<&FakeService::vbwBeforeDump>("vbwBeforeDump", {"project", "module", "procedure", "line",
                                                                 "number", "description", "systemError"})
          .method<&FakeService::vbwOpenDumpFile>("vbwOpenDumpFile")
          .method<&FakeService::vbwReportToFile>("vbwReportToFile", {"text"})
          .method<&FakeService::vbwReportVariable>("vbwReportVariable", {"name", "value", "flag"})
          .method<&FakeService::vbwReportObject>("vbwReportObject", {"name", "object"})
          .method<&FakeService::vbwCloseDumpFile>("vbwCloseDumpFile")
          .method<&FakeService::vbwAfterDump>("vbwAfterDump")
          .method<&FakeService::vbwExitThread>("vbwExitThread", {"flag"})
          .build();
  return table;
}

void FakeService::note(const std::string& member, const std::string& detail) {
  calls.push_back(detail.empty() ? member : member + " " + detail);
  auto it = failing.find(member);
  if (it != failing.end()) throw AutomationError(it->second, member);
}

std::vector<std::string> FakeService::linesStartingWith(std::string_view prefix) const {
  std::vector<std::string> out;
  for (const std::string& c : calls)
    if (c.starts_with(prefix)) out.push_back(c);
  return out;
}

void FakeService::vbwProcIn(const std::string& name, std::string& parameterText) {
  note("vbwProcIn", parameterText.empty() ? name : name + " " + parameterText);
  ++depth;
}

void FakeService::vbwProcOut() {
  note("vbwProcOut", "");
  --depth;
}

std::string FakeService::vbwReportParameter(const std::string& name, const Variant& value) {
  note("vbwReportParameter", name);
  return name + "=" + describe(value);
}

void FakeService::vbwBeforeDump(const std::string& project, const std::string& module,
                                const std::string& procedure, int16_t line, int16_t number,
                                const std::string& description, int16_t systemError) {
  (void)line;  // source lines move as the code changes; tests do not pin them
  note("vbwBeforeDump", project + " " + module + " " + procedure + " " + std::to_string(number) + " " +
                            description + " " + std::to_string(systemError));
}

void FakeService::vbwOpenDumpFile() {
  ++dumps;
  note("vbwOpenDumpFile", "");
}

void FakeService::vbwReportToFile(std::string& text) {
  const auto star = text.find("* ");
  note("vbwReportToFile", star == std::string::npos ? text : text.substr(star, 26));
}

void FakeService::vbwReportVariable(const std::string& name, Variant& value, int32_t flag) {
  note("vbwReportVariable", name + "=" + describe(value) + (flag ? " flag" : ""));
}

void FakeService::vbwReportObject(const std::string& name, ObjectRef object) {
  note("vbwReportObject", name + "=" + (object ? std::string(object->typeName()) : "Nothing"));
}

void FakeService::vbwCloseDumpFile() { note("vbwCloseDumpFile", ""); }

int32_t FakeService::vbwAfterDump() {
  ++afterDumpCalls;
  note("vbwAfterDump", "");
  if (actions.empty()) return defaultAction;
  const int32_t a = actions.front();
  actions.pop_front();
  return a;
}

void FakeService::vbwExitThread(bool flag) { note("vbwExitThread", flag ? "True" : "False"); }

const MemberTable& FakeBridge::members() {
  static const MemberTable& table =
      ClassBuilder<FakeBridge>("BridgeToVB").get<&FakeBridge::ErrorParams>("ErrorParams").build();
  return table;
}

ServiceRegistration::ServiceRegistration(ObjectRef service)
    : bridge(make<FakeBridge>(std::move(service))), replaced(RunningObjects::lookup(vbwProtector::kBridgeClass)) {
  RunningObjects::registerObject(vbwProtector::kBridgeClass, bridge);
}

ServiceRegistration::~ServiceRegistration() {
  RunningObjects::replaceIf(vbwProtector::kBridgeClass, bridge.get(), replaced);
}

}  // namespace QuillFormatAPA::fakes
