#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "Args.h"
#include "Array.h"
#include "Object.h"
#include "Variant.h"

// Typed proxies for the objects the reference side of the library calls: the
// reference formatter's settings with its component and output templates, the
// reference entries themselves, the data source, formatted text and the
// controller whose output template answers date and page tests.
namespace QuillFormatAPA::host {

// A component template of the formatter settings (`outputTemplates(i)`), the
// entry's `outputTemplate` or the `citationOutputTemplate`.
class OutputTemplateRef {
 public:
  explicit OutputTemplateRef(ObjectRef o) : o_(std::move(o)) {}
  const ObjectRef& object() const { return o_; }
  // Reset with named arguments only, or with leading positional ones.
  void Reset(std::span<NamedArg> named) const;
  void Reset(std::span<Variant> positional, std::span<NamedArg> named) const;
  void CloneForEditors(const ObjectRef& editorsTemplate, bool twoEditorsIsOnlyCaseHaveNoComma,
                       bool reverseEditors) const;
  void CloneForHeadingCapitalization(const ObjectRef& source, const Array& titleTypes) const;
  // One row of an entry's output template; `strings` holds the condition,
  // prefix, separators and terminator in order.
  void Add(int32_t itemIndex, bool formatted, std::span<const std::string_view> strings) const;
  bool isYear(std::string_view text) const;
  bool isPage(std::string_view text) const;

 private:
  ObjectRef o_;
};

// The APA edition an object of the host names by its "APAEdition" property:
// 7 for the 7th edition; 6 (the template's own) when it says anything else,
// or has no such member at all.
int16_t apaEdition(const ObjectRef& o);

// The reference formatter's settings object.
class FormatterSettingsRef {
 public:
  explicit FormatterSettingsRef(ObjectRef o) : o_(std::move(o)) {}
  ObjectRef outputTemplates(int16_t index) const;
  ObjectRef outputTemplate() const;
  ObjectRef citationOutputTemplate() const;
  bool twoEditorsIsOnlyCaseHaveNoComma() const;
  bool reverseEditors() const;
  // The APA edition the host asks for (its "APAEdition"), 6 when it names none.
  int16_t edition() const;

  void setFormat(int16_t v) const;
  void setIsSeasonFirst(bool v) const;
  void setJournalFormat(std::string_view v) const;
  void setTooltipTextJournal(std::string_view v) const;
  void setTooltipTextPeriodical(std::string_view v) const;
  void setSameAuthorPrefixInReferenceList(std::string_view v) const;
  void setTwoEditorsIsOnlyCaseHaveNoComma(bool v) const;
  void setReverseEditors(bool v) const;
  void setPublishDateFormat(std::string_view v) const;
  void setAccessDateFormat(std::string_view v) const;
  void setHasPeriodicalPageNumbers(bool v) const;
  void setDisableKey(int16_t index, std::string_view v) const;
  void setDisableReason(int16_t index, std::string_view v) const;
  void setDisableReference(int16_t index, std::string_view v) const;
  // The electronic-source switches, by the settings' own names.
  void setEsourceShowsAuthorPopup(bool v) const;
  void setEsourceHasTitle(bool v) const;
  void setEsourceHasTo(bool v) const;
  void setEmailListTitleVisible(bool v) const;
  void setSupportsWebtitle(bool v) const;
  void setSupportsSocialMedia(bool v) const;
  void setSupportsURL(bool v) const;
  void setSupportsAccessDate(bool v) const;
  void setDegreeSupport(int16_t v) const;
  void setEsourceType(int16_t v) const;

 private:
  ObjectRef o_;
};

// The controller of a reference (the template's generic reference object as
// the classifier sees it): its output template answers date and page tests.
class ControllerRef {
 public:
  explicit ControllerRef(ObjectRef o) : o_(std::move(o)) {}
  OutputTemplateRef DefaultOutputTemplate() const;

 private:
  ObjectRef o_;
};

// The fields of a reference that the entry classes read and write on the
// data source, each a property of the same name.
enum class Field {
  author, title, publishDate, OnlinePublishDate, accessDate, website, notes, page, pageRange, isNewspaper,
  Periodical, periodicalType, PeriodicalIssueType, ArticleType, RefersTo, RefersToType, volume, Number, issue,
  subwork, subworkType, publisher, place, editionBook, editorStr, isEditor, CompilerOrEditor, translator,
  MultiPartWork, IsMultiVol, BookPageRange, publicationMediumDetails, reprint, reprintFormatted, pageCitation,
  isPage, isReferenceEntry, Medium, esourceType, Degree, subworkTranslator,
  siteName,  // the site or blog an electronic source is on (the 7th edition names it)
};
constexpr int kFieldCount = static_cast<int>(Field::siteName) + 1;
const char* fieldName(Field f);

// The template's generic reference object: the data source of an entry.
class DataSourceRef {
 public:
  explicit DataSourceRef(ObjectRef o) : o_(std::move(o)) {}
  const ObjectRef& object() const { return o_; }

  std::string text(Field f) const;
  bool flag(Field f) const;
  void set(Field f, const Variant& value) const;

  // The formatted author list; `isFootnote` for the short form.
  std::string authorStr(bool isFootnote, bool second) const;
  std::string titleStr(bool isFootnote) const;
  bool isYear(std::string_view text) const;
  // Takes the author (and the other common front parts the mode asks for)
  // off the front of `str`; answers the author text taken.
  std::string parseCommon(int16_t mode, std::string& str) const;

 private:
  ObjectRef o_;
};

// A formatted item: text in runs, style 0 plain and 1 italic.
class FormattedTextRef {
 public:
  explicit FormattedTextRef(ObjectRef o) : o_(std::move(o)) {}
  void Add(std::string_view text, int32_t style) const;

 private:
  ObjectRef o_;
};

// A reference-entry object (Periodical, NonPeriodical, Esource), called by name.
class EntryRef {
 public:
  explicit EntryRef(ObjectRef o) : o_(std::move(o)) {}
  void getMetaData(ObjectRef& formatterSettings, std::string& productName) const;

 private:
  ObjectRef o_;
};

}  // namespace QuillFormatAPA::host
