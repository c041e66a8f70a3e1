#include "quillpaper/references/ReferenceInput.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "strings/StringUtility.h"

namespace quillpaper {

namespace {

constexpr size_t kChunk = 1 << 16;

bool isBlank(const std::string& text) { return text.find_first_not_of(" \t\f\v") == std::string::npos; }

}  // namespace

ReferenceReader::ReferenceReader(std::istream& in) : in_(in) {}

// Reads a chunk and decodes it to UTF-8. A UTF-16 code unit or a surrogate
// pair cut by the chunk's end waits in `raw` for the next chunk.
bool ReferenceReader::fill() {
  std::string& raw = raw_;
  std::string chunk(kChunk, '\0');
  in_.read(chunk.data(), static_cast<std::streamsize>(chunk.size()));
  chunk.resize(static_cast<size_t>(in_.gcount()));
  if (!started_) {
    started_ = true;
    if (chunk.starts_with("\xEF\xBB\xBF")) {
      chunk.erase(0, 3);
    } else if (chunk.starts_with("\xFF\xFE")) {
      encoding_ = Encoding::Utf16LE;
      chunk.erase(0, 2);
    } else if (chunk.starts_with("\xFE\xFF")) {
      encoding_ = Encoding::Utf16BE;
      chunk.erase(0, 2);
    }
  }
  if (encoding_ == Encoding::Utf8) {
    buffer_ = std::move(chunk);
    at_ = 0;
    return !buffer_.empty();
  }
  raw += chunk;
  const bool atEnd = chunk.empty();
  buffer_.clear();
  at_ = 0;
  size_t i = 0;
  auto unit = [&](size_t k) -> char32_t {
    const auto lo = static_cast<unsigned char>(raw[k]), hi = static_cast<unsigned char>(raw[k + 1]);
    return encoding_ == Encoding::Utf16LE ? static_cast<char32_t>(lo | (hi << 8)) : static_cast<char32_t>(hi | (lo << 8));
  };
  while (i + 1 < raw.size()) {
    char32_t c = unit(i);
    if (c >= 0xD800 && c <= 0xDBFF) {
      if (i + 3 >= raw.size() && !atEnd) break;  // the pair's second half comes with the next chunk
      const char32_t low = i + 3 < raw.size() ? unit(i + 2) : 0;
      if (low >= 0xDC00 && low <= 0xDFFF) {
        c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
        i += 2;
      } else {
        c = 0xFFFD;
      }
    } else if (c >= 0xDC00 && c <= 0xDFFF) {
      c = 0xFFFD;
    }
    QuillStrings::utf8::append(buffer_, c);
    i += 2;
  }
  raw.erase(0, i);
  if (atEnd && !raw.empty()) {  // an odd byte at the very end
    QuillStrings::utf8::append(buffer_, 0xFFFD);
    raw.clear();
  }
  return !buffer_.empty();
}

// Reads up to the line's end or kLongestEntry bytes; `ended` tells which.
// False when the input had nothing more.
bool ReferenceReader::readLine(std::string& text, bool& ended) {
  ended = false;
  bool any = false;
  while (text.size() < kLongestEntry) {
    if (at_ >= buffer_.size() && !fill()) {
      ended = true;
      return any;
    }
    // The LF of a CRLF that ended the line before.
    if (pendingCr_) {
      pendingCr_ = false;
      if (buffer_[at_] == '\n') {
        ++at_;
        continue;
      }
    }
    // What is left of the line in the buffer, taken at once.
    const size_t stop = std::min(buffer_.size(), at_ + (kLongestEntry - text.size()));
    size_t end = at_;
    while (end < stop && buffer_[end] != '\n' && buffer_[end] != '\r') ++end;
    any = any || end > at_;
    text.append(buffer_, at_, end - at_);
    at_ = end;
    if (end < stop) {
      pendingCr_ = buffer_[end] == '\r';
      ++at_;
      ended = true;
      return true;
    }
  }
  return true;
}

bool ReferenceReader::next(ReferenceLine& line) {
  std::string rest;
  while (inLongLine_ && nextPiece(rest)) {
  }
  for (;;) {
    line.text.clear();
    bool ended = false;
    if (!readLine(line.text, ended)) return false;
    line.number = ++number_;
    line.longLine = !ended;
    inLongLine_ = line.longLine;
    if (line.longLine || !isBlank(line.text)) return true;
  }
}

bool ReferenceReader::nextPiece(std::string& piece) {
  piece.clear();
  if (!inLongLine_) return false;
  bool ended = false;
  const bool read = readLine(piece, ended);
  if (ended) inLongLine_ = false;
  return read && !piece.empty();
}

std::unique_ptr<std::istream> openReferenceList(const std::string& path) {
  if (path == "-") return std::make_unique<std::istream>(std::cin.rdbuf());
  std::error_code ec;
  if (std::filesystem::is_directory(path, ec))
    throw std::runtime_error(path + " is a folder, not a reference list");
  auto in = std::make_unique<std::ifstream>(path, std::ios::binary);
  if (!*in) throw std::runtime_error("cannot read " + path + ": " + std::strerror(errno));
  return in;
}

}  // namespace quillpaper
