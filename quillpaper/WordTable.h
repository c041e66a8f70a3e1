#pragma once

#include <memory>
#include <string>

#include "host/MemberTable.h"
#include "quillpaper/Document.h"

namespace quillpaper {

using namespace QuillFormatAPA;

// The template's table object: a cursor over a real table that the library's
// table classes fill cell by cell. Moving from row to row is the host's
// (selectRow); the library only moves right within a row.
class WordTable : public Dispatchable<WordTable> {
 public:
  // A table of `rows` rows and `columns` columns.
  WordTable(int rows, int columns);
  static const MemberTable& members();

  void TypeIntoSelectedCell(ParamArray cells);
  void TypeIntoSelectedCellLeftJustify(ParamArray cells);
  void MoveRight(int16_t Count);
  void UnderLineRow(int16_t columns, bool thickerLine, bool addSpaceAfter);
  void UnderLineCell(int16_t Column, int16_t row);
  void AddSpanner(const std::string& text, int16_t span, bool addSpaceBeforeAfter, bool underline);
  void AddTableNote(const std::string& text, bool generalNote);

  // Puts the cursor on the first cell of row `row` (1-based).
  void selectRow(int row);
  const std::shared_ptr<doc::TableBlock>& block() const { return block_; }

 private:
  doc::TableCell& cell(int row, int column);
  void type(ParamArray cells, bool leftJustify);

  std::shared_ptr<doc::TableBlock> block_;
  int row_ = 0;
  int column_ = 0;
};

}  // namespace quillpaper
