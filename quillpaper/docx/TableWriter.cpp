#include "quillpaper/docx/TableWriter.h"

#include <algorithm>
#include <optional>

#include "quillpaper/TableMarkup.h"
#include "quillpaper/docx/Layout.h"
#include "quillpaper/docx/Parts.h"
#include "quillpaper/docx/Runs.h"
#include "quillpaper/docx/Xml.h"

namespace quillpaper::docx {

namespace {

constexpr long kThinRule = 4;   // eighths of a point
constexpr long kThickRule = 12;

pugi::xml_node paragraph(pugi::xml_node parent, const char* style, bool breakBefore = false) {
  pugi::xml_node p = child(parent, "w:p");
  pugi::xml_node props = child(p, "w:pPr");
  valued(props, "w:pStyle", style);
  if (breakBefore) child(props, "w:pageBreakBefore");
  return p;
}

// A cell's runs: its markers rendered, or its text as it stands when it is
// the user's own (a column's name, a group's value).
std::vector<StyledRun> runsOf(const doc::TableCell& cell) {
  if (cell.literal) return {{cell.text}};
  return renderTableMarkup(cell.text);
}

void write(RunWriter& runs, const std::vector<StyledRun>& styled) {
  for (const StyledRun& r : styled) {
    RunFormat f;
    f.italic = r.italic;
    f.superscript = r.superscript;
    f.subscript = r.subscript;
    runs.text(r.text, f);
  }
}

void markedText(RunWriter& runs, std::string_view text) { write(runs, renderTableMarkup(text)); }

void border(pugi::xml_node parent, const char* side, long size) {
  pugi::xml_node b = child(parent, side);
  attr(b, "w:val", "single");
  attr(b, "w:sz", size);
  attr(b, "w:space", 0L);
  attr(b, "w:color", "000000");
}

constexpr long kCellMargin = 80;  // twips, left and right

// The column heads: the rows from the top that carry a rule under them.
size_t headRows(const doc::TableBlock& t) {
  size_t n = 0;
  while (n < t.rows.size() &&
         std::any_of(t.rows[n].cells.begin(), t.rows[n].cells.end(), [](const doc::TableCell& c) { return c.ruleBelow; }))
    ++n;
  return n;
}

std::string_view trimmed(std::string_view text) {
  const size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// A figure: a number, with its sign, stars, daggers, a parenthesised standard
// error or a bracketed interval ("−0.49* (0.02)", "[2.37, 3.62]", "2,741.49*"),
// but no word and not a dash standing for a missing value.
bool isFigure(std::string_view text) {
  if (text.empty()) return false;
  bool digit = false;
  for (const char c : text) {
    if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) return false;
    digit = digit || (c >= '0' && c <= '9');
  }
  const std::string_view lead = "0123456789.-+([<>";
  return digit && (lead.find(text.front()) != std::string_view::npos || text.starts_with("\u2212"));
}

long twipsAt(int em, long pointSize) { return static_cast<long>(em) * pointSize * 20 / 1000; }

// How far a figure reaches before and after its decimal point, in
// thousandths of an em; a figure without a point ends at it, as whole
// numbers do.
struct FigureExtent {
  int before = 0;
  int after = 0;
  int width() const { return before + after; }
};

std::optional<FigureExtent> figureIn(const doc::TableCell& cell) {
  if (cell.span != 1 || cell.covered) return std::nullopt;
  const std::string text(trimmed(plainText(runsOf(cell))));
  if (!isFigure(text)) return std::nullopt;
  const std::string_view figure = text;
  const size_t point = std::min(figure.find('.'), figure.size());
  return FigureExtent{widthInEm(figure.substr(0, point)), widthInEm(figure.substr(point))};
}

// The body's figures lined up on their decimal points, column by column,
// with a decimal tab placed so that they sit centred in the column. Where a
// column is too narrow for all of them (a log-likelihood of 38,369.7 among
// coefficients of 0.06), the tab lines up as many as fit, and the others
// keep the alignment the library typed them with.
class DecimalColumns {
 public:
  explicit DecimalColumns(const doc::TableBlock& t) : table_(t), heads_(headRows(t)) {
    figures_.resize(static_cast<size_t>(t.columns));
    for (size_t r = heads_; r < t.rows.size(); ++r)
      for (size_t c = 1; c < t.rows[r].cells.size() && c < figures_.size(); ++c)
        if (const auto figure = figureIn(t.rows[r].cells[c])) figures_[c].push_back(*figure);
  }

  bool hasFigures(size_t column) const { return column < figures_.size() && !figures_[column].empty(); }

