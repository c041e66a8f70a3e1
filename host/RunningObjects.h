#pragma once

#include <cstdint>
#include <string_view>

#include "Export.h"
#include "Object.h"

namespace QuillFormatAPA {

// The process's registry of running objects by class name: the host registers
// its objects here and the library finds them by name.
namespace RunningObjects {

// Registers `object` under `className`, replacing any earlier registration.
QFA_API void registerObject(std::string_view className, ObjectRef object);
// Removes the registration; answers whether there was one.
QFA_API bool revoke(std::string_view className);
// The object registered under `className`, or null.
QFA_API ObjectRef lookup(std::string_view className);
// When `current` is what stands under `className`, puts `replacement` there
// (removes the registration when it is null) and answers true; otherwise
// leaves the registration, someone else's now, alone. How an owner undoes its
// own registration, giving back the one it replaced.
QFA_API bool replaceIf(std::string_view className, const Object* current, ObjectRef replacement);
// A number that changes with every registration and revocation: who keeps
// what they looked up compares it to know when to look again.
QFA_API uint64_t generation() noexcept;

}  // namespace RunningObjects

}  // namespace QuillFormatAPA
