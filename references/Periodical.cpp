#include "references/Periodical.h"

#include <algorithm>

#include "formatter/FormatterImplementation.h"
#include "strings/StringUtility.h"

namespace QuillFormatAPA {

using host::Field;
using references::at;
using references::isOneSentence;
using references::statementStarts;

namespace {

const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }

constexpr std::string_view kAdvanceOnline = "Advance online publication";

// The longest text read as a periodical's name, volume, issue and pages.
constexpr size_t kLongestSource = 500;

// The periodical template, items 0 to 7: author (or the title in its place),
// date, title, periodical, volume, issue, pages, retrieval statement. Row 3
// carries a second set for advance online publications (a full stop, not a
// comma, before that phrase); row 7 is closed by nothing at all.
const references::TemplateRow kRows[] = {
    {0, false, {"", "", ". (", ". ", ". ", ", ", ", (", ", ", ". ", "."}},
    {1, false, {"", "(", "). ", "). ", "), ", "), (", "), ", "). ", ")."}},
    {2, true, {"", "", ". ", ", ", ", (", ", ", ". ", "."}},
    {3, true,
     {references::kCheckingCondition, "", ", ", ", (", ", ", ". ", ".", "", ", ", ", (", ". ", ". ", "."}},
    {4, true, {"", "", "(", ", ", ". ", "."}},
    {5, false, {"", "(", "), ", "). ", ")."}},
    {6, false, {"", "", ". ", "."}},
    {7, false, {"", "", ""}},
};

bool startsWithDigit(std::string_view s) { return !s.empty() && s[0] >= '0' && s[0] <= '9'; }

// A volume written with letters before its issue, "PC-18(1)" or "Special
// issue D(1)": a short part ending in a parenthesised number.
bool looksLikeVolumeAndIssue(std::string_view s) {
  const size_t open = s.rfind('(');
  return open != std::string_view::npos && open + 1 < s.size() && startsWithDigit(s.substr(open + 1)) &&
         s.find(')', open) != std::string_view::npos && s.size() <= 24;
}

// Where the article title ends in `text` (the entry after its date): the
// earliest of the markers outside parentheses and brackets; the end keeps a
// closing bracket, "?" or "!".
size_t titleEnd(std::string_view text) {
  int depth = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '(' || c == '[') ++depth;
    if ((c == ')' || c == ']') && depth > 0) {
      --depth;
      if (c == ']' && depth == 0 && text.substr(i + 1).starts_with(".")) return i + 1;
      continue;
    }
    if (depth > 0) continue;
    const std::string_view rest = text.substr(i);
    if (rest.starts_with("Retrieved from")) return i;
    if ((c == '?' || c == '!') && rest.substr(1).starts_with(" ")) return i + 1;
    if (c == '.' && (rest.starts_with(". ") || rest.size() == 1)) {
      // "Smith vs. Jones": a title naming two parties is not cut after "vs".
      if (i >= 2 && text.substr(i - 2, 2) == "vs") continue;
      return i;
    }
  }
  return text.size();
}

bool isYearNumber(std::string_view s) {
  return s.size() == 4 && startsWithDigit(s) && s >= "1500" && s <= "2100" &&
         s.find_first_not_of("0123456789") == std::string_view::npos;
}

// Whether a word of `name` names periodicals rather than publishers.
bool hasPeriodicalWord(const std::string& name) {
  const std::string lower = str().lower(name);
  for (const std::string& w : str().split(lower, " ", -1)) {
    std::string word = w;
    str().trimTrailing(word, ".,;:'\"");
    if (QuillStrings::rules::isPeriodicalWord(word)) return true;
  }
  return false;
}

// `text` split at its commas outside parentheses and brackets: a date in a
// title ("(Nov. 8, 1918–June 4, 2015)") stays whole.
std::vector<std::string> topLevelParts(std::string_view text) {
  std::vector<std::string> parts;
  int depth = 0;
  size_t start = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '(' || text[i] == '[') ++depth;
    if ((text[i] == ')' || text[i] == ']') && depth > 0) --depth;
    if (text[i] == ',' && depth == 0) {
      parts.emplace_back(text.substr(start, i - start));
      start = i + 1;
    }
  }
  parts.emplace_back(text.substr(start));
  return parts;
}

