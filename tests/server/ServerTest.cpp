// The library as a host sees it from outside: its C interface only.

#include <gtest/gtest.h>
#include <strings.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "server/quillformatapa.h"

namespace {

// ---- small owners for the handles -------------------------------------------

struct Value {
  Value() : v(qfa_variant_new()) {}
  explicit Value(const char* text) : Value() { qfa_variant_set_string(v, text, std::strlen(text)); }
  explicit Value(int32_t n) : Value() { qfa_variant_set_long(v, n); }
  static Value boolean(bool b) {
    Value x;
    qfa_variant_set_bool(x.v, b);
    return x;
  }
  static Value object(qfa_object* o) {
    Value x;
    qfa_variant_set_object(x.v, o);
    return x;
  }
  static Value refTo(Value& target) {
    Value x;
    qfa_variant_set_byref(x.v, target.v);
    return x;
  }
  Value(Value&& o) noexcept : v(std::exchange(o.v, nullptr)) {}
  Value(const Value&) = delete;
  ~Value() { qfa_variant_free(v); }

  int32_t type() const { return qfa_variant_type(v); }
  std::string text() const {
    const char* data = nullptr;
    size_t length = 0;
    EXPECT_EQ(qfa_variant_get_string(v, &data, &length), QFA_OK) << qfa_error_description();
    return std::string(data, length);
  }
  int32_t number() const {
    int32_t n = 0;
    EXPECT_EQ(qfa_variant_get_long(v, &n), QFA_OK) << qfa_error_description();
    return n;
  }
  std::vector<std::string> strings() const {
    std::vector<std::string> out;
    int32_t lower = 0, upper = -1;
    EXPECT_EQ(qfa_variant_array_bounds(v, 1, &lower, &upper), QFA_OK) << qfa_error_description();
    for (int32_t i = lower; i <= upper; ++i) {
      Value element;
      EXPECT_EQ(qfa_variant_array_get(v, i, 0, element.v), QFA_OK);
      out.push_back(element.text());
    }
    return out;
  }
  qfa_variant* v;
};

struct Obj {
  explicit Obj(qfa_object* o = nullptr) : o(o) {}
  Obj(Obj&& other) noexcept : o(std::exchange(other.o, nullptr)) {}
  Obj(const Obj&) = delete;
  Obj& operator=(Obj&& other) noexcept {
    std::swap(o, other.o);
    return *this;
  }
  ~Obj() { qfa_object_release(o); }
  void reset() {
    qfa_object_release(o);
    o = nullptr;
  }
  qfa_object* o;
};

Obj create(const char* className) {
  qfa_object* o = nullptr;
  EXPECT_EQ(qfa_create_object(className, &o), QFA_OK) << className << ": " << qfa_error_description();
  return Obj(o);
}

// One late-bound call: positional arguments, then named ones.
struct Call {
  Call(qfa_object* target, const char* member, std::vector<qfa_variant*> args = {},
       std::vector<const char*> names = {})
      : target(target), member(member), args(std::move(args)), names(std::move(names)) {}
  qfa_object* target;
  const char* member;
  std::vector<qfa_variant*> args;
  std::vector<const char*> names;
  int32_t kind = QFA_METHOD | QFA_PROPERTY_GET;

  int32_t into(Value& result) const {
    return qfa_invoke(target, member, kind, args.data(), args.size(), names.data(), names.size(), result.v);
  }
  Value run() const {
    Value result;
    EXPECT_EQ(into(result), QFA_OK) << member << ": " << qfa_error_description();
    return result;
  }
};

// ---- a host object written against the C interface ---------------------------

// Answers every member by name: records the call and gives the answer set for
// that member (case-insensitively), or fails with the error set for it.
struct HostObject {
  std::vector<std::string> members;
  std::map<std::string, int32_t> answers;  // member name -> long result
  std::map<std::string, std::pair<int32_t, std::string>> failures;
  std::vector<std::string> calls;
  std::map<std::string, std::string> values;  // Item(key) = value, as a dictionary
  qfa_object* self = nullptr;                  // what ErrorParams answers
  bool released = false;

  static int32_t idOfName(void* p, const char* name) {
    auto* h = static_cast<HostObject*>(p);
    for (size_t i = 0; i < h->members.size(); ++i)
      if (strcasecmp(h->members[i].c_str(), name) == 0) return static_cast<int32_t>(i);
    return -1;
  }
  // An argument's text, whatever its type ("" for what has none).
  static std::string textOf(qfa_variant* v) {
    const char* text = nullptr;
    size_t length = 0;
    return qfa_variant_get_string(v, &text, &length) == QFA_OK ? std::string(text, length) : std::string();
  }

