#pragma once

#include <string>

#include "references/ReferenceEntry.h"

namespace QuillFormatAPA {

// Articles in journals, magazines and newspapers: author, date, article
// title (with an optional bracketed type), periodical name, volume and issue,
// pages and a retrieval statement.
class Periodical final : public references::ReferenceEntry<Periodical> {
 public:
  static constexpr std::string_view kClassName = "Periodical";

  // ---- the entry contract
  static const references::EntryTemplate& entryTemplate();
  void writeSettings(Procedure& proc, const host::FormatterSettingsRef& settings);
  void initChecking(bool& isFootnote, Array& checkingArray);
  bool IsFootnoteEntry(const std::string& author, const std::string& title, const std::string& entry);
  std::string FindTitleImpl(const std::string& str, bool& isFootnote, std::string& decoratedStr,
                            std::string& subTitle);
  std::string extractPageNumberFromFootnote(std::string& prevFootnoteStr);
  void toFormattedStringImpl(bool& isFootnote, Array& items, Array& formattedItems, bool& shortenedVersion);
  void parseEntry(std::string& str, std::string& titleStr, bool& isFootnote);

  // ---- parse steps: each takes its part off `str`
  void parseAndRemoveWeb(std::string& str);
  void parseAndRemoveJournalTitle(std::string& str);
  bool isNewspaperPage(const std::string& str);
  void parseAndRemoveVolumeAndNumber(std::string& str);
  void parseAndRemovePage(std::string& str);
  void parseAndRemoveArticleTitle(std::string& str, std::string& titleStr);
  void parseAndRemoveDate(std::string& str);

  // ---- builders of the formatted items
  std::string getVolumeString();
  std::string getNumberString();
  std::string getWebstring();
  std::string getTitleWithArticleOrIssueTypeString();
  std::string getPageString();
  void getTitleString(const ObjectRef& formattedItem, std::string title);

};

}  // namespace QuillFormatAPA
