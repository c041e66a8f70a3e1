#include <gtest/gtest.h>

#include "host/CallSite.h"
#include "host/MemberTable.h"
#include "host/RunningObjects.h"

namespace QuillFormatAPA {
namespace {

class Sample : public Dispatchable<Sample> {
 public:
  static const MemberTable& members() {
    static const MemberTable& table = ClassBuilder<Sample>("Sample")
                                  .method<&Sample::Greet>("Greet", {"name", optional("times", int16_t{1})})
                                  .method<&Sample::Swap>("Swap", {"text", "number"})
                                  .method<&Sample::Count>("Count", {"label", "items"})
                                  .method<&Sample::Given>("Given", {optional("value")})
                                  .property<&Sample::title, &Sample::setTitle>("Title")
                                  .get<&Sample::Cell>("Cell", {"row", "column"})
                                  .build();
    return table;
  }
  std::string Greet(const std::string& name, int16_t times) {
    std::string out;
    for (int16_t i = 0; i < times; ++i) out += "hello " + name + ";";
    return out;
  }
  void Swap(std::string& text, int16_t& number) {
    text = std::to_string(number);
    number = 99;
  }
  int32_t Count(const std::string& label, ParamArray items) {
    return static_cast<int32_t>(items.values.size()) + static_cast<int32_t>(label.size()) * 100;
  }
  bool Given(const Variant& value) { return !value.isMissing(); }
  std::string title() const { return title_; }
  void setTitle(const std::string& t) { title_ = t; }
  std::string Cell(int16_t row, int16_t column) { return std::to_string(row) + "," + std::to_string(column); }

 private:
  std::string title_ = "untitled";
};

// Counts name lookups, to show that a call site asks once per class.
class CountingSample : public Sample {
 public:
  DispId idOfName(std::string_view name) const noexcept override {
    ++lookups;
    return Sample::idOfName(name);
  }
  static inline int lookups = 0;
};

int errorOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const AutomationError& e) {
    return e.number();
  }
  return 0;
}

// Catches positional, named and defaulted arguments landing in the wrong parameter.
TEST(DispatchTest, BindsPositionalNamedAndDefaultArguments) {
  ObjectRef s = make<Sample>();
  static const CallSite greet("greet");  // case-insensitive
  EXPECT_EQ(greet.call(s, "ann").toString(), "hello ann;");
  EXPECT_EQ(greet.call(s, "bo", int16_t{2}).toString(), "hello bo;hello bo;");
  EXPECT_EQ(greet.call(s, named("Times", int16_t{2}), named("NAME", "cy")).toString(), "hello cy;hello cy;");
  EXPECT_EQ(greet.call(s, "di", Variant::missing()).toString(), "hello di;");

  static const CallSite given("Given");
  EXPECT_FALSE(given.call(s).toBool());
  EXPECT_TRUE(given.call(s, Variant()).toBool());
}

// A text parameter taken as a view: lent when the argument is text, the
// argument's text otherwise ("12", "True").
class Viewer : public Dispatchable<Viewer> {
 public:
  static const MemberTable& members() {
    static const MemberTable& table =
        ClassBuilder<Viewer>("Viewer").method<&Viewer::Bracket>("Bracket", {"text"}).build();
    return table;
  }
  std::string Bracket(std::string_view text) { return "[" + std::string(text) + "]"; }
};

TEST(DispatchTest, TextParametersTakenAsViewsConvertWhatIsNotText) {
  ObjectRef v = make<Viewer>();
  static const CallSite bracket("Bracket");
  const std::string borrowed = "a text longer than any small-string buffer";
  EXPECT_EQ(bracket.call(v, borrowed).toString(), "[" + borrowed + "]");
  EXPECT_EQ(bracket.call(v, Variant(std::string("owned"))).toString(), "[owned]");
  EXPECT_EQ(bracket.call(v, int32_t{12}).toString(), "[12]");
  EXPECT_EQ(bracket.call(v, true).toString(), "[True]");
  EXPECT_EQ(Viewer::members().members()[0].params[0].type.name(), "String");
}

// Catches by-reference arguments that do not come back, and by-value ones that do.
TEST(DispatchTest, ByReferenceArgumentsComeBack) {
  ObjectRef s = make<Sample>();
  static const CallSite swap("Swap");
  std::string text = "old";
  int16_t number = 7;
  swap.call(s, byRef(text), byRef(number));
  EXPECT_EQ(text, "7");
  EXPECT_EQ(number, 99);

  std::string unchanged = "old";
  swap.call(s, unchanged, int16_t{1});
  EXPECT_EQ(unchanged, "old");
}

TEST(DispatchTest, ParamArrayAndProperties) {
  ObjectRef s = make<Sample>();
  static const CallSite count("Count"), title("Title"), cell("Cell");
  EXPECT_EQ(count.call(s, "ab").toLong(), 200);
  EXPECT_EQ(count.call(s, "", "x", int16_t{1}, true).toLong(), 3);
  EXPECT_EQ(title.call(s).toString(), "untitled");
  title.put(s, "Set");
  EXPECT_EQ(title.call(s).toString(), "Set");
  EXPECT_EQ(cell.call(s, int16_t{2}, int16_t{3}).toString(), "2,3");
}