  // Places the tabs once the columns' widths and the type size are known.
  void place(const std::vector<long>& widths, long pointSize) {
    pointSize_ = pointSize;
    tabs_.assign(widths.size(), Tab{});
    for (size_t c = 1; c < widths.size() && c < figures_.size(); ++c) tabs_[c] = bestTab(figures_[c], widths[c] - 2 * kCellMargin);
  }

  // The decimal tab of a cell whose figure lines up, or 0.
  long tabFor(size_t row, size_t column) const {
    if (row < heads_ || column >= tabs_.size() || tabs_[column].position == 0) return 0;
    const auto figure = figureIn(table_.rows[row].cells[column]);
    return figure && tabs_[column].holds(*figure) ? tabs_[column].position : 0;
  }

 private:
  struct Tab {
    long position = 0;  // from the cell's left margin; 0: none
    FigureExtent block;  // what fits around it
    bool holds(const FigureExtent& f) const { return f.before <= block.before && f.after <= block.after; }
  };

  // The tab that lines up the most figures, from the widths before the point
  // that the figures themselves give.
  Tab bestTab(const std::vector<FigureExtent>& figures, long room) const {
    Tab best;
    size_t lined = 0;
    for (const FigureExtent& candidate : figures) {
      FigureExtent block{candidate.before, 0};
      size_t count = 0;
      for (const FigureExtent& f : figures)
        if (f.before <= block.before && twipsAt(block.before + f.after, pointSize_) <= room) {
          block.after = std::max(block.after, f.after);
          ++count;
        }
      if (count > lined || (count == lined && count > 0 && block.width() < best.block.width())) {
        lined = count;
        best.block = block;
      }
    }
    if (lined < 2) return {};  // one figure alone is centred like a word
    const long width = twipsAt(best.block.width(), pointSize_);
    best.position = std::max(1L, (room - width) / 2 + twipsAt(best.block.before, pointSize_));
    return best;
  }

