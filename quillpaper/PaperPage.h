#pragma once

#include <memory>
#include <string>

#include "host/MemberTable.h"
#include "quillpaper/Document.h"
#include "quillpaper/PaperBuilder.h"

namespace quillpaper {

using namespace QuillFormatAPA;


// One page of the paper as the library writes it: styles, text, one-click
// placeholders, editing hints, bookmarks, generated lists and captions.
class PaperPage : public Dispatchable<PaperPage> {
 public:
  PaperPage(Ref<PaperBuilder> builder, std::shared_ptr<doc::Page> page)
      : builder_(std::move(builder)), page_(std::move(page)), writer_(*page_) {}
  static const MemberTable& members();

  void addStyle(const std::string& name);
  void addText(const std::string& text);
  void addTextToggleBold(const std::string& text);
  // The character formatting of what is written next (the 7th edition's
  // bold titles, italic "Keywords:", superscript affiliation numbers).
  void setCharacterFormat(bool toggleBold, bool italic, bool superscript);
  void addCarriageReturns(int16_t count);
  void addEditingHint(int32_t id);
  void addOneClick(const std::string& text);
  void addBookmark(const std::string& name);
  void suppressPageBreak();
  void AddCenteredParagraph(const std::string& text, bool partHeading);
  void addTOC(int16_t kind);
  void AddCaption(const std::string& kind);
  void AddSection(const std::string& heading, const std::string& hint, bool outputTemplate);

 private:
  // A hint as the paper's edition has it.
  std::string forEdition(const std::string& hint) const;

  Ref<PaperBuilder> builder_;
  std::shared_ptr<doc::Page> page_;
  doc::PageWriter writer_;
};

}  // namespace quillpaper
