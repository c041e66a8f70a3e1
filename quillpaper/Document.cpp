#include "quillpaper/Document.h"

#include <algorithm>
#include <cctype>

namespace quillpaper::doc {

Style nextStyle(Style style) {
  switch (style) {
    case Style::Heading1:
    case Style::Heading2:
    case Style::Heading3:
    case Style::Heading4:
    case Style::Heading5:
    case Style::PartHeading:
    case Style::Centered:
    case Style::Caption:
    case Style::TableNumber:
    case Style::TableTitle: return Style::Normal;
    default: return style;
  }
}

int headingLevel(Style style) {
  switch (style) {
    case Style::Heading1: return 1;
    case Style::Heading2: return 2;
    case Style::Heading3: return 3;
    case Style::Heading4: return 4;
    case Style::Heading5: return 5;
    default: return 0;
  }
}

Style styleNamed(std::string_view name) {
  // The word processor's built-in style numbers: -1 Normal, -2 to -6 the headings.
  if (name == "-1") return Style::Normal;
  if (name == "-2") return Style::Heading1;
  if (name == "-3") return Style::Heading2;
  if (name == "-4") return Style::Heading3;
  if (name == "-5") return Style::Heading4;
  if (name == "-6") return Style::Heading5;
  if (name == "Front Matter") return Style::FrontMatter;
  if (name == "Paragraph") return Style::Paragraph;
  if (name == "Bibliographic Reference") return Style::Bibliography;
  if (name == "Caption") return Style::Caption;
  return Style::Normal;
}

PageHeaderRecord PageHeaderRecord::parse(std::string_view record) {
  size_t digits = record.starts_with("-") ? 1 : 0;
  while (digits < record.size() && std::isdigit(static_cast<unsigned char>(record[digits]))) ++digits;
  PageHeaderRecord r{std::string(record.substr(0, digits)), false, std::string(record.substr(digits))};
  if (r.head.starts_with(kRunningHeadLabel)) {
    r.labelled = true;
    r.head.erase(0, kRunningHeadLabel.size());
  }
  return r;
}

std::string PageHeaderRecord::str() const { return code + (labelled ? std::string(kRunningHeadLabel) : "") + head; }

std::string TableBlock::title() const {
  std::string out = caption;
  for (size_t at; (at = out.find("\r\n")) != std::string::npos;) out.replace(at, 2, " ");
  return out;
}

void Page::trimEnd() {
  while (!blocks.empty()) {
    const auto* p = std::get_if<Paragraph>(&blocks.back());
    if (!p || !p->empty()) break;
    blocks.pop_back();
  }
}

bool Paragraph::empty() const {
  for (const Inline& i : inlines)
    if (!i.besideText()) return false;
  return true;
}

std::string Paragraph::plainText() const {
  std::string out;
  for (const Inline& i : inlines)
    if (i.kind == Inline::Kind::Text || i.kind == Inline::Kind::Placeholder || i.kind == Inline::Kind::Field)
      out += i.text;
    else if (i.kind == Inline::Kind::LineBreak)
      out += ' ';  // as a list of captions shows it
  return out;
}

bool Page::empty() const {
  for (const Block& b : blocks) {
    if (const auto* p = std::get_if<Paragraph>(&b)) {
      if (!p->empty()) return false;
    } else {
      return false;
    }
  }
  return true;
}

Paragraph& PageWriter::current() {
  if (page_.blocks.empty() || !std::holds_alternative<Paragraph>(page_.blocks.back()))
    page_.blocks.emplace_back(Paragraph{});
  return std::get<Paragraph>(page_.blocks.back());
}

void PageWriter::endParagraph() {
  const Style next = nextStyle(current().style);
  page_.blocks.emplace_back(Paragraph{next, {}});
}

void PageWriter::freshParagraph() {
  if (!current().empty()) endParagraph();
}

void PageWriter::setStyle(Style style) { current().style = style; }

void PageWriter::text(std::string_view text, bool toggleBold, bool italic) {
  size_t start = 0;
  while (start <= text.size()) {
    const size_t end = text.find_first_of("\r\n", start);
    const std::string_view piece = text.substr(start, end == std::string_view::npos ? end : end - start);
    if (!piece.empty())
      current().inlines.push_back(formatted(Inline::Kind::Text, std::string(piece), toggleBold, italic));
    if (end == std::string_view::npos) break;
    endParagraph();
    start = end + ((text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n') ? 2 : 1);
  }
}

void PageWriter::placeholder(std::string_view text) {
  // Two placeholders in a row are two things to fill in: keep them apart, as
  // two sentences when the second is one ("[New affiliation]. Delete this
  // paragraph if …").
  Paragraph& p = current();
  if (!p.inlines.empty() && p.inlines.back().kind == Inline::Kind::Placeholder) {
    const std::string& before = p.inlines.back().text;
    const bool sentence = !text.empty() && std::isupper(static_cast<unsigned char>(text[0])) && !before.empty() &&
                          std::string_view(".?!").find(before.back()) == std::string_view::npos;
    this->text(sentence ? ". " : " ");
  }
  current().inlines.push_back(formatted(Inline::Kind::Placeholder, std::string(text), false, false));
}

Inline PageWriter::formatted(Inline::Kind kind, std::string text, bool toggleBold, bool italic) const {
  Inline i;
  i.kind = kind;
  i.text = std::move(text);
  i.toggleBold = toggleBold != format_.toggleBold;
  i.italic = italic || format_.italic;
  i.superscript = format_.superscript;
  return i;
}

void PageWriter::field(std::string code, std::string result, bool italic) {
  Inline i;
  i.kind = Inline::Kind::Field;
  i.code = std::move(code);
  i.text = std::move(result);
  i.italic = italic;
  current().inlines.push_back(std::move(i));
}

void PageWriter::bookmark(std::string name) {
  Inline i;
  i.kind = Inline::Kind::Bookmark;
  i.text = std::move(name);
  current().inlines.push_back(std::move(i));
}

void PageWriter::lineBreak() {
  Inline i;
  i.kind = Inline::Kind::LineBreak;
  current().inlines.push_back(std::move(i));
}

void PageWriter::editingHint(int id) {
  Inline i;
  i.kind = Inline::Kind::EditingHint;
  i.hintId = id;
  current().inlines.push_back(std::move(i));
}

void PageWriter::carriageReturns(int count) {
  for (int k = 0; k < count; ++k) endParagraph();
}

void PageWriter::paragraph(Style style, std::string_view text) {
  freshParagraph();
  current().style = style;
  this->text(text);
  endParagraph();
  current().style = Style::Normal;
}

void PageWriter::block(Block block) {
  if (!current().inlines.empty()) endParagraph();
  // The empty paragraph the cursor was in gives way to the block.
  page_.blocks.back() = std::move(block);
  page_.blocks.emplace_back(Paragraph{});
}

namespace {

bool isMinorWord(std::string_view word) {
  static const char* minor[] = {"a",  "an", "and", "as", "at",  "but", "by", "for", "in",  "nor",
                                "of", "off", "on", "or", "per", "so",  "the", "to", "up", "via", "yet"};
  for (const char* m : minor)
    if (word == m) return true;
  return false;
}

// Title-cases `text` as the continuation of a heading: `first` says whether
// no word has come yet (or a colon just ended one), `inWord` whether the text
// starts inside a word.
void titleCaseInto(std::string& text, bool& first, bool& inWord) {
  size_t i = 0;
  while (i < text.size()) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if (c == ' ') {
      inWord = false;
      ++i;
      continue;
    }
    size_t end = text.find(' ', i);
    if (end == std::string::npos) end = text.size();
    if (!inWord) {
      // The word's first letter, after any opening punctuation: "(subject)".
      size_t letter = i;
      while (letter < end && !std::isalnum(static_cast<unsigned char>(text[letter])) &&
             static_cast<unsigned char>(text[letter]) < 0x80)
        ++letter;
      std::string bare = text.substr(letter, end - letter);
      while (!bare.empty() && std::ispunct(static_cast<unsigned char>(bare.back()))) bare.pop_back();
      if (letter < end && (first || !isMinorWord(bare)))
        text[letter] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[letter])));
      // Each part of a hyphenated word too: "Self-Report", "Well-Being".
      for (size_t h = text.find('-', letter); h != std::string::npos && h + 1 < end; h = text.find('-', h + 1)) {
        const size_t next = text.find_first_of("- ", h + 1);
        if (!isMinorWord(text.substr(h + 1, std::min(next, end) - h - 1)))
          text[h + 1] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[h + 1])));
      }
      first = false;
    }
    first = text[end - 1] == ':';
    inWord = end == text.size();
    i = end;
  }
}

}  // namespace

std::string titleCase(std::string_view text) {
  std::string out(text);
  bool first = true, inWord = false;
  titleCaseInto(out, first, inWord);
  return out;
}

void titleCaseHeadings(Document& document, int deepest) {
  for (auto& section : document.sections)
    for (auto& page : section->pages)
      for (Block& block : page->blocks) {
        auto* p = std::get_if<Paragraph>(&block);
        if (!p || headingLevel(p->style) == 0 || headingLevel(p->style) > deepest) continue;
        bool first = true, inWord = false;
        for (Inline& i : p->inlines) {
          if (i.kind == Inline::Kind::Text)
            titleCaseInto(i.text, first, inWord);
          else if (!i.besideText())
            first = inWord = false;
        }
      }
}

}  // namespace quillpaper::doc
