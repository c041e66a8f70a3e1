#include "quillpaper/references/ReferenceTests.h"

#include <regex>
#include <string>

#include "strings/StringUtility.h"

namespace quillpaper {

bool isYearText(std::string_view text) {
  static const std::regex year(R"([0-9]{4}[a-z]?|n\.d\.)");
  const std::string t = QuillStrings::strings().trimmed(text);
  return t.size() <= 5 && std::regex_match(t, year);
}

bool isPageText(std::string_view text) {
  static const std::regex page(R"([A-Za-z]{0,2}[0-9]+[A-Za-z]?\+?(\s*(-|\xE2\x80\x93|\xE2\x80\x94)\s*[A-Za-z]{0,2}[0-9]+[A-Za-z]?)?)");
  std::string t = QuillStrings::strings().trimmed(text);
  if (t.size() > 40) return false;
  // A year on its own closes a conference's place and date, not a page range.
  if (t.size() == 4 && isYearText(t) && t >= "1500" && t <= "2100") return false;
  return std::regex_match(t, page);
}

}  // namespace quillpaper
