#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <thread>

#include "builder/DocumentBuilder.h"
#include "command/ClassFactory.h"
#include "host/CallSite.h"
#include "tests/fakes/FakeService.h"
#include "tests/fakes/RecordingObject.h"

namespace QuillFormatAPA {
namespace {

using fakes::CallLog;
using fakes::RecordedCall;
using fakes::RecordingObject;

// A template document builder made of recording objects: sections and pages
// log into one shared log, labelled "Section1", "Page3" and so on.
class FakePaper {
 public:
  explicit FakePaper(int16_t paperType = 1) : paperType_(paperType) {
    builder_->answer("outputTemplate", [this](const RecordedCall&, Args&) { return Variant(outputTemplate); });
    builder_->answer("PaperType", [this](const RecordedCall&, Args&) { return Variant(paperType_); });
    builder_->answer("part", [this](const RecordedCall& c, Args&) {
      return Variant(!unselected.count(c.positional.at(0).toLong()));
    });
    builder_->answer("UserConfigurationValue", [this](const RecordedCall& c, Args&) {
      auto it = configuration.find(c.positional.at(0).toString());
      return Variant(it == configuration.end() ? std::string() : it->second);
    });
    builder_->answer("AddSection", [this](const RecordedCall&, Args&) {
      auto section = make<RecordingObject>("Section" + std::to_string(++sections_), log_);
      section->answer("addPage", [this](const RecordedCall&, Args&) {
        auto page = make<RecordingObject>("Page" + std::to_string(++pages_), log_);
        for (const std::string& m : pageLacks) page->lack(m);
        return Variant(ObjectRef(page));
      });
      return Variant(ObjectRef(section));
    });
  }

  // Runs the build through the command object, on a thread of its own.
  void build(int32_t afterDumpAction = 1) {
    service->defaultAction = afterDumpAction;
    std::thread t([&] {
      ObjectRef main = createObject("QuillFormatAPA.Main2");
      std::string command = "InitializeBuilder";
      callByName(main, "Execute", byRef(command), ObjectRef(builder_));
    });
    t.join();
  }

  // The calls made on one object, as text.
  std::vector<std::string> callsOf(const std::string& label) const {
    std::vector<std::string> out;
    for (const RecordedCall& c : log_->calls)
      if (c.object == label) out.push_back(c.text());
    return out;
  }
  std::vector<std::string> callsTo(const std::string& member) const {
    std::vector<std::string> out;
    for (const RecordedCall& c : log_->calls)
      if (c.member == member) out.push_back(c.object + "." + c.text());
    return out;
  }
  std::vector<std::string> builderCalls(const std::string& member) const {
    std::vector<std::string> out;
    for (const std::string& c : callsTo(member))
      if (c.starts_with("Builder.")) out.push_back(c);
    return out;
  }
  // The calls on the title page before its author note.
  std::vector<std::string> titleLines() const {
    std::vector<std::string> out;
    for (const std::string& c : callsOf("Page1")) {
      if (c.starts_with("addText(\"Author Note")) break;
      out.push_back(c);
    }
    return out;
  }
  bool pageHas(int page, const std::string& call) const {
    const auto calls = callsOf("Page" + std::to_string(page));
    return std::find(calls.begin(), calls.end(), call) != calls.end();
  }

  bool outputTemplate = true;
  std::set<int32_t> unselected;
  std::map<std::string, std::string> configuration;
  std::set<std::string> pageLacks;
  Ref<fakes::FakeService> service = make<fakes::FakeService>();

