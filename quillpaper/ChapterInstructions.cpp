#include "quillpaper/ChapterInstructions.h"

#include "quillpaper/PaperBuilder.h"

namespace quillpaper {

const MemberTable& ChapterInstructions::members() {
  static const MemberTable& table = ClassBuilder<ChapterInstructions>("InstructionBuilder")
                                .method<&ChapterInstructions::addStyle>("addStyle", {"name"})
                                .method<&ChapterInstructions::addText>("addText", {"text"})
                                .method<&ChapterInstructions::AddAutoNumber>("AddAutoNumber", {"sequence"})
                                .method<&ChapterInstructions::addOneClick>("addOneClick", {"text"})
                                .method<&ChapterInstructions::addCarriageReturns>("addCarriageReturns", {"count"})
                                .build();
  return table;
}

void ChapterInstructions::addStyle(const std::string& name) { writer_.setStyle(doc::styleNamed(name)); }

void ChapterInstructions::addText(const std::string& text) { writer_.text(text); }

void ChapterInstructions::AddAutoNumber(const std::string& sequence) {
  writer_.field("SEQ " + sequence + " \\* ARABIC", std::to_string(builder_->sequences().next(sequence)));
}

void ChapterInstructions::addOneClick(const std::string& text) { writer_.placeholder(text); }

void ChapterInstructions::addCarriageReturns(int16_t count) {
  if (count < 0) throw AutomationError(kInvalidProcedureCall, "a negative number of carriage returns");
  writer_.carriageReturns(count);
}

}  // namespace quillpaper
