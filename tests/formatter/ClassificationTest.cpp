#include <gtest/gtest.h>

#include <regex>
#include <thread>

#include "formatter/FormatterImplementation.h"
#include "tests/fakes/FakeService.h"
#include "tests/fakes/RecordingObject.h"

namespace QuillFormatAPA {
namespace {

using fakes::RecordedCall;
using fakes::RecordingObject;

// A controller whose output template answers the date and page tests.
ObjectRef makeController() {
  auto tests = make<RecordingObject>("DefaultOutputTemplate");
  tests->answer("isPage", [](const RecordedCall& c, Args&) {
    static const std::regex page(R"(\s*[A-Z]?[0-9]+(\s*(-|\xE2\x80\x93)\s*[A-Z]?[0-9]+)?\s*)");
    return Variant(std::regex_match(c.positional.at(0).toString(), page));
  });
  tests->answer("isYear", [](const RecordedCall& c, Args&) {
    static const std::regex year(R"([0-9]{4}[a-z]?)");
    return Variant(std::regex_match(c.positional.at(0).toString(), year));
  });
  auto controller = make<RecordingObject>("Controller");
  controller->answer("DefaultOutputTemplate", Variant(ObjectRef(tests)));
  return controller;
}

class ClassificationTest : public ::testing::Test {
 protected:
  template <class F>
  void run(F f) {
    std::thread t(f);
    t.join();
  }
  Ref<fakes::FakeService> service = make<fakes::FakeService>();
  fakes::ServiceRegistration registration{service};
};

// Each row: the entry, the decorated title the template passes, the type.
// Catches tests run in the wrong order (the first that fires decides).
TEST_F(ClassificationTest, TheFirstSignThatFiresDecides) {
  struct Row {
    const char* entry;
    const char* title;
    int type;
  };
  const Row rows[] = {
      // Non-periodical signs come before everything, electronic-source ones included.
      {"Smith, J. (Trans.). (1990). A film [Video file]. Retrieved from http://x.org", "A film", 0},
      {"Smith, J. (2001). Guide. Web site: http://x.org [Web log post]", "Guide", 0},
      {"Smith, J. (2001). Title (Vol. 2). New York, NY: Wiley.", "Title (Vol. 2)", 0},
      // Periodical signs.
      {"Editorial: A note. (2001). Journal, 1, 2.", "", 1},
      {"Smith, J. (2001). Title. Journal. Advance online publication. doi:10.1/x", "Title@Journal", 1},
      {"Smith, J. (2001). Title. Journal, 12(3), 45-67.", "Title@Journal", 1},
      {"Smith, J. (2001). Title [Abstract]. Abstract retrieved from http://x.org", "Title", 1},
      // Electronic-source signs.
      {"Smith, J. (2001, May 2). Re: A thread [Online forum comment]. Retrieved from http://x.org", "Re: A thread", 4},
      {"(J. Smith, personal communication, May 2, 2001)", "", 4},
      // The "doi:" cut: what stands after it (here a volume-and-issue shape) is not looked at.
      {"Smith, J. (2001). Title. Place: Publisher. doi:10.1000(12)3", "Title", 0},
      // ". In " with an editor's initial, or the decorated title after it.
      {"Smith, J. (2001). Chapter. In J. Doe (Ed.), Book (pp. 1-9). Place: Publisher.", "Book", 0},
      {"Smith, J. (2001). Chapter. In Book of things. Place: Publisher.", "Book of things", 0},
      // Pages: a parenthesis before ", pp." makes a book part, anything else a periodical.
      {"Smith, J. (2001). Title. The Times, pp. A1, A4.", "Title", 1},
      // The last sentence: a page range, or place, colon, publisher.
      {"Smith, J. (2001). Title. Journal of Things, 12, 45-67.", "Title", 1},
      {"Smith, J. (2001). Title. New York, NY: Wiley.", "Title", 0},
      // The fallback: the title right after the date is a book unless a periodical follows ("@").
      {"Smith, J. (2001). A book of things.", "A book of things", 0},
      {"Smith, J. (2001). An article. The Wall Street Journal.", "An article@The Wall Street Journal", 1},
      {"Smith, J. (2001). Something else entirely.", "Not the title", 1},
  };
  run([&] {
    const ObjectRef controller = makeController();
    for (const Row& r : rows)
      EXPECT_EQ(FormatterImplementation::GetReferenceType(r.entry, r.title, "", controller), r.type) << r.entry;
  });
  EXPECT_EQ(service->dumps, 0);
}

// Catches a test that looks past an opening parenthesis at the start, or
// accepts a parenthesis without figures on both sides.
TEST_F(ClassificationTest, PeriodicalNumbers) {
  const std::pair<const char*, bool> rows[] = {
      {"Journal, 12(3), 4-5", true},
      {"(2001). Journal, 12(3), 4-5", false},  // the first "(" is the first character
      {"Smith (2001). Journal, 12 (3)", false},
      {"Smith (Ed.) (2001) x, 4(1)", true},
      {"no parenthesis", false},
      {"x(", false},
  };
  run([&] {
    for (const auto& [text, expected] : rows) EXPECT_EQ(FormatterImplementation::hasPeriodicalNumber(text), expected) << text;
  });
}

// The retrieval statement: what stays, the address, the access date.
TEST_F(ClassificationTest, RetrievalStatements) {
  struct Row {
    const char* in;
    const char* str;
    const char* website;
    const char* accessDate;
  };
  const Row rows[] = {
      {"Retrieved from http://x.org/a", "", "x.org/a", ""},
      {"Journal, 1, 2. Retrieved from http://x.org", "Journal, 1, 2. ", "x.org", ""},
      {"Journal, 1, 2. doi:10.1037/a0012", "Journal, 1, 2. ", "10.1037/a0012", ""},  // str keeps its blank
      {"Journal, 1, 2. doi:10.1/x http://x.org", "Journal, 1, 2. doi:10.1/x", "x.org", ""},  // the URL branch only
      {"Retrieved October 12, 2008, from http://x.org", "", "x.org", "October 12, 2008"},
      {"Title. Retrieved from ERIC database. (ED123)", "Title. ", "ED123", ""},
      {"Nothing to take", "Nothing to take", "", ""},
  };
  run([&] {
    for (const Row& r : rows) {
      std::string str = r.in, website, accessDate;
      FormatterImplementation::parseAndRemoveWeb(str, website, accessDate);
      EXPECT_EQ(str, r.str) << r.in;
      EXPECT_EQ(website, r.website) << r.in;
      EXPECT_EQ(accessDate, r.accessDate) << r.in;
    }
  });
}

TEST_F(ClassificationTest, FormatTypeAndHelpers) {
  run([&] {
    const ObjectRef controller = makeController();
    std::string title = "T";
    EXPECT_TRUE(FormatterImplementation::ReferenceIsInFormatType("Smith, J. (2001). Title.", title, 0, controller));
    EXPECT_TRUE(FormatterImplementation::ReferenceIsInFormatType("Editorial: x", title, 0, controller));
    EXPECT_TRUE(FormatterImplementation::ReferenceIsInFormatType("Smith, J. (in press). T.", title, 0, controller));
    // A quoted title and what follows it are not looked at.
    EXPECT_FALSE(FormatterImplementation::ReferenceIsInFormatType("Smith, J. \"Title (2001).\"", title, 0, controller));
    EXPECT_TRUE(FormatterImplementation::startsWithEditor("Eds."));
    EXPECT_FALSE(FormatterImplementation::startsWithEditor("Editors"[0] == 'E' ? "Xd" : ""));
    EXPECT_TRUE(FormatterImplementation::isPossibleBookDate("in press", false));
    EXPECT_FALSE(FormatterImplementation::isPossibleBookDate("In press", false));
    EXPECT_TRUE(FormatterImplementation::firstItalicizedInReferenceIsTitle("anything"));
  });
}

}  // namespace
}  // namespace QuillFormatAPA
