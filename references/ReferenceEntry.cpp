#include "references/ReferenceEntry.h"

#include <vector>

namespace QuillFormatAPA::references {

namespace {

bool isDateContent(std::string_view content) {
  if (content == "n.d." || content == "in press" || content == "In press") return true;
  if (content.size() < 4 || content.size() > 40) return false;
  for (size_t i = 0; i < 4; ++i)
    if (content[i] < '0' || content[i] > '9') return false;
  if (content.size() == 4) return true;
  // A year with a letter, a month, a day, a season or a range of years.
  const char next = content[4];
  return next == ',' || next == '-' || (content.size() == 5 && next >= 'a' && next <= 'z') ||
         content.substr(4).starts_with("\u2013");
}

}  // namespace

size_t dateGroup(std::string_view text) {
  // A date is short: only the next 41 characters are looked at for its ")",
  // so that a long entry is read in linear time.
  for (size_t at = text.find(" ("); at != std::string_view::npos; at = text.find(" (", at + 1)) {
    const size_t close = text.substr(at + 2, 41).find(')');
    if (close != std::string_view::npos && isDateContent(text.substr(at + 2, close))) return at;
  }
  return std::string_view::npos;
}

std::vector<size_t> sentenceStarts(std::string_view text) {
  std::vector<size_t> starts;
  int depth = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '(' || c == '[') ++depth;
    if ((c == ')' || c == ']') && depth > 0) --depth;
    if (depth > 0 || (c != '.' && c != '?' && c != '!')) continue;
    size_t j = i + 1;
    if (text.substr(j).starts_with("\u201D")) j += 3;
    if (j < text.size() && text[j] == ' ') {
      if (c == '.' && i >= 2 && text.substr(i - 2, 2) == "vs") continue;
      starts.push_back(j + 1);
    }
  }
  return starts;
}

bool isOneSentence(std::string_view text) { return sentenceStarts(text).empty(); }


void resetTemplate(const host::OutputTemplateRef& output, int16_t lastIndex, std::string_view list) {
  std::vector<Variant> positional{Variant(lastIndex)};
  if (!list.empty()) positional.push_back(Variant::borrow(list));
  output.Reset(positional, {});
}

void addRow(const host::OutputTemplateRef& output, const TemplateRow& row) {
  output.Add(row.item, row.formatted, std::span<const std::string_view>(row.strings.begin(), row.strings.size()));
}

}  // namespace QuillFormatAPA::references
