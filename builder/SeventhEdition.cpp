#include "builder/SeventhEdition.h"

#include <algorithm>
#include <vector>

#include "diagnostics/Procedure.h"
#include "strings/StringUtility.h"

namespace QuillFormatAPA::DocumentBuilder::seventh {

namespace {

const StaticModule kModule("SeventhEdition");

const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }

constexpr std::string_view kCrLf = "\r\n";
constexpr std::string_view kTitlePlaceholder = "Double click and select me to enter an abbreviated title";
constexpr int16_t kRunningHeadLimit = 50;  // characters (APA 2.8)

std::string value(const host::DocumentBuilderRef& b, const std::string& key) {
  return str().trimmed(b.UserConfigurationValue(key));
}

// A line of the title page: the configured value, or a placeholder to fill.
void line(Procedure& proc, const host::PageRef& p, const std::string& text, const std::string& placeholder) {
  if (!text.empty())
    proc.step([&] { p.addText(text); });
  else
    proc.step([&] { p.addOneClick(placeholder); });
  proc.step([&] { p.addCarriageReturns(1); });
}

// The placeholder of a field left out: its hint in brackets.
std::string placeholder(const std::string& key) {
  for (int paperType : {0, 3})
    for (const TitleField& f : titleFields(paperType))
      if (f.key == key) return "[" + f.hint + "]";
  return "[" + key + "]";
}

void boldTitle(Procedure& proc, const host::DocumentBuilderRef& b, const host::PageRef& p) {
  proc.step([&] { p.setCharacterFormat(true, false, false); });
  line(proc, p, value(b, "Title"), placeholder("Title"));
  proc.step([&] { p.setCharacterFormat(false, false, false); });
}

struct Author {
  std::string name;
  std::vector<int> affiliations;
};

// The affiliations in order: "Affiliation", "Affiliation 2" (or the start-up
// form's "2nd Author's Affil." when it names another place), "Affiliation 3",
// ...
std::vector<std::string> affiliationsOf(const host::DocumentBuilderRef& b) {
  std::vector<std::string> out;
  for (int k = 1; k <= kMostAuthors; ++k) {
    std::string a = value(b, affiliationKey(k));
    if (k == 2 && a.empty() && out.size() == 1) {
      a = value(b, "2nd Author's Affil.");
      if (str().lower(a) == str().lower(out[0])) a.clear();
    }
    if (!a.empty()) out.push_back(a);
  }
  return out;
}

// The authors in byline order, each with the numbers of its affiliations
// ("Author 2 Affiliations" = "1,3"); without them, author k belongs to
// affiliation k, or to the last when there are fewer.
std::vector<Author> authorsOf(const host::DocumentBuilderRef& b, int affiliations) {
  std::vector<Author> out;
  for (int k = 1; k <= kMostAuthors; ++k) {
    Author a{value(b, authorKey(k)), {}};
    if (a.name.empty()) continue;
    for (const std::string& n : str().split(value(b, authorAffiliationsKey(k)), ",", -1)) {
      const std::string t = str().trimmed(n);
      if (t.empty() || t.size() > 2 || !std::all_of(t.begin(), t.end(), [](char c) { return c >= '0' && c <= '9'; }))
        continue;
      const int number = std::stoi(t);
      if (number >= 1 && number <= affiliations) a.affiliations.push_back(number);
    }
    if (a.affiliations.empty() && affiliations > 0)
      a.affiliations.push_back(std::min(static_cast<int>(out.size()) + 1, affiliations));
    out.push_back(std::move(a));
  }
  return out;
}

std::string numbers(const std::vector<int>& list) {
  std::string out;
  for (int n : list) out += (out.empty() ? "" : ",") + std::to_string(n);
  return out;
}

// "A", "A and B", "A, B, and C", each name with its affiliation numbers
// raised when there are several affiliations.
void byline(Procedure& proc, const host::PageRef& p, const std::vector<Author>& authors, bool numbered) {
  if (authors.empty()) {
    proc.step([&] { p.addOneClick(placeholder("Author")); });
    proc.step([&] { p.addCarriageReturns(1); });
    return;
  }
  for (size_t k = 0; k < authors.size(); ++k) {
    std::string before;
    if (k > 0) before = authors.size() == 2 ? " and " : (k + 1 == authors.size() ? ", and " : ", ");
    proc.step([&] { p.addText(before + authors[k].name); });
    if (numbered) {
      proc.step([&] { p.setCharacterFormat(false, false, true); });
      proc.step([&] { p.addText(numbers(authors[k].affiliations)); });
      proc.step([&] { p.setCharacterFormat(false, false, false); });
    }
  }
  proc.step([&] { p.addCarriageReturns(1); });
}

void affiliationLines(Procedure& proc, const host::PageRef& p, const std::vector<std::string>& affiliations) {
  if (affiliations.empty()) line(proc, p, "", placeholder("Affiliation"));
  for (size_t k = 0; k < affiliations.size(); ++k) {
    if (affiliations.size() > 1) {
      proc.step([&] { p.setCharacterFormat(false, false, true); });
      proc.step([&] { p.addText(std::to_string(k + 1)); });
      proc.step([&] { p.setCharacterFormat(false, false, false); });
    }
    line(proc, p, affiliations[k], "");
  }
}

// The author note: ORCID identifiers, disclosures and acknowledgements, and
// the person to write to.
void authorNote(Procedure& proc, const host::PageRef& p, const std::vector<Author>& authors,
                const std::vector<std::string>& affiliations) {
  proc.step([&] { p.addCarriageReturns(3); });
  proc.step([&] { p.setCharacterFormat(true, false, false); });
  proc.step([&] { p.addText("Author Note" + std::string(kCrLf)); });
  proc.step([&] { p.setCharacterFormat(false, false, false); });
  proc.step([&] { p.addStyle("Paragraph"); });
  const std::vector<Author> named = authors.empty() ? std::vector<Author>{{"", {}}} : authors;
  for (const Author& a : named) {
    if (a.name.empty())
      proc.step([&] { p.addOneClick(placeholder("Author")); });
    else
      proc.step([&] { p.addText(a.name); });
    proc.step([&] { p.addText(" "); });
    proc.step([&] { p.addOneClick("[https://orcid.org/0000-0000-0000-0000]"); });
    proc.step([&] { p.addCarriageReturns(1); });
  }
  proc.step([&] {
    p.addOneClick(
        "[Changes of affiliation, disclosures, conflicts of interest "
        "and acknowledgements; delete this paragraph "
        "if there are none]");
  });
  proc.step([&] { p.addCarriageReturns(1); });
  proc.step([&] { p.addText("Correspondence concerning this article should be addressed to "); });
  if (named.front().name.empty())
    proc.step([&] { p.addOneClick(placeholder("Author")); });
  else
    proc.step([&] { p.addText(named.front().name); });
  proc.step([&] { p.addText(", "); });
  const std::string where = affiliations.empty() ? std::string() : affiliations.front() + ", ";
  if (!where.empty()) proc.step([&] { p.addText(where); });
  proc.step([&] { p.addOneClick("[Postal address]"); });
  proc.step([&] { p.addText(". Email: "); });
  proc.step([&] { p.addOneClick("[name@university.edu]"); });
}

}  // namespace

