#pragma once

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

}  // namespace RunningObjects

}  // namespace QuillFormatAPA
