#include "command/Main2.h"

#include "builder/DocumentBuilder.h"
#include "diagnostics/vbwProtector.h"
#include "formatter/FormatterImplementation.h"
#include "host/CallSite.h"
#include "host/PaperProxies.h"
#include "host/ReferenceProxies.h"
#include "references/Esource.h"
#include "references/NonPeriodical.h"
#include "references/Periodical.h"
#include "strings/StringUtility.h"

namespace QuillFormatAPA {

namespace {

// The separator of the fields of a style record.
constexpr char kStyleSeparator = '\x08';

ObjectRef newReferenceEntry(int16_t whichType) {
  switch (whichType) {
    case 0: return make<NonPeriodical>();
    case 1: return make<Periodical>();
    case 4: return make<Esource>();
    default: return ObjectRef();  // types 2 and 3 are never made here
  }
}

}  // namespace

const MemberTable& Main2::members() {
  static const MemberTable& table =
      ClassBuilder<Main2>("Main2")
          .method<&Main2::Execute>("Execute", {"command", optional("theParam")})
          .get<&Main2::ReferenceBuilder>("ReferenceBuilder", {"whichType", "formatterSettings", "productName"})
          .method<&Main2::getMetaData>("getMetaData", {"obj"})
          .method<&Main2::IntArray>("IntArray", {{"words", VarType::Integer}, "elements"})
          .method<&Main2::getStartupFormSettings>(
              "getStartupFormSettings",
              {{"theSectionInstructions", VarType::String}, {"theTitleInstructions", VarType::String},
               {"postGradIndices", VarType::Integer}, {"defaultAlwaysOn", VarType::Integer},
               {"defaultPostgrad", VarType::Integer}, "defaultPaperType"})
          .method<&Main2::firstItalicizedInReferenceIsTitle>("firstItalicizedInReferenceIsTitle", {"str"})
          .method<&Main2::ReferenceIsInFormatType>("ReferenceIsInFormatType",
                                                   {"str", "title", "decoratedStrType", "controller"})
          .method<&Main2::GetReferenceType>("GetReferenceType", {"entry", "decoratedStr", "subTitle", "controller"})
          .method<&Main2::InitializeBuilder>("InitializeBuilder")
          .method<&Main2::StartNewChapter>("StartNewChapter")
          .get<&Main2::UpdateFrontMatter>("UpdateFrontMatter")
          .method<&Main2::buildInstruction>("buildInstruction", {"caption", optional("instruction", int16_t{0})})
          .method<&Main2::buildPageHeader>("buildPageHeader", {"caption", "instruction"})
          .method<&Main2::Add>("Add", {"key", "value"})
          .method<&Main2::addHeadings>("addHeadings", {"chapter", "heading1", "heading2", "heading3", "heading4"})
          .method<&Main2::buildStyle>("buildStyle",
                                      {optional("centered", true), optional("indented", false),
                                       optional("bold", false), optional("italic", false),
                                       optional("underline", false), optional("doubleSpace", true),
                                       optional("extraLineBefore", false)})
          .get<&Main2::TableFormMetaData>("TableFormMetaData",
                                          {{"ButtonNames", VarType::String}, {"ButtonTooltips", VarType::String}})
          .get<&Main2::TableTemplate>("TableTemplate", {"buttonClickedIndex", {"metadata", VarType::String}})
          .build();
  return table;
}

Ref<Main2> Main2::create() {
  Ref<Main2> self = make<Main2>();
  self->classInitialize();
  return self;
}

void Main2::classInitialize() {
  traced(*this, "Class_Initialize", [&](Procedure& proc) {
    proc.step([&] { FormatterImplementation::InitializeMain(ObjectRef(this)); });
  });
}

Main2::~Main2() { vbwProtector::exitThread(false); }

void Main2::reportVariables(const VariableReport& r) const {
  r.variable("mParam", mParam);
  r.variable("mMetaData", mMetaData);
}

void Main2::Execute(std::string& command, const Variant& theParam) {
  traced(*this, "Execute", params(arg("command", command), arg("theParam", theParam)), [&](Procedure& proc) {
    const Holding held(mParam);
    if (!theParam.isMissing()) proc.step([&] { mParam = theParam.toObject(); });
    proc.step([&] {
      // Only parameterless members can be reached this way; the result is dropped.
      Args none;
      invokeByName(this, command, CallKind::Method, none);
    });
  });
}

ObjectRef Main2::ReferenceBuilder(int16_t whichType, const ObjectRef& formatterSettings,
                                  const std::string& productName) {
  return traced(*this, "ReferenceBuilder[Get]",
                params(arg("whichType", whichType), arg("formatterSettings", formatterSettings),
                       arg("productName", productName)),
                [&](Procedure& proc) {
                  ObjectRef entry;
                  ObjectRef editors;
                  bool twoEditorsIsOnlyCaseHaveNoComma = false;
                  bool reverseEditors = false;
                  proc.local("entry", entry);
                  proc.local("editors", editors);
                  proc.step([&] { entry = newReferenceEntry(whichType); });
                  proc.step([&] {
                    ObjectRef settings = formatterSettings;
                    std::string product = productName;
                    host::EntryRef(entry).getMetaData(settings, product);
                  });
                  proc.step([&] { FormatterImplementation::getQLRefMetaData(formatterSettings); });
                  const host::FormatterSettingsRef settings(formatterSettings);
                  proc.step([&] { editors = settings.outputTemplates(9); });
                  proc.step([&] { twoEditorsIsOnlyCaseHaveNoComma = settings.twoEditorsIsOnlyCaseHaveNoComma(); });
                  proc.step([&] { reverseEditors = settings.reverseEditors(); });
                  proc.step([&] {
                    host::OutputTemplateRef(settings.outputTemplates(0))
                        .CloneForEditors(editors, twoEditorsIsOnlyCaseHaveNoComma, reverseEditors);
                  });
                  return entry;
                });
}

std::string Main2::getMetaData(const ObjectRef& obj) {
  return traced(*this, "getMetaData", params(arg("obj", obj)), [&](Procedure& proc) {
    std::string result;
    const Holding held(mMetaData);
    proc.step([&] { mMetaData = obj; });
    proc.step([&] { setDefaultMetadataSettings(obj); });
    // The settings name the edition they want by their "APAEdition" key.
    int16_t edition = 6;
    proc.step([&] {
      const host::DictionaryRef dictionary(obj);
      if (dictionary.Exists("APAEdition") &&
          QuillStrings::strings().trimmed(dictionary.Item("APAEdition").toString()) == "7")
        edition = 7;
    });
    proc.step([&] { result = FormatterImplementation::getMetaData(ObjectRef(this), edition); });
    proc.step([&] { mMetaData = ObjectRef(); });
    return result;
  });
}

void Main2::IntArray(Array& words, const Array& elements) {
  traced(*this, "IntArray", params(arg("words", words), arg("elements", elements)), [&](Procedure& proc) {
    int16_t n = 0;
    proc.local("n", n);
    proc.step([&] { n = Variant(elements.upperBound()).toInteger(); });
    proc.step([&] { words = Array::vector(0, n, VarType::Integer); });
    for (int32_t i = 0; i <= n; ++i) proc.step([&] { words.set(i, elements.get(i)); });
  });
}

void Main2::getStartupFormSettings(Array& theSectionInstructions, Array& theTitleInstructions, Array& postGradIndices,
                                   Array& defaultAlwaysOn, Array& defaultPostgrad, int16_t& defaultPaperType) {
  traced(*this, "getStartupFormSettings",
         params(arg("theSectionInstructions", theSectionInstructions), arg("theTitleInstructions", theTitleInstructions),
                arg("postGradIndices", postGradIndices), arg("defaultAlwaysOn", defaultAlwaysOn),
                arg("defaultPostgrad", defaultPostgrad), arg("defaultPaperType", defaultPaperType)),
         [&](Procedure& proc) {
           proc.step([&] {
             FormatterImplementation::initializeSectionInstructions(ObjectRef(this), theSectionInstructions);
           });
           proc.step([&] { initializeTitleInstructions(theTitleInstructions); });
           proc.step([&] {
             FormatterImplementation::getStartupFormSettings(ObjectRef(this), postGradIndices, defaultAlwaysOn,
                                                             defaultPostgrad, defaultPaperType);
           });
         });
}

bool Main2::firstItalicizedInReferenceIsTitle(const std::string& str) {
  return traced(*this, "firstItalicizedInReferenceIsTitle", params(arg("str", str)), [&](Procedure& proc) {
    return proc.step([&] { return FormatterImplementation::firstItalicizedInReferenceIsTitle(str); });
  });
}

bool Main2::ReferenceIsInFormatType(const std::string& str, std::string& title, int16_t decoratedStrType,
                                    const ObjectRef& controller) {
  return traced(*this, "ReferenceIsInFormatType",
                params(arg("str", str), arg("title", title), arg("decoratedStrType", decoratedStrType),
                       arg("controller", controller)),
                [&](Procedure& proc) {
                  // The classifier gets its own copy of the type; what it writes there stays with it.
                  int16_t typeCopy = decoratedStrType;
                  return proc.step([&] {
                    return FormatterImplementation::ReferenceIsInFormatType(str, title, typeCopy, controller);
                  });
                });
}

int16_t Main2::GetReferenceType(const std::string& entry, std::string& decoratedStr, std::string& subTitle,
                                const ObjectRef& controller) {
  return traced(*this, "GetReferenceType",
                params(arg("entry", entry), arg("decoratedStr", decoratedStr), arg("subTitle", subTitle),
                       arg("controller", controller)),
                [&](Procedure& proc) {
                  return proc.step([&] {
                    return FormatterImplementation::GetReferenceType(entry, decoratedStr, subTitle, controller);
                  });
                });
}

void Main2::InitializeBuilder() {
  traced(*this, "InitializeBuilder", [&](Procedure& proc) {
    proc.step([&] { DocumentBuilder::InitializeBuilder(mParam, ObjectRef(this)); });
    proc.step([&] { mParam = ObjectRef(); });
  });
}

void Main2::StartNewChapter() {
  traced(*this, "StartNewChapter", [&](Procedure& proc) {
    proc.step([&] { FormatterImplementation::StartNewChapter(mParam); });
    proc.step([&] { mParam = ObjectRef(); });
  });
}

bool Main2::UpdateFrontMatter() {
  return traced(*this, "UpdateFrontMatter[Get]", [&](Procedure& proc) {
    return proc.step([] { return FormatterImplementation::UpdateFrontMatter(); });
  });
}

std::string Main2::buildInstruction(const std::string& caption, int16_t instruction) {
  return traced(*this, "buildInstruction", params(arg("caption", caption), arg("instruction", instruction)),
                [&](Procedure&) { return std::to_string(instruction) + caption; });
}

std::string Main2::buildPageHeader(const std::string& caption, int16_t instruction) {
  return traced(*this, "buildPageHeader", params(arg("caption", caption), arg("instruction", instruction)),
                [&](Procedure&) { return std::to_string(instruction) + caption; });
}

void Main2::Add(const Variant& key, const Variant& value) {
  traced(*this, "Add", params(arg("key", key), arg("value", value)), [&](Procedure& proc) {
    const host::DictionaryRef dictionary(mMetaData);
    bool exists = false;
    proc.step([&] { exists = dictionary.Exists(key); });
    if (exists)
      proc.step([&] { dictionary.setItem(key, value); });
    else
      proc.step([&] { dictionary.Add(key, value); });
  });
}

void Main2::addHeadings(const std::string& chapter, const std::string& heading1, const std::string& heading2,
                        const std::string& heading3, const std::string& heading4) {
  traced(*this, "addHeadings",
         params(arg("chapter", chapter), arg("heading1", heading1), arg("heading2", heading2),
                arg("heading3", heading3), arg("heading4", heading4)),
         [&](Procedure& proc) {
           proc.step([&] {
             const std::string headings[] = {chapter, heading1, heading2, heading3, heading4};
             Add("headings", stringArray(headings));
           });
         });
}

std::string Main2::buildStyle(bool centered, bool indented, bool bold, bool italic, bool underline, bool doubleSpace,
                              bool extraLineBefore) {
  return traced(*this, "buildStyle",
                params(arg("centered", centered), arg("indented", indented), arg("bold", bold), arg("italic", italic),
                       arg("underline", underline), arg("doubleSpace", doubleSpace),
                       arg("extraLineBefore", extraLineBefore)),
                [&](Procedure& proc) {
                  return proc.step([&] {
                    const auto& str = QuillStrings::strings();
                    return str.join(str.toStringArray(centered, indented, bold, italic, underline, doubleSpace,
                                                      extraLineBefore),
                                    std::string_view(&kStyleSeparator, 1));
                  });
                });
}

int16_t Main2::TableFormMetaData(Array& ButtonNames, Array& ButtonTooltips) {
  return traced(*this, "TableFormMetaData[Get]",
                params(arg("ButtonNames", ButtonNames), arg("ButtonTooltips", ButtonTooltips)), [&](Procedure& proc) {
                  return proc.step([&] { return DocumentBuilder::TableFormMetaData(ButtonNames, ButtonTooltips); });
                });
}

ObjectRef Main2::TableTemplate(int16_t buttonClickedIndex, Array& metadata) {
  return traced(*this, "TableTemplate[Get]",
                params(arg("buttonClickedIndex", buttonClickedIndex), arg("metadata", metadata)),
                [&](Procedure& proc) {
                  return proc.step([&] { return DocumentBuilder::TableTemplate(buttonClickedIndex, metadata); });
                });
}

void Main2::initializeTitleInstructions(Array& retValue) {
  traced(*this, "initializeTitleInstructions", params(arg("retValue", retValue)), [&](Procedure& proc) {
    Array list(VarType::String);
    proc.local("list", list);
    proc.step([&] { retValue = Array::matrix(0, 3, 0, 6, VarType::String); });
    for (int16_t p = 0; p <= 3; ++p) {
      proc.step([&] { FormatterImplementation::initTitleInstructions(p, list); });
      int32_t upper = -1;
      proc.step([&] { upper = list.dimensions() ? list.upperBound() : -1; });
      for (int32_t j = 0; j <= upper; ++j) proc.step([&] { retValue.set(p, j, list.get(j)); });
    }
  });
}

void Main2::setDefaultMetadataSettings(const ObjectRef& obj) {
  traced(*this, "setDefaultMetadataSettings", params(arg("obj", obj)), [&](Procedure& proc) {
    const host::DictionaryRef dictionary(obj);
    // Margins in points; the numbered formatter options the core may override.
    const std::pair<Variant, const char*> defaults[] = {
        {"MarginTop", "72"},  {"MarginBottom", "72"}, {"MarginLeft", "72"}, {"MarginLeftPostgrad", "72"},
        {"MarginRight", "72"}, {int16_t{1}, "True"},  {int16_t{11}, "False"}, {int16_t{12}, "False"},
        {int16_t{2}, "False"}, {int16_t{17}, "False"}, {int16_t{18}, "False"}, {int16_t{3}, "False"},
        {int16_t{8}, "True"},  {int16_t{9}, "True"},  {int16_t{10}, "False"}, {int16_t{0}, "True"},
        {int16_t{20}, "False"}};
    for (const auto& [key, value] : defaults) proc.step([&] { dictionary.Add(key, value); });
  });
}

}  // namespace QuillFormatAPA
