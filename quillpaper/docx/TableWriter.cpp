#include "quillpaper/docx/TableWriter.h"

#include <algorithm>

#include "quillpaper/TableMarkup.h"
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

void markedText(RunWriter& runs, std::string_view text, bool italicAll = false) {
  for (const StyledRun& r : renderTableMarkup(text)) {
    RunFormat f;
    f.italic = r.italic || italicAll;
    f.superscript = r.superscript;
    f.subscript = r.subscript;
    runs.text(r.text, f);
  }
}

void border(pugi::xml_node parent, const char* side, long size) {
  pugi::xml_node b = child(parent, side);
  attr(b, "w:val", "single");
  attr(b, "w:sz", size);
  attr(b, "w:space", 0L);
  attr(b, "w:color", "000000");
}

// Column widths from the longest text of each column: a column of figures
// gets what its figures need, the stub column the rest (it may wrap); a
// column of blanks (a gap between groups) stays narrow.
struct ColumnPlan {
  std::vector<long> widths;
  bool small = false;  // set in 10 pt: at 12 pt the figures would not fit
};

ColumnPlan columnWidths(const doc::TableBlock& t, long total) {
  constexpr long kPerCharacter = 125;  // twips per character of 12 pt Times, capitals and figures
  constexpr long kPadding = 300;       // the cell margins and a little air
  std::vector<long> need(static_cast<size_t>(t.columns), kPadding);
  for (const doc::TableRow& r : t.rows)
    for (size_t c = 0; c < r.cells.size(); ++c) {
      const doc::TableCell& cell = r.cells[c];
      if (cell.span != 1 || cell.covered || cell.text.find_first_not_of(' ') == std::string::npos) continue;
      const long length = std::min<long>(40, static_cast<long>(plainText(renderTableMarkup(cell.text)).size()));
      need[c] = std::max(need[c], length * kPerCharacter + kPadding);
    }
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
    attr(m, "w:w", 80L);
    attr(m, "w:type", "dxa");
  }
  const ColumnPlan plan = columnWidths(t, page.textWidth());
  const std::vector<long>& widths = plan.widths;
  pugi::xml_node grid = child(tbl, "w:tblGrid");
  for (long w : widths) attr(child(grid, "w:gridCol"), "w:w", w);

  for (const doc::TableRow& row : t.rows) {
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
      if (row.spaceAfter || cell.spaceAround) {
        pugi::xml_node spacing = child(pPr, "w:spacing");
        attr(spacing, "w:before", cell.spaceAround ? 60L : 0L);
        attr(spacing, "w:after", 60L);
      }
      // The stub column is flush left, as APA sets it; a spanner is centred over its columns.
      const bool left = cell.span == 1 && (cell.leftJustify || c == 0);
      valued(pPr, "w:jc", left ? "left" : "center");
      RunWriter runs(p);
      markedText(runs, cell.text);
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
