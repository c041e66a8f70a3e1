#include "quillpaper/references/LabelledEntry.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <regex>

#include "quillpaper/references/AuthorNames.h"
#include "quillpaper/references/Places.h"
#include "strings/StringUtility.h"

namespace quillpaper {

namespace {

using quillreader::Label;

const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }

bool allDigits(std::string_view s) {
  return !s.empty() && std::all_of(s.begin(), s.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool isYear(std::string_view t) { return t.size() == 4 && allDigits(t) && t >= "1400" && t <= "2099"; }

std::string_view tokenText(const quillreader::Reading& r, std::string_view entry, size_t k) {
  return entry.substr(r.tokens[k].begin, r.tokens[k].end - r.tokens[k].begin);
}

// A span without the punctuation and quotes that joined it to its neighbours.
std::string clean(std::string_view text) {
  std::string t = str().trimmed(text);
  const auto strip = [&](std::string_view marks) {
    bool changed = true;
    while (changed && !t.empty()) {
      changed = false;
      // A quote mark at an edge goes when it closes nothing inside: the pair
      // around a title goes, the opening quote of "“PostScript” Prints" stays.
      for (const auto& [open, close] : {std::pair<std::string_view, std::string_view>{"\xe2\x80\x9c", "\xe2\x80\x9d"},
                                        std::pair<std::string_view, std::string_view>{"\xe2\x80\x98", "\xe2\x80\x99"}}) {
        const auto inside = [&](std::string_view mark, size_t from, size_t to) {
          return std::string_view(t).substr(from, to - from).find(mark) != std::string_view::npos;
        };
        if (t.starts_with(open) && t.ends_with(close) && t.size() >= open.size() + close.size()) {
          t = t.substr(open.size(), t.size() - open.size() - close.size()), changed = true;
          continue;
        }
        if (t.starts_with(open) && !inside(close, open.size(), t.size())) t.erase(0, open.size()), changed = true;
        if (t.ends_with(close) && !inside(open, 0, t.size() - close.size()) &&
            !(close == "\xe2\x80\x99" && t.size() > close.size() && std::isalpha(static_cast<unsigned char>(t[t.size() - close.size() - 1]))))
          t.erase(t.size() - close.size()), changed = true;
      }
      if (!t.empty() && marks.find(t.front()) != std::string_view::npos) t.erase(0, 1), changed = true;
      // A closing parenthesis stays when it closes one inside ("Issue 46 (2006)").
      const bool closesInside = !t.empty() && t.back() == ')' && str().occurrences(t, "(") >= str().occurrences(t, ")");
      if (!t.empty() && !closesInside && marks.find(t.back()) != std::string_view::npos) t.pop_back(), changed = true;
      t = str().trimmed(t);
    }
  };
  strip("\"',;:()[]");
  // A quotation inside the span whose opening quote the reading left outside
  // it ("PostScript” Prints Anything") gets it back.
  const size_t closing = t.find("\xe2\x80\x9d");
  if (closing != std::string::npos && str().lastIndexOf(t, "\xe2\x80\x9c", closing) == std::string::npos) t.insert(0, "\xe2\x80\x9c");
  return t;
}

// The names labelled `label`, with the full stop right after them that closes
// an initial ("Kernis, M. H." where the reader left the last "." out).
std::string namesSpan(const quillreader::Reading& r, std::string_view entry, Label label) {
  std::string out;
  for (size_t i = 0; i < r.tokens.size(); ++i) {
    if (r.labels[i] != label) continue;
    size_t j = i;
    while (j + 1 < r.tokens.size() && r.labels[j + 1] == label) ++j;
    size_t end = r.tokens[j].end;
    if (end < entry.size() && entry[end] == '.') ++end;
    // Two stretches are two parts of the list, never one name across them.
    out += (out.empty() ? "" : ", ") + std::string(entry.substr(r.tokens[i].begin, end - r.tokens[i].begin));
    i = j;
  }
  return out;
}

std::string first(const quillreader::Reading& r, std::string_view entry, Label label) {
  const std::vector<std::string> spans = r.spans(entry, label);
  return spans.empty() ? std::string() : clean(spans.front());
}

// The bytes [begin, end) of the first span labelled `label`; {0, 0} for none.
std::pair<size_t, size_t> firstSpan(const quillreader::Reading& r, Label label) {
  for (size_t i = 0; i < r.tokens.size(); ++i) {
    if (r.labels[i] != label) continue;
    size_t j = i;
    while (j + 1 < r.tokens.size() && r.labels[j + 1] == label) ++j;
    return {r.tokens[i].begin, r.tokens[j].end};
  }
  return {0, 0};
}

// A title with the marks the reading left outside it, and its inner
// quotation's marks as APA writes them. An opening quote or parenthesis
// just before the span, or a closing parenthesis or double quote just after
// it, whose partner is inside, comes back ("‘Typesetting’ with…", "(absolute
// basics)", "The early printer as “Renaissance Man”"). A title typed inside
// double quotes sets a quotation in it in single quotes; once APA drops the
// outer quotes, the inner ones are double:
// "“A history of the ‘Humanist’ type”" is "A history of the “Humanist” type".
std::string titleWithItsMarks(std::string title, std::string_view entry, const quillreader::Reading& r) {
  constexpr std::string_view kOpen1 = "\xe2\x80\x98", kClose1 = "\xe2\x80\x99";
  constexpr std::string_view kOpen2 = "\xe2\x80\x9c", kClose2 = "\xe2\x80\x9d";
  const auto [begin, end] = firstSpan(r, Label::Title);
  if (begin == end) return title;
  std::string before = str().trimmed(entry.substr(0, begin));
  const std::string_view after = entry.substr(end);
  // A closing single quote is a quotation's only when no letter follows it ("Bodoni’s" is not).
  const auto closingQuotes = [&](std::string_view t) {
    size_t n = 0;
    for (size_t at = t.find(kClose1); at != std::string_view::npos; at = t.find(kClose1, at + kClose1.size())) {
      const size_t next = at + kClose1.size();
      if (next >= t.size() || !std::isalpha(static_cast<unsigned char>(t[next]))) ++n;
    }
    return n;
  };
  if (before.ends_with(kOpen1) && closingQuotes(title) > str().occurrences(title, kOpen1) && !title.starts_with(kOpen1)) {
    title.insert(0, kOpen1);
    before.erase(before.size() - kOpen1.size());
  }
  if (str().occurrences(title, "(") > str().occurrences(title, ")") && str().trimmed(after).starts_with(")")) title += ")";
  for (const auto& [open, close] : {std::pair{kOpen2, kClose2}, std::pair{std::string_view("\""), std::string_view("\"")}}) {
    const bool opened = open == close ? str().occurrences(title, open) % 2 == 1
                                      : str().occurrences(title, open) > str().occurrences(title, close);
    if (opened && after.starts_with(close)) title += close;
  }
  const bool doubleQuoted = str().trimmed(before).ends_with(kOpen2) || str().trimmed(before).ends_with("\"");
  if (doubleQuoted && str().occurrences(title, kOpen1) > 0 && str().occurrences(title, kOpen1) == closingQuotes(title)) {
    std::string out;
    size_t at = 0;
    while (at < title.size()) {
      if (std::string_view(title).substr(at).starts_with(kOpen1)) {
        out += kOpen2;
        at += kOpen1.size();
      } else if (std::string_view(title).substr(at).starts_with(kClose1) &&
                 (at + kClose1.size() >= title.size() ||
                  !std::isalpha(static_cast<unsigned char>(title[at + kClose1.size()])))) {
        out += kClose2;
        at += kClose1.size();
      } else {
        out += title[at++];
      }
    }
    title = out;
  }
  return title;
}

// "Jones, K." with the full stop that ends a title or a name list taken off,
// unless it closes an initial ("K.") or an abbreviation.
std::string withoutClosingStop(std::string text) {
  if (text.ends_with(".")) {
    const size_t space = text.rfind(' ');
    const std::string last = text.substr(space == std::string::npos ? 0 : space + 1);
    // "K." and "K.S." end in an initial's own full stop.
    if (last.size() > 2 && last.substr(0, last.size() - 1).find('.') == std::string::npos) text.pop_back();
  }
  return text;
}

// A given name written out ("Michael", "Chien-Ru"): the only words APA may
// shorten to initials. Initials run together ("K.S") are not.
bool writtenOut(std::string_view word) {
  if (word.size() < 2 || !std::isupper(static_cast<unsigned char>(word[0]))) return false;
  bool lower = false;
  for (size_t i = 1; i < word.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(word[i]);
    if (c == '.') return false;
    // A capital only after a hyphen or an apostrophe ("Chien-Ru", "O'Neil"), never "CSa".
    if (std::isupper(c) && word[i - 1] != '-' && word[i - 1] != '\'') return false;
    if (std::islower(c)) lower = true;
  }
  return lower;
}

// Vancouver's initials: "MH", "D", and "H-H" for a hyphenated given name.
bool isInitials(std::string_view word) {
  if (word.size() == 3 && word[1] == '-')
    return std::isupper(static_cast<unsigned char>(word[0])) && std::isupper(static_cast<unsigned char>(word[2]));
  return !word.empty() && word.size() <= 3 && std::all_of(word.begin(), word.end(), [](char c) {
    return std::isupper(static_cast<unsigned char>(c));
  });
}

// "MH" as "M. H.", "H-H" as "H.-H.".
std::string dotted(std::string_view initials) {
  std::string out;
  for (char c : initials) {
    if (c == '-') {
      out += "-";
      continue;
    }
    out += (out.empty() || out.back() == '-' ? "" : " ") + std::string(1, c) + ".";
  }
  return out;
}

// Whether a word of `text`, in any case and without the punctuation after
// it, is one of `words`.
template <size_t N>
bool hasWordAmong(std::string_view text, const char* const (&words)[N]) {
  for (std::string word : str().split(str().lower(text), " ", -1)) {
    while (!word.empty() && !std::isalpha(static_cast<unsigned char>(word.back()))) word.pop_back();
    if (std::any_of(std::begin(words), std::end(words), [&](const char* k) { return word == k; })) return true;
  }
  return false;
}

// "David P. Cornell", "T. Harlow", "Ludwig van Beethoven": given names, then
// the family name (the last word, with the particles in lower case before it);
// a group's name stays whole. A suffix ("Hugh Paterson III", "King, Jr.")
// follows the given names, as APA writes it: "Paterson, H., III".
std::vector<PersonName> givenFirstNames(const std::vector<std::string>& pieces) {
  std::vector<PersonName> out;
  for (const std::string& piece : pieces) {
    std::vector<std::string> w = str().split(str().trimmed(piece), " ", -1);
    std::erase(w, std::string());
    if (w.empty()) continue;
    if (w.size() == 1 && isSuffix(w[0]) && !out.empty() && !out.back().given.empty()) {
      out.back().given += ", " + w[0];
      continue;
    }
    std::string suffix;
    if (w.size() >= 3 && isSuffix(w.back())) {
      suffix = ", " + w.back();
      w.pop_back();
    }
    size_t familyAt = w.size() - 1;
    // A particle written with a capital is the family name's too: "J. De Leeuw", "C. F. Van Parreren".
    static const char* const kParticles[] = {"de", "van", "von", "der", "den", "di", "da", "du", "del", "della",
                                             "le", "la", "dos", "das", "ten", "ter"};
    while (familyAt > 1 && (std::islower(static_cast<unsigned char>(w[familyAt - 1][0])) ||
                            hasWordAmong(w[familyAt - 1], kParticles)))
      --familyAt;
    // A small word among the given names ("National Center for Education
    // Statistics"), or more of them than a person has: a group, named whole.
    const bool group = familyAt > 3 || std::any_of(w.begin(), w.begin() + static_cast<long>(familyAt), [](const std::string& x) {
                         return std::islower(static_cast<unsigned char>(x[0]));
                       });
    if (group) {
      out.push_back({str().join(w, " "), "", ""});
      continue;
    }
    out.push_back({str().join(std::vector<std::string>(w.begin() + static_cast<long>(familyAt), w.end()), " "),
                   str().join(std::vector<std::string>(w.begin(), w.begin() + static_cast<long>(familyAt)), " ") + suffix,
                   ""});
  }
  return out;
}

// A family name typed in capitals, as ABNT and other styles set it
// ("KERNIS", "HERBST-DAMM", "O'BRIEN", "JÖRESKOG"), in the case APA writes it:
// each part's first letter a capital, the rest small.
std::string familyNameCase(std::string_view caps) {
  namespace utf8 = QuillStrings::utf8;
  std::string out;
  bool start = true;
  for (size_t i = 0; i < caps.size();) {
    const char32_t c = utf8::next(caps, i);
    utf8::append(out, start ? utf8::toUpper(c) : utf8::toLower(c));
    start = c == ' ' || c == '-' || c == '\'' || c == U'\u2019';
  }
  return out;
}

// Persons' family names all typed in capitals ("KERNIS, M. H.; CORNELL,
// D. P."), written in APA's case; a group's name ("UNESCO") stays as typed.
void familyNamesInApaCase(NameList& list) {
  const auto capitals = [](const PersonName& n) {
    return !n.given.empty() && str().length(n.family) > 1 && str().upper(n.family) == n.family &&
           str().lower(n.family) != n.family;
  };
  if (list.names.empty() || !std::all_of(list.names.begin(), list.names.end(), capitals)) return;
  for (PersonName& n : list.names) n.family = familyNameCase(n.family);
}

// The author (or editor) list as typed, from the forms styles use:
// "Kernis MH, Cornell DP" (Vancouver), "M. H. Kernis and D. P. Cornell"
// (given names first), "Kernis, M. H., and D. P. Cornell" (the first name
// inverted), "Kernis, M. H., Cornell, D. P." (APA's own).
NameList namesAsTyped(std::string text, Rewrites& rewrites) {
  NameList list;
  text = str().trimmed(text);
  for (std::string_view etAl : {", et al.", " et al.", ", et al", " et al"})
    if (str().stripTrailing(text, etAl)) list.etAl = true;
  // The comma that led to "et al." is no part of the last name.
  while (!text.empty() && (text.back() == ',' || text.back() == ';')) text = str().trimmed(text.substr(0, text.size() - 1));
  text = withoutClosingStop(text);
  if (isGroupName(text)) {
    list.names.push_back({text, "", ""});
    return list;
  }
  // Names set apart by semicolons, each inverted (ACS, ABNT): "HOLM, Dagny; VERMEER, Karl".
  if (str().contains(text, "; ")) {
    std::string semis = text;
    for (std::string_view sep : {"; and ", "; & "})
      for (size_t at = semis.find(sep); at != std::string::npos; at = semis.find(sep)) semis.replace(at, sep.size(), "; ");
    const std::vector<std::string> pieces = str().split(semis, "; ", -1);
    const bool inverted = std::all_of(pieces.begin(), pieces.end(), [](const std::string& p) {
      return str().occurrences(p, ",") == 1 && !str().trimmed(str().split(p, ",", 2)[1]).empty();
    });
    if (inverted) {
      for (const std::string& p : pieces) {
        const std::vector<std::string> fg = str().split(p, ",", 2);
        list.names.push_back({str().trimmed(fg[0]), str().trimmed(fg[1]), ""});
      }
      return list;
    }
  }
  std::string joined = text;
  for (std::string_view sep : {"; ", ", and ", " and ", ", & ", " & "})
    for (size_t at = joined.find(sep); at != std::string::npos; at = joined.find(sep)) joined.replace(at, sep.size(), ", ");
  const std::vector<std::string> pieces = str().split(joined, ", ", -1);

  // Vancouver: every piece a family name and its initials run together, a
  // particle of the family name perhaps after them ("Mateosian E der").
  const auto particleAfter = [](const std::vector<std::string>& w) {
    return w.size() >= 3 && w.back().size() <= 3 && std::islower(static_cast<unsigned char>(w.back()[0])) &&
           isInitials(w[w.size() - 2]);
  };
  const auto wordsOfPiece = [&](const std::string& p) {
    std::string t = str().trimmed(p);
    if (t.ends_with(".")) t.pop_back();  // the list's closing full stop
    std::vector<std::string> w = str().split(t, " ", -1);
    if (particleAfter(w)) std::rotate(w.begin(), w.end() - 1, w.end());
    return w;
  };
  const bool vancouver = std::all_of(pieces.begin(), pieces.end(), [&](const std::string& p) {
    const std::vector<std::string> w = wordsOfPiece(p);
    return w.size() >= 2 && isInitials(w.back());
  });
  if (vancouver) {
    for (const std::string& p : pieces) {
      std::vector<std::string> w = wordsOfPiece(p);
      const std::string initials = w.back();
      w.pop_back();
      list.names.push_back({str().join(w, " "), dotted(initials), ""});
      rewrites.mayLose.push_back(initials);
      rewrites.mayAdd.push_back(dotted(initials));
    }
    return list;
  }
  // The first name inverted, the others given names first (Chicago, MLA):
  // "Kernis, Michael H., David P. Cornell, and T. Harlow".
  const auto twoWordsOrMore = [](const std::string& p) { return str().split(str().trimmed(p), " ", -1).size() >= 2; };
  // (Only when a comma, not "and", stands between the first two: "Mackenzie
  // and Harris" are two names.)
  if (pieces.size() >= 2 && str().beginsWith(text, str().trimmed(pieces[0]) + ", ") &&
      std::all_of(pieces.begin() + 2, pieces.end(), twoWordsOrMore) &&
      !twoWordsOrMore(pieces[0]) && std::isupper(static_cast<unsigned char>(str().trimmed(pieces[1])[0]))) {
    list.names.push_back({str().trimmed(pieces[0]), str().trimmed(pieces[1]), ""});
    for (PersonName& n : givenFirstNames(std::vector<std::string>(pieces.begin() + 2, pieces.end())))
      list.names.push_back(n);
  } else if (std::any_of(pieces.begin() + (pieces.empty() ? 0 : 1), pieces.end(), [](const std::string& p) {
               const std::vector<std::string> w = str().split(str().trimmed(p), " ", -1);
               if (isSuffix(p)) return false;
               // "M. H.", or initials without their stops ("Holm, D & Vermeer, P").
               return std::all_of(w.begin(), w.end(), [](const std::string& x) {
                 return (x.size() <= 4 && x.ends_with(".")) || (x.size() <= 3 && isInitials(x));
               });
             })) {
    // A piece of initials alone means "Family, I." pairs, perhaps with the
    // names after the first written given names first (as MLA writes them).
    NameList read = readNames(joined);
    for (PersonName& n : read.names) {
      // Initials without their stops ("Holm, D") as APA writes them.
      if (isInitials(n.given)) {
        rewrites.mayLose.push_back(n.given);
        n.given = dotted(n.given);
        rewrites.mayAdd.push_back(n.given);
      }
      if (!n.given.empty() || str().split(n.family, " ", -1).size() < 2) {
        list.names.push_back(n);
        continue;
      }
      for (PersonName& g : givenFirstNames({n.family})) list.names.push_back(g);
    }
  } else {
    list.names = givenFirstNames(pieces);
  }
  return list;
}

// The list as APA writes it: given names as initials, family names typed in capitals in APA's case.
NameList namesOf(const std::string& text, Rewrites& rewrites) {
  NameList list = namesAsTyped(text, rewrites);
  for (const PersonName& n : list.names)
    for (const std::string& w : str().split(n.given, " ", -1))
      if (writtenOut(w)) {
        rewrites.mayLose.push_back(w);
        rewrites.mayAdd.push_back(initialsOf(w));
      }
  familyNamesInApaCase(list);
  return list;
}

// Given names first, as APA writes editors after "In": "M. Eid & R. J. Larsen".
std::string givenFirst(const NameList& list) {
  std::vector<std::string> names;
  for (const PersonName& n : list.names)
    names.push_back(n.given.empty() ? n.family : initialsOf(n.given) + " " + n.family);
  if (names.size() <= 1) return names.empty() ? "" : names.front();
  if (names.size() == 2) return names[0] + " & " + names[1];
  return str().join(std::vector<std::string>(names.begin(), names.end() - 1), ", ") + ", & " + names.back();
}

// A place as APA writes it: without the postcode other styles give after a
// state ("Upper Saddle River, NJ 07458, USA" gives "Upper Saddle River, NJ,
// USA"), its state after a comma, not in parentheses ("Boston (MA)").
std::string placeAsApaWritesIt(std::string place, Rewrites& rewrites) {
  if (const size_t open = place.find(" ("); open != std::string::npos && place.ends_with(")") &&
      placeKind(place.substr(open + 2, place.size() - open - 3)) == PlaceKind::Region)
    place = place.substr(0, open) + ", " + place.substr(open + 2, place.size() - open - 3);
  std::vector<std::string> pieces = str().split(place, ",", -1);
  for (std::string& piece : pieces) {
    const size_t space = piece.find_last_of(' ');
    if (space == std::string::npos || str().trimmed(piece.substr(0, space)).empty()) continue;
    const std::string code = piece.substr(space + 1);
    // (After a state only: "Suite 300" keeps its number.)
    if (std::any_of(code.begin(), code.end(), [](char c) { return c >= '0' && c <= '9'; }) &&
        code.find_first_not_of("0123456789-") == std::string::npos &&
        placeKind(piece.substr(0, space)) == PlaceKind::Region) {
      rewrites.mayLose.push_back(code);
      piece.erase(space);
    }
  }
  return str().join(pieces, ",");
}

// "1190–204" as "1190–1204": APA writes both pages in full, with an en dash.
std::string fullPages(std::string pages, Rewrites& rewrites) {
  for (std::string_view dash : {"--", "-", "\xe2\x80\x94"})
    for (size_t at = pages.find(dash); at != std::string::npos; at = pages.find(dash))
      pages.replace(at, dash.size(), "\xe2\x80\x93");
  const size_t dash = pages.find("\xe2\x80\x93");
  if (dash == std::string::npos) return pages;
  const std::string from = str().trimmed(pages.substr(0, dash)), to = str().trimmed(pages.substr(dash + 3));
  const bool digits = allDigits(from) && allDigits(to);
  if (digits && to.size() < from.size()) {
    const std::string whole = from.substr(0, from.size() - to.size()) + to;
    rewrites.mayLose.push_back(to);
    rewrites.mayAdd.push_back(whole);
    return from + "\xe2\x80\x93" + whole;
  }
  return from + "\xe2\x80\x93" + to;
}

// "2nd ed.", as APA writes an edition typed "2nd edn", "2nd edition", "2",
// "2. ed.", "second edition".
std::string editionOf(const std::string& typed, Rewrites& rewrites) {
  for (const char* w : {"edn", "edition"}) rewrites.mayLose.push_back(w);
  std::string number = typed.substr(0, typed.find(' '));
  if (number.size() > 1 && number.back() == '.' && std::isdigit(static_cast<unsigned char>(number[0])))
    number.pop_back();  // ABNT's "2. ed."
  const std::string word = str().lower(number);
  if (const std::string numbered = ordinalOf(word); numbered != word) {
    rewrites.mayLose.push_back(number);
    rewrites.mayAdd.push_back(numbered);
    return numbered + " ed.";
  }
  size_t digits = 0;
  while (digits < number.size() && std::isdigit(static_cast<unsigned char>(number[digits]))) ++digits;
  if (digits == 0) return typed + (str().contains(str().lower(typed), "ed") ? "" : " ed.");
  if (digits == number.size()) {
    const int n = std::stoi(number.substr(0, std::min<size_t>(digits, 6)));
    const char* suffix = n % 100 >= 11 && n % 100 <= 13 ? "th" : n % 10 == 1 ? "st" : n % 10 == 2 ? "nd" : n % 10 == 3 ? "rd" : "th";
    rewrites.mayLose.push_back(number);
    number += suffix;
    rewrites.mayAdd.push_back(number);
  }
  return number + " ed.";
}

// The labels other styles write that APA leaves out or writes its own way.
// "In" only before a book APA writes after its own "In"; a part's label only with the part ("p. 5" read as no pages has lost them);
// not the editors' ("Ed.", "edited by"), which editorsLabels declares once
// the editors are written.
// Access statements ("Available at:", "Retrieved May 5, 2010, from",
// "[cited 2010 May 5]. Available from:") stand just before an address or in
// brackets: their words are the statement's only there ("(2000)from." keeps
// its "from").
std::vector<std::string> accessStatementWords(std::string_view entry) {
  static const char* const kWords[] = {"available", "at", "from", "online", "internet", "accessed",
                                       "cited", "retrieved", "viewed", "via"};
  const auto isAccessWord = [](const std::string& w) {
    return std::any_of(std::begin(kWords), std::end(kWords), [&](const char* k) { return w == k; });
  };
  std::vector<std::string> words;
  const std::vector<std::string> all = str().split(str().lower(entry), " ", -1);
  const auto bare = [](std::string w) {
    while (!w.empty() && !std::isalnum(static_cast<unsigned char>(w.back()))) w.pop_back();
    while (!w.empty() && !std::isalnum(static_cast<unsigned char>(w.front()))) w.erase(0, 1);
    return w;
  };
  bool bracket = false;
  for (size_t k = 0; k < all.size(); ++k) {
    const std::string& raw = all[k];
    if (raw.starts_with("[")) bracket = true;
    const std::string w = bare(raw);
    bool access = bracket;
    for (size_t j = k + 1; j < all.size() && j <= k + 6 && !access; ++j)
      access = all[j].starts_with("http") || all[j].starts_with("www.") || all[j].starts_with("doi") ||
               all[j].starts_with("10.") || all[j].starts_with("<http");
    if (access && isAccessWord(w)) words.push_back(w);
    if (raw.ends_with("]") || raw.ends_with("].")) bracket = false;
  }
  return words;
}

void otherStylesLabels(Rewrites& rewrites, std::string_view entry, bool chapter, bool volume, bool issue,
                       bool pages) {
  if (chapter) rewrites.mayLose.push_back("in");  // APA writes its own "In"
  for (const char* w : {"doi", "url"}) rewrites.mayLose.push_back(w);
  for (std::string& w : accessStatementWords(entry)) rewrites.mayLose.push_back(std::move(w));
  // ABNT's "v. 65, n. 6" ("v.65"): a single letter is a label only before a number.
  const auto labelsANumber = [&](std::string_view letter) {
    const std::string label = std::string(letter) + ".";
    for (size_t at = entry.find(label); at != std::string_view::npos; at = entry.find(label, at + 1)) {
      size_t next = at + label.size();
      if (next < entry.size() && entry[next] == ' ') ++next;
      if ((at == 0 || entry[at - 1] == ' ') && next < entry.size() && std::isdigit(static_cast<unsigned char>(entry[next])))
        return true;
    }
    return false;
  };
  // MLA's medium after the date ("… 2001. Print.", "… 2001. Web. 5 May 2010."), which APA does not write.
  const std::string trimmed = str().trimmed(entry);
  if (trimmed.ends_with(". Print.") || trimmed.ends_with(". Print")) rewrites.mayLose.push_back("print");
  if (str().contains(entry, ". Web. ") || trimmed.ends_with(". Web.")) rewrites.mayLose.push_back("web");
  if (volume)
    for (const char* w : {"vol", "volume"}) rewrites.mayLose.push_back(w);
  if (volume && labelsANumber("v")) rewrites.mayLose.push_back("v");
  if (issue)
    for (const char* w : {"no", "nr", "issue"}) rewrites.mayLose.push_back(w);
  if (issue && labelsANumber("n")) rewrites.mayLose.push_back("n");
  if (pages)
    for (const char* w : {"pp", "p", "page", "pages"}) rewrites.mayLose.push_back(w);
}

std::string sentence(std::string text) {
  text = str().trimmed(text);
  if (!text.empty() && std::string_view(".?!").find(text.back()) == std::string_view::npos) text += ".";
  return text;
}

// Whether "In" opens the container or its editors ("In: King PR, editor. Doceng '05").
bool afterIn(const quillreader::Reading& r, std::string_view entry) {
  for (size_t i = 0; i < r.tokens.size(); ++i) {
    if (r.labels[i] != Label::Container && r.labels[i] != Label::Editor) continue;
    for (size_t j = i; j-- > 0;) {
      const std::string_view w = entry.substr(r.tokens[j].begin, r.tokens[j].end - r.tokens[j].begin);
      if (w == ":" || w == ",") continue;
      return str().lower(w) == "in";
    }
    return false;
  }
  return false;
}

// The editors' labels, which APA writes as "(Ed.)" or "(Eds.)" once it names them.
void editorsLabels(Rewrites& rewrites) {
  for (const char* w : {"ed", "eds", "edited", "editor", "editors", "by", "and", "translated", "trans", "translator",
                        "translators"})
    rewrites.mayLose.push_back(w);
}

// What the entry says of the work beyond APA's fields, as typed and in its
// order, one note a stretch: what the work is ("Technical Report PCS-TR86-134", "DX Reader
// version") and what is said of it (a series, a translator, the original
// date, the event), with the brackets typed around them ("(German)").
std::vector<std::string> notesOf(const quillreader::Reading& r, std::string_view entry) {
  const auto isNote = [&](size_t i) { return r.labels[i] == Label::Genre || r.labels[i] == Label::Note; };
  std::vector<std::string> notes;
  for (size_t i = 0; i < r.tokens.size(); ++i) {
    if (!isNote(i)) continue;
    size_t j = i;
    while (j + 1 < r.tokens.size() && isNote(j + 1)) ++j;
    size_t begin = r.tokens[i].begin, end = r.tokens[j].end;
    for (std::string_view pair : {"()", "[]"}) {
      if (begin > 0 && end < entry.size() && entry[begin - 1] == pair[0] && entry[end] == pair[1]) --begin, ++end;
      // The closing brackets of those opened inside it: "Thesis (M.S. in Computer Science)".
      const auto open = [&] {
        const std::string_view n = entry.substr(begin, end - begin);
        return std::count(n.begin(), n.end(), pair[0]) - std::count(n.begin(), n.end(), pair[1]);
      };
      while (open() > 0 && end < entry.size() && entry[end] == pair[1]) ++end;
    }
    std::string note = str().trimmed(entry.substr(begin, end - begin));
    while (!note.empty() && std::string_view(",;:.").find(note.back()) != std::string_view::npos) note.pop_back();
    while (!note.empty() && std::string_view(",;:.").find(note.front()) != std::string_view::npos) note.erase(0, 1);
    if (!note.empty()) notes.push_back(str().trimmed(note));
    i = j;
  }
  return notes;
}

// A thesis as APA names it, for the names other styles give it ("PhD
// thesis", "Ph.D. dissertation", "PhD diss.", "MSc thesis",
// "[dissertation]"); empty for any other note.
std::string thesisOf(std::string_view note) {
  static const std::regex kDoctoral(R"(^((ph\.? ?d\.?|doctoral) (thesis|dissertation|diss\.?)|dissertation)$)",
                                    std::regex::icase);
  static const std::regex kMasters(R"(^(master'?s|m\.? ?sc?\.?|m\.? ?a\.?) (thesis|dissertation)$)", std::regex::icase);
  std::string text = str().trimmed(note);
  // Vancouver's "[dissertation]", "[master's thesis]".
  if (text.size() > 2 && text.front() == '[' && text.back() == ']') text = text.substr(1, text.size() - 2);
  if (std::regex_match(text, kDoctoral)) return "Doctoral dissertation";
  if (std::regex_match(text, kMasters)) return "Master's thesis";
  return {};
}

// A report's name and number ("Technical Report TR-2645", "Report No.
// 83-1"), which APA writes after the title.
bool namesAReport(std::string_view note) {
  if (!str().contains(str().lower(note), "report") || note.find_first_of("()[]") != std::string_view::npos)
    return false;
  const std::vector<std::string> words = str().split(note, " ", -1);
  return words.size() <= 5 && std::any_of(words.begin(), words.end(), [](const std::string& w) {
           return std::any_of(w.begin(), w.end(), [](char c) { return std::isdigit(static_cast<unsigned char>(c)); });
         });
}

// A month's name as APA writes it, for the name or its abbreviation in any
// case ("oct", "October"); empty for any other word.
std::string_view monthName(std::string_view word) {
  static constexpr std::pair<std::string_view, std::string_view> kMonths[] = {
      {"jan", "January"}, {"feb", "February"}, {"mar", "March"},     {"apr", "April"},      {"may", "May"},
      {"jun", "June"},    {"jul", "July"},     {"aug", "August"},    {"sep", "September"},  {"sept", "September"},
      {"oct", "October"}, {"nov", "November"}, {"dec", "December"}};
  const std::string w = str().lower(word);
  for (const auto& [abbreviation, name] : kMonths)
    if (w == abbreviation || w == str().lower(name)) return name;
  return {};
}

// "(1993)", "(1990, April 9)": the year first, then what else the date says.
// "[1782] 1992": the year in brackets before the work's is the year it was
// first published (Chicago's and ASA's form); empty for none.
std::string originalYear(const quillreader::Reading& r, std::string_view entry) {
  for (size_t i = 1; i + 2 < r.tokens.size(); ++i)
    if (tokenText(r, entry, i - 1) == "[" && isYear(tokenText(r, entry, i)) && tokenText(r, entry, i + 1) == "]" &&
        r.labels[i + 2] == Label::Date && isYear(tokenText(r, entry, i + 2)))
      return std::string(tokenText(r, entry, i));
  return {};
}

std::string dateOf(const quillreader::Reading& r, std::string_view entry, Rewrites& rewrites) {
  std::string year, month, day;
  bool yearEndsTitle = false;
  const std::string original = originalYear(r, entry);
  for (size_t i = 0; i < r.tokens.size(); ++i) {
    if (r.labels[i] != Label::Date) continue;
    if (!original.empty() && tokenText(r, entry, i) == original && i > 0 && tokenText(r, entry, i - 1) == "[") continue;
    const std::string w(entry.substr(r.tokens[i].begin, r.tokens[i].end - r.tokens[i].begin));
    if (w.size() == 4 && allDigits(w)) {
      // A year right after the title's words ("… Survey, 2012") may be the
      // title's own: a year elsewhere is the work's.
      const bool endsTitle = (i > 0 && r.labels[i - 1] == Label::Title) ||
                             (i > 1 && r.labels[i - 2] == Label::Title && r.tokens[i - 1].end - r.tokens[i - 1].begin == 1);
      if (year.empty() || (yearEndsTitle && !endsTitle)) year = w, yearEndsTitle = endsTitle;
    } else if (allDigits(w)) {
      day = w;
    } else if (!w.empty() && std::isalpha(static_cast<unsigned char>(w[0]))) {
      month = w;
      // An abbreviation is written out ("Oct" as "October").
      if (const std::string_view name = monthName(w); !name.empty() && str().lower(w) != str().lower(name)) {
        rewrites.mayLose.push_back(w);
        rewrites.mayAdd.push_back(std::string(name));
        month = name;
      }
    }
  }
  if (year.empty()) return {};
  std::string date = year;
  if (!month.empty()) date += ", " + month + (day.empty() ? "" : " " + day);
  return "(" + date + ")";
}

std::vector<std::string> wordTokens(std::string_view text) {
  std::vector<std::string> out;
  for (const quillreader::Token& t : quillreader::tokenize(text)) {
    const std::string w = str().lower(text.substr(t.begin, t.end - t.begin));
    // Punctuation beyond ASCII (quotes, dashes: U+2000 to U+206F) is no word.
    const bool punctuation = w.size() == 3 && static_cast<unsigned char>(w[0]) == 0xE2 &&
                             (static_cast<unsigned char>(w[1]) == 0x80 || static_cast<unsigned char>(w[1]) == 0x81);
    if (w == "&")
      out.push_back("and");
    else if (!w.empty() && !punctuation &&
             (std::isalnum(static_cast<unsigned char>(w[0])) || static_cast<unsigned char>(w[0]) >= 0x80))
      out.push_back(w);
  }
  return out;
}

// A full stop, comma or semicolon followed by a space or the entry's end: it
// ends a part, unlike the one inside "1.40" or "ver.2.3".
bool endsAPart(const quillreader::Reading& r, std::string_view entry, size_t k) {
  const std::string_view t = tokenText(r, entry, k);
  if (t != "." && t != "," && t != ";") return false;
  return r.tokens[k].end >= entry.size() || entry[r.tokens[k].end] == ' ';
}

// A name does not begin with "and" or "of": a part the reading began there
// ("U.S. Department of Health |and Human Services|") is the end of the one
// before it, when nothing but a space stands between them.
void partsDoNotStartWithAnd(quillreader::Reading& r, std::string_view entry) {
  const auto named = [](Label l) {
    return l == Label::Title || l == Label::Container || l == Label::Publisher || l == Label::Place;
  };
  for (size_t k = 1; k < r.labels.size(); ++k) {
    const std::string_view t = tokenText(r, entry, k);
    if (r.labels[k] == r.labels[k - 1] || !named(r.labels[k]) || !named(r.labels[k - 1]) ||
        (t != "and" && t != "of" && t != "&" && t != "for"))
      continue;
    const Label from = r.labels[k];
    for (size_t j = k; j < r.labels.size() && r.labels[j] == from; ++j) r.labels[j] = r.labels[k - 1];
  }
}

// The tokens [first, last) of the first run labelled `label`; {n, n} for none.
std::pair<size_t, size_t> firstRun(const quillreader::Reading& r, Label label) {
  const size_t n = r.labels.size();
  size_t begin = 0;
  while (begin < n && r.labels[begin] != label) ++begin;
  size_t end = begin;
  while (end < n && r.labels[end] == label) ++end;
  return {begin, end};
}

// A word the reader left out of the part on both its sides ("and N. E.
// Wiseman" with "N" alone unlabelled) belongs to that part, and so do the
// colon or dash between two stretches of one title ("Hypertext 2000 |:|
// Databases or documents") and an initial's full stop between two stretches
// of names.
void fillGaps(quillreader::Reading& r, std::string_view entry) {
  for (size_t i = 1; i + 1 < r.labels.size(); ++i) {
    if (r.labels[i] != Label::Other || r.labels[i - 1] == Label::Other || r.labels[i - 1] != r.labels[i + 1]) continue;
    const std::string_view t = tokenText(r, entry, i);
    const unsigned char c = static_cast<unsigned char>(t[0]);
    const bool joins = t == ":" || t == "-" || t == "\xe2\x80\x93" || t == "\xe2\x80\x94";
    // The full stop of an initial inside a list of names ("A. B|.|, E. Park").
    const bool initialStop = t == "." && (r.labels[i - 1] == Label::Author || r.labels[i - 1] == Label::Editor);
    if (std::isalpha(c) || (c >= 0x80 && !joins) || (joins && r.labels[i - 1] == Label::Title) || initialStop)
      r.labels[i] = r.labels[i - 1];
  }
}

// Names the reading frayed at a particle or at "et al.": "E. der Mateosian"
// with ". der" left out, "Anil Vullikanti, et al." with the family name left
// out, belong to the list.
void mendNameLists(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  const auto names = [](Label l) { return l == Label::Author || l == Label::Editor; };
  const auto word = [&](size_t k) { return std::isalpha(static_cast<unsigned char>(tokenText(r, entry, k)[0])) != 0; };
  const auto particle = [&](size_t k) {
    const std::string_view t = tokenText(r, entry, k);
    return t == "." || (word(k) && std::islower(static_cast<unsigned char>(t[0])) && t.size() <= 4);
  };
  for (size_t i = 1; i + 2 < n; ++i)
    if (names(r.labels[i - 1]) && r.labels[i] == Label::Other && r.labels[i + 1] == Label::Other &&
        r.labels[i + 2] == r.labels[i - 1] && particle(i) && particle(i + 1) && word(i + 2))
      r.labels[i] = r.labels[i + 1] = r.labels[i - 1];
  for (size_t i = 1; i + 2 < n; ++i) {
    const std::string_view t = tokenText(r, entry, i);
    if (names(r.labels[i - 1]) && r.labels[i] == Label::Other && word(i - 1) && word(i) &&
        std::isupper(static_cast<unsigned char>(t[0])) && tokenText(r, entry, i + 1) == "," &&
        str().lower(tokenText(r, entry, i + 2)) == "et")
      r.labels[i] = r.labels[i - 1];
  }
}

// A DOI or an address is one token with a slash or a dot in it
// ("10.1037/a0012", "www.apa.org"): a word read as one ("…of the Decline of |Academia|") is the
// part's before it.
void addressesHaveSlashes(quillreader::Reading& r, std::string_view entry) {
  for (size_t k = 1; k < r.labels.size(); ++k)
    if ((r.labels[k] == Label::Doi || r.labels[k] == Label::Url) &&
        tokenText(r, entry, k).find_first_of("/.") == std::string_view::npos &&
        std::isalpha(static_cast<unsigned char>(tokenText(r, entry, k)[0])) && r.labels[k - 1] != Label::Doi &&
        r.labels[k - 1] != Label::Url)
      r.labels[k] = r.labels[k - 1];
}

// A group's name the reading cut short ("U.S. General Accounting |Office|
// (1997)"): the capitalised words left out after it, up to the punctuation
// that ends it, are the name's when they make it a group's.
void groupNameWhole(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  const auto [begin, end] = firstRun(r, Label::Author);
  if (begin == n) return;
  size_t stop = end;
  while (stop < n && r.labels[stop] == Label::Other && std::isupper(static_cast<unsigned char>(tokenText(r, entry, stop)[0])))
    ++stop;
  if (stop == end || stop == n) return;
  const std::string_view after = tokenText(r, entry, stop);
  if (after != "(" && after != "." && after != ",") return;
  const std::string_view name = entry.substr(r.tokens[begin].begin, r.tokens[stop - 1].end - r.tokens[begin].begin);
  if (!isGroupName(name) || isGroupName(entry.substr(r.tokens[begin].begin, r.tokens[end - 1].end - r.tokens[begin].begin)))
    return;
  std::fill(r.labels.begin() + static_cast<long>(end), r.labels.begin() + static_cast<long>(stop), Label::Author);
}

// One list of names is of one role: "Stephen G. | Nash, editor", with the
// given names read as an author's and the family name as an editor's, or a
// long list read partly as authors, partly as editors, is the editors' when
// their role follows the list ("…, editors", "(eds.)"), the authors' otherwise.
// Initials the reading left out before the list ("P|. Koch, editor") or
// after an inverted name ("Vermeer, |P.|, editor") are its.
void oneRoleAList(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  const auto names = [&](size_t k) { return r.labels[k] == Label::Author || r.labels[k] == Label::Editor; };
  // What may stand between two names of a list unlabelled: punctuation, "and".
  const auto joins = [&](size_t k) {
    const std::string_view t = tokenText(r, entry, k);
    return r.labels[k] == Label::Other && (t == "." || t == "," || t == ";" || t == "&" || t == "and");
  };
  // Vancouver initials left out after their family name ("Vermeer |P|, editors").
  const auto leftOutInitials = [&](size_t k) {
    return r.labels[k] == Label::Other && k > 0 && names(k - 1) && isInitials(tokenText(r, entry, k));
  };
  const auto initial = [&](size_t k) {
    const std::string_view t = tokenText(r, entry, k);
    return t.size() == 1 && std::isupper(static_cast<unsigned char>(t[0]));
  };
  for (size_t begin = 0; begin < n; ++begin) {
    if (!names(begin)) continue;
    while (begin >= 1 && r.labels[begin - 1] == Label::Other &&
           ((tokenText(r, entry, begin) == "." && initial(begin - 1)) ||
            (begin >= 2 && tokenText(r, entry, begin - 1) == "." && initial(begin - 2) &&
             r.labels[begin - 2] == Label::Other))) {
      const size_t from = tokenText(r, entry, begin) == "." ? begin - 1 : begin - 2;
      for (size_t k = from; k < begin; ++k) r.labels[k] = r.labels[begin];
      begin = from;
    }
    size_t end = begin + 1;  // one past the list's last name
    bool authors = r.labels[begin] == Label::Author, editors = !authors;
    for (size_t k = end; k < n; ++k) {
      if (names(k)) {
        authors = authors || r.labels[k] == Label::Author;
        editors = editors || r.labels[k] == Label::Editor;
        end = k + 1;
      } else if (!joins(k) && !leftOutInitials(k)) {
        break;
      }
    }
    // And so are those left out after an inverted name ("Vermeer, |P.|, editor").
    if (end + 1 < n && tokenText(r, entry, end - 1) == "," && r.labels[end] == Label::Other && initial(end) &&
        tokenText(r, entry, end + 1) == ".") {
      r.labels[end] = r.labels[end + 1] = r.labels[end - 1];
      end += 2;
    }
    if (authors && editors) {
      std::string after;
      for (size_t k = end; k < n && k < end + 3; ++k) after += str().lower(tokenText(r, entry, k));
      while (!after.empty() && (after[0] == ',' || after[0] == '(' || after[0] == '.')) after.erase(0, 1);
      const Label role = after.starts_with("ed") ? Label::Editor : Label::Author;
      for (size_t k = begin; k < end; ++k)
        if (names(k) || leftOutInitials(k) || (k > begin && tokenText(r, entry, k) == "." && names(k - 1) && k + 1 < end))
          r.labels[k] = role;
    }
    begin = end - 1;
  }
}

// Names do not run into a colon: words after the last initial of the names
// and before a colon that leads into the title are the title's first words
// ("Schwartz, C. |House Industries|: There goes the neighborhood").
void titleBeforeItsColon(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  size_t end = 0;
  while (end < n && r.labels[end] != Label::Author) ++end;
  while (end < n && r.labels[end] == Label::Author) ++end;
  if (end + 1 >= n || tokenText(r, entry, end) != ":" || r.labels[end + 1] != Label::Title) return;
  size_t stop = end;
  while (stop > 0 && r.labels[stop - 1] == Label::Author && tokenText(r, entry, stop - 1) != ".") --stop;
  const auto initial = [&](size_t k) {
    const std::string_view t = tokenText(r, entry, k);
    return t.size() == 1 && std::isupper(static_cast<unsigned char>(t[0]));
  };
  if (stop < 2 || stop == end || r.labels[stop - 1] != Label::Author || !initial(stop - 2)) return;
  for (size_t k = stop; k < end; ++k)
    if (!std::isalpha(static_cast<unsigned char>(tokenText(r, entry, k)[0]))) return;
  for (size_t k = stop; k <= end; ++k) r.labels[k] = Label::Title;
}

// Vancouver's names ("Stotts PD, Furuta RK.") where the reading frayed them:
// initials left out after their family name join it, and words read as
// names after the full stop that ends such a list are the title's.
void mendVancouverNames(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  const auto family = [&](size_t k) {
    const std::string_view t = tokenText(r, entry, k);
    return t.size() > 1 && std::isupper(static_cast<unsigned char>(t[0])) && !isInitials(t);
  };
  for (size_t i = 1; i < n; ++i)
    if (r.labels[i] == Label::Other && r.labels[i - 1] == Label::Author && family(i - 1) &&
        isInitials(tokenText(r, entry, i)))
      r.labels[i] = Label::Author;
  // The first stretch of names: "Family INITIALS" pieces and their commas, up to a full stop.
  size_t i = 0;
  while (i < n && r.labels[i] != Label::Author) ++i;
  while (i + 1 < n && r.labels[i] == Label::Author && family(i) && r.labels[i + 1] == Label::Author &&
         isInitials(tokenText(r, entry, i + 1))) {
    i += 2;
    if (i < n && r.labels[i] == Label::Author && tokenText(r, entry, i) == ",") {
      ++i;
      continue;
    }
    if (i >= n || r.labels[i] != Label::Author || tokenText(r, entry, i) != ".") break;
    // Initials with full stops of their own: "Chamberlin J., Novotney A." and
    // "Holm D. and Vermeer P." go on.
    if (i + 1 < n && (tokenText(r, entry, i + 1) == "," || tokenText(r, entry, i + 1) == "and" ||
                      tokenText(r, entry, i + 1) == "&")) {
      i += 2;
      continue;
    }
    // "Joseph T. Sinclair": a given name and an initial, then the family name,
    // is no Vancouver list ("Karasik P. Cartoon." is); nor is "Cécile B.
    // Roisin and …" or "Cécile B. Roisin, editor", where another name or the
    // role follows the family name, nor "Nelson H. F. Beebe", with more
    // initials before it.
    if (tokenText(r, entry, i - 1).size() == 1) {
      size_t after = i + 1, initials = 1;
      for (; after + 1 < n && r.labels[after] == Label::Author && tokenText(r, entry, after).size() == 1 &&
             std::isupper(static_cast<unsigned char>(tokenText(r, entry, after)[0])) &&
             tokenText(r, entry, after + 1) == ".";
           after += 2)
        ++initials;
      if (after < n && r.labels[after] == Label::Author && family(after)) {
        const size_t next = after + 1;
        const bool anotherName = next < n && (tokenText(r, entry, next) == "," || tokenText(r, entry, next) == "and" ||
                                              tokenText(r, entry, next) == "&");
        if (anotherName || initials > 1 || quillreader::isGivenName(tokenText(r, entry, i - 2))) break;
      }
    }
    for (size_t k = i + 1; k < n && r.labels[k] == Label::Author; ++k) r.labels[k] = Label::Title;
    break;
  }
}

// A title that ends in a year or a range of them ("… printing in 1994",
// "Origins and development, 1776–1993"), which the reader took for the
// work's date although the entry has another: the numbers are the title's.
void extendTitleThroughItsYears(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  size_t end = 0;  // one past the title's first stretch
  while (end < n && r.labels[end] != Label::Title) ++end;
  if (end == n) return;
  while (end < n && r.labels[end] == Label::Title) ++end;
  const auto text = [&](size_t k) { return tokenText(r, entry, k); };
  size_t stop = end;
  bool year = false;
  while (stop < n && (r.labels[stop] == Label::Date || r.labels[stop] == Label::Other)) {
    const std::string_view t = text(stop);
    if (t == "." || t == "(" || t == ")" || t == "[" || t == "]" || t == ";" || t == ":") break;
    year = year || (r.labels[stop] == Label::Date && std::isdigit(static_cast<unsigned char>(t[0])));
    ++stop;
  }
  while (stop > end && text(stop - 1) == ",") --stop;
  // A year in parentheses right after the title ("issue 46–47 (2006)").
  if (stop == end && end + 2 < n && text(end) == "(" && r.labels[end + 1] == Label::Date && isYear(text(end + 1)) &&
      text(end + 2) == ")") {
    stop = end + 3;
    year = true;
  }
  if (!year || stop == end) return;
  // The work's date is elsewhere: a date token outside the stretch, or else
  // the last year after it that the reading left unlabelled ("…, 2:25–27,
  // 1995.").
  bool another = false;
  for (size_t k = 0; k < n; ++k)
    another = another || (r.labels[k] == Label::Date && (k < end || k >= stop) &&
                          std::isdigit(static_cast<unsigned char>(text(k)[0])));
  if (!another) {
    size_t last = n;
    for (size_t k = stop; k < n; ++k)
      if (isYear(text(k))) last = k;
    if (last == n || r.labels[last] != Label::Other) return;
    r.labels[last] = Label::Date;
  }
  for (size_t k = end; k < stop; ++k) r.labels[k] = Label::Title;
}

// Words the reading left between the names and a colon that leads into the
// title are the title's first words ("Tom Park. |napTeX 1.40|: What’s new",
// "Anna Lee. |Sleep 2000|: Naps or nights", with "2000" read as the date).
void titleFromBeforeItsColon(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  const size_t first = firstRun(r, Label::Title).first;
  if (first < 3 || first == n || tokenText(r, entry, first - 1) != ":") return;
  // Back to the full stop or comma, followed by a space, that ends the names.
  size_t begin = first - 1;
  while (begin > 0 && (r.labels[begin - 1] == Label::Date || r.labels[begin - 1] == Label::Other) &&
         !endsAPart(r, entry, begin - 1))
    --begin;
  if (begin < 2 || begin + 1 == first || !endsAPart(r, entry, begin - 1)) return;
  const Label names = r.labels[begin - 2];
  if (names != Label::Author && names != Label::Editor) return;
  bool word = false;
  for (size_t k = begin; k + 1 < first; ++k) {
    const std::string_view t = tokenText(r, entry, k);
    if (t == "(" || t == ")" || t == "[" || t == "]") return;
    word = word || std::isalpha(static_cast<unsigned char>(t[0])) || static_cast<unsigned char>(t[0]) >= 0x80;
  }
  if (!word) return;
  for (size_t k = begin; k < first; ++k) r.labels[k] = Label::Title;
}

// What is typed onto the title's last word without a space is the title's:
// "Documentation—ver.2.3." is one word, however the reading split it.
void titleThroughItsLastWord(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  for (size_t k = 1; k < n; ++k) {
    if (r.labels[k - 1] != Label::Title || r.labels[k] != Label::Other) continue;
    size_t end = k;  // one past the run typed onto the title's last word
    while (end < n && r.tokens[end].begin == r.tokens[end - 1].end) ++end;
    // Its closing punctuation and quotes ("…2.3|.| ", "patients|,”| ") are no part of the word.
    while (end > k && !std::isalnum(static_cast<unsigned char>(tokenText(r, entry, end - 1)[0]))) --end;
    const auto from = r.labels.begin() + static_cast<long>(k), to = r.labels.begin() + static_cast<long>(end);
    if (end > k && std::all_of(from, to, [](Label l) { return l == Label::Other || l == Label::Volume; }))
      std::fill(from, to, Label::Title);
  }
}

// A book's imprint written "Publisher, Place" ("Van Dale, Utrecht, The
// Netherlands", "H. N. Abrams, New York, NY, USA"), read all as a place or
// with the publisher as a container: the pieces between its commas before
// the first that names a city, or before the city of the first region
// ("Dubuque, IA"), are the publisher's. A container is a publisher's name
// only in an entry with no volume, issue or pages and no "In".
void publisherBeforeItsPlace(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  const auto has = [&](Label l) { return std::find(r.labels.begin(), r.labels.end(), l) != r.labels.end(); };
  if (has(Label::Publisher)) return;
  bool inBook = false;
  for (size_t k = 0; k < n; ++k) inBook = inBook || str().lower(tokenText(r, entry, k)) == "in";
  const bool imprintOnly = !has(Label::Volume) && !has(Label::Issue) && !has(Label::Pages) && !inBook;
  // The place, or a container that holds one ("Real Academia Española, Madrid, Spain").
  size_t firstPlace = static_cast<size_t>(std::find(r.labels.begin(), r.labels.end(), Label::Place) - r.labels.begin());
  if (firstPlace == n && imprintOnly)
    firstPlace = static_cast<size_t>(std::find(r.labels.begin(), r.labels.end(), Label::Container) - r.labels.begin());
  if (firstPlace == n) return;
  // (Not an initial's full stop: "H. N. Abrams".)
  const auto sentenceEnd = [&](size_t k) {
    return tokenText(r, entry, k) == "." && endsAPart(r, entry, k) &&
           !(k > 0 && tokenText(r, entry, k - 1).size() == 1 && std::isupper(static_cast<unsigned char>(tokenText(r, entry, k - 1)[0])));
  };
  size_t begin = firstPlace, end = firstPlace;
  while (begin > 0 && !sentenceEnd(begin - 1)) --begin;
  while (end < n && !sentenceEnd(end)) ++end;
  std::vector<std::pair<size_t, size_t>> pieces;  // [first, last) tokens
  for (size_t k = begin, from = begin; k <= end; ++k)
    if (k == end || (tokenText(r, entry, k) == "," && endsAPart(r, entry, k))) {
      if (k > from) pieces.emplace_back(from, k);
      from = k + 1;
    }
  const auto piece = [&](size_t i) {
    return entry.substr(r.tokens[pieces[i].first].begin, r.tokens[pieces[i].second - 1].end - r.tokens[pieces[i].first].begin);
  };
  size_t place = pieces.size();
  for (size_t i = 0; i < pieces.size() && place == pieces.size(); ++i) {
    const PlaceKind kind = placeKind(piece(i));
    if (kind == PlaceKind::City) place = i;
    else if (kind == PlaceKind::Region) place = i > 0 && placeKind(piece(i - 1)) == PlaceKind::Unknown ? i - 1 : i;
  }
  if (place == 0 || place >= pieces.size()) return;
  const auto imprint = [&](Label l) {
    return l == Label::Place || l == Label::Other || l == Label::Editor || (l == Label::Container && imprintOnly);
  };
  size_t first = place;  // the publisher's first piece
  while (first > 0 && std::all_of(r.labels.begin() + static_cast<long>(pieces[first - 1].first),
                                  r.labels.begin() + static_cast<long>(pieces[first - 1].second), imprint))
    --first;
  if (first == place) return;
  // Not a piece of nothing but punctuation or a list's number ("[16]").
  const auto wordless = [&](size_t i) {
    for (size_t k = pieces[i].first; k < pieces[i].second; ++k)
      if (std::isalpha(static_cast<unsigned char>(tokenText(r, entry, k)[0]))) return false;
    return true;
  };
  while (first < place && wordless(first)) ++first;
  if (first == place) return;
  std::fill(r.labels.begin() + static_cast<long>(pieces[first].first),
            r.labels.begin() + static_cast<long>(pieces[place - 1].second), Label::Publisher);
  r.labels[pieces[place - 1].second] = Label::Other;  // the comma between them
  // The place's pieces read as the container's are the place's.
  for (size_t i = place; i < pieces.size(); ++i) {
    if (std::any_of(r.labels.begin() + static_cast<long>(pieces[i].first), r.labels.begin() + static_cast<long>(pieces[i].second),
                    [](Label l) { return l != Label::Container; }))
      break;
    std::fill(r.labels.begin() + static_cast<long>(pieces[i].first), r.labels.begin() + static_cast<long>(pieces[i].second),
              Label::Place);
    if (i > place) r.labels[pieces[i].first - 1] = Label::Place;  // the comma inside the place
  }
}

// An entry without names whose title opens with a group's name as a
// sentence of its own ("Harbor County Water Services. Rivers of the north.")
// is that group's work.
void groupBeforeTheTitle(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  if (std::any_of(r.labels.begin(), r.labels.end(), [](Label l) { return l == Label::Author || l == Label::Editor; }))
    return;
  const size_t first = firstRun(r, Label::Title).first;
  size_t stop = first;
  while (stop < n && r.labels[stop] == Label::Title && !(tokenText(r, entry, stop) == "." && endsAPart(r, entry, stop)))
    ++stop;
  if (stop + 1 >= n || stop - first < 2 || r.labels[stop] != Label::Title || r.labels[stop + 1] != Label::Title) return;
  const std::string_view name =
      entry.substr(r.tokens[first].begin, r.tokens[stop - 1].end - r.tokens[first].begin);
  if (!isGroupName(name)) return;
  // (A group's name has capitals but for its little words: "Services", not
  // "services of a river"; "Real Academia de Ríos".)
  static const char* const kLittle[] = {"of", "for", "the", "and", "on", "de", "del", "della", "des", "du", "la",
                                        "le", "für", "der", "van", "von", "y", "e", "et", "und"};
  for (const std::string& w : str().split(std::string(name), " ", -1))
    if (!w.empty() && std::islower(static_cast<unsigned char>(w[0])) &&
        std::find(std::begin(kLittle), std::end(kLittle), w) == std::end(kLittle))
      return;
  std::fill(r.labels.begin() + static_cast<long>(first), r.labels.begin() + static_cast<long>(stop), Label::Author);
  r.labels[stop] = Label::Other;
}

// ACS names a book's editors between semicolons, before "Ed." or "Eds."
// ("In Book; Harrison, J. A., Ed.; Publisher"): those names are the
// editors', however the reading labelled them.
void editorsBeforeEd(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  const auto text = [&](size_t k) { return tokenText(r, entry, k); };
  for (size_t ed = 2; ed + 1 < n; ++ed) {
    if ((text(ed) != "Ed" && text(ed) != "Eds") || text(ed + 1) != "." || text(ed - 1) != ",") continue;
    size_t begin = ed - 1;
    while (begin > 0 && text(begin - 1) != ";") --begin;
    if (begin == 0 || begin + 1 >= ed - 1) return;
    for (size_t k = begin; k + 1 < ed; ++k) {
      const std::string_view t = text(k);
      const Label l = r.labels[k];
      if (l == Label::Title || l == Label::Date || l == Label::Pages || l == Label::Volume) return;
      if (t != "." && t != "," && t != "-" && t != "and" && t != "&" && !std::isupper(static_cast<unsigned char>(t[0])) &&
          static_cast<unsigned char>(t[0]) < 0x80)
        return;
    }
    std::fill(r.labels.begin() + static_cast<long>(begin), r.labels.begin() + static_cast<long>(ed - 1), Label::Editor);
    r.labels[ed - 1] = r.labels[ed] = r.labels[ed + 1] = Label::Other;
    return;
  }
}

// A title does not run on into the book a chapter is in: "The Masque of the
// Red Death. In The complete works of Poe;" read as one title is the
// chapter's title, then "In", then the book's name.
void titleEndsBeforeIn(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  if (std::find(r.labels.begin(), r.labels.end(), Label::Container) != r.labels.end()) return;
  for (size_t k = 2; k + 1 < n; ++k) {
    if (r.labels[k] != Label::Title || tokenText(r, entry, k) != "In" || r.labels[k - 1] != Label::Title ||
        tokenText(r, entry, k - 1) != "." || !endsAPart(r, entry, k - 1) || r.labels[k - 2] != Label::Title ||
        r.labels[k + 1] != Label::Title)
      continue;
    // (Not after an initial, "A. I. In the 1980s", nor before a word without a capital.)
    if (tokenText(r, entry, k - 2).size() == 1 || !std::isupper(static_cast<unsigned char>(tokenText(r, entry, k + 1)[0])))
      continue;
    r.labels[k - 1] = r.labels[k] = Label::Other;
    for (size_t j = k + 1; j < n && r.labels[j] == Label::Title; ++j) r.labels[j] = Label::Container;
    return;
  }
}

// A number after its label in a periodical's entry ("Vol. 12 No. 3", "vol.
// 12, no. 3") is the volume or the issue the label names, however the
// reading labelled it.
void numbersAfterTheirLabels(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  const auto has = [&](Label l) { return std::find(r.labels.begin(), r.labels.end(), l) != r.labels.end(); };
  // (A periodical's: a book's or a series' volume is another matter.)
  if (!has(Label::Container) || has(Label::Publisher) || afterIn(r, entry)) return;
  for (size_t k = 0; k + 2 < n; ++k) {
    const std::string word = str().lower(tokenText(r, entry, k));
    const Label label = word == "vol" || word == "volume" ? Label::Volume
                        : word == "no" || word == "issue" ? Label::Issue
                                                          : Label::Other;
    size_t number = k + 1;
    if (number < n && tokenText(r, entry, number) == ".") ++number;
    if (label == Label::Other || number >= n || !allDigits(tokenText(r, entry, number)) ||
        r.labels[number] != Label::Other || has(label))
      continue;
    r.labels[number] = label;
  }
}

// Nature's "InfoWorld vol. 11 8": two numbers read as one volume are the
// volume and its page.
void pageAfterTheVolume(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  if (std::find(r.labels.begin(), r.labels.end(), Label::Pages) != r.labels.end()) return;
  for (size_t k = 1; k < n; ++k)
    if (r.labels[k] == Label::Volume && r.labels[k - 1] == Label::Volume && allDigits(tokenText(r, entry, k)) &&
        allDigits(tokenText(r, entry, k - 1)) && r.tokens[k].begin > r.tokens[k - 1].end &&
        (k + 1 == n || r.labels[k + 1] != Label::Volume)) {
      r.labels[k] = Label::Pages;
      return;
    }
}

// Names are not read after the title but in a book's or an edited work's
// place: "J. River Stud. 12 (2010)", "J. Pers. Soc. Psychol., vol. 65"
// read as names after the title are the abbreviated name of a periodical
// when a volume follows them.
void periodicalNotNames(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  if (std::find(r.labels.begin(), r.labels.end(), Label::Container) != r.labels.end()) return;
  const size_t title = firstRun(r, Label::Title).first;
  size_t begin = title;
  while (begin < n && r.labels[begin] != Label::Author && r.labels[begin] != Label::Editor) ++begin;
  if (begin == n) return;
  // Not after "in", "edited by" or "eds.".
  for (size_t k = title; k < begin; ++k) {
    const std::string w = str().lower(tokenText(r, entry, k));
    if (w == "in" || w == "edited" || w == "eds" || w == "ed") return;
  }
  const Label names = r.labels[begin];
  size_t end = begin;
  // An initial the reading left out before them ("|J.| River Stud.").
  if (begin >= title + 2 && r.labels[begin - 1] == Label::Other && r.labels[begin - 2] == Label::Other &&
      tokenText(r, entry, begin - 1) == "." && tokenText(r, entry, begin - 2).size() == 1 &&
      std::isupper(static_cast<unsigned char>(tokenText(r, entry, begin - 2)[0])))
    begin -= 2;
  while (end < n && (r.labels[end] == names || (tokenText(r, entry, end) == "." && r.labels[end] == Label::Other &&
                                                end + 1 < n && r.labels[end + 1] == names)))
    ++end;
  size_t next = end;
  while (next < n && r.labels[next] == Label::Other && !allDigits(tokenText(r, entry, next))) ++next;
  if (next == n || r.labels[next] != Label::Volume) return;
  // Words with capitals, abbreviated or not ("J.", "River", "Stud.").
  for (size_t k = begin; k < end; ++k) {
    const std::string_view t = tokenText(r, entry, k);
    if (t != "." && t != "&" && !std::isupper(static_cast<unsigned char>(t[0])) && t != "of" && t != "and" && t != "the")
      return;
  }
  while (end > begin && tokenText(r, entry, end - 1) == ".") --end;
  std::fill(r.labels.begin() + static_cast<long>(begin), r.labels.begin() + static_cast<long>(end), Label::Container);
}

// IEEE's chapter: "in Lakes and Rivers, P. Vermeer, Ed. Boston: …": the
// words after "in" up to the comma before the editors are the book's name,
// the names before "Ed." or "Eds." its editors.
void bookBeforeItsEditors(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  const size_t title = firstRun(r, Label::Title).first;
  for (size_t k = title; k + 3 < n; ++k) {
    // ("in" after the title's punctuation, not a word of it: "An Opera in Three Acts; Adès, T., Ed.")
    const std::string_view before = k > 0 ? tokenText(r, entry, k - 1) : "";
    if (tokenText(r, entry, k) != "in" ||
        (before != "," && before != "." && before != "\"" && before != "\xe2\x80\x9d") ||
        std::find(r.labels.begin(), r.labels.end(), Label::Container) != r.labels.end())
      continue;
    size_t comma = k + 1;
    while (comma < n && tokenText(r, entry, comma) != "," && r.labels[comma] != Label::Date) ++comma;
    size_t ed = comma + 1;
    while (ed + 1 < n && tokenText(r, entry, ed) != "Ed" && tokenText(r, entry, ed) != "Eds") ++ed;
    if (comma + 1 >= n || ed + 1 >= n || tokenText(r, entry, comma) != "," || tokenText(r, entry, ed - 1) != "," ||
        tokenText(r, entry, ed + 1) != ".")
      return;
    for (size_t j = comma + 1; j + 1 < ed; ++j) {
      const std::string_view t = tokenText(r, entry, j);
      if (t != "." && t != "," && t != "and" && t != "&" && t != "-" && !std::isupper(static_cast<unsigned char>(t[0])))
        return;
    }
    std::fill(r.labels.begin() + static_cast<long>(k + 1), r.labels.begin() + static_cast<long>(comma), Label::Container);
    std::fill(r.labels.begin() + static_cast<long>(comma + 1), r.labels.begin() + static_cast<long>(ed - 1), Label::Editor);
    r.labels[comma] = r.labels[ed - 1] = r.labels[ed] = r.labels[ed + 1] = Label::Other;
    return;
  }
}

// Vancouver's "[dissertation]" or "[master's thesis]" after the title, and
// its state in parentheses after a place ("Boston (MA):"), however the
// reading labelled them.
void vancouverBrackets(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  for (size_t k = 1; k + 2 < n; ++k) {
    const std::string_view open = tokenText(r, entry, k - 1);
    size_t close = k;
    while (close < n && close < k + 4 && tokenText(r, entry, close) != "]" && tokenText(r, entry, close) != ")") ++close;
    if (close == n || (open != "[" && open != "(")) continue;
    const std::string_view inside = entry.substr(r.tokens[k].begin, r.tokens[close - 1].end - r.tokens[k].begin);
    if (open == "[" && tokenText(r, entry, close) == "]" && r.labels[k - 1] != Label::Title &&
        !thesisOf(std::string("[") + std::string(inside) + "]").empty())
      std::fill(r.labels.begin() + static_cast<long>(k), r.labels.begin() + static_cast<long>(close), Label::Genre);
    if (open == "(" && tokenText(r, entry, close) == ")" && close == k + 1 && k >= 2 && r.labels[k - 2] == Label::Place &&
        placeKind(inside) == PlaceKind::Region)
      r.labels[k - 1] = r.labels[k] = r.labels[close] = Label::Place;
  }
}

// The names after "edited by" ("…, edited by C. Ricks and W. L. Vance.",
// "Edited by Thomas Adès.") or in Nature's "(eds. Battiti, R. & Pardalos,
// P.)" are the editors', however the reading labelled them: up to the
// parenthesis that closes them, or the full stop or comma that ends the list.
void editorsAfterEditedBy(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  const auto text = [&](size_t k) { return tokenText(r, entry, k); };
  const auto lower = [&](size_t k) { return str().lower(text(k)); };
  for (size_t k = 0; k + 2 < n; ++k) {
    size_t begin = 0;
    bool parenthesised = false;
    if (lower(k) == "edited" && lower(k + 1) == "by") {
      begin = k + 2;
    } else if (k > 0 && text(k - 1) == "(" && (lower(k) == "eds" || lower(k) == "ed") && text(k + 1) == ".") {
      begin = k + 2;
      parenthesised = true;
    } else {
      continue;
    }
    const auto initial = [&](size_t j) { return text(j).size() == 1 && std::isupper(static_cast<unsigned char>(text(j)[0])); };
    size_t end = begin;
    for (; end < n; ++end) {
      const std::string_view t = text(end);
      if (parenthesised && t == ")") break;
      if (!parenthesised && t == "." && endsAPart(r, entry, end) && !(end > begin && initial(end - 1))) break;
      if (!parenthesised && t == "," && end + 1 < n && !std::isupper(static_cast<unsigned char>(text(end + 1)[0]))) break;
      const Label l = r.labels[end];
      if (l == Label::Title || l == Label::Date || l == Label::Pages || l == Label::Volume || l == Label::Issue ||
          l == Label::Doi || l == Label::Url)
        return;
      const bool name = std::isupper(static_cast<unsigned char>(t[0])) || static_cast<unsigned char>(t[0]) >= 0x80;
      if (!name && t != "." && t != "," && t != "-" && t != "&" && t != "and" && t != "et" && t != "al") return;
    }
    if (end == begin || end == n) return;
    std::fill(r.labels.begin() + static_cast<long>(k), r.labels.begin() + static_cast<long>(begin), Label::Other);
    std::fill(r.labels.begin() + static_cast<long>(begin), r.labels.begin() + static_cast<long>(end), Label::Editor);
    return;
  }
}

// The name of proceedings, or of a book a work is "In", ends with where and
// when its meeting was ("…Conferences, Lausanne, Switzerland, October 1989",
// "…Threats, San Jose, CA, April 27, 2010"): pieces after its comma, read
// as nothing or as a date, that are a known place, or a date when the entry
// dates the work elsewhere, are the name's.
void containerThroughItsMeeting(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  const auto [begin, end] = firstRun(r, Label::Container);
  if (begin == n || !afterIn(r, entry)) return;
  const auto text = [&](size_t k) { return tokenText(r, entry, k); };
  const auto dated = [&](size_t from, size_t to) {  // a Date token outside [from, to)
    for (size_t k = 0; k < n; ++k)
      if (r.labels[k] == Label::Date && (k < from || k >= to) && std::isdigit(static_cast<unsigned char>(text(k)[0])))
        return true;
    return false;
  };
  // The comma that ends the name may have been read as its own.
  size_t k = end;
  if (k > begin && text(k - 1) == ",") --k;
  while (k + 1 < n && text(k) == "," && endsAPart(r, entry, k)) {
    size_t stop = k + 1;  // one past the piece
    while (stop < n && !((text(stop) == "," || text(stop) == ".") && endsAPart(r, entry, stop))) ++stop;
    bool unlabelled = true, place = true, date = true, month = false, year = false;
    for (size_t j = k + 1; j < stop; ++j) {
      const Label l = r.labels[j];
      unlabelled = unlabelled && (l == Label::Other || l == Label::Date || l == Label::Container);
      place = place && l != Label::Date;
      const std::string_view t = text(j);
      month = month || !monthName(t).empty();
      year = year || isYear(t);
      date = date && (!monthName(t).empty() || allDigits(t) || t == "\xe2\x80\x93" || t == "-");
    }
    if (stop == k + 1 || !unlabelled) break;
    const std::string_view piece = entry.substr(r.tokens[k + 1].begin, r.tokens[stop - 1].end - r.tokens[k + 1].begin);
    place = place && placeKind(piece) != PlaceKind::Unknown;
    date = date && (month || year) && dated(k, stop);
    if (!place && !date) break;
    std::fill(r.labels.begin() + static_cast<long>(k), r.labels.begin() + static_cast<long>(stop), Label::Container);
    k = stop;
  }
}

// A title typed in double quotes is all of what they hold, whatever the
// reader made of its first or last words ("“Hypertext 2000: Databases or
// documents”" with "Hypertext 2000" read as a date), but the punctuation
// that closes it before the closing quote. The work's date stays a date when
// the entry has no other.
void titleFillsItsQuotes(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  const auto text = [&](size_t k) { return tokenText(r, entry, k); };
  const auto opens = [](std::string_view t) { return t == "\xe2\x80\x9c" || t == "\""; };
  const auto closes = [](std::string_view t) { return t == "\xe2\x80\x9d" || t == "\""; };
  const size_t first = firstRun(r, Label::Title).first;
  if (first == n) return;
  size_t open = first;
  while (open > 0 && !opens(text(open - 1)) && !closes(text(open - 1))) --open;
  if (open == 0 || !opens(text(open - 1))) return;
  size_t close = first;
  while (close < n && !closes(text(close)) && !opens(text(close))) ++close;
  if (close == n || !closes(text(close))) return;
  size_t end = close;
  while (end > open && (text(end - 1) == "." || text(end - 1) == "," || text(end - 1) == ";")) --end;
  const auto isDate = [&](size_t k) { return r.labels[k] == Label::Date; };
  bool dateOutside = false;
  for (size_t k = 0; k < n; ++k) dateOutside = dateOutside || (isDate(k) && (k < open || k >= close));
  for (size_t k = open; k < end; ++k)
    if (dateOutside || !isDate(k)) r.labels[k] = Label::Title;
}

// A container's name without the "in" that leads to it ("Pp. 156–65 in
// Raster imaging …": a name begins with a capital), without the label of
// the pages after it ("…, pages 527–532") and without the month that dates
// the issue after it ("The New Yorker, April 14", "MacUser, October"),
// which is the date's.
void trimContainer(quillreader::Reading& r, std::string_view entry) {
  auto [begin, end] = firstRun(r, Label::Container);
  if (end - begin < 2) return;
  if (tokenText(r, entry, begin) == "in") r.labels[begin++] = Label::Other;
  // Nor the label of the pages that follow it ("…, pages 527–532").
  const auto pagesLabel = [&](size_t k) {
    const std::string w = str().lower(tokenText(r, entry, k));
    return w == "pages" || w == "page" || w == "pp" || w == "p";
  };
  if (end < r.labels.size() && r.labels[end] == Label::Pages && end - begin > 2 && pagesLabel(end - 1)) {
    r.labels[--end] = Label::Other;
    while (end > begin + 1 && (tokenText(r, entry, end - 1) == "," || tokenText(r, entry, end - 1) == "."))
      r.labels[--end] = Label::Other;
  }
  for (size_t k = begin + 1; k + 1 < end; ++k) {
    const std::string_view word = tokenText(r, entry, k + 1);
    // A month written out: "May", "October" (not "Dec", which may be a name's part).
    const std::string_view month = monthName(word);
    if (tokenText(r, entry, k) != "," || month.empty() || str().lower(word) != str().lower(month)) continue;
    const bool day = k + 2 == end || (k + 3 == end && allDigits(tokenText(r, entry, k + 2)));
    if (!day) continue;
    r.labels[k] = Label::Other;
    for (size_t j = k + 1; j < end; ++j) r.labels[j] = Label::Date;
    break;
  }
}

// An edition as other styles write it where APA does not ("Addison-Wesley,
// fourth edition, 2004", "Boston, 2nd edn.", "2. ed."), which the reading left
// unlabelled or took for a volume, is the edition.
void editionsWhereTyped(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  if (std::find(r.labels.begin(), r.labels.end(), Label::Edition) != r.labels.end()) return;
  const auto lower = [&](size_t k) { return str().lower(tokenText(r, entry, k)); };
  for (size_t k = 1; k < n; ++k) {
    const std::string word = lower(k);
    if (word != "edition" && word != "edn" && word != "ed") continue;
    size_t from = k;
    if (const std::string before = lower(k - 1); ordinalOf(before) != before)
      from = k - 1;
    else if (k >= 2 && allDigits(tokenText(r, entry, k - 2)) &&
             (before == "st" || before == "nd" || before == "rd" || before == "th" || before == "."))
      from = k - 2;  // "2nd edition", and ABNT's "2. ed."
    // (Its number is no volume's: "2nd edition" is no "Vol. 2".)
    if (from == k || std::any_of(r.labels.begin() + static_cast<long>(from), r.labels.begin() + static_cast<long>(k) + 1,
                                 [](Label l) { return l != Label::Other && l != Label::Volume; }))
      continue;
    std::fill(r.labels.begin() + static_cast<long>(from), r.labels.begin() + static_cast<long>(k) + 1, Label::Edition);
    return;
  }
}

// What follows a volume and issue and a colon is the pages, however the
// reading labelled them: "2(1):1–10", "21(1):c2" (a cover's page).
void pagesAfterTheIssue(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  if (std::find(r.labels.begin(), r.labels.end(), Label::Pages) != r.labels.end()) return;
  const auto text = [&](size_t k) { return tokenText(r, entry, k); };
  const auto page = [&](size_t k) {
    const std::string_view t = text(k);
    return std::isdigit(static_cast<unsigned char>(t[0])) || (t.size() <= 4 && std::isalpha(static_cast<unsigned char>(t[0])) &&
                                                              std::isdigit(static_cast<unsigned char>(t.back())));
  };
  const auto dash = [&](size_t k) { return text(k) == "-" || text(k) == "\xe2\x80\x93"; };
  for (size_t k = 3; k + 1 < n; ++k) {
    if (text(k) != ":" || text(k - 1) != ")" || r.labels[k - 2] != Label::Issue || !page(k + 1)) continue;
    r.labels[k + 1] = Label::Pages;
    if (k + 3 < n && dash(k + 2) && page(k + 3)) r.labels[k + 2] = r.labels[k + 3] = Label::Pages;
    return;
  }
}

// The date an online work was read ("[cited 2010 May 5]", "[accessed 5 May
// 2010]") is no date of the work's.
void accessDateIsNoDate(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  for (size_t k = 0; k + 1 < n; ++k) {
    if (tokenText(r, entry, k) != "[") continue;
    const std::string word = str().lower(tokenText(r, entry, k + 1));
    if (word != "cited" && word != "accessed" && word != "updated") continue;
    for (size_t j = k + 1; j < n && tokenText(r, entry, j) != "]"; ++j)
      if (r.labels[j] == Label::Date) r.labels[j] = Label::Other;
  }
}

// A title's question or exclamation mark is the title's ("What are they?"),
// however the reading labelled it.
void titleKeepsItsMark(quillreader::Reading& r, std::string_view entry) {
  for (size_t k = 1; k < r.labels.size(); ++k) {
    const std::string_view t = tokenText(r, entry, k);
    if ((t == "?" || t == "!") && r.labels[k - 1] == Label::Title && r.labels[k] != Label::Title &&
        (k + 1 == r.labels.size() || r.labels[k + 1] != Label::Title))
      r.labels[k] = Label::Title;
  }
}

// An entry the reading found no date in is dated by its last year read as
// nothing, as a note, or as the end of its container's name ("American
// Journal of Orthopsychiatry 1981, 51 (3)", "no. 21, 2017.").
void dateTheUndated(quillreader::Reading& r, std::string_view entry) {
  const size_t n = r.labels.size();
  if (std::find(r.labels.begin(), r.labels.end(), Label::Date) != r.labels.end()) return;
  for (size_t k = n; k-- > 0;) {
    const std::string_view t = tokenText(r, entry, k);
    if (!isYear(t)) continue;
    const Label l = r.labels[k];
    const bool containerEnd = l == Label::Container && k > 0 && r.labels[k - 1] == Label::Container &&
                              (k + 1 == n || r.labels[k + 1] != Label::Container);
    if (l == Label::Other || l == Label::Note || containerEnd) r.labels[k] = Label::Date;
    return;
  }
}

}  // namespace

bool isGroupName(std::string_view text) {
  if (text.find(',') != std::string_view::npos) return false;
  static const char* const kWords[] = {
      "department", "services", "service", "press", "association", "university", "institute", "society",
      "council", "organization", "organisation", "agency", "office", "committee", "center", "centre",
      "bureau", "ministry", "foundation", "inc", "corporation", "company", "group", "museum", "library",
      "county", "government", "commission", "board", "administration", "federation", "union", "network",
      "laboratory", "hospital", "school", "college", "academy", "trust", "consortium", "coalition",
      "alliance", "authority", "team", "project", "news", "staff", "panel", "taskforce", "nations", "ltd", "llc",
      // The same in the languages references are most often written in.
      "academia", "akademie", "académie", "accademia", "universität", "universidad", "universidade",
      "università", "université", "universiteit", "instituto", "institut", "istituto", "gesellschaft", "verein",
      "verband", "stiftung", "ministerio", "ministère", "ministero", "ministerium", "société", "sociedad",
      "sociedade", "società", "asociación", "associazione", "fundación", "fondation", "fondazione", "bibliothek",
      "biblioteca", "bibliothèque", "museo", "musée", "comité", "comisión", "commissione", "consejo", "conseil",
      "consiglio", "agencia", "agence", "departamento", "centro", "zentrum", "bundesamt"};
  return hasWordAmong(text, kWords);
}

bool isFamilyAndInitials(std::string_view name) {
  std::vector<std::string> words = str().split(str().trimmed(name), " ", -1);
  if (!words.empty() && words.back().ends_with(".")) words.back().pop_back();
  // A particle after the initials ("Herwijnen E van").
  if (words.size() >= 3 && words.back().size() <= 3 && std::islower(static_cast<unsigned char>(words.back()[0])))
    words.pop_back();
  // ("Paterson III" is a family name and its suffix.)
  if (words.size() < 2 || !isInitials(words.back()) || isSuffix(words.back())) return false;
  return std::all_of(words.begin(), words.end() - 1, [](const std::string& w) {
    return w.size() >= 2 && std::isupper(static_cast<unsigned char>(w[0])) && std::islower(static_cast<unsigned char>(w[1]));
  });
}

bool looksLikePlace(std::string_view place) {
  if (place.find_first_of(";:&0123456789") != std::string_view::npos) return false;
  std::string text(place);
  std::replace(text.begin(), text.end(), ',', ' ');
  const std::vector<std::string> words = str().split(str().trimmed(text), " ", -1);
  // Names with capitals, but for the little words of places ("Newcastle upon
  // Tyne", "Frankfurt am Main", "Rio de Janeiro"); not "TeX in Practice".
  static const char* const kLittle[] = {"upon", "am", "an", "de", "del", "di", "da", "du", "la", "le",
                                        "of", "on", "sur", "im", "der", "en", "y"};
  const bool named = std::all_of(words.begin(), words.end(), [](const std::string& w) {
    return w.empty() || !std::islower(static_cast<unsigned char>(w[0])) ||
           std::find(std::begin(kLittle), std::end(kLittle), w) != std::end(kLittle);
  });
  return named && words.size() <= 6;
}

std::string_view placeAfterTheName(std::string_view publisher) {
  const size_t comma = publisher.find(", ");
  // (A name that is more than a name, "University; Program (Vol. 289)", says nothing of the sort.)
  if (comma == std::string_view::npos || publisher.substr(0, comma).find_first_of(";()") != std::string_view::npos)
    return {};
  std::string_view tail = publisher.substr(comma + 2);
  // An edition after the place ("Boston, MA, second edition") is BibTeX's.
  if (const size_t last = str().lastIndexOf(tail, ", "); last != std::string_view::npos && str().endsWith(tail, " edition"))
    tail = tail.substr(0, last);
  std::string place(tail);
  std::replace(place.begin(), place.end(), ',', ' ');
  return looksLikePlace(tail) && !isGroupName(place) ? tail : std::string_view();
}

quillreader::Reading mended(quillreader::Reading reading, std::string_view entry) {
  titleFillsItsQuotes(reading, entry);
  addressesHaveSlashes(reading, entry);
  trimContainer(reading, entry);
  partsDoNotStartWithAnd(reading, entry);
  containerThroughItsMeeting(reading, entry);
  fillGaps(reading, entry);
  editorsAfterEditedBy(reading, entry);
  editorsBeforeEd(reading, entry);
  titleEndsBeforeIn(reading, entry);
  vancouverBrackets(reading, entry);
  numbersAfterTheirLabels(reading, entry);
  pageAfterTheVolume(reading, entry);
  periodicalNotNames(reading, entry);
  bookBeforeItsEditors(reading, entry);
  mendNameLists(reading, entry);
  groupNameWhole(reading, entry);
  oneRoleAList(reading, entry);
  mendVancouverNames(reading, entry);
  titleBeforeItsColon(reading, entry);
  titleFromBeforeItsColon(reading, entry);
  groupBeforeTheTitle(reading, entry);
  titleThroughItsLastWord(reading, entry);
  extendTitleThroughItsYears(reading, entry);
  editionsWhereTyped(reading, entry);
  publisherBeforeItsPlace(reading, entry);
  pagesAfterTheIssue(reading, entry);
  accessDateIsNoDate(reading, entry);
  dateTheUndated(reading, entry);
  titleKeepsItsMark(reading, entry);
  fillGaps(reading, entry);
  return reading;
}

bool splitsPhrase(std::string_view entry, const quillreader::Reading& reading) {
  const auto named = [](Label l) {
    return l == Label::Author || l == Label::Editor || l == Label::Title || l == Label::Container ||
           l == Label::Publisher || l == Label::Place;
  };
  const auto wordChar = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || (c & 0x80); };
  for (size_t i = 0; i + 1 < reading.tokens.size(); ++i) {
    const quillreader::Token &a = reading.tokens[i], &b = reading.tokens[i + 1];
    if (reading.labels[i] == reading.labels[i + 1] || !named(reading.labels[i]) || !named(reading.labels[i + 1]))
      continue;
    const bool onlySpace = std::all_of(entry.begin() + static_cast<long>(a.end),
                                       entry.begin() + static_cast<long>(b.begin), [](char c) { return c == ' '; });
    if (onlySpace && wordChar(entry[a.end - 1]) && wordChar(entry[b.begin])) return true;
  }
  return false;
}

std::vector<std::string> wordsLost(std::string_view typed, const LabelledEntry& written) {
  std::map<std::string, int> budget;
  for (const std::string& w : wordTokens(written.written())) ++budget[w];
  for (const std::string& allowed : written.rewrites.mayLose)
    for (const std::string& w : wordTokens(allowed)) ++budget[w];
  std::vector<std::string> lost;
  for (const std::string& w : wordTokens(typed)) {
    // An address is compared whole by the audit; its pieces may be written otherwise ("doi:").
    if (w.starts_with("http") || w.starts_with("doi") || w.starts_with("10.")) continue;
    int& left = budget[w];
    if (left > 0)
      --left;
    else
      lost.push_back(w);
  }
  return lost;
}

// A container that is a reference book rather than a periodical: an
// encyclopedia, a dictionary, a handbook. (Not "proceedings" or "symposium":
// periodicals bear those names too.)
bool namesAWholeWork(std::string_view container) {
  static const char* const kWords[] = {"encyclopedia", "encyclopaedia", "dictionary", "handbook"};
  return hasWordAmong(container, kWords);
}

std::optional<LabelledEntry> apaFormOf(std::string_view entry, const quillreader::Reading& reading) {
  LabelledEntry out;
  Rewrites& rw = out.rewrites;
  const std::string title = titleWithItsMarks(withoutClosingStop(first(reading, entry, Label::Title)), entry, reading);
  const std::string date = dateOf(reading, entry, rw);
  if (title.empty() || date.empty()) return std::nullopt;
  std::string authorText = namesSpan(reading, entry, Label::Author);
  // "et al." after the names belongs to them (the list is not whole).
  const std::string lowerEntry = str().lower(entry);
  if (!authorText.empty() && !str().contains(str().lower(authorText), "et al")) {
    const size_t end = entry.find(str().trimmed(reading.spans(entry, Label::Author).back()));
    const std::string after = lowerEntry.substr(end == std::string::npos ? lowerEntry.size() : end);
    if (str().contains(after.substr(0, std::min<size_t>(after.size(), authorText.size() + 12)), "et al"))
      authorText += ", et al.";
  }
  // A list's numbering ("[3]", "3.") is no part of the work.
  for (size_t i = 0; i < reading.tokens.size() && reading.labels[i] == Label::Other; ++i) {
    const std::string w(entry.substr(reading.tokens[i].begin, reading.tokens[i].end - reading.tokens[i].begin));
    if (allDigits(w)) {
      rw.mayLose.push_back(w);
      break;  // (one number: "[57. :7]" is no numbering of a list)
    }
    if (std::any_of(w.begin(), w.end(), [](char c) { return std::isalpha(static_cast<unsigned char>(c)); }))
      break;  // (nor is a number after a word)
  }
  std::string editorText = namesSpan(reading, entry, Label::Editor);
  // Names followed by "(eds)", "(ed.)" or ", editors" are the editors of an
  // edited work, however the reading labelled them.
  if (!authorText.empty() && editorText.empty()) {
    const size_t namesEnd = firstSpan(reading, Label::Author).second;
    const std::string after = lowerEntry.substr(namesEnd, 16);
    static const std::regex kEditors(R"(^\.?\s*(\(eds?\.?\)|,\s*eds?\.|,\s*editors?\b|\(hrsg\.?\)))");
    if (std::regex_search(after, kEditors)) {
      editorText = authorText;
      authorText.clear();
    }
  }
  std::string container = withoutClosingStop(first(reading, entry, Label::Container));
  // An abbreviated name keeps its last abbreviation's full stop ("J. River
  // Stud.", "J. Pers. Soc. Psychol."; not "Dr. Dobb’s Journal of Software Tools.").
  if (const auto [from, to] = firstSpan(reading, Label::Container);
      !container.empty() && !container.ends_with(".") && entry.substr(to).starts_with(".") &&
      std::isalpha(static_cast<unsigned char>(container.back()))) {
    size_t words = 0, abbreviated = 1;
    for (const std::string& w : str().split(container, " ", -1)) {
      if (w.empty() || !std::isupper(static_cast<unsigned char>(w[0]))) continue;
      ++words;
      abbreviated += w.ends_with(".") ? 1 : 0;
    }
    if (abbreviated >= 2 && 2 * abbreviated >= words) container += ".";
  }
  const std::string volume = first(reading, entry, Label::Volume), issue = first(reading, entry, Label::Issue);
  const std::string pagesTyped = first(reading, entry, Label::Pages);
  std::string publisher = withoutClosingStop(first(reading, entry, Label::Publisher));
  std::string place = first(reading, entry, Label::Place);
  // A place's abbreviation keeps its full stop before the colon ("Reading, Mass.: Addison-Wesley").
  if (!place.empty() && !place.ends_with(".") && entry.substr(firstSpan(reading, Label::Place).second).starts_with(".:"))
    place += ".";
  // "Harbor Press, Baltimore" read as one publisher: its place after it.
  if (const std::string_view after = placeAfterTheName(publisher); place.empty() && !after.empty()) {
    place = std::string(after);
    publisher = str().trimmed(publisher.substr(0, publisher.find(", ")));
  }
  const std::string edition = first(reading, entry, Label::Edition);
  std::string doi = first(reading, entry, Label::Doi), url = first(reading, entry, Label::Url);
  // An address at doi.org is the work's DOI ("Available at: https://doi.org/10.1037/…").
  if (doi.empty() && str().contains(url, "doi.org/10.")) std::swap(doi, url);
  const std::string pages = pagesTyped.empty() ? "" : fullPages(pagesTyped, rw);

  // A container with a publisher, or after "In", is the book a chapter or
  // paper is in (or the series a book is in); otherwise a periodical.
  const bool periodical =
      !container.empty() && publisher.empty() && !afterIn(reading, entry) && !namesAWholeWork(container);
  const bool chapter = !container.empty() && !periodical;
  otherStylesLabels(rw, entry, chapter, !volume.empty(), !issue.empty(), !pages.empty());
  // What APA writes in parentheses after a title: "(2nd ed., Vol. 3, pp.
  // 175–184)", and the editors of a work with its own authors ("E. Rice, Ed.").
  const std::string pagesNote = pages.empty() ? "" : (pages.find("\xe2\x80\x93") == std::string::npos ? "p. " : "pp. ") + pages;
  std::vector<std::string> afterTitle;
  // (A chapter's edition is its book's: "In A. Lee (Ed.), Book (2nd ed., pp. 5–9).")
  const std::string editionWritten = edition.empty() ? "" : editionOf(edition, rw);
  if (!editionWritten.empty() && !chapter) afterTitle.push_back(editionWritten);
  // A report's number, and a thesis as APA names it ("PhD thesis" is a
  // "Doctoral dissertation"). (A work without authors keeps them among its
  // notes: its date follows its title.)
  std::vector<std::string> notes = notesOf(reading, entry);
  for (auto it = notes.begin(); it != notes.end();) {
    const std::string thesis = thesisOf(*it);
    if (str().trimmed(authorText).empty() || (thesis.empty() && !namesAReport(*it))) {
      ++it;
      continue;
    }
    if (!thesis.empty()) {
      rw.mayLose.push_back(*it);
      rw.mayAdd.push_back(thesis);
    }
    afterTitle.push_back(thesis.empty() ? *it : thesis);
    it = notes.erase(it);
  }
  if (container.empty() && !volume.empty()) afterTitle.push_back("Vol. " + volume);
  if (container.empty() && !pagesNote.empty()) afterTitle.push_back(pagesNote);
  if (!str().trimmed(authorText).empty() && !str().trimmed(editorText).empty() && !chapter) {
    const NameList editors = namesOf(clean(editorText), rw);
    editorsLabels(rw);
    afterTitle.push_back(givenFirst(editors) + (editors.names.size() > 1 ? ", Eds." : ", Ed."));
    out.fields.editors = editors.names;
  }
  // The title and what APA writes in parentheses after it.
  std::string titled = sentence(title);
  if (!afterTitle.empty()) {
    if (titled.ends_with(".")) titled.pop_back();
    titled += " (" + str().join(afterTitle, ", ") + ").";
  }
  AuthorStyle style;
  style.initialsOnly = true;
  std::string apa;
  if (!str().trimmed(authorText).empty()) {
    const NameList list = namesOf(clean(authorText), rw);
    // APA joins the last of several persons with "&".
    const bool persons = std::all_of(list.names.begin(), list.names.end(), [](const PersonName& n) {
      return !n.given.empty() && std::isupper(static_cast<unsigned char>(n.given[0]));
    });
    if (list.names.size() >= 2 && persons && !list.etAl) rw.mayAdd.push_back("&");
    elidedNames(list, style, rw);
    std::string names = formatNames(list, style);
    apa = sentence(names) + " " + date + ". " + titled;
    out.fields.authors = list.names;
  } else if (!str().trimmed(editorText).empty() && !chapter) {
    // An edited work: its editors in the authors' place, "(Eds.)" after them.
    const NameList list = namesOf(clean(editorText), rw);
    if (list.names.size() >= 2 && !list.etAl) rw.mayAdd.push_back("&");
    elidedNames(list, style, rw);
    editorsLabels(rw);
    apa = formatNames(list, style) + (list.names.size() > 1 ? " (Eds.). " : " (Ed.). ") + date + ". " + titled;
    out.fields.editors = list.names;
  } else {
    apa = titled + " " + date + ".";
  }
  // "Place: Publisher.", or either alone.
  const std::string apaPlace = placeAsApaWritesIt(place, rw);
  const std::string published =
      apaPlace.empty() ? publisher : publisher.empty() ? apaPlace : apaPlace + ": " + publisher;
  if (periodical) {
    apa += " " + container;
    if (!volume.empty() || !issue.empty()) apa += ", " + volume + (issue.empty() ? "" : "(" + issue + ")");
    if (!pages.empty()) apa += ", " + pages;
    apa += ".";
  } else if (!container.empty()) {
    // A chapter or a paper in proceedings: "In E. Editor (Ed.), Book (pp. x–y). Place: Publisher."
    NameList editors = editorText.empty() ? NameList{} : namesOf(clean(editorText), rw);
    if (!editors.names.empty()) editorsLabels(rw);
    out.fields.editors = editors.names;
    apa += " In ";
    if (!editors.names.empty()) apa += givenFirst(editors) + (editors.names.size() > 1 ? " (Eds.), " : " (Ed.), ");
    std::vector<std::string> where;
    if (!editionWritten.empty()) where.push_back(editionWritten);
    if (!volume.empty()) where.push_back("Vol. " + volume);
    if (!pagesNote.empty()) where.push_back(pagesNote);
    apa += container + (where.empty() ? "" : " (" + str().join(where, ", ") + ")") + ".";
    if (!published.empty()) apa += " " + sentence(published);
  } else if (!published.empty()) {
    apa += " " + sentence(published);
  }
  if (!doi.empty()) {
    std::string d = doi;
    for (std::string_view p : {"https://doi.org/", "http://doi.org/", "http://dx.doi.org/", "doi:"})
      if (str().stripLeading(d, p)) break;
    apa += " doi:" + str().trimmed(d);
  } else if (!url.empty()) {
    apa += " Retrieved from " + url;
  }
  out.fields.title = title;
  out.fields.container = container;
  out.fields.volume = volume;
  out.fields.issue = issue;
  out.fields.pages = pages;
  out.fields.publisher = publisher;
  out.fields.place = place;
  out.placeWritten = apaPlace;
  out.apa = apa;
  // A volume or pages with neither a periodical's name nor a publisher: the
  // reading missed the periodical's name ("Computer 1989;22:111–20").
  const bool unnamedPeriodical = container.empty() && publisher.empty() && editorText.empty() &&
                                 (!volume.empty() || !pages.empty()) && !afterIn(reading, entry);
  out.type = periodical || unnamedPeriodical ? 1 : 0;
  for (const std::string& note : notes) out.notes += (out.notes.empty() ? "" : " ") + sentence(note);
  if (const std::string original = originalYear(reading, entry); !original.empty()) {
    for (const char* word : {"Original", "work", "published"}) rw.mayAdd.push_back(word);
    out.notes += (out.notes.empty() ? "" : " ") + std::string("(Original work published ") + original + ")";
  }
  return out;
}

}  // namespace quillpaper