  static int32_t invoke(void* p, int32_t id, int32_t kind, qfa_variant* const* args, size_t argc,
                        const char* const* names, size_t namedCount, qfa_variant* result) {
    auto* h = static_cast<HostObject*>(p);
    const std::string& member = h->members.at(static_cast<size_t>(id));
    std::string call = member;
    for (size_t i = 0; i < argc; ++i) {
      call += i ? ", " : "(";
      if (i >= argc - namedCount) call += std::string(names[i - (argc - namedCount)]) + ":=";
      call += textOf(args[i]);
    }
    h->calls.push_back(call + (argc ? ")" : ""));
    if (auto f = h->failures.find(member); f != h->failures.end()) {
      qfa_set_error(f->second.first, f->second.second.c_str());
      return f->second.first;
    }
    if (member == "ErrorParams") qfa_variant_set_object(result, h->self);
    if (member == "Exists") qfa_variant_set_bool(result, h->values.count(textOf(args[0])) > 0);
    const bool writesAnItem = (member == "Item" && (kind & QFA_PROPERTY_PUT)) || member == "Add";
    if (writesAnItem && argc == 2) h->values[textOf(args[0])] = textOf(args[1]);
    if (auto a = h->answers.find(member); a != h->answers.end()) qfa_variant_set_long(result, a->second);
    return 0;
  }
  static void release(void* p) { static_cast<HostObject*>(p)->released = true; }
  static const char* typeName(void*) { return "HostObject"; }

  Obj wrap() {
    static const qfa_host_vtable vtable{idOfName, invoke, release, typeName};
    return Obj(qfa_host_object_new(&vtable, this));
  }
};

// Every test runs with a diagnostics service registered, as a host must.
class ServerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    service.members = {"ErrorParams",     "vbwProcIn",         "vbwProcOut",       "vbwReportParameter",
                       "vbwBeforeDump",   "vbwOpenDumpFile",   "vbwReportToFile",  "vbwReportVariable",
                       "vbwReportObject", "vbwCloseDumpFile", "vbwAfterDump",     "vbwExitThread"};
    service.answers["vbwAfterDump"] = 1;  // leave the failing procedure
    serviceObject = service.wrap();
    service.self = serviceObject.o;
    ASSERT_EQ(qfa_register_running_object("QuillPaperDot.BridgeToVB", serviceObject.o), QFA_OK);
  }
  void TearDown() override {
    if (serviceObject.o) releaseService();
    EXPECT_TRUE(service.released);
    EXPECT_EQ(DllCanUnloadNow(), 1) << "a library object outlived the test";
  }

  // The host lets go of its diagnostics service, as it does before unloading.
  void releaseService() {
    qfa_thread_done();
    EXPECT_EQ(qfa_revoke_running_object("QuillPaperDot.BridgeToVB"), QFA_OK);
    service.self = nullptr;
    serviceObject.reset();
  }

  // The errors the library reported to the service, as "module.procedure number".
  std::vector<std::string> reportedErrors() const {
    std::vector<std::string> out;
    for (const std::string& c : service.calls)
      if (c.rfind("vbwBeforeDump(", 0) == 0) out.push_back(c);
    return out;
  }

  HostObject service;
  Obj serviceObject;
};

const char* const kPublicClasses[] = {
    "QuillFormatAPA.Main2",          "QuillFormatAPA.Periodical",         "QuillFormatAPA.NonPeriodical",
    "QuillFormatAPA.Esource",        "QuillFormatAPA.TableWord",          "QuillFormatAPA.TableModelComparison",
    "QuillFormatAPA.TableLisrel",    "QuillFormatAPA.TableCorrelation",   "QuillFormatAPA.TableAnova",
    "QuillFormatAPA.TableNoncanonical", "QuillFormatAPA.TableRegression", "QuillFormatAPA.TableHierarchRegression",
    "QuillFormatAPA.TableMultilevelModel",
};

TEST_F(ServerTest, EveryPublicClassComesFromItsClassObject) {
  ASSERT_EQ(qfa_class_count(), std::size(kPublicClasses));
  for (size_t i = 0; i < std::size(kPublicClasses); ++i) {
    const char* name = kPublicClasses[i];
    SCOPED_TRACE(name);
    EXPECT_STREQ(qfa_class_name(i), name);
    qfa_object* classObject = nullptr;
    ASSERT_EQ(DllGetClassObject(name, &classObject), QFA_OK) << qfa_error_description();
    Obj owner(classObject);
    qfa_object* instance = nullptr;
    ASSERT_EQ(qfa_class_create_instance(classObject, &instance), QFA_OK) << qfa_error_description();
    Obj object(instance);
    EXPECT_STREQ(qfa_object_type_name(instance), std::strchr(name, '.') + 1);
    EXPECT_EQ(DllCanUnloadNow(), 0);

    // Each answers to the first member of its interface and to nothing else.
    const char* first = i == 0 ? "UpdateFrontMatter" : i < 4 ? "IsFootnoteEntry" : "AddTableNotes";
    Value result;
    EXPECT_NE(Call(instance, first).into(result), 438) << first;
    EXPECT_EQ(Call(instance, "NoSuchMember").into(result), 438);
    EXPECT_EQ(std::string(qfa_error_description()), "Object doesn't support this property or method");
  }
  EXPECT_EQ(qfa_class_name(std::size(kPublicClasses)), nullptr);
}

