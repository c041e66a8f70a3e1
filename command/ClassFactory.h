#pragma once

#include <span>
#include <string_view>

#include "host/Export.h"
#include "host/MemberTable.h"
#include "host/Object.h"

namespace QuillFormatAPA {

// One class a host can create by name.
struct PublicClass {
  std::string_view name;  // "QuillFormatAPA.Main2"
  ObjectRef (*create)();
  // The member table every object of the class dispatches through.
  const MemberTable& (*members)();
};

// The library's public classes, the command object first.
QFA_API std::span<const PublicClass> publicClasses() noexcept;

// The public class of that name (case-insensitive), or null.
QFA_API const PublicClass* findClass(std::string_view className) noexcept;

// A new object of the named class (case-insensitive), or null for a name the
// library does not know.
QFA_API ObjectRef createObject(std::string_view className);

}  // namespace QuillFormatAPA
