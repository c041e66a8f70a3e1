#pragma once

#include <memory>

#include "host/MemberTable.h"
#include "quillpaper/Document.h"
#include "quillpaper/PaperBuilder.h"

namespace quillpaper {

using namespace QuillFormatAPA;


// A section of the paper; each addPage appends the page of its next part.
class PaperSection : public Dispatchable<PaperSection> {
 public:
  PaperSection(Ref<PaperBuilder> builder, std::shared_ptr<doc::Section> section)
      : builder_(std::move(builder)), section_(std::move(section)) {}
  static const MemberTable& members();

  ObjectRef addPage();

 private:
  Ref<PaperBuilder> builder_;
  std::shared_ptr<doc::Section> section_;
};

}  // namespace quillpaper
