#include "StringUtility.h"

#include <algorithm>
#include <cstring>

namespace QuillStrings {

namespace utf8 {

char32_t next(std::string_view s, size_t& i) noexcept {
  const auto byte = [&](size_t k) { return static_cast<unsigned char>(s[k]); };
  const unsigned char b0 = byte(i);
  if (b0 < 0x80) {
    ++i;
    return b0;
  }
  size_t len = 0;
  char32_t c = 0;
  char32_t min = 0;
  if ((b0 & 0xE0) == 0xC0) len = 2, c = b0 & 0x1F, min = 0x80;
  else if ((b0 & 0xF0) == 0xE0) len = 3, c = b0 & 0x0F, min = 0x800;
  else if ((b0 & 0xF8) == 0xF0) len = 4, c = b0 & 0x07, min = 0x10000;
  if (len == 0 || i + len > s.size()) return kRawByte | (s[i++] & 0xFF);
  for (size_t k = 1; k < len; ++k) {
    if ((byte(i + k) & 0xC0) != 0x80) return kRawByte | (s[i++] & 0xFF);
    c = (c << 6) | (byte(i + k) & 0x3F);
  }
  // Overlong forms, surrogates and values past U+10FFFF are not characters.
  if (c < min || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) return kRawByte | (s[i++] & 0xFF);
  i += len;
  return c;
}

void append(std::string& out, char32_t c) {
  if (c & kRawByte) {
    out.push_back(static_cast<char>(c & 0xFF));
  } else if (c < 0x80) {
    out.push_back(static_cast<char>(c));
  } else if (c < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (c >> 6)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else if (c < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (c >> 12)));
    out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (c >> 18)));
    out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  }
}

}  // namespace utf8

namespace {

bool isBlankChar(char32_t c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == 0xA0; }

// Byte offset of 1-based character position `pos` (the end when past it).
size_t byteOffset(std::string_view text, int32_t pos) {
  size_t i = 0;
  for (int32_t k = 1; k < pos && i < text.size(); ++k) utf8::next(text, i);
  return i;
}

int32_t charPosition(std::string_view text, size_t byteOffset) {
  int32_t pos = 1;
  for (size_t i = 0; i < byteOffset;) {
    utf8::next(text, i);
    ++pos;
  }
  return pos;
}

bool trimmable(char32_t c, std::string_view chars, bool alsoBlanks) {
  if (alsoBlanks && isBlankChar(c)) return true;
  for (size_t i = 0; i < chars.size();)
    if (utf8::next(chars, i) == c) return true;
  return false;
}

template <class Map>
std::string mapChars(std::string_view text, Map map) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size();) utf8::append(out, map(utf8::next(text, i)));
  return out;
}

// Byte length of the leading blanks of `text`.
size_t leadingBlanks(std::string_view text) {
  size_t i = 0;
  while (i < text.size()) {
    size_t j = i;
    if (!isBlankChar(utf8::next(text, j))) break;
    i = j;
  }
  return i;
}

// Byte length of `text` without its trailing blanks.
size_t withoutTrailingBlanks(std::string_view text) {
  size_t end = text.size();
  while (end > 0) {
    if (text[end - 1] == ' ' || text[end - 1] == '\t' || text[end - 1] == '\r' || text[end - 1] == '\n') {
      --end;
    } else if (end >= 2 && static_cast<unsigned char>(text[end - 2]) == 0xC2 &&
               static_cast<unsigned char>(text[end - 1]) == 0xA0) {
      end -= 2;
    } else {
      break;
    }
  }
  return end;
}

}  // namespace

const StringUtility& strings() {
  static const StringUtility instance;
  return instance;
}

bool StringUtility::beginsWith(std::string_view text, std::string_view prefix) const noexcept {
  return text.starts_with(prefix);
}

bool StringUtility::endsWith(std::string_view text, std::string_view suffix) const noexcept {
  return text.ends_with(suffix);
}

bool StringUtility::contains(std::string_view text, std::string_view part) const noexcept {
  return text.find(part) != std::string_view::npos;
}

size_t StringUtility::lastIndexOf(std::string_view text, std::string_view part, size_t before) const noexcept {
  if (part.size() > text.size()) return std::string_view::npos;
  size_t end = std::min(before, text.size() - part.size()) + 1;  // candidates lie before `end`
  if (part.empty()) return end - 1;
  while (end > 0) {
    const void* at = ::memrchr(text.data(), part[0], end);
    if (!at) return std::string_view::npos;
    const size_t i = static_cast<size_t>(static_cast<const char*>(at) - text.data());
    if (std::memcmp(text.data() + i + 1, part.data() + 1, part.size() - 1) == 0) return i;
    end = i;
  }
  return std::string_view::npos;
}

size_t StringUtility::occurrences(std::string_view text, std::string_view part) const noexcept {
  if (part.empty()) return 0;
  size_t n = 0;
  for (size_t at = text.find(part); at != std::string_view::npos; at = text.find(part, at + part.size())) ++n;
  return n;
}

bool StringUtility::containsFrom(std::string_view text, std::string_view part, int32_t start) const noexcept {
  return find(text, part, start) != 0;
}

int32_t StringUtility::find(std::string_view text, std::string_view part, int32_t start) const noexcept {
  if (start < 1) start = 1;
  const size_t from = byteOffset(text, start);
  const size_t at = text.find(part, from);
  return at == std::string_view::npos ? 0 : charPosition(text, at);
}

bool StringUtility::isBlank(std::string_view text) const noexcept {
  return leadingBlanks(text) == text.size();
}

