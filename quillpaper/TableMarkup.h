#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillpaper {

// A run of table text with the formatting its markers ask for.
struct StyledRun {
  std::string text;
  bool italic = false;
  bool superscript = false;
  bool subscript = false;
  bool operator==(const StyledRun&) const = default;
};

// Renders the markers of the statistics tables' texts:
//  - "|" sets off runs: a note letter, star, digit or dagger after a value or
//    label is a superscript ("443.18|*", "Age|2", "|a|Numbers"); a statistical
//    letter is italic ("|p| < .05", "|S| = subjects"); a one-letter symbol
//    before a superscript is italic too ("n|a", "R|2");
//  - marker words become symbols: "chi_squared" χ², "chi_squared_diff" χ²diff,
//    "delta_NFI" ΔNFI, "delta_F" ΔF, "delta_R|2" ΔR², "eta" η, "beta" β,
//    "sigma_squared" followed by a subscript σ² with that subscript, and
//    "_dagger_" †;
//  - a cell that is exactly a statistical symbol ("df", "F", "p", "SE", "B")
//    is set in italics, as APA sets them.
std::vector<StyledRun> renderTableMarkup(std::string_view text);

// The runs' text without formatting ("χ²", "σ²a0").
std::string plainText(const std::vector<StyledRun>& runs);

}  // namespace quillpaper
