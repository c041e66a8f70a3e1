#include <gtest/gtest.h>
#include <zip.h>

#include <pugixml.hpp>
#include <set>

#include "quillpaper/Document.h"
#include "quillpaper/Paper.h"
#include "quillpaper/StartupForm.h"
#include "quillpaper/docx/DocxWriter.h"
#include "quillpaper/docx/Package.h"

namespace quillpaper {
namespace {

using doc::Inline;
using doc::Page;
using doc::PageWriter;
using doc::Paragraph;
using doc::Style;

const Paragraph& paragraphAt(const Page& page, size_t i) { return std::get<Paragraph>(page.blocks.at(i)); }

// APA's title case, and headings title-cased across their pieces (the
// references heading is written around its bookmark).
TEST(PageWriterTest, TitleCase) {
  const std::pair<const char*, const char*> rows[] = {
      {"sample table caption", "Sample Table Caption"},
      {"Sample size, power, and precision", "Sample Size, Power, and Precision"},
      {"Participant (subject) characteristics", "Participant (Subject) Characteristics"},
      {"the role of sex in memory: a review", "The Role of Sex in Memory: A Review"},
      {"well-being at work and self-report", "Well-Being at Work and Self-Report"},
      {"", ""},
  };
  for (const auto& [in, out] : rows) EXPECT_EQ(doc::titleCase(in), out) << in;

  doc::Document document;
  auto section = std::make_shared<doc::Section>();
  auto page = std::make_shared<Page>();
  PageWriter w(*page);
  w.setStyle(Style::Heading2);
  w.text("Refer");
  w.bookmark("References");
  w.text("ences and results\r\nbody text stays\r\n");
  w.setStyle(Style::Heading3);
  w.text("Sample size and power.\r\n");
  section->pages.push_back(page);
  document.sections.push_back(section);
  // The 6th edition: levels 1 and 2 only.
  doc::titleCaseHeadings(document, 2);
  EXPECT_EQ(paragraphAt(*page, 0).plainText(), "References and Results");
  EXPECT_EQ(paragraphAt(*page, 1).plainText(), "body text stays");
  EXPECT_EQ(paragraphAt(*page, 2).plainText(), "Sample size and power.");
  doc::titleCaseHeadings(document, 5);
  EXPECT_EQ(paragraphAt(*page, 2).plainText(), "Sample Size and Power.");
}

// Catches a cursor that keeps writing into the finished paragraph, or a
// heading whose style leaks into the paragraph after it.
TEST(PageWriterTest, CarriageReturnsEndParagraphs) {
  Page page;
  PageWriter w(page);
  w.setStyle(Style::Heading1);
  w.text("Refer", true);
  w.bookmark("References");
  w.text("ences\r\nnext\nlast", true);
  ASSERT_EQ(page.blocks.size(), 3u);
  EXPECT_EQ(paragraphAt(page, 0).plainText(), "References");
  EXPECT_EQ(paragraphAt(page, 0).inlines[1].kind, Inline::Kind::Bookmark);
  EXPECT_EQ(paragraphAt(page, 1).style, Style::Normal);
  EXPECT_EQ(paragraphAt(page, 2).plainText(), "last");
  w.carriageReturns(2);
  EXPECT_EQ(page.blocks.size(), 5u);
}

TEST(PageWriterTest, PlaceholdersInARowStayApart) {
  Page page;
  PageWriter w(page);
  w.placeholder("[New affiliation]");
  w.placeholder("Delete this paragraph");
  w.text("\r\n");
  w.placeholder("[State]");
  w.placeholder("[Zipcode]");
  // Two sentences apart as sentences, two fill-ins with a space.
  EXPECT_EQ(paragraphAt(page, 0).plainText(), "[New affiliation]. Delete this paragraph");
  EXPECT_EQ(paragraphAt(page, 1).plainText(), "[State] [Zipcode]");
}

// Catches a generated list that swallows a paragraph with content.
TEST(PageWriterTest, BlocksTakeTheEmptyParagraphOnly) {
  Page page;
  PageWriter w(page);
  w.paragraph(Style::PartHeading, "Table of Contents");
  w.block(doc::GeneratedList{0});
  w.setStyle(Style::Normal);
  ASSERT_EQ(page.blocks.size(), 3u);
  EXPECT_EQ(paragraphAt(page, 0).plainText(), "Table of Contents");
  EXPECT_TRUE(std::holds_alternative<doc::GeneratedList>(page.blocks[1]));
  EXPECT_TRUE(page.blocks.size() == 3 && paragraphAt(page, 2).empty());
}

// A part of a .docx package, parsed.
pugi::xml_document partOf(const std::string& bytes, const std::string& name) {
  zip_error_t error;
  zip_source_t* src = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error);
  zip_t* z = zip_open_from_source(src, ZIP_RDONLY, &error);
  pugi::xml_document doc;
  zip_file_t* f = z ? zip_fopen(z, name.c_str(), 0) : nullptr;
  if (f) {
    std::string content;
    char buf[4096];
    zip_int64_t n;
    while ((n = zip_fread(f, buf, sizeof buf)) > 0) content.append(buf, static_cast<size_t>(n));
    zip_fclose(f);
    EXPECT_TRUE(doc.load_string(content.c_str(), pugi::parse_default | pugi::parse_ws_pcdata)) << name;
  }
  if (z) zip_close(z);
  return doc;
}

// A paper made through the library, as `quillpaper new` makes it.
class MadePaper {
 public:
  explicit MadePaper(PaperRequest request) : request_(std::move(request)) {
    Session session(DiagnosticsService::Options{ErrorPolicy::Exit, {}, ::testing::TempDir()});
    const StartupForm form = StartupForm::load(session.main2());
    if (request_.parts.empty())
      for (const auto& s : form.sections)
        if (form.defaultFor(s.index, request_.paperType)) request_.parts.insert(s.index);
    paper_ = makePaper(session, request_);
    errors_ = session.service().errors().size();
    layout_ = docx::Layout::of(paper_.builder->document(), [&](int part) { return request_.parts.count(part) > 0; });
    docx::PaperOptions options;
    options.format = paper_.format;
    options.editingHints = request_.hints;
    bytes_ = docx::paperBytes(layout_, options);
  }

