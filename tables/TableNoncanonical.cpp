#include "tables/TableNoncanonical.h"

namespace QuillFormatAPA {

using namespace tables;

const TableLayout& TableNoncanonical::layout() {
  // The stub column, two groups of three columns and an empty column between
  // them. The block spanners start after one move and still span all columns:
  // the template tolerates a span past the last column.
  static const TableLayout s{
      "TableNoncanonical",
      "Mean Numbers of Correct Responses by Children With and Without Pretraining",
      8,
      {
          {moveRight(), spanner("Girls", 3, true, true), moveRight(), spanner("Boys", 3, true, true)},
          {rule(true), TC({"Grade", "With", "Without", "Difference"}), moveRight(), TC({"With", "Without", "Difference"})},
          {moveRight(), spannerAll("Verbal tests", false, false)},
          {TC({"3", "280", "240", "40"}), moveRight(), TC({"281", "232", "49"})},
          {TC({"4", "297", "251", "46"}), moveRight(), TC({"290", "264", "26"})},
          {rule(true), TC({"5", "301", "260", "41"}), moveRight(), TC({"306", "221", "85"})},
          {rule(true), TC({"n|a", " 18", " 19"}), moveRight(2), TC({" 19", " 20"})},
          {moveRight(), spannerAll("Mathematical tests", false, false)},
          {TC({"3", "201", "189", "12"}), moveRight(), TC({"210", "199", "11"})},
          {TC({"4", "214", "194", "20"}), moveRight(), TC({"236", "210", "26"})},
          {rule(true), TC({"5", "221", " 216|b", " 5"}), moveRight(), TC({"239", "213", "26"})},
          {closingRule(false), TC({"n|a", " 20", " 17"}), moveRight(2), TC({" 19", " 18"})},
      },
      {{"This comprehensive table example is from APA 3.62, pg. 150, but is still valid for the 6th edition.", true},
       {"|a|Numbers of children out of 20 in each group who completed all tests. |b|One girl in this group gave only "
        "two correct responses.",
        false}},
      std::nullopt};
  return s;
}

}  // namespace QuillFormatAPA
