#include "RunningObjects.h"

#include <map>
#include <mutex>
#include <string>

namespace QuillFormatAPA::RunningObjects {

namespace {

struct Registry {
  std::mutex mutex;
  std::map<std::string, ObjectRef, std::less<>> objects;
};

Registry& registry() {
  // Never destroyed: registered host objects may outlive static destruction.
  static Registry* r = new Registry;
  return *r;
}

}  // namespace

void registerObject(std::string_view className, ObjectRef object) {
  Registry& r = registry();
  std::lock_guard lock(r.mutex);
  r.objects.insert_or_assign(std::string(className), std::move(object));
}

bool revoke(std::string_view className) {
  Registry& r = registry();
  ObjectRef dropped;  // released after the lock, in case its destructor calls back
  std::lock_guard lock(r.mutex);
  auto it = r.objects.find(className);
  if (it == r.objects.end()) return false;
  dropped = std::move(it->second);
  r.objects.erase(it);
  return true;
}

ObjectRef lookup(std::string_view className) {
  Registry& r = registry();
  std::lock_guard lock(r.mutex);
  auto it = r.objects.find(className);
  return it == r.objects.end() ? ObjectRef() : it->second;
}

}  // namespace QuillFormatAPA::RunningObjects
