#include "quillpaper/TableMarkup.h"

#include <array>
#include <cctype>

namespace quillpaper {

namespace {

// Symbols APA sets in italics when they stand alone.
constexpr std::array kStatisticalSymbols = {"p", "n", "N", "F", "t", "r", "R", "M", "S", "B", "d", "df", "SE", "SD", "z"};

bool isStatisticalSymbol(std::string_view s) {
  for (std::string_view symbol : kStatisticalSymbols)
    if (s == symbol) return true;
  return false;
}

// What stands after a "|" and is raised: note letters, stars, digits, the dagger.
bool isRaised(std::string_view s) {
  if (s.empty() || s == "_dagger_") return !s.empty();
  if (s.find_first_not_of('*') == std::string_view::npos) return true;
  if (s.find_first_not_of("0123456789") == std::string_view::npos) return true;
  return s.size() == 1 && std::islower(static_cast<unsigned char>(s[0])) && !isStatisticalSymbol(s);
}

void add(std::vector<StyledRun>& runs, std::string text, bool italic = false, bool superscript = false,
         bool subscript = false) {
  if (text.empty()) return;
  if (!runs.empty() && runs.back().italic == italic && runs.back().superscript == superscript &&
      runs.back().subscript == subscript) {
    runs.back().text += text;
    return;
  }
  runs.push_back({std::move(text), italic, superscript, subscript});
}

// Marker words inside a plain run.
bool isLetter(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; }

// Plain table text as APA sets it: a statistical symbol standing as a word
// in italics ("Students (n = 200)", "Model 1 B"); a true minus sign before a
// negative number ("−.09"), "×" between the factors of an interaction
// ("A × S"), an em dash for "--".
void addPlain(std::vector<StyledRun>& runs, std::string_view text, bool italic) {
  if (italic) return add(runs, std::string(text), true);
  std::string pending;
  size_t i = 0;
  while (i < text.size()) {
    const bool wordStart = i == 0 || !isLetter(text[i - 1]);
    if (text.substr(i).starts_with("--")) {
      pending += "\u2014";
      i += 2;
      continue;
    }
    const bool numberAfter = i + 1 < text.size() && (std::isdigit(static_cast<unsigned char>(text[i + 1])) ||
                                                     (text[i + 1] == '.' && i + 2 < text.size() &&
                                                      std::isdigit(static_cast<unsigned char>(text[i + 2]))));
    if (text[i] == '-' && numberAfter && (i == 0 || text[i - 1] == ' ' || text[i - 1] == '(' || text[i - 1] == '[')) {
      pending += "\u2212";
      ++i;
      continue;
    }
    if (!wordStart || !isLetter(text[i])) {
      pending += text[i++];
      continue;
    }
    size_t end = i;
    while (end < text.size() && isLetter(text[end])) ++end;
    const std::string_view word = text.substr(i, end - i);
    const bool between = i >= 2 && text[i - 1] == ' ' && end + 1 < text.size() && text[end] == ' ' &&
                         text[i - 2] != ' ' && text[end + 1] != ' ';
    if ((word == "X" || word == "x") && between) {
      pending += "\u00d7";
    } else if (isStatisticalSymbol(word)) {
      add(runs, pending);
      pending.clear();
      add(runs, std::string(word), true);
    } else {
      pending += word;
    }
    i = end;
  }
  add(runs, pending);
}

void addWords(std::vector<StyledRun>& runs, std::string_view text, bool italic) {
  struct Word {
    std::string_view marker;
    std::string_view symbol;
    std::string_view subscriptText;
    bool raise2;
  };
  static const Word words[] = {
      {"chi_squared_diff", "χ", "diff", true}, {"chi_squared", "χ", "", true}, {"sigma_squared", "σ", "", true},
      {"delta_NFI", "ΔNFI", "", false},        {"delta_F", "Δ", "", false},    {"delta_", "Δ", "", false},
      {"_dagger_", "†", "", false},
  };
  size_t i = 0;
  std::string pending;
  while (i < text.size()) {
    const Word* found = nullptr;
    for (const Word& w : words)
      if (text.substr(i).starts_with(w.marker)) {
        found = &w;
        break;
      }
    if (!found) {
      pending += text[i++];
      continue;
    }
    addPlain(runs, pending, italic);
    pending.clear();
    i += found->marker.size();
    if (found->marker == "_dagger_") {
      add(runs, "†", false, true);
    } else if (found->marker == "delta_F") {
      add(runs, "Δ");
      add(runs, "F", true);
    } else {
      add(runs, std::string(found->symbol), italic);
    }
    if (found->raise2) add(runs, "2", false, true);
    if (!found->subscriptText.empty()) add(runs, std::string(found->subscriptText), false, false, true);
    if (found->marker == "sigma_squared") {
      // The subscript runs on to the closing parenthesis or the next blank.
      size_t end = i;
      while (end < text.size() && std::isalnum(static_cast<unsigned char>(text[end]))) ++end;
      add(runs, std::string(text.substr(i, end - i)), false, false, true);
      i = end;
    }
  }
  addPlain(runs, pending, italic);
}

// A plain run that precedes a raised one: a one-letter symbol at its end is italic.
void addBeforeRaised(std::vector<StyledRun>& runs, std::string_view text) {
  const size_t start = text.find_last_of(" _") == std::string_view::npos ? 0 : text.find_last_of(" _") + 1;
  const std::string_view last = text.substr(start);
  if (last.size() == 1 && isStatisticalSymbol(last)) {
    addWords(runs, text.substr(0, start), false);
    add(runs, std::string(last), true);
    return;
  }
  addWords(runs, text, false);
}

}  // namespace

std::vector<StyledRun> renderTableMarkup(std::string_view text) {
  std::vector<StyledRun> runs;
  // A cell that is just a statistical symbol, or "eta" / "beta" (Greek
  // letters are roman in APA's tables).
  if (text == "eta") return {{"η", false}};
  if (text == "beta") return {{"β", false}};
  if (isStatisticalSymbol(text)) return {{std::string(text), true}};

  std::vector<std::string_view> pieces;
  for (size_t start = 0;;) {
    const size_t bar = text.find('|', start);
    pieces.push_back(text.substr(start, bar == std::string_view::npos ? bar : bar - start));
    if (bar == std::string_view::npos) break;
    start = bar + 1;
  }
  for (size_t k = 0; k < pieces.size(); ++k) {
    const std::string_view piece = pieces[k];
    if (k % 2 == 1) {
      // A marked run: raised or italic.
      if (piece == "_dagger_")
        add(runs, "†", false, true);
      else if (isRaised(piece))
        add(runs, std::string(piece), false, true);
      else
        add(runs, std::string(piece), true);
      continue;
    }
    const bool beforeRaised = k + 1 < pieces.size() && isRaised(pieces[k + 1]);
    if (beforeRaised)
      addBeforeRaised(runs, piece);
    else
      addWords(runs, piece, false);
  }
  return runs;
}

std::string plainText(const std::vector<StyledRun>& runs) {
  std::string out;
  for (const StyledRun& r : runs) out += r.text;
  return out;
}

}  // namespace quillpaper
