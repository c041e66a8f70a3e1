#pragma once

#include <memory>
#include <string>

#include "host/MemberTable.h"
#include "quillpaper/Document.h"
#include "quillpaper/PaperBuilder.h"

namespace quillpaper {

using namespace QuillFormatAPA;


// The instruction builder that starts a chapter: the library writes the
// chapter's heading, its number and placeholders into a page of its own.
class ChapterInstructions : public Dispatchable<ChapterInstructions> {
 public:
  ChapterInstructions(Ref<PaperBuilder> builder, std::shared_ptr<doc::Page> page)
      : builder_(std::move(builder)), page_(std::move(page)), writer_(*page_) {}
  static const MemberTable& members();

  void addStyle(const std::string& name);
  void addText(const std::string& text);
  // A number the word processor keeps in sequence.
  void AddAutoNumber(const std::string& sequence);
  void addOneClick(const std::string& text);
  void addCarriageReturns(int16_t count);

 private:
  Ref<PaperBuilder> builder_;
  std::shared_ptr<doc::Page> page_;
  doc::PageWriter writer_;
};

}  // namespace quillpaper
