#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "Object.h"

namespace QuillFormatAPA::host {

// The template's live word-processor table, driven cell by cell.
class TableRef {
 public:
  explicit TableRef(ObjectRef o) : o_(std::move(o)) {}

  void TypeIntoSelectedCell(std::span<const std::string> cells) const;
  void TypeIntoSelectedCellLeftJustify(std::span<const std::string> cells) const;
  // One cell to the right.
  void MoveRight() const;
  // `count` cells, passed by name.
  void MoveRight(int16_t count) const;
  // `count` cells, passed by position.
  void MoveRightPositional(int16_t count) const;
  void UnderLineRow(int16_t columns, bool addSpaceAfter) const;
  void UnderLineRow(int16_t columns, bool thickerLine, bool addSpaceAfter) const;
  void UnderLineCell(int16_t column, int16_t row) const;
  void AddSpanner(std::string_view text, int16_t span, bool addSpaceBeforeAfter, bool underline) const;
  void AddTableNote(std::string_view text, bool generalNote) const;

 private:
  ObjectRef o_;
};

}  // namespace QuillFormatAPA::host
