// The JSON the server writes (registration record, type library) and reads
// back (the library path of a record it finds).
#include <gtest/gtest.h>

#include "server/Json.h"

namespace QuillFormatAPA::server {
namespace {

TEST(JsonTest, TextsSurviveAWriteAndARead) {
  const std::string texts[] = {
      "/usr/lib/libQuillFormatAPA.so",
      "C:\\Program Files\\Quill",
      "a \"quoted\" name",
      "tab\there, line\nthere, return\r",
      std::string("bell\a and nul\0 inside", 21),
      "R\xc3\xa9sum\xc3\xa9 \xe2\x80\x94 UTF-8 as it is",
      "",
  };
  for (const std::string& text : texts) {
    SCOPED_TRACE(text);
    const std::string record = "{\n  \"other\": \"x\",\n  \"library\": " + jsonString(text) + "\n}\n";
    EXPECT_EQ(jsonStringField(record, "library"), text);
    for (const char c : jsonString(text)) EXPECT_GE(static_cast<unsigned char>(c), 0x20) << "raw control character";
  }
}

TEST(JsonTest, FieldsThatAreNotThereOrNotTexts) {
  const struct {
    const char* json;
    const char* key;
  } cases[] = {
      {R"({"library": 12})", "library"},
      {R"({"library": ["a"]})", "library"},
      {R"({"libraries": "a"})", "library"},
      {R"({"library" "a"})", "library"},
      {R"({"library": "unterminated)", "library"},
      {"", "library"},
  };
  for (const auto& c : cases) EXPECT_EQ(jsonStringField(c.json, c.key), std::nullopt) << c.json;
  EXPECT_EQ(jsonStringField(R"({ "library" :	"spaced" })", "library"), "spaced");
  EXPECT_EQ(jsonStringField(R"({"name": "library", "library": "second"})", "library"), "second");
}

}  // namespace
}  // namespace QuillFormatAPA::server