TEST_F(ServerTest, ClassNamesAreCaseInsensitiveAndUnknownOnesAreRefused) {
  Obj main2 = create("quillformatapa.MAIN2");
  EXPECT_STREQ(qfa_object_type_name(main2.o), "Main2");

  qfa_object* none = reinterpret_cast<qfa_object*>(1);
  EXPECT_EQ(DllGetClassObject("QuillFormatAPA.Main3", &none), 429);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(std::string(qfa_error_description()), "no class named QuillFormatAPA.Main3");
  EXPECT_EQ(qfa_create_object("Main2", &none), 429);  // the library's name is part of the class name
}

TEST_F(ServerTest, CanUnloadOnlyOnceEveryObjectAndLockIsGone) {
  Obj main2 = create("QuillFormatAPA.Main2");

  // An object the command object makes keeps the library after the command object goes.
  Value metadata;
  ASSERT_EQ(qfa_variant_set_array(metadata.v, 0, 14), QFA_OK);
  Value index(1);
  Value metadataRef = Value::refTo(metadata);
  Value table = Call(main2.o, "TableTemplate", {index.v, metadataRef.v}).run();
  ASSERT_EQ(table.type(), QFA_OBJECT);
  HostObject unrelated;
  unrelated.members = {"Anything"};
  Obj wrapped = unrelated.wrap();
  main2.reset();
  qfa_object* tableObject = nullptr;
  ASSERT_EQ(qfa_variant_get_object(table.v, &tableObject), QFA_OK);
  Obj tableOwner(tableObject);
  qfa_variant_clear(table.v);
  releaseService();
  EXPECT_EQ(DllCanUnloadNow(), 0) << "the table made by the command object";
  tableOwner.reset();
  EXPECT_EQ(DllCanUnloadNow(), 0) << "a host object the library wrapped";
  wrapped.reset();
  EXPECT_EQ(DllCanUnloadNow(), 1);

  // A lock holds the library without any object.
  qfa_object* classObject = nullptr;
  ASSERT_EQ(DllGetClassObject("QuillFormatAPA.TableWord", &classObject), QFA_OK);
  ASSERT_EQ(qfa_class_lock_server(classObject, 1), QFA_OK);
  qfa_object_release(classObject);
  EXPECT_EQ(DllCanUnloadNow(), 0);
  ASSERT_EQ(DllGetClassObject("QuillFormatAPA.TableWord", &classObject), QFA_OK);
  ASSERT_EQ(qfa_class_lock_server(classObject, 0), QFA_OK);
  ASSERT_EQ(qfa_class_lock_server(classObject, 0), QFA_OK);  // one too many changes nothing
  qfa_object_release(classObject);
  EXPECT_EQ(DllCanUnloadNow(), 1);
}

TEST_F(ServerTest, NamedArgumentsMatchParametersInAnyCase) {
  Obj main2 = create("QuillFormatAPA.Main2");
  Value yes = Value::boolean(true), no = Value::boolean(false);
  const std::string sep(1, '\b');
  auto record = [&](std::initializer_list<const char*> fields) {
    std::string out;
    for (const char* f : fields) out += (out.empty() ? "" : sep) + std::string(f);
    return out;
  };
  EXPECT_EQ(Call(main2.o, "buildStyle", {no.v, yes.v}, {"centered", "BOLD"}).run().text(),
            record({"False", "False", "True", "False", "False", "True", "False"}));
  // Positional first, then named; the named one may come from the end of the list.
  EXPECT_EQ(Call(main2.o, "buildStyle", {no.v, yes.v, yes.v}, {"extraLineBefore"}).run().text(),
            record({"False", "True", "False", "False", "False", "True", "True"}));

  Value caption("Title"), code(3);
  EXPECT_EQ(Call(main2.o, "BUILDINSTRUCTION", {code.v, caption.v}, {"instruction", "caption"}).run().text(), "3Title");

  Value result;
  EXPECT_EQ(Call(main2.o, "buildStyle", {yes.v}, {"shadowed"}).into(result), 448);
  EXPECT_EQ(Call(main2.o, "buildStyle", {yes.v, no.v}, {"bold", "bold"}).into(result), 450);  // one parameter given twice
}