  pugi::xml_document part(const std::string& name) const { return partOf(bytes_, name); }
  size_t count(const std::string& partName, const char* xpath) const {
    return part(partName).select_nodes(xpath).size();
  }

  const docx::Layout& layout() const { return layout_; }
  size_t errors() const { return errors_; }

 private:
  PaperRequest request_;
  Paper paper_;
  docx::Layout layout_;
  std::string bytes_;
  size_t errors_ = 0;
};

// Catches sections or headers lost in writing, or a link where each section
// needs its own header.
TEST(DocxTest, SectionsHeadersAndPlaceholders) {
  PaperRequest r;
  r.paperType = 1;
  r.edition = 6;
  r.fields = {{"Title", "Sleep\x01 and \xff Memory"}};  // control and malformed bytes
                                                        // must not break the XML
  MadePaper paper(r);
  EXPECT_EQ(paper.errors(), 0u);
  // The back matter is off by default, so three of the four sections are printed.
  EXPECT_EQ(paper.layout().sections.size(), 3u);
  EXPECT_EQ(paper.count("word/document.xml", "//w:sectPr"), 3u);
  EXPECT_EQ(paper.count("word/document.xml", "//w:headerReference"), 3u);
  EXPECT_EQ(paper.part("word/header1.xml").select_node("//w:t").node().text().as_string(), std::string("Running head: "));
  EXPECT_GT(paper.count("word/document.xml", "//w:sdt/w:sdtPr/w:showingPlcHdr"), 10u);
  EXPECT_EQ(paper.count("word/comments.xml", "//w:comment"), 13u);  // 4 + 7 + 1 + 1 editing hints
  EXPECT_EQ(paper.count("word/document.xml", "//w:instrText[contains(., 'TOC')]"), 3u);
}

// Catches bookmarks with clashing ids, which Word refuses to open.
TEST(DocxTest, BookmarkIdsAreUnique) {
  PaperRequest r;
  r.paperType = 2;
  r.chapters = 3;
  MadePaper paper(r);
  const pugi::xml_document d = paper.part("word/document.xml");
  std::set<std::string> ids, names;
  for (const auto& n : d.select_nodes("//w:bookmarkStart")) {
    EXPECT_TRUE(ids.insert(n.node().attribute("w:id").value()).second);
    EXPECT_TRUE(names.insert(n.node().attribute("w:name").value()).second);
  }
  EXPECT_TRUE(names.count("References"));
  EXPECT_EQ(d.select_nodes("//w:instrText[contains(., 'SEQ chapter')]").size(), 3u);
}

// Catches unselected parts, or pages the library left empty, reaching the paper.
TEST(DocxTest, OnlySelectedPartsWithContentArePrinted) {
  PaperRequest r;
  r.paperType = 1;
  r.parts = {0, 4, 6, 10};  // no body: method, results and discussion stay empty
  MadePaper paper(r);
  std::vector<int> parts;
  for (const auto& s : paper.layout().sections)
    for (const auto& p : s.pages) parts.push_back(p.page->part);
  EXPECT_EQ(parts, (std::vector<int>{0, 4, 10}));  // the introduction holds nothing without the body
  EXPECT_EQ(paper.layout().sections.size(), 3u);
  EXPECT_EQ(paper.count("word/document.xml", "//w:instrText[contains(., 'TOC')]"), 0u);
}

TEST(DocxTest, WithoutHintsThereAreNoComments) {
  PaperRequest r;
  r.hints = false;
  MadePaper paper(r);
  EXPECT_EQ(paper.count("word/document.xml", "//w:commentReference"), 0u);
  EXPECT_EQ(paper.count("[Content_Types].xml", "//*[contains(@PartName, 'comments')]"), 0u);
}


// What each edition's styles make of the headings, the title over the text
// and a table's number; the font a paper asks for.
TEST(DocxTest, StylesFollowTheEdition) {
  struct Row {
    int16_t edition;
    const char* style;
    bool indented, bold, italic;
  };
  const Row rows[] = {
      {6, "Heading3", true, true, false},  {6, "Heading4", true, true, true},  {6, "Heading5", true, false, true},
      {7, "Heading3", false, true, true},  {7, "Heading4", true, true, false}, {7, "Heading5", true, true, true},
      {6, "CenteredTitle", false, false, false}, {7, "CenteredTitle", false, true, false},
      {6, "TableNumber", false, false, false},   {7, "TableNumber", false, true, false},
  };
  for (int16_t edition : {6, 7}) {
    PaperRequest r;
    r.edition = edition;
    if (edition == 7) {
      r.font = "Arial";
      r.fontSize = 11;
    }
    MadePaper paper(r);
    const pugi::xml_document styles = paper.part("word/styles.xml");
    for (const Row& row : rows) {
      if (row.edition != edition) continue;
      const std::string at = std::string("//w:style[@w:styleId='") + row.style + "']";
      SCOPED_TRACE(std::to_string(edition) + " " + row.style);
      EXPECT_EQ(!styles.select_nodes((at + "/w:pPr/w:ind[@w:firstLine]").c_str()).empty(), row.indented);
      EXPECT_EQ(!styles.select_nodes((at + "/w:rPr/w:b").c_str()).empty(), row.bold);
      EXPECT_EQ(!styles.select_nodes((at + "/w:rPr/w:i").c_str()).empty(), row.italic);
    }
    const pugi::xml_node font = styles.select_node("//w:rPrDefault//w:rFonts").node();
    EXPECT_STREQ(font.attribute("w:ascii").value(), edition == 7 ? "Arial" : "Times New Roman");
    EXPECT_STREQ(styles.select_node("//w:rPrDefault//w:sz").node().attribute("w:val").value(),
                 edition == 7 ? "22" : "24");
  }
}

// Catches a label in a 7th-edition header, a running head on a student
// paper, or the title where the short title belongs.
TEST(DocxTest, SeventhEditionHeaders) {
  struct Row {
    int16_t paperType;
    const char* shortTitle;
    const char* shown;  // the header's text before the page number
  };
  const Row rows[] = {{0, "", ""}, {2, "Sleep", ""}, {3, "", "SLEEP AND MEMORY IN OLDER ADULTS"}, {3, "Sleep", "SLEEP"}};
  for (const Row& row : rows) {
    PaperRequest r;
    r.paperType = row.paperType;
    r.fields = {{"Title", "Sleep and Memory in Older Adults"}};
    if (*row.shortTitle) r.fields["Short Title"] = row.shortTitle;
    MadePaper paper(r);
    EXPECT_EQ(paper.errors(), 0u);
    std::string text;
    const pugi::xml_document header = paper.part("word/header1.xml");
    for (const auto& t : header.select_nodes("//w:t")) text += t.node().text().as_string();
    EXPECT_EQ(text, std::string(row.shown) + "1") << row.paperType << " " << row.shortTitle;
  }
}

// Catches a run-in heading set as a paragraph of its own, one without its
// full stop, or body text left in the heading's bold and italics. Which
// levels run in depends on the edition: 3 to 5 in the 6th, 4 and 5 in the 7th.
TEST(DocxTest, RunInHeadingsCarryTheirParagraph) {
  for (int edition : {6, 7}) {
    doc::Document document;
    auto section = std::make_shared<doc::Section>();
    auto page = std::make_shared<Page>();
    page->part = -1;
    PageWriter w(*page);
    for (Style heading : {Style::Heading2, Style::Heading3, Style::Heading4, Style::Heading5}) {
      w.setStyle(heading);
      w.text(heading == Style::Heading5 ? "Is it over?\r\n" : "Level\r\n");
      w.setStyle(Style::Paragraph);
      w.text("Body text.\r\n");
    }
    section->pages.push_back(page);
    document.sections.push_back(section);
    docx::PaperOptions options;
    options.format.edition = edition;
    const std::string bytes =
        docx::paperBytes(docx::Layout::of(document, [](int) { return true; }), options);
    const pugi::xml_document body = partOf(bytes, "word/document.xml");
    std::vector<std::string> paragraphs;
    for (const auto& p : body.select_nodes("//w:body/w:p[w:r]")) {
      std::string text;
      for (const auto& t : p.node().select_nodes(".//w:t")) text += t.node().text().as_string();
      paragraphs.push_back(std::string(p.node().select_node("w:pPr/w:pStyle").node().attribute("w:val").value()) +
                           ": " + text);
    }
    const std::vector<std::string> sixth = {"Heading2: Level", "Paragraph: Body text.", "Heading3: Level. Body text.",
                                            "Heading4: Level. Body text.", "Heading5: Is it over? Body text."};
    const std::vector<std::string> seventh = {"Heading2: Level", "Paragraph: Body text.", "Heading3: Level",
                                              "Paragraph: Body text.", "Heading4: Level. Body text.",
                                              "Heading5: Is it over? Body text."};
    EXPECT_EQ(paragraphs, edition == 6 ? sixth : seventh) << edition;
    // The run-on text is upright and not bold whatever the heading's style.
    const pugi::xml_node last = body.select_nodes("//w:body/w:p[w:r]")[paragraphs.size() - 1].node();
    const pugi::xml_node bodyRun = last.select_node("w:r[w:t='Body text.']").node();
    ASSERT_TRUE(bodyRun) << edition;
    EXPECT_STREQ(bodyRun.select_node("w:rPr/w:b").node().attribute("w:val").value(), "0");
    EXPECT_STREQ(bodyRun.select_node("w:rPr/w:i").node().attribute("w:val").value(), "0");
  }
}


// The package is a sound zip: every part reads back byte for byte (its
// checksum verified), an empty part and one of many compression buffers
// included, under a UTF-8 name, and the same parts give the same bytes.
// Catches wrong offsets, sizes or checksums in the archive.
TEST(DocxTest, PackagesAreSoundZips) {
  std::string large;
  for (int k = 0; large.size() < 300000; ++k) large += "<w:p>" + std::to_string(k * 7919 % 100003) + "</w:p>";
  const std::pair<std::string, std::string> parts[] = {
      {"word/document.xml", large}, {"word/empty.xml", ""}, {"word/caf\u00e9.xml", "<x>caf\u00e9</x>"}};
  const auto make = [&] {
    docx::Package package;
    for (const auto& [name, content] : parts) package.addPart(name, "application/xml", content);
    return package.bytes();
  };
  const std::string bytes = make();
  EXPECT_EQ(make(), bytes);
  zip_error_t error;
  zip_t* z = zip_open_from_source(zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error),
                                  ZIP_RDONLY | ZIP_CHECKCONS, &error);
  ASSERT_TRUE(z) << zip_error_strerror(&error);
  EXPECT_EQ(zip_get_num_entries(z, 0), 5);  // with [Content_Types].xml and _rels/.rels
  for (const auto& [name, content] : parts) {
    zip_file_t* f = zip_fopen(z, name.c_str(), 0);
    ASSERT_TRUE(f) << name;
    std::string back(content.size() + 16, '\0');
    back.resize(static_cast<size_t>(zip_fread(f, back.data(), back.size())));
    EXPECT_EQ(zip_fclose(f), 0) << name;  // a checksum that does not match fails here
    EXPECT_EQ(back, content) << name;
  }
  zip_close(z);
}

