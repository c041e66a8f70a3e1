#include <gtest/gtest.h>

#include "host/CallSite.h"
#include "quillpaper/references/AuthorNames.h"
#include "quillpaper/references/ReferenceFormatter.h"
#include "quillpaper/references/ReferenceList.h"
#include "quillpaper/references/ReferencePipeline.h"
#include "quillpaper/references/ReferenceSource.h"
#include "tests/quillpaper/references/ReferenceSupport.h"
#include "quillpaper/references/ReferenceTests.h"

namespace quillpaper {
namespace {

using testing::format;
using testing::session;

// Periodical articles as APA 6 writes them: each must come back exactly, with
// the fields a reader would name. Catches a parse step that takes too much or
// too little, and a template row with the wrong separator.
TEST(ReferencesTest, PeriodicalForms) {
  struct Row {
    const char* entry;
    const char* expected;  // "" for the entry itself
    const char* container;
    const char* volume;
    const char* issue;
    const char* pages;
  };
  const Row rows[] = {
      {"Kernis, M. H., Cornell, D. P., Sun, C.-R., Berry, A., & Harlow, T. (1993). There’s more to self-esteem than "
       "whether it is high or low: The importance of stability of self-esteem. Journal of Personality and Social "
       "Psychology, 65, 1190–1204.",
       "", "Journal of Personality and Social Psychology", "65", "", "1190–1204"},
      {"Morris, R. (1975). Typographical errors. IEEE Transactions on Professional Communication, PC-18(1), 54–56. "
       "https://doi.org/10.1109/TPC.1975.6593963",
       "Morris, R. (1975). Typographical errors. IEEE Transactions on Professional Communication, PC-18(1), 54–56. "
       "doi:10.1109/TPC.1975.6593963",
       "IEEE Transactions on Professional Communication", "PC-18", "1", "54–56"},
      // The comma inside a periodical's name stays in the name.
      {"Lee, A. (2006). Commas in names. Journal of Things, Part A, 12(3), 45–67.", "", "Journal of Things, Part A", "12",
       "3", "45–67"},
      // A newspaper page: "p." for one page, "pp." for several.
      {"Lee, A. (2006, December 10). Women unafraid. The Daily Paper, p. A4.", "", "The Daily Paper", "", "", "A4"},
      {"Lee, A. (2006, December 10). Women unafraid. The Daily Paper, pp. A1, A4.", "", "The Daily Paper", "", "",
       "A1, A4"},
      // An advance online publication: a full stop, not a comma, before the phrase.
      {"Smith, J. (2010). A study. Journal of Things. Advance online publication. doi:10.1037/a001234", "",
       "Journal of Things", "", "", "Advance online publication"},
      // "[Abstract]" goes from the title when the retrieval statement says it.
      {"Smith, J. (2001). Title [Abstract]. Journal of Things, 3, 4–5. Abstract retrieved from http://x.org/abs",
       "Smith, J. (2001). Title. Journal of Things, 3, 4–5. Abstract retrieved from http://x.org/abs", "Journal of Things",
       "3", "", "4–5"},
      // The retrieval statement is never closed by a full stop.
      {"Lee, A. (2006). Online only. Journal of Things, 12(3), 45–67. Retrieved from http://x.org/a", "",
       "Journal of Things", "12", "3", "45–67"},
      // No author: the title takes the author's place.
      {"Title of an article without author. (2001). Journal of Things, 1(2), 3–4.", "", "Journal of Things", "1", "2",
       "3–4"},
      {"Hoffman, P. E. (1983, October). Fancy font. Byte Magazine, 8(10).", "", "Byte Magazine", "8", "10", ""},
      {"Smith, J. (2001). Supplements [Supplement]. Journal of Things, 1, 2–3.",
       "Smith, J. (2001). Supplements [Supplemental material]. Journal of Things, 1, 2–3.", "Journal of Things", "1", "",
       "2–3"},
      {"Smith, J. (2001). An editorial [Editorial]. Journal of Things, 1, 2–3.", "", "Journal of Things", "1", "", "2–3"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.entry);
    const FormattedReference f = format(r.entry);
    ASSERT_TRUE(f.ok()) << f.problems.front();
    EXPECT_EQ(f.type, 1);
    EXPECT_EQ(f.text(), *r.expected ? r.expected : r.entry);
    EXPECT_EQ(f.containerTitle, r.container);
    EXPECT_EQ(f.volume, r.volume);
    EXPECT_EQ(f.issue, r.issue);
    EXPECT_EQ(f.pages, r.pages);
    // Round trip: formatting the formatted entry changes nothing.
    EXPECT_EQ(format(f.text()).text(), f.text());
  }
}

// Catches the periodical's name and volume losing their italics.
TEST(ReferencesTest, ItalicRuns) {
  const FormattedReference f = format("Lee, A. (2006). Commas. Journal of Things, 12(3), 45–67.");
  std::string italic;
  for (const TextRun& r : f.runs)
    if (r.italic) italic += "[" + r.text + "]";
  EXPECT_EQ(italic, "[Journal of Things][12]");
}

TEST(ReferencesTest, EntriesThatMakeNoSenseAreKeptAsTyped) {
  for (const char* entry : {"", "   ", "just some words"}) {
    const FormattedReference f = format(entry);
    EXPECT_FALSE(f.ok()) << entry;
  }
  std::ostringstream out;
  writeText({format("just some words")}, out);
  EXPECT_EQ(out.str(), "just some words\n");
}

// Author lists: parsed as written, written back in APA 6 form.
TEST(ReferencesTest, AuthorLists) {
  const AuthorStyle style;
  struct Row {
    const char* in;
    size_t names;
    const char* out;
  };
  const Row rows[] = {
      {"Kernis, M. H., Cornell, D. P., Sun, C.-R., Berry, A., & Harlow, T.", 5, ""},
      {"Smith, J.", 1, ""},
      {"Smith, J., & Lee, K.", 2, ""},
      {"University of Bergen.", 1, "University of Bergen"},
      {"Henry, W. A., III.", 1, ""},
      {"Laan, K. van der.", 1, ""},
      {"A, A., B, B., C, C., D, D., E, E., F, F., G, G., & H, H.", 8, "A, A., B, B., C, C., D, D., E, E., F, F., … H, H."},
      {"A, A., B, B., C, C., D, D., E, E., F, F., … H, H.", 7, ""},
  };
  for (const Row& r : rows) {
    const NameList names = readNames(r.in);
    EXPECT_EQ(names.names.size(), r.names) << r.in;
    EXPECT_EQ(formatNames(names, style), *r.out ? r.out : r.in) << r.in;
  }
  EXPECT_EQ(initialsOf("Lorinda Jean-Paul"), "L. J.-P.");
  // One broken name does not shift the names after it: "Bootzin" stays a
  // family name, never the given name of the piece before it.
  const NameList broken = readNames("Lee, A., Bla ,arh, Bootzin, R. R., Bower, G., & Deaux, K.");
  ASSERT_EQ(broken.names.size(), 5u);
  EXPECT_EQ(broken.names[2], (PersonName{"Bootzin", "R. R.", ""}));
  EXPECT_EQ(broken.names[3], (PersonName{"Bower", "G.", ""}));
}

TEST(ReferencesTest, DateAndPageTests) {
  for (const char* year : {"1993", "2005a", "n.d."}) EXPECT_TRUE(isYearText(year)) << year;
  for (const char* no : {"93", "1993, May", "in press"}) EXPECT_FALSE(isYearText(no)) << no;
  for (const char* page : {"45", "45–67", " 45-67", "A1", "S12–S20", "e1001", "1+"}) EXPECT_TRUE(isPageText(page)) << page;
  for (const char* no : {"1999", "Wiley", "pp. 3", ""}) EXPECT_FALSE(isPageText(no)) << no;
}

// The join of items: a prefix only before the first item present, the
// separator for the next present item, the terminator after the last, and a
// second set chosen by the checking array.
TEST(ReferencesTest, OutputTemplateJoin) {
  auto t = make<OutputTemplate>();
  const ObjectRef o(t);
  callByName(o, "Reset", int16_t{2});
  callByName(o, "Add", int32_t{0}, false, "", "<", " then ", " skip ", ".");
  callByName(o, "Add", int32_t{1}, true, "=__CALLBACK_FOR_CHECKING__", "(", ", ", ")", "[", "; ", "]");
  callByName(o, "Add", int32_t{2}, false, "", "", "");
  EXPECT_THROW(callByName(o, "Add", int32_t{2}, false, "", "", "", "too many"), AutomationError);
  const std::vector<std::vector<TextRun>> formatted = {{}, {{"b", true}}, {}};
  auto join = [&](std::vector<std::string> plain, std::vector<bool> checks) {
    return plainText(t->join(plain, formatted, checks));
  };
  EXPECT_EQ(join({"a", "", "c"}, {false, false, false}), "<a then b, c");
  EXPECT_EQ(join({"a", "", "c"}, {false, true, false}), "<a then b; c");
  EXPECT_EQ(join({"", "", "c"}, {false, false, false}), "(b, c");
  EXPECT_EQ(join({"a.", "", ""}, {false, false, false}), "<a. then b)");
  const std::vector<std::vector<TextRun>> none = {{}, {}, {}};
  EXPECT_EQ(plainText(t->join({"a.", "", "c"}, none, {false, false, false})), "<a. skip c");
}

// Catches a list out of APA's order: family name letter by letter, then year;
// an entry without author by its title without "The".
TEST(ReferencesTest, ReferenceListOrder) {
  std::vector<FormattedReference> list = {
      format("Zed, A. (2001). Last. Journal of Things, 1, 2."),
      format("The middle title. (2001). Journal of Things, 1, 2."),
      format("Abel, B. (2005). Later. Journal of Things, 1, 2."),
      format("Abel, B. (2001). Earlier. Journal of Things, 1, 2."),
  };
  sortReferenceList(list);
  std::vector<std::string> order;
  for (const auto& r : list) order.push_back(r.title);
  EXPECT_EQ(order, (std::vector<std::string>{"Earlier", "Later", "The middle title", "Last"}));  // "middle" before "Zed"
}

}  // namespace
}  // namespace quillpaper

