#include "Object.h"

#include "MemberTable.h"

namespace QuillFormatAPA {

Object::~Object() = default;

DispId Object::idOfName(std::string_view name) const noexcept {
  const MemberTable* table = memberTable();
  return table ? table->idOfName(name) : kUnknownDispId;
}

std::string_view Object::typeName() const noexcept {
  const MemberTable* table = memberTable();
  return table ? std::string_view(table->className()) : std::string_view("Object");
}

}  // namespace QuillFormatAPA