// A name of one to four words, each in capitals, with no digit: "Time",
// "Lake Forester", "The Atlantic".
bool isShortName(std::string_view name) {
  const std::vector<std::string> words = str().split(name, " ", -1);
  if (words.empty() || words.size() > 4) return false;
  return std::all_of(words.begin(), words.end(), [](const std::string& w) {
    return !w.empty() && ((w[0] >= 'A' && w[0] <= 'Z') || w == "of" || w == "the") &&
           std::none_of(w.begin(), w.end(), [](char c) { return (c >= '0' && c <= '9') || c == '(' || c == '['; });
  });
}

// A name with a group's word in capitals: "Korean TeX Society".
bool isGroupName(std::string_view name) {
  for (std::string word : str().split(name, " ", -1)) {
    str().trimTrailing(word, ".,");
    if (QuillStrings::rules::isGroupWord(word)) return true;
  }
  return false;
}

// Whether a date group names a day: "2001, March 14".
bool isDatedToTheDay(std::string_view date) {
  return date.size() > 6 && date.find(", ") == 4 && startsWithDigit(date.substr(date.rfind(' ') + 1));
}

// Whether `source` (what follows a title) reads as a periodical: a name, then
// a volume, an issue, a page or an advance online publication; or a name
// alone that names a periodical ("The Wall Street Journal"), a single sentence
// that is neither "Place: Publisher" nor a parenthesised or "In ..." part.
// A magazine or a newspaper, dated to the day (`datedToTheDay`), may be
// named without such a word ("Time", "Guernica"): a short name in capitals
// after the title then does.
// Answers the name.
std::string periodicalSource(std::string source, bool datedToTheDay) {
  const auto& s = str();
  s.cutAtMarker(source, "Retrieved ", true);
  s.cutAtMarker(source, "doi:", true);
  s.trimTrailing(source, ". ", true);
  if (s.endsWith(source, kAdvanceOnline)) return s.trimmed(s.textLessPhrase(source, kAdvanceOnline, QuillStrings::PhrasePlace::Trailing));
  const std::vector<std::string> parts = topLevelParts(source);
  for (size_t k = 1; k < parts.size(); ++k) {
    const std::string part = s.trimmed(parts[k]);
    // A year closing a conference's place is no volume.
    if (isYearNumber(part) && k + 1 == parts.size()) continue;
    if (!startsWithDigit(part) && !looksLikeVolumeAndIssue(part) && !s.beginsWith(part, "p.") &&
        !s.beginsWith(part, "pp."))
      continue;
    // What follows the name is one sentence: volume, issue, pages (no "Place: Publisher").
    std::string rest = s.join(std::vector<std::string>(parts.begin() + static_cast<long>(k), parts.end()), ",");
    while (s.removeText(rest, "pp. ") || s.removeText(rest, "p. ")) {
    }
    if (s.contains(rest, ". ") || s.contains(rest, ":")) return {};
    const std::string name =
        s.trimmed(s.join(std::vector<std::string>(parts.begin(), parts.begin() + static_cast<long>(k)), ","));
    return isOneSentence(name) ? name : std::string();
  }
  // No number: the name alone, perhaps with an edition ("New York Times, national edition").
  const std::string name = s.trimmed(parts[0]);
  const bool nameAlone = !name.empty() && isOneSentence(source) && !s.contains(source, ":") &&
                         !s.beginsWith(name, "(") && !s.beginsWith(name, "[") && !s.beginsWith(name, "In ") &&
                         (hasPeriodicalWord(name) || (datedToTheDay && isShortName(name)));
  return nameAlone ? name : std::string();
}

}  // namespace

// ---- the entry contract -----------------------------------------------------------

const references::EntryTemplate& Periodical::entryTemplate() {
  static const references::EntryTemplate t{7, {}, kRows};
  return t;
}

void Periodical::writeSettings(Procedure& proc, const host::FormatterSettingsRef& settings) {
  proc.step([&] { settings.setAccessDateFormat(""); });
  proc.step([&] { settings.setHasPeriodicalPageNumbers(true); });
}

void Periodical::initChecking(bool& isFootnote, Array& checkingArray) {
  traced(*this, "initChecking", params(arg("isFootnote", isFootnote), arg("checkingArray", checkingArray)),
         [&](Procedure& proc) {
           proc.step([&] {
             checkingArray.set(at(checkingArray, 3), source().text(Field::pageRange) == kAdvanceOnline);
           });
         });
}