namespace quillpaper {
namespace {

// Catches a data source that answers a misspelt field with Empty instead of
// the unknown-member error, which hid a wrong name in the library.
TEST(ReferencesTest, AMisspeltFieldIsAnUnknownMember) {
  auto source = make<ReferenceSource>(make<FormatterSettings>(), "");
  EXPECT_NE(source->idOfName("Periodical"), kUnknownDispId);
  EXPECT_NE(source->idOfName("PARSECOMMON"), kUnknownDispId);
  EXPECT_EQ(source->idOfName("Periodicl"), kUnknownDispId);
  try {
    callByName(ObjectRef(source), "Periodicl");
    ADD_FAILURE() << "no error";
  } catch (const AutomationError& e) {
    EXPECT_EQ(e.number(), kUnknownMember);
  }
}

// A property's id belongs to its bag: two bags that met their properties in
// another order number them otherwise, and a call site used on both must
// read each bag's own.
TEST(ReferencesTest, PropertyIdsAreEachBagsOwn) {
  Ref<FormatterSettings> first = make<FormatterSettings>(), second = make<FormatterSettings>();
  first->setProperty("Beta", Variant(std::string("first beta")));
  second->setProperty("Beta", Variant(std::string("second beta")));
  // Names are numbered as they are first asked for.
  for (const char* name : {"Alpha", "Beta"}) first->idOfName(name);
  for (const char* name : {"Beta", "Alpha"}) second->idOfName(name);
  ASSERT_NE(first->idOfName("Beta"), second->idOfName("Beta"));
  static const CallSite beta("Beta");
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(beta.call(ObjectRef(first)).toString(), "first beta");
    EXPECT_EQ(beta.call(ObjectRef(second)).toString(), "second beta");
  }
}

}  // namespace
}  // namespace quillpaper