TEST_F(ServerTest, ByReferenceArgumentsComeBackWritten) {
  Obj main2 = create("QuillFormatAPA.Main2");
  Value words, elements;
  ASSERT_EQ(qfa_variant_set_array(elements.v, 0, 3), QFA_OK);
  for (int32_t i = 0; i < 3; ++i) {
    Value n(10 * (i + 1));
    ASSERT_EQ(qfa_variant_array_set(elements.v, i, n.v), QFA_OK);
  }
  Value wordsRef = Value::refTo(words);
  Call(main2.o, "IntArray", {wordsRef.v, elements.v}).run();
  EXPECT_EQ(words.strings(), (std::vector<std::string>{"10", "20", "30"}));

  // By value, the same argument stays as it was.
  Value untouched;
  Call(main2.o, "IntArray", {untouched.v, elements.v}).run();
  EXPECT_EQ(untouched.type(), QFA_EMPTY);

  // Named and by reference at once.
  Value names, tooltips;
  Value namesRef = Value::refTo(names), tooltipsRef = Value::refTo(tooltips);
  Call(main2.o, "TableFormMetaData", {tooltipsRef.v, namesRef.v}, {"ButtonTooltips", "ButtonNames"}).run();
  ASSERT_EQ(names.strings().size(), 9u);
  EXPECT_EQ(names.strings()[0], "&ANOVA (ANalysis Of VAriance)");
  EXPECT_EQ(tooltips.strings().size(), 9u);
}

struct ErrorCase {
  const char* what;
  const char* member;
  std::vector<Value (*)()> args;
  int32_t number;
};

TEST_F(ServerTest, ErrorsComeBackAsNumbersAndDescriptions) {
  Obj main2 = create("QuillFormatAPA.Main2");
  const ErrorCase cases[] = {
      {"unknown member", "Render", {}, 438},
      {"missing argument", "buildPageHeader", {[] { return Value("Title"); }}, 449},
      {"too many arguments", "buildInstruction", {[] { return Value("a"); }, [] { return Value(1); }, [] { return Value(2); }}, 450},
      {"not a number", "buildInstruction", {[] { return Value("a"); }, [] { return Value("three"); }}, 13},
      {"beyond 16 bits", "buildInstruction", {[] { return Value("a"); }, [] { return Value(70000); }}, 6},
      {"not an object", "getMetaData", {[] { return Value("dictionary"); }}, 424},
  };
  for (const ErrorCase& c : cases) {
    SCOPED_TRACE(c.what);
    std::vector<Value> values;
    std::vector<qfa_variant*> args;
    for (auto make : c.args) values.push_back(make());
    for (Value& v : values) args.push_back(v.v);
    Value result;
    EXPECT_EQ((Call(main2.o, c.member, args).into(result)), c.number);
    EXPECT_STRNE(qfa_error_description(), "");
  }
  Value result;
  EXPECT_EQ(qfa_invoke(nullptr, "Execute", QFA_METHOD, nullptr, 0, nullptr, 0, result.v), 91);
  EXPECT_EQ(qfa_invoke(main2.o, "Execute", 0, nullptr, 0, nullptr, 0, result.v), 5);

  // Success clears the last error.
  Value caption("x");
  Call(main2.o, "buildInstruction", {caption.v}).run();
  EXPECT_STREQ(qfa_error_description(), "");
}

TEST_F(ServerTest, VariantsConvertAsThePlatformDoes) {
  struct Case {
    const char* what;
    Value (*make)();
    int32_t asLong;  // error number of qfa_variant_get_long, or 0
    int32_t asObject;
  };
  const Case cases[] = {
      {"numeric text", [] { return Value(" 42 "); }, 0, 424},
      {"words", [] { return Value("forty"); }, 13, 424},
      {"a double beyond 32 bits", [] { Value v; qfa_variant_set_double(v.v, 3e10); return v; }, 6, 424},
      {"True", [] { return Value::boolean(true); }, 0, 424},
      {"Nothing", [] { return Value::object(nullptr); }, 13, 0},
      {"empty", [] { return Value(); }, 0, 424},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Value v = c.make();
    int32_t n = 0;
    qfa_object* o = nullptr;
    EXPECT_EQ(qfa_variant_get_long(v.v, &n), c.asLong);
    EXPECT_EQ(qfa_variant_get_object(v.v, &o), c.asObject);
    EXPECT_EQ(o, nullptr);
  }
  int32_t minusOne = 0;
  EXPECT_EQ(qfa_variant_get_long(Value::boolean(true).v, &minusOne), QFA_OK);
  EXPECT_EQ(minusOne, -1);
  EXPECT_EQ(Value(12).text(), "12");

  // Arrays keep their own lower bound; outside it is 9.
  Value array;
  ASSERT_EQ(qfa_variant_set_array(array.v, 1, 2), QFA_OK);
  Value x("x");
  EXPECT_EQ(qfa_variant_array_set(array.v, 2, x.v), QFA_OK);
  EXPECT_EQ(qfa_variant_array_set(array.v, 3, x.v), 9);
  EXPECT_EQ(qfa_variant_array_set(x.v, 0, x.v), 13);
  EXPECT_EQ(array.strings(), (std::vector<std::string>{"", "x"}));
  int32_t lower = 0, upper = 0;
  EXPECT_EQ(qfa_variant_array_bounds(array.v, 2, &lower, &upper), 9);
  EXPECT_EQ(qfa_variant_array_dims(array.v), 1);
  EXPECT_EQ(qfa_variant_array_dims(x.v), 0);

  // Writing through a by-reference slot reaches the value it refers to; a copy is of the value.
  Value target(1);
  Value slot = Value::refTo(target);
  qfa_variant_set_long(slot.v, 2);
  EXPECT_EQ(target.number(), 2);
  EXPECT_TRUE(qfa_variant_is_byref(slot.v));
  Value copy;
  ASSERT_EQ(qfa_variant_copy(copy.v, slot.v), QFA_OK);
  EXPECT_FALSE(qfa_variant_is_byref(copy.v));
  qfa_variant_clear(slot.v);
  EXPECT_EQ(target.number(), 2);
}

