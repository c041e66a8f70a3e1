// Data files as people save them, and the bad ones: each gives its values or
// an error that says where the problem is.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <fstream>
#include <functional>

#include "stats/Analyses.h"
#include "stats/Csv.h"

using namespace quillstats;

namespace {

class DataFile {
 public:
  explicit DataFile(const std::string& content) {
    static int counter = 0;
    path_ = std::filesystem::temp_directory_path() /
            ("quill-stats-" + std::to_string(::getpid()) + "-" + std::to_string(counter++) + ".csv");
    std::ofstream(path_, std::ios::binary) << content;
  }
  ~DataFile() { std::filesystem::remove(path_); }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// Every record's fields, joined with "|", records with "/".
std::string readAll(const std::string& content, char* delimiter = nullptr) {
  DataFile file(content);
  CsvReader csv(file.path());
  if (delimiter) *delimiter = csv.delimiter();
  std::string out;
  for (const std::string& h : csv.header()) out += h + "|";
  while (csv.next()) {
    out += "/";
    for (size_t c = 0; c < csv.header().size(); ++c) out += std::string(csv.field(c)) + "|";
  }
  return out;
}

std::string errorOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const DataError& e) {
    return e.what();
  }
  return "(no error)";
}

}  // namespace

TEST(CsvReaderTest, ShapesOfFiles) {
  struct Row {
    const char* content;
    char delimiter;
    const char* fields;
  };
  const Row rows[] = {
      {"a,b\n1,2\n3,4\n", ',', "a|b|/1|2|/3|4|"},
      {"\xEF\xBB\xBF" "a,b\r\n1,2\r\n", ',', "a|b|/1|2|"},           // BOM, CRLF
      {"a;b\n1,5;2\n", ';', "a|b|/1,5|2|"},                           // semicolons, a decimal comma
      {"a\tb\n1\t2\n", '\t', "a|b|/1|2|"},
      {"\"a, b\",c\n\"x \"\"y\"\"\",2\n", ',', "a, b|c|/x \"y\"|2|"},  // quoted delimiter and quotes
      {"a,b\n\"two\nlines\",2\n", ',', "a|b|/two\nlines|2|"},        // a line break inside quotes
      {"a,b\n\n1,2\n\n", ',', "a|b|/1|2|"},                           // blank lines
      {"a,b\n1,2", ',', "a|b|/1|2|"},                                 // no newline at the end
      {"only\n5\n", ',', "only|/5|"},
  };
  for (const Row& r : rows) {
    char delimiter = 0;
    EXPECT_EQ(readAll(r.content, &delimiter), r.fields) << r.content;
    EXPECT_EQ(delimiter, r.delimiter) << r.content;
  }
}

TEST(CsvReaderTest, NumbersAndMissingValues) {
  DataFile file("x;y\n1,5;NA\n+2; 7 \n-3e2;\n");
  CsvReader csv(file.path());
  const double expected[][2] = {{1.5, NAN}, {2, 7}, {-300, NAN}};
  for (const auto& row : expected) {
    ASSERT_TRUE(csv.next());
    for (size_t c = 0; c < 2; ++c)
      if (std::isnan(row[c]))
        EXPECT_TRUE(csv.missing(c) && std::isnan(csv.number(c)));
      else
        EXPECT_EQ(csv.number(c), row[c]);
  }
  EXPECT_FALSE(csv.next());
  for (const char* text : {"inf", "nan", "1.2.3", "12abc", "1,5", "", "--1"}) {
    double v = 0;
    EXPECT_FALSE(parseNumber(text, false, v)) << text;
  }
}

// Catches a bad file read silently: each error names where the problem is.
TEST(CsvReaderTest, BadFilesSayWhere) {
  struct Row {
    std::function<void(const std::filesystem::path&)> run;
    const char* content;
    const char* message;
  };
  const auto readEverything = [](const std::filesystem::path& p) {
    CsvReader csv(p);
    while (csv.next())
      for (size_t c = 0; c < csv.header().size(); ++c) csv.number(c);
  };
  const auto correlation = [](const std::filesystem::path& p) { correlate(p, {}, Missing::Pairwise); };
  const auto regression = [](const std::filesystem::path& p) { regress(p, "y", {{"a", "b"}}); };
  const auto groups = [](const std::filesystem::path& p) { anova(p, "y", {"g", "h"}); };
  const auto ttest = [](const std::filesystem::path& p) { ttests(p, {"y"}, "g"); };
  const Row rows[] = {
      {readEverything, "a,b\n1,2\n3\n", "line 3: 1 field where the header has 2 columns"},
      {readEverything, "a,b\n1,2\n3,4,5\n", "line 3: 3 fields where the header has 2 columns"},
      {readEverything, "a,b\n1,\"2\n", "line 2: a quote opened there is never closed"},
      {readEverything, "a,score\n1,2\n2,twelve\n", "line 3, column \"score\": \"twelve\" is not a number"},
      {readEverything, "", "is empty"},
      {correlation, "a,b\n", "has a header but no rows of data"},
      {correlation, "a,b\n1,2\n", "a correlation needs three at least"},
      {correlation, "a,b\n1,2\n1,3\n1,5\n", "column \"a\" is constant"},
      {regression, "y,a,b\n1,1,2\n2,2,4\n3,3,6\n5,4,8\n", "\"b\" is a linear combination of the intercept and a"},
      {regression, "y,a,b\n1,1,2\n2,2,5\n", "too few for 3 coefficients"},
      {regression, "y,a\n1,1\n", "has no column \"b\" (its columns: y, a)"},
      {groups, "y,g,h\n1,a,x\n2,a,y\n3,b,x\n4,a,x\n", "the group g = b, h = y has no rows"},
      {groups, "y,g,h\n1,a,x\n2,a,x\n", "factor \"g\" has one value (a)"},
      {ttest, "y,g\n1,a\n2,b\n3,c\n", "a t test compares two groups; \"g\" has 3: a, b, c"},
      {ttest, "y,g\n1,a\n2,a\n3,b\n", "has 1 value in group g = b"},
  };
  for (const Row& r : rows) {
    DataFile file(r.content);
    EXPECT_NE(errorOf([&] { r.run(file.path()); }).find(r.message), std::string::npos)
        << r.content << "\n  gave: " << errorOf([&] { r.run(file.path()); });
  }
  EXPECT_NE(errorOf([] { CsvReader csv(std::filesystem::temp_directory_path()); }).find("is a folder"),
            std::string::npos);
  EXPECT_NE(errorOf([] { CsvReader csv("/nonexistent/data.csv"); }).find("cannot read /nonexistent/data.csv"),
            std::string::npos);
}
