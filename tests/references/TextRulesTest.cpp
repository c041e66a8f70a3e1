// The text rules of reference entries, each word of each list with a row of
// its own: deleting a word from a rule fails its row.
#include <gtest/gtest.h>

#include <string>

#include "references/Periodical.h"
#include "references/ReferenceEntry.h"
#include "tests/fakes/FakeService.h"

namespace QuillFormatAPA {
namespace {

// A full stop after an abbreviation ends no statement: "Notes on Dr. Smith"
// is one. The control word shows that the row reads the rule.
TEST(TextRulesTest, AbbreviationsEndNoStatement) {
  for (const char* word :
       {"Dr",   "Mr",   "Mrs",  "Ms",     "St",   "No",   "Nos",  "Vol",  "Vols",     "Ed",      "Eds",  "Trans",
        "Jr",   "Sr",   "vs",   "cf",     "al",   "ca",   "pp",   "p",    "Phys",     "Rev",     "Lett", "Soc",
        "Chem", "Am",   "Amer", "Math",   "Proc", "Int",  "Natl", "Acad", "Sci",      "Res",     "Biol", "Med",
        "Psychol", "Eng", "Comput", "Inf", "Appl", "Stat", "Econ", "Educ", "Mol",     "Neurosci", "Exp", "Clin",
        "Nucl", "Astron", "Geophys", "Ann", "Bull", "Mech", "Opt", "Co",   "Corp",     "Inc",     "Ltd",  "Univ",
        "Dept", "Inst", "Assoc", "Commun", "Electron", "Sp"}) {
    const std::string text = std::string("Notes on ") + word + ". Smith and others";
    EXPECT_TRUE(references::statementStarts(text).empty()) << word;
  }
  EXPECT_EQ(references::statementStarts("Notes on Rome. Smith and others").size(), 1u);
}

// A capital alone is an initial ("J. S. Bach", "J. Appl. Psychol."), except
// after a word in lower case when no initial follows ("in C.").
TEST(TextRulesTest, CapitalsAreInitialsButAfterAWordInLowerCase) {
  struct Row {
    const char* text;
    size_t statements;
  };
  const Row rows[] = {
      {"Essays on J. S. Bach", 1},
      {"Riemann surfaces. J. Amer. Math. Soc., 9(2), 529–571", 2},
      {"Fonts written in C. Dr. Dobb's Journal", 2},
      {"Rich in vitamin D. The Lancet", 2},
  };
  for (const Row& r : rows) EXPECT_EQ(references::statementStarts(r.text).size() + 1, r.statements) << r.text;
}

// A word in lower case that is a particle or a function word leaves a name
// a name; any other makes it a title.
TEST(TextRulesTest, SmallWordsKeepANameAName) {
  for (const char* word : {"a", "an", "and", "the", "of", "for", "on", "in", "to", "at", "de", "du", "des", "la",
                           "le", "van", "von", "der", "den", "y", "e", "und", "et", "da", "di", "del", "ten", "ter"})
    EXPECT_FALSE(references::readsAsTitle(std::string("Bank ") + word + " Things")) << word;
  EXPECT_TRUE(references::readsAsTitle("Bank makes Things"));
}

// A name alone after the title reads as a periodical's when it holds a
// periodical's word.
class PeriodicalWordsTest : public ::testing::Test {
 protected:
  Ref<fakes::FakeService> service = make<fakes::FakeService>();
  fakes::ServiceRegistration registration{service};
};

TEST_F(PeriodicalWordsTest, APeriodicalsWordNamesAPeriodical) {
  auto periodical = make<Periodical>();
  for (const char* word : {"Journal", "Review", "Times", "Magazine", "Quarterly", "News", "Post", "Bulletin",
                           "Gazette", "Tribune", "Herald", "Daily", "Weekly", "Monthly", "Annals", "Letters",
                           "Transactions", "Chronicle", "Observer", "Guardian", "Telegraph", "Digest", "Psychologist",
                           "Newsletter", "Courier", "Globe", "Register", "Sun", "Zorbly"}) {
    bool isFootnote = false;
    std::string decorated, subTitle;
    const std::string entry = std::string("Lee, A. (2001). A story. The Evening ") + word + ".";
    periodical->FindTitleImpl(entry, isFootnote, decorated, subTitle);
    EXPECT_EQ(decorated, std::string(word) == "Zorbly" ? "A story" : std::string("A story@The Evening ") + word)
        << word;
  }
}

}  // namespace
}  // namespace QuillFormatAPA
