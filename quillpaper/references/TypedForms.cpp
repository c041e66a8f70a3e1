#include "quillpaper/references/TypedForms.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>

#include "strings/ReferenceRules.h"
#include "strings/StringUtility.h"

namespace quillpaper {

namespace {

const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }

char asciiLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isAlnum(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; }

bool startsWithNoCase(std::string_view text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (size_t i = 0; i < prefix.size(); ++i)
    if (asciiLower(text[i]) != asciiLower(prefix[i])) return false;
  return true;
}

bool endsWithNoCase(std::string_view text, std::string_view suffix) {
  return text.size() >= suffix.size() && startsWithNoCase(text.substr(text.size() - suffix.size()), suffix);
}

// The position of the last `part` in `text`, case aside, or npos.
size_t rfindNoCase(std::string_view text, std::string_view part) {
  if (part.empty()) return text.size();
  if (part.size() > text.size()) return std::string_view::npos;
  // The candidates are where the first character stands, in either case:
  // found with the library's backward search, not a byte at a time.
  const char lower = asciiLower(part[0]);
  const char upper = lower >= 'a' && lower <= 'z' ? static_cast<char>(lower - 'a' + 'A') : lower;
  const auto lastBefore = [&](char c, size_t end) -> size_t {
    const void* at = ::memrchr(text.data(), c, end);
    return at ? static_cast<size_t>(static_cast<const char*>(at) - text.data()) : std::string_view::npos;
  };
  for (size_t end = text.size() - part.size() + 1; end > 0;) {
    const size_t a = lastBefore(lower, end);
    const size_t b = upper == lower ? std::string_view::npos : lastBefore(upper, end);
    const size_t at = a == std::string_view::npos ? b : b == std::string_view::npos ? a : std::max(a, b);
    if (at == std::string_view::npos) return at;
    if (startsWithNoCase(text.substr(at), part)) return at;
    end = at;
  }
  return std::string_view::npos;
}

bool isLink(std::string_view word) {
  return startsWithNoCase(word, "http://") || startsWithNoCase(word, "https://") ||
         startsWithNoCase(word, "ftp://") || startsWithNoCase(word, "www.");
}

// Walks over a text, taking what it recognises off the front.
struct Cursor {
  std::string_view s;
  size_t i = 0;

