#include "references/Esource.h"

#include "strings/StringUtility.h"

namespace QuillFormatAPA {

using host::Field;
using references::at;

namespace {

const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }

constexpr std::string_view kEmail = "Email to";
constexpr std::string_view kMailingList = "Email list entry";

// The types: the short name kept in the data source, the description APA
// puts in brackets after the title, and the bracketed text (in lower case)
// that marks it in an entry. Any other bracketed text is a mailing-list
// message: a description that is not known is still an electronic source.
struct EsourceType {
  std::string_view name;
  std::string_view description;
  std::string_view marker;
};
constexpr EsourceType kTypes[] = {
    {"Forum post", "Online forum comment", "online forum comment"},
    {"Blog comment", "Web log comment", "web log comment"},
    {"Blog post", "Web log post", "web log post"},
    {"Video blog entry", "Video file", "video file"},
    {kMailingList, "Electronic mailing list message", ""},
};

// Items 0 to 4: author, date, title, type description, web address. Row 0
// carries the personal-communication form as its second set.
const references::TemplateRow kRows[] = {
    {0, false,
     {references::kCheckingCondition, "", ". (", ". ", " [", ". ", ".", "(", ", personal communication, ", "", "", "",
      ")."}},
    {1, false, {"", "", "). ", "). [", "). ", ")."}},
    {2, false, {"", "", " [", ". ", "."}},
    {3, false, {"", "", "]. ", "]."}},
    {4, false, {"", "", ""}},
};

// The 7th edition, items 0 to 5: author, date, title (in italics for a
// video), description in brackets, the site (in italics for a blog) and
// the address alone. Row 0 keeps the personal-communication form.
const references::TemplateRow kSeventhRows[] = {
    {0, false,
     {references::kCheckingCondition, "", ". (", ". ", " [", ". ", ". ", ".", "(", ", personal communication, ", "",
      "", "", "", ")."}},
    {1, false, {"", "", "). ", "). [", "). ", "). ", ")."}},
    {2, true, {"", "", " [", ". ", ". ", "."}},
    {3, false, {"", "", "]. ", "]. ", "]."}},
    {4, true, {"", "", ". ", "."}},
    {5, false, {"", "", ""}},
};

// What the 7th edition writes in the brackets for each type ("" for none:
// a blog post is known by its blog).
std::string_view seventhDescription(std::string_view type) {
  if (type == "Video blog entry") return "Video";
  if (type == "Forum post") return "Online forum post";
  if (type == "Blog comment") return "Comment";
  if (type == "Blog post") return "";
  if (type == kMailingList) return "Electronic mailing list message";
  return "";
}

}  // namespace

const MemberTable& Esource::members() {
  static const MemberTable& table =
      references::contractMembers<Esource>("Esource")
          .method<&Esource::getType>("getType")
          .method<&Esource::parseAndRemoveType>("parseAndRemoveType", {"str"})
          .method<&Esource::parseAndRemoveWeb>("parseAndRemoveWeb", {"str"})
          .method<&Esource::parseEmail>("parseEmail", {"str"})
          .method<&Esource::parseAndRemoveDate>("parseAndRemoveDate", {"str"})
          .build();
  return table;
}

// ---- the entry contract -----------------------------------------------------------

const references::EntryTemplate& Esource::entryTemplate() const {
  static const references::EntryTemplate sixth{4, {}, kRows};
  static const references::EntryTemplate seventh{5, {}, kSeventhRows};
  return edition_ == 7 ? seventh : sixth;
}

void Esource::writeSettings(Procedure& proc, const host::FormatterSettingsRef& settings) {
  proc.step([&] { settings.setAccessDateFormat("yyyy, mmmm d"); });
  proc.step([&] { settings.setPublishDateFormat("yyyy, mmmm d"); });
  // Personal communications are cited in the text only.
  proc.step([&] { settings.setDisableKey(1, "EsourceType=Email to"); });
  proc.step([&] { settings.setDisableReason(1, "Cite personal communications in text only."); });
  proc.step([&] { settings.setDisableReference(1, "APA, 6.20"); });
  proc.step([&] { settings.setEsourceShowsAuthorPopup(false); });
  proc.step([&] { settings.setEsourceHasTitle(false); });
  proc.step([&] { settings.setEsourceHasTo(false); });
  proc.step([&] { settings.setEmailListTitleVisible(true); });
  proc.step([&] { settings.setSupportsWebtitle(false); });
  proc.step([&] { settings.setSupportsSocialMedia(false); });
  proc.step([&] { settings.setSupportsURL(true); });
  proc.step([&] { settings.setSupportsAccessDate(false); });
  proc.step([&] { settings.setDegreeSupport(0); });
  proc.step([&] { settings.setEsourceType(2); });
  proc.step([&] { edition_ = settings.edition(); });
}

