#include "tables/TableMultilevelModel.h"

namespace QuillFormatAPA {

using namespace tables;

const TableLayout& TableMultilevelModel::layout() {
  static const Row level2 = {TL({"Level 2"})};
  static const TableLayout s{
      "TableMultilevelModel",
      "Fixed Effects Estimates (Top) and Variance-Covariance Estimates (Bottom) for Models of the Predictors of "
      "Positive Parenting",
      6,
      {
          {rule(true), TL({"Parameter", "Model 1", "Model 2", "Model 3", "Model 4", "Model 5"})},
          {moveRight(), spanner("Fixed effects", 5, false, true)},
          {TL({"Intercept", "12.51 (0.04)", "12.23 (0.07)", "12.23 (0.07)", "12.23 (0.07)", "12.64 (0.11)"})},
          {TL({"Level 1 (child-specific)"})},
          {TL({"   Age", kBlank, "-0.49* (0.02)", "-0.48* (0.02)", "-0.48* (0.02)", "-0.48* (0.02)"})},
          {TL({"   Age|2", kBlank, " 0.06* (0.01)", " 0.06* (0.01)", " 0.06* (0.01)", " 0.06* (0.01)"})},
          {TL({"   Negative affectivity", kBlank, "-0.56* (0.08)", "-0.53* (0.08)", "-0.57* (0.09)", "-0.57* (0.09)"})},
          {TL({"   Girl", kBlank, " 0.05 (0.05)", " 0.05 (0.05)", " 0.04 (0.05)", " 0.07 (0.05)"})},
          {TL({"   Not bio. mother", kBlank, "-0.34 (0.26)", "-0.28 (0.26)", "-0.28 (0.26)", "-0.30 (0.28)"})},
          {TL({"   Not bio. father", kBlank, "-0.34* (0.10)", "-0.31* (0.10)", "-0.30* (0.10)", "-0.29 (0.15)"})},
          {TL({"   Oldest sibling", kBlank, " 0.38* (0.07)", " 0.37* (0.07)", " 0.37* (0.07)", " 0.36* (0.07)"})},
          {TL({"   Middle sibling", kBlank, "-0.36* (0.06)", "-0.34* (0.06)", "-0.35* (0.06)", "-0.28* (0.06)"})},
          level2,
          {TL({"   SES"}), moveRightPositional(4), TL({" 0.18* (0.06)"})},
          {TL({"   Marital dissatisfaction"}), moveRightPositional(4), TL({"-0.43* (0.14)"})},
          {TL({"   Family size"}), moveRightPositional(4), TL({"-0.41* (0.08)"})},
          {TL({"   Single parent"}), moveRightPositional(4), TL({" 0.09 (0.19)"})},
          {TL({"   All-girl sibship"}), moveRightPositional(4), TL({"-0.20 (0.13)"})},
          {TL({"   Mixed-gender sibship"}), moveRightPositional(4), TL({"-0.25* (0.10)"})},
          {moveRight(), spanner("Random parameters", 5, false, true)},
          level2,
          {TL({{"   Intercept/intercept ", "a0"}, "5.13* (0.17)", " 4.87* (0.15)", " 4.92* (0.15)", " 4.86* (0.15)",
               " 4.79* (0.14)"})},
          {TL({{"   Age/age ", "a1"}, kBlank, kBlank, " 0.09* (0.01)", " 0.09* (0.01)", " 0.09* (0.01)"})},
          {TL({{"   Age/intercept ", "a10"}, kBlank, kBlank, "-0.04 (0.03)", "-0.05 (0.03)", "-0.05 (0.03)"})},
          {TL({"   Neg. affect/neg. affect", kBlank, kBlank, kBlank, " 1.51* (0.46)", " 1.51* (0.46)"})},
          {TL({{"      ", "a3"}})},  // the symbol of the row above, on a line of its own
          {TL({{"   Neg. affect/intercept ", "a30"}, kBlank, kBlank, kBlank, "-0.03 (0.20)", "-0.02 (0.20)"})},
          {TL({{"   Neg. affect/age ", "a31"}, kBlank, kBlank, kBlank, " 0.00 (0.05)", "-0.00 (0.05)"})},
          {TL({"Level 1"})},
          // A plain subscript here, without the variance marker: the example's own asymmetry.
          {TL({"   Intercept/intercept w0", "3.80* (0.08)", " 2.74* (0.06)", " 2.30* (0.07)", " 2.19* (0.07)",
               " 2.18* (0.07)"})},
          {closingRule(false),
           TL({"   -2*log likelihood", "38,369.7", "37,001.9", "36,919.6", "36,899.8", "36,849.4"})},
      },
      {{"This multilevel model table example is from APA 5.15, pg. 147-148.", true}, {"*|p| < .05.", false}},
      "10"};
  return s;
}

std::string TableMultilevelModel::sigmaSquared(const std::string& subscript) {
  return traced(*this, "sigmaSquared", params(arg("subscript", subscript)),
                [&](Procedure&) { return "(sigma_squared" + subscript + ")"; });
}

}  // namespace QuillFormatAPA
