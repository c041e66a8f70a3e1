#include "quillpaper/PaperPage.h"

#include <cctype>
#include <regex>

#include "quillpaper/PaperBuilder.h"

namespace quillpaper {

const MemberTable& PaperPage::members() {
  static const MemberTable& table =
      ClassBuilder<PaperPage>("Page")
          .method<&PaperPage::addStyle>("addStyle", {"name"})
          .method<&PaperPage::addText>("addText", {"text"})
          .method<&PaperPage::addTextToggleBold>("addTextToggleBold", {"text"})
          .method<&PaperPage::setCharacterFormat>(
              "setCharacterFormat",
              {optional("toggleBold", false), optional("italic", false), optional("superscript", false)})
          .method<&PaperPage::addCarriageReturns>("addCarriageReturns", {"count"})
          .method<&PaperPage::addEditingHint>("addEditingHint", {"id"})
          .method<&PaperPage::addOneClick>("addOneClick", {"text"})
          .method<&PaperPage::addBookmark>("addBookmark", {"name"})
          .method<&PaperPage::suppressPageBreak>("suppressPageBreak")
          .method<&PaperPage::AddCenteredParagraph>("AddCenteredParagraph", {"text", optional("partHeading", false)})
          .method<&PaperPage::addTOC>("addTOC", {"kind"})
          .method<&PaperPage::AddCaption>("AddCaption", {"kind"})
          .method<&PaperPage::AddSection>("AddSection", {"heading", "hint", optional("outputTemplate", true)})
          .build();
  return table;
}

void PaperPage::addStyle(const std::string& name) { writer_.setStyle(doc::styleNamed(name)); }

void PaperPage::addText(const std::string& text) { writer_.text(text); }

void PaperPage::addTextToggleBold(const std::string& text) { writer_.text(text, true); }

void PaperPage::setCharacterFormat(bool toggleBold, bool italic, bool superscript) {
  writer_.setFormat({toggleBold, italic, superscript});
}

void PaperPage::addCarriageReturns(int16_t count) {
  if (count < 0) throw AutomationError(kInvalidProcedureCall, "a negative number of carriage returns");
  writer_.carriageReturns(count);
}

void PaperPage::addEditingHint(int32_t id) { writer_.editingHint(id); }

void PaperPage::addOneClick(const std::string& text) { writer_.placeholder(forEdition(text)); }

void PaperPage::addBookmark(const std::string& name) { writer_.bookmark(name); }

void PaperPage::suppressPageBreak() { page_->suppressPageBreak = true; }

void PaperPage::AddCenteredParagraph(const std::string& text, bool partHeading) {
  writer_.paragraph(partHeading ? doc::Style::PartHeading : doc::Style::Centered, text);
}

void PaperPage::addTOC(int16_t kind) {
  if (kind != 0 && kind != 2 && kind != 3)
    throw AutomationError(kInvalidProcedureCall, "list kind " + std::to_string(kind) + " (0, 2 or 3)");
  writer_.block(doc::GeneratedList{kind});
}

void PaperPage::AddCaption(const std::string& kind) {
  // A sample caption for the user to fill in: numbered in a sequence of its
  // own, so that it numbers none of the paper's tables or figures (the first
  // table asked for is Table 1) and heads no list.
  const std::string sequence = "Sample" + kind;
  const int number = builder_->sequences().next(sequence);
  writer_.setStyle(doc::Style::Caption);
  // APA sets the label of a caption in italics: "Figure 1."
  writer_.text(kind + " ", false, true);
  writer_.field("SEQ " + sequence + " \\* ARABIC", std::to_string(number), true);
  writer_.text(". ", false, true);
  writer_.placeholder(kind == "Table" ? "[Title of the table]" : "[Caption of the figure]");
  writer_.carriageReturns(1);
}

void PaperPage::AddSection(const std::string& heading, const std::string& hint, bool outputTemplate) {
  // A sample table or figure ("Table 1. Sample table caption."): a real,
  // numbered caption in APA's form, listed with the tables or figures, not a
  // heading. The 6th edition sets "Table 1" over the title in italics, and
  // "Figure 1. Caption." with its label in italics; the 7th sets the number
  // in bold over the title in italic title case for both.
  static const std::regex sample(R"(^(Table|Figure) ([0-9]+)\. (.*[^.])\.?$)");
  std::smatch m;
  if (std::regex_match(heading, m, sample)) {
    const std::string kind = m[1].str(), number = m[2].str(), title = m[3].str();
    const bool seventh = builder_->APAEdition() == 7;
    writer_.freshParagraph();
    if (kind == "Figure" && !seventh) {
      writer_.setStyle(doc::Style::Caption);
      writer_.text(kind + " ", false, true);
      writer_.field("SEQ " + kind + " \\* ARABIC", number, true);
      writer_.text(". ", false, true);
      writer_.text(title + ".");
    } else {
      writer_.setStyle(doc::Style::TableNumber);
      writer_.text(kind + " ");
      writer_.field("SEQ " + kind + " \\* ARABIC", number);
      writer_.lineBreak();
      // The title is never bold: against the 7th edition's bold number, it says so.
      writer_.text(seventh ? doc::titleCase(title) : title, seventh, true);
    }
    writer_.carriageReturns(1);
  } else {
    writer_.paragraph(doc::Style::Heading1, heading);
  }
  writer_.setStyle(doc::Style::Paragraph);
  if (outputTemplate) writer_.placeholder(forEdition(hint));
}

std::string PaperPage::forEdition(const std::string& hint) const {
  if (builder_->APAEdition() != 7) return hint;
  // The library's hints cite sections of the 6th edition's manual ("(APA
  // 2.05)"), which the 7th numbers differently: a 7th-edition paper does
  // without them rather than send its writer to the wrong section.
  static const std::regex sixthEditionSection(R"( ?\(APA [0-9]\.[0-9]{2}\))");
  return std::regex_replace(hint, sixthEditionSection, "");
}

}  // namespace quillpaper