bool Periodical::IsFootnoteEntry(const std::string& author, const std::string& title, const std::string& entry) {
  // Periodical entries take no footnote forms.
  return traced(*this, "IsFootnoteEntry", params(arg("author", author), arg("title", title), arg("entry", entry)),
                [](Procedure&) { return false; });
}

std::string Periodical::extractPageNumberFromFootnote(std::string& prevFootnoteStr) {
  return traced(*this, "extractPageNumberFromFootnote", params(arg("prevFootnoteStr", prevFootnoteStr)),
                [](Procedure&) { return std::string(); });
}

std::string Periodical::FindTitleImpl(const std::string& str_, bool& isFootnote, std::string& decoratedStr,
                                      std::string& subTitle) {
  return traced(*this, "FindTitleImpl",
                params(arg("str", str_), arg("isFootnote", isFootnote), arg("decoratedStr", decoratedStr),
                       arg("subTitle", subTitle)),
                [&](Procedure& proc) {
                  std::string before, main, title, name;
                  size_t source = std::string::npos;
                  proc.local("before", before);
                  proc.local("main", main);
                  proc.local("title", title);
                  proc.step([&] {
                    // Author and date, then the title up to the periodical's name (the
                    // last sentence that reads as one). An entry without author opens
                    // with its title; what follows its date is then only a periodical,
                    // a publisher or the retrieval statement.
                    const size_t date = references::dateGroup(str_);
                    std::string after = str_;
                    const bool datedToTheDay =
                        date != std::string::npos &&
                        isDatedToTheDay(std::string_view(str_).substr(date + 2, str_.find(')', date + 2) - date - 2));
                    if (date != std::string::npos) {
                      before = str().trimmed(str_.substr(0, date));
                      after = str_.substr(str_.find(')', date + 2) + 1);
                      str().stripLeading(after, ".");
                    }
                    main = str().trimmed(after);
                    str().cutAtMarker(main, "Retrieved ", true);
                    str().cutAtMarker(main, "doi:", true);
                    std::vector<size_t> starts = statementStarts(main);
                    starts.insert(starts.begin(), 0);
                    for (auto it = starts.rbegin(); it != starts.rend(); ++it) {
                      // A periodical's name with its volume, issue and pages is short;
                      // the sentences further back are longer still.
                      if (main.size() - *it > kLongestSource) break;
                      const std::string candidate = main.substr(*it);
                      // A name alone needs a title before it: after the date, or
                      // before it in an entry without author.
                      const std::string found =
                          periodicalSource(candidate, datedToTheDay && (*it > 0 || references::readsAsTitle(before)));
                      if (!found.empty() && str().beginsWith(candidate, found)) {
                        source = *it;
                        name = found;
                        break;
                      }
                    }
                  });
                  // A group's name before the date is its author, and what follows
                  // the date its title ("Korean TeX Society. (2007). The Asian
                  // journal of TeX."), not a periodical's name.
                  if (source == 0 && isGroupName(before)) {
                    source = std::string::npos;
                    name.clear();
                  }
                  const bool titleFirst = !before.empty() && (main.empty() || source == 0);
                  proc.step([&] {
                    if (titleFirst) {
                      title = str().trimmed(before.substr(0, titleEnd(before)));
                    } else if (source != std::string::npos) {
                      title = str().trimmed(main.substr(0, source));
                    } else {
                      title = str().trimmed(main.substr(0, titleEnd(main)));
                    }
                    // The sentence's full stop is not the title's; "?" and "!" are.
                    str().stripTrailing(title, ".");
                    str().removeText(title, "[Editorial]");
                    str().removeText(title, "[Monograph]");
                    title = str().trimmed(title);
                  });
                  proc.step([&] {
                    subTitle = str().split(title, ": ", 2)[1];
                    // The decorated title is what stands where a reader looks for the
                    // title after the date: the title itself ("" when the entry opens
                    // with it), the book after "In " in a chapter, and "@" with the
                    // periodical's name when one follows.
                    std::string shown = titleFirst ? std::string() : str().split(title, "@", 2)[0];
                    std::string inBook = str_;
                    if (str().dropThroughMarker(inBook, ". In ")) {
                      if (str().contains(inBook, "), ")) str().dropThroughMarker(inBook, "), ");
                      shown = str().trimmed(inBook.substr(0, titleEnd(inBook)));
                      str().stripTrailing(shown, ".");
                    }
                    decoratedStr = name.empty() ? shown : shown + "@" + name;
                  });
                  return title;
                });
}