std::vector<TitleField> titleFields(int paperType) {
  if (paperType != 3)
    return {{"Title", "Title of the Paper"},           {"Author", "Author's name"},
            {"Affiliation", "Department, University"}, {"Course", "Course number: Course name"},
            {"Instructor", "Instructor's name"},       {"Due Date", "Due date"}};
  return {{"Title", "Title of the Paper"},
          {"Short Title",
           "Running head: a short title, at most 50 characters (the "
           "title when left out)"},
          {"Author", "Author's name"},
          {"2nd Author", "Second author's name; more authors as \"Author 3\", \"Author 4\", ..."},
          {"Affiliation", "Department, University"},
          {"Affiliation 2", "A second affiliation; more as \"Affiliation 3\", ..."},
          {"Author 1 Affiliations",
           "The numbers of the first author's affiliations, \"1,2\"; the same for "
           "each author"}};
}

std::string authorKey(int number) {
  if (number == 1) return "Author";
  if (number == 2) return "2nd Author";
  return "Author " + std::to_string(number);
}

std::string affiliationKey(int number) {
  return number == 1 ? std::string("Affiliation") : "Affiliation " + std::to_string(number);
}

std::string authorAffiliationsKey(int number) { return "Author " + std::to_string(number) + " Affiliations"; }

