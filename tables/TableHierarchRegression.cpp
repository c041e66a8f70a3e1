#include "tables/TableHierarchRegression.h"

namespace QuillFormatAPA {

using namespace tables;

const TableLayout& TableHierarchRegression::layout() {
  // Three groups of two columns with an empty column before each; the step
  // rows fill eight cells and the label rows one, the rest stays as it is.
  static const TableLayout s{
      "TableHierarchRegression",
      "Hierarchical Multiple Regression Analyses Predicting Postabortion Positive Well-Being From Preabortion Social "
      "Support and Preabortion Social Conflict With Mother, Partner, and Friend",
      9,
      {
          {moveRight(), spanner("Source of social support and social conflict", 8, true, true)},
          {moveRight(), spanner("Mother", 2, true, true), moveRight(), spanner("Partner", 2, true, true), moveRight(),
           spanner("Friend", 2, true, true)},
          {rule(true), TC({"Predictor", "delta_R|2", "beta", kBlank, "delta_R|2", "beta", kBlank, "delta_R|2", "beta"})},
          {TL({"Step 1", ".13*", kBlank, kBlank, ".10***", kBlank, kBlank, ".10***"})},
          {TL({"   Control variables|a"})},
          {TL({"Step 2", ".16***", kBlank, kBlank, ".19***", kBlank, kBlank, ".22***"})},
          {TL({"   Positive effect", kBlank, " .31***", kBlank, kBlank, " .32***", kBlank, kBlank, " .35***"})},
          {TL({"   Negative effect", kBlank, "-.25***", kBlank, kBlank, "-.27***", kBlank, kBlank, "-.30***"})},
          {TL({"Step 3", ".02", kBlank, kBlank, ".05***", kBlank, kBlank, ".01*"})},
          {TL({"   Social support", kBlank, " .17*", kBlank, kBlank, " .17***", kBlank, kBlank, " .08|_dagger_"})},
          {TL({"   Social conflict", kBlank, " .09", kBlank, kBlank, "-.08", kBlank, kBlank, "-.06"})},
          {TL({"Step 4", ".01", kBlank, kBlank, ".00", kBlank, kBlank, ".00"})},
          {TL({"   Social support x"})},
          {TL({"       Social conflict", kBlank, "-.14", kBlank, kBlank, "-.00", kBlank, kBlank, "-.07"})},
          {TL({"Total R|2", ".32***", kBlank, kBlank, ".33***", kBlank, kBlank, ".34***"})},
          {closingRule(true), TL({"n", "153", kBlank, kBlank, "455", kBlank, kBlank, "373"})},
      },
      // "prioir" is the example's own spelling.
      {{"This regression table example is from APA 5.13, pg. 145.", true},
       {"|a|Control variables included age, race, education, marital status, religion, abortion history, depression "
        "history, and prioir mental health counseling.",
        false},
       {"_dagger_|p| < .10. *|p| < .05. ***|p| < .001", false}},
      std::nullopt};
  return s;
}

}  // namespace QuillFormatAPA
