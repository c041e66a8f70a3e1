#include "references/NonPeriodical.h"

#include <algorithm>

#include "formatter/FormatterImplementation.h"
#include "strings/StringUtility.h"

namespace QuillFormatAPA {

using host::Field;
using references::at;

namespace {

const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }

// The texts Reset keeps for this class: the missing date, then the front
// matter a chapter entry may cite instead of a chapter title.
constexpr std::string_view kResetList = "(n.d.).||Afterword.||Foreword.||Introduction.||Preface.";

// The fifteen items: 0 author (or the title where the entry opens with it),
// 1 "(date)", 2 chapter or entry title, 3 its translator, 4 editors, 5 book
// title, 6 its translator, 7 volume of a multi-part work, 8 edition,
// 9 description ("(Report No. 4)", "[Data set]", "(Master's thesis)"),
// 10 volume, 11 pages, 12 publisher, 13 retrieval statement, 14 reprint note.
const references::TemplateRow kRows[] = {
    {0, true, {"", "", ". ", ". ", ". (", ". In ", ". ", ". (", ": ", ". (", ". ", ". (", ". (", ". ", ". ", ". ", "."}},
    {1, false, {"", "", ". ", ". (", ". In ", ". ", ". (", ": ", ". (", ". ", ". (", ". (", ". ", ". ", ". ", "."}},
    {2, false, {"", "", " (", ". In ", ". In ", ". (", ": ", ". (", ". ", ". (", ". (", ". ", ". ", ". ", "."}},
    {3, false,
     {"", "(", ", Trans.). In ", ", Trans.). In ", "). (", ", Trans.): ", ", Trans.). (", ", Trans.). ", ", Trans.). (",
      ", Trans.). (", ", Trans.). ", ", Trans.). ", ", Trans.). ", ", Trans.)."}},
    {4, false, {"", "", ", ", ", (", ": ", ". (", ". ", ". (", ". (", ". ", ". ", ". ", "."}},
    {5, true, {"", "", " (", ": ", " (", " ", " (", " (", ". ", ". ", ". ", "."}},
    {6, false,
     {"", "(", ", Trans.): ", ", Trans.). (", ", Trans.). ", ", Trans.). (", ", Trans.). (", ", Trans.). ",
      ", Trans.). ", ", Trans.). ", ", Trans.)."}},
    {7, true, {"", "", " (", ". ", " (", " (", ". ", ". ", " ", "."}},
    {8, false, {"", "(", "). ", ", ", ", ", "). ", "). ", "). ", ")."}},
    {9, false, {"", "", ", (", ", (", ". ", ". ", ". ", "."}},
    {10, false, {"", "(", ", ", "). ", "). ", "). ", ")."}},
    {11, false, {"", "(", "). ", "). ", "). ", ")."}},
    {12, false, {"", "", ". ", ". ", "."}},
    {13, false, {"", "", " ", ""}},
    {14, true, {"", "", "."}},
};

bool isAsciiDigit(char c) { return c >= '0' && c <= '9'; }

// The position of the bracket that opens the group closed at `close`, or npos.
size_t openingOf(std::string_view text, size_t close) {
  const char closing = text[close];
  const char opening = closing == ')' ? '(' : '[';
  int depth = 0;
  for (size_t i = close + 1; i-- > 0;) {
    if (text[i] == closing) ++depth;
    if (text[i] == opening && --depth == 0) return i;
  }
  return std::string_view::npos;
}

// Where the entry divides into the part about the chapter or entry and the
// part about the work that contains it: the ". In " after the date, outside
// brackets. npos when the entry is one work.
size_t containingWorkSplit(std::string_view text) {
  const size_t date = references::dateGroup(text);
  int depth = 0;
  for (size_t i = date == std::string_view::npos ? 0 : date; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '(' || c == '[') ++depth;
    if ((c == ')' || c == ']') && depth > 0) --depth;
    if (depth == 0 && c == '.' && text.substr(i).starts_with(". In ")) return i;
  }
  return std::string_view::npos;
}

// ---- the details that follow a title in parentheses or brackets -------------------

enum class Part { None, Edition, Volume, Pages };
enum class Detail { None, Publication, Translator, Editor, Description };

bool isEditionPart(std::string_view part) {
  const std::string lower = str().lower(part);
  for (std::string_view key : {"ed.", "enl.", "rev."})
    if (str().endsWith(lower, key) || str().contains(lower, std::string(key) + " ")) return true;
  return str().endsWith(lower, "edition");
}

Part kindOfPart(std::string_view part) {
  if (str().beginsWith(part, "Vol. ") || str().beginsWith(part, "Vols. ")) return Part::Volume;
  if (str().beginsWith(part, "pp. ") || str().beginsWith(part, "p. ")) return Part::Pages;
  if (isEditionPart(part)) return Part::Edition;
  return Part::None;
}

// The editor tags of a group after a book's title: "(T. S. Eliot, Ed.)",
// "(E. Rice, Ed. & Trans.)".
constexpr std::string_view kBookEditorTags[] = {"Eds. & Trans.", "Ed. & Trans.", "Eds.", "Ed.", "Comps.", "Comp."};

std::string_view editorTagOf(std::string_view inner) {
  for (std::string_view tag : kBookEditorTags)
    if (str().endsWith(inner, std::string(", ") + std::string(tag))) return tag;
  return {};
}

// A group "(...)" or "[...]" that describes the work rather than belonging
// to its title: publication details ("2nd ed.", "Vol. 2", "pp. 3–5"), an
// editor or a translator, or a description with a number or a known word
// ("Report No. 4", "Master's thesis", "[Data set]"). "(APA)" and "(TSC-C)"
// stay in the title; so do the place and dates of a conference in the title
// of a containing work (`inContainer`).
Detail kindOfGroup(std::string_view group, bool inContainer) {
  if (group.size() < 3) return Detail::None;
  if (group[0] == '[') return Detail::Description;
  const std::string_view inner = group.substr(1, group.size() - 2);
  if (!editorTagOf(inner).empty()) return Detail::Editor;
  if (str().endsWith(inner, "Trans.")) return Detail::Translator;
  for (const std::string& part : str().split(inner, ", ", -1))
    if (kindOfPart(str().trimmed(part)) != Part::None) return Detail::Publication;
  if (inContainer) return Detail::None;
  if (std::any_of(inner.begin(), inner.end(), isAsciiDigit)) return Detail::Description;
  return QuillStrings::rules::hasDescriptionWord(inner) ? Detail::Description : Detail::None;
}