std::string runningHead(const host::DocumentBuilderRef& builder) {
  return traced(kModule, "runningHead[Get]", [&](Procedure& proc) {
    std::string head;
    proc.local("head", head);
    int16_t paperType = 0;
    proc.step([&] { paperType = builder.PaperType(); });
    if (paperType != 3) return head;
    proc.step([&] { head = value(builder, "Short Title"); });
    if (head.empty()) proc.step([&] { head = value(builder, "Title"); });
    if (head.empty()) head = kTitlePlaceholder;
    return str().upper(head);
  });
}

void AddTitlePage(const host::DocumentBuilderRef& builder, const ObjectRef& page, bool outputTemplate) {
  traced(kModule, "AddTitlePage", params(arg("page", page), arg("outputTemplate", outputTemplate)),
         [&](Procedure& proc) {
           const host::PageRef p(page);
           int16_t paperType = 0;
           proc.local("paperType", paperType);
           proc.step([&] { paperType = builder.PaperType(); });
           bool titled = false;
           proc.step([&] { titled = !value(builder, "Short Title").empty() || !value(builder, "Title").empty(); });
           // Only a running head the user gave is too long; the placeholder is
           // replaced anyway.
           if (paperType == 3 && titled) {
             int16_t n = 0;
             proc.step([&] { n = Variant(str().length(runningHead(builder))).toInteger(); });
             if (n > kRunningHeadLimit) {
               proc.step([&] {
                 p.addOneClick("WARNING: Your running head is currently " + std::to_string(n) +
                               " characters long, counting letters, spaces and");
               });
               proc.step([&] {
                 p.addOneClick(
                     "punctuation. It must be 50 characters or less "
                     "(APA 2.8). Give a short title, or double "
                     "click the page headers to fix them.");
               });
             }
           }
           proc.step([&] { p.addStyle("Front Matter"); });
           proc.step([&] { p.addCarriageReturns(3); });
           boldTitle(proc, builder, p);
           proc.step([&] { p.addCarriageReturns(1); });
           if (paperType != 3) {
             std::string affiliation;
             proc.step([&] { affiliation = value(builder, "Affiliation"); });
             if (affiliation.empty()) proc.step([&] { affiliation = value(builder, "College"); });
             for (const TitleField& f : titleFields(paperType)) {
               if (f.key == "Title") continue;
               line(proc, p, f.key == "Affiliation" ? affiliation : value(builder, f.key), placeholder(f.key));
             }
             return;
           }
           std::vector<std::string> affiliations;
           std::vector<Author> authors;
           proc.step([&] { affiliations = affiliationsOf(builder); });
           proc.step([&] { authors = authorsOf(builder, static_cast<int>(affiliations.size())); });
           byline(proc, p, authors, affiliations.size() > 1);
           affiliationLines(proc, p, affiliations);
           authorNote(proc, p, authors, affiliations);
         });
}

void AddAbstractPage(const ObjectRef& page, bool outputTemplate) {
  traced(kModule, "AddAbstractPage", params(arg("page", page), arg("outputTemplate", outputTemplate)),
         [&](Procedure& proc) {
           const host::PageRef p(page);
           proc.step([&] { p.addStyle("-2"); });
           proc.step([&] { p.addText("Abstract" + std::string(kCrLf)); });
           proc.step([&] { p.addStyle("-1"); });
           if (outputTemplate)
             proc.step([&] {
               p.addOneClick(
                   "Summarize the paper in a single paragraph of no "
                   "more than 250 words, without indentation "
                   "(APA 2.9).");
             });
           proc.step([&] { p.addCarriageReturns(1); });
           proc.step([&] { p.addStyle("Paragraph"); });
           proc.step([&] { p.setCharacterFormat(false, true, false); });
           proc.step([&] { p.addText("Keywords:"); });
           proc.step([&] { p.setCharacterFormat(false, false, false); });
           proc.step([&] { p.addText(" "); });
           proc.step([&] { p.addOneClick("[three to five keywords, in lower case, separated by commas]"); });
         });
}

}  // namespace QuillFormatAPA::DocumentBuilder::seventh
