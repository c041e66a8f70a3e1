#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "diagnostics/Procedure.h"
#include "host/LibraryObject.h"
#include "host/MemberTable.h"
#include "host/TableProxy.h"

// The frame the nine statistics tables share: each knows one worked example
// of the APA manual (its caption, columns, rows and notes) and writes it into
// the template's table object row by row. A table is data; the frame plays it.
namespace QuillFormatAPA::tables {

// A cell's text; a variance label adds the text of sigmaSquared(subscript).
struct Cell {
  Cell(const char* t) : text(t) {}  // NOLINT: cells are written as literals
  Cell(const char* t, const char* sigmaSubscript) : text(t), sigma(sigmaSubscript) {}
  std::string_view text;
  const char* sigma = nullptr;
};

// One call on the table object.
struct Step {
  enum class Kind {
    TypeCentered,    // TypeIntoSelectedCell
    TypeLeft,        // TypeIntoSelectedCellLeftJustify
    MoveOne,         // MoveRight with no argument
    MoveNamed,       // MoveRight with Count:=count
    MovePositional,  // MoveRight count
    Rule,            // UnderLineRow(columns, addSpaceAfter:=flag)
    ClosingRule,     // UnderLineRow(columns, thickerLine:=True, addSpaceAfter:=flag)
    Spanner,         // AddSpanner(text, count, addSpaceBeforeAfter:=flag, underline:=flag2)
    SpannerAll,      // the same across all columns
    RepairRule,      // the table's own WorkaroundUnderlineLoss
  };
  Step(Kind k, std::vector<Cell> c = {}, int16_t n = 0, bool f = false, bool f2 = false, std::string_view t = {})
      : kind(k), cells(std::move(c)), count(n), flag(f), flag2(f2), text(t) {}
  Kind kind;
  std::vector<Cell> cells;
  int16_t count;
  bool flag;
  bool flag2;
  std::string_view text;
};
using Row = std::vector<Step>;

struct Note {
  std::string_view text;
  bool general;
};

// A single blank: a cell that stays empty but is still visited.
inline constexpr const char* kBlank = " ";

inline Step TC(std::initializer_list<Cell> cells) { return {Step::Kind::TypeCentered, cells}; }
inline Step TL(std::initializer_list<Cell> cells) { return {Step::Kind::TypeLeft, cells}; }
inline Step moveRight() { return {Step::Kind::MoveOne, {}}; }
inline Step moveRight(int16_t count) { return {Step::Kind::MoveNamed, {}, count}; }
inline Step moveRightPositional(int16_t count) { return {Step::Kind::MovePositional, {}, count}; }
inline Step rule(bool addSpaceAfter) { return {Step::Kind::Rule, {}, 0, addSpaceAfter}; }
inline Step closingRule(bool addSpaceAfter) { return {Step::Kind::ClosingRule, {}, 0, addSpaceAfter}; }
inline Step spanner(const char* text, int16_t span, bool spaceBeforeAfter, bool underline) {
  return {Step::Kind::Spanner, {}, span, spaceBeforeAfter, underline, text};
}
inline Step spannerAll(const char* text, bool spaceBeforeAfter, bool underline) {
  return {Step::Kind::SpannerAll, {}, 0, spaceBeforeAfter, underline, text};
}
inline Step repairRule() { return {Step::Kind::RepairRule, {}}; }

// Everything one table knows.
struct TableLayout {
  std::string_view className;
  std::string_view caption;
  int16_t columns;
  std::vector<Row> rows;
  std::vector<Note> notes;
  std::optional<std::string_view> element5;  // metadata element 5, where the table sets it
};

// The common members: initTableSpecificMetadata, AddRow, AddTableNotes and
// the columns property. Derived provides `static const TableLayout& layout();`
// and, where its rows ask for them, WorkaroundUnderlineLoss and sigmaSquared.
template <class Derived>
class StatisticsTable : public Dispatchable<Derived>, public Module, private LibraryObject {
 public:
  static const MemberTable& members() {
    static const MemberTable& table = ClassBuilder<Derived>(std::string(Derived::layout().className))
                                  .template method<&StatisticsTable::initTableSpecificMetadata>(
                                      "initTableSpecificMetadata", {{"metadata", VarType::String}})
                                  .template method<&StatisticsTable::AddRow>("AddRow", {"row", "Table"})
                                  .template method<&StatisticsTable::AddTableNotes>("AddTableNotes", {"Table"})
                                  .build();
    return table;
  }
  std::string_view moduleName() const noexcept override { return Derived::layout().className; }

