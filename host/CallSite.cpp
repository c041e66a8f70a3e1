#include "CallSite.h"

#include "MemberTable.h"

namespace QuillFormatAPA {

DispId CallSite::resolve(const Object& object, const MemberTable& table) const {
  const uint64_t serial = table.serial();
  const uint64_t cached = cache_.load(std::memory_order_relaxed);
  if ((cached >> 32) == serial) return static_cast<DispId>(static_cast<uint32_t>(cached));
  const DispId id = object.idOfName(name_);
  cache_.store((serial << 32) | static_cast<uint32_t>(id), std::memory_order_relaxed);
  return id;
}

Variant CallSite::invoke(Object* object, CallKind kind, Args& args) const {
  if (!object) throw AutomationError(kObjectNotSet, std::string(name_));
  const MemberTable* table = object->memberTable();
  const DispId id = table ? resolve(*object, *table) : object->idOfName(name_);
  if (id == kUnknownDispId)
    throw AutomationError(kUnknownMember, std::string(object->typeName()) + "." + std::string(name_));
  Variant result;
  // An object with a member table is invoked through it.
  (table ? table->invoke(*object, id, kind, args, result) : object->invoke(id, kind, args, result)).throwIfFailed();
  return result;
}

Variant invokeByName(Object* object, std::string_view name, CallKind kind, Args& args) {
  if (!object) throw AutomationError(kObjectNotSet, std::string(name));
  const DispId id = object->idOfName(name);
  if (id == kUnknownDispId)
    throw AutomationError(kUnknownMember, std::string(object->typeName()) + "." + std::string(name));
  Variant result;
  object->invoke(id, kind, args, result).throwIfFailed();
  return result;
}

}  // namespace QuillFormatAPA
