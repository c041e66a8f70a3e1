#include <gtest/gtest.h>

#include "command/ClassFactory.h"
#include "host/CallSite.h"
#include "quillpaper/references/ReferenceFormatter.h"
#include "quillpaper/references/ReferencePipeline.h"
#include "tests/quillpaper/references/ReferenceSupport.h"
#include "quillpaper/references/ReferenceSource.h"

namespace quillpaper {
namespace {

using testing::format;
using testing::session;

std::string italics(const FormattedReference& f) {
  std::string out;
  for (const TextRun& r : f.runs)
    if (r.italic) out += "[" + r.text + "]";
  return out;
}

std::string families(const std::vector<PersonName>& names) {
  std::string out;
  for (const PersonName& n : names) out += (out.empty() ? "" : "|") + n.family;
  return out;
}

// Books, chapters, edited books and reference-work entries as APA 6 writes
// them: each comes back exactly, with its fields, its italics, and the same
// text when formatted again. Catches a step that takes the wrong part, a row
// with the wrong separator, and an item in the wrong slot.
TEST(BookReferencesTest, NonPeriodicalForms) {
  struct Row {
    const char* entry;
    const char* expected;  // "" for the entry itself
    const char* authors;   // family names, "|" between
    const char* editors;
    const char* title;
    const char* container;
    const char* edition;
    const char* volume;
    const char* pages;
    const char* place;
    const char* publisher;
    const char* italic;
  };
  const Row rows[] = {
      {"Jöreskog, K. G., & Sörbom, D. (1989). LISREL 7: A guide to the program and applications (2nd ed.). Chicago: "
       "SPSS.",
       "", "Jöreskog|Sörbom", "", "LISREL 7: A guide to the program and applications", "", "2nd ed.", "", "",
       "Chicago", "SPSS", "[LISREL 7: A guide to the program and applications]"},
      // A chapter: ". In " before the editors, ", " between editors and book.
      {"Baker, F. M., & Lightfoot, O. B. (1993). Psychiatric care of ethnic elders. In A. C. Gaw (Ed.), Culture, "
       "ethnicity, and mental illness (pp. 517–552). Washington, DC: American Psychiatric Press.",
       "", "Baker|Lightfoot", "Gaw", "Psychiatric care of ethnic elders", "Culture, ethnicity, and mental illness", "",
       "", "517–552", "Washington, DC", "American Psychiatric Press", "[Culture, ethnicity, and mental illness]"},
      // Two editors, given names first.
      {"Davydov, V. V. (1972). De introductie. In C. F. Van Parreren & J. A. M. Carpay (Eds.), Sovjetpsychologen aan "
       "het woord (pp. 227–289). Groningen, The Netherlands: Wolters-Noordhoff.",
       "", "Davydov", "Van Parreren|Carpay", "De introductie", "Sovjetpsychologen aan het woord", "", "", "227–289",
       "Groningen, The Netherlands", "Wolters-Noordhoff", "[Sovjetpsychologen aan het woord]"},
      // A reference-work entry: volume and pages share one group.
      {"Bergmann, P. G. (1993). Relativity. In The new encyclopaedia Britannica (Vol. 26, pp. 501–508). Chicago: "
       "Encyclopaedia Britannica.",
       "", "Bergmann", "", "Relativity", "The new encyclopaedia Britannica", "", "26", "501–508", "Chicago",
       "Encyclopaedia Britannica", "[The new encyclopaedia Britannica]"},
      // An entry without author: its title opens it, "In " before the work.
      {"Kerning on the fly. (1991). In URW typography series.", "", "", "", "Kerning on the fly",
       "URW typography series", "", "", "", "", "", "[URW typography series]"},
      // An edited book: the editors stand as authors with their tag.
      {"Shuker, R., Openshaw, R., & Soler, J. (Eds.). (1990). Youth, media, and moral panic in New Zealand (Delta "
       "Research Monograph No. 11). Palmerston North, New Zealand: Massey University.",
       "", "", "Shuker|Openshaw|Soler", "Youth, media, and moral panic in New Zealand", "", "", "", "",
       "Palmerston North, New Zealand", "Massey University", "[Youth, media, and moral panic in New Zealand]"},
      // A book without author, in italics where the author would stand.
      {"The times guide to english style and usage. (1999). London: Times Books.", "", "", "",
       "The times guide to english style and usage", "", "", "", "", "London", "Times Books",
       "[The times guide to english style and usage]"},
      // A translator and a reprint note (no full stop after it).
      {"Laplace, P.-S. (1951). A philosophical essay on probabilities (F. W. Truscott & F. L. Emory, Trans.). New "
       "York, NY: Dover. (Original work published 1814)",
       "",
       "Laplace", "", "A philosophical essay on probabilities", "", "", "", "", "New York, NY", "Dover",
       "[A philosophical essay on probabilities]"},
      // A book's editor after its title.
      {"Pound, E. (1953). Literary essays (T. S. Eliot, Ed.). New York: New Directions.", "", "Pound", "Eliot",
       "Literary essays", "", "", "", "", "New York", "New Directions", "[Literary essays]"},
      // A volume of a multi-part work, with edition and pages.
      {"Harlow, H. F. (1983). Fundamentals. In E. Smith & J. Lee (Eds.), Handbook of things: Vol. 2. Special things "
       "(3rd ed., pp. 3–12). London, England: Sage.",
       "", "Harlow", "Smith|Lee", "Fundamentals", "Handbook of things", "3rd ed.", "2", "3–12", "London, England",
       "Sage", "[Handbook of things: Vol. 2. Special things]"},
      // A report with its number, retrieved online: no full stop after the address.
      {"U.S. General Accounting Office. (1997). Telemedicine: Federal strategy is needed (Publication No. "
       "GAO/NSAID/HEHS-97-67). Retrieved from http://www.access.gpo.gov/su_docs/aces/aces160.shtml",
       "", "U.S. General Accounting Office", "", "Telemedicine: Federal strategy is needed", "", "", "", "", "", "",
       "[Telemedicine: Federal strategy is needed]"},
      // A bracketed medium, and a site named before the address.
      {"Heck, A. (2003). Learning MetaPost by doing [Report]. AMSTEL Institute. Retrieved from AMSTEL Institute "
       "website: http://math.example.edu/mptut.pdf",
       "", "Heck", "", "Learning MetaPost by doing", "", "", "", "", "", "AMSTEL Institute",
       "[Learning MetaPost by doing]"},
      // "Publisher, City, ST" keeps its order.
      {"Loh, N. C. (1992). High-resolution accelerometer (Master’s thesis). Massachusetts Institute of Technology, "
       "Cambridge, Mass.",
       "Loh, N. C. (1992). High-resolution accelerometer (Master’s thesis). Massachusetts Institute of Technology, "
       "Cambridge, Mass.",
       "Loh", "", "High-resolution accelerometer", "", "", "", "", "Cambridge, Mass",
       "Massachusetts Institute of Technology", "[High-resolution accelerometer]"},
      // A term cited by itself in a dictionary: no chapter title.
      {"Emoticon, N. (2003). In Merriam-webster’s collegiate dictionary (11th ed., p. 408). Merriam-Webster.", "",
       "Emoticon", "", "", "Merriam-webster’s collegiate dictionary", "11th ed.", "", "408", "", "Merriam-Webster",
       "[Merriam-webster’s collegiate dictionary]"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.entry);
    const FormattedReference f = format(r.entry);
    ASSERT_TRUE(f.ok()) << f.problems.front();
    EXPECT_EQ(f.type, 0);
    EXPECT_EQ(f.text(), *r.expected ? r.expected : r.entry);
    EXPECT_EQ(families(f.authors), r.authors);
    EXPECT_EQ(families(f.editors), r.editors);
    EXPECT_EQ(f.title, r.title);
    EXPECT_EQ(f.containerTitle, r.container);
    EXPECT_EQ(f.edition, r.edition);
    EXPECT_EQ(f.volume, r.volume);
    EXPECT_EQ(f.pages, r.pages);
    EXPECT_EQ(f.place, r.place);
    EXPECT_EQ(f.publisher, r.publisher);
    EXPECT_EQ(italics(f), r.italic);
    EXPECT_EQ(format(f.text()).text(), f.text());
  }
}

// Electronic sources: the bracketed description decides the type; e-mail is
// a personal communication, kept out of the reference list with its reason.
TEST(BookReferencesTest, ElectronicSourceForms) {
  const struct {
    const char* entry;
    const char* expected;
  } rows[] = {
      {"Smith, J. (2006, January 5). Re: Disputed estimates of IQ [Online forum comment]. Retrieved from "
       "http://groups.example.com/message/670",
       ""},
      {"Middleton, J. (2007, February 28). Is there a bias? [Web log comment]. Retrieved from http://example.org/b/7",
       ""},
      {"Norton, M. I. (2006, November 20). Are we interested? [Video file]. Retrieved from http://example.org/v", ""},
      {"(Smith, J., personal communication, April 18, 2001)", "(Smith, J., personal communication, April 18, 2001)."},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.entry);
    const FormattedReference f = format(r.entry);
    ASSERT_TRUE(f.ok()) << f.problems.front();
    EXPECT_EQ(f.type, 4);
    EXPECT_EQ(f.text(), *r.expected ? r.expected : r.entry);
  }
  EXPECT_EQ(format(rows[3].entry).excludedBecause, "Cite personal communications in text only. (APA, 6.20)");
  EXPECT_EQ(format(rows[0].entry).excludedBecause, "");
}

// The type table with its asymmetry, read through the class's own members.
TEST(BookReferencesTest, ElectronicSourceTypes) {
  session();  // the diagnostics service the library reports to
  const struct {
    const char* entry;
    const char* rest;
    const char* type;
    const char* description;
  } rows[] = {
      {"A title [Video file].", "A title ", "Video blog entry", "Video file"},
      {"A title [Video File]", "A title ", "Video blog entry", "Video file"},
      {"A title [Web log post]", "A title ", "Blog post", "Web log post"},
      {"A title [Podcast].", "A title ", "Email list entry", "Electronic mailing list message"},
      {"A title", "A title", "Email to", ""},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.entry);
    auto settings = make<FormatterSettings>();
    auto source = make<ReferenceSource>(settings, r.entry);
    ObjectRef sourceObject(source);
    const ObjectRef esource = QuillFormatAPA::createObject("QuillFormatAPA.Esource");
    callByName(esource, "setDataSource", byRef(sourceObject));
    std::string text = r.entry;
    callByName(esource, "parseAndRemoveType", byRef(text));
    EXPECT_EQ(text, r.rest);
    EXPECT_EQ(source->text("esourceType"), r.type);
    EXPECT_EQ(callByName(esource, "getType").toString(), r.description);
  }
}

}  // namespace
}  // namespace quillpaper

