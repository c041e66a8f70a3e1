#include "quillpaper/docx/Layout.h"

#include <cstdio>

namespace quillpaper::docx {

int estimatedLines(size_t characters) {
  // About 80 characters of Times New Roman fit a 6.5 in line at 12 pt.
  constexpr size_t kPerLine = 80;
  return characters == 0 ? 1 : static_cast<int>((characters + kPerLine - 1) / kPerLine);
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
      for (const doc::Block& b : p.page->blocks) {
        int blockLines = 1;
        if (const auto* para = std::get_if<doc::Paragraph>(&b)) {
          blockLines = estimatedLines(para->plainText().size());
          auto it = bookmarks.find(para);
          if (it != bookmarks.end()) pageOfBookmark[it->second] = lines + 1 > linesPerPage ? page + 1 : page;
        } else if (const auto* list = std::get_if<doc::GeneratedList>(&b)) {
          blockLines = static_cast<int>(lists[list->kind].size()) + 1;
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
