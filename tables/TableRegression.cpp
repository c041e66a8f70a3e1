#include "tables/TableRegression.h"

namespace QuillFormatAPA {

using namespace tables;

const TableLayout& TableRegression::layout() {
  // The texts stand as the example prints them, the three decimals of
  // "3.192" and the repeated "Moral identity symbolization" included.
  static const TableLayout s{
      "TableRegression",
      "Predictors of Self-Reported Moral Behavior",
      5,
      {
          {moveRight(), spanner("Self-reported moral behavior", 4, true, true)},
          {moveRight(2), spanner("Model 2", 3, true, true)},
          {rule(true), repairRule(), TC({"Variable", "Model 1 B", "B", kBlank, "95% CI"})},
          {TL({"Constant", "  3.192**", " 2.99**", kBlank, " [2.37, 3.62]"})},
          {TL({"Gender", "  0.18*", " 0.17", kBlank, "[-0.00, 0.33]"})},
          {TL({"Age", " -0.06", "-0.05", kBlank, "[-0.14, 0.03]"})},
          {TL({"Social desirability bias", " -0.08**", "-0.08**", kBlank, "[-0.10, -0.05]"})},
          {TL({"Moral identity internalization", " -0.17**", "-0.16**", kBlank, "[-0.26, -0.06]"})},
          {TL({"Moral identity symbolization", "  0.07*", " 0.06", kBlank, "[-0.01, 0.12]"})},
          {TL({"Moral identity attentiveness", kBlank, " 0.07*", kBlank, " [0.00, 0.13]"})},
          {TL({"Moral identity symbolization", kBlank, "-0.01", kBlank, "[-0.08, 0.06]"})},
          {TL({"R|2", "    .29", kBlank, "    .31", kBlank})},
          {TL({"F", "19.07**", kBlank, "14.46**", kBlank})},
          {TL({"delta_R|2", kBlank, kBlank, "    .01", kBlank})},
          {closingRule(true), TL({"delta_F", kBlank, kBlank, "  2.39", kBlank})},
      },
      {{"This regression table example is from APA 5.12, pg. 144.", true}, {"*|p| < .05., **|p| < .01", false}},
      std::nullopt};
  return s;
}

void TableRegression::WorkaroundUnderlineLoss(const ObjectRef& table) {
  traced(*this, "WorkaroundUnderlineLoss", params(arg("table", table)),
         [&](Procedure& proc) { proc.step([&] { host::TableRef(table).UnderLineCell(2, 3); }); });
}

}  // namespace QuillFormatAPA
