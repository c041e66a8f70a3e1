#include "Object.h"

#include "MemberTable.h"

namespace QuillFormatAPA {

Object::~Object() = default;

uint64_t newIdScope() noexcept {
  static std::atomic<uint64_t> next{1};
  return next.fetch_add(1, std::memory_order_relaxed);
}

uint64_t Object::idScope() const noexcept {
  const MemberTable* table = memberTable();
  return table ? table->serial() : 0;
}

DispId Object::idOfName(std::string_view name) const noexcept {
  const MemberTable* table = memberTable();
  return table ? table->idOfName(name) : kUnknownDispId;
}

std::string_view Object::typeName() const noexcept {
  const MemberTable* table = memberTable();
  return table ? std::string_view(table->className()) : std::string_view("Object");
}

}  // namespace QuillFormatAPA
