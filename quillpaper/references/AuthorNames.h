#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quillpaper/references/WordAudit.h"

namespace quillpaper {

// One name of an author (or editor) list.
struct PersonName {
  std::string family;  // the whole name of a group author
  std::string given;   // as written: "M. H.", "C.-R.", "K. van der", "Jonathan"; empty for a group
  std::string role;    // "Director", "Producer", "Host": the role written after the name
  bool operator==(const PersonName&) const = default;
};

// An author list as typed.
struct NameList {
  std::vector<PersonName> names;
  bool shortened = false;  // written with an ellipsis before its last name
  bool etAl = false;       // closed by "et al." instead of its other names
  bool operator==(const NameList&) const = default;
};

// How an author list is written, from the author template's settings.
struct AuthorStyle {
  std::string andSeparator = "&";
  int etAlFrom = 8;      // numAuthorsToTriggerEtAl: from this many names, shorten
  int etAlShown = 7;     // numAuthorsInEtAl: names shown then, the last among them
  bool ellipsis = true;  // etAlUsesElipses: "…" before the last name
  bool initialsOnly = false;  // initialsOnly: given names as initials
};

// The names of an author list as people type it: "Kernis, M. H., Cornell,
// D. P., & Harlow, T."; "Smith, J. and Jones, K."; "Ueda, Toshihide";
// "Kubrick, S. (Director)"; a group author, also one with commas
// ("United Nations, General Assembly", "National Heart, Lung, and Blood
// Institute"), as one name without given names; ". . ." (a shortened list)
// and a closing "et al." are noted, not taken for names.
NameList readNames(std::string_view list);

// The names of an editor list as APA writes it after "In ": given names
// first, "A. C. Gaw", "C. F. Van Parreren & J. A. M. Carpay",
// "R. Battiti, M. Brunato, & P. Pardalos".
std::vector<PersonName> parseGivenFirstNames(std::string_view list);

// The list in APA 6 form: "&" before the last name, up to seven names, from
// eight on the first six, an ellipsis and the last. A list known only in its
// shortened form keeps its ellipsis, one closed by "et al." keeps it.
std::string formatNames(const NameList& list, const AuthorStyle& style);

// The names formatNames leaves out of a long list (from `etAlFrom` names on,
// those between the shown ones and the last) and the "&" the ellipsis replaces.
void elidedNames(const NameList& list, const AuthorStyle& style, Rewrites& rewrites);

// Whether a word of a name is its suffix: "Jr.", "Sr.", "II", "III", "IV".
bool isSuffix(std::string_view token);

// Given names as initials: "Lorinda L." gives "L. L.", "Jean-Paul" "J.-P.";
// initials already written stay as they are.
std::string initialsOf(std::string_view given);

// Whether a given name is written out ("Jonathan", "Mary Ann"), not as initials.
bool hasWrittenOutGivenName(std::string_view given);

}  // namespace quillpaper
