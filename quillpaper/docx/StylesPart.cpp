// word/styles.xml: the paper's paragraph and character styles. Everything is
// double spaced in one font (Times New Roman 12 pt unless the paper names
// another the 7th edition accepts); headings follow the library's records.
#include <string>

#include "quillpaper/docx/Parts.h"
#include "quillpaper/docx/Xml.h"

namespace quillpaper::docx {

namespace {

constexpr long kHalfInch = 720;
constexpr long kDoubleSpacing = 480;  // in 240ths of a line
constexpr long kSingleSpacing = 240;

struct StyleSpec {
  const char* id;
  const char* name;
  const char* type = "paragraph";
  const char* basedOn = "Normal";
  const char* next = nullptr;
  int outlineLevel = -1;  // 0-based, for headings
  bool builtIn = false;
};

pugi::xml_node addStyle(pugi::xml_node styles, const StyleSpec& s) {
  pugi::xml_node style = styles.append_child("w:style");
  attr(style, "w:type", s.type);
  attr(style, "w:styleId", s.id);
  valued(style, "w:name", s.name);
  if (s.basedOn) valued(style, "w:basedOn", s.basedOn);
  if (s.next) valued(style, "w:next", s.next);
  if (!s.builtIn) child(style, "w:qFormat");
  return style;
}

pugi::xml_node pPr(pugi::xml_node style) {
  pugi::xml_node p = style.child("w:pPr");
  return p ? p : style.append_child("w:pPr");
}

pugi::xml_node rPr(pugi::xml_node style) {
  pugi::xml_node r = style.child("w:rPr");
  return r ? r : style.append_child("w:rPr");
}

void spacing(pugi::xml_node pPrNode, long before, long line) {
  pugi::xml_node s = child(pPrNode, "w:spacing");
  attr(s, "w:before", before);
  attr(s, "w:after", 0L);
  attr(s, "w:line", line);
  attr(s, "w:lineRule", "auto");
}

void rightTab(pugi::xml_node pPrNode, long position, const char* leader) {
  pugi::xml_node tab = child(child(pPrNode, "w:tabs"), "w:tab");
  attr(tab, "w:val", "right");
  if (leader) attr(tab, "w:leader", leader);
  attr(tab, "w:pos", position);
}

void heading(pugi::xml_node styles, int level, const StyleRecord& r) {
  static const char* ids[] = {"Heading1", "Heading2", "Heading3", "Heading4", "Heading5"};
  static const char* names[] = {"heading 1", "heading 2", "heading 3", "heading 4", "heading 5"};
  pugi::xml_node style = addStyle(styles, {ids[level - 1], names[level - 1], "paragraph", "Normal", "Normal",
                                           level - 1, true});
  child(style, "w:qFormat");
  pugi::xml_node p = pPr(style);
  child(p, "w:keepNext");
  child(p, "w:keepLines");
  spacing(p, r.extraLineBefore ? 240 : 0, r.doubleSpace ? kDoubleSpacing : kSingleSpacing);
  if (r.indented) attr(child(p, "w:ind"), "w:firstLine", kHalfInch);
  if (r.centered) valued(p, "w:jc", "center");
  valued(p, "w:outlineLvl", std::to_string(level - 1));
  pugi::xml_node rp = rPr(style);
  if (r.bold) child(rp, "w:b");
  if (r.italic) child(rp, "w:i");
  if (r.underline) valued(rp, "w:u", "single");
}

}  // namespace

std::string stylesXml(const PaperFormat& format, const PageGeometry& page) {
  XmlDocument doc;
  pugi::xml_node styles = doc.wordRoot("w:styles");

  // Defaults: the paper's font (Liberation Serif stands in for Times New
  // Roman where it is missing), double spacing, nothing added between
  // paragraphs.
  pugi::xml_node defaults = child(styles, "w:docDefaults");
  pugi::xml_node rDefault = child(child(defaults, "w:rPrDefault"), "w:rPr");
  pugi::xml_node fonts = child(rDefault, "w:rFonts");
  for (const char* a : {"w:ascii", "w:hAnsi", "w:eastAsia", "w:cs"}) attr(fonts, a, format.font.c_str());
  valued(rDefault, "w:sz", std::to_string(format.fontSize * 2));
  valued(rDefault, "w:szCs", std::to_string(format.fontSize * 2));
  pugi::xml_node lang = child(rDefault, "w:lang");
  attr(lang, "w:val", "en-US");
  attr(lang, "w:eastAsia", "en-US");
  attr(lang, "w:bidi", "ar-SA");
  pugi::xml_node pDefault = child(child(defaults, "w:pPrDefault"), "w:pPr");
  spacing(pDefault, 0, kDoubleSpacing);

  pugi::xml_node normal = addStyle(styles, {"Normal", "Normal", "paragraph", nullptr, nullptr, -1, true});
  attr(normal, "w:default", "1");
  child(normal, "w:qFormat");
  child(pPr(normal), "w:widowControl");
  pugi::xml_node defaultFont =
      addStyle(styles, {"DefaultParagraphFont", "Default Paragraph Font", "character", nullptr, nullptr, -1, true});
  attr(defaultFont, "w:default", "1");

  for (int level = 1; level <= 5; ++level) heading(styles, level, format.headings[static_cast<size_t>(level - 1)]);

  valued(pPr(addStyle(styles, {"FrontMatter", "Front Matter"})), "w:jc", "center");
  attr(child(pPr(addStyle(styles, {"Paragraph", "Paragraph"})), "w:ind"), "w:firstLine", kHalfInch);
  pugi::xml_node bibliography = addStyle(styles, {"Bibliography", "Bibliography", "paragraph", "Normal", nullptr, -1, true});
  pugi::xml_node hanging = child(pPr(bibliography), "w:ind");
  attr(hanging, "w:left", kHalfInch);
  attr(hanging, "w:hanging", kHalfInch);
  valued(pPr(addStyle(styles, {"PartHeading", "Part Heading", "paragraph", "Normal", "Normal"})), "w:jc", "center");
  // The 7th edition sets the title over the text in bold, and a table's number.
  pugi::xml_node textTitle = addStyle(styles, {"CenteredTitle", "Title of Text", "paragraph", "Normal", "Paragraph"});
  valued(pPr(textTitle), "w:jc", "center");
  if (format.edition == 7) child(rPr(textTitle), "w:b");
  pugi::xml_node caption = addStyle(styles, {"Caption", "caption", "paragraph", "Normal", "Normal", -1, true});
  child(pPr(caption), "w:keepNext");

  // Tables: the number and title keep with the table; cells and notes are
  // single spaced.
  pugi::xml_node tableNumber = addStyle(styles, {"TableNumber", "Table Number", "paragraph", "Normal", "TableTitle"});
  child(pPr(tableNumber), "w:keepNext");
  if (format.edition == 7) child(rPr(tableNumber), "w:b");
  pugi::xml_node tableTitle = addStyle(styles, {"TableTitle", "Table Title", "paragraph", "Normal", "Normal"});
  child(pPr(tableTitle), "w:keepNext");
  child(rPr(tableTitle), "w:i");
  spacing(pPr(addStyle(styles, {"TableText", "Table Text"})), 0, kSingleSpacing);
  pugi::xml_node small = addStyle(styles, {"TableTextSmall", "Table Text Small", "paragraph", "TableText"});
  valued(rPr(small), "w:sz", "20");
  valued(rPr(small), "w:szCs", "20");
  spacing(pPr(addStyle(styles, {"TableNote", "Table Note"})), 0, kSingleSpacing);
  pugi::xml_node smallNote = addStyle(styles, {"TableNoteSmall", "Table Note Small", "paragraph", "TableNote"});
  valued(rPr(smallNote), "w:sz", "20");
  valued(rPr(smallNote), "w:szCs", "20");

  // Generated lists: entries with dot leaders to the page number.
  for (int level = 1; level <= 3; ++level) {
    const std::string id = "TOC" + std::to_string(level);
    const std::string name = "toc " + std::to_string(level);
    pugi::xml_node toc = addStyle(styles, {id.c_str(), name.c_str(), "paragraph", "Normal", "Normal", -1, true});
    pugi::xml_node p = pPr(toc);
    rightTab(p, page.textWidth(), "dot");
    attr(child(p, "w:ind"), "w:left", 240L * (level - 1));
  }
  pugi::xml_node figures =
      addStyle(styles, {"TableofFigures", "table of figures", "paragraph", "Normal", "Normal", -1, true});
  rightTab(pPr(figures), page.textWidth(), "dot");

  pugi::xml_node header = addStyle(styles, {"Header", "header", "paragraph", "Normal", nullptr, -1, true});
  rightTab(pPr(header), page.textWidth(), nullptr);
  spacing(pPr(header), 0, kSingleSpacing);

  pugi::xml_node placeholder =
      addStyle(styles, {"PlaceholderText", "Placeholder Text", "character", "DefaultParagraphFont", nullptr, -1, true});
  valued(rPr(placeholder), "w:color", "666666");

  pugi::xml_node commentText = addStyle(styles, {"CommentText", "annotation text", "paragraph", "Normal", nullptr, -1, true});
  spacing(pPr(commentText), 0, kSingleSpacing);
  valued(rPr(commentText), "w:sz", "20");
  pugi::xml_node commentReference = addStyle(
      styles, {"CommentReference", "annotation reference", "character", "DefaultParagraphFont", nullptr, -1, true});
  valued(rPr(commentReference), "w:sz", "16");
  return doc.str();
}

}  // namespace quillpaper::docx