// The groups that describe the work at the end of `title`, in order, with
// where the first begins (the title's own length when there are none).
struct TitleGroups {
  size_t start;
  std::vector<std::pair<size_t, size_t>> groups;  // position and length in the title
};

TitleGroups trailingGroups(std::string_view title, bool inContainer) {
  TitleGroups t{title.size(), {}};
  size_t end = title.size();
  while (end > 0 && (title[end - 1] == ')' || title[end - 1] == ']')) {
    const size_t open = openingOf(title, end - 1);
    if (open == std::string_view::npos || open == 0 ||
        kindOfGroup(title.substr(open, end - open), inContainer) == Detail::None)
      break;
    t.groups.emplace_back(open, end - open);
    end = open;
    while (end > 0 && title[end - 1] == ' ') --end;
    t.start = end;
  }
  // Found from the back; kept in the order they stand.
  std::reverse(t.groups.begin(), t.groups.end());
  return t;
}

// The title less the groups that describe the work.
std::string withoutDetails(std::string title, bool inContainer) {
  title = str().trimmed(title);
  str().stripTrailing(title, ".");
  title.erase(trailingGroups(title, inContainer).start);
  return title;
}

// The parts of a work's text: its title (with the groups after it) and the
// publisher statement, the last sentence when the title is in the text.
struct WorkText {
  std::string title;
  std::string publisher;
};

// Whether the last statement of a work's text, at `start`, belongs to the
// title: a subtitle after a question ("Is sleep needed? A new look at
// rest"), or an e-book's format ("DX Reader version"). A statement naming a
// place and a publisher never does.
bool continuesTitle(std::string_view body, size_t start) {
  const std::string_view last = body.substr(start);
  if (str().contains(last, ": ") || str().contains(last, ", ")) return false;
  size_t stop = start;
  while (stop > 0 && body[stop - 1] == ' ') --stop;
  const bool afterQuestion = stop > 0 && (body[stop - 1] == '?' || body[stop - 1] == '!');
  std::string format(last);
  str().trimTrailing(format, ".", true);
  return afterQuestion || str().endsWith(format, " version");
}

WorkText splitWork(std::string_view text, bool titleInText) {
  WorkText w;
  std::string body = str().trimmed(text);
  if (!titleInText) {
    w.publisher = body;
  } else {
    const std::vector<size_t> starts = references::statementStarts(body);
    if (starts.empty() || continuesTitle(body, starts.back())) {
      w.title = body;
    } else {
      w.title = body.substr(0, starts.back());
      w.publisher = body.substr(starts.back());
    }
  }
  w.title = str().trimmed(w.title);
  str().stripTrailing(w.title, ".");
  w.publisher = str().trimmed(w.publisher);
  str().stripTrailing(w.publisher, ".");
  return w;
}

// A leading "(date)." is kept aside while the steps read the rest.
size_t afterLeadingDate(std::string_view text) {
  if (!str().beginsWith(text, "(")) return 0;
  const size_t close = text.find(')');
  if (close == std::string_view::npos) return 0;
  size_t at = close + 1;
  if (at < text.size() && text[at] == '.') ++at;
  while (at < text.size() && text[at] == ' ') ++at;
  return at;
}

bool isRange(std::string_view pages) {
  return str().contains(pages, "-") || str().contains(pages, "\u2013") || str().contains(pages, ",");
}

// Where the place begins in "Publisher, City, Region": the regions at the
// end ("CA, USA", "Finland", "Mass.") and the city before them. npos when
// the statement ends in no region.
size_t placeStart(const std::vector<std::string>& parts) {
  size_t k = parts.size();
  while (k > 0 && QuillStrings::rules::isRegionName(parts[k - 1])) --k;
  if (k == parts.size()) return std::string::npos;
  // The city: a name with no group's word ("Stanford", not "Stanford University").
  if (k > 0) {
    bool group = false;
    for (std::string word : str().split(str().trimmed(parts[k - 1]), " ", -1)) {
      str().trimTrailing(word, ".,");
      group = group || QuillStrings::rules::isGroupWord(word) || word == "of";
    }
    if (!group) --k;
  }
  return k;
}

}  // namespace

NonPeriodical::NonPeriodical()
    : editionKeyWords_(stringArray(str().toStringArray("enl.", "rev.", "ed."))),
      mBracketTemplate_(stringArray(str().toStringArray("(", "", ")"))) {}

void NonPeriodical::reportVariables(const VariableReport& r) const {
  ReferenceEntry::reportVariables(r);
  r.variable("editionKeyWords", editionKeyWords_);
  r.variable("edition", edition_);
  r.variable("mBracketTemplate", mBracketTemplate_);
  r.variable("mustBeABook", mustBeABook_);
  r.variable("gotEditionAlready", gotEditionAlready_);
  r.variable("probableWebsite", probableWebsite_);
  r.variable("hasTextBeforeTitle", hasTextBeforeTitle_);
}

// ---- the entry contract -----------------------------------------------------------

const references::EntryTemplate& NonPeriodical::entryTemplate() {
  static const references::EntryTemplate t{14, kResetList, kRows};
  return t;
}

void NonPeriodical::writeSettings(Procedure& proc, const host::FormatterSettingsRef& settings) {
  proc.step([&] { settings.setAccessDateFormat("yyyy, mmmm d"); });
  proc.step([&] { edition_ = settings.edition(); });
}

// A footnote cites a book as "Author, Title (Place: Publisher, Year), p. 12."
// (no date group after the author, a page at the end).
bool NonPeriodical::IsFootnoteEntry(const std::string& author, const std::string& title, const std::string& entry) {
  return traced(*this, "IsFootnoteEntry", params(arg("author", author), arg("title", title), arg("entry", entry)),
                [&](Procedure& proc) {
                  return proc.step([&] {
                    std::string text = str().trimmed(entry);
                    str().stripTrailing(text, ".");
                    size_t page = str().lastIndexOf(text, ", p. ");
                    if (page == std::string::npos) page = str().lastIndexOf(text, ", pp. ");
                    return page != std::string::npos && page > 0 && text[page - 1] == ')' &&
                           references::dateGroup(text) == std::string::npos;
                  });
                });
}

