#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillpaper {

// One name of an author (or editor) list.
struct PersonName {
  std::string family;  // the whole name of a group author
  std::string given;   // as written: "M. H.", "C.-R.", "K. van der"; empty for a group
  bool operator==(const PersonName&) const = default;
};

// How an author list is written, from the author template's settings.
struct AuthorStyle {
  std::string andSeparator = "&";
  int etAlFrom = 8;     // numAuthorsToTriggerEtAl: from this many names, shorten
  int etAlShown = 7;    // numAuthorsInEtAl: names shown then, the last among them
  bool ellipsis = true;  // etAlUsesElipses: "…" before the last name
};

// The names of an APA author list: "Kernis, M. H., Cornell, D. P., & Harlow, T."
// gives three; a group author ("University of Bergen") is one name without
// given names; ". . ." (a shortened list) is skipped.
// `shortened` (when given) tells whether the list was written shortened, with
// an ellipsis before its last name.
std::vector<PersonName> parseNames(std::string_view list, bool* shortened = nullptr);

// The names of an editor list as APA writes it after "In ": given names
// first, "A. C. Gaw", "C. F. Van Parreren & J. A. M. Carpay",
// "R. Battiti, M. Brunato, & P. Pardalos".
std::vector<PersonName> parseGivenFirstNames(std::string_view list);

// The list in APA 6 form: "&" before the last name, up to seven names, from
// eight on the first six, an ellipsis and the last. A list known only in its
// shortened form (`shortened`) keeps its ellipsis.
std::string formatNames(const std::vector<PersonName>& names, const AuthorStyle& style, bool shortened = false);

// Given names as initials: "Lorinda L." gives "L. L.", "Jean-Paul" "J.-P.";
// initials already written stay as they are.
std::string initialsOf(std::string_view given);

}  // namespace quillpaper
