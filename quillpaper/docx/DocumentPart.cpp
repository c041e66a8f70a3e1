// word/document.xml: the paper's body, section by section and page by page.
#include <optional>

#include "quillpaper/docx/Parts.h"
#include "quillpaper/docx/Runs.h"
#include "quillpaper/docx/TableWriter.h"
#include "quillpaper/docx/Xml.h"

namespace quillpaper::docx {

namespace {

const char* styleId(doc::Style style) {
  switch (style) {
    case doc::Style::Normal: return "Normal";
    case doc::Style::Heading1: return "Heading1";
    case doc::Style::Heading2: return "Heading2";
    case doc::Style::Heading3: return "Heading3";
    case doc::Style::Heading4: return "Heading4";
    case doc::Style::Heading5: return "Heading5";
    case doc::Style::FrontMatter: return "FrontMatter";
    case doc::Style::Paragraph: return "Paragraph";
    case doc::Style::Bibliography: return "Bibliography";
    case doc::Style::PartHeading: return "PartHeading";
    case doc::Style::Centered: return "CenteredTitle";
    case doc::Style::Caption: return "Caption";
    case doc::Style::TableNumber: return "TableNumber";
    case doc::Style::TableTitle: return "TableTitle";
  }
  return "Normal";
}

class BodyWriter {
 public:
  BodyWriter(pugi::xml_node body, const Layout& layout, const PaperFormat& format, const PageGeometry& page,
             bool editingHints, pugi::xml_writer& written)
      : body_(body), layout_(layout), format_(format), page_(page), editingHints_(editingHints), out_(written) {}

  // Serialises what the body holds so far and lets go of it, so that a long
  // reference list never stands in memory as one tree.
  void flush() {
    while (pugi::xml_node n = body_.first_child()) {
      n.print(out_, "", pugi::format_raw, pugi::encoding_utf8);
      body_.remove_child(n);
    }
  }

  void section(const Layout::SectionRef& s, size_t index, const std::string& headerId, bool last) {
    for (const Layout::PageRef& p : s.pages) {
      const size_t end = shownBlocks(*p.page);
      bool first = true;
      for (size_t b = 0; b < end; ++b) {
        const bool breakBefore = first && p.breakBefore;
        first = false;
        const doc::Paragraph* runOn = b + 1 < end ? runOnText(p.page->blocks[b], p.page->blocks[b + 1]) : nullptr;
        if (runOn) {
          paragraph(std::get<doc::Paragraph>(p.page->blocks[b]), breakBefore, runOn);
          ++b;
        } else {
          block(p.page->blocks[b], breakBefore);
        }
        flush();
      }
    }
    // The section's properties end the body for the last section; the
    // others close with a paragraph of their own, a single point high. (A
    // section break carried by a paragraph that ends in a content control
    // makes LibreOffice run that paragraph into the next section.)
    pugi::xml_node holder = last ? body_ : sectionBreakParagraph();
    sectionProperties(holder, index, headerId);
    flush();
  }

 private:
  void block(const doc::Block& b, bool breakBefore) {
    if (const auto* p = std::get_if<doc::Paragraph>(&b)) {
      paragraph(*p, breakBefore);
    } else if (const auto* list = std::get_if<doc::GeneratedList>(&b)) {
      generatedList(list->kind, breakBefore);
    } else if (const auto* table = std::get_if<std::shared_ptr<doc::TableBlock>>(&b)) {
      const auto listed = layout_.bookmarks.find(table->get());
      const bool hasBookmark = listed != layout_.bookmarks.end();
      writeTable(body_, **table, page_, breakBefore, hasBookmark ? listed->second : "",
                 hasBookmark ? nextBookmark_++ : 0);
    }
  }

  pugi::xml_node newParagraph(const char* style, bool breakBefore) {
    pugi::xml_node p = child(body_, "w:p");
    pugi::xml_node props = child(p, "w:pPr");
    valued(props, "w:pStyle", style);
    if (breakBefore) child(props, "w:pageBreakBefore");
    return p;
  }

