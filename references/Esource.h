#pragma once

#include <string>

#include "references/ReferenceEntry.h"

namespace QuillFormatAPA {

// Electronic sources that are neither periodicals nor books: e-mail (a
// personal communication, cited in text only), mailing-list messages, web
// log posts and comments, online forum comments and video files.
class Esource final : public references::ReferenceEntry<Esource> {
 public:
  static constexpr std::string_view kClassName = "Esource";
  static const MemberTable& members();

  // ---- the entry contract
  const references::EntryTemplate& entryTemplate() const;
  void writeSettings(Procedure& proc, const host::FormatterSettingsRef& settings);
  void initChecking(bool& isFootnote, Array& checkingArray);
  bool IsFootnoteEntry(const std::string& author, const std::string& title, const std::string& entry);
  std::string FindTitleImpl(const std::string& str, bool& isFootnote, std::string& decoratedStr,
                            std::string& subTitle);
  std::string extractPageNumberFromFootnote(std::string& prevFootnoteStr);
  void toFormattedStringImpl(bool& isFootnote, Array& items, Array& formattedItems, bool& shortenedVersion);
  void parseEntry(std::string& str, std::string& titleStr, bool& isFootnote);

  // The bracketed description APA puts after the title for this entry's type.
  std::string getType();

  // ---- parse steps: each takes its part off `str`
  void parseAndRemoveType(std::string& str);
  void parseAndRemoveWeb(std::string& str);
  void parseEmail(std::string& str);
  void parseAndRemoveDate(std::string& str);

 private:
  // The 7th edition's items: author, date, title, description, site, address.
  void seventhEditionItems(Procedure& proc, bool isFootnote, Array& items, Array& formattedItems);
  // The APA edition the formatter settings asked for (6 unless they say 7).
  int16_t edition_ = 6;
};

}  // namespace QuillFormatAPA
