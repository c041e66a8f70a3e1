#include "RunningObjects.h"

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace QuillFormatAPA::RunningObjects {

namespace {

struct Registry {
  std::mutex mutex;
  std::map<std::string, ObjectRef, std::less<>> objects;
};

std::atomic<uint64_t> changes{0};

Registry& registry() {
  // Never destroyed: registered host objects may outlive static destruction.
  static Registry* r = new Registry;
  return *r;
}

}  // namespace

void registerObject(std::string_view className, ObjectRef object) {
  Registry& r = registry();
  ObjectRef replaced;  // released after the lock: its release may call back into the registry
  std::lock_guard lock(r.mutex);
  ObjectRef& slot = r.objects[std::string(className)];
  replaced = std::exchange(slot, std::move(object));
  changes.fetch_add(1, std::memory_order_release);
}

bool revoke(std::string_view className) {
  Registry& r = registry();
  ObjectRef dropped;  // released after the lock, in case its destructor calls back
  std::lock_guard lock(r.mutex);
  auto it = r.objects.find(className);
  if (it == r.objects.end()) return false;
  dropped = std::move(it->second);
  r.objects.erase(it);
  changes.fetch_add(1, std::memory_order_release);
  return true;
}

bool replaceIf(std::string_view className, const Object* current, ObjectRef replacement) {
  Registry& r = registry();
  ObjectRef dropped;  // released after the lock
  std::lock_guard lock(r.mutex);
  auto it = r.objects.find(className);
  if (it == r.objects.end() || it->second.get() != current) return false;
  dropped = std::move(it->second);
  if (replacement)
    it->second = std::move(replacement);
  else
    r.objects.erase(it);
  changes.fetch_add(1, std::memory_order_release);
  return true;
}

uint64_t generation() noexcept { return changes.load(std::memory_order_acquire); }

ObjectRef lookup(std::string_view className) {
  Registry& r = registry();
  std::lock_guard lock(r.mutex);
  auto it = r.objects.find(className);
  return it == r.objects.end() ? ObjectRef() : it->second;
}

}  // namespace QuillFormatAPA::RunningObjects
