#include "quillpaper/references/AuthorNames.h"

#include <algorithm>
#include <cctype>

#include "strings/ReferenceRules.h"
#include "strings/StringUtility.h"

namespace quillpaper {

namespace {

const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }

bool isUpperStart(std::string_view w) {
  if (w.empty()) return false;
  const unsigned char c = static_cast<unsigned char>(w[0]);
  if (c >= 0x80) {
    // A capital beyond ASCII: the first character changes when lower-cased.
    size_t i = 0;
    const char32_t first = QuillStrings::utf8::next(w, i);
    return QuillStrings::utf8::toLower(first) != first;
  }
  return std::isupper(c) != 0;
}

bool isLowerStart(std::string_view w) { return !w.empty() && std::islower(static_cast<unsigned char>(w[0])); }

// "M.", "C.-R.", "Th.", "J.-P.", "J.A.": an initial as APA writes it; "k",
// "d." too, the bare letters some lists carry.
bool isInitial(std::string_view w) {
  if (w.size() == 1 || (w.size() == 2 && w[1] == '.')) return std::isalpha(static_cast<unsigned char>(w[0])) != 0;
  if (w.size() < 2 || w.back() != '.' || !isUpperStart(w)) return false;
  for (std::string_view part : str().split(w, "-", -1)) {
    if (part.empty() || part.back() != '.' || !isUpperStart(part) || str().length(part) > 4) return false;
  }
  return true;
}

// A written-out given name: a capitalised word of letters (and hyphens or
// apostrophes), perhaps closed by a full stop: "Jonathan", "Alan-Louis.".
bool isNameWord(std::string_view w) {
  std::string_view t = w;
  if (!t.empty() && t.back() == '.') t.remove_suffix(1);
  if (t.size() < 2 || !isUpperStart(t) || QuillStrings::rules::isGroupWord(t)) return false;
  return std::all_of(t.begin(), t.end(), [](char c) {
    const unsigned char u = static_cast<unsigned char>(c);
    return u >= 0x80 || std::isalpha(u) || c == '-' || c == '\'';
  });
}

// One word of given names: an initial, a written-out name, or both joined
// by a hyphen ("A.-Louis").
bool isGivenWord(std::string_view w) {
  if (isInitial(w) || isNameWord(w)) return true;
  const std::vector<std::string> parts = str().split(w, "-", -1);
  if (parts.size() < 2) return false;
  for (size_t k = 0; k < parts.size(); ++k) {
    std::string part = parts[k];
    if (k + 1 < parts.size() && !part.empty() && part.back() != '.') return false;
    if (!isInitial(part) && !isNameWord(part)) return false;
  }
  return true;
}

// "R. R.", "G.": initials with their full stops, never a family name.
bool looksLikeInitials(std::string_view token) {
  const std::vector<std::string> words = str().split(str().trimmed(token), " ", -1);
  return std::all_of(words.begin(), words.end(),
                     [](const std::string& w) { return w.size() >= 2 && w.back() == '.' && isInitial(w); });
}

// What may follow a family name as its given names: initials ("M. H.",
// "k d"), written-out names ("Jonathan", "Mary Ann", "J. Paul"), then
// words in lower case, particles mostly ("K. van der").
bool isGivenPart(std::string_view token) {
  const std::vector<std::string> words = str().split(str().trimmed(token), " ", -1);
  if (words.empty() || words.size() > 5 || !isGivenWord(words[0])) return false;
  for (const std::string& w : words)
    if (w.empty() || w == "and" || (!isGivenWord(w) && !isLowerStart(w))) return false;
  return true;
}

// A token that only a group's name holds: a group word, a function word in
// lower case, a digit, or many words.
bool isGroupToken(std::string_view token) {
  const std::vector<std::string> words = str().split(str().trimmed(token), " ", -1);
  if (words.size() > 5) return true;
  for (std::string w : words) {
    str().trimTrailing(w, ".,;:");
    if (QuillStrings::rules::isGroupWord(w)) return true;
    if (w == "of" || w == "for" || w == "the" || w == "and" || w == "on" || w == "&") return true;
    if (std::any_of(w.begin(), w.end(), [](char c) { return c >= '0' && c <= '9'; })) return true;
  }
  return false;
}

// "(Director)", "(Executive Producer)": a role written after a name.
std::string takeRole(std::string& token) {
  std::string t = str().trimmed(token);
  str().stripTrailing(t, ".");
  if (!str().endsWith(t, ")")) return {};
  const size_t open = t.rfind('(');
  if (open == std::string::npos || open == 0) return {};
  const std::string role = t.substr(open + 1, t.size() - open - 2);
  if (role.empty() || !isUpperStart(role) || role.size() > 30 || isGroupToken(role)) return {};
  for (const std::string& w : str().split(role, " ", -1))
    if (!isNameWord(w)) return {};
  token = str().trimmed(t.substr(0, open));
  return role;
}

// The list split at its commas (not those inside parentheses), each piece
// with the joiner ("&", "and") that introduced it taken off.
struct Piece {
  std::string text;
  bool joined = false;  // "& Jones" or "and Jones": the start of the last name
};

std::vector<Piece> piecesOf(std::string_view text) {
  std::vector<Piece> pieces;
  int depth = 0;
  size_t start = 0;
  auto push = [&](std::string_view raw) {
    Piece p{str().trimmed(raw), false};
    for (std::string_view joiner : {"& ", "and "}) {
      if (str().beginsWith(p.text, joiner)) {
        p.text = str().trimmed(p.text.substr(joiner.size()));
        p.joined = true;
      }
    }
    if (!p.text.empty()) pieces.push_back(std::move(p));
  };
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '(') ++depth;
    if (text[i] == ')' && depth > 0) --depth;
    if (depth == 0 && text.substr(i).starts_with(", ")) {
      push(text.substr(start, i - start));
      start = i + 2;
    }
  }
  push(text.substr(start));
  return pieces;
}

