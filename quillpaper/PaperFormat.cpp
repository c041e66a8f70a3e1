#include "quillpaper/PaperFormat.h"

#include <vector>

#include "host/Array.h"
#include "quillpaper/SettingsDictionary.h"

namespace quillpaper {

std::optional<StyleRecord> StyleRecord::parse(std::string_view record) {
  std::vector<bool> fields;
  size_t start = 0;
  for (;;) {
    const size_t end = record.find('\x08', start);
    const std::string_view field = record.substr(start, end == std::string_view::npos ? end : end - start);
    if (field == "True")
      fields.push_back(true);
    else if (field == "False")
      fields.push_back(false);
    else
      return std::nullopt;
    if (end == std::string_view::npos) break;
    start = end + 1;
  }
  if (fields.size() != 7) return std::nullopt;
  return StyleRecord{fields[0], fields[1], fields[2], fields[3], fields[4], fields[5], fields[6]};
}

PaperFormat PaperFormat::fromSettings(const SettingsDictionary& settings, bool postgraduate) {
  PaperFormat f;
  f.marginTop = settings.number("MarginTop", f.marginTop);
  f.marginBottom = settings.number("MarginBottom", f.marginBottom);
  f.marginLeft = settings.number(postgraduate ? "MarginLeftPostgrad" : "MarginLeft", f.marginLeft);
  f.marginRight = settings.number("MarginRight", f.marginRight);
  f.edition = settings.number("APAEdition", 6) == 7 ? 7 : 6;
  // APA level 5, which the library leaves to the template: indented and
  // italic; in the 7th edition bold as well.
  f.headings[4] = StyleRecord{false, true, f.edition == 7, true, false, true, false};
  const Variant headings = settings.Item("headings");
  if (headings.isArray()) {
    const std::vector<std::string> records = toStrings(headings.array());
    for (size_t i = 0; i < records.size() && i < 5; ++i) {
      const std::optional<StyleRecord> r = StyleRecord::parse(records[i]);
      if (!r) continue;
      if (i == 0)
        f.chapter = *r;
      else
        f.headings[i - 1] = *r;
    }
  }
  return f;
}

}  // namespace quillpaper
