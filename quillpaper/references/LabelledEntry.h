#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quillpaper/references/AuthorNames.h"
#include "quillpaper/references/WordAudit.h"
#include "reader/ReferenceReader.h"

namespace quillpaper {

// An entry the learned reader labelled, written in the APA form the APA
// rules read ("Kernis MH, Cornell DP. There's more… J Pers Soc Psychol.
// 1993;65:1190-204." gives "Kernis, M. H., & Cornell, D. P. (1993). There's
// more…. J Pers Soc Psychol, 65, 1190–1204."), with what that form may lose
// or add of the typed words: other styles' labels ("vol.", "Available at:",
// "[Internet]"), initials written out or run together, an abbreviated page
// range written whole, month names written out.
struct LabelledEntry {
  // What the reader read, part by part, as typed (pages written whole).
  struct Fields {
    std::string title, container, volume, issue, pages, publisher, place;
    std::vector<PersonName> authors, editors;
  };
  Fields fields;
  std::string placeWritten;  // the place as APA writes it, without a postcode ("NJ 07458")
  std::string apa;           // the entry for the APA rules to read
  std::string notes;         // what it says beyond APA's fields, written after the entry as typed
  int type = 0;              // from the labels: 1 for an article in a periodical, else 0
  Rewrites rewrites;
  // The whole APA form: the entry and its notes.
  std::string written() const { return notes.empty() ? apa : apa + " " + notes; }
};

// "New York, NY", "London, England", "Thousand Oaks, CA", "Frankfurt am
// Main": a few names of a place, nothing a title or a publisher would hold
// ("TeX in Practice").
bool looksLikePlace(std::string_view place);

// The place after a publisher's name, as other styles write it ("Almqvist
// and Wiksells, Uppsala", "Sage, Newbury Park, CA, second edition" gives
// "Newbury Park, CA"): what follows the first comma when it is a place and
// no part of an organisation's name ("Stanford University, Department of
// Computer Science", "Sage, Inc."); empty for none.
std::string_view placeAfterTheName(std::string_view publisher);

// A family name and its initials run together as Vancouver writes them
// ("Jones J", "Van Holm DR", "Holm D."), not a group's name ("Pink Floyd",
// "UNESCO").
bool isFamilyAndInitials(std::string_view name);

// A group's name ("U.S. Department of Health and Human Services",
// "Associated Press"): no comma, and a word that names an organisation.
bool isGroupName(std::string_view text);

// The reading with what it frayed mended, by what the entry's words show: a
// word left out between two words of one part joins it, and so does a colon
// between two stretches of a title; Vancouver initials left out join their
// names, and words read as names after the stop that ends such a list are
// the title's; a year at a title's end is the title's when the entry dates
// the work elsewhere; a publisher typed before its place ("Van Dale,
// Utrecht, The Netherlands") is the publisher.
quillreader::Reading mended(quillreader::Reading reading, std::string_view entry);

// Empty when the reading has no title or no date to build an entry on.
std::optional<LabelledEntry> apaFormOf(std::string_view entry, const quillreader::Reading& reading);

// Whether the reading ends one named part (title, container, names,
// publisher, place) and starts another between two words with nothing but a
// space between them ("A Study of | Computer Dependency"): styles put
// punctuation there, so such a reading has most likely cut a part in two.
bool splitsPhrase(std::string_view entry, const quillreader::Reading& reading);

// The typed words the APA form lacks, counting every word (a description in
// brackets, an abbreviation too: the APA form built from a reading writes
// none of them in other words), but for the declared rewrites.
std::vector<std::string> wordsLost(std::string_view typed, const LabelledEntry& written);

}  // namespace quillpaper