std::string NonPeriodical::extractPageNumberFromFootnote(std::string& prevFootnoteStr) {
  return traced(*this, "extractPageNumberFromFootnote", params(arg("prevFootnoteStr", prevFootnoteStr)),
                [&](Procedure& proc) {
                  return proc.step([&] {
                    std::string text = str().trimmed(prevFootnoteStr);
                    str().stripTrailing(text, ".");
                    for (std::string_view label : {", pp. ", ", p. "}) {
                      const size_t at = str().lastIndexOf(text, label);
                      if (at == std::string::npos) continue;
                      const std::string page = text.substr(at + label.size());
                      prevFootnoteStr = text.substr(0, at) + ".";
                      return page;
                    }
                    return std::string();
                  });
                });
}

// The title of the entry: where the entry opens with it, the text before the
// date; in a chapter or a reference-work entry, the text between the date and
// ". In "; in a whole work, the sentences after the date but the publisher's,
// less the groups that describe the work (edition, volume, pages, a
// translator, "[Medium]", "(Report No. 4)").
std::string NonPeriodical::FindTitleImpl(const std::string& str_, bool& isFootnote, std::string& decoratedStr,
                                         std::string& subTitle) {
  return traced(*this, "FindTitleImpl",
                params(arg("str", str_), arg("isFootnote", isFootnote), arg("decoratedStr", decoratedStr),
                       arg("subTitle", subTitle)),
                [&](Procedure& proc) {
                  std::string before, after, title;
                  bool titleFirst = false;
                  proc.local("before", before);
                  proc.local("after", after);
                  proc.local("title", title);
                  proc.step([&] {
                    std::string text = str_;
                    str().cutAtMarker(text, "Retrieved ", true);
                    str().cutAtMarker(text, "doi:", true);
                    const size_t date = references::dateGroup(text);
                    after = text;
                    if (date != std::string::npos) {
                      before = str().trimmed(text.substr(0, date));
                      after = text.substr(text.find(')', date + 2) + 1);
                      str().stripLeading(after, ".");
                    }
                    after = str().trimmed(after);
                    titleFirst = !before.empty() && references::readsAsTitle(before);
                  });
                  proc.step([&] {
                    if (titleFirst) {
                      title = before;
                    } else if (str().beginsWith(after, "In ")) {
                      title.clear();  // an entry cited by its author alone: "Term. (2003). In Dictionary"
                    } else if (const size_t in = containingWorkSplit(after); in != std::string::npos) {
                      title = after.substr(0, in);
                      // The chapter's translator is no part of its title.
                      if (str().endsWith(title, "Trans.)")) title.erase(openingOf(title, title.size() - 1));
                    } else {
                      title = withoutDetails(splitWork(after, true).title, false);
                    }
                    title = str().trimmed(title);
                    str().stripTrailing(title, ".");
                  });
                  proc.step([&] {
                    subTitle = str().split(title, ": ", 2)[1];
                    decoratedStr = titleFirst ? std::string() : title;
                  });
                  return title;
                });
}

// The entry is read in two parts: everything about the chapter or entry (author,
// date, its title and translator) and, after ". In ", the containing work
// (editors, title, edition, volume, pages, publisher). An entry that is a
// whole work has no second part; its publication details then come off the
// first. The retrieval statement and the reprint note close the entry, so they
// come off before it is divided.
void NonPeriodical::parseEntry(std::string& str_, std::string& titleStr, bool& isFootnote) {
  traced(*this, "parseEntry", params(arg("str", str_), arg("titleStr", titleStr), arg("isFootnote", isFootnote)),
         [&](Procedure& proc) {
           const host::DataSourceRef s = source();
           std::string afterUrl, front, following;
           proc.local("afterUrl", afterUrl);
           proc.local("front", front);
           proc.local("following", following);
           proc.step([&] {
             // A title opens the entry only where the date follows it.
             hasTextBeforeTitle_ = titleStr.empty() || !str().beginsWith(str().trimmed(str_), titleStr) ||
                                   references::dateGroup(str_) == std::string::npos;
             gotEditionAlready_ = false;
             placeAfterPublisher_ = false;
           });
           proc.step([&] { parseAndRemoveWeb(str_, afterUrl); });
           proc.step([&] {
             if (afterUrl.empty())
               parseAndRemoveReprint(str_, isFootnote);
             else
               parseAndRemoveReprint(afterUrl, isFootnote);
           });
           proc.step([&] {
             const size_t in = containingWorkSplit(str_);
             front = str().trimmed(str_.substr(0, in == std::string::npos ? str_.size() : in + 1));
             following = in == std::string::npos ? std::string() : str().trimmed(str_.substr(in + 5));
             mustBeABook_ = in == std::string::npos;
           });
           proc.step([&] { s.set(Field::subworkType, "Chapter title"); });
           bool noAuthor = false;
           proc.step([&] { noAuthor = isReferenceArticleNoAuthor(front); });
           if (noAuthor) {
             proc.step([&] {
               if (s.text(Field::subworkType) == "Chapter title") {
                 s.set(Field::author, "");
                 s.set(Field::subworkType, "Reference entry");
               }
             });
             proc.step([&] { parseAndRemoveArticleTitle(front); });
             proc.step([&] { parseAndRemoveYear(front); });
             proc.step([&] { parseAndRemoveEditor(following); });
             proc.step([&] { parseAndRemoveTitleTranslator(following); });
           } else {
             proc.step([&] { parseAndRemovePublicationMedium(mustBeABook_ ? front : following); });
             proc.step([&] { parseAndRemoveSubworkType(front); });
             proc.step([&] { s.parseCommon(2, front); });
             // An entry that opens with its title has no author.
             if (!hasTextBeforeTitle_) proc.step([&] { s.set(Field::author, ""); });
             if (!mustBeABook_) {
               proc.step([&] { parseAndRemoveYear(front); });
             } else {
               proc.step([&] { parseAndRemoveMultiPartWork(front); });
               proc.step([&] { parseAndRemoveEditionVolumeAndPage(front, gotEditionAlready_, isFootnote); });
               proc.step([&] { parseAndRemoveYear(front); });
               proc.step([&] { parseAndRemovePublisher(front); });
             }
             proc.step([&] { s.set(Field::translator, ""); });
             proc.step([&] { parseAndRemoveEditor(following); });
             if (!mustBeABook_) proc.step([&] { parseAndRemoveChapterTitleAndTranslator(front); });
             proc.step([&] { parseAndRemoveTitleTranslator(mustBeABook_ ? front : following); });
           }
           if (mustBeABook_) {
             proc.step([&] {
               const std::string title = withoutDetails(front, false);
               s.set(Field::title, title.empty() ? titleStr : title);
             });
             proc.step([&] { s.set(Field::subwork, ""); });
             proc.step([&] { probableWebsite_ = isWebsite(); });
             proc.step([&] { str_.clear(); });
             return;
           }
           proc.step([&] { s.set(Field::title, titleStr); });
           proc.step([&] { parseAndRemoveMultiPartWork(following); });
           proc.step([&] { parseAndRemoveEditionVolumeAndPage(following, gotEditionAlready_, isFootnote); });
           proc.step([&] { parseAndRemovePublisher(following); });
           proc.step([&] {
             s.set(Field::subwork, withoutDetails(following, true));
           });
           proc.step([&] { probableWebsite_ = isWebsite(); });
           if (probableWebsite_) {
             proc.step([&] {
               const std::string date = s.text(Field::publishDate);
               if (!s.text(Field::OnlinePublishDate).empty()) return;
               if (date != "n.d.") s.set(Field::OnlinePublishDate, date);
               s.set(Field::publishDate, "");
             });
           }
           proc.step([&] { str_.clear(); });
         });
}

