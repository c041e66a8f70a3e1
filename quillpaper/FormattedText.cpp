#include "quillpaper/FormattedText.h"

namespace quillpaper {

void appendRun(std::vector<TextRun>& runs, std::string text, bool italic) {
  if (text.empty()) return;
  if (!runs.empty() && runs.back().italic == italic)
    runs.back().text += text;
  else
    runs.push_back({std::move(text), italic});
}

std::string plainText(const std::vector<TextRun>& runs) {
  std::string out;
  for (const TextRun& r : runs) out += r.text;
  return out;
}

const MemberTable& FormattedText::members() {
  static const MemberTable& table =
      ClassBuilder<FormattedText>("FormattedText").method<&FormattedText::Add>("Add", {"text", "style"}).build();
  return table;
}

void FormattedText::Add(const std::string& text, int32_t style) {
  if (style != 0 && style != 1) throw AutomationError(kInvalidProcedureCall, "style " + std::to_string(style));
  appendRun(runs_, text, style == 1);
}

}  // namespace quillpaper
