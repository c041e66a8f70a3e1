#pragma once

#include <string_view>

// The text rules of reference entries, in one place for the formatting
// library and its hosts: where an entry's date stands, and the word lists
// that tell a periodical from a book, an abbreviation from a sentence end.
// Each list is a table below; each rule has a test row of its own.
namespace QuillStrings::rules {

// Whether `content` (what stands between parentheses) is the date of an APA
// reference: a year, perhaps with a letter ("2005a"), a month, a day, a season
// or a range of years; "n.d."; "in press"; an estimate, "ca. 1937".
bool isDateContent(std::string_view content);

// Where the date of an APA reference stands: the position of the blank
// before its parenthesis (" (1993)", " (2006, December 10)", " (n.d.)",
// " (in press)"), or npos. A date is short: only the next 41 characters are
// looked at for its ")", so that a long entry is read in linear time.
size_t dateGroup(std::string_view text);

// A word after which a full stop does not end a sentence: an initial, titles of persons,
// the abbreviations of publication details and of common Latin words
// ("Dr", "vs", "Vol", "pp", "al"), compared as written.
bool isAbbreviation(std::string_view word);

// A word that names periodicals rather than publishers or books ("journal",
// "review", "daily"), compared in lower case.
bool isPeriodicalWord(std::string_view word);

// An abbreviated word that may stand inside a periodical's or a publisher's
// name ("Phys.", "Rev.", "Lett.", "Co.", "Univ.", "Dept."), without its full
// stop, compared as written.
bool isNameAbbreviation(std::string_view word);

// A part of a publisher's address that names a region rather than a city:
// a state or province code ("OH", "ON"), an abbreviated state ("Mass."), a
// country ("Finland", "USA", "The Netherlands").
bool isRegionName(std::string_view part);

// Whether a parenthesised group after a title describes the work rather
// than belonging to the title: it holds a word such as "thesis", "report",
// "version" (compared in lower case, anywhere in the group).
bool hasDescriptionWord(std::string_view group);

// Whether a statement names a meeting a work was presented at ("Paper
// presented at the meeting of …", "Symposium conducted at …"), not a publisher.
bool isPresentation(std::string_view statement);

// A word in lower case that a name or a title in capitals may hold: an
// article, a preposition, a particle ("of", "the", "van", "de").
bool isSmallWord(std::string_view word);

// A word that makes a name a group's rather than a person's ("Institute",
// "Association", "Department", "Nations"), compared as written.
bool isGroupWord(std::string_view word);

}  // namespace QuillStrings::rules
