#include <gtest/gtest.h>

#include "strings/StringUtility.h"

namespace QuillStrings {
namespace {

const StringUtility& s = strings();

// Catches byte counts where characters count, and case maps that skip non-ASCII letters.
TEST(StringUtilityTest, CharactersNotBytes) {
  EXPECT_EQ(s.length("Ünïcödé"), 7);
  EXPECT_EQ(s.upper("über straße ǆ"), "ÜBER STRAßE Ǆ");
  EXPECT_EQ(s.lower("ÀÉÎ ΣΑΣ Привет"), "àéî σασ привет");
  EXPECT_EQ(s.left("Ünïcödé", 3), "Ünï");
  EXPECT_EQ(s.mid("Ünïcödé", 5, 2), "öd");
  EXPECT_EQ(s.find("éa.b", "."), 3);
  EXPECT_TRUE(s.equalsIgnoreCase("Video File", "video file"));
}

// Catches malformed text being dropped or mangled by case changes.
TEST(StringUtilityTest, MalformedUtf8SurvivesUnchanged) {
  const std::string bad = "a\xff\xc3(b\xe2\x82";
  EXPECT_FALSE(s.isValidUtf8(bad));
  EXPECT_EQ(s.upper(bad), "A\xff\xc3(B\xe2\x82");
  EXPECT_EQ(s.length(bad), 7);
  EXPECT_TRUE(s.isValidUtf8("Ünï"));
}

// Each consuming operation: input, argument, expected text, expected answer.
TEST(StringUtilityTest, ConsumingOperations) {
  struct Row {
    const char* op;
    std::string text;
    std::string arg;
    std::string expected;
    bool answer;
  };
  const Row rows[] = {
      {"stripLeading", "(1999). Rest", "(", "1999). Rest", true},
      {"stripLeading", "1999", "(", "1999", false},
      {"stripTrailing", "Title.", ".", "Title", true},
      {"stripTrailing", "Title", "]", "Title", false},
      {"dropThroughMarker", "Smith, J. (2001). Title", ")", ". Title", true},
      {"dropThroughMarker", "no marker", ")", "no marker", false},
      {"cutAtMarker", "Text doi:10.1/x", "doi:", "Text", true},
      {"cutAtMarker", " nothing here ", "doi:", "nothing here", true},
      {"removeText", "A title. Journal", "A title", ". Journal", true},
      {"removeText", "A title", "", "A title", false},
      {"removeBracketedMarker", "Title [Abstract]. Journal", "[Abstract", "Title. Journal", true},
      {"removeBracketedMarker", "[Abstract of x] Title", "[Abstract", "Title", true},
      {"trimTrailing", "End...", ".", "End", true},
      // Characters beyond ASCII, trimmed or kept, and a broken one kept as it is.
      {"trimTrailing", "Title\u201d.\u201d", "\u201d.", "Title", true},
      {"trimTrailing", "Caf\u00e9..", ".", "Caf\u00e9", true},
      {"trimTrailing", "Caf\u00e9\u2026", "\u2026", "Caf\u00e9", true},
      {"trimTrailing", "Bad \xe2.", ".", "Bad \xe2", true},
      {"trimTrailing", "...", ".", "", true},
      {"trimLeading", "..Start", ".", "Start", true},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(std::string(r.op) + ": " + r.text);
    std::string t = r.text;
    bool answer = true;
    const std::string op = r.op;
    if (op == "stripLeading") answer = s.stripLeading(t, r.arg);
    else if (op == "stripTrailing") answer = s.stripTrailing(t, r.arg);
    else if (op == "dropThroughMarker") answer = s.dropThroughMarker(t, r.arg);
    else if (op == "cutAtMarker") s.cutAtMarker(t, r.arg);
    else if (op == "removeText") answer = s.removeText(t, r.arg);
    else if (op == "removeBracketedMarker") answer = s.removeBracketedMarker(t, r.arg);
    else if (op == "trimTrailing") s.trimTrailing(t, r.arg);
    else if (op == "trimLeading") s.trimLeading(t, r.arg);
    EXPECT_EQ(t, r.expected);
    EXPECT_EQ(answer, r.answer);
  }
}

// Catches a backward search that answers otherwise than std::string_view::rfind:
// every part and every starting point over texts with repeats, overlaps, the
// part at either end, and parts longer than the text.
TEST(StringUtilityTest, LastIndexOfAnswersAsRfind) {
  for (std::string_view text : {"", "a", "abab", "aaaa", "(Original work) (Original", "x. . y. . ", "caf\u00e9 caf\u00e9"})
    for (std::string_view part : {"", "a", "ab", "ba", "aa", "aaaaa", "(Original", ". ", "\u00e9", "caf\u00e9 c"})
      for (size_t before : {size_t{0}, size_t{1}, size_t{3}, size_t{7}, std::string_view::npos}) {
        SCOPED_TRACE(std::string(text) + " | " + std::string(part) + " | " + std::to_string(before));
        EXPECT_EQ(s.lastIndexOf(text, part, before), text.rfind(part, before));
      }
}

// Catches a split that drops the empty second piece callers rely on, or splits too often.
TEST(StringUtilityTest, SplitLimits) {
  using V = std::vector<std::string>;
  EXPECT_EQ(s.split("a)b)c", ")", 2), (V{"a", "b)c"}));
  EXPECT_EQ(s.split("abc", ")", 2), (V{"abc", ""}));
  EXPECT_EQ(s.split("a,b,,c", ",", -1), (V{"a", "b", "", "c"}));
  EXPECT_EQ(s.split("abc", ",", -1), (V{"abc"}));
  EXPECT_EQ(s.split("", ",", -1), (V{""}));
  EXPECT_EQ(s.split("a.b.c", ".", 3), (V{"a", "b", "c"}));
}

TEST(StringUtilityTest, TrimmingAndPhrases) {
  EXPECT_EQ(s.trimmed(" \t Title \r\n"), "Title");
  EXPECT_EQ(s.trimmed("\xc2\xa0x\xc2\xa0"), "x");
  EXPECT_TRUE(s.isBlank("  \t"));
  EXPECT_EQ(s.textLessPhrase("http://x.org", "http://"), "x.org");
  EXPECT_EQ(s.textLessPhrase("x.org", "http://"), "x.org");
  EXPECT_EQ(s.textLessPhrase("a.org/http://", "http://", PhrasePlace::Trailing), "a.org/");
  EXPECT_TRUE(s.containsFrom("Vol. 2", "Vol.", 1));
  EXPECT_FALSE(s.containsFrom("Vol. 2", "Vol.", 2));
}

TEST(StringUtilityTest, ValuesBecomeText) {
  EXPECT_EQ(s.toStringArray(true, false, std::string("x"), 12),
            (std::vector<std::string>{"True", "False", "x", "12"}));
}

}  // namespace
}  // namespace QuillStrings
