#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "diagnostics/Procedure.h"
#include "host/LibraryObject.h"
#include "host/MemberTable.h"
#include "host/ReferenceProxies.h"

// What the three reference-entry classes share: the data source they keep,
// and the registration of their output-template rows.
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

// Where the date of an APA reference stands: the position of the blank before
// its parenthesis (" (1993)", " (2006, December 10)", " (n.d.)", " (in press)"),
// or npos.
size_t dateGroup(std::string_view text);

// Where the sentences of `text` begin, after the first: past ". ", "? ",
// "! " (a closing quotation mark may come between), outside parentheses and
// brackets; "vs. " does not end a sentence.
std::vector<size_t> sentenceStarts(std::string_view text);
bool isOneSentence(std::string_view text);

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

// A by-reference array's element `k`, counted from its lower bound.
inline int32_t at(const Array& a, int32_t k) { return a.lowerBound() + k; }

}  // namespace QuillFormatAPA::references
