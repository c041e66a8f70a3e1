#include "quillpaper/docx/Layout.h"

#include <algorithm>
#include <cstdio>

namespace quillpaper::docx {

namespace {

// Times New Roman's advance widths of the printable ASCII characters, in
// thousandths of an em (the font's published metrics).
constexpr int kTimesWidths[95] = {
    250, 333, 408, 500, 500, 833, 778, 180, 333, 333, 500, 564, 250, 333, 250, 278,  //  !"#$%&'()*+,-./
    500, 500, 500, 500, 500, 500, 500, 500, 500, 500, 278, 278, 564, 564, 564, 444,  // 0-9 :;<=>?
    921, 722, 667, 667, 722, 611, 556, 722, 722, 333, 389, 722, 611, 889, 722, 722,  // @A-O
    556, 722, 667, 556, 611, 722, 722, 944, 722, 722, 611, 333, 278, 333, 469, 500,  // P-Z [\]^_
    333, 444, 500, 444, 500, 444, 333, 500, 500, 278, 278, 500, 278, 778, 500, 500,  // `a-o
    500, 500, 333, 389, 278, 500, 500, 722, 500, 500, 444, 480, 200, 480, 541};      // p-z {|}~

}  // namespace

int widthInEm(std::string_view text) {
  int width = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if (c >= 32 && c < 127)
      width += kTimesWidths[c - 32];
    else if ((c & 0xC0) != 0x80)
      width += 500;
  }
  return width;
}

size_t shownBlocks(const doc::Page& page) {
  size_t end = page.blocks.size();
  while (end > 0) {
    const auto* para = std::get_if<doc::Paragraph>(&page.blocks[end - 1]);
    if (!para || !para->inlines.empty()) break;
    --end;
  }
  return end;
}

int estimatedLines(const doc::Paragraph& paragraph) {
  constexpr int kLine = 468 * 1000 / 12;  // 6.5 in of 12 pt text, in thousandths of an em
  constexpr int kIndent = 36 * 1000 / 12;  // 0.5 in
  std::string text;
  for (const doc::Inline& i : paragraph.inlines) {
    if (i.kind == doc::Inline::Kind::LineBreak) text += '\n';
    else if (!i.besideText()) text += i.text;
  }
  const bool body = paragraph.style == doc::Style::Paragraph;
  const bool hanging = paragraph.style == doc::Style::Bibliography;
  int lines = 1, used = 0;
  auto room = [&] { return kLine - ((lines == 1 && body) || (lines > 1 && hanging) ? kIndent : 0); };
  const int space = kTimesWidths[0];
  size_t at = 0;
  while (at < text.size()) {
    if (text[at] == '\n') {
      ++lines, used = 0, ++at;
      continue;
    }
    if (text[at] == ' ') {
      used += space;
      ++at;
      continue;
    }
    const size_t end = std::min(text.find_first_of(" \n", at), text.size());
    const int width = widthInEm(std::string_view(text).substr(at, end - at));
    if (used > 0 && used + width > room()) {
      ++lines;
      used = 0;
    }
    used += width;
    while (used > room()) {  // a word longer than the line breaks where it must
      used -= room();
      ++lines;
    }
    at = end;
  }
  return lines;
}

namespace {

// The caption's sequence ("Figure", "Table") when `p` is a caption.
std::string captionKind(const doc::Paragraph& p) {
  if (p.style != doc::Style::Caption && p.style != doc::Style::TableNumber) return {};
  for (const doc::Inline& i : p.inlines)
    if (i.kind == doc::Inline::Kind::Field && i.code.starts_with("SEQ ")) {
      const std::string rest = i.code.substr(4);
      return rest.substr(0, rest.find(' '));
    }
  return {};
}

template <class F>
void forEachBlock(const Layout& layout, F f) {
  for (const Layout::SectionRef& s : layout.sections)
    for (const Layout::PageRef& p : s.pages)
      for (const doc::Block& b : p.page->blocks) f(b);
}

// "Table 2 Title", as a list of tables shows a table's caption (its number,
// a line break, its title) once the word processor refreshes it.
std::string tableEntry(const doc::TableBlock& t) {
  return "Table " + std::to_string(t.number) + " " + t.title();
}

}  // namespace

void Layout::assignListEntries() {
  int serial = 0;
  auto bookmark = [&] {
    char name[16];
    std::snprintf(name, sizeof name, "_Toc%08d", ++serial);
    return std::string(name);
  };
  forEachBlock(*this, [&](const doc::Block& b) {
    if (const auto* table = std::get_if<std::shared_ptr<doc::TableBlock>>(&b)) {
      const std::string name = bookmark();
      bookmarks[table->get()] = name;
      lists[3].push_back({1, tableEntry(**table), name, 1});
      return;
    }
    const auto* para = std::get_if<doc::Paragraph>(&b);
    if (!para) return;
    const doc::Paragraph& p = *para;
    const int level = doc::headingLevel(p.style);
    const std::string kind = captionKind(p);
    int list = -1;
    if (level >= 1 && level <= 3) list = 0;
    else if (kind == "Figure") list = 2;
    else if (kind == "Table") list = 3;
    if (list < 0 || p.empty()) return;
    const std::string name = bookmark();
    bookmarks[&p] = name;
    lists[list].push_back({list == 0 ? level : 1, p.plainText(), name, 1});
  });
}

void Layout::estimatePages(int linesPerPage) {
  int page = 0;
  int lines = 0;
  std::map<std::string, int> pageOfBookmark;
  for (SectionRef& s : sections) {
    for (size_t k = 0; k < s.pages.size(); ++k) {
      PageRef& p = s.pages[k];
      // Every section and every page not run on starts a printed page.
      if (k == 0 || p.breakBefore) {
        ++page;
        lines = 0;
      }
      p.firstPrintedPage = page;
      for (size_t n = 0; n < shownBlocks(*p.page); ++n) {
        const doc::Block& b = p.page->blocks[n];
        int blockLines = 1;
        if (const auto* para = std::get_if<doc::Paragraph>(&b)) {
          blockLines = estimatedLines(*para);
          auto it = bookmarks.find(para);
          if (it != bookmarks.end()) pageOfBookmark[it->second] = lines + 1 > linesPerPage ? page + 1 : page;
        } else if (const auto* list = std::get_if<doc::GeneratedList>(&b)) {
          // One line an entry ("No tables yet." when there is none); the
          // list's heading is a paragraph of its own, counted as such.
          blockLines = std::max(1, static_cast<int>(lists[list->kind].size()));
        } else if (const auto* table = std::get_if<std::shared_ptr<doc::TableBlock>>(&b)) {
          // Tables are single spaced: two of their lines to a line of text.
          const doc::TableBlock& t = **table;
          blockLines = 2 + (static_cast<int>(t.rows.size()) + static_cast<int>(t.notes.size()) + 2) / 2;
          auto it = bookmarks.find(table->get());
          if (it != bookmarks.end()) pageOfBookmark[it->second] = page;
        }
        lines += blockLines;
        while (lines > linesPerPage) {
          ++page;
          lines -= linesPerPage;
        }
      }
    }
  }
  printedPages = page;
  for (auto& [kind, entries] : lists)
    for (ListEntry& e : entries) e.page = pageOfBookmark[e.bookmark];
}

}  // namespace quillpaper::docx