 private:
  fakes::ServiceRegistration registration_{service};
  std::shared_ptr<CallLog> log_ = std::make_shared<CallLog>();
  Ref<RecordingObject> builder_ = make<RecordingObject>("Builder", log_);
  int16_t paperType_;
  int sections_ = 0;
  int pages_ = 0;
};

constexpr const char* kPlaceholderHead = "DOUBLE CLICK AND SELECT ME TO ENTER AN ABBREVIATED TITLE";

// Catches a section added with the wrong parts, header or linking, or a page too many or too few.
TEST(DocumentBuilderTest, FourSectionsAndFifteenPages) {
  FakePaper paper;
  paper.build();
  const std::string head = std::string(kPlaceholderHead);
  EXPECT_EQ(paper.builderCalls("AddSection"),
            (std::vector<std::string>{
                "Builder.AddSection(0, 0, pageHeader:=\"3Running head: " + head + "\")",
                "Builder.AddSection(1, 4, pageHeader:=\"3" + head + "\")",
                "Builder.AddSection(5, 10, pageHeader:=\"3" + head + "\", sameAsPreviousSection:=False)",
                "Builder.AddSection(11, 14, pageHeader:=\"3" + head + "\", sameAsPreviousSection:=False)"}));
  EXPECT_EQ(paper.callsTo("addPage").size(), 15u);
  EXPECT_EQ(paper.service->dumps, 0);
}

TEST(DocumentBuilderTest, AConfiguredTitleMakesTheHeaders) {
  FakePaper paper;
  paper.configuration["Title"] = "  Effects of Sleep  ";
  paper.build();
  const auto sections = paper.builderCalls("AddSection");
  EXPECT_EQ(sections[0], "Builder.AddSection(0, 0, pageHeader:=\"2Running head: EFFECTS OF SLEEP\")");
  EXPECT_EQ(sections[3],
            "Builder.AddSection(11, 14, pageHeader:=\"2EFFECTS OF SLEEP\", sameAsPreviousSection:=False)");
}

// Catches the limit applied to the bare running head, or an off-by-one at 50.
TEST(DocumentBuilderTest, RunningHeadWarningCountsTheLabelledForm) {
  const struct {
    size_t titleLength;
    bool warned;
  } rows[] = {{0, true}, {36, false}, {37, true}};
  for (const auto& r : rows) {
    FakePaper paper;
    if (r.titleLength) paper.configuration["Title"] = std::string(r.titleLength, 'x');
    paper.build();
    const auto page = paper.callsOf("Page1");
    const std::string count = r.titleLength ? std::to_string(14 + r.titleLength) : "70";
    const std::string warning = "addOneClick(\"WARNING: Your Running head is currently " + count +
                                " characters long, counting letters, spaces and\")";
    EXPECT_EQ(!page.empty() && page.front() == warning, r.warned) << r.titleLength;
  }
}

TEST(DocumentBuilderTest, NonAsciiTitlesCountCharacters) {
  FakePaper paper;
  paper.configuration["Title"] = "Ünïcödé " + std::string(28, 'x');  // 36 characters, more bytes
  paper.build();
  EXPECT_FALSE(paper.pageHas(1, "addOneClick(\"WARNING: Your Running head is currently 50 characters long, counting "
                                "letters, spaces and\")"));
  EXPECT_EQ(paper.builderCalls("AddSection")[1], "Builder.AddSection(1, 4, pageHeader:=\"2ÜNÏCÖDÉ " + std::string(28, 'X') + "\")");
}

// Catches the paper types swapped: only type 3 has affiliations and an author
// note; types 0 and 3 run the body on and open it with the title.
TEST(DocumentBuilderTest, PaperTypesDiffer) {
  for (int16_t type = 0; type <= 3; ++type) {
    SCOPED_TRACE(type);
    FakePaper paper(type);
    paper.configuration["Title"] = "Sleep";
    paper.build();
    const auto title = paper.callsOf("Page1");
    const size_t returnsBeforeTitle =
        std::count(title.begin(), title.end(), "addCarriageReturns(3)") +
        std::count(title.begin(), title.end(), "addCarriageReturns(2)");
    EXPECT_EQ(returnsBeforeTitle, type == 3 ? 1u : 2u);
    EXPECT_EQ(paper.pageHas(1, "addText(\"Author Note\r\n\r\n\")"), type == 3);
    EXPECT_EQ(paper.pageHas(1, "addOneClick(\"[The College which grants your degree]\")"), type != 3);
    const bool runsOn = type == 0 || type == 3;
    EXPECT_EQ(paper.callsTo("suppressPageBreak").size(), runsOn ? 3u : 0u);
    EXPECT_EQ(paper.pageHas(7, "AddCenteredParagraph(\"Sleep\", partHeading:=False)"), runsOn);
    EXPECT_EQ(paper.pageHas(7, "AddSection(\"Introduction\", \"Click here and type your paper.  In the Introduction, "
                               "you should:\", True)"),
              !runsOn);
  }
}

// Catches affiliations compared without trimming or case folding, and a
// second author's lines written when there is none.
TEST(DocumentBuilderTest, AuthorsOnTheManuscriptTitlePage) {
  {
    FakePaper paper(3);
    paper.configuration = {{"Title", "Sleep"}, {"Author", "Ann Lee"}, {"2nd Author", "Bo Park"},
                           {"Affiliation", " Yale University"}, {"2nd Author's Affil.", "yale university  "}};
    paper.build();
    EXPECT_EQ(paper.titleLines(),
              (std::vector<std::string>{"addStyle(\"Front Matter\")", "addCarriageReturns(3)",
                                        "addText(\"Sleep\")", "addCarriageReturns(1)",
                                        "addText(\"Ann Lee and Bo Park\")", "addCarriageReturns(1)",
                                        "addText(\" Yale University\")", "addCarriageReturns(1)",
                                        "addCarriageReturns(1)"}));
  }
  {
    FakePaper paper(3);
    paper.configuration = {{"Title", "Sleep"}, {"Author", "Ann Lee"}};
    paper.build();
    const auto page = paper.callsOf("Page1");
    EXPECT_EQ(std::count(page.begin(), page.end(), "addText(\"; \")"), 0);
    EXPECT_EQ(paper.titleLines().size(), 9u);  // title, author and affiliation only
    EXPECT_FALSE(paper.pageHas(1, "addOneClick(\"[]\")"));
    EXPECT_TRUE(paper.pageHas(1, "addOneClick(\"[Institution where research was conducted, or use author's city and "
                                 "state of residence (APA 2.02)]\")"));
  }
}

// Catches hints and subsections written although the template asked for no output form.
TEST(DocumentBuilderTest, WithoutTheOutputTemplate) {
  FakePaper paper;
  paper.outputTemplate = false;
  paper.build();
  EXPECT_TRUE(paper.callsTo("addOneClick").size() > 0);  // placeholders of missing values stay
  for (const std::string& call : paper.callsTo("addOneClick")) {
    EXPECT_EQ(call.find("APA 2.0"), std::string::npos) << call;
    EXPECT_EQ(call.find("(APA 2.12)"), std::string::npos) << call;
  }
  const auto styles = paper.callsTo("addStyle");
  EXPECT_TRUE(std::none_of(styles.begin(), styles.end(),
                           [](const std::string& c) { return c.find("\"-3\"") != std::string::npos; }));
  EXPECT_EQ(paper.callsTo("addEditingHint").size(), 3u);  // Method, Results, Discussion only
}

// Catches a main text that loses pages when the body is not selected.
TEST(DocumentBuilderTest, WithoutTheBodyTheMainTextKeepsSixPages) {
  FakePaper paper;
  paper.unselected = {5};
  paper.build();
  EXPECT_EQ(paper.callsTo("addPage").size(), 15u);
  // Pages 6 to 11 are the main text: the empty part 5, the introduction,
  // three empty pages and the references.
  for (int page : {6, 8, 9, 10}) EXPECT_TRUE(paper.callsOf("Page" + std::to_string(page)).empty()) << page;
  EXPECT_EQ(paper.callsOf("Page7"), (std::vector<std::string>{"AddCaption(\"Figure\")", "AddCaption(\"Table\")"}));
  EXPECT_EQ(paper.callsOf("Page11").front(), "addStyle(\"-2\")");
}

TEST(DocumentBuilderTest, ListPagesAndReferences) {
  FakePaper paper;
  paper.unselected = {2};
  paper.build();
  EXPECT_EQ(paper.callsOf("Page2"), (std::vector<std::string>{"AddCenteredParagraph(\"Table of Contents\", "
                                                              "partHeading:=True)",
                                                              "addTOC(0)", "addStyle(\"-1\")"}));
  EXPECT_EQ(paper.callsOf("Page3")[1], "addTOC(3)");
  EXPECT_EQ(paper.callsOf("Page4")[1], "addTOC(2)");
  EXPECT_EQ(paper.callsOf("Page11"),
            (std::vector<std::string>{"addStyle(\"-2\")", "addTextToggleBold(\"Refer\")", "addBookmark(\"References\")",
                                      "addTextToggleBold(\"ences\r\n\")", "addStyle(\"Bibliographic Reference\")"}));
  // Part 2 (the list of tables) is off, so only the figure caption is written.
  EXPECT_TRUE(paper.pageHas(7, "AddCaption(\"Figure\")"));
  EXPECT_FALSE(paper.pageHas(7, "AddCaption(\"Table\")"));
}

// Catches an error that stops the build instead of skipping one statement.
TEST(DocumentBuilderTest, APageLackingAMemberKeepsTheSkeletonInOrder) {
  FakePaper complete;
  complete.build();
  FakePaper lacking;
  lacking.pageLacks = {"addEditingHint"};
  lacking.build(/*ignore*/ 5);
  // 4 introduction hints, the method page's and its 6 subsections', results, discussion.
  EXPECT_EQ(lacking.service->dumps, 13);
  EXPECT_EQ(lacking.callsTo("addPage").size(), 15u);
  std::vector<std::string> expected;
  for (const std::string& call : complete.callsTo("addOneClick")) expected.push_back(call);
  EXPECT_EQ(lacking.callsTo("addOneClick"), expected);
  EXPECT_EQ(lacking.callsTo("addEditingHint").size(), 0u);
}

}  // namespace
}  // namespace QuillFormatAPA
