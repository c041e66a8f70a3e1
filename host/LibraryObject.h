#pragma once

#include <cstddef>

#include "Export.h"

namespace QuillFormatAPA {

// A base of every object the library itself makes (the command object, the
// entry and table classes, the class objects). It counts the ones alive, so
// that a host can tell when the library may be unloaded.
class QFA_API LibraryObject {
 public:
  // How many library objects exist right now, on every thread.
  static size_t alive() noexcept;

 protected:
  LibraryObject() noexcept;
  LibraryObject(const LibraryObject&) noexcept;
  LibraryObject& operator=(const LibraryObject&) noexcept = default;
  ~LibraryObject();
};

}  // namespace QuillFormatAPA
