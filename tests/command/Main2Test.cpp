#include <gtest/gtest.h>

#include <thread>

#include "command/ClassFactory.h"
#include "command/Main2.h"
#include "host/CallSite.h"
#include "tests/fakes/FakeDictionary.h"
#include "tests/fakes/FakeService.h"
#include "tests/fakes/RecordingObject.h"

namespace QuillFormatAPA {
namespace {

using fakes::FakeDictionary;
using fakes::FakeService;
using fakes::RecordingObject;

// Each test runs on a thread of its own: the diagnostics latch is per thread.
class Main2Test : public ::testing::Test {
 protected:
  template <class F>
  void run(F f) {
    std::thread t([&] {
      main = createObject("QuillFormatAPA.Main2");
      ASSERT_TRUE(main);
      f();
      main = ObjectRef();
    });
    t.join();
  }
  template <class... A>
  Variant call(std::string_view member, A&&... a) {
    return callByName(main, member, std::forward<A>(a)...);
  }
  std::vector<std::string> dumps() const { return service->linesStartingWith("vbwBeforeDump"); }

  Ref<FakeService> service = make<FakeService>();
  fakes::ServiceRegistration registration{service};
  ObjectRef main;
};

TEST_F(Main2Test, DispatchOrderOfThePublicInterface) {
  std::vector<std::string> names;
  for (const MemberInfo& m : Main2::members().members()) names.push_back(m.name);
  EXPECT_EQ(names, (std::vector<std::string>{
                       "Execute", "ReferenceBuilder", "getMetaData", "IntArray", "getStartupFormSettings",
                       "firstItalicizedInReferenceIsTitle", "ReferenceIsInFormatType", "GetReferenceType",
                       "InitializeBuilder", "StartNewChapter", "UpdateFrontMatter", "buildInstruction",
                       "buildPageHeader", "Add", "addHeadings", "buildStyle", "TableFormMetaData", "TableTemplate"}));
}

// Catches a separator, a sign or a default that differs from what the template parses.
TEST_F(Main2Test, RecordFormats) {
  const std::string b = "\x08";
  run([&] {
    EXPECT_EQ(call("buildInstruction", "Title").toString(), "0Title");
    EXPECT_EQ(call("buildInstruction", "Abstract", int16_t{3}).toString(), "3Abstract");
    EXPECT_EQ(call("buildInstruction", "x", int16_t{-1}).toString(), "-1x");
    EXPECT_EQ(call("buildPageHeader", "", int16_t{306}).toString(), "306");
    EXPECT_EQ(call("buildStyle").toString(), "True" + b + "False" + b + "False" + b + "False" + b + "False" + b +
                                                 "True" + b + "False");
    EXPECT_EQ(call("buildStyle", named("centered", false), named("indented", true), named("bold", true)).toString(),
              "False" + b + "True" + b + "True" + b + "False" + b + "False" + b + "True" + b + "False");
    EXPECT_FALSE(call("UpdateFrontMatter").toBool());
  });
  EXPECT_TRUE(dumps().empty());
}

// Catches an Execute that drops its argument or fails outside its own tail.
TEST_F(Main2Test, ExecuteWithAnUnknownCommandKeepsItsArgumentAndDumpsOnce) {
  auto x = make<RecordingObject>("Builder");
  run([&] {
    std::string command = "NoSuchCommand";
    call("Execute", byRef(command), ObjectRef(x));
  });
  EXPECT_EQ(dumps(), (std::vector<std::string>{
                         "vbwBeforeDump QuillFormatAPA Main2 Execute 438 Object doesn't support this property or "
                         "method 0"}));
  EXPECT_EQ(service->linesStartingWith("vbwReportVariable mParam"),
            (std::vector<std::string>{"vbwReportVariable mParam=Builder"}));
}

// Catches a command that keeps its argument for the next one, or one that needs arguments.
TEST_F(Main2Test, StartNewChapterTakesItsArgumentOnceAndClearsIt) {
  auto builder = make<RecordingObject>("Instructions");
  run([&] {
    std::string command = "startnewchapter";
    call("Execute", byRef(command), ObjectRef(builder));
    call("Execute", byRef(command));
    command = "buildPageHeader";
    call("Execute", byRef(command));
  });
  EXPECT_EQ(builder->log()->texts(),
            (std::vector<std::string>{"addStyle(\"-2\")", "addText(\"CHAPTER \")", "AddAutoNumber(\"chapter\")",
                                      "addText(\" \")",
                                      "addOneClick(\"Click here in main text and type your chapter title\")",
                                      "addCarriageReturns(1)", "addStyle(\"Paragraph\")",
                                      "addOneClick(\"Click here and type your chapter\")"}));
  const auto d = dumps();
  ASSERT_EQ(d.size(), 2u);
  EXPECT_EQ(d[0], "vbwBeforeDump QuillFormatAPA FormatterImplementation StartNewChapter 91 Object variable or "
                  "With block variable not set 0");
  EXPECT_EQ(d[1], "vbwBeforeDump QuillFormatAPA Main2 Execute 449 Argument not optional 0");
}

// Catches defaults written through the wrong Add, overrides that add a second
// key, and integer keys confused with their digits as text.
TEST_F(Main2Test, GetMetaDataWritesDefaultsThenOverrides) {
  auto dictionary = make<FakeDictionary>();
  dictionary->Add("1", "string key");
  run([&] { EXPECT_EQ(call("getMetaData", ObjectRef(dictionary)).toString(), "APA"); });
  EXPECT_TRUE(dumps().empty());
  EXPECT_EQ(dictionary->Item("1").toString(), "string key");
  EXPECT_EQ(dictionary->Item(int16_t{1}).toString(), "False");  // default "True", then the core's value
  EXPECT_EQ(dictionary->Item(int16_t{2}).toString(), "True");
  EXPECT_EQ(dictionary->Item(int16_t{15}).toString(), "false");
  EXPECT_EQ(dictionary->Item(int32_t{20}).toString(), "True");
  EXPECT_EQ(dictionary->Item("MarginTop").toString(), "72");
  EXPECT_EQ(dictionary->Item("outputTypes").array().get(0).toString(), "citation");
  const Variant headingsValue = dictionary->Item("headings");
  const Array& headings = headingsValue.array();
  ASSERT_EQ(headings.size(), 5u);
  EXPECT_EQ(headings.get(4).toString(), "False\bTrue\bTrue\bTrue\bFalse\bTrue\bFalse");
  const auto keys = dictionary->keyTexts();
  ASSERT_EQ(keys.size(), 1 + 17 + 2 + 7 + 1);  // the string "1", defaults, output types, new numbered keys, headings
  EXPECT_EQ(keys[1], "\"MarginTop\"");
  EXPECT_EQ(keys[6], "1");
}

// Catches defaults written with the replacing Add, which would hide a clash.
TEST_F(Main2Test, ADuplicateDefaultKeyFails) {
  auto dictionary = make<FakeDictionary>();
  dictionary->Add("MarginTop", "90");
  run([&] { EXPECT_EQ(call("getMetaData", ObjectRef(dictionary)).toString(), "APA"); });
  EXPECT_EQ(dumps(), (std::vector<std::string>{"vbwBeforeDump QuillFormatAPA Main2 setDefaultMetadataSettings 457 "
                                               "This key is already associated with an element of this collection 0"}));
}

TEST_F(Main2Test, AddOutsideGetMetaDataHasNoDictionary) {
  run([&] { call("Add", "MarginTop", "90"); });
  EXPECT_EQ(dumps(), (std::vector<std::string>{
                         "vbwBeforeDump QuillFormatAPA Main2 Add 91 Object variable or With block variable not set 0"}));
}

// Catches an IntArray that sizes from the wrong bound or fails on an empty list.
TEST_F(Main2Test, IntArray) {
  run([&] {
    Array words(VarType::Integer);
    call("IntArray", byRef(words), Array::vector(0, -1));
    EXPECT_EQ(words.size(), 0u);
    EXPECT_EQ(words.upperBound(), -1);
    call("IntArray", byRef(words), Array::list({"3", 4.0, int32_t{5}}));
    EXPECT_EQ(words.upperBound(), 2);
    EXPECT_EQ(words.get(0).type(), VarType::Integer);
    EXPECT_EQ(words.get(2).toInteger(), 5);
    call("IntArray", byRef(words), Array::list({int32_t{70000}}));
    Array shifted = Array::vector(1, 2);
    call("IntArray", byRef(words), shifted);
  });
  const auto d = dumps();
  ASSERT_EQ(d.size(), 2u);
  EXPECT_EQ(d[0], "vbwBeforeDump QuillFormatAPA Main2 IntArray 6 Overflow 0");
  EXPECT_EQ(d[1], "vbwBeforeDump QuillFormatAPA Main2 IntArray 9 Subscript out of range 0");
}

TEST_F(Main2Test, StartupFormSettings) {
  Array sections, titles, postGrad, alwaysOn, postgrad;
  int16_t paperType = 2;
  run([&] {
    call("getStartupFormSettings", byRef(sections), byRef(titles), byRef(postGrad), byRef(alwaysOn), byRef(postgrad),
         byRef(paperType));
  });
  EXPECT_TRUE(dumps().empty());
  ASSERT_EQ(sections.size(), 15u);
  EXPECT_EQ(sections.get(0).toString(), "0Title Page");
  EXPECT_EQ(sections.get(7).toString(), "3Method");
  EXPECT_EQ(sections.get(14).toString(), "0Appendix");
  EXPECT_EQ(titles.upperBound(1), 3);
  EXPECT_EQ(titles.upperBound(2), 6);
  EXPECT_EQ(titles.get(1, 2).toString(), "College");  // no hint, so no "^^^"
  EXPECT_EQ(titles.get(1, 3).toString(), "");
  EXPECT_TRUE(titles.get(3, 4).toString().ends_with("^^^2nd Author's Affil."));
  EXPECT_EQ(toStrings(alwaysOn), (std::vector<std::string>{"0", "4", "5", "6", "7", "8", "9", "10"}));
  EXPECT_EQ(toStrings(postGrad), (std::vector<std::string>{"1", "2", "3"}));
  EXPECT_EQ(paperType, 2);
}

TEST_F(Main2Test, ReferenceBuilderMakesNothingForTypesTwoAndThree) {
  auto settings = make<RecordingObject>("Settings");
  run([&] {
    EXPECT_FALSE(call("ReferenceBuilder", int16_t{2}, ObjectRef(settings), "QuillPaper").toObject());
  });
  EXPECT_EQ(service->dumps, 1);
  EXPECT_EQ(dumps()[0],
            "vbwBeforeDump QuillFormatAPA Main2 ReferenceBuilder[Get] 91 Object variable or With block variable not "
            "set 0");
}

TEST_F(Main2Test, CreationAndReleaseAreTraced) {
  run([] {});
  EXPECT_EQ(service->calls.front(), "vbwProcIn QuillFormatAPA.Main2.Class_Initialize");
  EXPECT_EQ(service->calls.back(), "vbwExitThread False");
  EXPECT_FALSE(createObject("QuillFormatAPA.NoSuchClass"));
}

}  // namespace
}  // namespace QuillFormatAPA
