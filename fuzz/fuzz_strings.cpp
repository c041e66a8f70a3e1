// The string utility on arbitrary bytes: no operation may crash, and the
// ones with a contract keep it (split then join gives the text back; UTF-8
// lengths never exceed byte lengths; case mapping keeps valid UTF-8 valid).
#include <cstdint>
#include <cstdlib>
#include <string>

#include "strings/StringUtility.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  // The first line is the separator, the rest the text.
  const size_t newline = input.find('\n');
  const std::string separator = newline == std::string::npos ? std::string(", ") : input.substr(0, std::min<size_t>(newline, 8));
  const std::string text = newline == std::string::npos ? input : input.substr(newline + 1);
  const auto& s = QuillStrings::strings();

  if (!separator.empty() && s.join(s.split(text, separator, -1), separator) != text) std::abort();
  if (s.split(text, separator, 2).size() != 2) std::abort();
  if (static_cast<size_t>(s.length(text)) > text.size()) std::abort();
  if (s.isValidUtf8(text) && (!s.isValidUtf8(s.upper(text)) || !s.isValidUtf8(s.lower(text)))) std::abort();
  const int32_t n = static_cast<int32_t>(size % 17);
  (void)s.left(text, n);
  (void)s.mid(text, n + 1, n);
  (void)s.trimmed(text);
  (void)s.find(text, separator, n + 1);
  std::string work = text;
  s.stripLeading(work, separator);
  s.stripTrailing(work, separator);
  s.cutAtMarker(work, separator, true);
  work = text;
  s.dropThroughMarker(work, separator);
  s.trimLeading(work, separator, true);
  s.trimTrailing(work, separator, true);
  s.removeText(work, separator);
  s.removeBracketedMarker(work, separator, true);
  (void)s.textLessPhrase(text, separator, QuillStrings::PhrasePlace::Trailing);
  return 0;
}
