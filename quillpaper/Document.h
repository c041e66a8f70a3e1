#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quillpaper::doc {

// What the library writes into a paper, kept until the .docx writer renders it.

// A piece of a paragraph.
struct Inline {
  enum class Kind {
    Text,         // plain text
    Placeholder,  // one-click text the user replaces
    Field,        // a field the word processor numbers: `code`, with `text` as its current result
    Bookmark,     // a named position
    EditingHint,  // a hint shown beside the text (`hintId`), when the paper shows hints
    Remark,       // a remark shown beside the text (`text`), always: "Kept as typed: …"
    LineBreak,    // a new line within the paragraph ("Table 1" over its title)
  };
  Kind kind = Kind::Text;
  std::string text;
  bool toggleBold = false;  // bold the opposite of the paragraph style
  bool italic = false;
  bool superscript = false;
  std::string code;
  int hintId = 0;
  // A mark beside the text (a bookmark, a hint, a remark) that holds none of it.
  bool besideText() const { return kind == Kind::Bookmark || kind == Kind::EditingHint || kind == Kind::Remark; }
};

// Paragraph styles of the paper (the .docx writer defines each).
enum class Style {
  Normal,
  Heading1,
  Heading2,
  Heading3,
  Heading4,
  Heading5,
  FrontMatter,    // the title page's centred lines
  Paragraph,      // body text, first line indented
  Bibliography,   // reference list, hanging indent
  PartHeading,    // "Table of Contents" and the like: centred, not listed
  Centered,       // a centred line that is not a heading (the title over the introduction)
  Caption,        // "Figure 1. ..." / "Table 1. ..."
  TableNumber,    // "Table 1" over a table or figure's title (bold in the 7th edition)
  TableTitle,     // the title under it, in italics
};

// The style the word processor gives the paragraph after one of `style`.
Style nextStyle(Style style);
// 1 to 5 for the heading styles, else 0.
int headingLevel(Style style);
// The style a library style name stands for: "-1" Normal, "-2" Heading 1,
// "-3" Heading 2 (and so on), "Front Matter", "Paragraph", "Bibliographic
// Reference"; unknown names fall back to Normal.
Style styleNamed(std::string_view name);

struct Paragraph {
  Style style = Style::Normal;
  std::vector<Inline> inlines;
  bool empty() const;
  // The paragraph's text without placeholders' brackets or fields' codes.
  std::string plainText() const;
};

// A generated list: table of contents (0), list of figures (2), list of tables (3).
struct GeneratedList {
  int kind = 0;
};

// A statistics table as the library fills it: cells with their markers,
// horizontal rules, spanners and notes.
struct TableCell {
  std::string text;
  bool leftJustify = false;
  int span = 1;          // a spanner covers this many columns
  bool covered = false;  // inside another cell's span
  bool ruleBelow = false;
  bool thickRule = false;
  bool spaceAround = false;  // a spanner with space before and after
  bool literal = false;      // the user's own text (a column's name): no markers in it
};
struct TableRow {
  std::vector<TableCell> cells;
  bool spaceAfter = false;
};
struct TableBlock {
  int number = 1;  // "Table 1"
  std::string caption;
  int columns = 0;
  std::vector<TableRow> rows;
  std::string noteLead = "Note.";
  std::string generalNote;
  std::vector<std::string> notes;  // the probability and specific notes, each on a line
  // The caption as one line: the library breaks a long one ("…Between\r\nSubscales…").
  std::string title() const;
};

using Block = std::variant<Paragraph, GeneratedList, std::shared_ptr<TableBlock>>;

struct Page {
  int part = 0;
  bool suppressPageBreak = false;
  std::vector<Block> blocks;
  bool empty() const;
  // Drops the empty paragraphs at the page's end (the one a heading's
  // paragraph mark leaves for what follows it, say).
  void trimEnd();
};

// A section's page-header record as the library writes it: the code's
// digits, then the running head, perhaps after its label ("Running head: ").
// Code 3 means the head is still the placeholder.
constexpr std::string_view kRunningHeadLabel = "Running head: ";
struct PageHeaderRecord {
  std::string code;
  bool labelled = false;
  std::string head;
  static PageHeaderRecord parse(std::string_view record);
  std::string str() const;
  bool placeholder() const { return code == "3"; }
};

struct Section {
  int firstPart = 0;
  int lastPart = 0;
  std::string pageHeader;  // the page-header record: code digits then the running head
  std::optional<bool> sameAsPreviousSection;
  std::vector<std::shared_ptr<Page>> pages;
};

struct Document {
  std::vector<std::shared_ptr<Section>> sections;
};

// Character formatting the cursor applies to what it writes next.
struct CharacterFormat {
  bool toggleBold = false;
  bool italic = false;
  bool superscript = false;
};

// Writes into a page as the library's page calls ask: a cursor at the end of
// the page's last paragraph.
class PageWriter {
 public:
  explicit PageWriter(Page& page) : page_(page) {}

  // Text and placeholders written from now on take `format` as well as
  // their own (until the format is set again).
  void setFormat(CharacterFormat format) { format_ = format; }

  void setStyle(Style style);
  // Text, with "\r\n" (or a lone "\r" or "\n") ending the paragraph.
  void text(std::string_view text, bool toggleBold = false, bool italic = false);
  void placeholder(std::string_view text);
  void field(std::string code, std::string result, bool italic = false);
  void bookmark(std::string name);
  void editingHint(int id);
  void lineBreak();
  void carriageReturns(int count);
  // A complete paragraph of its own; the cursor moves to a new one after it.
  void paragraph(Style style, std::string_view text);
  void block(Block block);
  Paragraph& current();
  // Starts a new paragraph unless the current one is still empty.
  void freshParagraph();

 private:
  void endParagraph();
  Inline formatted(Inline::Kind kind, std::string text, bool toggleBold, bool italic) const;
  Page& page_;
  CharacterFormat format_;
};

// APA's title case: major words capitalised, the short minor ones (articles,
// conjunctions and prepositions of three letters or fewer) not, unless they
// open the title or follow a colon: "Sample size, power, and precision"
// gives "Sample Size, Power, and Precision".
std::string titleCase(std::string_view text);
// The text of the headings of levels 1 to `deepest` in title case: the 7th
// edition sets all five levels so, the 6th levels 1 and 2. Placeholders stay
// as they are.
void titleCaseHeadings(Document& document, int deepest);

}  // namespace quillpaper::doc
