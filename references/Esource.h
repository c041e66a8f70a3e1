#pragma once

#include <string>

#include "references/ReferenceEntry.h"

namespace QuillFormatAPA {

// Electronic sources that are neither periodicals nor books: e-mail (a
// personal communication, cited in text only), mailing-list messages, web
// log posts and comments, online forum comments and video files.
class Esource final : public Dispatchable<Esource>, public Module, private LibraryObject {
 public:
  static const MemberTable& members();
  std::string_view moduleName() const noexcept override { return "Esource"; }
  void reportVariables(const VariableReport& r) const override { r.variable("super", super_); }

  // ---- the entry contract
  void setDataSource(ObjectRef& superClass);
  void getMetaData(ObjectRef& formatterSettings, std::string& productName);
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
  host::DataSourceRef source() const { return host::DataSourceRef(super_); }
  ObjectRef super_;
};

}  // namespace QuillFormatAPA
