#include "quillpaper/references/WordAudit.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <unordered_map>

#include "strings/StringUtility.h"

namespace quillpaper {

namespace {

namespace utf8 = QuillStrings::utf8;
const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }

// Punctuation and symbols beyond ASCII end a word as a comma does: quotation
// marks, dashes, the ellipsis, guillemets, arrows, CJK punctuation.
inline bool isWordChar(char32_t c) {
  if (c < 0x80) return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
  if (c & utf8::kRawByte) return true;
  if (c >= 0xA0 && c <= 0xBF) return false;
  if (c == 0xD7 || c == 0xF7) return false;
  if (c >= 0x2000 && c <= 0x2BFF) return false;
  if (c >= 0x3000 && c <= 0x303F) return false;
  if (c >= 0xFE30 && c <= 0xFE4F) return false;
  if (c >= 0xFF00 && c <= 0xFF0F) return false;
  return true;
}

bool startsWithNoCase(std::string_view text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (size_t i = 0; i < prefix.size(); ++i)
    if (std::tolower(static_cast<unsigned char>(text[i])) != prefix[i]) return false;
  return true;
}

// Where a web address or DOI begins, and how much of its front is the DOI
// prefix ("https://doi.org/", "doi: "), or npos when it is not a DOI.
struct LinkStart {
  bool isLink = false;
  size_t doiPrefix = std::string_view::npos;
};

LinkStart linkAt(std::string_view rest) {
  for (std::string_view doi : {"https://doi.org/", "http://doi.org/", "https://dx.doi.org/", "http://dx.doi.org/"})
    if (startsWithNoCase(rest, doi)) return {true, doi.size()};
  if (startsWithNoCase(rest, "doi:")) {
    size_t n = 4;
    while (n < rest.size() && rest[n] == ' ') ++n;
    return {true, n};
  }
  for (std::string_view scheme : {"http://", "https://", "ftp://", "www."})
    if (startsWithNoCase(rest, scheme)) return {true, std::string_view::npos};
  // A bare DOI: "10.1037/a0012345".
  if (rest.starts_with("10.") && rest.size() > 8 && std::isdigit(static_cast<unsigned char>(rest[3]))) {
    const size_t slash = rest.find('/');
    const size_t blank = rest.find(' ');
    if (slash != std::string_view::npos && slash < blank && slash >= 7) return {true, 0};
  }
  return {};
}

// A word in lower case; ASCII ones without the full case tables.
std::string lowerWord(std::string_view word) {
  if (std::all_of(word.begin(), word.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
    std::string out(word);
    for (char& c : out)
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return out;
  }
  return str().lower(word);
}

// The character at `i` (advancing `i`): an ASCII one at once, others as the
// library reads UTF-8.
char32_t nextChar(std::string_view text, size_t& i) {
  const unsigned char c = static_cast<unsigned char>(text[i]);
  if (c < 0x80) {
    ++i;
    return c;
  }
  return utf8::next(text, i);
}

struct Token {
  std::string word;
  bool period = false;  // a full stop follows it directly
};

std::vector<Token> tokenize(std::string_view text) {
  std::vector<Token> tokens;
  size_t i = 0;
  while (i < text.size()) {
    // Only a word that starts as an address or a DOI does can be one.
    const char first = static_cast<char>(std::tolower(static_cast<unsigned char>(text[i])));
    const bool canStartLink = first == 'h' || first == 'w' || first == 'd' || first == 'f' || first == '1';
    const LinkStart link =
        canStartLink && (i == 0 || text[i - 1] == ' ' || text[i - 1] == '(' || text[i - 1] == '<')
            ? linkAt(text.substr(i))
            : LinkStart{};
    if (link.isLink) {
      size_t end = i + (link.doiPrefix == std::string_view::npos ? 0 : link.doiPrefix);
      while (end < text.size() && static_cast<unsigned char>(text[end]) > ' ') ++end;
      std::string_view address = text.substr(i, end - i);
      while (!address.empty() && std::string_view(".,;:)]>").find(address.back()) != std::string_view::npos)
        address.remove_suffix(1);
      std::string word;
      if (link.doiPrefix != std::string_view::npos)
        word = "doi:" + str().lower(str().trimmed(address.substr(std::min(link.doiPrefix, address.size()))));
      else
        word = std::string(address);
      tokens.push_back({std::move(word), false});
      i = end;
      continue;
    }
    if (text[i] == '&') {
      tokens.push_back({"and", false});
      ++i;
      continue;
    }
    size_t j = i;
    const char32_t c = nextChar(text, j);
    if (!isWordChar(c)) {
      i = j;
      continue;
    }
    size_t end = j;
    while (end < text.size()) {
      const unsigned char d = static_cast<unsigned char>(text[end]);
      if (d < 0x80) {
        if (!isWordChar(d)) break;
        ++end;
        continue;
      }
      size_t k = end;
      if (!isWordChar(utf8::next(text, k))) break;
      end = k;
    }
    tokens.push_back({lowerWord(text.substr(i, end - i)), end < text.size() && text[end] == '.'});
    i = end;
  }
  return tokens;
}

// Labels APA writes or drops as it sees fit: abbreviations closed by a full
// stop, and words that are labels wherever they stand.
bool isAbbreviation(std::string_view w) {
  static constexpr std::array<std::string_view, 14> kAbbreviations = {
      "vol", "vols", "no", "nos", "pp", "p", "iss", "ed", "eds", "edn", "trans", "comp", "comps", "rev"};
  return std::find(kAbbreviations.begin(), kAbbreviations.end(), w) != kAbbreviations.end();
}
bool isAbbreviatedLabel(const Token& t) { return t.period && isAbbreviation(t.word); }

bool isLabelWord(std::string_view w) {
  return w == "edition" || w == "volume" || w == "retrieved" || w == "accessed" || w == "viewed" || w == "url";
}


// Whether `w` may stand in a retrieval date: "May 5, 2010", "2010-05-05".
bool isDateWord(std::string_view w) {
  if (!w.empty() && std::all_of(w.begin(), w.end(), [](char c) { return std::isdigit(static_cast<unsigned char>(c)); }))
    return true;
  static constexpr std::array<std::string_view, 24> kMonths = {
      "january", "february", "march", "april", "may", "june", "july", "august", "september", "october", "november",
      "december", "jan", "feb", "mar", "apr", "jun", "jul", "aug", "sep", "sept", "oct", "nov", "dec"};
  return std::find(kMonths.begin(), kMonths.end(), w) != kMonths.end() || w == "on";
}

// The descriptions APA writes in brackets after an article's title, or
// leaves out where the retrieval statement says it ("[Abstract]"), or
// rewrites ("[Supplement]" as "[Supplemental material]").
std::string withoutDescriptionLabels(std::string_view text) {
  static constexpr std::array<std::string_view, 20> kLabels = {
      "[abstract]", "[supplement]", "[supplemental material]", "[editorial]", "[monograph]", "[special issue]",
      "[special section]",
      // The electronic sources' descriptions, as each edition writes them.
      "[web log post]", "[web log comment]", "[online forum comment]", "[online forum post]", "[video file]",
      "[video]", "[electronic mailing list message]", "[comment]", "[blog post]", "[audio podcast]", "[podcast]",
      "[motion picture]", "[film]"};
  std::string out;
  size_t i = 0;
  while (i < text.size()) {
    bool label = false;
    if (text[i] == '[') {
      for (std::string_view l : kLabels)
        if (startsWithNoCase(text.substr(i), l)) {
          i += l.size();
          label = true;
          break;
        }
    }
    if (!label) out += text[i++];
  }
  return out;
}

// Whether `text` ends with `tail`, letters in any case, blanks after it aside.
bool closedBy(std::string_view text, std::string_view tail) {
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.remove_suffix(1);
  if (text.size() < tail.size()) return false;
  const std::string_view end = text.substr(text.size() - tail.size());
  return std::equal(end.begin(), end.end(), tail.begin(), [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
  });
}

std::vector<std::string> readWords(std::string_view text) {
  const std::vector<Token> tokens = tokenize(withoutDescriptionLabels(text));
  std::vector<std::string> words;
  words.reserve(tokens.size());
  for (size_t k = 0; k < tokens.size(); ++k) {
    const std::string& w = tokens[k].word;
    // The full stop that closes the entry makes no abbreviation of its last
    // word: "… A. D. Edn" written "… A. D. Edn." keeps its word.
    const bool last = k + 1 == tokens.size() && closedBy(text, w + ".");
    if ((isAbbreviatedLabel(tokens[k]) && !last) || isLabelWord(w)) {
      // "Retrieved May 5, 2010, from": the "from" of the label goes with it.
      if (w == "retrieved" || w == "accessed" || w == "viewed") {
        size_t j = k + 1;
        while (j < tokens.size() && j < k + 5 && isDateWord(tokens[j].word)) ++j;
        if (j < tokens.size() && tokens[j].word == "from") {
          for (size_t d = k + 1; d < j; ++d) words.push_back(tokens[d].word);
          k = j;
        }
      }
      continue;
    }
    if (w == "available" && k + 1 < tokens.size()) {
      const std::string& next = tokens[k + 1].word;
      if (next == "at" || next == "from" || next == "online" || next == "via") {
        ++k;
        continue;
      }
    }
    words.push_back(ordinalOf(w));
  }
  return words;
}

// The words of a text, as the audit reads them. The audit and the check of
// the words' order read the same entry and its APA form, so the last few
// texts read on this thread are kept with their words.
using Words = std::shared_ptr<const std::vector<std::string>>;
Words wordsOf(std::string_view text) {
  struct Kept {
    std::string text;
    Words words;
  };
  static constexpr size_t kKept = 4;
  thread_local std::array<Kept, kKept> kept;
  thread_local size_t next = 0;
  for (const Kept& k : kept)
    if (k.words && k.text == text) return k.words;
  Kept& slot = kept[next];
  next = (next + 1) % kKept;
  slot.words.reset();
  slot.text.assign(text);
  slot.words = std::make_shared<const std::vector<std::string>>(readWords(text));
  return slot.words;
}

using Counts = std::unordered_map<std::string, int>;

// The words of a list, sorted, as views of it.
std::vector<std::string_view> sorted(const std::vector<std::string>& words) {
  std::vector<std::string_view> out(words.begin(), words.end());
  std::sort(out.begin(), out.end());
  return out;
}

// What `a` has more of than `b` (both sorted), in the order of `order`:
// each word as many times as it is in excess.
std::vector<std::string> excess(const std::vector<std::string_view>& a, const std::vector<std::string_view>& b,
                                const std::vector<std::string>& order) {
  std::vector<std::string_view> more;
  std::set_difference(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(more));
  if (more.empty()) return {};
  std::unordered_map<std::string_view, int> left;
  for (std::string_view w : more) ++left[w];
  std::vector<std::string> out;
  for (const std::string& w : order) {
    const auto it = left.find(w);
    if (it == left.end() || it->second == 0) continue;
    out.push_back(w);
    --it->second;
  }
  return out;
}

void forgive(std::vector<std::string>& changed, const std::vector<std::string>& allowed) {
  if (changed.empty() || allowed.empty()) return;
  Counts budget;
  for (const std::string& a : allowed)
    for (std::string& w : readWords(a)) ++budget[std::move(w)];
  std::erase_if(changed, [&](const std::string& w) {
    const auto it = budget.find(w);
    if (it == budget.end() || it->second == 0) return false;
    --it->second;
    return true;
  });
}

// Punctuation that only a faulty join writes: a separator after a separator,
// an empty pair of brackets, a label that lost its full stop ("pp, 81").
std::vector<std::string> brokenPunctuation(std::string_view text) {
  std::string t;
  t.reserve(text.size());
  // An ellipsis is no doubled full stop.
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '.') {
      t += text[i];
    } else if (text.substr(i).starts_with(". . .")) {
      t += "\u2026";
      i += 4;
    } else if (text.substr(i).starts_with("...")) {
      t += "\u2026";
      i += 2;
    } else {
      t += text[i];
    }
  }
  std::vector<std::string> found;
  for (std::string_view p : {". ,", ", ,", ",,", ", .", ",.", ". :", ", :", ", ;", ":.", ": .", ". .", "..", "()", "( )", "[]", "[ ]"}) {
    for (size_t at = t.find(p); at != std::string::npos; at = t.find(p, at + 1)) found.emplace_back(p);
  }
  // A bracket or parenthesis opened and not closed, or closed and not opened.
  for (const auto& [open, close] : {std::pair{'[', ']'}, std::pair{'(', ')'}}) {
    int depth = 0;
    bool stray = false;
    for (char c : t) {
      if (c == open) ++depth;
      if (c == close && --depth < 0) stray = true, depth = 0;
    }
    if (depth > 0 || stray) found.push_back(std::string(1, open) + " without its " + close);
  }
  // The same of a double quotation mark.
  if (str().occurrences(t, "\u201c") != str().occurrences(t, "\u201d")) found.emplace_back("\u201c without its \u201d");
  // "&" joins names; before a number ("65, & 1190–1204") it joins nothing.
  for (size_t at = t.find("& "); at != std::string::npos; at = t.find("& ", at + 1))
    if (at + 2 < t.size() && std::isdigit(static_cast<unsigned char>(t[at + 2]))) found.emplace_back("& before a number");
  const std::vector<Token> tokens = tokenize(t);
  for (const Token& token : tokens) {
    if (!token.period && isAbbreviation(token.word) && token.word.size() > 1 && token.word != "no" &&
        token.word != "ed" && token.word != "rev")
      found.push_back(token.word + " without its full stop");
  }
  return found;
}

}  // namespace

