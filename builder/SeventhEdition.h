#pragma once

#include <string>
#include <vector>

#include "host/Export.h"
#include "host/Object.h"
#include "host/PaperProxies.h"

namespace QuillFormatAPA::DocumentBuilder::seventh {

// The pages of a paper that the 7th edition of the APA manual lays out
// differently from the 6th. The builder turns to them when its document
// builder asks for the 7th edition.

// The running head: the short title (else the title) in capitals, with no
// label; a student paper has none, only the page number.
std::string runningHead(const host::DocumentBuilderRef& builder);

// The title page. A student paper: the bold title three lines down, then
// author, affiliation, course, instructor and due date. A professional
// paper: the bold title, the byline with numbered affiliations when there
// are several, and the author note at the bottom.
void AddTitlePage(const host::DocumentBuilderRef& builder, const ObjectRef& page, bool outputTemplate);

// The abstract: a bold label, the abstract in one unindented paragraph and
// the "Keywords:" line.
void AddAbstractPage(const ObjectRef& page, bool outputTemplate);

// Title-page keys beyond the start-up form's: "Author 3", "Affiliation 2",
// "Author 1 Affiliations" ("1,2": the affiliations an author belongs to).
QFA_API std::string authorKey(int number);
QFA_API std::string affiliationKey(int number);
QFA_API std::string authorAffiliationsKey(int number);

// The most authors and affiliations a title page names.
constexpr int kMostAuthors = 20;

// A field of the title page: its key and what it holds, the placeholder's
// text when it is left out.
struct TitleField {
  std::string key;
  std::string hint;
};
// The fields of a student paper's title page (paper types 0 to 2) or of a
// professional paper's (type 3, which names more authors and affiliations
// by the keys above).
QFA_API std::vector<TitleField> titleFields(int paperType);

}  // namespace QuillFormatAPA::DocumentBuilder::seventh
