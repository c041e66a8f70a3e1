#include "TableProxy.h"

#include <vector>

#include "CallSite.h"

namespace QuillFormatAPA::host {

namespace {

void typeCells(const CallSite& site, const ObjectRef& table, std::span<const std::string> cells) {
  std::vector<Variant> positional;
  positional.reserve(cells.size());
  for (const std::string& c : cells) positional.push_back(Variant::borrow(c));
  Args args(positional);
  site.invoke(table.get(), CallKind::Method, args);
}

}  // namespace

void TableRef::TypeIntoSelectedCell(std::span<const std::string> cells) const {
  static const CallSite site("TypeIntoSelectedCell");
  typeCells(site, o_, cells);
}

void TableRef::TypeIntoSelectedCellLeftJustify(std::span<const std::string> cells) const {
  static const CallSite site("TypeIntoSelectedCellLeftJustify");
  typeCells(site, o_, cells);
}

void TableRef::MoveRight() const {
  static const CallSite site("MoveRight");
  site.call(o_);
}

void TableRef::MoveRight(int16_t count) const {
  static const CallSite site("MoveRight");
  site.call(o_, named("Count", count));
}

void TableRef::MoveRightPositional(int16_t count) const {
  static const CallSite site("MoveRight");
  site.call(o_, count);
}

void TableRef::UnderLineRow(int16_t columns, bool addSpaceAfter) const {
  static const CallSite site("UnderLineRow");
  site.call(o_, columns, named("addSpaceAfter", addSpaceAfter));
}

void TableRef::UnderLineRow(int16_t columns, bool thickerLine, bool addSpaceAfter) const {
  static const CallSite site("UnderLineRow");
  site.call(o_, columns, named("thickerLine", thickerLine), named("addSpaceAfter", addSpaceAfter));
}

void TableRef::UnderLineCell(int16_t column, int16_t row) const {
  static const CallSite site("UnderLineCell");
  site.call(o_, named("Column", column), named("row", row));
}

void TableRef::AddSpanner(std::string_view text, int16_t span, bool addSpaceBeforeAfter, bool underline) const {
  static const CallSite site("AddSpanner");
  site.call(o_, text, span, named("addSpaceBeforeAfter", addSpaceBeforeAfter), named("underline", underline));
}

void TableRef::AddTableNote(std::string_view text, bool generalNote) const {
  static const CallSite site("AddTableNote");
  site.call(o_, text, named("generalNote", generalNote));
}

}  // namespace QuillFormatAPA::host