// "J. and Jones" or "J. & Jones": a given name, then the last family name.
// Split only where the front reads as given names, so that "Health and Human
// Services" stays whole.
void splitJoinedPieces(std::vector<Piece>& pieces) {
  for (size_t k = 1; k < pieces.size(); ++k) {
    for (std::string_view joiner : {" & ", " and "}) {
      const size_t at = pieces[k].text.find(joiner);
      if (at == std::string::npos) continue;
      const std::string front = pieces[k].text.substr(0, at);
      const std::string back = str().trimmed(pieces[k].text.substr(at + joiner.size()));
      const std::string firstOfBack = str().split(back, " ", 2)[0];
      if (!isGivenPart(front) || back.empty() || isInitial(firstOfBack) || isGroupToken(pieces[k - 1].text)) continue;
      pieces[k].text = front;
      pieces.insert(pieces.begin() + static_cast<long>(k) + 1, Piece{back, true});
      break;
    }
  }
}

// A group's closing full stop belongs to the list, not to the name, unless
// the name ends in an abbreviation ("Microsoft, Inc.").
void dropClosingStop(std::string& name) {
  if (!str().endsWith(name, ".")) return;
  const std::vector<std::string> words = str().split(name, " ", -1);
  const std::string last = words.back().substr(0, words.back().size() - 1);
  if (!isInitial(words.back()) && !QuillStrings::rules::isNameAbbreviation(last)) name.pop_back();
}

}  // namespace

bool isSuffix(std::string_view token) {
  const std::string t = str().trimmed(token);
  return t == "Jr." || t == "Sr." || t == "II" || t == "III" || t == "IV" || t == "II." || t == "III." || t == "IV.";
}

