#pragma once

#include <cstddef>
#include <istream>
#include <memory>
#include <string>

namespace quillpaper {

// The longest line read as one reference; a longer one is no reference and
// comes in pieces of this size, to be written as typed.
inline constexpr size_t kLongestEntry = 1 << 20;

// One line of a reference list.
struct ReferenceLine {
  int number = 0;
  std::string text;
  // The line is longer than kLongestEntry: `text` is its first piece, and
  // ReferenceReader::nextPiece gives the rest.
  bool longLine = false;
};

// A reference list as a file holds it, read a line at a time with memory that
// does not grow with the file: line ends LF, CRLF or CR alone (old Mac
// files, some exports); UTF-8 (its BOM dropped) or UTF-16 with its BOM,
// decoded to UTF-8. Blank lines are skipped but counted.
class ReferenceReader {
 public:
  explicit ReferenceReader(std::istream& in);
  // The next line that is not blank; false at the end of the input.
  bool next(ReferenceLine& line);
  // The next piece of a long line; false when the line has ended.
  bool nextPiece(std::string& piece);
  // Whether the input was UTF-16 (and has been decoded).
  bool wasUtf16() const { return encoding_ != Encoding::Utf8; }

 private:
  enum class Encoding { Utf8, Utf16LE, Utf16BE };
  // More of the input, decoded as UTF-8, into the buffer; false at its end.
  bool fill();
  bool readLine(std::string& text, bool& ended);

  std::istream& in_;
  Encoding encoding_ = Encoding::Utf8;
  std::string raw_;     // UTF-16 bytes not decoded yet
  std::string buffer_;  // decoded bytes not read yet
  size_t at_ = 0;
  bool started_ = false;
  bool pendingCr_ = false;  // a CR ended the last line; a LF right after it belongs to it
  int number_ = 0;
  bool inLongLine_ = false;
};

// The reference list at `path` ("-": standard input). A folder, a missing or
// an unreadable file is a clear error (std::runtime_error).
std::unique_ptr<std::istream> openReferenceList(const std::string& path);

}  // namespace quillpaper