TEST_F(ServerTest, TextKeepsEveryByte) {
  Obj main2 = create("QuillFormatAPA.Main2");
  const std::string caption("R\xc3\xa9sum\xc3\xa9\0and more", 17);
  Value text;
  ASSERT_EQ(qfa_variant_set_string(text.v, caption.data(), caption.size()), QFA_OK);
  Value code(12);
  EXPECT_EQ(Call(main2.o, "buildInstruction", {text.v, code.v}).run().text(), "12" + caption);
}

TEST_F(ServerTest, HostObjectsServeTheLibraryAndTheirErrorsReachTheErrorTail) {
  Obj main2 = create("QuillFormatAPA.Main2");
  HostObject dictionary;
  dictionary.members = {"Exists", "Item", "Add"};
  {
    Obj dictionaryObject = dictionary.wrap();
    Value arg = Value::object(dictionaryObject.o);
    Call(main2.o, "getMetaData", {arg.v}).run();
  }
  EXPECT_TRUE(dictionary.released) << "the library kept the dictionary";
  EXPECT_EQ(dictionary.values["MarginTop"], "72");
  EXPECT_GT(dictionary.values.size(), 10u);
  EXPECT_TRUE(reportedErrors().empty());

  // The template's own failure is reported with its number and description.
  HostObject refusing;
  refusing.members = {"Exists", "Item", "Add"};
  refusing.failures["Add"] = {457, "no room for this key"};
  refusing.failures["Item"] = {457, "no room for this key"};
  Obj refusingObject = refusing.wrap();
  Value arg = Value::object(refusingObject.o);
  Call(main2.o, "getMetaData", {arg.v}).run();
  const auto errors = reportedErrors();
  ASSERT_FALSE(errors.empty());
  EXPECT_NE(errors.front().find("457"), std::string::npos) << errors.front();
  EXPECT_NE(errors.front().find("no room for this key"), std::string::npos) << errors.front();
}

// Host objects made from one vtable may number their members differently: a
// member id learnt from one must never be used on another.
TEST_F(ServerTest, EachHostObjectKeepsItsOwnMemberIds) {
  Obj main2 = create("QuillFormatAPA.Main2");
  HostObject one, other;
  one.members = {"Exists", "Item", "Add"};
  other.members = {"Add", "Exists", "Item"};
  Obj oneObject = one.wrap(), otherObject = other.wrap();
  Value first = Value::object(oneObject.o), second = Value::object(otherObject.o);
  for (int round = 0; round < 2; ++round) {
    Call(main2.o, "getMetaData", {first.v}).run();
    Call(main2.o, "getMetaData", {second.v}).run();
  }
  EXPECT_EQ(one.values["MarginTop"], "72");
  EXPECT_EQ(other.values["MarginTop"], "72");
  EXPECT_EQ(one.values, other.values);
  EXPECT_TRUE(reportedErrors().empty());
}

// A host object that writes its by-reference argument, then reads the other
// one: an argument passed twice, by value and by reference, must still read
// as it was passed.
struct Overwriter {
  static int32_t idOfName(void*, const char*) { return 0; }
  static int32_t invoke(void*, int32_t, int32_t, qfa_variant* const* args, size_t argc, const char* const*, size_t,
                        qfa_variant* result) {
    if (argc != 2) return 450;
    const std::string replacement(40, 'z');
    qfa_variant_set_string(args[1], replacement.data(), replacement.size());
    const char* text = nullptr;
    size_t length = 0;
    if (qfa_variant_get_string(args[0], &text, &length) != QFA_OK) return 13;
    return qfa_variant_set_string(result, text, length);
  }
};

TEST_F(ServerTest, AnArgumentPassedByValueKeepsItsTextWhileTheCalleeWritesItByReference) {
  static const qfa_host_vtable vtable{Overwriter::idOfName, Overwriter::invoke, nullptr, nullptr};
  Obj host(qfa_host_object_new(&vtable, nullptr));
  const std::string original(40, 'a');
  Value text(original.c_str());
  Value ref = Value::refTo(text);
  EXPECT_EQ(Call(host.o, "Rewrite", {text.v, ref.v}).run().text(), original);
  EXPECT_EQ(text.text(), std::string(40, 'z'));
}

