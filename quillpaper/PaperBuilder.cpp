#include "quillpaper/PaperBuilder.h"

#include "quillpaper/PaperSection.h"

namespace quillpaper {

const MemberTable& PaperBuilder::members() {
  static const MemberTable& table =
      ClassBuilder<PaperBuilder>("DocumentBuilder")
          .get<&PaperBuilder::outputTemplate>("outputTemplate")
          .method<&PaperBuilder::AddSection>(
              "AddSection", {"firstPart", "lastPart", optional("pageHeader"), optional("sameAsPreviousSection")})
          .get<&PaperBuilder::part>("part", {"index"})
          .get<&PaperBuilder::UserConfigurationValue>("UserConfigurationValue", {"key"})
          .get<&PaperBuilder::PaperType>("PaperType")
          .get<&PaperBuilder::APAEdition>("APAEdition")
          .build();
  return table;
}

ObjectRef PaperBuilder::AddSection(int32_t firstPart, int32_t lastPart, const std::optional<std::string>& pageHeader,
                                   std::optional<bool> sameAsPreviousSection) {
  if (firstPart < 0 || lastPart < firstPart)
    throw AutomationError(kInvalidProcedureCall, "parts " + std::to_string(firstPart) + " to " + std::to_string(lastPart));
  auto section = std::make_shared<doc::Section>();
  section->firstPart = firstPart;
  section->lastPart = lastPart;
  section->pageHeader = pageHeader.value_or("");
  section->sameAsPreviousSection = sameAsPreviousSection;
  document_.sections.push_back(section);
  return make<PaperSection>(Ref<PaperBuilder>(this), section);
}

std::string PaperBuilder::UserConfigurationValue(const std::string& key) const {
  auto it = options_.configuration.find(key);
  return it == options_.configuration.end() ? std::string() : it->second;
}

}  // namespace quillpaper