  const doc::TableBlock& table_;
  size_t heads_;
  std::vector<std::vector<FigureExtent>> figures_;
  std::vector<Tab> tabs_;
  long pointSize_ = 12;
};

// Column widths from the longest text of each column: a column of figures
// gets what its figures need, the stub column the rest (it may wrap); a
// column of blanks (a gap between groups) stays narrow.
struct ColumnPlan {
  std::vector<long> widths;
  bool small = false;  // set in 10 pt: at 12 pt the figures would not fit
};

ColumnPlan columnWidths(const doc::TableBlock& t, const DecimalColumns& figures, long total) {
  constexpr int kLongest = 20000;  // a longer text wraps: 40 figures' worth, in thousandths of an em
  constexpr long kPadding = 300;   // the cell margins and a little air
  std::vector<long> need(static_cast<size_t>(t.columns), kPadding);
  for (const doc::TableRow& r : t.rows)
    for (size_t c = 0; c < r.cells.size(); ++c) {
      const doc::TableCell& cell = r.cells[c];
      if (cell.span != 1 || cell.covered || cell.text.find_first_not_of(' ') == std::string::npos) continue;
      const int width = widthInEm(trimmed(plainText(runsOf(cell))));
      need[c] = std::max(need[c], twipsAt(std::min(kLongest, width), 12) + kPadding);
    }
  // Figures lined up on their points take a figure's width more than the longest of them.
  for (size_t c = 0; c < need.size(); ++c)
    if (figures.hasFigures(c)) need[c] += twipsAt(500, 12);
  long others = 0;
  for (size_t c = 1; c < need.size(); ++c) others += need[c];
  ColumnPlan plan;
  if (others > total - total / 4) {
    plan.small = true;
    for (long& n : need) n = kPadding + (n - kPadding) * 10 / 12;
    others = 0;
    for (size_t c = 1; c < need.size(); ++c) others += need[c];
  }
  std::vector<long> widths = need;
  if (need[0] + others <= total) {
    widths[0] = total - others;  // the stub takes the room left over
  } else if (others <= total - total / 4) {
    widths[0] = total - others;  // the stub wraps
  } else {
    long used = 0;  // everything shrinks alike
    for (size_t c = 0; c < widths.size(); ++c) used += widths[c] = need[c] * total / (need[0] + others);
    widths.back() += total - used;
  }
  plan.widths = std::move(widths);
  return plan;
}

}  // namespace

void writeTable(pugi::xml_node body, const doc::TableBlock& t, const PageGeometry& page, bool breakBefore,
                const std::string& bookmark, int bookmarkId) {
  // "Table N", then the title in italics on the next line, in one paragraph:
  // the caption the List of Tables takes is the number and the title.
  pugi::xml_node number = paragraph(body, "TableNumber", breakBefore);
  RunWriter runs(number);
  if (!bookmark.empty()) runs.bookmarkStart(bookmarkId, bookmark);
  runs.text("Table ");
  runs.field("SEQ Table \\* ARABIC", std::to_string(t.number));
  if (!bookmark.empty()) runs.bookmarkEnd(bookmarkId);
  runs.lineBreak();
  RunFormat title;
  title.italic = true;
  title.bold = false;  // the 7th edition's number is bold, its title not
  runs.text(t.title(), title);

  pugi::xml_node tbl = child(body, "w:tbl");
  pugi::xml_node props = child(tbl, "w:tblPr");
  pugi::xml_node width = child(props, "w:tblW");
  attr(width, "w:w", page.textWidth());
  attr(width, "w:type", "dxa");
  // The only rules are horizontal: the one over the column heads here, the
  // others under the rows that ask for them.
  border(child(props, "w:tblBorders"), "w:top", kThinRule);
  pugi::xml_node layout = child(props, "w:tblLayout");
  attr(layout, "w:type", "fixed");
  pugi::xml_node margins = child(props, "w:tblCellMar");
  for (const char* side : {"w:left", "w:right"}) {
    pugi::xml_node m = child(margins, side);
    attr(m, "w:w", kCellMargin);
    attr(m, "w:type", "dxa");
  }
  DecimalColumns figures(t);
  const ColumnPlan plan = columnWidths(t, figures, page.textWidth());
  const std::vector<long>& widths = plan.widths;
  pugi::xml_node grid = child(tbl, "w:tblGrid");
  for (long w : widths) attr(child(grid, "w:gridCol"), "w:w", w);

  figures.place(widths, plan.small ? 10 : 12);
  for (size_t r = 0; r < t.rows.size(); ++r) {
    const doc::TableRow& row = t.rows[r];
    pugi::xml_node tr = child(tbl, "w:tr");
    child(child(tr, "w:trPr"), "w:cantSplit");
    for (size_t c = 0; c < row.cells.size(); ++c) {
      const doc::TableCell& cell = row.cells[c];
      if (cell.covered) continue;
      pugi::xml_node tc = child(tr, "w:tc");
      pugi::xml_node tcPr = child(tc, "w:tcPr");
      long cellWidth = 0;
      for (int k = 0; k < cell.span; ++k) cellWidth += widths[c + static_cast<size_t>(k)];
      pugi::xml_node tcW = child(tcPr, "w:tcW");
      attr(tcW, "w:w", cellWidth);
      attr(tcW, "w:type", "dxa");
      if (cell.span > 1) valued(tcPr, "w:gridSpan", std::to_string(cell.span));
      if (cell.ruleBelow) border(child(tcPr, "w:tcBorders"), "w:bottom", cell.thickRule ? kThickRule : kThinRule);
      pugi::xml_node p = paragraph(tc, plan.small ? "TableTextSmall" : "TableText");
      pugi::xml_node pPr = p.child("w:pPr");
      const long decimalTab = figures.tabFor(r, c);
      const bool onPoint = decimalTab > 0;
      if (onPoint) {
        pugi::xml_node tab = child(child(pPr, "w:tabs"), "w:tab");
        attr(tab, "w:val", "decimal");
        attr(tab, "w:pos", decimalTab);
      }
      if (row.spaceAfter || cell.spaceAround) {
        pugi::xml_node spacing = child(pPr, "w:spacing");
        attr(spacing, "w:before", cell.spaceAround ? 60L : 0L);
        attr(spacing, "w:after", 60L);
      }
      // The stub column is flush left, as APA sets it; a spanner is centred over its columns.
      const bool left = cell.span == 1 && (cell.leftJustify || c == 0);
      valued(pPr, "w:jc", left || onPoint ? "left" : "center");
      RunWriter runs(p);
      // In a table cell a decimal tab aligns the text without a tab character
      // (with one, the text would go on to the next stop); the spaces the
      // library pads figures with line them up only in a fixed-width font.
      std::vector<StyledRun> styled = runsOf(cell);
      if (onPoint && !styled.empty()) {
        styled.front().text.erase(0, styled.front().text.find_first_not_of(' '));
        styled.back().text.erase(styled.back().text.find_last_not_of(' ') + 1);
      }
      write(runs, styled);
    }
  }

  if (t.generalNote.empty() && t.notes.empty()) return;
  // The notes in the size of the table's text.
  const char* noteStyle = plan.small ? "TableNoteSmall" : "TableNote";
  if (!t.generalNote.empty()) {
    RunWriter runs(paragraph(body, noteStyle));
    RunFormat italic;
    italic.italic = true;
    runs.text(t.noteLead, italic);
    runs.text(" ");
    markedText(runs, t.generalNote);
  }
  for (const std::string& note : t.notes) {
    RunWriter runs(paragraph(body, noteStyle));
    markedText(runs, note);
  }
}

}  // namespace quillpaper::docx
