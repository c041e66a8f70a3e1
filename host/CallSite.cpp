#include "CallSite.h"

#include "MemberTable.h"

namespace QuillFormatAPA {

inline DispId CallSite::resolve(const Object& object, uint64_t scope) const {
  // The cache holds a scope of 32 bits; a later one is asked each time.
  const bool cacheable = scope != 0 && scope <= UINT32_MAX;
  const uint64_t cached = cache_.load(std::memory_order_relaxed);
  if (cacheable && (cached >> 32) == scope) return static_cast<DispId>(static_cast<uint32_t>(cached));
  const DispId id = object.idOfName(name_);
  if (cacheable && id != kUnknownDispId)
    cache_.store((scope << 32) | static_cast<uint32_t>(id), std::memory_order_relaxed);
  return id;
}

Variant CallSite::invoke(Object* object, CallKind kind, Args& args) const {
  if (!object) throw AutomationError(kObjectNotSet, std::string(name_));
  const MemberTable* table = object->memberTable();
  const DispId id = resolve(*object, table ? table->serial() : object->idScope());
  if (id == kUnknownDispId)
    throw AutomationError(kUnknownMember, std::string(object->typeName()) + "." + std::string(name_));
  Variant result;
  // An object with a member table is invoked through it.
  if (table)
    table->call(*object, id, kind, args, result);
  else
    object->invoke(id, kind, args, result).throwIfFailed();
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