void Esource::initChecking(bool& isFootnote, Array& checkingArray) {
  traced(*this, "initChecking", params(arg("isFootnote", isFootnote), arg("checkingArray", checkingArray)),
         [&](Procedure& proc) {
           proc.step([&] { checkingArray.set(at(checkingArray, 0), source().text(Field::esourceType) == kEmail); });
         });
}

bool Esource::IsFootnoteEntry(const std::string& author, const std::string& title, const std::string& entry) {
  return traced(*this, "IsFootnoteEntry", params(arg("author", author), arg("title", title), arg("entry", entry)),
                [&](Procedure& proc) {
                  return proc.step([&] { return str().contains(entry, ", personal communication"); });
                });
}

std::string Esource::extractPageNumberFromFootnote(std::string& prevFootnoteStr) {
  return traced(*this, "extractPageNumberFromFootnote", params(arg("prevFootnoteStr", prevFootnoteStr)),
                [](Procedure&) { return std::string(); });
}

// The title stands after the date's ")" and its full stop, and before the
// bracketed description or the retrieval statement.
std::string Esource::FindTitleImpl(const std::string& str_, bool& isFootnote, std::string& decoratedStr,
                                   std::string& subTitle) {
  return traced(*this, "FindTitleImpl",
                params(arg("str", str_), arg("isFootnote", isFootnote), arg("decoratedStr", decoratedStr),
                       arg("subTitle", subTitle)),
                [&](Procedure& proc) {
                  std::string title;
                  proc.local("title", title);
                  proc.step([&] {
                    const size_t date = references::dateGroup(str_);
                    if (date == std::string::npos) return;
                    title = str_.substr(str_.find(')', date + 2) + 1);
                    str().stripLeading(title, ".");
                    str().cutAtMarker(title, "Retrieved from", true);
                    str().cutAtMarker(title, "[", true);
                    str().stripTrailing(title, ".");
                    title = str().trimmed(title);
                  });
                  proc.step([&] {
                    subTitle = str().split(title, ": ", 2)[1];
                    decoratedStr = title;
                  });
                  return title;
                });
}

void Esource::parseEntry(std::string& str_, std::string& titleStr, bool& isFootnote) {
  traced(*this, "parseEntry", params(arg("str", str_), arg("titleStr", titleStr), arg("isFootnote", isFootnote)),
         [&](Procedure& proc) {
           const host::DataSourceRef s = source();
           proc.step([&] { parseAndRemoveWeb(str_); });
           proc.step([&] { parseAndRemoveType(str_); });
           bool email = false;
           proc.step([&] { email = s.text(Field::esourceType) == kEmail; });
           if (email) {
             proc.step([&] { parseEmail(str_); });
           } else {
             proc.step([&] { s.parseCommon(0, str_); });
             proc.step([&] { parseAndRemoveDate(str_); });
           }
           proc.step([&] { s.set(Field::Degree, " "); });
           proc.step([&] {
             std::string title = str().trimmed(str_);
             str().stripTrailing(title, ".");
             s.set(Field::title, title);
           });
           proc.step([&] { s.set(Field::notes, ""); });
         });
}

// An e-mail is "(author, personal communication, date)."; the short form
// (footnote or shortened) is author, date and title. Without an address a
// description that was not recognised says nothing: it goes.
void Esource::toFormattedStringImpl(bool& isFootnote, Array& items, Array& formattedItems, bool& shortenedVersion) {
  traced(*this, "toFormattedStringImpl",
         params(arg("isFootnote", isFootnote), arg("items", items), arg("formattedItems", formattedItems),
                arg("shortenedVersion", shortenedVersion)),
         [&](Procedure& proc) {
           if (edition_ == 7) {
             seventhEditionItems(proc, isFootnote, items, formattedItems);
             return;
           }
           const host::DataSourceRef s = source();
           proc.step([&] { items.set(at(items, 0), s.authorStr(isFootnote, false)); });
           proc.step([&] { items.set(at(items, 1), s.text(Field::publishDate)); });
           proc.step([&] { items.set(at(items, 2), s.text(Field::title)); });
           proc.step([&] { items.set(at(items, 3), getType()); });
           proc.step([&] { items.set(at(items, 4), s.text(Field::website)); });
           std::string type;
           proc.step([&] { type = s.text(Field::esourceType); });
           proc.step([&] {
             if (type == kEmail) {
               for (int k = 2; k <= 4; ++k) items.set(at(items, k), "");
             } else if (isFootnote || shortenedVersion) {
               items.set(at(items, 3), "");
               items.set(at(items, 4), "");
             } else if (items.get(at(items, 4)).toString().empty() && type == kMailingList) {
               items.set(at(items, 3), "");
             }
           });
         });
}