void NonPeriodical::toFormattedStringImpl(bool& isFootnote, Array& items, Array& formattedItems,
                                          bool& shortenedVersion) {
  traced(*this, "toFormattedStringImpl",
         params(arg("isFootnote", isFootnote), arg("items", items), arg("formattedItems", formattedItems),
                arg("shortenedVersion", shortenedVersion)),
         [&](Procedure& proc) {
           const host::DataSourceRef s = source();
           auto formatted = [&](int k) { return host::FormattedTextRef(formattedItems.get(at(formattedItems, k)).toObject()); };
           std::string authors, title, work;
           bool chapter = false;
           proc.local("authors", authors);
           proc.local("title", title);
           proc.local("work", work);
           proc.step([&] { authors = s.authorStr(isFootnote, false); });
           proc.step([&] { title = s.titleStr(isFootnote); });
           proc.step([&] { work = s.text(Field::subwork); });
           proc.step([&] { chapter = !work.empty(); });
           // With no author the title moves to the front: a book's in italics,
           // a chapter's or an entry's in plain text. Item 0 is a formatted
           // item for that reason, whatever stands in it.
           if (!authors.empty()) {
             proc.step([&] { formatted(0).Add(authors, 0); });
           } else if (chapter) {
             proc.step([&] { formatted(0).Add(title, 0); });
           } else {
             proc.step([&] { formatted(0).Add(title, 1); });
           }
           proc.step([&] { items.set(at(items, 1), "(" + getYear(!authors.empty()) + ")"); });
           if (chapter) {
             if (!authors.empty()) proc.step([&] { items.set(at(items, 2), title); });
             proc.step([&] { items.set(at(items, 3), getTranslatorString(true)); });
             proc.step([&] { items.set(at(items, 4), getEditorString(isFootnote)); });
             // Nothing between the date and the work: "In " is written here.
             if (authors.empty() || title.empty())
               proc.step([&] {
                 if (items.get(at(items, 4)).toString().empty()) formatted(5).Add("In ", 0);
               });
             proc.step([&] { formatted(5).Add(work, 1); });
           } else if (!authors.empty()) {
             proc.step([&] { formatted(5).Add(title, 1); });
           }
           proc.step([&] { items.set(at(items, 6), getTranslatorString(false)); });
           proc.step([&] { getMultiPartString(formattedItems.get(at(formattedItems, 7)).toObject()); });
           proc.step([&] { items.set(at(items, 8), s.text(Field::editionBook)); });
           proc.step([&] { items.set(at(items, 9), getMediumString()); });
           proc.step([&] { items.set(at(items, 10), getVolumeString()); });
           proc.step([&] { items.set(at(items, 11), getPageString()); });
           proc.step([&] { items.set(at(items, 12), getPublisherString()); });
           // The 7th edition names a thesis's institution in its bracket:
           // "[Doctoral dissertation, University of Toronto]".
           if (edition_ == 7) proc.step([&] { thesisInBrackets(items); });
           proc.step([&] { items.set(at(items, 13), s.text(Field::website)); });
           proc.step([&] {
             const std::string reprint = s.text(Field::reprint);
             if (!reprint.empty()) formatted(14).Add("(" + reprint + ")", 0);
           });
         });
}

// ---- parse steps -------------------------------------------------------------------

