#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace quillpaper {

class SettingsDictionary;

// A paragraph style as the library records it: seven "True"/"False" fields
// joined by U+0008.
struct StyleRecord {
  bool centered = true;
  bool indented = false;
  bool bold = false;
  bool italic = false;
  bool underline = false;
  bool doubleSpace = true;
  bool extraLineBefore = false;

  static std::optional<StyleRecord> parse(std::string_view record);
};

// The page and heading settings the library writes into the settings dictionary.
struct PaperFormat {
  // Margins in points.
  double marginTop = 72, marginBottom = 72, marginLeft = 72, marginRight = 72;
  // APA's five heading levels; the first four come from the library's records.
  std::array<StyleRecord, 5> headings{};
  StyleRecord chapter{};
  int edition = 6;  // the APA edition: 6 or 7
  // The body font and its size in points.
  std::string font = "Times New Roman";
  int fontSize = 12;

  // Whether a heading of `level` runs in: its paragraph's text follows it
  // on the same line (levels 3 to 5 in the 6th edition, 4 and 5 in the 7th).
  bool runsIn(int level) const { return level >= (edition == 7 ? 4 : 3); }

  // Reads the settings after the library's getMetaData; postgraduate papers
  // use the binding margin on the left.
  static PaperFormat fromSettings(const SettingsDictionary& settings, bool postgraduate);
};

}  // namespace quillpaper
