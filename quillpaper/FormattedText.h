#pragma once

#include <string>
#include <vector>

#include "host/MemberTable.h"

namespace quillpaper {

using namespace QuillFormatAPA;

// A run of a formatted reference: style 0 plain, 1 italic.
struct TextRun {
  std::string text;
  bool italic = false;
  bool operator==(const TextRun&) const = default;
};

// Appends `text` to `runs`, joining it to the last run when the style is the same.
void appendRun(std::vector<TextRun>& runs, std::string text, bool italic);
std::string plainText(const std::vector<TextRun>& runs);

// A formatted item of an entry: the entry adds text to it in styles.
class FormattedText : public Dispatchable<FormattedText> {
 public:
  static const MemberTable& members();
  void Add(const std::string& text, int32_t style);
  const std::vector<TextRun>& runs() const { return runs_; }

 private:
  std::vector<TextRun> runs_;
};

}  // namespace quillpaper
