#pragma once

#include <map>
#include <string>
#include <vector>

#include "quillpaper/Document.h"

namespace quillpaper::docx {

// An entry of a generated list: a heading or a caption, where it is, what it reads.
struct ListEntry {
  int level = 1;         // 1 to 3 for headings; 1 for captions
  std::string text;
  std::string bookmark;  // "_Toc00000001"
  int page = 1;
};

// The paper as it will be printed: the pages of the selected parts that have
// content, grouped into their sections, with the page each starts on and the
// entries of the generated lists.
struct Layout {
  struct PageRef {
    const doc::Page* page = nullptr;
    bool breakBefore = false;  // starts a new printed page
    int firstPrintedPage = 1;
  };
  struct SectionRef {
    const doc::Section* section = nullptr;
    std::vector<PageRef> pages;
  };
  std::vector<SectionRef> sections;
  // Generated lists by kind: 0 contents, 2 figures, 3 tables.
  std::map<int, std::vector<ListEntry>> lists;
  // The bookmark of each listed paragraph or table.
  std::map<const void*, std::string> bookmarks;
  int printedPages = 0;

  // Lays out `document`, keeping the pages whose part `included` answers
  // true for (parts below 0, added by the host, are always kept).
  template <class Included>
  static Layout of(const doc::Document& document, Included included);

 private:
  void assignListEntries();
  void estimatePages(int linesPerPage);
};

// The blocks of a page the document shows: all but the blank paragraphs at
// its end, which could only push the next page's content along.
size_t shownBlocks(const doc::Page& page);

// The width of a text set in Times New Roman, in thousandths of an em; a
// character beyond ASCII counts as a figure's width.
int widthInEm(std::string_view text);

// The lines a paragraph takes at 12 pt on a 6.5 in line, wrapped word by
// word with the widths of Times New Roman (and its metric twin, Liberation
// Serif), its style's indents taken off: the body's first line, a reference's
// lines after the first.
int estimatedLines(const doc::Paragraph& paragraph);

template <class Included>
Layout Layout::of(const doc::Document& document, Included included) {
  Layout layout;
  for (const auto& section : document.sections) {
    SectionRef s{section.get(), {}};
    for (const auto& page : section->pages) {
      if (page->empty() || (page->part >= 0 && !included(page->part))) continue;
      s.pages.push_back({page.get(), !s.pages.empty() && !page->suppressPageBreak, 1});
    }
    if (!s.pages.empty()) layout.sections.push_back(std::move(s));
  }
  layout.assignListEntries();
  layout.estimatePages(23);
  return layout;
}

}  // namespace quillpaper::docx
