#include "references/ReferenceEntry.h"

#include <array>
#include <vector>

#include "formatter/FormatterImplementation.h"
#include "strings/StringUtility.h"

namespace QuillFormatAPA::references {

std::vector<size_t> sentenceStarts(std::string_view text) {
  // The characters that open or close a bracket or end a sentence; the rest pass at once.
  static constexpr auto kMarks = [] {
    std::array<bool, 256> marks{};
    for (unsigned char c : std::string_view("()[].?!")) marks[c] = true;
    return marks;
  }();
  std::vector<size_t> starts;
  int depth = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (!kMarks[static_cast<unsigned char>(c)]) continue;
    if (c == '(' || c == '[') ++depth;
    if ((c == ')' || c == ']') && depth > 0) --depth;
    if (depth > 0 || (c != '.' && c != '?' && c != '!')) continue;
    size_t j = i + 1;
    if (text.substr(j).starts_with("\u201D")) j += 3;
    if (j < text.size() && text[j] == ' ') starts.push_back(j + 1);
  }
  return starts;
}

std::vector<size_t> statementStarts(std::string_view text) {
  std::vector<size_t> starts;
  for (size_t start : sentenceStarts(text)) {
    size_t stop = start - 1;
    while (stop > 0 && text[stop - 1] == ' ') --stop;
    if (stop == 0 || text[stop - 1] != '.') {
      starts.push_back(start);
      continue;
    }
    size_t word = stop - 1;
    while (word > 0 && text[word - 1] != ' ' && text[word - 1] != '.' && text[word - 1] != '(') --word;
    const std::string_view before = text.substr(word, stop - 1 - word);
    if (!QuillStrings::rules::isAbbreviation(before) && !QuillStrings::rules::isNameAbbreviation(before)) {
      starts.push_back(start);
      continue;
    }
    // A capital after a word in lower case ends a sentence ("written in C.",
    // "rich in vitamin D."); after a capital, a sentence's end or before
    // another initial it is an initial ("J. S. Bach", "surfaces. J. Amer.").
    const bool capital = before.size() == 1 && before[0] >= 'A' && before[0] <= 'Z';
    const bool initialFollows = start + 1 < text.size() && text[start] >= 'A' && text[start] <= 'Z' &&
                                text[start + 1] == '.';
    if (capital && !initialFollows && word >= 2 && text[word - 1] == ' ' && text[word - 2] != '.') {
      size_t previous = word - 1;
      while (previous > 0 && text[previous - 1] != ' ') --previous;
      if (previous < word - 1 && text[previous] >= 'a' && text[previous] <= 'z') starts.push_back(start);
    }
  }
  return starts;
}

bool isOneSentence(std::string_view text) { return statementStarts(text).empty(); }

bool readsAsTitle(std::string_view before) {
  const auto& str = QuillStrings::strings();
  auto isUpper = [](char c) { return c >= 'A' && c <= 'Z'; };
  auto isLower = [](char c) { return c >= 'a' && c <= 'z'; };
  bool lowerWord = false;
  for (const std::string& raw : str.split(before, " ", -1)) {
    std::string word = raw;
    str.trimLeading(word, "(\"'");
    str.trimTrailing(word, ".,;:)\"'");
    if (word.empty() || word == "&") continue;
    if (word.size() == 1 || (word.size() >= 3 && word[1] == '.' && isUpper(word[0]))) return false;  // initials
    if (str.beginsWith(word, "Ed") && str.contains(raw, "(")) return false;  // "(Ed.)", "(Eds.)"
    if (isLower(word[0]) && !QuillStrings::rules::isSmallWord(word)) lowerWord = true;
  }
  return lowerWord;
}


void resetTemplate(const host::OutputTemplateRef& output, int16_t lastIndex, std::string_view list) {
  std::vector<Variant> positional{Variant(lastIndex)};
  if (!list.empty()) positional.push_back(Variant::borrow(list));
  output.Reset(positional, {});
}

void addRow(const host::OutputTemplateRef& output, const TemplateRow& row) {
  output.Add(row.item, row.formatted, std::span<const std::string_view>(row.strings.begin(), row.strings.size()));
}

void writeTemplates(Procedure& proc, const host::FormatterSettingsRef& settings, const EntryTemplate& entryTemplate) {
  ObjectRef output;
  proc.step([&] { output = settings.outputTemplate(); });
  proc.step([&] { resetTemplate(host::OutputTemplateRef(output), entryTemplate.lastIndex, entryTemplate.list); });
  for (const TemplateRow& row : entryTemplate.rows) proc.step([&] { addRow(host::OutputTemplateRef(output), row); });
  proc.step([&] {
    FormatterImplementation::InitializeCitationTemplate(settings.citationOutputTemplate(), false, "", false);
  });
}

}  // namespace QuillFormatAPA::references
