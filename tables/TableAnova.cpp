#include "tables/TableAnova.h"

namespace QuillFormatAPA {

using namespace tables;

const TableLayout& TableAnova::layout() {
  static const TableLayout s{
      "TableAnova",
      "Analysis of Variance for Classical Conditioning",
      5,
      {
          {rule(true), TC({"Source", "df", "F", "eta", "p"})},
          {spannerAll("Between subjects", false, false)},
          {TC({"Anxiety (A)", "   2", "0.76", ".22", ".48"})},
          {TC({"Shock (S)", "    1", "0.01", ".02", ".92"})},
          {TC({"A X S", "   2", "0.18", ".11", ".84"})},
          {rule(false), TC({"S within-group error", "  30", "(16.48)"})},
          {spannerAll("Within subjects", false, false)},
          {TC({"Blocks (B)", "   4", "   3.27|**", ".31", ".01"})},
          {TC({"B X A", "    8", "0.93", ".24", ".49"})},
          {TC({"B X S", "   4", "  2.64|*", ".28", ".04"})},
          {TC({"B X A X S", "    8", "0.58", ".19", ".79"})},
          {closingRule(false), TC({"B X S within-group error", "120", "(1.31)"})},
      },
      {{"This ANOVA table example is from APA 5th edition 3.69, pg. 162, but is still valid for the 6th edition. "
        "Values enclosed in parentheses represent mean square errors. |S| = subjects.",
        true},
       {"*|p| < .05. **|p| < .01.", false}},
      std::nullopt};
  return s;
}

}  // namespace QuillFormatAPA
