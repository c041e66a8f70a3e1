#pragma once

#include <string_view>

namespace quillpaper {

// The date and page tests of the reference formatter.

// A bare year: four digits, perhaps with a letter ("2005a"); or "n.d.", the
// year of a work without date.
bool isYearText(std::string_view text);
// A page or a range of pages: "45", "45-67", "45–67", "A1", "S12–S20", "e1001", "1+".
bool isPageText(std::string_view text);

}  // namespace quillpaper
