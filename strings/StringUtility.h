#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace QuillStrings {

// Where textLessPhrase takes the phrase off.
enum class PhrasePlace { Leading, Trailing, Anywhere };

// The string operations the formatting library is built from. Text is UTF-8;
// tests are case-sensitive and search from the first character unless a start
// is given; positions are 1-based character positions, 0 meaning "not found".
// Lengths and case changes count characters, not bytes.
class StringUtility {
 public:
  // ---- tests
  bool beginsWith(std::string_view text, std::string_view prefix) const noexcept;
  bool endsWith(std::string_view text, std::string_view suffix) const noexcept;
  bool contains(std::string_view text, std::string_view part) const noexcept;
  // Where `part` last stands in `text`, starting at or before `before`, as
  // std::string_view::rfind answers (npos when nowhere), found by the first
  // character's last places instead of a comparison at every position.
  size_t lastIndexOf(std::string_view text, std::string_view part,
                     size_t before = std::string_view::npos) const noexcept;
  // How many times `part` stands in `text`, without overlaps.
  size_t occurrences(std::string_view text, std::string_view part) const noexcept;
  // Whether `part` occurs at or after character position `start` (1-based).
  bool containsFrom(std::string_view text, std::string_view part, int32_t start) const noexcept;
  // The character position of the first `part` at or after `start`, or 0.
  int32_t find(std::string_view text, std::string_view part, int32_t start = 1) const noexcept;
  bool isBlank(std::string_view text) const noexcept;
  bool isDigit(char32_t c) const noexcept { return c >= '0' && c <= '9'; }
  // Equal when both are lower-cased.
  bool equalsIgnoreCase(std::string_view a, std::string_view b) const;

  // ---- consuming: each changes `text` and says whether it found what it takes off
  // Removes `prefix` from the front when it is there.
  bool stripLeading(std::string& text, std::string_view prefix) const;
  // Removes `suffix` from the end when it is there.
  bool stripTrailing(std::string& text, std::string_view suffix) const;
  // Keeps what stands before the first `marker` (all of it when absent); with
  // `trim`, surrounding blanks of what is kept go too.
  void cutAtMarker(std::string& text, std::string_view marker, bool trim = true) const;
  // Keeps what follows the first `marker`; unchanged and false when absent.
  bool dropThroughMarker(std::string& text, std::string_view marker) const;
  // Removes every leading / trailing character that occurs in `chars`; with
  // `alsoBlanks`, blanks go too.
  void trimLeading(std::string& text, std::string_view chars, bool alsoBlanks = false) const;
  void trimTrailing(std::string& text, std::string_view chars, bool alsoBlanks = false) const;
  // Removes the first occurrence of `part`.
  bool removeText(std::string& text, std::string_view part) const;
  // Removes the bracketed group that begins with `marker` ("[Abstract" takes
  // "[Abstract]" or "[Abstract of a thesis]") through its closing "]"; with
  // `whole`, also one blank beside it so that no double blank is left.
  bool removeBracketedMarker(std::string& text, std::string_view marker, bool whole = true) const;

  // ---- pure
  // Without surrounding blanks (space, tab, CR, LF, no-break space).
  std::string trimmed(std::string_view text) const;
  // The text with `phrase` taken off at the given place (once).
  std::string textLessPhrase(std::string_view text, std::string_view phrase,
                             PhrasePlace place = PhrasePlace::Leading) const;
  // Split at `separator`. limit -1: at every occurrence. limit n > 0: at most
  // n pieces, the last holding the rest; with limit 2 there are always two
  // pieces, the second empty when the separator is absent.
  std::vector<std::string> split(std::string_view text, std::string_view separator,
                                 int32_t limit = -1) const;
  std::string join(const std::vector<std::string>& parts, std::string_view separator) const;

  // ---- characters
  int32_t length(std::string_view text) const noexcept;
  std::string upper(std::string_view text) const;
  std::string lower(std::string_view text) const;
  // The first `n` characters / the characters from position `start` (1-based).
  std::string left(std::string_view text, int32_t n) const;
  std::string mid(std::string_view text, int32_t start, int32_t n = -1) const;
  // Whether `text` is well-formed UTF-8.
  bool isValidUtf8(std::string_view text) const noexcept;

  // ---- values
  // The texts of a list of values: booleans as "True"/"False", numbers in
  // decimal, strings as they are.
  template <class... T>
  std::vector<std::string> toStringArray(const T&... values) const {
    std::vector<std::string> out;
    out.reserve(sizeof...(T));
    (out.push_back(textOf(values)), ...);
    return out;
  }

 private:
  static std::string textOf(bool b) { return b ? "True" : "False"; }
  template <class N>
  static std::enable_if_t<std::is_integral_v<N> && !std::is_same_v<N, bool>, std::string> textOf(N n) {
    return std::to_string(n);
  }
  static std::string textOf(std::string_view s) { return std::string(s); }
  static std::string textOf(const std::string& s) { return s; }
  static std::string textOf(const char* s) { return s; }
};

// The one instance, made on first use and kept for the life of the process.
const StringUtility& strings();

// UTF-8 decoding helpers shared by the string operations.
namespace utf8 {
// A byte that is not part of a well-formed character decodes as itself with
// this bit set, so that re-encoding gives back exactly the bytes that came in.
constexpr char32_t kRawByte = 0x80000000u;
// Decodes the character at byte offset `i`, advancing `i`.
char32_t next(std::string_view s, size_t& i) noexcept;
void append(std::string& out, char32_t c);
char32_t toUpper(char32_t c) noexcept;
char32_t toLower(char32_t c) noexcept;
}  // namespace utf8

}  // namespace QuillStrings