void Esource::seventhEditionItems(Procedure& proc, bool isFootnote, Array& items, Array& formattedItems) {
  const host::DataSourceRef s = source();
  auto formatted = [&](int k) { return host::FormattedTextRef(formattedItems.get(at(formattedItems, k)).toObject()); };
  std::string type;
  proc.step([&] { type = s.text(Field::esourceType); });
  proc.step([&] { items.set(at(items, 0), s.authorStr(isFootnote, false)); });
  proc.step([&] { items.set(at(items, 1), s.text(Field::publishDate)); });
  if (type == kEmail) return;  // "(Author, personal communication, date)."
  const bool video = type == "Video blog entry";
  proc.step([&] { formatted(2).Add(s.text(Field::title), video ? 1 : 0); });
  proc.step([&] { items.set(at(items, 3), std::string(seventhDescription(type))); });
  proc.step([&] {
    const std::string site = s.text(Field::siteName);
    if (!site.empty()) formatted(4).Add(site, type == "Blog post" ? 1 : 0);
  });
  proc.step([&] { items.set(at(items, 5), s.text(Field::website)); });
}

std::string Esource::getType() {
  return traced(*this, "getType", [&](Procedure& proc) {
    std::string type;
    proc.step([&] { type = source().text(Field::esourceType); });
    for (const EsourceType& t : kTypes)
      if (t.name == type) return std::string(t.description);
    return std::string();
  });
}

// ---- parse steps -------------------------------------------------------------------

void Esource::parseAndRemoveType(std::string& str_) {
  traced(*this, "parseAndRemoveType", params(arg("str", str_)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    bool bracketed = false;
    proc.step([&] {
      str_ = str().trimmed(str_);
      bracketed = str().stripTrailing(str_, "]");
      if (!bracketed) bracketed = str().stripTrailing(str_, "].");
    });
    if (!bracketed) {
      proc.step([&] { s.set(Field::esourceType, std::string(kEmail)); });
      return;
    }
    std::vector<std::string> parts;
    proc.local("parts", parts);
    proc.step([&] { parts = str().split(str_, "[", 2); });
    proc.step([&] { str_ = parts[0]; });
    proc.step([&] {
      const std::string marker = str().lower(parts[1]);
      for (const EsourceType& t : kTypes) {
        if (!t.marker.empty() && marker == t.marker) {
          s.set(Field::esourceType, std::string(t.name));
          return;
        }
      }
      s.set(Field::esourceType, std::string(kMailingList));
    });
  });
}

void Esource::parseAndRemoveWeb(std::string& str_) {
  traced(*this, "parseAndRemoveWeb", params(arg("str", str_)), [&](Procedure& proc) {
    std::vector<std::string> parts;
    proc.local("parts", parts);
    proc.step([&] { parts = str().split(str_, "Retrieved from", 2); });
    proc.step([&] { str_ = str().trimmed(parts[0]); });
    proc.step([&] {
      std::string address = str().trimmed(parts[1]);
      str().stripLeading(address, "http://");
      source().set(Field::website, address);
    });
  });
}

void Esource::parseEmail(std::string& str_) {
  traced(*this, "parseEmail", params(arg("str", str_)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    std::vector<std::string> parts;
    proc.local("parts", parts);
    proc.step([&] { parts = str().split(str_, "personal communication", 2); });
    proc.step([&] {
      std::string author = str().trimmed(parts[0]);
      str().stripTrailing(author, ",");
      str().stripLeading(author, "(");
      s.set(Field::author, s.parseCommon(0, author));
    });
    proc.step([&] {
      std::string date = str().trimmed(parts[1]);
      str().stripTrailing(date, ".");
      str().stripLeading(date, ",");
      str().stripTrailing(date, ")");
      s.set(Field::publishDate, str().trimmed(date));
    });
    proc.step([&] { str_.clear(); });
  });
}

void Esource::parseAndRemoveDate(std::string& str_) {
  traced(*this, "parseAndRemoveDate", params(arg("str", str_)), [&](Procedure& proc) {
    const host::DataSourceRef s = source();
    bool dated = false;
    proc.step([&] {
      str_ = str().trimmed(str_);
      dated = str().stripLeading(str_, "(");
    });
    if (!dated) {
      proc.step([&] { s.set(Field::publishDate, ""); });
      return;
    }
    std::vector<std::string> parts;
    proc.local("parts", parts);
    proc.step([&] { parts = str().split(str_, ")", 2); });
    proc.step([&] {
      std::string rest = str().trimmed(parts[1]);
      str().stripLeading(rest, ".");
      str_ = str().trimmed(rest);
    });
    proc.step([&] { s.set(Field::publishDate, parts[0]); });
  });
}

}  // namespace QuillFormatAPA
