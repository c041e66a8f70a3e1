#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace quillstats {

// A problem with the user's data file, said so that it can be found: the
// file, the line, the column and the value where they apply.
class DataError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A CSV file read record by record, never held whole: a header row names the
// columns; fields may be quoted ("a, b", "say ""hi""", a line break inside);
// a UTF-8 byte order mark is skipped; the delimiter (comma, semicolon or tab)
// is the one the header uses most outside quotes. With a semicolon, a comma
// in a number is its decimal point ("3,14"). An empty field and "NA" are
// missing values.
class CsvReader {
 public:
  // Opens `file` and reads its header; DataError when it cannot be read or
  // has no header.
  explicit CsvReader(const std::filesystem::path& file);
  ~CsvReader();
  CsvReader(const CsvReader&) = delete;
  CsvReader& operator=(const CsvReader&) = delete;

  const std::vector<std::string>& header() const { return header_; }
  char delimiter() const { return delimiter_; }
  // The index of the column called `name`; DataError naming the columns there are if none is.
  size_t column(std::string_view name) const;

  // Reads the next record; false at the end. A record with more or fewer
  // fields than the header, or a quote left open at the end of the file, is
  // a DataError. Blank lines are skipped.
  bool next();
  // The line the current record starts on (the header is line 1).
  size_t line() const { return recordLine_; }

  std::string_view field(size_t column) const { return fields_[column]; }
  // The field without the blanks around it: a group's value as written.
  std::string_view text(size_t column) const;
  bool missing(size_t column) const;
  // The field as a number; NaN when missing. Anything else that is not a
  // finite number is a DataError naming the file, line, column and value.
  double number(size_t column) const;

  // "FILE, line N, column "NAME"": where a value stands, for messages.
  std::string where(size_t column) const;

 private:
  bool readLine(std::string& line);
  bool readRecord(std::vector<std::string>& fields);
  std::string name_;
  std::FILE* file_ = nullptr;
  std::vector<char> buffer_;
  size_t at_ = 0, end_ = 0;
  size_t lineNumber_ = 0;
  size_t recordLine_ = 0;
  char delimiter_ = ',';
  std::vector<std::string> header_;
  std::vector<std::string> fields_;
  std::string line_;
};

// Parses a number as people write one in a data file: "-1.5", "+2", "3e-4",
// " 7 ", and with `decimalComma` "3,14". False when it is not a finite number.
bool parseNumber(std::string_view text, bool decimalComma, double& value);

}  // namespace quillstats
