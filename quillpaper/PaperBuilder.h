#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "host/MemberTable.h"
#include "quillpaper/Document.h"

namespace quillpaper {

using namespace QuillFormatAPA;

// The numbers the word processor gives captions and chapters, in document order.
class SequenceNumbers {
 public:
  int next(const std::string& sequence) { return ++counts_[sequence]; }

 private:
  std::map<std::string, int> counts_;
};

// The template's document builder: the library adds sections to it and pages
// to those; everything lands in a document model for the .docx writer.
class PaperBuilder : public Dispatchable<PaperBuilder> {
 public:
  struct Options {
    bool outputTemplate = true;  // write the hints of the output form
    int16_t paperType = 3;
    std::set<int> selectedParts;                       // parts 0 to 14 the user wants
    std::map<std::string, std::string> configuration;  // "Title", "Author", ...
    int16_t edition = 6;                               // the APA edition the paper follows
  };
  explicit PaperBuilder(Options options) : options_(std::move(options)) {}
  static const MemberTable& members();

  bool outputTemplate() const { return options_.outputTemplate; }
  ObjectRef AddSection(int32_t firstPart, int32_t lastPart, const std::optional<std::string>& pageHeader,
                       std::optional<bool> sameAsPreviousSection);
  bool part(int32_t index) const { return options_.selectedParts.count(index) > 0; }
  std::string UserConfigurationValue(const std::string& key) const;
  int16_t PaperType() const { return options_.paperType; }
  int16_t APAEdition() const { return options_.edition; }

  doc::Document& document() { return document_; }
  SequenceNumbers& sequences() { return sequences_; }
  const Options& options() const { return options_; }

 private:
  Options options_;
  doc::Document document_;
  SequenceNumbers sequences_;
};

}  // namespace quillpaper
