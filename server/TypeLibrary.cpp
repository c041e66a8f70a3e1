#include "server/TypeLibrary.h"

#include "command/ClassFactory.h"
#include "host/Array.h"
#include "host/MemberTable.h"
#include "server/ClassObject.h"
#include "server/Json.h"

#ifndef QFA_VERSION_MAJOR
#define QFA_VERSION_MAJOR 0
#define QFA_VERSION_MINOR 0
#define QFA_VERSION_PATCH 0
#endif

namespace QuillFormatAPA::server {

namespace {

#define QFA_STR2(x) #x
#define QFA_STR(x) QFA_STR2(x)
constexpr const char* kVersion =
    QFA_STR(QFA_VERSION_MAJOR) "." QFA_STR(QFA_VERSION_MINOR) "." QFA_STR(QFA_VERSION_PATCH);

std::string_view kindName(MemberKind kind) {
  switch (kind) {
    case MemberKind::Method: return "method";
    case MemberKind::PropertyGet: return "propertyGet";
    case MemberKind::Property: return "property";
  }
  return "method";
}

// A default value as JSON: booleans and numbers as such, anything else as text.
std::string jsonValue(const Variant& v) {
  switch (v.type()) {
    case VarType::Boolean: return v.toBool() ? "true" : "false";
    case VarType::Integer:
    case VarType::Long: return std::to_string(v.toLong());
    case VarType::Double: return formatNumber(v.toDouble());
    case VarType::Empty:
    case VarType::Null: return "null";
    default: return jsonString(v.toString());
  }
}

std::string param(const ParamInfo& p) {
  std::string out = "{\"name\": " + jsonString(p.name) + ", \"type\": " + jsonString(p.type.name()) +
                    ", \"byRef\": " + (p.byRef ? "true" : "false") +
                    ", \"optional\": " + (p.optional ? "true" : "false");
  if (!p.defaultValue.isMissing()) out += ", \"default\": " + jsonValue(p.defaultValue);
  if (p.paramArray) out += ", \"paramArray\": true";
  return out + "}";
}

std::string member(DispId id, const MemberInfo& m) {
  std::string out = "{\"dispId\": " + std::to_string(id) + ", \"name\": " + jsonString(m.name) +
                    ", \"kind\": " + jsonString(kindName(m.kind)) + ", \"params\": [";
  for (size_t i = 0; i < m.params.size(); ++i) out += (i ? ", " : "") + param(m.params[i]);
  return out + "], \"result\": " + jsonString(m.result.name()) + "}";
}

// One class: its creatable name (if any), its name and its members in dispatch order.
std::string classEntry(const MemberTable& table, std::string_view progId) {
  std::string out = "    {\n";
  if (!progId.empty()) out += "      \"progId\": " + jsonString(progId) + ",\n";
  out += "      \"name\": " + jsonString(table.className()) + ",\n      \"members\": [";
  const auto members = table.members();
  for (size_t i = 0; i < members.size(); ++i)
    out += (i ? ",\n        " : "\n        ") + member(static_cast<DispId>(i), members[i]);
  return out + "\n      ]\n    }";
}

std::string build() {
  std::string out = "{\n  \"library\": \"QuillFormatAPA\",\n  \"version\": ";
  out += jsonString(kVersion);
  out += ",\n  \"classes\": [";
  bool firstClass = true;
  for (const PublicClass& c : publicClasses()) {
    out += firstClass ? "\n" : ",\n";
    firstClass = false;
    out += classEntry(c.members(), c.name);
  }
  // The interface of every class object, which makes the objects of one class.
  out += "\n  ],\n  \"classObject\":\n" + classEntry(ClassObject::members(), {}) + "\n}\n";
  return out;
}

}  // namespace

const std::string& typeLibraryJson() {
  static const std::string json = build();
  return json;
}

std::string_view version() noexcept { return kVersion; }

}  // namespace QuillFormatAPA::server