// The retrieval statement (its general split is the formatter's), or an
// address standing alone at the end ("https://…"). `afterUrl` receives what
// follows the address, such as a reprint note.
void NonPeriodical::parseAndRemoveWeb(std::string& str_, std::string& afterUrl) {
  traced(*this, "parseAndRemoveWeb", params(arg("str", str_), arg("afterUrl", afterUrl)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    std::string website, accessDate;
    proc.local("website", website);
    proc.step([&] { FormatterImplementation::parseAndRemoveWeb(str_, website, accessDate); });
    proc.step([&] {
      // What the general split leaves of "Retrieved from Agency website: http://…"
      // and of "Retrieved 2012, from http://…" (an access date of a year only).
      if (website.empty()) return;
      std::string lead = str().trimmed(str_);
      const size_t at = str().lastIndexOf(lead, "Retrieved ");
      if (at == std::string::npos) return;
      std::string statement = lead.substr(at + 10);
      if (str().endsWith(statement, "website:") && str().stripLeading(statement, "from ")) {
        website = statement + " " + website;
      } else if (str().stripTrailing(statement, "from")) {
        str().trimTrailing(statement, ", ", true);
        accessDate = statement;
      } else {
        return;
      }
      str_ = lead.substr(0, at);
    });
    if (website.empty()) {
      proc.step([&] {
        for (std::string_view scheme : {" https://", " http://", " www."}) {
          const size_t at = str().lastIndexOf(str_, scheme);
          if (at == std::string::npos || str_.find(' ', at + 1) != std::string::npos) continue;
          website = str_.substr(at + 1);
          str_.erase(at);
          return;
        }
      });
    }
    proc.step([&] {
      // A note after the address: "… http://x.org (Original work published 1900)".
      const size_t blank = website.find(" (");
      if (blank == std::string::npos) return;
      afterUrl = str().trimmed(website.substr(blank));
      website.erase(blank);
    });
    proc.step([&] {
      str().stripTrailing(website, ".");
      s.set(Field::website, website);
    });
    proc.step([&] { s.set(Field::accessDate, accessDate); });
    proc.step([&] {
      str_ = str().trimmed(str_);
      str().trimLeading(str_, ".", true);
    });
  });
}

void NonPeriodical::parseAndRemoveReprint(std::string& str_, bool isFootnote) {
  traced(*this, "parseAndRemoveReprint", params(arg("str", str_), arg("isFootnote", isFootnote)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    std::string note;
    proc.local("note", note);
    proc.step([&] {
      std::string text = str().trimmed(str_);
      str().stripTrailing(text, ".");
      for (std::string_view lead : {"(Original", "(Reprinted"}) {
        const size_t at = str().lastIndexOf(text, lead);
        if (at == std::string::npos || !str().endsWith(text, ")")) continue;
        note = text.substr(at + 1, text.size() - at - 2);
        str_ = str().trimmed(text.substr(0, at));
        return;
      }
      // Unbracketed: "… Place: Publisher. Original work published 1900."
      for (std::string_view lead : {"Original ", "Reprinted from "}) {
        const size_t at = str().lastIndexOf(text, std::string(". ") + std::string(lead));
        if (at == std::string::npos) continue;
        note = text.substr(at + 2);
        str_ = text.substr(0, at + 1);
        return;
      }
    });
    proc.step([&] { s.set(Field::reprint, note); });
    proc.step([&] { s.set(Field::reprintFormatted, !note.empty()); });
  });
}

// A bracketed description at the end of the work's title: "[Data set]",
// "[Brochure]", "[Monograph]", "[Digital file version]".
void NonPeriodical::parseAndRemovePublicationMedium(std::string& str_) {
  traced(*this, "parseAndRemovePublicationMedium", params(arg("str", str_)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    std::string medium;
    proc.local("medium", medium);
    proc.step([&] {
      const size_t close = str_.rfind(']');
      if (close == std::string::npos) return;
      const size_t open = openingOf(str_, close);
      // After the date: "[ca. 1937]" in its place is a date, not a medium.
      const size_t date = references::dateGroup(str_);
      if (open == std::string::npos || date == std::string::npos || open < date) return;
      // A bracket right after the date is the title of a work that has none
      // of its own ("[Review of the book …]"), not its medium.
      size_t afterDate = str_.find(')', date);
      while (afterDate != std::string::npos && afterDate + 1 < str_.size() &&
             (str_[afterDate + 1] == '.' || str_[afterDate + 1] == ' '))
        ++afterDate;
      if (afterDate != std::string::npos && afterDate + 1 == open) return;
      // Only where the bracket closes its sentence.
      const std::string_view rest = std::string_view(str_).substr(close + 1);
      if (!rest.empty() && !rest.starts_with(".") && !rest.starts_with(" ")) return;
      if (!rest.empty() && rest.starts_with(" ") && !mustBeABook_) return;
      medium = str_.substr(open + 1, close - open - 1);
      size_t from = open;
      while (from > 0 && str_[from - 1] == ' ') --from;
      str_.erase(from, close + 1 - from);
    });
    proc.step([&] {
      if (str().contains(medium, "onograph")) medium = "Monograph";
      else if (str().contains(medium, "Digital file") && str().contains(medium, "version")) medium = "Digital file";
      s.set(Field::Medium, medium);
    });
  });
}

// "Chapter title", or the front matter a chapter entry may cite in its place.
void NonPeriodical::parseAndRemoveSubworkType(std::string& str_) {
  traced(*this, "parseAndRemoveSubworkType", params(arg("str", str_)), [&](Procedure& proc) {
    proc.step([&] { source().set(Field::subworkType, mustBeABook_ ? "" : "Chapter title"); });
  });
}

// An entry in a reference work without author: "Title. (Year). In Work (...)."
bool NonPeriodical::isReferenceArticleNoAuthor(const std::string& str_) {
  return traced(*this, "isReferenceArticleNoAuthor", params(arg("str", str_)), [&](Procedure& proc) {
    return proc.step([&] {
      std::string text = str().trimmed(str_);
      str().stripTrailing(text, ".");
      return !mustBeABook_ && !hasTextBeforeTitle_ && str().endsWith(text, ")") && !str().contains(text, "Series");
    });
  });
}

// The entry's title, at the front where an entry has no author.
void NonPeriodical::parseAndRemoveArticleTitle(std::string& str_) {
  traced(*this, "parseAndRemoveArticleTitle", params(arg("str", str_)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    proc.step([&] {
      const size_t date = references::dateGroup(str_);
      std::string title = str().trimmed(str_.substr(0, date == std::string::npos ? 0 : date));
      str().stripTrailing(title, ".");
      s.set(Field::title, title);
      if (date != std::string::npos) str_ = str().trimmed(str_.substr(date));
    });
  });
}

