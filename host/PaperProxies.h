#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Array.h"
#include "Object.h"
#include "Variant.h"

// Typed proxies for the objects the paper side of the library calls: the
// command object as record builder, the settings dictionary, the document
// builder with its sections and pages, and the chapter instruction builder.
// Each member makes one late-bound call; failures raise AutomationError.
namespace QuillFormatAPA::host {

// The command object (Main2) as the builder and the formatter core use it.
class CommandRef {
 public:
  explicit CommandRef(ObjectRef o) : o_(std::move(o)) {}
  std::string buildInstruction(std::string_view caption, int16_t instruction) const;
  std::string buildPageHeader(std::string_view caption, int16_t instruction) const;
  std::string buildStyle(bool centered, bool indented, bool bold, bool italic, bool underline, bool doubleSpace,
                         bool extraLineBefore) const;
  void Add(const Variant& key, const Variant& value) const;
  void addHeadings(std::string_view chapter, std::string_view heading1, std::string_view heading2,
                   std::string_view heading3, std::string_view heading4) const;
  void IntArray(Array& words, const Array& elements) const;

 private:
  ObjectRef o_;
};

// The template's settings dictionary.
class DictionaryRef {
 public:
  explicit DictionaryRef(ObjectRef o) : o_(std::move(o)) {}
  bool Exists(const Variant& key) const;
  Variant Item(const Variant& key) const;
  void setItem(const Variant& key, const Variant& value) const;
  void Add(const Variant& key, const Variant& value) const;

 private:
  ObjectRef o_;
};

class DocumentBuilderRef {
 public:
  explicit DocumentBuilderRef(ObjectRef o) : o_(std::move(o)) {}
  bool outputTemplate() const;
  // Adds a section over parts first..last; sameAsPreviousSection is passed
  // only when given, so that the builder's default applies otherwise.
  ObjectRef AddSection(int32_t firstPart, int32_t lastPart, std::string_view pageHeader,
                       std::optional<bool> sameAsPreviousSection = std::nullopt) const;
  bool part(int32_t index) const;
  std::string UserConfigurationValue(std::string_view key) const;
  int16_t PaperType() const;
  // The APA edition the builder asks for (its "APAEdition"), 6 when it names
  // none.
  int16_t edition() const;

 private:
  ObjectRef o_;
};

class SectionRef {
 public:
  explicit SectionRef(ObjectRef o) : o_(std::move(o)) {}
  ObjectRef addPage() const;

 private:
  ObjectRef o_;
};

class PageRef {
 public:
  explicit PageRef(ObjectRef o) : o_(std::move(o)) {}
  void addStyle(std::string_view name) const;
  void addText(std::string_view text) const;
  void addTextToggleBold(std::string_view text) const;
  void setCharacterFormat(bool toggleBold, bool italic, bool superscript) const;
  void addCarriageReturns(int16_t count) const;
  void addEditingHint(int16_t id) const;
  void addEditingHint(int32_t id) const;
  void addOneClick(std::string_view text) const;
  void addBookmark(std::string_view name) const;
  void suppressPageBreak() const;
  void AddCenteredParagraph(std::string_view text, bool partHeading) const;
  void addTOC(int16_t kind) const;
  void AddCaption(std::string_view kind) const;
  void AddSection(std::string_view heading, std::string_view hint, bool outputTemplate) const;

 private:
  ObjectRef o_;
};

// The template's instruction builder that starts a chapter.
class InstructionBuilderRef {
 public:
  explicit InstructionBuilderRef(ObjectRef o) : o_(std::move(o)) {}
  void addStyle(std::string_view name) const;
  void addText(std::string_view text) const;
  void AddAutoNumber(std::string_view sequence) const;
  void addOneClick(std::string_view text) const;
  void addCarriageReturns(int16_t count) const;

 private:
  ObjectRef o_;
};

}  // namespace QuillFormatAPA::host