  // Writes elements 4, 1, 2 and 0 (and 5 where the table has it), counted
  // from the array's lower bound.
  void initTableSpecificMetadata(Array& metadata) {
    traced(*this, "initTableSpecificMetadata", params(arg("metadata", metadata)), [&](Procedure& proc) {
      const TableLayout& s = Derived::layout();
      proc.step([&] { metadata.set(indexAt(metadata, 4), "1"); });
      proc.step([&] { metadata.set(indexAt(metadata, 1), std::to_string(columns())); });
      proc.step([&] { metadata.set(indexAt(metadata, 2), std::to_string(s.rows.size())); });
      proc.step([&] { metadata.set(indexAt(metadata, 0), std::string(s.caption)); });
      if (s.element5) proc.step([&] { metadata.set(indexAt(metadata, 5), std::string(*s.element5)); });
    });
  }

  // Emits row `row` (1-based); a row outside the table emits nothing.
  void AddRow(int16_t row, const ObjectRef& Table) {
    traced(*this, "AddRow", params(arg("row", row), arg("Table", Table)), [&](Procedure& proc) {
      ObjectRef theTable;
      proc.local("theTable", theTable);
      proc.step([&] { theTable = Table; });
      const std::vector<Row>& rows = Derived::layout().rows;
      const int index = row - 1;
      if (index < 0 || index >= static_cast<int>(rows.size())) return;
      const host::TableRef t(theTable);
      for (const Step& s : rows[static_cast<size_t>(index)]) proc.step([&] { play(s, t, theTable); });
    });
  }

  // The general note first, then the probability notes.
  void AddTableNotes(const ObjectRef& Table) {
    traced(*this, "AddTableNotes", params(arg("Table", Table)), [&](Procedure& proc) {
      const host::TableRef t(Table);
      for (const Note& n : Derived::layout().notes) proc.step([&] { t.AddTableNote(n.text, n.general); });
    });
  }

  int16_t columns() {
    return traced(*this, "columns[Get]", [](Procedure&) { return Derived::layout().columns; });
  }

 private:
  std::vector<std::string> texts(const std::vector<Cell>& cells) {
    std::vector<std::string> out;
    out.reserve(cells.size());
    for (const Cell& c : cells) {
      std::string text(c.text);
      if (c.sigma) {
        if constexpr (requires(Derived& d) { d.sigmaSquared(std::string()); })
          text += static_cast<Derived*>(this)->sigmaSquared(c.sigma);
      }
      out.push_back(std::move(text));
    }
    return out;
  }

  void play(const Step& s, const host::TableRef& t, const ObjectRef& table) {
    switch (s.kind) {
      case Step::Kind::TypeCentered: t.TypeIntoSelectedCell(texts(s.cells)); break;
      case Step::Kind::TypeLeft: t.TypeIntoSelectedCellLeftJustify(texts(s.cells)); break;
      case Step::Kind::MoveOne: t.MoveRight(); break;
      case Step::Kind::MoveNamed: t.MoveRight(s.count); break;
      case Step::Kind::MovePositional: t.MoveRightPositional(s.count); break;
      case Step::Kind::Rule: t.UnderLineRow(columns(), s.flag); break;
      case Step::Kind::ClosingRule: t.UnderLineRow(columns(), true, s.flag); break;
      case Step::Kind::Spanner: t.AddSpanner(s.text, s.count, s.flag, s.flag2); break;
      case Step::Kind::SpannerAll: t.AddSpanner(s.text, columns(), s.flag, s.flag2); break;
      case Step::Kind::RepairRule:
        if constexpr (requires(Derived& d) { d.WorkaroundUnderlineLoss(table); })
          static_cast<Derived*>(this)->WorkaroundUnderlineLoss(table);
        break;
    }
  }
};

}  // namespace QuillFormatAPA::tables