void NonPeriodical::parseAndRemoveChapterTitleAndTranslator(std::string& str_) {
  traced(*this, "parseAndRemoveChapterTitleAndTranslator", params(arg("str", str_)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    std::string chapter, translator;
    proc.local("chapter", chapter);
    proc.step([&] {
      chapter = str().trimmed(str_);
      str().stripTrailing(chapter, ".");
      if (!str().endsWith(chapter, "Trans.)")) return;
      const size_t open = openingOf(chapter, chapter.size() - 1);
      if (open == std::string::npos) return;
      translator = chapter.substr(open + 1, chapter.size() - open - 2);
      str().stripTrailing(translator, "Trans.");
      str().trimTrailing(translator, ", ", true);
      chapter = str().trimmed(chapter.substr(0, open));
    });
    proc.step([&] { s.set(Field::subworkTranslator, translator); });
    proc.step([&] {
      const Array words = stringArray(str().split(kResetList, "||", -1));
      if (parsedPrematter(words, chapter)) s.set(Field::subworkType, chapter);
    });
    proc.step([&] { str_ = chapter; });
  });
}

// The translator of the work, in "(Name, Trans.)" at the end of its title.
void NonPeriodical::parseAndRemoveTitleTranslator(std::string& str_) {
  traced(*this, "parseAndRemoveTitleTranslator", params(arg("str", str_)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    proc.step([&] {
      const size_t start = afterLeadingDate(str_);
      const WorkText w = splitWork(std::string_view(str_).substr(start), true);
      for (const auto& [at, length] : trailingGroups(w.title, !mustBeABook_).groups) {
        const std::string inner = w.title.substr(at + 1, length - 2);
        if (kindOfGroup(w.title.substr(at, length), !mustBeABook_) != Detail::Translator) continue;
        std::string translator = inner;
        str().stripTrailing(translator, "Trans.");
        str().trimTrailing(translator, ", ", true);
        s.set(Field::translator, translator);
        const size_t in = str_.find(w.title.substr(at, length), start);
        if (in != std::string::npos) str_.erase(in > 0 && str_[in - 1] == ' ' ? in - 1 : in, length + (in > 0 ? 1 : 0));
        return;
      }
    });
  });
}

// The editors of the containing work, at the front of the second part:
// "A. C. Gaw (Ed.), Culture …", "R. Battiti, M. Brunato, & P. Pardalos (Eds.), …".
void NonPeriodical::parseAndRemoveEditor(std::string& str_) {
  traced(*this, "parseAndRemoveEditor", params(arg("str", str_)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    // A whole work has no second part; its editor, if any, stood after its title.
    if (str_.empty()) return;
    proc.step([&] { s.set(Field::editorStr, ""); });
    proc.step([&] { s.set(Field::isEditor, false); });
    proc.step([&] { s.set(Field::CompilerOrEditor, ""); });
    proc.step([&] {
      for (const char* tag : {"Series Eds.", "Series Ed.", "Eds. & Trans.", "Ed. & Trans.", "Eds.", "Ed.", "Comps.",
                              "Comp."})
        if (parseEditorTag(str_, tag, true)) return;
      parseEditorTag(str_, "Trans.", false);
    });
  });
}

bool NonPeriodical::parseEditorTag(std::string& str_, const std::string& tag, bool isEditorTag) {
  return traced(*this, "parseEditorTag", params(arg("str", str_), arg("tag", tag), arg("isEditorTag", isEditorTag)),
                [&](Procedure& proc) {
                  const host::DataSourceRef s = source();
                  const std::string group = " (" + tag + ")";
                  size_t at = std::string::npos;
                  proc.step([&] { at = str_.find(group); });
                  // The names come first: nothing bracketed before the tag.
                  if (at == std::string::npos || at == 0 || str_.find_first_of("([", 0) < at) return false;
                  proc.step([&] { s.set(Field::editorStr, str().trimmed(str_.substr(0, at))); });
                  proc.step([&] { s.set(Field::isEditor, isEditorTag); });
                  proc.step([&] { s.set(Field::CompilerOrEditor, tag); });
                  proc.step([&] {
                    str_ = str_.substr(at + group.size());
                    str().trimLeading(str_, ",", true);
                  });
                  return true;
                });
}

// The groups after the work's title: "(2nd ed.)", "(Vol. 26, pp. 501–508)",
// "(T. S. Eliot, Ed.)", "(Report No. 4)", "[Data set]". Edition, volume,
// pages and a book's editor go to their fields; a description keeps its
// brackets in publicationMediumDetails; a translator is the title-translator
// step's. The groups stay in the text until the title is taken, so that the
// sentence they close still ends where it did.
void NonPeriodical::parseAndRemoveEditionVolumeAndPage(std::string& str_, bool gotEditionAlready, bool isFootnote) {
  traced(*this, "parseAndRemoveEditionVolumeAndPage",
         params(arg("str", str_), arg("gotEditionAlready", gotEditionAlready), arg("isFootnote", isFootnote)),
         [&](Procedure& proc) {
           const host::DataSourceRef s = source();
           std::vector<std::string> groups;
           proc.local("groups", groups);
           proc.step([&] {
             const size_t start = afterLeadingDate(str_);
             const std::string title =
                 splitWork(std::string_view(str_).substr(start), hasTextBeforeTitle_ || !mustBeABook_).title;
             for (const auto& [at, length] : trailingGroups(title, !mustBeABook_).groups)
               groups.push_back(title.substr(at, length));
           });
           std::string edition, volume, pages, details;
           proc.step([&] {
             for (const std::string& group : groups) {
               const std::string inner = group.substr(1, group.size() - 2);
               switch (kindOfGroup(group, !mustBeABook_)) {
                 case Detail::Translator: break;
                 case Detail::Description: details += (details.empty() ? "" : " ") + group; break;
                 case Detail::Editor: {
                   const std::string_view tag = editorTagOf(inner);
                   s.set(Field::editorStr, inner.substr(0, inner.size() - tag.size() - 2));
                   s.set(Field::CompilerOrEditor, std::string(tag));
                   s.set(Field::isEditor, !str().beginsWith(tag, "Comp"));
                   break;
                 }
                 default:
                   for (const std::string& raw : str().split(inner, ", ", -1)) {
                     const std::string part = str().trimmed(raw);
                     switch (kindOfPart(part)) {
                       case Part::Volume: volume = part; break;
                       case Part::Pages: pages = part; break;
                       case Part::Edition: edition = part; break;
                       default: details += (details.empty() ? "(" : " (") + part + ")"; break;
                     }
                   }
               }
             }
           });
           if (!gotEditionAlready) proc.step([&] { s.set(Field::editionBook, edition); });
           proc.step([&] { gotEditionAlready_ = !edition.empty(); });
           proc.step([&] {
             if (s.flag(Field::IsMultiVol)) return;
             s.set(Field::volume, volume);
           });
           proc.step([&] { parseAndRemovePage(pages); });
           proc.step([&] { s.set(Field::publicationMediumDetails, details); });
         });
}