// Catches a part spooled to its temporary file coming out of the package
// empty or cut short: it must read back as the same part kept in memory.
TEST(DocxTest, SpooledPartsReadBackWhole) {
  std::string text = "<w:document>";
  for (int k = 0; k < 5000; ++k) text += "<w:p>" + std::to_string(k) + "</w:p>";
  text += "</w:document>";
  for (size_t limit : {size_t{1} << 30, size_t{64}}) {
    docx::Spool spool(limit);
    spool.append(std::string_view(text).substr(0, 100));
    spool.append(std::string_view(text).substr(100));
    spool.finish();
    EXPECT_EQ(spool.file() != nullptr, limit == 64);
    docx::Package package;
    package.addPart("word/document.xml", "application/xml", std::move(spool));
    const std::string bytes = package.bytes();
    zip_error_t error;
    zip_t* z = zip_open_from_source(zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error), ZIP_RDONLY,
                                    &error);
    ASSERT_TRUE(z);
    zip_file_t* f = zip_fopen(z, "word/document.xml", 0);
    ASSERT_TRUE(f);
    std::string back(text.size() + 1, '\0');
    back.resize(static_cast<size_t>(zip_fread(f, back.data(), back.size())));
    zip_fclose(f);
    zip_close(z);
    EXPECT_EQ(back, text) << limit;
  }
}

}  // namespace
}  // namespace quillpaper
