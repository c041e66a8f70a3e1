#include "quillpaper/references/ReferenceSource.h"

#include <algorithm>
#include <cctype>

#include "quillpaper/references/ReferenceTests.h"
#include "strings/ReferenceRules.h"
#include "strings/StringUtility.h"

namespace quillpaper {

namespace {

const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }

// The editor tags an author list may carry: "(Ed.)", "(Eds.)", "(Comp.)", "(Comps.)".
std::string takeEditorTag(std::string& authors) {
  for (const char* tag : {"(Eds.)", "(Ed.)", "(Comps.)", "(Comp.)"}) {
    std::string t = str().trimmed(authors);
    str().stripTrailing(t, ".");
    if (str().stripTrailing(t, tag)) {
      authors = str().trimmed(t);
      return std::string(tag).substr(1, std::string(tag).size() - 2);
    }
  }
  return {};
}

}  // namespace

bool ReferenceSource::addressIsDoi() const { return str().beginsWith(address_, "10."); }

// An address may follow the name of its site: "Agency website: i.org/x".
std::pair<std::string, std::string> ReferenceSource::labelAndAddress() const {
  const size_t blank = address_.rfind(' ');
  if (blank == std::string::npos) return {"", address_};
  return {address_.substr(0, blank + 1), address_.substr(blank + 1)};
}

std::string ReferenceSource::url() const {
  const std::string address = labelAndAddress().second;
  if (address.empty() || addressIsDoi()) return {};
  // The parser takes "http://" off; an address typed without it stays so.
  if (str().contains(address, "://") || (!str().contains(entry_, "http://" + address) && str().contains(entry_, address)))
    return address;
  if (!str().contains(address, ".")) return {};
  return "http://" + address;
}

// The settings' DOIPrefix ("doi:" in the 6th edition, "https://doi.org/" in
// the 7th) and usesRetrievedPrefix (false in the 7th: an address alone,
// "Retrieved … from" only with a retrieval date).
std::string ReferenceSource::retrievalStatement() const {
  if (address_.empty()) return {};
  ComponentTemplate* web = settings_ ? &settings_->component(13) : nullptr;
  if (addressIsDoi()) {
    const std::string prefix = web ? web->text("DOIPrefix") : std::string();
    return (prefix.empty() ? "doi:" : prefix) + address_;
  }
  const std::string where = url().empty() ? address_ : labelAndAddress().first + url();
  const Variant retrievedPrefix = web ? web->property("usesRetrievedPrefix") : Variant();
  const bool seventh = !retrievedPrefix.isEmpty() && !retrievedPrefix.toBool();
  // The 7th edition's electronic sources name their site in an item of its own.
  const std::string site = siteName_.empty() || seventh ? std::string() : siteName_ + ". ";
  if (!typedAccessDate_.empty()) return site + "Retrieved " + typedAccessDate_ + ", from " + where;
  const std::string accessDate = text("accessDate");
  if (settings_ && !accessDate.empty() && !settings_->text("accessDateFormat").empty())
    return site + "Retrieved " + accessDate + ", from " + where;
  if (seventh) return site + where;
  return site + "Retrieved from " + where;
}

// The fields of one reference the entry classes read and write, the ones the
// host keeps besides (the editor tag of an author list), and the operations.
std::span<const std::string_view> ReferenceSource::knownNames() const {
  static const std::vector<std::string_view> kMembers = [] {
    std::vector<std::string_view> names = {
        "author", "title", "publishdate", "onlinepublishdate", "accessdate", "website", "notes", "page", "pagerange",
        "isnewspaper", "periodical", "periodicaltype", "periodicalissuetype", "articletype", "refersto",
        "referstotype", "volume", "number", "issue", "subwork", "subworktype", "publisher", "place", "editionbook",
        "editorstr", "iseditor", "compileroreditor", "translator", "multipartwork", "ismultivol", "bookpagerange",
        "publicationmediumdetails", "reprint", "reprintformatted", "pagecitation", "ispage", "isreferenceentry",
        "medium", "esourcetype", "degree", "subworktranslator", "editortag", "defaultoutputtemplate", "authorstr",
        "titlestr", "isyear", "parsecommon", "sitename"};
    std::sort(names.begin(), names.end());
    return names;
  }();
  return kMembers;
}

uint64_t ReferenceSource::idScope() const noexcept {
  static const uint64_t scope = newIdScope();
  return scope;
}

bool ReferenceSource::readComputed(const std::string& key, Variant& value) const {
  if (key == "website") {
    value = retrievalStatement();
    return true;
  }
  if (key == "sitename") {
    value = siteName_;
    return true;
  }
  if (key == "isnewspaper") {
    value = text("periodicalType") == "Newspaper";
    return true;
  }
  if (key == "defaultoutputtemplate") {
    value = ObjectRef(tests_);
    return true;
  }
  return false;
}

bool ReferenceSource::writeComputed(const std::string& key, const Variant& value) {
  if (key == "website") {
    address_ = str().trimmed(value.toString());
    return true;
  }
  if (key == "author") {
    // The author list as written; its names for the author string.
    authors_ = readNames(value.toString());
    return false;
  }
  return false;
}

bool ReferenceSource::call(const std::string& name, Args& args, Variant& result) {
  if (name == "authorstr") {
    std::string list = formatNames(authors_, settings_ ? settings_->authorStyle() : AuthorStyle{});
    const std::string tag = text("editorTag");
    if (!list.empty() && !tag.empty()) list += " (" + tag + ")";
    result = list;
    return true;
  }
  if (name == "titlestr") {
    result = text("title");
    return true;
  }
  if (name == "isyear") {
    result = isYearText(args.positional().empty() ? "" : args.positional()[0].toString());
    return true;
  }
  if (name == "parsecommon") {
    if (args.positional().size() < 2) throw AutomationError(kArgumentNotOptional, "parseCommon(mode, str)");
    Variant& slot = args.positional()[1].deref();
    std::string text = slot.toString();
    result = parseCommon(static_cast<int>(args.positional()[0].toInteger()), text);
    if (args.positional()[1].isByRef()) slot = text;
    return true;
  }
  return false;
}

// Mode 0 reads an author alone ("Smith, J." of a personal communication)
// when no date follows it; the other modes need the date.
std::string ReferenceSource::parseCommon(int mode, std::string& text) {
  std::string s = str().trimmed(text);
  if (s.empty() || s[0] == '(' || s[0] == '[') return {};
  size_t at = QuillStrings::rules::dateGroup(s);
  if (at == std::string::npos && mode != 0) return {};
  if (at == std::string::npos) at = s.size();
  std::string authors = s.substr(0, at);
  setProperty("editorTag", takeEditorTag(authors));
  setProperty("author", authors);
  text = at < s.size() ? s.substr(at + 1) : std::string();
  return authors;
}

}  // namespace quillpaper