void NonPeriodical::parseAndRemoveVolume(std::string& str_) {
  traced(*this, "parseAndRemoveVolume", params(arg("str", str_)), [&](Procedure& proc) {
    proc.step([&] {
      std::string volume = str().trimmed(str_);
      if (str().beginsWith(volume, "Vols.") || str().beginsWith(volume, "Vol.")) source().set(Field::volume, volume);
      str_.clear();
    });
  });
}

// Pages after "ed.", "," or "Vol.": "pp. 501–508" or "p. 408"; the label is
// the builder's.
void NonPeriodical::parseAndRemovePage(std::string& str_) {
  traced(*this, "parseAndRemovePage", params(arg("str", str_)), [&](Procedure& proc) {
    proc.step([&] {
      std::string pages = str().trimmed(str_);
      if (!str().stripLeading(pages, "pp.")) str().stripLeading(pages, "p.");
      source().set(Field::BookPageRange, str().trimmed(pages));
      str_.clear();
    });
  });
}

// A volume of a multi-part work: "Handbook of child psychology: Vol. 3. Social,
// emotional, and personality development".
void NonPeriodical::parseAndRemoveMultiPartWork(std::string& str_) {
  traced(*this, "parseAndRemoveMultiPartWork", params(arg("str", str_)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    proc.step([&] {
      s.set(Field::MultiPartWork, "");
      s.set(Field::IsMultiVol, false);
    });
    proc.step([&] {
      const size_t at = str_.find(": Vol. ");
      if (at == std::string::npos) return;
      size_t number = at + 7;
      size_t end = number;
      while (end < str_.size() && str_[end] != '.' && str_[end] != ' ') ++end;
      if (end == number) return;
      const std::string volume = str_.substr(at + 2, end - at - 2);
      // The volume's own title follows ". " or ": ", up to its group or sentence end.
      std::string rest = str_.substr(end);
      std::string volumeTitle;
      if (str().stripLeading(rest, ". ") || str().stripLeading(rest, ": ")) {
        size_t stop = rest.find(" (");
        const std::vector<size_t> starts = references::statementStarts(rest);
        if (!starts.empty()) stop = std::min(stop, starts.front() - 2);
        if (stop == std::string::npos) stop = rest.size();
        volumeTitle = str().trimmed(rest.substr(0, stop));
        str().stripTrailing(volumeTitle, ".");
        rest = rest.substr(std::min(stop, rest.size()));
      }
      // "Lecture notes in computer science: Vol. 11353" without a volume title
      // is the series and its number: the title as written.
      if (volumeTitle.empty()) return;
      s.set(Field::volume, volume);
      s.set(Field::MultiPartWork, volumeTitle);
      s.set(Field::IsMultiVol, true);
      str_ = str_.substr(0, at) + rest;
    });
  });
}

// "Place: Publisher" (split at the first colon), "Publisher, City, ST", or a
// publisher alone. "Retrieved from" and "Web site:" statements are not
// publishers.
void NonPeriodical::parseAndRemovePublisher(std::string& str_) {
  traced(*this, "parseAndRemovePublisher", params(arg("str", str_)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    std::string lead, statement, place, publisher;
    proc.local("statement", statement);
    proc.step([&] {
      const size_t start = afterLeadingDate(str_);
      const WorkText w = splitWork(std::string_view(str_).substr(start), hasTextBeforeTitle_ || !mustBeABook_);
      statement = w.publisher;
      lead = str_.substr(0, start) + w.title;
    });
    const bool notAPublisher = str().contains(statement, "Retrieved from") || str().contains(statement, "retrieved from") ||
                               str().contains(statement, "Web site:") || str().contains(statement, "web site:");
    if (notAPublisher || statement.empty()) {
      proc.step([&] {
        s.set(Field::place, "");
        s.set(Field::publisher, "");
      });
      return;
    }
    proc.step([&] {
      const std::vector<std::string> parts = str().split(statement, ": ", 2);
      if (!parts[1].empty()) {
        place = str().trimmed(parts[0]);
        publisher = str().trimmed(parts[1]);
        return;
      }
      const std::vector<std::string> commas = str().split(statement, ", ", -1);
      if (const size_t at = placeStart(commas); at != std::string::npos && commas.size() >= 2) {
        publisher = str().join(std::vector<std::string>(commas.begin(), commas.begin() + static_cast<long>(at)), ", ");
        place = str().join(std::vector<std::string>(commas.begin() + static_cast<long>(at), commas.end()), ", ");
        placeAfterPublisher_ = !publisher.empty();
        return;
      }
      publisher = statement;
    });
    proc.step([&] { s.set(Field::place, place); });
    proc.step([&] { s.set(Field::publisher, publisher); });
    proc.step([&] { str_ = lead; });
  });
}

void NonPeriodical::parseAndRemoveYear(std::string& str_) {
  traced(*this, "parseAndRemoveYear", params(arg("str", str_)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    std::string date = "n.d.";
    proc.local("date", date);
    proc.step([&] {
      str_ = str().trimmed(str_);
      const size_t start = afterLeadingDate(str_);
      if (start == 0) return;
      date = str().trimmed(str_.substr(1, str_.find(')') - 1));
      str_ = str_.substr(start);
    });
    proc.step([&] { s.set(Field::publishDate, date); });
  });
}

bool NonPeriodical::parsedPrematter(const Array& words, std::string& str_) {
  return traced(*this, "parsedPrematter", params(arg("words", words), arg("str", str_)), [&](Procedure& proc) {
    return proc.step([&] {
      // The first of the list is the missing date, not front matter.
      const std::span<const Variant> all = words.elements();
      for (const Variant& element : all.subspan(std::min<size_t>(1, all.size()))) {
        std::string word = element.toString();
        str().stripTrailing(word, ".");
        if (str_ == word) return true;
      }
      return false;
    });
  });
}