void Periodical::parseEntry(std::string& str_, std::string& titleStr, bool& isFootnote) {
  traced(*this, "parseEntry", params(arg("str", str_), arg("titleStr", titleStr), arg("isFootnote", isFootnote)),
         [&](Procedure& proc) {
           const host::DataSourceRef s = source();
           bool opensWithTitle = false;
           proc.step([&] { s.set(Field::RefersToType, "Refers to"); });
           proc.step([&] { s.set(Field::OnlinePublishDate, ""); });
           proc.step([&] { opensWithTitle = !titleStr.empty() && str().beginsWith(str().trimmed(str_), titleStr); });
           if (!opensWithTitle) {
             proc.step([&] { s.parseCommon(3, str_); });
             proc.step([&] { parseAndRemoveDate(str_); });
             proc.step([&] { parseAndRemoveArticleTitle(str_, titleStr); });
           } else {
             proc.step([&] { s.set(Field::author, ""); });
             proc.step([&] { parseAndRemoveArticleTitle(str_, titleStr); });
             proc.step([&] { parseAndRemoveDate(str_); });
           }
           proc.step([&] { s.set(Field::RefersTo, ""); });
           proc.step([&] { s.set(Field::notes, ""); });
           proc.step([&] { parseAndRemoveWeb(str_); });
           proc.step([&] { parseAndRemoveJournalTitle(str_); });
           proc.step([&] { parseAndRemoveVolumeAndNumber(str_); });
           proc.step([&] { parseAndRemovePage(str_); });
           bool journal = true;
           proc.step([&] { journal = s.text(Field::periodicalType) == "Journal"; });
           if (!journal) proc.step([&] { s.set(Field::PeriodicalIssueType, "Edition"); });
         });
}

void Periodical::toFormattedStringImpl(bool& isFootnote, Array& items, Array& formattedItems,
                                       bool& shortenedVersion) {
  traced(*this, "toFormattedStringImpl",
         params(arg("isFootnote", isFootnote), arg("items", items), arg("formattedItems", formattedItems),
                arg("shortenedVersion", shortenedVersion)),
         [&](Procedure& proc) {
           const host::DataSourceRef s = source();
           std::string authors, titleString;
           bool titleFirst = false;
           proc.local("authors", authors);
           proc.local("titleString", titleString);
           proc.step([&] { authors = s.authorStr(isFootnote, false); });
           // With no author the title moves to the front.
           proc.step([&] { titleFirst = authors.empty() && !s.text(Field::title).empty(); });
           proc.step([&] { titleString = getTitleWithArticleOrIssueTypeString(); });
           proc.step([&] { items.set(at(items, 0), titleFirst ? titleString : authors); });
           proc.step([&] { items.set(at(items, 1), s.text(Field::publishDate)); });
           proc.step([&] {
             host::FormattedTextRef(formattedItems.get(at(formattedItems, 3)).toObject()).Add(s.text(Field::Periodical), 1);
           });
           proc.step([&] {
             host::FormattedTextRef(formattedItems.get(at(formattedItems, 4)).toObject()).Add(getVolumeString(), 1);
           });
           proc.step([&] { items.set(at(items, 5), getNumberString()); });
           proc.step([&] { items.set(at(items, 6), getPageString()); });
           proc.step([&] { items.set(at(items, 7), getWebstring()); });
           if (!titleFirst)
             proc.step([&] { getTitleString(formattedItems.get(at(formattedItems, 2)).toObject(), titleString); });
         });
}

// ---- parse steps -------------------------------------------------------------------

