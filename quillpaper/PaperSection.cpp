#include "quillpaper/PaperSection.h"

#include "quillpaper/PaperBuilder.h"
#include "quillpaper/PaperPage.h"

namespace quillpaper {

const MemberTable& PaperSection::members() {
  static const MemberTable& table = ClassBuilder<PaperSection>("Section").method<&PaperSection::addPage>("addPage").build();
  return table;
}

ObjectRef PaperSection::addPage() {
  auto page = std::make_shared<doc::Page>();
  page->part = section_->firstPart + static_cast<int>(section_->pages.size());
  section_->pages.push_back(page);
  return make<PaperPage>(builder_, page);
}

}  // namespace quillpaper
