#pragma once

#include <cstddef>

#include "command/ClassFactory.h"
#include "host/LibraryObject.h"
#include "host/MemberTable.h"

namespace QuillFormatAPA::server {

// The class object of one public class: it makes the class's objects and can
// hold the library loaded while the host keeps no object.
class ClassObject final : public Dispatchable<ClassObject>, private LibraryObject {
 public:
  explicit ClassObject(const PublicClass& publicClass) noexcept : class_(publicClass) {}
  static const MemberTable& members();

  ObjectRef CreateInstance() const { return class_.create(); }
  void LockServer(bool lock);
  std::string ClassName() const { return std::string(class_.name); }

  // Locks held by LockServer(true) and not yet given back.
  static size_t locks() noexcept;

 private:
  const PublicClass& class_;
};

// Whether the library may be unloaded: no object of its making alive, no lock held.
bool canUnloadNow() noexcept;

}  // namespace QuillFormatAPA::server