std::string ordinalOf(std::string_view w) {
  static constexpr std::array<std::string_view, 10> kOrdinals = {"first",   "second", "third",  "fourth", "fifth",
                                                                 "sixth",   "seventh", "eighth", "ninth", "tenth"};
  static constexpr std::array<std::string_view, 10> kNumbered = {"1st", "2nd", "3rd", "4th", "5th",
                                                                 "6th", "7th", "8th", "9th", "10th"};
  for (size_t k = 0; k < kOrdinals.size(); ++k)
    if (w == kOrdinals[k]) return std::string(kNumbered[k]);
  return std::string(w);
}

std::vector<std::string> comparableWords(std::string_view text) { return readWords(text); }

WordAudit auditWords(std::string_view typed, std::string_view written, const Rewrites& rewrites) {
  WordAudit audit;
  const Words typedWords = wordsOf(typed), writtenWords = wordsOf(written);
  const std::vector<std::string>& before = *typedWords;
  const std::vector<std::string>& after = *writtenWords;
  const std::vector<std::string_view> a = sorted(before);
  const std::vector<std::string_view> b = sorted(after);
  audit.lost = excess(a, b, before);
  audit.added = excess(b, a, after);
  forgive(audit.lost, rewrites.mayLose);
  forgive(audit.added, rewrites.mayAdd);
  // "In" before the editors of a book, and "n.d." for a work without a date.
  std::erase_if(audit.added, [](const std::string& w) { return w == "in"; });
  const std::vector<std::string> brokenAfter = brokenPunctuation(written);
  if (!brokenAfter.empty()) {
    const std::vector<std::string> brokenBefore = brokenPunctuation(typed);
    audit.damaged = excess(sorted(brokenAfter), sorted(brokenBefore), brokenAfter);
  }
  // A question or an exclamation stays one ("What are they?" is no "What are they.").
  for (std::string_view mark : {"?", "!"})
    if (str().occurrences(written, mark) < str().occurrences(typed, mark))
      audit.damaged.push_back(std::string(mark) + " left out");
  return audit;
}