void Periodical::parseAndRemoveDate(std::string& str_) {
  traced(*this, "parseAndRemoveDate", params(arg("str", str_)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    bool dated = false;
    proc.step([&] {
      str_ = str().trimmed(str_);
      dated = str().stripLeading(str_, "(");
    });
    if (!dated) {
      proc.step([&] { s.set(Field::periodicalType, "Journal"); });
      proc.step([&] { s.set(Field::publishDate, ""); });
      return;
    }
    std::vector<std::string> parts;
    proc.local("parts", parts);
    proc.step([&] { parts = str().split(str_, ")", 2); });
    // A bare year (or "in press") dates a journal; a month or day, a magazine.
    bool year = false;
    proc.step([&] { year = parts[0] == "in press" || s.isYear(parts[0]); });
    proc.step([&] { s.set(Field::periodicalType, year ? "Journal" : "Magazine"); });
    proc.step([&] { s.set(Field::publishDate, parts[0]); });
    proc.step([&] {
      str_ = parts[1];
      str().stripLeading(str_, ".");
      str_ = str().trimmed(str_);
    });
  });
}

void Periodical::parseAndRemoveArticleTitle(std::string& str_, std::string& titleStr) {
  traced(*this, "parseAndRemoveArticleTitle", params(arg("str", str_), arg("titleStr", titleStr)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    bool bracket = false;
    proc.step([&] { s.set(Field::issue, ""); });
    proc.step([&] { s.set(Field::PeriodicalIssueType, "Issue type"); });
    proc.step([&] {
      std::vector<std::string> parts = str().split(titleStr, "[", 2);
      if (parts[1].empty()) return;
      bracket = true;
      str().stripTrailing(parts[1], "]");
      for (const char* type : {"Supplement", "Special issue", "Special section"}) {
        if (str().contains(parts[1], type)) {
          s.set(Field::PeriodicalIssueType, type);
          titleStr = str().trimmed(parts[0]);
          return;
        }
      }
      if (str().contains(parts[1], "Abstract")) {
        s.set(Field::RefersToType, "Abstract");
        titleStr = str().trimmed(parts[0]);
      }
    });
    proc.step([&] {
      if (s.text(Field::author) == titleStr) s.set(Field::author, "");
    });
    if (titleStr.empty()) {
      proc.step([&] { s.set(Field::title, ""); });
      return;
    }
    proc.step([&] {
      str().removeText(str_, titleStr);
      str_ = str().trimmed(str_);
    });
    proc.step([&] {
      if (str().stripLeading(str_, "[Editorial]"))
        s.set(Field::ArticleType, "Editorial");
      else if (str().stripLeading(str_, "[Monograph]"))
        s.set(Field::ArticleType, "Monograph");
      else
        s.set(Field::ArticleType, "Article title");
    });
    proc.step([&] { s.set(Field::title, titleStr); });
    if (bracket) proc.step([&] { str().dropThroughMarker(str_, "]"); });
    proc.step([&] {
      str_ = str().trimmed(str_);
      str().stripLeading(str_, ".");
      str_ = str().trimmed(str_);
    });
  });
}

void Periodical::parseAndRemoveWeb(std::string& str_) {
  traced(*this, "parseAndRemoveWeb", params(arg("str", str_)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    std::vector<std::string> parts;
    proc.local("parts", parts);
    proc.step([&] { parts = str().split(str_, "Abstract retrieved from", 2); });
    if (!parts[1].empty()) {
      proc.step([&] { s.set(Field::RefersToType, "Abstract"); });
      proc.step([&] {
        std::string address = str().trimmed(parts[1]);
        str().stripLeading(address, "http://");
        s.set(Field::website, address);
      });
      proc.step([&] { s.set(Field::accessDate, ""); });
      proc.step([&] { str_ = str().trimmed(parts[0]); });
      return;
    }
    std::string website, accessDate;
    proc.step([&] { FormatterImplementation::parseAndRemoveWeb(str_, website, accessDate); });
    proc.step([&] { s.set(Field::website, website); });
    proc.step([&] { s.set(Field::accessDate, accessDate); });
    proc.step([&] {
      str_ = str().trimmed(str_);
      str().stripLeading(str_, ".");
      str_ = str().trimmed(str_);
    });
  });
}