bool StringUtility::equalsIgnoreCase(std::string_view a, std::string_view b) const {
  return lower(a) == lower(b);
}

bool StringUtility::stripLeading(std::string& text, std::string_view prefix) const {
  if (!text.starts_with(prefix)) return false;
  text.erase(0, prefix.size());
  return true;
}

bool StringUtility::stripTrailing(std::string& text, std::string_view suffix) const {
  if (!text.ends_with(suffix)) return false;
  text.erase(text.size() - suffix.size());
  return true;
}

void StringUtility::cutAtMarker(std::string& text, std::string_view marker, bool trim) const {
  const size_t at = text.find(marker);
  if (at != std::string::npos) text.erase(at);
  if (trim) text = trimmed(text);
}

bool StringUtility::dropThroughMarker(std::string& text, std::string_view marker) const {
  const size_t at = text.find(marker);
  if (at == std::string::npos) return false;
  text.erase(0, at + marker.size());
  return true;
}

void StringUtility::trimLeading(std::string& text, std::string_view chars, bool alsoBlanks) const {
  size_t i = 0;
  while (i < text.size()) {
    size_t j = i;
    if (!trimmable(utf8::next(text, j), chars, alsoBlanks)) break;
    i = j;
  }
  text.erase(0, i);
}

void StringUtility::trimTrailing(std::string& text, std::string_view chars, bool alsoBlanks) const {
  // From the end while the characters are ASCII (an ASCII byte is always a
  // character of its own); from the start, as the text's characters are
  // read, once one is not.
  size_t end = text.size();
  while (end > 0 && static_cast<unsigned char>(text[end - 1]) < 0x80) {
    if (!trimmable(static_cast<unsigned char>(text[end - 1]), chars, alsoBlanks)) {
      text.erase(end);
      return;
    }
    --end;
  }
  size_t keep = 0;  // the end of the last character that stays
  const std::string_view head(text.data(), end);
  for (size_t i = 0; i < head.size();)
    if (!trimmable(utf8::next(head, i), chars, alsoBlanks)) keep = i;
  text.erase(keep);
}

bool StringUtility::removeText(std::string& text, std::string_view part) const {
  if (part.empty()) return false;
  const size_t at = text.find(part);
  if (at == std::string::npos) return false;
  text.erase(at, part.size());
  return true;
}

bool StringUtility::removeBracketedMarker(std::string& text, std::string_view marker, bool whole) const {
  const size_t at = text.find(marker);
  if (at == std::string::npos) return false;
  size_t end = text.find(']', at + marker.size());
  end = end == std::string::npos ? text.size() : end + 1;
  size_t begin = at;
  if (whole) {
    if (begin > 0 && text[begin - 1] == ' ')
      --begin;
    else if (end < text.size() && text[end] == ' ')
      ++end;
  }
  text.erase(begin, end - begin);
  return true;
}

std::string StringUtility::trimmed(std::string_view text) const {
  const size_t lead = leadingBlanks(text);
  text.remove_prefix(lead);
  return std::string(text.substr(0, withoutTrailingBlanks(text)));
}

std::string StringUtility::textLessPhrase(std::string_view text, std::string_view phrase,
                                          PhrasePlace place) const {
  std::string out(text);
  switch (place) {
    case PhrasePlace::Leading: stripLeading(out, phrase); break;
    case PhrasePlace::Trailing: stripTrailing(out, phrase); break;
    case PhrasePlace::Anywhere: removeText(out, phrase); break;
  }
  return out;
}

std::vector<std::string> StringUtility::split(std::string_view text, std::string_view separator,
                                              int32_t limit) const {
  std::vector<std::string> parts;
  if (separator.empty()) {
    parts.emplace_back(text);
  } else {
    size_t from = 0;
    for (;;) {
      if (limit > 0 && static_cast<int32_t>(parts.size()) == limit - 1) break;
      const size_t at = text.find(separator, from);
      if (at == std::string_view::npos) break;
      parts.emplace_back(text.substr(from, at - from));
      from = at + separator.size();
    }
    parts.emplace_back(text.substr(from));
  }
  if (limit >= 2 && parts.size() < 2) parts.emplace_back();
  return parts;
}

std::string StringUtility::join(const std::vector<std::string>& parts, std::string_view separator) const {
  std::string out;
  for (size_t i = 0; i < parts.size(); ++i) {
    if (i) out += separator;
    out += parts[i];
  }
  return out;
}

int32_t StringUtility::length(std::string_view text) const noexcept {
  int32_t n = 0;
  for (size_t i = 0; i < text.size(); ++n) utf8::next(text, i);
  return n;
}

std::string StringUtility::upper(std::string_view text) const { return mapChars(text, utf8::toUpper); }
std::string StringUtility::lower(std::string_view text) const { return mapChars(text, utf8::toLower); }

std::string StringUtility::left(std::string_view text, int32_t n) const {
  return std::string(text.substr(0, byteOffset(text, n + 1)));
}

std::string StringUtility::mid(std::string_view text, int32_t start, int32_t n) const {
  const size_t from = byteOffset(text, start < 1 ? 1 : start);
  std::string_view rest = text.substr(from);
  return n < 0 ? std::string(rest) : left(rest, n);
}

bool StringUtility::isValidUtf8(std::string_view text) const noexcept {
  for (size_t i = 0; i < text.size();)
    if (utf8::next(text, i) & utf8::kRawByte) return false;
  return true;
}

}  // namespace QuillStrings
