#pragma once

#include <cstdint>
#include <string>

#include "host/Array.h"
#include "host/Object.h"

namespace QuillFormatAPA {

// The paper builder: lays out the skeleton of an APA paper by driving the
// template's document-builder object section by section and page by page,
// and serves the template's table-insertion form.
namespace DocumentBuilder {

// ---- the frame
void InitializeBuilder(const ObjectRef& theParam, const ObjectRef& super);
void AddTitlePageMetadata(const ObjectRef& builder, bool outputTemplate, const ObjectRef& super);
void AddPreliminariesMetadata(const ObjectRef& builder, bool outputTemplate, const ObjectRef& super);
void AddMainTextMetadata(const ObjectRef& builder, bool outputTemplate, const ObjectRef& super);
void AddBackMatter(const ObjectRef& builder, bool outputTemplate, const ObjectRef& super);
// The page-header record of a section: code 2 with a configured title, 3 without.
std::string header(const ObjectRef& super, bool outputPrefix);
// The configured title (or its placeholder) in upper case, labelled when asked.
std::string runningHead(bool outputPrefix);

// ---- the title page
void AddTitlePage(const ObjectRef& page, bool outputTemplate);
void AddTitlePageLine(const ObjectRef& page, const std::string& key, bool addCarriageReturn);
void AddAuthorNote(const ObjectRef& page, bool outputTemplate);
void addDepartmentalAffiliation(const ObjectRef& page);
void changesOfAffiliation(const ObjectRef& page);
void acknowledgements(const ObjectRef& page);
void personToContact(const ObjectRef& page);

// ---- body and back matter
void addNonBoldPage(const ObjectRef& page, const std::string& title, const std::string& description,
                    bool outputTemplate);
void AddSubSection(const ObjectRef& page, const std::string& heading, const std::string& Text, bool outputTemplate,
                   int16_t editingHintId);
void AddAbstractPage(const ObjectRef& page, bool outputTemplate);
void AddIntroductionPage(const ObjectRef& page, bool outputTemplate, bool addBody);
void AddMethodPage(const ObjectRef& page, bool outputTemplate);
void AddResultsPage(const ObjectRef& page, bool outputTemplate);
void AddDiscussionPage(const ObjectRef& page, bool outputTemplate);
void AddReferencesPage(const ObjectRef& page);
void AddAppendixPage(const ObjectRef& page, bool outputTemplate);
void AddFootnotesPage(const ObjectRef& page, bool outputTemplate);
void AddTablesPage(const ObjectRef& page, bool outputTemplate);
void AddFiguresPage(const ObjectRef& page, bool outputTemplate);

// ---- generated lists and the table form
void AddTable(const ObjectRef& page, const std::string& heading, int32_t whichType);
void AddTOCPage(const ObjectRef& page);
void AddListOfTablesPage(const ObjectRef& page);
void AddListOfFiguresPage(const ObjectRef& page);
int16_t TableFormMetaData(Array& ButtonNames, Array& ButtonTooltips);
ObjectRef TableTemplate(int16_t buttonClickedIndex, Array& metadata);

}  // namespace DocumentBuilder

}  // namespace QuillFormatAPA