void Periodical::parseAndRemoveJournalTitle(std::string& str_) {
  traced(*this, "parseAndRemoveJournalTitle", params(arg("str", str_)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    std::vector<std::string> parts;
    std::string name;
    proc.local("parts", parts);
    proc.local("name", name);
    proc.step([&] { s.set(Field::Periodical, ""); });
    proc.step([&] {
      std::string text = str().trimmed(str_);
      str().trimTrailing(text, ".");
      parts = str().split(text, ",", -1);
      for (std::string& p : parts) p = str().trimmed(p);
    });
    if (parts.empty() || parts[0].empty()) return;
    if (startsWithDigit(parts[0])) return;
    bool advance = false;
    proc.step([&] {
      std::string first = parts[0];
      advance = str().stripTrailing(first, kAdvanceOnline);
      if (!advance) return;
      str().trimTrailing(first, ". ", true);
      s.set(Field::Periodical, first);
      str_ = std::string(kAdvanceOnline);
    });
    if (advance) return;
    name = parts[0];
    size_t stop = parts.size();
    for (size_t k = 1; k < parts.size(); ++k) {
      const std::string& part = parts[k];
      if (part.empty()) break;
      // Names may hold commas; a number, a parenthesis or a page ends them.
      if (startsWithDigit(part) || str().beginsWith(part, "(") || looksLikeVolumeAndIssue(part) ||
          (k == 1 && isNewspaperPage(part))) {
        stop = k;
        break;
      }
      name += ", " + part;
    }
    proc.step([&] { s.set(Field::Periodical, name); });
    proc.step([&] {
      if (stop == parts.size()) {
        str_.clear();
        return;
      }
      str_ = str().join(std::vector<std::string>(parts.begin() + static_cast<long>(stop), parts.end()), ", ");
    });
  });
}

bool Periodical::isNewspaperPage(const std::string& str_) {
  return traced(*this, "isNewspaperPage", params(arg("str", str_)), [&](Procedure&) {
    return str().beginsWith(str_, "p.") || str().beginsWith(str_, "pp.");
  });
}

void Periodical::parseAndRemoveVolumeAndNumber(std::string& str_) {
  traced(*this, "parseAndRemoveVolumeAndNumber", params(arg("str", str_)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    bool noVolume = false;
    proc.step([&] { noVolume = str_ == kAdvanceOnline || isNewspaperPage(str_); });
    if (noVolume) {
      proc.step([&] { s.set(Field::volume, ""); });
      proc.step([&] { s.set(Field::Number, ""); });
      return;
    }
    std::vector<std::string> parts;
    proc.local("parts", parts);
    proc.step([&] { parts = str().split(str_, ")", 2); });
    if (!parts[1].empty() || str().endsWith(str_, ")")) {
      proc.step([&] {
        std::string rest = str().trimmed(parts[1]);
        str().stripLeading(rest, ",");
        str_ = str().trimmed(rest);
      });
      proc.step([&] {
        const std::vector<std::string> volume = str().split(parts[0], "(", 2);
        s.set(Field::volume, str().trimmed(volume[0]));
        s.set(Field::Number, str().trimmed(volume[1]));
      });
      return;
    }
    proc.step([&] { parts = str().split(str_, ",", 2); });
    // A range with nothing after it is the pages of an issue without volume.
    const bool pagesOnly = parts[1].empty() && (str().contains(parts[0], "\u2013") || str().contains(parts[0], "-")) &&
                           startsWithDigit(str().trimmed(parts[0]));
    if (pagesOnly) {
      proc.step([&] { s.set(Field::volume, ""); });
      proc.step([&] { s.set(Field::Number, ""); });
      return;
    }
    proc.step([&] { s.set(Field::volume, str().trimmed(parts[0])); });
    proc.step([&] { s.set(Field::Number, ""); });
    proc.step([&] { str_ = str().trimmed(parts[1]); });
  });
}

void Periodical::parseAndRemovePage(std::string& str_) {
  traced(*this, "parseAndRemovePage", params(arg("str", str_)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    bool newspaper = false;
    proc.step([&] { newspaper = str().beginsWith(str_, "pp.") || str().beginsWith(str_, "p."); });
    if (newspaper) proc.step([&] { s.set(Field::periodicalType, "Newspaper"); });
    proc.step([&] {
      str().stripTrailing(str_, ".");
      // The page builder writes its own "p." or "pp.": the parsed one goes.
      if (newspaper && !str().stripLeading(str_, "pp.")) str().stripLeading(str_, "p.");
      str_ = str().trimmed(str_);
    });
    proc.step([&] { s.set(Field::page, ""); });
    proc.step([&] { s.set(Field::pageRange, str_); });
  });
}

