#pragma once

#include <cstdint>
#include <string>

#include "host/Array.h"
#include "host/Object.h"

namespace QuillFormatAPA {

// The formatter core: paper and reference settings, the start-up form's
// instructions, chapters, the citation template, the classification of a
// free-text reference and its retrieval statement.
namespace FormatterImplementation {

// ---- settings
// Writes the paper settings through the command object; answers "APA".
// The edition (6 or 7) chooses the heading styles.
std::string getMetaData(const ObjectRef& settings, int16_t edition = 6);
// Fills the reference formatter's settings object with its rules.
void getQLRefMetaData(const ObjectRef& formatterSettings);

// ---- reference type classification
int16_t GetReferenceType(const std::string& entry, const std::string& title, const std::string& subTitle,
                         const ObjectRef& controller);
bool ReferenceTypeHasDistinguisingFeature(const std::string& entry, int16_t& theModelType);
bool DistinguishedByIn(const std::string& entry, const std::string& title, int16_t& theModelType);
bool DistinguishedByPage(const std::string& entry, int16_t& theModelType);
bool EndsWithAPage(const ObjectRef& controller, const std::string& entry, int16_t& theModelType);
bool DistinguishedByPublisher(const std::string& entry, int16_t& theModelType);
bool hasPeriodicalNumber(const std::string& text);
bool startsWithEditor(const std::string& text);
bool isPossibleBookDate(const std::string& text, bool isYear);
bool ReferenceIsInFormatType(const std::string& str, std::string& title, int16_t decoratedType,
                             const ObjectRef& controller);
bool firstItalicizedInReferenceIsTitle(const std::string& str);

// ---- start-up form, chapters, citation template
void initializeSectionInstructions(const ObjectRef& super, Array& sectionInstructions);
void initTitleInstructions(int16_t PaperType, Array& TitleInstructions);
void getStartupFormSettings(const ObjectRef& IntArrayProvider, Array& postGradIndices, Array& defaultAlwaysOn,
                            Array& defaultPostgrad, int16_t& defaultPaperType);
void InitializeCitationTemplate(const ObjectRef& theCitationOutputTemplate, bool supportsSubwork,
                                const std::string& emailKey, bool useWebsiteWhenNoAuthorAndDateFlag);
void StartNewChapter(const ObjectRef& param);
bool UpdateFrontMatter();
void InitializeMain(const ObjectRef& Main);

// ---- retrieval statement
void parseAndRemoveWeb(std::string& str, std::string& website, std::string& accessDate);

}  // namespace FormatterImplementation

}  // namespace QuillFormatAPA
