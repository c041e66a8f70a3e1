#include "tables/TableModelComparison.h"

namespace QuillFormatAPA {

using namespace tables;

const TableLayout& TableModelComparison::layout() {
  static const Row differenceBetween = {TC({"        Difference between"})};
  static const TableLayout s{
      "TableModelComparison",
      "Fit Indices for Nested Sequence of Cross-Sectional Models",
      6,
      {
          {rule(true), TC({"Model", "chi_squared", "NFI", "PFI", "chi_squared_diff", "delta_NFI"})},
          {TC({"1. Mobley's (1977)"})},
          {TC({"    measurement model", "  443.18|*", ".92", ".67"})},
          {TC({"2. Quit & search intentions", "  529.80|*", ".89", ".69"})},
          differenceBetween,
          {TC({"            Model 2 & Model 1"}), moveRight(3), TC({"     86.61|*", ".03"})},
          {TC({"3. Search intentions &"})},
          {TC({"        thoughts of quitting", "  519.75|*", ".90", ".69"})},
          differenceBetween,
          {TC({"            Model 3 & Model 1"}), moveRight(3), TC({"     76.57|*", ".02"})},
          {TC({"4. Intentions to quit &"})},
          {TC({"        thoughts of quitting", "  546.97|*", ".89", ".69"})},
          differenceBetween,
          {TC({"            Model 4 & Model 1"}), moveRight(3), TC({"   103.78|*", ".03"})},
          {TC({"5. One withdrawal cognition", "  616.97|*", ".87", ".70"})},
          differenceBetween,
          {TC({"            Model 5 & Model 1"}), moveRight(3), TC({"   173.79|*", ".05"})},
          {TC({"6. Hom, Griffeth, & Sallaro's"})},
          {TC({"        (1984) structural model", "  754.37|*", ".84", ".71"})},
          differenceBetween,
          {TC({"            Model 6 & Model 5"}), moveRight(3), TC({"   137.39|*", ".03"})},
          {TC({"7. Structural null model", "2,741.49|*", ".23", ".27"})},
          differenceBetween,
          {TC({"            Model 7 & Model 6"}), moveRight(3), TC({"1,987.13|*", ".61"})},
          {closingRule(false), TC({"8. Null model", "3,849.07|*"})},
      },
      {{"This model comparison table example is from APA 5.14, pg. 146. NFI = normed fit index; PFI = "
        "parsimonious fit index.",
        true},
       {"*|p| < .05.", false}},
      std::nullopt};
  return s;
}

}  // namespace QuillFormatAPA
