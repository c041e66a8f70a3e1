#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "diagnostics/Procedure.h"
#include "host/LibraryObject.h"
#include "host/MemberTable.h"
#include "host/ReferenceProxies.h"
#include "strings/ReferenceRules.h"

// What the three reference-entry classes share: the data source they keep,
// the registration of their settings and output-template rows, and the
// members of the entry contract.
namespace QuillFormatAPA::references {

// The marker of a row that carries two sets of strings, chosen by initChecking.
inline constexpr std::string_view kCheckingCondition = "=__CALLBACK_FOR_CHECKING__";

// One row of an entry's output template: its item, whether the item is
// formatted, then the condition, prefix, separators and terminator.
struct TemplateRow {
  int32_t item;
  bool formatted;
  std::initializer_list<std::string_view> strings;
};

// The entry's output template: Reset with the last item index (and the
// class's list of texts, where it has one), then one Add per row.
void resetTemplate(const host::OutputTemplateRef& output, int16_t lastIndex, std::string_view list = {});
void addRow(const host::OutputTemplateRef& output, const TemplateRow& row);

using QuillStrings::rules::dateGroup;

// Where the sentences of `text` begin, after the first: past ". ", "? ",
// "! " (a closing quotation mark may come between), outside parentheses and
// brackets.
std::vector<size_t> sentenceStarts(std::string_view text);
// The same, less the full stops of abbreviations ("Dr.", "vs.", "Vol.", an
// initial, "Phys. Rev. Lett.", "Univ."): where the statements of an entry
// begin. One statement has none.
std::vector<size_t> statementStarts(std::string_view text);
bool isOneSentence(std::string_view text);

// Whether the text before the date is a title rather than an author list:
// sentence case (a lower-case word that is not a particle or a function
// word) and no initials. "Mission, vision & values" is a title; "University
// of Bergen", "Smith, J. A." and "lang, k. d." are authors.
bool readsAsTitle(std::string_view before);

// The members every entry class offers, in the order the template calls
// them (initChecking only where the class has one); the class adds its own.
template <class T>
ClassBuilder<T> contractMembers(std::string className) {
  ClassBuilder<T> b(std::move(className));
  b.template method<&T::setDataSource>("setDataSource", {"superClass"});
  b.template method<&T::getMetaData>("getMetaData", {"formatterSettings", "productName"});
  if constexpr (requires { &T::initChecking; })
    b.template method<&T::initChecking>("initChecking", {"isFootnote", {"checkingArray", VarType::Boolean}});
  b.template method<&T::IsFootnoteEntry>("IsFootnoteEntry", {"author", "title", "entry"});
  b.template method<&T::FindTitleImpl>("FindTitleImpl", {"str", "isFootnote", "decoratedStr", "subTitle"});
  b.template method<&T::extractPageNumberFromFootnote>("extractPageNumberFromFootnote", {"prevFootnoteStr"});
  b.template method<&T::toFormattedStringImpl>(
      "toFormattedStringImpl",
      {"isFootnote", {"items", VarType::String}, {"formattedItems", VarType::Object}, "shortenedVersion"});
  b.template method<&T::parseEntry>("parseEntry", {"str", "titleStr", "isFootnote"});
  return b;
}

// A class's output template: its last item index, the list of texts Reset
// keeps (where it has one) and its rows in registration order.
struct EntryTemplate {
  int16_t lastIndex;
  std::string_view list;
  std::span<const TemplateRow> rows;
};

// getMetaData's second half, the same for every class: the output template
// reset and its rows added, then the citation template.
void writeTemplates(Procedure& proc, const host::FormatterSettingsRef& settings, const EntryTemplate& entryTemplate);

// The base of the entry classes. Derived provides `static constexpr
// std::string_view kClassName`, `const EntryTemplate& entryTemplate()`
// (which may depend on what writeSettings read, the edition),
// `void writeSettings(Procedure&, const host::FormatterSettingsRef&)` (the
// settings getMetaData writes before the template) and the rest of the
// contract (FindTitleImpl, parseEntry, toFormattedStringImpl, the footnote
// members, initChecking where it has one).
template <class Derived>
class ReferenceEntry : public Dispatchable<Derived>, public Module, private LibraryObject {
 public:
  static const MemberTable& members() {
    static const MemberTable& table = contractMembers<Derived>(std::string(Derived::kClassName)).build();
    return table;
  }
  std::string_view moduleName() const noexcept override { return Derived::kClassName; }
  void reportVariables(const VariableReport& r) const override { r.variable("super", super_); }

  void setDataSource(ObjectRef& superClass) {
    traced(*this, "setDataSource", params(arg("superClass", superClass)),
           [&](Procedure& proc) { proc.step([&] { super_ = superClass; }); });
  }

  // The class's settings, then its output template; `productName` is not used.
  void getMetaData(ObjectRef& formatterSettings, std::string& productName) {
    traced(*this, "getMetaData", params(arg("formatterSettings", formatterSettings), arg("productName", productName)),
           [&](Procedure& proc) {
             const host::FormatterSettingsRef settings(formatterSettings);
             Derived& self = *static_cast<Derived*>(this);
             self.writeSettings(proc, settings);
             writeTemplates(proc, settings, self.entryTemplate());
           });
  }

 protected:
  host::DataSourceRef source() const { return host::DataSourceRef(super_); }

 private:
  ObjectRef super_;
};

// A by-reference array's element `k`, counted from its lower bound.
inline int32_t at(const Array& a, int32_t k) { return indexAt(a, k); }

}  // namespace QuillFormatAPA::references