// ---- builders ----------------------------------------------------------------------

std::string Periodical::getVolumeString() {
  return traced(*this, "getVolumeString", [&](Procedure& proc) {
    return proc.step([&] { return source().flag(Field::isNewspaper) ? std::string() : source().text(Field::volume); });
  });
}

std::string Periodical::getNumberString() {
  return traced(*this, "getNumberString", [&](Procedure& proc) {
    return proc.step([&] { return source().flag(Field::isNewspaper) ? std::string() : source().text(Field::Number); });
  });
}

std::string Periodical::getPageString() {
  return traced(*this, "getPageString", [&](Procedure& proc) {
    std::string pages;
    bool newspaper = false;
    proc.step([&] { pages = source().text(Field::pageRange); });
    proc.step([&] { newspaper = source().flag(Field::isNewspaper); });
    if (!newspaper || pages.empty()) return pages;
    const bool range = str().contains(pages, "-") || str().contains(pages, "\u2013") || str().contains(pages, ",");
    return (range ? "pp. " : "p. ") + pages;
  });
}

std::string Periodical::getWebstring() {
  return traced(*this, "getWebstring", [&](Procedure& proc) {
    std::string web, refersTo;
    proc.step([&] { web = source().text(Field::website); });
    if (web.empty()) return web;
    proc.step([&] { refersTo = source().text(Field::RefersToType); });
    if (refersTo != "Abstract" && refersTo != "Abstract in") return web;
    std::string rest = web;
    if (str().stripLeading(rest, "Retrieved")) return "Abstract retrieved" + rest;
    return "Abstract retrieved from " + web;
  });
}

std::string Periodical::getTitleWithArticleOrIssueTypeString() {
  return traced(*this, "getTitleWithArticleOrIssueTypeString", [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    std::string title, articleType, periodicalType, issueType, website, refersTo;
    proc.step([&] { title = s.titleStr(false); });
    if (title.empty()) return title;
    proc.step([&] { articleType = s.text(Field::ArticleType); });
    if (articleType == "Editorial") return title + " [Editorial]";
    if (articleType == "Monograph") return title + " [Monograph]";
    proc.step([&] { periodicalType = s.text(Field::periodicalType); });
    if (periodicalType != "Journal") return title;
    proc.step([&] { issueType = s.text(Field::PeriodicalIssueType); });
    if (issueType == "Refers to") return title;
    if (issueType == "Issue type") {
      proc.step([&] {
        website = s.text(Field::website);
        refersTo = s.text(Field::RefersToType);
      });
      const bool abstract = refersTo == "Abstract" || refersTo == "Abstract in";
      return website.empty() && abstract ? title + " [Abstract]" : title;
    }
    if (issueType == "Supplement") return title + " [Supplemental material]";
    if (issueType == "Theme") return title + " [Theme issue]";
    if (issueType == "Abstract") return title + " [Abstract]";
    return title + " [" + issueType + "]";
  });
}

void Periodical::getTitleString(const ObjectRef& formattedItem, std::string title) {
  traced(*this, "getTitleString", params(arg("formattedItem", formattedItem), arg("title", title)),
         [&](Procedure& proc) {
           const host::FormattedTextRef out(formattedItem);
           bool withWebsite = false;
           proc.step([&] { withWebsite = !source().text(Field::website).empty(); });
           // The retrieval statement already says "Abstract retrieved".
           if (withWebsite && str().contains(title, "[Abstract")) str().removeBracketedMarker(title, "[Abstract", true);
           std::vector<std::string> parts = str().split(title, "(", 2);
           if (parts[1].empty()) {
             proc.step([&] { out.Add(title, 0); });
             return;
           }
           // The parenthesised part in italics; the blanks around it stay as the
           // title has them.
           const std::vector<std::string> inner = str().split(parts[1], ")", 2);
           std::string lead = parts[0];
           while (!lead.empty() && lead.back() == ' ') lead.pop_back();
           proc.step([&] { out.Add(lead + " (", 0); });
           proc.step([&] { out.Add(inner[0], 1); });
           proc.step([&] { out.Add(")" + inner[1], 0); });
         });
}

}  // namespace QuillFormatAPA
