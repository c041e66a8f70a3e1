#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace QuillFormatAPA::server {

// `text` as a JSON string literal, quotes included.
std::string jsonString(std::string_view text);

// The string value of the top-level key `key` in a JSON object written by
// this library (a flat search; enough for the records it writes itself).
std::optional<std::string> jsonStringField(std::string_view json, std::string_view key);

}  // namespace QuillFormatAPA::server
