#include "quillpaper/AuthorNames.h"

#include <algorithm>
#include <cctype>

#include "strings/StringUtility.h"

namespace quillpaper {

namespace {

const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }

bool isUpperStart(std::string_view w) {
  if (w.empty()) return false;
  const unsigned char c = static_cast<unsigned char>(w[0]);
  if (c >= 0x80) return str().upper(w.substr(0, 2)) == w.substr(0, 2);  // a capital beyond ASCII
  return std::isupper(c) != 0;
}

// "M.", "C.-R.", "Th.", "J.-P.": an initial as APA writes it.
bool isInitial(std::string_view w) {
  if (w.size() < 2 || w.back() != '.' || !isUpperStart(w)) return false;
  for (std::string_view part : str().split(w, "-", -1)) {
    if (part.empty() || part.back() != '.' || !isUpperStart(part) || str().length(part) > 4) return false;
  }
  return true;
}

// What follows a family name: initials, perhaps with particles or a suffix
// ("K. van der", "J., Jr.").
bool isGivenPart(std::string_view token) {
  const std::vector<std::string> words = str().split(str().trimmed(token), " ", -1);
  if (words.empty() || !isInitial(words[0])) return false;
  for (const std::string& w : words)
    if (w.empty() || (!isInitial(w) && !std::islower(static_cast<unsigned char>(w[0])))) return false;
  return true;
}

bool isSuffix(std::string_view token) {
  const std::string t = str().trimmed(token);
  return t == "Jr." || t == "Sr." || t == "II" || t == "III" || t == "IV" || t == "II." || t == "III." || t == "IV.";
}

}  // namespace

std::vector<PersonName> parseNames(std::string_view list, bool* shortened) {
  if (shortened) *shortened = false;
  std::string text = str().trimmed(list);
  // ", & " and " & " both introduce the last name.
  std::string joined;
  for (size_t i = 0; i < text.size();) {
    if (text.compare(i, 4, ", & ") == 0) {
      joined += ", ";
      i += 4;
    } else if (text.compare(i, 3, " & ") == 0) {
      joined += ", ";
      i += 3;
    } else {
      joined += text[i++];
    }
  }
  std::vector<std::string> tokens;
  for (std::string t : str().split(joined, ", ", -1)) {
    t = str().trimmed(t);
    // The ellipsis of a shortened list stands before the last name.
    const bool ellipsis = str().beginsWith(t, ". . .") || str().beginsWith(t, "\u2026");
    if (ellipsis) {
      t = str().trimmed(t.substr(str().beginsWith(t, ". . .") ? 5 : 3));
      if (shortened) *shortened = true;
    }
    if (!t.empty()) tokens.push_back(t);
  }
  std::vector<PersonName> names;
  for (size_t i = 0; i < tokens.size(); ++i) {
    PersonName n;
    n.family = tokens[i];
    if (i + 1 < tokens.size() && isGivenPart(tokens[i + 1])) {
      n.given = tokens[++i];
      if (i + 1 < tokens.size() && isSuffix(tokens[i + 1])) n.given += ", " + tokens[++i];
    }
    names.push_back(std::move(n));
  }
  // A group's closing full stop belongs to the list, not to the name.
  if (!names.empty() && names.back().given.empty()) {
    std::string& last = names.back().family;
    const std::vector<std::string> words = str().split(last, " ", -1);
    if (str().endsWith(last, ".") && !isInitial(words.back())) last.pop_back();
  }
  return names;
}

std::string formatNames(const std::vector<PersonName>& names, const AuthorStyle& style, bool shortened) {
  auto one = [](const PersonName& n) { return n.given.empty() ? n.family : n.family + ", " + n.given; };
  if (names.empty()) return {};
  if (names.size() == 1) return one(names[0]);
  std::vector<std::string> shown;
  const bool shorten = (static_cast<int>(names.size()) >= style.etAlFrom || shortened) && style.ellipsis;
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

}  // namespace quillpaper
