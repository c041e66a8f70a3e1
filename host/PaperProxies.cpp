#include "PaperProxies.h"

#include "CallSite.h"
#include "ReferenceProxies.h"

namespace QuillFormatAPA::host {

std::string CommandRef::buildInstruction(std::string_view caption, int16_t instruction) const {
  static const CallSite site("buildInstruction");
  return site.call(o_, caption, instruction).toString();
}

std::string CommandRef::buildPageHeader(std::string_view caption, int16_t instruction) const {
  static const CallSite site("buildPageHeader");
  return site.call(o_, caption, instruction).toString();
}

std::string CommandRef::buildStyle(bool centered, bool indented, bool bold, bool italic, bool underline,
                                   bool doubleSpace, bool extraLineBefore) const {
  static const CallSite site("buildStyle");
  return site.call(o_, centered, indented, bold, italic, underline, doubleSpace, extraLineBefore).toString();
}

void CommandRef::Add(const Variant& key, const Variant& value) const {
  static const CallSite site("Add");
  site.call(o_, key, value);
}

void CommandRef::addHeadings(std::string_view chapter, std::string_view heading1, std::string_view heading2,
                             std::string_view heading3, std::string_view heading4) const {
  static const CallSite site("addHeadings");
  site.call(o_, chapter, heading1, heading2, heading3, heading4);
}

void CommandRef::IntArray(Array& words, const Array& elements) const {
  static const CallSite site("IntArray");
  site.call(o_, byRef(words), elements);
}

bool DictionaryRef::Exists(const Variant& key) const {
  static const CallSite site("Exists");
  return site.call(o_, key).toBool();
}

Variant DictionaryRef::Item(const Variant& key) const {
  static const CallSite site("Item");
  return site.call(o_, key);
}

void DictionaryRef::setItem(const Variant& key, const Variant& value) const {
  static const CallSite site("Item");
  site.put(o_, key, value);
}

void DictionaryRef::Add(const Variant& key, const Variant& value) const {
  static const CallSite site("Add");
  site.call(o_, key, value);
}

bool DocumentBuilderRef::outputTemplate() const {
  static const CallSite site("outputTemplate");
  return site.call(o_).toBool();
}

ObjectRef DocumentBuilderRef::AddSection(int32_t firstPart, int32_t lastPart, std::string_view pageHeader,
                                         std::optional<bool> sameAsPreviousSection) const {
  static const CallSite site("AddSection");
  if (sameAsPreviousSection)
    return site
        .call(o_, firstPart, lastPart, named("pageHeader", pageHeader),
              named("sameAsPreviousSection", *sameAsPreviousSection))
        .toObject();
  return site.call(o_, firstPart, lastPart, named("pageHeader", pageHeader)).toObject();
}

bool DocumentBuilderRef::part(int32_t index) const {
  static const CallSite site("part");
  return site.call(o_, index).toBool();
}

std::string DocumentBuilderRef::UserConfigurationValue(std::string_view key) const {
  static const CallSite site("UserConfigurationValue");
  return site.call(o_, key).toString();
}

int16_t DocumentBuilderRef::PaperType() const {
  static const CallSite site("PaperType");
  return site.call(o_).toInteger();
}

int16_t DocumentBuilderRef::edition() const { return apaEdition(o_); }

ObjectRef SectionRef::addPage() const {
  static const CallSite site("addPage");
  return site.call(o_).toObject();
}

void PageRef::addStyle(std::string_view name) const {
  static const CallSite site("addStyle");
  site.call(o_, name);
}

void PageRef::addText(std::string_view text) const {
  static const CallSite site("addText");
  site.call(o_, text);
}

void PageRef::addTextToggleBold(std::string_view text) const {
  static const CallSite site("addTextToggleBold");
  site.call(o_, text);
}

void PageRef::setCharacterFormat(bool toggleBold, bool italic, bool superscript) const {
  static const CallSite site("setCharacterFormat");
  site.call(o_, toggleBold, italic, superscript);
}

void PageRef::addCarriageReturns(int16_t count) const {
  static const CallSite site("addCarriageReturns");
  site.call(o_, count);
}

void PageRef::addEditingHint(int16_t id) const {
  static const CallSite site("addEditingHint");
  site.call(o_, id);
}

void PageRef::addEditingHint(int32_t id) const {
  static const CallSite site("addEditingHint");
  site.call(o_, id);
}

void PageRef::addOneClick(std::string_view text) const {
  static const CallSite site("addOneClick");
  site.call(o_, text);
}

void PageRef::addBookmark(std::string_view name) const {
  static const CallSite site("addBookmark");
  site.call(o_, name);
}

void PageRef::suppressPageBreak() const {
  static const CallSite site("suppressPageBreak");
  site.call(o_);
}

void PageRef::AddCenteredParagraph(std::string_view text, bool partHeading) const {
  static const CallSite site("AddCenteredParagraph");
  site.call(o_, text, named("partHeading", partHeading));
}

void PageRef::addTOC(int16_t kind) const {
  static const CallSite site("addTOC");
  site.call(o_, kind);
}

void PageRef::AddCaption(std::string_view kind) const {
  static const CallSite site("AddCaption");
  site.call(o_, kind);
}

void PageRef::AddSection(std::string_view heading, std::string_view hint, bool outputTemplate) const {
  static const CallSite site("AddSection");
  site.call(o_, heading, hint, outputTemplate);
}

void InstructionBuilderRef::addStyle(std::string_view name) const {
  static const CallSite site("addStyle");
  site.call(o_, name);
}

void InstructionBuilderRef::addText(std::string_view text) const {
  static const CallSite site("addText");
  site.call(o_, text);
}

void InstructionBuilderRef::AddAutoNumber(std::string_view sequence) const {
  static const CallSite site("AddAutoNumber");
  site.call(o_, sequence);
}

void InstructionBuilderRef::addOneClick(std::string_view text) const {
  static const CallSite site("addOneClick");
  site.call(o_, text);
}

void InstructionBuilderRef::addCarriageReturns(int16_t count) const {
  static const CallSite site("addCarriageReturns");
  site.call(o_, count);
}

}  // namespace QuillFormatAPA::host