// ---- tests and builders ------------------------------------------------------------

bool NonPeriodical::getEbook() {
  return traced(*this, "getEbook", [&](Procedure& proc) {
    return proc.step([&] {
      const std::string medium = source().text(Field::Medium);
      return str().contains(str().lower(medium), "e-book") || medium == "Monograph" || medium == "Digital file";
    });
  });
}

bool NonPeriodical::isWebsite() {
  return traced(*this, "isWebsite", [&](Procedure& proc) {
    return proc.step([&] {
      const std::string web = source().text(Field::website);
      return !web.empty() && !str().beginsWith(web, "doi:") && source().text(Field::publisher).empty();
    });
  });
}

std::string NonPeriodical::getYear(bool isAuthor) {
  return traced(*this, "getYear", params(arg("isAuthor", isAuthor)), [&](Procedure& proc) {
    return proc.step([&] {
      std::string date = source().text(Field::publishDate);
      if (date.empty()) date = source().text(Field::OnlinePublishDate);
      return date.empty() ? std::string("n.d.") : date;
    });
  });
}

bool NonPeriodical::isLabelledVolume() {
  return traced(*this, "isLabelledVolume", [&](Procedure& proc) {
    return proc.step([&] {
      const std::string volume = source().text(Field::volume);
      return str().beginsWith(volume, "Vol. ") || str().beginsWith(volume, "Vols. ");
    });
  });
}

std::string NonPeriodical::getPublisherString() {
  return traced(*this, "getPublisherString", [&](Procedure& proc) {
    std::string place, publisher;
    proc.step([&] { place = source().text(Field::place); });
    proc.step([&] { publisher = source().text(Field::publisher); });
    if (place.empty() || publisher.empty()) return place + publisher;
    // The 7th edition names the publisher alone; a meeting keeps its place.
    if (edition_ == 7 && !QuillStrings::rules::isPresentation(publisher)) return publisher;
    return placeAfterPublisher_ ? publisher + ", " + place : place + ": " + publisher;
  });
}

std::string NonPeriodical::getEditorString(bool isFootnote) {
  return traced(*this, "getEditorString", params(arg("isFootnote", isFootnote)), [&](Procedure& proc) {
    std::string names, tag;
    proc.step([&] { names = source().text(Field::editorStr); });
    proc.step([&] { tag = source().text(Field::CompilerOrEditor); });
    if (names.empty()) return names;
    return tag.empty() ? names : names + " (" + tag + ")";
  });
}

std::string NonPeriodical::getTranslatorString(bool isSubWork) {
  return traced(*this, "getTranslatorString", params(arg("isSubWork", isSubWork)), [&](Procedure& proc) {
    return proc.step([&] { return source().text(isSubWork ? Field::subworkTranslator : Field::translator); });
  });
}

void NonPeriodical::getMultiPartString(const ObjectRef& formattedStr) {
  traced(*this, "getMultiPartString", params(arg("formattedStr", formattedStr)), [&](Procedure& proc) {
    std::string volumeTitle;
    proc.step([&] { volumeTitle = source().text(Field::MultiPartWork); });
    if (volumeTitle.empty()) return;
    const host::FormattedTextRef out(formattedStr);
    proc.step([&] { out.Add(source().text(Field::volume) + ". ", 1); });
    proc.step([&] { out.Add(volumeTitle, 1); });
  });
}

std::string NonPeriodical::getVolumeString() {
  return traced(*this, "getVolumeString", [&](Procedure& proc) {
    std::string volume;
    proc.step([&] { volume = source().text(Field::volume); });
    if (volume.empty() || !source().text(Field::MultiPartWork).empty()) return std::string();
    return isLabelledVolume() ? volume : "Vol. " + volume;
  });
}

std::string NonPeriodical::getPageString() {
  return traced(*this, "getPageString", [&](Procedure& proc) {
    std::string pages;
    proc.step([&] { pages = source().text(Field::BookPageRange); });
    if (pages.empty()) return pages;
    return (isRange(pages) ? "pp. " : "p. ") + pages;
  });
}

// The description after the title: a book's editor, its groups as typed,
// then the medium in brackets.
void NonPeriodical::thesisInBrackets(Array& items) {
  traced(*this, "thesisInBrackets", params(arg("items", items)), [&](Procedure& proc) {
    proc.step([&] {
      std::string description = items.get(at(items, 9)).toString();
      const size_t open = description.find('(');
      if (open == std::string::npos) return;
      const size_t close = description.find(')', open);
      if (close == std::string::npos) return;
      std::string inner = description.substr(open + 1, close - open - 1);
      const std::string lower = str().lower(inner);
      if (!str().contains(lower, "thesis") && !str().contains(lower, "dissertation")) return;
      const std::string publisher = items.get(at(items, 12)).toString();
      if (!str().contains(inner, ",") && !publisher.empty()) {
        inner += ", " + publisher;
        items.set(at(items, 12), "");
      }
      description.replace(open, close - open + 1, "[" + inner + "]");
      items.set(at(items, 9), description);
    });
  });
}

std::string NonPeriodical::getMediumString() {
  return traced(*this, "getMediumString", [&](Procedure& proc) {
    std::string text, medium, names;
    proc.step([&] {
      if (source().text(Field::subwork).empty()) names = source().text(Field::editorStr);
    });
    if (!names.empty()) proc.step([&] { text = "(" + names + ", " + source().text(Field::CompilerOrEditor) + ")"; });
    proc.step([&] {
      const std::string details = source().text(Field::publicationMediumDetails);
      if (!details.empty()) text += (text.empty() ? "" : " ") + details;
    });
    proc.step([&] { medium = source().text(Field::Medium); });
    // The 7th edition calls a motion picture a film, and names no e-book format.
    if (edition_ == 7 && medium == "Motion picture") medium = "Film";
    if (edition_ == 7 && str().contains(medium, "version")) medium.clear();
    if (!medium.empty()) text += (text.empty() ? "[" : " [") + medium + "]";
    return text;
  });
}

}  // namespace QuillFormatAPA
