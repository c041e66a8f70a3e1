#pragma once

#include <string>
#include <vector>

#include "references/ReferenceEntry.h"

namespace QuillFormatAPA {

// Works that are not periodical articles: books, edited books, chapters in
// edited books, entries in reference works, reports, theses, conference
// papers and other stand-alone works.
//
// How an entry is read (the APA 6 forms it is settled against):
//   Author, A. A. (Year). Title of work (2nd ed., Vol. 3, pp. 4–5) [Medium]. Place: Publisher. Retrieved from URL
//   Author, A. A. (Year). Chapter (B. Translator, Trans.). In E. Editor (Ed.), Book (pp. 4–5). Place: Publisher.
//   Editor, E. (Ed.). (Year). Book. Place: Publisher. (Original work published 1900)
//   Title of work. (Year). Place: Publisher.          (no author: the title opens the entry)
//   Entry. (Year). In Reference work (Vol. 2, pp. 3–4). Place: Publisher.
// The entry is split at ". In " into a front part (author, date, the
// chapter or entry title) and a following part (the containing work and its
// publication details); without "In" the front part is the whole entry.
// Each parse step takes its part off the front or the back of the text it
// is given; the title is what remains between them.
class NonPeriodical final : public references::ReferenceEntry<NonPeriodical> {
 public:
  static constexpr std::string_view kClassName = "NonPeriodical";
  NonPeriodical();
  void reportVariables(const VariableReport& r) const override;

  // ---- the entry contract (no initChecking: no row is marked for checking)
  static const references::EntryTemplate& entryTemplate();
  void writeSettings(Procedure& proc, const host::FormatterSettingsRef& settings);
  bool IsFootnoteEntry(const std::string& author, const std::string& title, const std::string& entry);
  std::string FindTitleImpl(const std::string& str, bool& isFootnote, std::string& decoratedStr,
                            std::string& subTitle);
  std::string extractPageNumberFromFootnote(std::string& prevFootnoteStr);
  void toFormattedStringImpl(bool& isFootnote, Array& items, Array& formattedItems, bool& shortenedVersion);
  void parseEntry(std::string& str, std::string& titleStr, bool& isFootnote);

  // ---- parse steps: each takes its part off `str`
  void parseAndRemoveWeb(std::string& str, std::string& afterUrl);
  void parseAndRemoveReprint(std::string& str, bool isFootnote);
  void parseAndRemovePublicationMedium(std::string& str);
  void parseAndRemoveSubworkType(std::string& str);
  bool isReferenceArticleNoAuthor(const std::string& str);
  void parseAndRemoveArticleTitle(std::string& str);
  void parseAndRemoveChapterTitleAndTranslator(std::string& str);
  void parseAndRemoveTitleTranslator(std::string& str);
  void parseAndRemoveEditor(std::string& str);
  bool parseEditorTag(std::string& str, const std::string& tag, bool isEditorTag);
  void parseAndRemoveEditionVolumeAndPage(std::string& str, bool gotEditionAlready, bool isFootnote);
  void parseAndRemoveVolume(std::string& str);
  void parseAndRemovePage(std::string& str);
  void parseAndRemoveMultiPartWork(std::string& str);
  void parseAndRemovePublisher(std::string& str);
  void parseAndRemoveYear(std::string& str);
  bool parsedPrematter(const Array& words, std::string& str);

  // ---- tests and builders
  bool getEbook();
  bool isWebsite();
  std::string getYear(bool isAuthor);
  bool isLabelledVolume();
  std::string getPublisherString();
  std::string getEditorString(bool isFootnote);
  std::string getTranslatorString(bool isSubWork);
  void getMultiPartString(const ObjectRef& formattedStr);
  std::string getVolumeString();
  std::string getPageString();
  std::string getMediumString();
  // The 7th edition's "[Doctoral dissertation, Institution]" in item 9.
  void thesisInBrackets(Array& items);

 private:
  Array editionKeyWords_;
  Array mBracketTemplate_;
  bool mustBeABook_ = false;
  bool gotEditionAlready_ = false;
  bool probableWebsite_ = false;
  bool hasTextBeforeTitle_ = false;
  // "Publisher, City, ST" as some entries write it: the builder keeps that order.
  bool placeAfterPublisher_ = false;
  // The APA edition the formatter settings asked for (6 unless they say 7).
  int16_t edition_ = 6;
};

}  // namespace QuillFormatAPA