  pugi::xml_node sectionBreakParagraph() {
    pugi::xml_node props = child(child(body_, "w:p"), "w:pPr");
    pugi::xml_node spacing = child(props, "w:spacing");
    attr(spacing, "w:line", 20L);
    attr(spacing, "w:lineRule", "exact");
    valued(child(props, "w:rPr"), "w:sz", "2");
    return props;
  }

  bool styleIsBold(doc::Style style) const {
    const int level = doc::headingLevel(style);
    return level > 0 && format_.headings[static_cast<size_t>(level - 1)].bold;
  }

  // The text a run-in heading carries on its line: the body paragraph right
  // after a heading of a level the edition runs in ("Sampling. Text...").
  const doc::Paragraph* runOnText(const doc::Block& heading, const doc::Block& next) const {
    const auto* h = std::get_if<doc::Paragraph>(&heading);
    const auto* body = std::get_if<doc::Paragraph>(&next);
    if (!h || !body || !format_.runsIn(doc::headingLevel(h->style)) || body->empty()) return nullptr;
    if (body->style != doc::Style::Paragraph && body->style != doc::Style::Normal) return nullptr;
    if (layout_.bookmarks.count(body) > 0) return nullptr;
    return body;
  }

  void paragraph(const doc::Paragraph& para, bool breakBefore, const doc::Paragraph* runOn = nullptr) {
    pugi::xml_node p = newParagraph(styleId(para.style), breakBefore);
    RunWriter runs(p);
    const auto listed = layout_.bookmarks.find(&para);
    const int listedId = listed == layout_.bookmarks.end() ? -1 : nextBookmark_++;
    if (listedId >= 0) runs.bookmarkStart(listedId, listed->second);
    inlines(runs, para, false);
    if (listedId >= 0) runs.bookmarkEnd(listedId);
    if (!runOn) return;
    // A run-in heading ends with a full stop; the text after it is set as
    // body text, not in the heading's bold or italics.
    const std::string heading = para.plainText();
    if (!heading.empty() && heading.find_last_of(".?!") != heading.size() - 1) runs.text(".");
    runs.text(" ");
    inlines(runs, *runOn, true);
  }

  void inlines(RunWriter& runs, const doc::Paragraph& para, bool asBody) {
    for (const doc::Inline& i : para.inlines) {
      RunFormat f;
      if (asBody)
        f.bold = i.toggleBold;
      else if (i.toggleBold)
        f.bold = !styleIsBold(para.style);
      f.italic = i.italic;
      f.upright = asBody && !i.italic;
      f.superscript = i.superscript;
      switch (i.kind) {
        case doc::Inline::Kind::Text: runs.text(i.text, f); break;
        case doc::Inline::Kind::Placeholder: runs.placeholder(i.text, f); break;
        case doc::Inline::Kind::Field: runs.field(i.code, i.text, f); break;
        case doc::Inline::Kind::Bookmark: {
          const int id = nextBookmark_++;
          runs.bookmarkStart(id, i.text);
          runs.bookmarkEnd(id);
          break;
        }
        case doc::Inline::Kind::EditingHint:
          if (editingHints_) {
            runs.comment(static_cast<int>(comments.size()));
            comments.push_back(editingHintText(i.hintId));
          }
          break;
        case doc::Inline::Kind::LineBreak: runs.lineBreak(); break;
        case doc::Inline::Kind::Remark:
          runs.comment(static_cast<int>(comments.size()));
          comments.push_back(i.text);
          break;
      }
    }
  }

