#include "quillpaper/Json.h"

#include <cmath>
#include <cstdio>

#include <cstdio>

#include "strings/StringUtility.h"

namespace quillpaper {

std::string JsonWriter::escape(std::string_view s) {
  std::string out;
  out.reserve(s.size());
  for (size_t i = 0; i < s.size();) {
    const size_t start = i;
    const char32_t c = QuillStrings::utf8::next(s, i);
    switch (c) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      default:
        if (c & QuillStrings::utf8::kRawByte) {
          out += "\\ufffd";  // a byte that is no UTF-8: JSON text must be
        } else if (c < 0x20) {
          char buf[8];
          std::snprintf(buf, sizeof buf, "\\u%04x", static_cast<unsigned>(c));
          out += buf;
        } else {
          out.append(s, start, i - start);
        }
    }
  }
  return out;
}

std::string JsonWriter::quote(std::string_view s) { return "\"" + escape(s) + "\""; }

void JsonWriter::separate() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  if (first_.empty()) return;
  if (!first_.back()) out_ += ',';
  first_.back() = false;
}

JsonWriter& JsonWriter::beginObject() {
  separate();
  out_ += '{';
  first_.push_back(true);
  return *this;
}

JsonWriter& JsonWriter::endObject() {
  out_ += '}';
  first_.pop_back();
  return *this;
}

JsonWriter& JsonWriter::beginArray() {
  separate();
  out_ += '[';
  first_.push_back(true);
  return *this;
}

JsonWriter& JsonWriter::endArray() {
  out_ += ']';
  first_.pop_back();
  return *this;
}

JsonWriter& JsonWriter::key(std::string_view k) {
  separate();
  out_ += quote(k);
  out_ += ':';
  afterKey_ = true;
  return *this;
}

JsonWriter& JsonWriter::value(std::string_view s) {
  separate();
  out_ += quote(s);
  return *this;
}

JsonWriter& JsonWriter::value(bool b) {
  separate();
  out_ += b ? "true" : "false";
  return *this;
}

JsonWriter& JsonWriter::value(int i) {
  separate();
  out_ += std::to_string(i);
  return *this;
}

JsonWriter& JsonWriter::value(double d) {
  separate();
  if (!std::isfinite(d)) d = 0;  // JSON has no NaN or infinity
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.3f", d);
  out_ += buffer;
  return *this;
}

JsonWriter& JsonWriter::null() {
  separate();
  out_ += "null";
  return *this;
}

}  // namespace quillpaper