TEST_F(ServerTest, ExecuteRunsACommandOnTheCommandObjectWithTheArgument) {
  Obj main2 = create("QuillFormatAPA.Main2");
  HostObject builder;
  builder.members = {"outputTemplate", "AddSection", "part", "UserConfigurationValue", "PaperType"};
  builder.answers["PaperType"] = 3;
  Obj builderObject = builder.wrap();
  Value command("InitializeBuilder");
  Value commandRef = Value::refTo(command);
  Value param = Value::object(builderObject.o);
  Call(main2.o, "Execute", {commandRef.v, param.v}).run();
  // The host's AddSection answers nothing, so the first page fails; until then
  // the builder was driven late-bound, with the header passed by name.
  ASSERT_FALSE(builder.calls.empty());
  bool namedHeader = false;
  for (const std::string& c : builder.calls) namedHeader |= c.find("pageHeader:=") != std::string::npos;
  EXPECT_TRUE(namedHeader);
  EXPECT_FALSE(reportedErrors().empty());

  qfa_variant_set_empty(param.v);
  builderObject.reset();
  EXPECT_TRUE(builder.released);
}

// A builder that fails in the frame's own statement (it has no
// outputTemplate): the procedure is left through the error tail, and the
// library must not keep the builder. Catches a host object held after its
// procedure ended, which outlived its host and kept the library loaded.
TEST_F(ServerTest, ABuilderLeftThroughTheErrorTailIsLetGo) {
  Obj main2 = create("QuillFormatAPA.Main2");
  HostObject builder;
  builder.members = {"AddSection"};
  Obj builderObject = builder.wrap();
  Value command("InitializeBuilder");
  Value commandRef = Value::refTo(command);
  Value param = Value::object(builderObject.o);
  Call(main2.o, "Execute", {commandRef.v, param.v}).run();
  EXPECT_FALSE(reportedErrors().empty());
  qfa_variant_set_empty(param.v);
  builderObject.reset();
  EXPECT_TRUE(builder.released);
}

// The command channel never fails to its caller: what goes wrong is reported
// to the diagnostics service under Main2.Execute, with the platform's number.
TEST_F(ServerTest, ExecuteReportsWhatItCannotRun) {
  Obj main2 = create("QuillFormatAPA.Main2");
  const struct {
    const char* command;
    bool textParam;
    int32_t reported;  // the number reported from Execute, 0 for none
  } cases[] = {
      {"NoSuchCommand", false, 438},
      {"buildInstruction", false, 449},  // needs arguments
      {"InitializeBuilder", true, 424},  // the argument must be an object
      {"updateFRONTmatter", false, 0},   // any parameterless member, in any case
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.command);
    const size_t before = service.calls.size();
    Value command(c.command), param("not an object");
    Value commandRef = Value::refTo(command);
    std::vector<qfa_variant*> args{commandRef.v};
    if (c.textParam) args.push_back(param.v);
    Value result;
    EXPECT_EQ(Call(main2.o, "Execute", args).into(result), QFA_OK) << qfa_error_description();
    std::vector<int32_t> fromExecute;
    for (size_t i = before; i < service.calls.size(); ++i) {
      const std::string& call = service.calls[i];
      const std::string prefix = "vbwBeforeDump(QuillFormatAPA, Main2, Execute, ";
      if (call.rfind(prefix, 0) != 0) continue;
      const size_t number = call.find(", ", prefix.size()) + 2;  // after the line
      fromExecute.push_back(std::atoi(call.c_str() + number));
    }
    if (c.reported)
      EXPECT_EQ(fromExecute, std::vector<int32_t>{c.reported});
    else
      EXPECT_TRUE(fromExecute.empty());
  }
}