NameList readNames(std::string_view list) {
  NameList out;
  std::string text = str().trimmed(list);
  for (std::string_view etAl : {", et al.", " et al.", ", et al", " et al"}) {
    if (str().stripTrailing(text, etAl)) {
      out.etAl = true;
      break;
    }
  }
  std::vector<Piece> pieces = piecesOf(text);
  // The ellipsis of a shortened list stands before the last name.
  for (Piece& p : pieces) {
    for (std::string_view ellipsis : {". . .", "\u2026"}) {
      if (str().stripLeading(p.text, ellipsis)) {
        p.text = str().trimmed(p.text);
        p.joined = true;
        out.shortened = true;
      }
    }
  }
  std::erase_if(pieces, [](const Piece& p) { return p.text.empty(); });
  splitJoinedPieces(pieces);

  // Which pieces pair as a family name and its given names: the reading that
  // makes the most sense of the whole list, so that one broken name ("Lee,
  // A., Bla ,arh, Bootzin, R. R.") does not shift every name after it.
  const size_t count = pieces.size();
  std::vector<int> best(count + 1, 0);
  std::vector<size_t> taken(count + 1, 1);  // pieces the best reading from here takes first
  auto pairLength = [&](size_t i) -> size_t {
    if (i + 1 >= count || pieces[i + 1].joined) return 0;
    std::string family = pieces[i].text, given = pieces[i + 1].text;
    takeRole(family);
    takeRole(given);
    if (isGroupToken(family) || !isGivenPart(given)) return 0;
    return i + 2 < count && isSuffix(pieces[i + 2].text) ? 3 : 2;
  };
  for (size_t i = count; i-- > 0;) {
    const int familyScore = looksLikeInitials(pieces[i].text) ? -4 : 0;
    best[i] = familyScore + best[i + 1];
    taken[i] = 1;
    if (const size_t length = pairLength(i); length > 0) {
      const int pairScore = familyScore + (hasWrittenOutGivenName(pieces[i + 1].text) ? 2 : 3) + best[i + length];
      if (pairScore >= best[i]) {
        best[i] = pairScore;
        taken[i] = length;
      }
    }
  }
  std::vector<PersonName> names;
  bool persons = false;
  for (size_t i = 0; i < count; i += taken[i]) {
    PersonName n;
    n.family = pieces[i].text;
    n.role = takeRole(n.family);
    if (taken[i] > 1) {
      std::string given = pieces[i + 1].text;
      if (const std::string role = takeRole(given); !role.empty()) n.role = role;
      n.given = given;
      if (taken[i] == 3) n.given += ", " + pieces[i + 2].text;
      persons = true;
    }
    names.push_back(std::move(n));
  }
  // A list of groups alone is one group whose name holds commas ("United
  // Nations, General Assembly"), unless an "&" joins its names.
  if (!persons && names.size() > 1 && !str().contains(text, "&") && !out.shortened) {
    PersonName group;
    group.family = text;
    names = {group};
  }
  if (!names.empty() && names.back().given.empty() && names.back().role.empty()) dropClosingStop(names.back().family);
  out.names = std::move(names);
  return out;
}

bool hasWrittenOutGivenName(std::string_view given) {
  for (const std::string& w : str().split(str().trimmed(given), " ", -1))
    if (!w.empty() && !isInitial(w) && !isLowerStart(w) && !isSuffix(w) && w != ",") return true;
  return false;
}

std::string formatNames(const NameList& list, const AuthorStyle& style) {
  auto one = [&](const PersonName& n) {
    std::string given = style.initialsOnly && hasWrittenOutGivenName(n.given) ? initialsOf(n.given) : n.given;
    std::string s = given.empty() ? n.family : n.family + ", " + given;
    if (!n.role.empty()) s += " (" + n.role + ")";
    return s;
  };
  const std::vector<PersonName>& names = list.names;
  if (names.empty()) return {};
  std::vector<std::string> shown;
  if (list.etAl) {
    for (const PersonName& n : names) shown.push_back(one(n));
    return str().join(shown, ", ") + ", et al.";
  }
  if (names.size() == 1) return one(names[0]);
  const bool shorten = (static_cast<int>(names.size()) >= style.etAlFrom || list.shortened) && style.ellipsis;
  if (shorten) {
    const size_t first = std::min(names.size() - 1, static_cast<size_t>(std::max(1, style.etAlShown - 1)));
    for (size_t k = 0; k < first; ++k) shown.push_back(one(names[k]));
    return str().join(shown, ", ") + ", \u2026 " + one(names.back());
  }
  for (size_t k = 0; k + 1 < names.size(); ++k) shown.push_back(one(names[k]));
  // APA 6: a comma before the "&" even for two names.
  return str().join(shown, ", ") + ", " + style.andSeparator + " " + one(names.back());
}

