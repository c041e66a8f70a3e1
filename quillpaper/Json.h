#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillpaper {

// A small streaming JSON writer: compact output, UTF-8 passed through,
// control characters escaped, bytes that are not UTF-8 written as U+FFFD.
class JsonWriter {
 public:
  JsonWriter& beginObject();
  JsonWriter& endObject();
  JsonWriter& beginArray();
  JsonWriter& endArray();
  JsonWriter& key(std::string_view k);
  JsonWriter& value(std::string_view s);
  JsonWriter& value(const char* s) { return value(std::string_view(s)); }
  JsonWriter& value(const std::string& s) { return value(std::string_view(s)); }
  JsonWriter& value(bool b);
  JsonWriter& value(int i);
  JsonWriter& value(double d);  // three decimals
  JsonWriter& null();
  const std::string& str() const { return out_; }

  static std::string quote(std::string_view s);
  // The text of a JSON string without its quotation marks.
  static std::string escape(std::string_view s);

 private:
  void separate();
  std::string out_;
  std::vector<bool> first_;  // per open container: no element written yet
  bool afterKey_ = false;
};

}  // namespace quillpaper
