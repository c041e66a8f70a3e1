#include "ReferenceProxies.h"

#include <memory>
#include <vector>

#include "CallSite.h"

namespace QuillFormatAPA::host {

namespace {

template <class T>
void putValue(const ObjectRef& o, const CallSite& site, T value) {
  site.put(o, value);
}

}  // namespace

void OutputTemplateRef::Reset(std::span<NamedArg> named) const { Reset({}, named); }

void OutputTemplateRef::Reset(std::span<Variant> positional, std::span<NamedArg> named) const {
  static const CallSite site("Reset");
  Args args(positional, named);
  site.invoke(o_.get(), CallKind::Method, args);
}

void OutputTemplateRef::CloneForEditors(const ObjectRef& editorsTemplate, bool twoEditorsIsOnlyCaseHaveNoComma,
                                        bool reverseEditors) const {
  static const CallSite site("CloneForEditors");
  site.call(o_, editorsTemplate, twoEditorsIsOnlyCaseHaveNoComma, reverseEditors);
}

void OutputTemplateRef::CloneForHeadingCapitalization(const ObjectRef& source, const Array& titleTypes) const {
  static const CallSite site("CloneForHeadingCapitalization");
  site.call(o_, source, titleTypes);
}

void OutputTemplateRef::Add(int32_t itemIndex, bool formatted, std::span<const std::string_view> strings) const {
  static const CallSite site("Add");
  std::vector<Variant> positional;
  positional.reserve(strings.size() + 2);
  positional.emplace_back(itemIndex);
  positional.emplace_back(formatted);
  for (std::string_view s : strings) positional.push_back(Variant::borrow(s));
  Args args(positional);
  site.invoke(o_.get(), CallKind::Method, args);
}

bool OutputTemplateRef::isYear(std::string_view text) const {
  static const CallSite site("isYear");
  return site.call(o_, text).toBool();
}

bool OutputTemplateRef::isPage(std::string_view text) const {
  static const CallSite site("isPage");
  return site.call(o_, text).toBool();
}

ObjectRef FormatterSettingsRef::outputTemplates(int16_t index) const {
  static const CallSite site("outputTemplates");
  return site.call(o_, index).toObject();
}

ObjectRef FormatterSettingsRef::outputTemplate() const {
  static const CallSite site("outputTemplate");
  return site.call(o_).toObject();
}

ObjectRef FormatterSettingsRef::citationOutputTemplate() const {
  static const CallSite site("citationOutputTemplate");
  return site.call(o_).toObject();
}

bool FormatterSettingsRef::twoEditorsIsOnlyCaseHaveNoComma() const {
  static const CallSite site("twoEditorsIsOnlyCaseHaveNoComma");
  return site.call(o_).toBool();
}

int16_t apaEdition(const ObjectRef& o) {
  static const CallSite site("APAEdition");
  if (!o || o->idOfName("APAEdition") == kUnknownDispId) return 6;
  const Variant v = site.call(o);
  return !v.isEmpty() && v.toInteger() == 7 ? 7 : 6;
}

int16_t FormatterSettingsRef::edition() const { return apaEdition(o_); }

bool FormatterSettingsRef::reverseEditors() const {
  static const CallSite site("reverseEditors");
  return site.call(o_).toBool();
}

#define QFA_SETTING(setter, Type, member)           \
  void FormatterSettingsRef::setter(Type v) const { \
    static const CallSite site(member);             \
    putValue(o_, site, v);                          \
  }
QFA_SETTING(setFormat, int16_t, "Format")
QFA_SETTING(setIsSeasonFirst, bool, "isSeasonFirst")
QFA_SETTING(setJournalFormat, std::string_view, "journalFormat")
QFA_SETTING(setTooltipTextJournal, std::string_view, "tooltipTextJournal")
QFA_SETTING(setTooltipTextPeriodical, std::string_view, "tooltipTextPeriodical")
QFA_SETTING(setSameAuthorPrefixInReferenceList, std::string_view, "sameAuthorPrefixInReferenceList")
QFA_SETTING(setTwoEditorsIsOnlyCaseHaveNoComma, bool, "twoEditorsIsOnlyCaseHaveNoComma")
QFA_SETTING(setReverseEditors, bool, "reverseEditors")
QFA_SETTING(setPublishDateFormat, std::string_view, "publishDateFormat")
QFA_SETTING(setAccessDateFormat, std::string_view, "accessDateFormat")
QFA_SETTING(setHasPeriodicalPageNumbers, bool, "hasPeriodicalPageNumbers")
QFA_SETTING(setEsourceShowsAuthorPopup, bool, "esourceShowsAuthorPopup")
QFA_SETTING(setEsourceHasTitle, bool, "esourceHasTitle")
QFA_SETTING(setEsourceHasTo, bool, "esourceHasTo")
QFA_SETTING(setEmailListTitleVisible, bool, "emailListTitleVisible")
QFA_SETTING(setSupportsWebtitle, bool, "supportsWebtitle")
QFA_SETTING(setSupportsSocialMedia, bool, "supportsSocialMedia")
QFA_SETTING(setSupportsURL, bool, "supportsURL")
QFA_SETTING(setSupportsAccessDate, bool, "supportsAccessDate")
QFA_SETTING(setDegreeSupport, int16_t, "DegreeSupport")
QFA_SETTING(setEsourceType, int16_t, "esourceType")
#undef QFA_SETTING

void FormatterSettingsRef::setDisableKey(int16_t index, std::string_view v) const {
  static const CallSite site("disableKey");
  site.put(o_, index, v);
}

void FormatterSettingsRef::setDisableReason(int16_t index, std::string_view v) const {
  static const CallSite site("disableReason");
  site.put(o_, index, v);
}

void FormatterSettingsRef::setDisableReference(int16_t index, std::string_view v) const {
  static const CallSite site("disableReference");
  site.put(o_, index, v);
}

OutputTemplateRef ControllerRef::DefaultOutputTemplate() const {
  static const CallSite site("DefaultOutputTemplate");
  return OutputTemplateRef(site.call(o_).toObject());
}

const char* fieldName(Field f) {
  static const char* names[kFieldCount] = {
      "author", "title", "publishDate", "OnlinePublishDate", "accessDate", "website", "notes", "page", "pageRange",
      "isNewspaper", "Periodical", "periodicalType", "PeriodicalIssueType", "ArticleType", "RefersTo",
      "RefersToType", "volume", "Number", "issue", "subwork", "subworkType", "publisher", "place", "editionBook",
      "editorStr", "isEditor", "CompilerOrEditor", "translator", "MultiPartWork", "IsMultiVol", "BookPageRange",
      "publicationMediumDetails", "reprint", "reprintFormatted", "pageCitation", "isPage", "isReferenceEntry",
      "Medium", "esourceType", "Degree", "subworkTranslator", "siteName",
  };
  return names[static_cast<int>(f)];
}

namespace {

// One call site per field, made once: a field costs no name lookup per call.
const CallSite& fieldSite(Field f) {
  static const std::vector<std::unique_ptr<CallSite>> sites = [] {
    std::vector<std::unique_ptr<CallSite>> v;
    for (int i = 0; i < kFieldCount; ++i) v.push_back(std::make_unique<CallSite>(fieldName(static_cast<Field>(i))));
    return v;
  }();
  return *sites[static_cast<size_t>(f)];
}

}  // namespace

std::string DataSourceRef::text(Field f) const { return fieldSite(f).call(o_).toString(); }
bool DataSourceRef::flag(Field f) const { return fieldSite(f).call(o_).toBool(); }
void DataSourceRef::set(Field f, const Variant& value) const { fieldSite(f).put(o_, value); }

std::string DataSourceRef::authorStr(bool isFootnote, bool second) const {
  static const CallSite site("authorStr");
  return site.call(o_, isFootnote, second).toString();
}

std::string DataSourceRef::titleStr(bool isFootnote) const {
  static const CallSite site("titleStr");
  return site.call(o_, isFootnote).toString();
}

bool DataSourceRef::isYear(std::string_view text) const {
  static const CallSite site("isYear");
  return site.call(o_, text).toBool();
}

std::string DataSourceRef::parseCommon(int16_t mode, std::string& str) const {
  static const CallSite site("parseCommon");
  return site.call(o_, mode, byRef(str)).toString();
}

void FormattedTextRef::Add(std::string_view text, int32_t style) const {
  static const CallSite site("Add");
  site.call(o_, text, style);
}

void EntryRef::getMetaData(ObjectRef& formatterSettings, std::string& productName) const {
  static const CallSite site("getMetaData");
  site.call(o_, byRef(formatterSettings), byRef(productName));
}

}  // namespace QuillFormatAPA::host
