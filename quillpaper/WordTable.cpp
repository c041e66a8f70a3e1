#include "quillpaper/WordTable.h"

#include <algorithm>

#include "host/Array.h"

namespace quillpaper {

const MemberTable& WordTable::members() {
  static const MemberTable& table =
      ClassBuilder<WordTable>("Table")
          .method<&WordTable::TypeIntoSelectedCell>("TypeIntoSelectedCell", {"cells"})
          .method<&WordTable::TypeIntoSelectedCellLeftJustify>("TypeIntoSelectedCellLeftJustify", {"cells"})
          .method<&WordTable::MoveRight>("MoveRight", {optional("Count", int16_t{1})})
          .method<&WordTable::UnderLineRow>("UnderLineRow", {"columns", optional("thickerLine", false),
                                                             optional("addSpaceAfter", false)})
          .method<&WordTable::UnderLineCell>("UnderLineCell", {"Column", "row"})
          .method<&WordTable::AddSpanner>("AddSpanner", {"text", "span", optional("addSpaceBeforeAfter", false),
                                                         optional("underline", false)})
          .method<&WordTable::AddTableNote>("AddTableNote", {"text", optional("generalNote", false)})
          .build();
  return table;
}

WordTable::WordTable(int rows, int columns) : block_(std::make_shared<doc::TableBlock>()) {
  block_->columns = columns;
  block_->rows.assign(static_cast<size_t>(rows), doc::TableRow{std::vector<doc::TableCell>(static_cast<size_t>(columns)), false});
}

void WordTable::selectRow(int row) {
  row_ = row - 1;
  column_ = 0;
}

doc::TableCell& WordTable::cell(int row, int column) {
  if (row < 0 || row >= static_cast<int>(block_->rows.size()) || column < 0 || column >= block_->columns)
    throw AutomationError(kSubscriptOutOfRange,
                          "cell " + std::to_string(row + 1) + "," + std::to_string(column + 1) + " of the table");
  return block_->rows[static_cast<size_t>(row)].cells[static_cast<size_t>(column)];
}

void WordTable::type(ParamArray cells, bool leftJustify) {
  for (const Variant& text : cells.values) {
    doc::TableCell& c = cell(row_, column_);
    c.text = text.toString();
    c.leftJustify = leftJustify;
    column_ += c.span;
  }
}

void WordTable::TypeIntoSelectedCell(ParamArray cells) { type(cells, false); }
void WordTable::TypeIntoSelectedCellLeftJustify(ParamArray cells) { type(cells, true); }

void WordTable::MoveRight(int16_t Count) {
  if (Count < 0) throw AutomationError(kInvalidProcedureCall, "MoveRight by a negative count");
  column_ += Count;
}

void WordTable::UnderLineRow(int16_t columns, bool thickerLine, bool addSpaceAfter) {
  doc::TableRow& r = block_->rows.at(static_cast<size_t>(row_));
  for (int c = 0; c < std::min<int>(columns, block_->columns); ++c) {
    r.cells[static_cast<size_t>(c)].ruleBelow = true;
    r.cells[static_cast<size_t>(c)].thickRule = thickerLine;
  }
  r.spaceAfter = addSpaceAfter;
}

void WordTable::UnderLineCell(int16_t Column, int16_t row) { cell(row - 1, Column - 1).ruleBelow = true; }

void WordTable::AddSpanner(const std::string& text, int16_t span, bool addSpaceBeforeAfter, bool underline) {
  doc::TableCell& c = cell(row_, column_);
  // A span may reach past the last column; it stops there.
  const int covered = std::max(1, std::min<int>(span, block_->columns - column_));
  c.text = text;
  c.span = covered;
  c.ruleBelow = underline;
  c.spaceAround = addSpaceBeforeAfter;
  for (int k = 1; k < covered; ++k) cell(row_, column_ + k).covered = true;
  column_ += covered;
}

void WordTable::AddTableNote(const std::string& text, bool generalNote) {
  if (generalNote)
    block_->generalNote = text;
  else
    block_->notes.push_back(text);
}

}  // namespace quillpaper