std::string initialsOf(std::string_view given) {
  // A suffix after the given names stays as it is: "Martin L., Jr." is "M. L., Jr.".
  if (const size_t comma = given.rfind(", "); comma != std::string_view::npos && isSuffix(given.substr(comma + 2)))
    return initialsOf(given.substr(0, comma)) + std::string(given.substr(comma));
  std::string out;
  for (const std::string& word : str().split(str().trimmed(given), " ", -1)) {
    if (word.empty()) continue;
    if (isInitial(word) || std::islower(static_cast<unsigned char>(word[0]))) {
      out += (out.empty() ? "" : " ") + word;
      continue;
    }
    std::string initials;
    for (const std::string& part : str().split(word, "-", -1))
      if (!part.empty()) initials += (initials.empty() ? "" : "-") + str().left(part, 1) + ".";
    out += (out.empty() ? "" : " ") + initials;
  }
  return out;
}

std::vector<PersonName> parseGivenFirstNames(std::string_view list) {
  std::vector<PersonName> names;
  std::string text(list);
  for (std::string_view and_ : {", & ", " & ", ", and ", " and "}) {
    for (size_t at = text.find(and_); at != std::string::npos; at = text.find(and_)) text.replace(at, and_.size(), ", ");
  }
  size_t start = 0;
  while (start <= text.size()) {
    size_t end = text.find(", ", start);
    if (end == std::string::npos) end = text.size();
    std::string_view name = std::string_view(text).substr(start, end - start);
    while (!name.empty() && name.front() == ' ') name.remove_prefix(1);
    while (!name.empty() && name.back() == ' ') name.remove_suffix(1);
    if (!name.empty()) {
      // The given names are the initials (or the words) before the last
      // word that is not an initial; a particle ("Van", "de") joins the family.
      PersonName p;
      size_t familyAt = 0;
      for (size_t i = 0; i < name.size();) {
        size_t next = name.find(' ', i);
        if (next == std::string_view::npos) next = name.size();
        const std::string_view word = name.substr(i, next - i);
        // "A.", "J.-P.", "Th.": short, closed by a full stop.
        const bool initial = word.size() <= 6 && word.back() == '.' && word.front() >= 'A' && word.front() <= 'Z' &&
                             word.find(' ') == std::string_view::npos;
        if (!initial) {
          familyAt = i;
          break;
        }
        i = next + 1;
        familyAt = i;
      }
      p.family = std::string(name.substr(std::min(familyAt, name.size())));
      std::string_view given = name.substr(0, std::min(familyAt, name.size()));
      while (!given.empty() && given.back() == ' ') given.remove_suffix(1);
      p.given = std::string(given);
      if (p.family.empty()) std::swap(p.family, p.given);
      names.push_back(std::move(p));
    }
    start = end + 2;
  }
  return names;
}

void elidedNames(const NameList& list, const AuthorStyle& style, Rewrites& rewrites) {
  const int n = static_cast<int>(list.names.size());
  if (n < style.etAlFrom || !style.ellipsis) return;
  rewrites.mayLose.push_back("&");  // the ellipsis stands where "&" was
  for (int k = std::max(1, style.etAlShown - 1); k < n - 1; ++k) {
    rewrites.mayLose.push_back(list.names[static_cast<size_t>(k)].family);
    rewrites.mayLose.push_back(list.names[static_cast<size_t>(k)].given);
  }
}

}  // namespace quillpaper