// The template's table flow, with a table object made of C callbacks: the
// form's buttons, the metadata the library fills through a by-reference
// array, every row, then the notes.
TEST_F(ServerTest, EveryTableOfTheFormBuildsThroughTheCInterface) {
  Obj main2 = create("QuillFormatAPA.Main2");
  Value names, tooltips;
  Value namesRef = Value::refTo(names), tooltipsRef = Value::refTo(tooltips);
  Call(main2.o, "TableFormMetaData", {namesRef.v, tooltipsRef.v}).run();
  const size_t buttons = names.strings().size();
  ASSERT_EQ(buttons, 9u);

  for (int32_t button = 1; button <= static_cast<int32_t>(buttons); ++button) {
    SCOPED_TRACE(names.strings()[static_cast<size_t>(button - 1)]);
    Value metadata;
    ASSERT_EQ(qfa_variant_set_array(metadata.v, 0, 14), QFA_OK);
    Value index(button), metadataRef = Value::refTo(metadata);
    Value table = Call(main2.o, "TableTemplate", {index.v, metadataRef.v}).run();
    qfa_object* tableObject = nullptr;
    ASSERT_EQ(qfa_variant_get_object(table.v, &tableObject), QFA_OK);
    Obj tableOwner(tableObject);
    Call(tableObject, "initTableSpecificMetadata", {metadataRef.v}).run();
    const std::vector<std::string> fields = metadata.strings();
    EXPECT_FALSE(fields[0].empty()) << "a caption";
    EXPECT_EQ(fields[6], "True");
    EXPECT_EQ(fields[10], "Note.");
    const int32_t rows = std::atoi(fields[2].c_str());
    ASSERT_GT(rows, 0);

    HostObject wordTable;
    wordTable.members = {"TypeIntoSelectedCell", "TypeIntoSelectedCellLeftJustify", "MoveRight", "UnderLineRow",
                         "UnderLineCell", "AddSpanner", "AddTableNote"};
    {
      Obj target = wordTable.wrap();
      Value targetArg = Value::object(target.o);
      for (int32_t row = 1; row <= rows; ++row) {
        const size_t before = wordTable.calls.size();
        Value rowArg(row);
        Call(tableObject, "AddRow", {rowArg.v, targetArg.v}).run();
        EXPECT_GT(wordTable.calls.size(), before) << "row " << row << " wrote nothing";
      }
      Call(tableObject, "AddTableNotes", {targetArg.v}).run();
    }
    EXPECT_TRUE(wordTable.released);
    ASSERT_FALSE(wordTable.calls.empty());
    EXPECT_EQ(wordTable.calls.back().rfind("AddTableNote(", 0), 0u) << wordTable.calls.back();
  }
  EXPECT_TRUE(reportedErrors().empty()) << reportedErrors().front();
}

// Calls a C host gets wrong come back as 5 (invalid procedure call), never a crash.
TEST_F(ServerTest, MalformedCallsAreRefused) {
  Obj main2 = create("QuillFormatAPA.Main2");
  Value caption("Title"), result;
  qfa_variant* one[] = {caption.v};
  qfa_variant* withHole[] = {nullptr};
  const char* noName[] = {nullptr};
  const struct {
    const char* what;
    int32_t number;
    int32_t got;
  } cases[] = {
      {"no member name", 5, qfa_invoke(main2.o, nullptr, QFA_METHOD, one, 1, nullptr, 0, result.v)},
      {"more names than arguments", 5, qfa_invoke(main2.o, "buildInstruction", QFA_METHOD, one, 1, noName, 2, result.v)},
      {"arguments missing", 5, qfa_invoke(main2.o, "buildInstruction", QFA_METHOD, nullptr, 1, nullptr, 0, result.v)},
      {"a named argument without a name", 5,
       qfa_invoke(main2.o, "buildInstruction", QFA_METHOD, one, 1, noName, 1, result.v)},
      {"a null argument is a missing one", 449,
       qfa_invoke(main2.o, "buildInstruction", QFA_METHOD, withHole, 1, nullptr, 0, result.v)},
      {"a class object's member on a command object", 438, [&] {
         qfa_object* none = nullptr;
         return qfa_class_create_instance(main2.o, &none);
       }()},
      {"a negative array size", 5, qfa_variant_set_array(result.v, 0, -1)},
      {"no output", 5, qfa_variant_get_long(caption.v, nullptr)},
  };
  for (const auto& c : cases) EXPECT_EQ(c.got, c.number) << c.what;

  static const qfa_host_vtable noInvoke{HostObject::idOfName, nullptr, nullptr, nullptr};
  EXPECT_EQ(qfa_host_object_new(&noInvoke, nullptr), nullptr);
  EXPECT_EQ(qfa_host_object_new(nullptr, nullptr), nullptr);
  EXPECT_EQ(qfa_revoke_running_object("Nobody.Registered"), QFA_FALSE);
}