// Catches dispatch failures that report the wrong platform error, or none.
TEST(DispatchTest, DispatchFailuresCarryThePlatformNumbers) {
  ObjectRef s = make<Sample>();
  static const CallSite greet("Greet"), missingMember("Nope"), cell("Cell"), title("Title");
  const struct {
    const char* what;
    std::function<void()> call;
    int error;
  } rows[] = {
      {"unknown member", [&] { missingMember.call(s); }, kUnknownMember},
      {"required argument left out", [&] { greet.call(s); }, kArgumentNotOptional},
      {"too many arguments", [&] { greet.call(s, "a", int16_t{1}, int16_t{2}); }, kWrongNumberOfArguments},
      {"unknown named argument", [&] { greet.call(s, "a", named("count", 1)); }, kNamedArgumentNotFound},
      {"text for a number", [&] { greet.call(s, "a", "many"); }, kTypeMismatch},
      {"16-bit overflow", [&] { greet.call(s, "a", 70000); }, kOverflow},
      {"assigning a read-only property", [&] { cell.put(s, int16_t{1}, int16_t{1}, "x"); }, kWrongNumberOfArguments},
      {"calling Nothing", [&] { title.call(ObjectRef()); }, kObjectNotSet},
  };
  for (const auto& r : rows) EXPECT_EQ(errorOf(r.call), r.error) << r.what;
}

// Catches an error that does not say which member and which argument failed.
TEST(DispatchTest, FailuresNameMemberAndArgument) {
  ObjectRef s = make<Sample>();
  static const CallSite greet("Greet");
  try {
    greet.call(s, "a", "many");
    FAIL();
  } catch (const AutomationError& e) {
    EXPECT_EQ(e.description(), "Type mismatch");
    EXPECT_NE(e.source().find("Sample.Greet: argument 'times'"), std::string::npos) << e.source();
  }
}

// Catches a call site that looks the name up on every call.
TEST(DispatchTest, MemberIdsAreResolvedOncePerClass) {
  static const CallSite title("Title");
  ObjectRef a = make<CountingSample>(), b = make<CountingSample>();
  CountingSample::lookups = 0;
  for (int i = 0; i < 5; ++i) {
    title.call(a);
    title.call(b);
  }
  EXPECT_EQ(CountingSample::lookups, 1);
}

// Catches a name found in the wrong member, missed in another case, or found
// where the class has no such member (the same length and letters in other
// places, which may share a slot of the lookup).
TEST(DispatchTest, NamesAreFoundInAnyCaseAndTheFirstDeclaredWins) {
  // A table lives as long as the process, as a class's does.
  static const MemberTable& table = []() -> const MemberTable& {
    ClassBuilder<Sample> builder("Wide");
    for (const char* name : {"Add", "add", "Item", "Items", "Exists", "Remove", "RemoveAll", "Count", "Keys", "Values",
                             "Title", "Tilte", "vbwProcIn", "vbwProcOut", "A", "Ab"})
      builder.method<&Sample::Given>(name, {optional("value")});
    return builder.build();
  }();
  struct Row {
    const char* name;
    DispId id;
  };
  for (const Row& row : std::vector<Row>{{"Add", 0},
                                         {"ADD", 0},
                                         {"add", 0},  // declared twice in two cases: the first
                                         {"item", 2},
                                         {"ITEMS", 3},
                                         {"removeall", 6},
                                         {"Tilte", 11},
                                         {"TITLE", 10},
                                         {"VBWPROCOUT", 13},
                                         {"a", 14},
                                         {"aB", 15},
                                         {"Ad", kUnknownDispId},
                                         {"Adds", kUnknownDispId},
                                         {"Aed", kUnknownDispId},
                                         {"Itme", kUnknownDispId},
                                         {"vbwProcOn", kUnknownDispId},
                                         {"", kUnknownDispId}}) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(table.idOfName(row.name), row.id);
  }
}

TEST(DispatchTest, MemberTableDescribesTheClass) {
  const MemberTable& t = Sample::members();
  ASSERT_EQ(t.members().size(), 6u);
  EXPECT_EQ(t.members()[0].name, "Greet");
  EXPECT_EQ(t.idOfName("TITLE"), 4);
  const ParamInfo& times = t.members()[0].params[1];
  EXPECT_TRUE(times.optional);
  EXPECT_EQ(times.type.name(), "Integer");
  EXPECT_EQ(times.defaultValue.toInteger(), 1);
  EXPECT_TRUE(t.members()[1].params[0].byRef);
  EXPECT_FALSE(t.members()[0].params[0].byRef);
  EXPECT_TRUE(t.members()[2].params[1].paramArray);
  EXPECT_EQ(t.members()[0].result.name(), "String");
  EXPECT_EQ(t.members()[1].result.name(), "void");
}

TEST(DispatchTest, RunningObjectsRegistry) {
  ObjectRef s = make<Sample>();
  EXPECT_FALSE(RunningObjects::lookup("Test.Sample"));
  RunningObjects::registerObject("Test.Sample", s);
  EXPECT_EQ(RunningObjects::lookup("Test.Sample"), s);
  EXPECT_TRUE(RunningObjects::revoke("Test.Sample"));
  EXPECT_FALSE(RunningObjects::revoke("Test.Sample"));
  EXPECT_FALSE(RunningObjects::lookup("Test.Sample"));
}

}  // namespace
}  // namespace QuillFormatAPA
