#pragma once

#include <span>
#include <string_view>

#include "host/Export.h"
#include "host/Object.h"

namespace QuillFormatAPA {

// The classes a host can create by name: "QuillFormatAPA.Main2" and the
// library's other public classes.
QFA_API std::span<const std::string_view> classNames() noexcept;

// A new object of the named class (case-insensitive), or null for a name the
// library does not know.
QFA_API ObjectRef createObject(std::string_view className);

}  // namespace QuillFormatAPA