  bool atEnd() const { return i >= s.size(); }
  std::string_view rest() const { return s.substr(i); }
  bool take(std::string_view literal) {
    if (!startsWithNoCase(rest(), literal)) return false;
    i += literal.size();
    return true;
  }
  template <class... L>
  bool takeAny(L... literals) {
    return (take(literals) || ...);
  }
  // A volume or issue: letters, digits and joiners holding a digit ("12",
  // "PC-18", "3–4", "S1"), at most `longest` bytes.
  bool takeNumber(std::string& out, size_t longest = 12) {
    size_t j = i;
    bool digit = false;
    while (j < s.size() && j - i < longest) {
      const char c = s[j];
      if (isAlnum(c) || c == '-' || c == '/') {
        digit = digit || isDigit(c);
        ++j;
      } else if (s.substr(j).starts_with("\u2013")) {
        j += 3;
      } else {
        break;
      }
    }
    if (!digit || j == i || j - i >= longest) return false;
    out = std::string(s.substr(i, j - i));
    i = j;
    return true;
  }
  // Pages: "81", "81–90", "e1001", "S12–S20".
  bool takePages(std::string& out) {
    const size_t start = i;
    std::string first;
    if (!takeNumber(first, 16)) return false;
    const size_t mark = i;
    std::string second;
    if (takeAny("\u2013", "\u2014", "-") && !takeNumber(second, 16)) i = mark;
    out = std::string(s.substr(start, i - start));
    return true;
  }
};

// ---- the note at the very end ------------------------------------------------------

// The position of the "(" that opens the group closing the text, or npos.
size_t openingOfLast(std::string_view text) {
  int depth = 0;
  for (size_t i = text.size(); i-- > 0;) {
    if (text[i] == ')') ++depth;
    if (text[i] == '(' && --depth == 0) return i;
  }
  return std::string_view::npos;
}

std::string takeTrailingNote(std::string& text) {
  std::string t = str().trimmed(text);
  str().stripTrailing(t, ".");
  if (!str().endsWith(t, ")")) return {};
  const size_t open = openingOfLast(t);
  if (open == std::string::npos || open == 0) return {};
  const std::string_view group = std::string_view(t).substr(open);
  if (!group.starts_with("(Original ") && !group.starts_with("(Reprinted ")) return {};
  std::string note(group);
  text = str().trimmed(t.substr(0, open));
  return note;
}

// ---- the retrieval statement -------------------------------------------------------

// "Retrieved from ERIC database. (ED123456)", "Available from ProQuest
// Dissertations and Theses database. (UMI No. 1434728)", the 7th edition's
// "ERIC database. (ED123456)": a statement of where the work is held, with
// no address, at the end.
std::string takeDatabaseStatement(std::string& text) {
  const std::string t = str().trimmed(text);
  size_t at = std::string::npos;
  for (std::string_view label : {"Retrieved from ", "Available from "}) {
    const size_t found = str().lastIndexOf(t, label);
    if (found != std::string::npos && (at == std::string::npos || found > at)) at = found;
  }
  // The 7th edition names the database without a label: "… ERIC database. (ED123456)".
  if (at == std::string::npos) {
    const size_t database = str().lastIndexOf(t, " database. (");
    const size_t sentence = database == std::string::npos ? std::string::npos : str().lastIndexOf(t, ". ", database);
    if (sentence != std::string::npos && str().endsWith(str().textLessPhrase(t, ".", QuillStrings::PhrasePlace::Trailing), ")"))
      at = sentence + 2;
  }
  if (at == std::string::npos || (at > 0 && t[at - 1] != ' ')) return {};
  const std::string statement = t.substr(at);
  for (const std::string& word : str().split(statement, " ", -1))
    if (isLink(word) || startsWithNoCase(word, "doi:")) return {};
  std::string plain = statement;
  str().trimTrailing(plain, ".", true);
  const bool database = str().contains(statement, "database") || str().contains(statement, "Database");
  const bool numbered = str().endsWith(plain, ")") && (str().contains(statement, "No. ") || str().contains(statement, "(ED") ||
                                                      str().contains(statement, "(EJ"));
  if (!database && !numbered) return {};
  text = str().trimmed(t.substr(0, at));
  return statement;
}

// The bracketed descriptions of the electronic sources, in APA's case.
constexpr std::array<std::string_view, 5> kDescriptions = {
    "[Web log post", "[Web log comment", "[Online forum comment", "[Video file", "[Electronic mailing list message"};

// "… [Web log post]. Career Blog. Retrieved from …": the site's name between
// an electronic source's description and its address.
std::string takeSiteName(std::string& text) {
  const size_t retrieved = str().lastIndexOf(text, " Retrieved ");
  if (retrieved == std::string::npos) return {};
  const size_t bracket = str().lastIndexOf(text, "]. ", retrieved);
  if (bracket == std::string::npos || retrieved < bracket + 3) return {};
  const size_t open = text.rfind('[', bracket);
  if (open == std::string::npos ||
      std::none_of(kDescriptions.begin(), kDescriptions.end(),
                   [&](std::string_view d) { return startsWithNoCase(std::string_view(text).substr(open), d); }))
    return {};
  std::string site = str().trimmed(text.substr(bracket + 3, retrieved - bracket - 3));
  str().stripTrailing(site, ".");
  if (site.empty() || site.size() > 80 || str().contains(site, ". ")) return {};
  text = text.substr(0, bracket + 2) + text.substr(retrieved);
  return site;
}

// "… Accessed May 5, 2010.", "… [Accessed 5 May 2010]", "… (accessed May 5,
// 2010)": a retrieval date after the address, taken off and kept.
void takeDateAfterLink(std::string& text, std::string& accessDate) {
  for (std::string_view label : {"accessed ", "viewed ", "cited "}) {
    const size_t at = rfindNoCase(text, label);
    if (at == std::string::npos || at == 0) continue;
    std::string date = text.substr(at + label.size());
    str().trimTrailing(date, ".])", true);
    const std::string before = str().trimmed(text.substr(0, at));
    const size_t lastBlank = before.rfind(' ');
    const std::string lastWord = before.substr(lastBlank == std::string::npos ? 0 : lastBlank + 1);
    if (date.empty() || date.size() > 30 || !std::any_of(date.begin(), date.end(), isDigit)) continue;
    std::string lead = before;
    str().trimTrailing(lead, "[(,.", true);
    const size_t linkAt = lead.rfind(' ');
    if (!isLink(lead.substr(linkAt == std::string::npos ? 0 : linkAt + 1)) && !isLink(lastWord)) continue;
    accessDate = date;
    text = lead;
    return;
  }
}

// The labels people put before an address, to be read as "Retrieved from".
constexpr std::array<std::string_view, 12> kAddressLabels = {
    "Available online at:", "Available online at", "Available online:", "Available at:", "Available at",
    "Available from:",      "Available:",          "Retrieved from:",   "Online at:",    "URL:",
    "Link:",                "Web:"};

void canonicalRetrieval(std::string& text, std::string& accessDate) {
  std::string t = str().trimmed(text);
  size_t blank = t.rfind(' ');
  std::string link = t.substr(blank == std::string::npos ? 0 : blank + 1);
  if (!isLink(link) || blank == std::string::npos) return;
  // A full stop after an address is the sentence's, not the address's.
  str().stripTrailing(link, ".");
  std::string lead = str().trimmed(t.substr(0, blank));
  const size_t retrieved = rfindNoCase(lead, "Retrieved ");
  if (endsWithNoCase(lead, "website:") || endsWithNoCase(lead, "site:")) {
    // "Retrieved from Harbor University website:" is APA's own. The date it
    // was read on ("Retrieved May 5, 2010, from …") is kept aside, and a site
    // typed without "Retrieved from" is read after one all the same (the
    // rules took "Harbor University website:" for a publisher and wrote
    // "website:. Retrieved from").
    const size_t from = rfindNoCase(lead, " from ");
    if (retrieved != std::string::npos && from != std::string::npos && from > retrieved) {
      std::string date = lead.substr(retrieved + 10, from > retrieved + 10 ? from - retrieved - 10 : 0);
      str().trimTrailing(date, ",", true);
      date = str().trimmed(date);
      if (!date.empty() && date.size() <= 30 && std::any_of(date.begin(), date.end(), isDigit)) {
        accessDate = date;
        text = str().trimmed(lead.substr(0, retrieved)) + " Retrieved from " + lead.substr(from + 6) + " " + link;
        return;
      }
      text = lead + " " + link;
      return;
    }
    // The site's name begins after the last full stop that ends a sentence,
    // not an initial's ("U.S. Department of Health website:").
    size_t stop = str().lastIndexOf(lead, ". ");
    while (stop != std::string::npos && stop >= 1 && std::isupper(static_cast<unsigned char>(lead[stop - 1])) &&
           (stop == 1 || !std::isalpha(static_cast<unsigned char>(lead[stop - 2]))))
      stop = stop >= 2 ? str().lastIndexOf(lead, ". ", stop - 2) : std::string::npos;
    if (stop != std::string::npos) {
      std::string site = lead.substr(stop + 2);
      for (std::string_view label : kAddressLabels)
        if (str().lower(site).starts_with(str().lower(label))) {
          site = str().trimmed(site.substr(label.size()));
          break;
        }
      text = lead.substr(0, stop + 1) + " Retrieved from " + site + " " + link;
      return;
    }
    text = lead + " " + link;
    return;
  }
  if (endsWithNoCase(lead, "Retrieved from") || endsWithNoCase(lead, "doi:")) {
    text = lead + " " + link;
    return;
  }
  if (retrieved != std::string::npos && endsWithNoCase(lead, " from")) {
    // "Retrieved May 5, 2010, from": the date is kept aside.
    std::string date = lead.substr(retrieved + 10, lead.size() - 5 - retrieved - 10);
    str().trimTrailing(date, ",", true);
    date = str().trimmed(date);
    if (!date.empty() && date.size() <= 30 && std::any_of(date.begin(), date.end(), isDigit)) {
      accessDate = date;
      text = str().trimmed(lead.substr(0, retrieved)) + " Retrieved from " + link;
      return;
    }
  }
  for (std::string_view label : kAddressLabels) {
    if (endsWithNoCase(lead, label)) {
      lead = str().trimmed(lead.substr(0, lead.size() - label.size()));
      break;
    }
  }
  if (!lead.empty() && lead.back() != '.' && lead.back() != '?' && lead.back() != '!' && lead.back() != ']') lead += ".";
  text = lead + " Retrieved from " + link;
}

// "DOI: 10…", "doi: 10…", "https://doi.org/10…", "http://dx.doi.org/10…" as
// the "doi:10…" APA 6 writes.
void doiForms(std::string& text) {
  static constexpr std::array<std::string_view, 7> kForms = {
      "https://doi.org/", "http://doi.org/", "https://dx.doi.org/", "http://dx.doi.org/", "doi: ", "doi:", "doi "};
  std::string out;
  size_t i = 0;
  while (i < text.size()) {
    bool replaced = false;
    // Every form begins "h" or "d".
    const char first = asciiLower(text[i]);
    if ((first == 'h' || first == 'd') && (i == 0 || text[i - 1] == ' ' || text[i - 1] == '.')) {
      for (std::string_view form : kForms) {
        if (startsWithNoCase(std::string_view(text).substr(i), form) &&
            std::string_view(text).substr(i + form.size()).starts_with("10.")) {
          out += "doi:";
          i += form.size();
          replaced = true;
          break;
        }
      }
    }
    if (!replaced) out += text[i++];
  }
  text = std::move(out);
}

// ---- the date -----------------------------------------------------------------------

// "[ca. 1937]", an estimated date in brackets, reads as APA's "(ca. 1937)".
void bracketedDate(std::string& text) {
  const size_t open = text.find(" [ca. ");
  if (open == std::string::npos || QuillStrings::rules::dateGroup(text) != std::string::npos) return;
  const size_t close = text.find(']', open);
  if (close == std::string::npos || !QuillStrings::rules::isDateContent(text.substr(open + 2, close - open - 2)))
    return;
  text[open + 1] = '(';
  text[close] = ')';
}

// "(2016), Title", "(2016): Title", "(2016) Title" read as "(2016). Title".
void closeDate(std::string& text) {
  const size_t at = QuillStrings::rules::dateGroup(text);
  if (at == std::string::npos) return;
  const size_t close = text.find(')', at + 2);
  const size_t after = close + 1;
  if (close == std::string::npos || after >= text.size()) return;
  const char c = text[after];
  if (c == ',' || c == ':' || c == ';') {
    text[after] = '.';
    return;
  }
  if (c == ' ' && after + 1 < text.size() &&
      (isAlnum(text[after + 1]) || static_cast<unsigned char>(text[after + 1]) >= 0x80 || text[after + 1] == '"'))
    text.insert(after, ".");
}

// ---- a periodical's numbers ---------------------------------------------------------

// At `c` (just past ", "): "vol. 19, no. 3, pp. 81–90", "19(3): 81–90",
// "30, pp. 1001–1013". Answers the APA form, "19(3), 81–90", or nothing.
std::string periodicalNumbers(Cursor& c) {
  std::string volume, issue, pages;
  const bool labelled = c.takeAny("vol. ", "vol ", "volume ", "v. ");
  if (!c.takeNumber(volume)) return {};
  bool issueLabelled = false;
  if (c.take("(")) {
    if (!c.takeNumber(issue) || !c.take(")")) return {};
  } else if (c.takeAny(", no. ", ", no ", ", nr. ", ", issue ", ", iss. ", ", number ", " no. ")) {
    if (!c.takeNumber(issue)) return {};
    issueLabelled = true;
  }
  const size_t beforePages = c.i;
  const bool pagesLabelled = c.takeAny(", pp. ", ", pp ", ", p. ", ": ");
  if ((pagesLabelled || c.take(", ")) && !c.takePages(pages)) c.i = beforePages;
  if (pages.empty() && pagesLabelled) return {};
  // Plain APA numbers need nothing; only labels and a colon are rewritten.
  if (!labelled && !issueLabelled && !pagesLabelled) return {};
  // "vol. 3" alone may be a book's volume: a periodical's has an issue or pages.
  if (labelled && issue.empty() && pages.empty()) return {};
  // What follows must end the numbers.
  if (!c.atEnd() && c.rest()[0] != '.' && c.rest()[0] != ',' && c.rest()[0] != ' ' && c.rest()[0] != ';') return {};
  std::string out = volume;
  if (!issue.empty()) out += "(" + issue + ")";
  if (!pages.empty()) out += ", " + pages;
  return out;
}

void periodicalNumberForms(std::string& text) {
  const size_t date = QuillStrings::rules::dateGroup(text);
  size_t from = date == std::string::npos ? 0 : date + 2;
  for (size_t at = text.find(", ", from); at != std::string::npos; at = text.find(", ", at + 2)) {
    // Inside a parenthesised group the numbers are a book's: "(Vol. 3, pp. 4–5)".
    Cursor c{text, at + 2};
    const std::string apa = periodicalNumbers(c);
    if (apa.empty()) continue;
    text.replace(at + 2, c.i - at - 2, apa);
    at += apa.size();
  }
}

// ---- proceedings ----------------------------------------------------------------------

bool isPageRange(std::string_view text) {
  Cursor c{text};
  std::string pages;
  return c.takePages(pages) && c.atEnd() && (pages.find('-') != std::string::npos || pages.find("\u2013") != std::string::npos);
}

bool namesMeeting(std::string_view statement) {
  for (std::string_view word : {"Proceedings", "Conference", "Symposium", "Workshop", "Congress", "Colloquium"})
    if (str().contains(statement, word)) return true;
  return false;
}

// "Title. Proceedings of the X Symposium, 117–118. New York, NY: ACM." The
// paper is part of a book: APA writes "In" before the proceedings and the
// pages in parentheses, "In Proceedings of the X Symposium (pp. 117–118).".
// Only a statement followed by a publisher is read so; a volume's numbers
// make the proceedings a periodical's.
void proceedingsAsBook(std::string& text) {
  const size_t date = QuillStrings::rules::dateGroup(text);
  if (date == std::string::npos || str().contains(text, ". In ")) return;
  // The statements before the address: ... title. proceedings. publisher.
  size_t end = text.size();
  for (std::string_view address : {" doi:", " Retrieved "})
    if (const size_t at = text.find(address, date); at != std::string::npos) end = std::min(end, at);
  const std::string body = text.substr(0, end);
  const size_t publisherStop = str().lastIndexOf(body, ". ");
  if (publisherStop == std::string::npos || !str().contains(body.substr(publisherStop), ": ")) return;
  const size_t statementStop = str().lastIndexOf(body, ". ", publisherStop - 1);
  const size_t dateEnd = body.find(')', date);
  if (statementStop == std::string::npos || statementStop <= dateEnd + 1) return;
  std::string statement = body.substr(statementStop + 2, publisherStop - statementStop - 2);
  if (!namesMeeting(statement) || str().contains(statement, "(")) return;
  std::string pages;
  if (const size_t comma = str().lastIndexOf(statement, ", "); comma != std::string::npos && isPageRange(statement.substr(comma + 2))) {
    pages = statement.substr(comma + 2);
    statement.erase(comma);
  }
  // A volume before the pages makes the proceedings a periodical's.
  if (const size_t comma = str().lastIndexOf(statement, ", "); comma != std::string::npos) {
    const std::string last = statement.substr(comma + 2);
    if (!last.empty() && std::all_of(last.begin(), last.end(), [](char c) { return c >= '0' && c <= '9'; })) return;
  }
  text = text.substr(0, statementStop + 2) + "In " + statement + (pages.empty() ? "" : " (pp. " + pages + ")") +
         text.substr(publisherStop);
}

// ---- electronic sources -------------------------------------------------------------

bool takeEmailDescription(std::string& text) {
  for (std::string_view bracket : {"[e-mail", "[email"}) {
    const size_t at = rfindNoCase(text, bracket);
    if (at == std::string::npos) continue;
    const size_t close = text.find(']', at);
    if (close == std::string::npos) continue;
    std::string rest = text.substr(close + 1);
    str().trimTrailing(rest, ". ", true);
    if (!rest.empty()) continue;
    text = str().trimmed(text.substr(0, at));
    return true;
  }
  return false;
}

void descriptionCase(std::string& text) {
  // The 7th edition's words for the same descriptions, read as the 6th's.
  static constexpr std::pair<std::string_view, std::string_view> kSeventh[] = {
      {"[Video]", "[Video file]"}, {"[Blog post]", "[Web log post]"}, {"[Online forum post]", "[Online forum comment]"}};
  for (const auto& [seventh, sixth] : kSeventh) {
    const size_t at = rfindNoCase(text, seventh);
    if (at != std::string::npos) text.replace(at, seventh.size(), sixth);
  }
  for (std::string_view d : kDescriptions) {
    const size_t at = rfindNoCase(text, d);
    if (at != std::string::npos) text.replace(at, d.size(), d);
  }
}

}  // namespace

TypedEntry readTypedForms(std::string_view entry) {
  TypedEntry t;
  t.text = std::string(entry);
  t.trailingNote = takeTrailingNote(t.text);
  t.databaseStatement = takeDatabaseStatement(t.text);
  doiForms(t.text);
  takeDateAfterLink(t.text, t.accessDate);
  canonicalRetrieval(t.text, t.accessDate);
  descriptionCase(t.text);
  t.email = takeEmailDescription(t.text);
  t.siteName = takeSiteName(t.text);
  bracketedDate(t.text);
  closeDate(t.text);
  periodicalNumberForms(t.text);
  proceedingsAsBook(t.text);
  return t;
}

}  // namespace quillpaper