namespace quillpaper {
namespace {

// Editor lists after "In ": given names first, particles kept with the family.
TEST(BookReferencesTest, EditorNamesGivenFirst) {
  const std::pair<const char*, const char*> rows[] = {
      {"A. C. Gaw", "Gaw"},
      {"C. F. Van Parreren & J. A. M. Carpay", "Van Parreren|Carpay"},
      {"R. Battiti, M. Brunato, I. Kotsireas, & P. Pardalos", "Battiti|Brunato|Kotsireas|Pardalos"},
      {"J.-P. Sartre and S. de Beauvoir", "Sartre|de Beauvoir"},
      {"Anonymous", "Anonymous"},
  };
  for (const auto& [list, expected] : rows) EXPECT_EQ(families(parseGivenFirstNames(list)), expected) << list;
}

// A footnote cites a page at its end; the page comes off the note.
TEST(BookReferencesTest, FootnotePages) {
  session();
  const ObjectRef book = QuillFormatAPA::createObject("QuillFormatAPA.NonPeriodical");
  const auto isFootnote = [&](const char* entry) {
    return callByName(book, "IsFootnoteEntry", "", "", std::string(entry)).toBool();
  };
  EXPECT_TRUE(isFootnote("J. Smith, A history of things (New York: Wiley, 1990), p. 12."));
  EXPECT_FALSE(isFootnote("Smith, J. (1990). A history of things. New York, NY: Wiley."));
  std::string note = "J. Smith, A history (New York: Wiley, 1990), pp. 12–14.";
  EXPECT_EQ(callByName(book, "extractPageNumberFromFootnote", byRef(note)).toString(), "12–14");
  EXPECT_EQ(note, "J. Smith, A history (New York: Wiley, 1990).");
}

// Input no reference list should hold: a sensible result or a clear problem,
// the entry kept as typed, never a crash or an error inside the library.
TEST(BookReferencesTest, MalformedInput) {
  using namespace std::string_literals;
  std::string huge = "Smith, J. (2001). ";
  while (huge.size() < (1u << 20)) huge += "Word. (x [y ";
  const std::string rows[] = {
      "Smith, J. (2001). Bad \xC3\x28 bytes \xFF. New York, NY: Wiley.",
      "Smith, J. (2001). Control\x01\x02 characters\x7F. Place: Publisher."s,
      "Nul\0inside (2001). Title. Place: Publisher."s,
      "(((((((((((((((((((((",
      ")))))]]]]]. . . . In In In (Ed.), (Eds.),",
      "Smith, J. (2001). [",
      huge,
  };
  for (const std::string& entry : rows) {
    SCOPED_TRACE(entry.substr(0, 60));
    const FormattedReference f = format(entry);
    for (const std::string& problem : f.problems) EXPECT_EQ(problem.find("formatting library"), std::string::npos);
    if (f.ok()) {
      EXPECT_FALSE(f.text().empty());
    }
  }
}

}  // namespace
}  // namespace quillpaper
