#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillpaper {

// The rule that guards what people type: every word of an entry appears in
// its APA form. Words are compared without case and punctuation; a web
// address or DOI counts as one word ("https://doi.org/10.1/x", "doi:10.1/x"
// and "doi: 10.1/x" are the same DOI). What APA itself rewrites does not
// count as a change:
//   - "and" and "&" are one word;
//   - labels APA adds or drops: "vol.", "no.", "pp.", "p.", "ed.", "eds.",
//     "trans.", "Retrieved … from", "Available at", "Accessed", "URL:";
//   - "In" before the editors of a book;
//   - ordinal words of an edition ("Second edition" is "2nd ed.");
//   - the descriptions in brackets each edition writes in its own words
//     ("[Supplement]", "[Web log post]", "[Video file]" / "[Video]").
// What else the pipeline rewrites on APA's behalf (given names written as
// initials, the names left out between the sixth and the last author) it
// declares in `Rewrites`.
struct Rewrites {
  std::vector<std::string> mayLose;
  std::vector<std::string> mayAdd;
};

struct WordAudit {
  std::vector<std::string> lost;     // words of the entry the APA form lacks
  std::vector<std::string> added;    // words of the APA form the entry lacks
  std::vector<std::string> damaged;  // punctuation the APA form breaks (". ," where the entry had none)

  bool clean() const { return lost.empty() && added.empty() && damaged.empty(); }
  // One line for a reader: "would lose "Jones", "K."; would add "&"".
  std::string reason() const;
};

WordAudit auditWords(std::string_view typed, std::string_view written, const Rewrites& rewrites = {});

// Whether `written` keeps the typed words it writes in their order, but for
// `slack` words (what APA moves on its own, the "&" before the last author
// among them), a given name written as its initials keeping its place: an
// entry typed in APA's own order comes back in it, one typed in another
// style's order ("Kernis MH. Title. J Pers. 1993;65:1190.") does not. Words
// left out do not count: whether they may be is the audit's question.
bool keepsWordOrder(std::string_view typed, std::string_view written, size_t slack = 2);

// An edition's ordinal word in lower case as APA writes it ("fourth" is
// "4th"); any other word as it is.
std::string ordinalOf(std::string_view word);

// The words of `text` as the audit compares them, in order.
std::vector<std::string> comparableWords(std::string_view text);

}  // namespace quillpaper
