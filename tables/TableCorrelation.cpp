#include "tables/TableCorrelation.h"

namespace QuillFormatAPA {

using namespace tables;

const TableLayout& TableCorrelation::layout() {
  // Row k of a matrix skips k-1 cells before its diagonal "--".
  static const TableLayout s{
      "TableCorrelation",
      "Intercorrelations Between\r\nSubscales for Students and Older Adults",
      5,
      {
          {rule(false), TC({"Subscale", "1", "2", "3", "4"})},
          {spannerAll("Students (n = 200)", false, false)},
          {TC({"1. Tranquility", "--", ".93", "-.09", ".73"})},
          {TC({"2. Goodwill"}), moveRight(), TC({"--", "-.34", ".62"})},
          {TC({"3. Happiness"}), moveRight(2), TC({"--", ".14"})},
          {rule(false), TC({"4. Elation"}), moveRight(3), TC({"--"})},
          {spannerAll("Older adults (n = 189)", false, false)},
          {TC({"1. Tranquility", "--", ".42", "-.07", ".52"})},
          {TC({"2. Goodwill"}), moveRight(), TC({"--", "-.43", ".62"})},
          {TC({"3. Happiness"}), moveRight(2), TC({"--", ".47"})},
          {closingRule(false), TC({"4. Elation"}), moveRight(3), TC({"--"})},
      },
      {{"This correlation table example is from APA 5th edition 3.62, pg. 153, but is still valid for the 6th "
        "edition.",
        true}},
      std::nullopt};
  return s;
}

}  // namespace QuillFormatAPA
