#include "server/ClassObject.h"

#include <atomic>

namespace QuillFormatAPA::server {

namespace {
std::atomic<size_t> lockCount{0};
}  // namespace

const MemberTable& ClassObject::members() {
  static const MemberTable& table = ClassBuilder<ClassObject>("ClassObject")
                                        .method<&ClassObject::CreateInstance>("CreateInstance")
                                        .method<&ClassObject::LockServer>("LockServer", {"lock"})
                                        .get<&ClassObject::ClassName>("ClassName")
                                        .build();
  return table;
}

void ClassObject::LockServer(bool lock) {
  if (lock) {
    lockCount.fetch_add(1, std::memory_order_relaxed);
    return;
  }
  // Giving back a lock that was never taken changes nothing.
  size_t held = lockCount.load(std::memory_order_relaxed);
  while (held > 0 && !lockCount.compare_exchange_weak(held, held - 1, std::memory_order_acq_rel)) {
  }
}

size_t ClassObject::locks() noexcept { return lockCount.load(std::memory_order_acquire); }

bool canUnloadNow() noexcept { return LibraryObject::alive() == 0 && ClassObject::locks() == 0; }

}  // namespace QuillFormatAPA::server