  // A generated list: a field whose current result is the list's entries,
  // each linking to its heading or caption with its page number.
  void generatedList(int kind, bool breakBefore) {
    static const char* codes[] = {"TOC \\o \"1-3\" \\h \\z \\u", "", "TOC \\h \\z \\c \"Figure\"",
                                  "TOC \\h \\z \\c \"Table\""};
    const auto it = layout_.lists.find(kind);
    const std::vector<ListEntry> none;
    const std::vector<ListEntry>& entries = it == layout_.lists.end() ? none : it->second;
    auto entryStyle = [&](const ListEntry& e) {
      return kind == 0 ? (e.level == 1 ? "TOC1" : e.level == 2 ? "TOC2" : "TOC3") : "TableofFigures";
    };
    pugi::xml_node p = newParagraph(entries.empty() ? "Normal" : entryStyle(entries.front()), breakBefore);
    RunWriter(p).fieldBegin(codes[kind]);
    if (entries.empty()) {
      RunWriter(p).text(kind == 0 ? "No headings yet." : kind == 2 ? "No figures yet." : "No tables yet.");
    }
    for (size_t k = 0; k < entries.size(); ++k) {
      const ListEntry& e = entries[k];
      if (k > 0) p = newParagraph(entryStyle(e), false);
      pugi::xml_node link = child(p, "w:hyperlink");
      attr(link, "w:anchor", e.bookmark);
      attr(link, "w:history", "1");
      RunWriter runs(link);
      runs.text(e.text);
      runs.tab();
      runs.field("PAGEREF " + e.bookmark + " \\h", std::to_string(e.page));
    }
    RunWriter(p).fieldEnd();
  }

  void sectionProperties(pugi::xml_node holder, size_t index, const std::string& headerId) {
    pugi::xml_node s = child(holder, "w:sectPr");
    if (!headerId.empty()) {
      pugi::xml_node h = child(s, "w:headerReference");
      attr(h, "w:type", "default");
      attr(h, "r:id", headerId);
    }
    valued(s, "w:type", "nextPage");
    pugi::xml_node size = child(s, "w:pgSz");
    attr(size, "w:w", page_.width);
    attr(size, "w:h", page_.height);
    pugi::xml_node margins = child(s, "w:pgMar");
    attr(margins, "w:top", page_.top);
    attr(margins, "w:right", page_.right);
    attr(margins, "w:bottom", page_.bottom);
    attr(margins, "w:left", page_.left);
    attr(margins, "w:header", 720L);
    attr(margins, "w:footer", 720L);
    attr(margins, "w:gutter", 0L);
    // Pages are numbered from the title page on, across sections.
    if (index == 0) attr(child(s, "w:pgNumType"), "w:start", 1L);
  }

 public:
  std::vector<std::string> comments;

 private:
  pugi::xml_node body_;
  const Layout& layout_;
  const PaperFormat& format_;
  const PageGeometry& page_;
  bool editingHints_;
  pugi::xml_writer& out_;
  int nextBookmark_ = 0;
};

}  // namespace

Spool documentXml(const Layout& layout, const PaperFormat& format, const PageGeometry& page,
                  const std::vector<std::string>& headerIds, bool editingHints, std::vector<std::string>& comments) {
  XmlDocument doc;
  pugi::xml_node body = child(doc.wordRoot("w:document"), "w:body");
  // The document's frame first, with a marker where the body's content goes;
  // the content is written between the frame's two halves.
  constexpr std::string_view kMarker = "<!--body-->";
  body.append_child(pugi::node_comment).set_value("body");
  const std::string frame = doc.str();
  body.remove_child(body.first_child());
  const size_t at = frame.find(kMarker);
  Spool xml;
  xml.append(std::string_view(frame).substr(0, at));
  BodyWriter writer(body, layout, format, page, editingHints, xml);
  for (size_t i = 0; i < layout.sections.size(); ++i)
    writer.section(layout.sections[i], i, headerIds[i], i + 1 == layout.sections.size());
  if (layout.sections.empty()) child(body, "w:p");
  writer.flush();
  comments = std::move(writer.comments);
  xml.append(std::string_view(frame).substr(at + kMarker.size()));
  xml.finish();
  return xml;
}

}  // namespace quillpaper::docx