TEST_F(ServerTest, RegistrationWritesAndRemovesExactlyOneRecord) {
  // A folder of this process's own: another run of the suite may be registering at the same time.
  const std::filesystem::path home =
      std::filesystem::temp_directory_path() / ("qfa-registration-test-" + std::to_string(::getpid()));
  std::filesystem::remove_all(home);
  const char* before = std::getenv("XDG_DATA_HOME");
  const std::string saved = before ? before : "";
  setenv("XDG_DATA_HOME", home.c_str(), 1);
  const std::filesystem::path record = qfa_registration_path();
  EXPECT_EQ(record, home / "QuillFormatAPA" / "registration.json");

  EXPECT_EQ(DllUnregisterServer(), QFA_FALSE);
  EXPECT_NE(std::string(qfa_error_description()).find("not registered"), std::string::npos);

  ASSERT_EQ(DllRegisterServer(), QFA_OK) << qfa_error_description();
  ASSERT_EQ(DllRegisterServer(), QFA_OK) << "registering twice is harmless";
  std::ifstream in(record);
  const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_NE(text.find("libQuillFormatAPA.so"), std::string::npos) << text;
  EXPECT_NE(text.find("QuillFormatAPA.typelib.json"), std::string::npos) << text;
  for (const char* c : kPublicClasses) EXPECT_NE(text.find(c), std::string::npos) << c;

  EXPECT_EQ(DllUnregisterServer(), QFA_OK) << qfa_error_description();
  EXPECT_FALSE(std::filesystem::exists(record));
  EXPECT_FALSE(std::filesystem::exists(home / "QuillFormatAPA"));
  EXPECT_EQ(DllUnregisterServer(), QFA_FALSE);

  // A record naming another library is left alone.
  std::filesystem::create_directories(record.parent_path());
  std::ofstream(record) << "{\"library\": \"/opt/elsewhere/libQuillFormatAPA.so\"}\n";
  EXPECT_EQ(DllUnregisterServer(), QFA_FALSE);
  EXPECT_TRUE(std::filesystem::exists(record));

  // A data folder that cannot hold the record: a clear error and nothing half-written.
  std::filesystem::remove_all(home);
  std::filesystem::create_directories(home);
  std::ofstream(home / "QuillFormatAPA") << "a file where the folder should be\n";
  EXPECT_EQ(DllRegisterServer(), 75);
  EXPECT_NE(std::string(qfa_error_description()).find("QuillFormatAPA"), std::string::npos) << qfa_error_description();
  EXPECT_FALSE(std::filesystem::exists(record.string() + ".tmp"));

  std::filesystem::remove_all(home);
  if (before)
    setenv("XDG_DATA_HOME", saved.c_str(), 1);
  else
    unsetenv("XDG_DATA_HOME");
}

// Processes registering at once: every one succeeds, and a reader never sees
// half a record. Catches a temporary file shared by the writers.
TEST_F(ServerTest, ProcessesRegisteringAtOnceNeverLeaveHalfARecord) {
  const std::filesystem::path home =
      std::filesystem::temp_directory_path() / ("qfa-registration-race-" + std::to_string(::getpid()));
  std::filesystem::remove_all(home);
  setenv("XDG_DATA_HOME", home.c_str(), 1);
  const std::filesystem::path record = qfa_registration_path();
  std::vector<pid_t> writers;
  for (int p = 0; p < 4; ++p) {
    const pid_t pid = fork();
    if (pid == 0) {
      int failures = 0;
      for (int i = 0; i < 40; ++i) failures += DllRegisterServer() != QFA_OK;
      _exit(failures);
    }
    writers.push_back(pid);
  }
  int reads = 0, halves = 0;
  for (bool running = true; running;) {
    std::ifstream in(record);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (!text.empty()) {
      ++reads;
      if (!text.ends_with("]\n}\n")) ++halves;
    }
    running = false;
    for (pid_t pid : writers) running = running || waitpid(pid, nullptr, WNOHANG) == 0;
  }
  for (pid_t pid : writers) {
    int status = 0;
    waitpid(pid, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "a registration failed";
  }
  EXPECT_EQ(halves, 0) << "of " << reads << " reads";
  EXPECT_EQ(DllUnregisterServer(), QFA_OK) << qfa_error_description();
  std::filesystem::remove_all(home);
  unsetenv("XDG_DATA_HOME");
}

// Catches bounds that overflow a 32-bit index and by-reference slots that
// refer to themselves, which would be followed for ever.
TEST_F(ServerTest, ArraysOutOfRangeAndReferenceCyclesAreRefused) {
  Value v;
  EXPECT_EQ(qfa_variant_set_array(v.v, INT32_MAX, 1), QFA_OK);
  EXPECT_EQ(qfa_variant_set_array(v.v, INT32_MAX, 2), 6);
  EXPECT_EQ(qfa_variant_set_array(v.v, INT32_MIN, 0), 6);
  EXPECT_EQ(qfa_variant_set_array(v.v, INT32_MIN, 1), QFA_OK);
  int32_t lower = 0, upper = 0;
  ASSERT_EQ(qfa_variant_array_bounds(v.v, 1, &lower, &upper), QFA_OK);
  EXPECT_EQ(lower, INT32_MIN);
  EXPECT_EQ(upper, INT32_MIN);

  Value x, y, z;
  EXPECT_EQ(qfa_variant_set_byref(x.v, x.v), 5);
  EXPECT_EQ(qfa_variant_set_byref(x.v, y.v), QFA_OK);
  EXPECT_EQ(qfa_variant_set_byref(y.v, z.v), QFA_OK);
  EXPECT_EQ(qfa_variant_set_byref(z.v, x.v), 5) << "x -> y -> z -> x";
  qfa_variant_set_long(z.v, 7);
  EXPECT_EQ(x.number(), 7);
}

}  // namespace
