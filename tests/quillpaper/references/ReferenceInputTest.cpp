#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "quillpaper/references/ReferenceInput.h"

namespace quillpaper {
namespace {

using Lines = std::vector<std::pair<int, std::string>>;

Lines readAll(const std::string& input) {
  std::istringstream in(input);
  ReferenceReader reader(in);
  Lines out;
  ReferenceLine line;
  while (reader.next(line)) out.emplace_back(line.number, line.text);
  return out;
}

// Catches a line end cut by the reader's buffer (a CR at a buffer's end and
// its LF at the next one's start read as two line ends), and lines counted
// wrongly across buffers: lines whose ends fall all around 64 KiB, and a
// long list with every kind of line end.
TEST(ReferenceInputTest, LineEndsAcrossTheBuffer) {
  for (size_t length = (1u << 16) - 3; length <= (1u << 16) + 2; ++length)
    for (const char* end : {"\n", "\r\n", "\r"}) {
      SCOPED_TRACE(std::to_string(length) + " " + (end[0] == '\n' ? "LF" : end[1] ? "CRLF" : "CR"));
      const std::string first(length, 'x');
      EXPECT_EQ(readAll(first + end + "second" + end + end + "fourth"),
                (Lines{{1, first}, {2, "second"}, {4, "fourth"}}));
    }

  std::mt19937 random(7);
  std::string input;
  Lines expected;
  int number = 0;
  for (int i = 0; i < 3000; ++i) {
    const std::string text = "Line " + std::to_string(i) + std::string(random() % 200, 'y');
    ++number;
    if (random() % 5 == 0) {
      input += "\r\n";  // a blank line, counted
      continue;
    }
    expected.emplace_back(number, text);
    input += text + (random() % 3 == 0 ? "\r\n" : random() % 2 ? "\n" : "\r");
  }
  EXPECT_EQ(readAll(input), expected);
}

}  // namespace
}  // namespace quillpaper
