#include "server/Json.h"

#include <cstdio>
#include <cstdlib>

namespace QuillFormatAPA::server {

std::string jsonString(std::string_view text) {
  std::string out = "\"";
  for (const char c : text) {
    switch (c) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      default:
        if (static_cast<unsigned char>(c) < 0x20) {
          char buf[8];
          std::snprintf(buf, sizeof buf, "\\u%04x", static_cast<unsigned>(c));
          out += buf;
        } else {
          out += c;
        }
    }
  }
  out += '"';
  return out;
}

std::optional<std::string> jsonStringField(std::string_view json, std::string_view key) {
  const std::string quotedKey = jsonString(key);
  // The key is the quoted text followed by a colon (the same text may also be a value).
  size_t at = 0;
  for (size_t found = json.find(quotedKey);; found = json.find(quotedKey, found + 1)) {
    if (found == std::string_view::npos) return std::nullopt;
    at = json.find_first_not_of(" \t\r\n", found + quotedKey.size());
    if (at != std::string_view::npos && json[at] == ':') break;
  }
  at = json.find_first_not_of(" \t\r\n", at + 1);
  if (at == std::string_view::npos || json[at] != '"') return std::nullopt;
  std::string value;
  for (size_t i = at + 1; i < json.size(); ++i) {
    const char c = json[i];
    if (c == '"') return value;
    if (c != '\\') {
      value += c;
      continue;
    }
    if (++i == json.size()) break;
    switch (json[i]) {
      case 'n': value += '\n'; break;
      case 'r': value += '\r'; break;
      case 't': value += '\t'; break;
      case 'u':
        if (i + 4 >= json.size()) return std::nullopt;
        value += static_cast<char>(std::strtol(std::string(json.substr(i + 1, 4)).c_str(), nullptr, 16));
        i += 4;
        break;
      default: value += json[i];
    }
  }
  return std::nullopt;
}

}  // namespace QuillFormatAPA::server