// A typed word's initials as APA writes a given name ("david" "d",
// "chik-wai" "c-w"), and a written word without its full stops ("c.-w."
// "c-w"): a written word matches a typed one when it is the same or, shorter,
// its initials.
std::string typedInitials(const std::string& typed) {
  std::string initials;
  bool start = true;
  for (char c : typed) {
    if (c == '-') initials += '-';
    else if (start) initials += c;
    start = c == '-';
  }
  return initials;
}

std::string withoutStops(const std::string& written) {
  std::string letters;
  for (char c : written)
    if (c != '.') letters += c;
  return letters;
}

bool keepsWordOrder(std::string_view typed, std::string_view written, size_t slack) {
  const Words typedWords = wordsOf(typed), writtenWords = wordsOf(written);
  const std::vector<std::string>& a = *typedWords;
  const std::vector<std::string>& b = *writtenWords;
  std::vector<std::string> initials(a.size()), letters(b.size());
  std::transform(a.begin(), a.end(), initials.begin(), typedInitials);
  std::transform(b.begin(), b.end(), letters.begin(), withoutStops);
  // Most words differ in their first letter: that is looked at before the rest.
  const auto equal = [](const std::string& x, const std::string& y) {
    return x.size() == y.size() && (x.empty() || x[0] == y[0]) && x == y;
  };
  const auto same = [&](size_t i, size_t j) {
    return equal(a[i], b[j]) ||
           (a[i].size() > letters[j].size() && !letters[j].empty() && equal(letters[j], initials[i]));
  };
  // The longest common subsequence of the two word sequences. Words the
  // written form leaves out are the audit's to judge (the 7th edition leaves
  // out a publisher's place); here only the order of those it keeps counts.
  std::vector<size_t> row(b.size() + 1, 0), next(b.size() + 1, 0);
  size_t kept = 0;
  for (size_t i = 0; i < a.size(); ++i) {
    bool isKept = false;
    for (size_t j = 0; j < b.size(); ++j) {
      const bool match = same(i, j);
      isKept = isKept || match;
      next[j + 1] = match ? row[j] + 1 : std::max(row[j + 1], next[j]);
    }
    kept += isKept;
    std::swap(row, next);
  }
  return row[b.size()] + slack >= kept;
}

std::string WordAudit::reason() const {
  auto list = [](const std::vector<std::string>& words) {
    std::string out;
    const size_t shown = std::min<size_t>(words.size(), 5);
    for (size_t k = 0; k < shown; ++k) out += (k ? ", \"" : "\"") + words[k] + "\"";
    if (words.size() > shown) out += " and " + std::to_string(words.size() - shown) + " more";
    return out;
  };
  std::string out;
  if (!lost.empty()) out += "the APA form would lose " + list(lost);
  if (!added.empty()) out += std::string(out.empty() ? "the APA form would add " : "; it would add ") + list(added);
  if (!damaged.empty()) out += std::string(out.empty() ? "the APA form would break " : "; it would break ") + list(damaged);
  return out;
}

}  // namespace quillpaper
