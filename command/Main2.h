#pragma once

#include <cstdint>
#include <string>

#include "diagnostics/Procedure.h"
#include "host/LibraryObject.h"
#include "host/MemberTable.h"

namespace QuillFormatAPA {

// The library's command object: the one door through which the template
// reaches it. It holds no formatting knowledge; each member forwards to the
// paper builder, the formatter core or the reference-entry classes, or builds
// one of the small text records the template parses.
class Main2 final : public Dispatchable<Main2>, public Module, private LibraryObject {
 public:
  // A new command object, initialised as the template's creation of one runs it.
  static Ref<Main2> create();
  ~Main2() override;

  static const MemberTable& members();
  std::string_view moduleName() const noexcept override { return "Main2"; }
  void reportVariables(const VariableReport& r) const override;

  // ---- the public interface, in dispatch order
  void Execute(std::string& command, const Variant& theParam);
  ObjectRef ReferenceBuilder(int16_t whichType, const ObjectRef& formatterSettings, const std::string& productName);
  std::string getMetaData(const ObjectRef& obj);
  void IntArray(Array& words, const Array& elements);
  void getStartupFormSettings(Array& theSectionInstructions, Array& theTitleInstructions, Array& postGradIndices,
                              Array& defaultAlwaysOn, Array& defaultPostgrad, int16_t& defaultPaperType);
  bool firstItalicizedInReferenceIsTitle(const std::string& str);
  bool ReferenceIsInFormatType(const std::string& str, std::string& title, int16_t decoratedStrType,
                               const ObjectRef& controller);
  int16_t GetReferenceType(const std::string& entry, std::string& decoratedStr, std::string& subTitle,
                           const ObjectRef& controller);
  void InitializeBuilder();
  void StartNewChapter();
  bool UpdateFrontMatter();
  std::string buildInstruction(const std::string& caption, int16_t instruction);
  std::string buildPageHeader(const std::string& caption, int16_t instruction);
  void Add(const Variant& key, const Variant& value);
  void addHeadings(const std::string& chapter, const std::string& heading1, const std::string& heading2,
                   const std::string& heading3, const std::string& heading4);
  std::string buildStyle(bool centered, bool indented, bool bold, bool italic, bool underline, bool doubleSpace,
                         bool extraLineBefore);
  int16_t TableFormMetaData(Array& ButtonNames, Array& ButtonTooltips);
  ObjectRef TableTemplate(int16_t buttonClickedIndex, Array& metadata);

  // Prefer create(): a bare construction skips the class's initialisation.
  Main2() = default;

 private:
  void classInitialize();
  void initializeTitleInstructions(Array& retValue);
  void setDefaultMetadataSettings(const ObjectRef& obj);

  ObjectRef mParam;
  ObjectRef mMetaData;
};

}  // namespace QuillFormatAPA
