#include "stats/Csv.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace quillstats {

namespace {

constexpr size_t kChunk = 1 << 16;

std::string_view trim(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return s;
}

// The delimiter the header uses most outside quotes; a comma when it uses none.
char detectDelimiter(std::string_view header) {
  size_t commas = 0, semicolons = 0, tabs = 0;
  bool quoted = false;
  for (char c : header) {
    if (c == '"') quoted = !quoted;
    if (quoted) continue;
    commas += c == ',';
    semicolons += c == ';';
    tabs += c == '\t';
  }
  if (tabs > commas && tabs >= semicolons) return '\t';
  if (semicolons > commas) return ';';
  return ',';
}

// Splits `line` into `fields`. False when a quoted field runs past the end
// of the line (the record goes on on the next line).
bool split(std::string_view line, char delimiter, std::vector<std::string>& fields, size_t& count) {
  count = 0;
  size_t i = 0;
  for (;;) {
    if (fields.size() <= count) fields.emplace_back();
    std::string& field = fields[count++];
    field.clear();
    // Blanks before an opening quote are not part of the field.
    size_t start = i;
    while (start < line.size() && line[start] == ' ') ++start;
    if (start < line.size() && line[start] == '"') {
      i = start + 1;
      for (;;) {
        const size_t quote = line.find('"', i);
        if (quote == std::string_view::npos) return false;
        field.append(line.substr(i, quote - i));
        if (quote + 1 < line.size() && line[quote + 1] == '"') {
          field += '"';
          i = quote + 2;
          continue;
        }
        i = quote + 1;
        break;
      }
      // Whatever follows the closing quote up to the delimiter is kept.
      const size_t next = line.find(delimiter, i);
      field.append(line.substr(i, next == std::string_view::npos ? std::string_view::npos : next - i));
      if (next == std::string_view::npos) return true;
      i = next + 1;
    } else {
      const size_t next = line.find(delimiter, i);
      field.assign(line.substr(i, next == std::string_view::npos ? std::string_view::npos : next - i));
      if (next == std::string_view::npos) return true;
      i = next + 1;
    }
  }
}

}  // namespace

bool parseNumber(std::string_view text, bool decimalComma, double& value) {
  text = trim(text);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  if (text.empty() || text.size() > 64) return false;
  char copy[64];
  if (decimalComma && text.find(',') != std::string_view::npos) {
    std::memcpy(copy, text.data(), text.size());
    for (size_t k = 0; k < text.size(); ++k)
      if (copy[k] == ',') copy[k] = '.';
    text = std::string_view(copy, text.size());
  }
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() && std::isfinite(value);
}

CsvReader::CsvReader(const std::filesystem::path& file) : name_(file.string()), buffer_(kChunk) {
  std::error_code ec;
  if (std::filesystem::is_directory(file, ec)) throw DataError(name_ + " is a folder, not a data file");
  file_ = std::fopen(name_.c_str(), "rb");
  if (!file_) throw DataError("cannot read " + name_ + ": " + std::strerror(errno));
  std::string first;
  while (readLine(first))
    if (!trim(first).empty()) break;
  if (first.starts_with("\xEF\xBB\xBF")) first.erase(0, 3);
  if (trim(first).empty()) {
    std::fclose(file_);
    file_ = nullptr;
    throw DataError(name_ + " is empty: a data file starts with a header row naming its columns");
  }
  delimiter_ = detectDelimiter(first);
  std::string record = first;
  size_t count = 0;
  while (!split(record, delimiter_, header_, count)) {
    std::string more;
    if (!readLine(more)) {
      std::fclose(file_);
      file_ = nullptr;
      throw DataError(name_ + ": a quote in the header is never closed");
    }
    record += '\n';
    record += more;
  }
  header_.resize(count);
  for (std::string& h : header_) h = std::string(trim(h));
  fields_.resize(header_.size());
}

CsvReader::~CsvReader() {
  if (file_) std::fclose(file_);
}

size_t CsvReader::column(std::string_view name) const {
  for (size_t c = 0; c < header_.size(); ++c)
    if (header_[c] == name) return c;
  std::string known;
  for (const std::string& h : header_) {
    if (h.empty()) continue;
    known += known.empty() ? "" : ", ";
    known += h;
  }
  throw DataError(name_ + " has no column \"" + std::string(name) + "\" (its columns: " + known + ")");
}

bool CsvReader::readLine(std::string& line) {
  line.clear();
  bool any = false;
  for (;;) {
    if (at_ == end_) {
      end_ = std::fread(buffer_.data(), 1, buffer_.size(), file_);
      at_ = 0;
      if (end_ == 0) {
        if (std::ferror(file_)) throw DataError("cannot read " + name_ + ": " + std::strerror(errno));
        if (any) ++lineNumber_;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        return any;
      }
    }
    any = true;
    const char* begin = buffer_.data() + at_;
    const void* newline = std::memchr(begin, '\n', end_ - at_);
    if (newline) {
      const size_t length = static_cast<const char*>(newline) - begin;
      line.append(begin, length);
      at_ += length + 1;
      ++lineNumber_;
      if (!line.empty() && line.back() == '\r') line.pop_back();
      return true;
    }
    line.append(begin, end_ - at_);
    at_ = end_;
  }
}

bool CsvReader::next() {
  do {
    if (!readLine(line_)) return false;
  } while (trim(line_).empty());
  recordLine_ = lineNumber_;
  size_t count = 0;
  std::string more;
  while (!split(line_, delimiter_, fields_, count)) {
    if (!readLine(more))
      throw DataError(name_ + ", line " + std::to_string(recordLine_) + ": a quote opened there is never closed");
    line_ += '\n';
    line_ += more;
  }
  if (count != header_.size())
    throw DataError(name_ + ", line " + std::to_string(recordLine_) + ": " + std::to_string(count) +
                    (count == 1 ? " field" : " fields") + " where the header has " + std::to_string(header_.size()) +
                    " columns");
  return true;
}

std::string_view CsvReader::text(size_t column) const { return trim(fields_[column]); }

bool CsvReader::missing(size_t column) const {
  const std::string_view f = trim(fields_[column]);
  return f.empty() || f == "NA";
}

double CsvReader::number(size_t column) const {
  if (missing(column)) return std::numeric_limits<double>::quiet_NaN();
  double value = 0;
  if (!parseNumber(fields_[column], delimiter_ == ';', value))
    throw DataError(where(column) + ": \"" + std::string(trim(fields_[column])) + "\" is not a number");
  return value;
}

std::string CsvReader::where(size_t column) const {
  return name_ + ", line " + std::to_string(recordLine_) + ", column \"" + header_[column] + "\"";
}

}  // namespace quillstats
