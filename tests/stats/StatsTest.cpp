// The analyses against R's (scripts/stats_reference.R wrote reference.txt from
// R's cor.test, lm, drop1 on sum-to-zero contrasts and t.test, on data sets of
// R's datasets package): every number within 1e-8 of R's, and the same once
// printed as the tables print it.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <sstream>

#include "stats/Analyses.h"
#include "stats/ApaNumbers.h"

using namespace quillstats;

namespace {

const std::string kDir = QFA_STATS_DIR;

std::filesystem::path data(const std::string& name) { return kDir + "/data/" + name; }

const std::map<std::string, double>& reference() {
  static const std::map<std::string, double> values = [] {
    std::map<std::string, double> out;
    std::ifstream in(kDir + "/reference.txt");
    std::string caseName, key;
    double value = 0;
    while (in >> caseName >> key >> value) out[caseName + " " + key] = value;
    return out;
  }();
  return values;
}

// Compares one value with R's and counts it; both printed the way the tables print it must match too.
class Checker {
 public:
  explicit Checker(std::string caseName) : case_(std::move(caseName)) {}
  ~Checker() { EXPECT_GT(checked_, 0) << case_ << ": nothing compared"; }

  void operator()(const std::string& key, double ours, bool bounded = false) {
    const auto it = reference().find(case_ + " " + key);
    ASSERT_NE(it, reference().end()) << case_ << " " << key << " is not in the reference";
    const double theirs = it->second;
    EXPECT_LE(std::fabs(ours - theirs), 1e-8 * std::max(std::fabs(theirs), 1e-6))
        << case_ << " " << key << ": " << ours << " against R's " << theirs;
    EXPECT_EQ(bounded ? quillstats::bounded(ours) : fixed(ours), bounded ? quillstats::bounded(theirs) : fixed(theirs))
        << case_ << " " << key;
    ++checked_;
  }
  void p(const std::string& key, double ours) {
    (*this)(key, ours, true);
    EXPECT_EQ(pValue(ours), pValue(reference().at(case_ + " " + key))) << case_ << " " << key;
  }

 private:
  std::string case_;
  int checked_ = 0;
};

std::string at(std::initializer_list<size_t> indexes) {
  std::string out;
  for (size_t i : indexes) out += "." + std::to_string(i);
  return out;
}

}  // namespace

TEST(StatsAgainstR, Descriptives) {
  struct Case {
    const char* name;
    const char* file;
    std::vector<std::string> variables;
    std::string by;
  };
  for (const Case& c : {Case{"descriptives-mtcars", "mtcars.csv", {"mpg", "hp", "wt"}, ""},
                        Case{"descriptives-iris", "iris.csv", {"Sepal.Length", "Petal.Width"}, "Species"},
                        Case{"descriptives-airquality", "airquality.csv", {"Ozone", "Solar.R"}, "Month"}}) {
    const Descriptives d = describe(data(c.file), c.variables, c.by);
    Checker check(c.name);
    for (size_t g = 0; g < d.groups.size(); ++g)
      for (size_t v = 0; v < d.variables.size(); ++v) {
        check("n" + at({g, v}), static_cast<double>(d.cells[g][v].n));
        check("mean" + at({g, v}), d.cells[g][v].mean);
        check("sd" + at({g, v}), d.cells[g][v].sd());
      }
  }
}

TEST(StatsAgainstR, Correlations) {
  struct Case {
    const char* name;
    const char* file;
    std::vector<std::string> variables;
    Missing missing;
  };
  const std::vector<std::string> air{"Ozone", "Solar.R", "Wind", "Temp"};
  for (const Case& c : {Case{"correlation-mtcars", "mtcars.csv", {"mpg", "hp", "wt", "qsec"}, Missing::Listwise},
                        Case{"correlation-airquality-pairwise", "airquality.csv", air, Missing::Pairwise},
                        Case{"correlation-airquality-listwise", "airquality.csv", air, Missing::Listwise}}) {
    const Correlations r = correlate(data(c.file), c.variables, c.missing);
    Checker check(c.name);
    for (size_t i = 0; i < r.variables.size(); ++i) {
      check("mean" + at({i}), r.moments[i].mean);
      check("sd" + at({i}), r.moments[i].sd());
      for (size_t j = 0; j < i; ++j) {
        check("r" + at({i, j}), r.r[i][j], true);
        check.p("p" + at({i, j}), r.p[i][j]);
        check("lower" + at({i, j}), r.lower[i][j], true);
        check("upper" + at({i, j}), r.upper[i][j], true);
        check("n" + at({i, j}), static_cast<double>(r.n[i][j]));
      }
    }
  }
}

TEST(StatsAgainstR, HierarchicalRegression) {
  struct Case {
    const char* name;
    const char* file;
    std::string dv;
    std::vector<std::vector<std::string>> blocks;
  };
  for (const Case& c : {Case{"regression-mtcars", "mtcars.csv", "mpg", {{"wt", "hp"}, {"qsec"}}},
                        Case{"regression-iris", "iris.csv", "Sepal.Length", {{"Sepal.Width"}, {"Petal.Length", "Petal.Width"}}},
                        Case{"regression-airquality", "airquality.csv", "Ozone", {{"Temp", "Wind", "Solar.R"}}}}) {
    const Regression reg = regress(data(c.file), c.dv, c.blocks);
    Checker check(c.name);
    check("n", static_cast<double>(reg.n));
    for (size_t m = 0; m < reg.models.size(); ++m) {
      const Model& model = reg.models[m];
      const size_t number = m + 1;
      for (size_t k = 0; k < model.coefficients.size(); ++k) {
        const Coefficient& co = model.coefficients[k];
        check("b" + at({number, k}), co.b);
        check("se" + at({number, k}), co.se);
        check("t" + at({number, k}), co.t);
        check.p("p" + at({number, k}), co.p);
        check("lower" + at({number, k}), co.lower);
        check("upper" + at({number, k}), co.upper);
        if (k > 0) check("beta" + at({number, k}), co.beta, true);
      }
      check("r2" + at({number}), model.r2, true);
      check("adjr2" + at({number}), model.adjustedR2, true);
      check("F" + at({number}), model.F);
      check.p("pF" + at({number}), model.pF);
      check("deltaF" + at({number}), model.deltaF);
      check.p("pDelta" + at({number}), model.pDelta);
    }
  }
}

TEST(StatsAgainstR, TypeThreeAnova) {
  struct Case {
    const char* name;
    const char* file;
    std::string dv;
    std::vector<std::string> factors;
    bool balanced;
  };
  for (const Case& c : {Case{"anova-toothgrowth", "ToothGrowth.csv", "len", {"supp", "dose"}, true},
                        Case{"anova-warpbreaks", "warpbreaks.csv", "breaks", {"wool", "tension"}, true},
                        Case{"anova-mtcars", "mtcars.csv", "mpg", {"cyl", "am"}, false}}) {
    const Anova a = anova(data(c.file), c.dv, c.factors);
    EXPECT_EQ(a.balanced, c.balanced) << c.name;
    Checker check(c.name);
    check("mse", a.mse);
    check("dfError", a.dfError);
    for (size_t t = 0; t < a.terms.size(); ++t) {
      check("ss" + at({t}), a.terms[t].ss);
      check("F" + at({t}), a.terms[t].F);
      check.p("p" + at({t}), a.terms[t].p);
      check("eta" + at({t}), a.terms[t].partialEta2, true);
    }
  }
}

TEST(StatsAgainstR, StudentAndWelchT) {
  struct Case {
    const char* name;
    const char* file;
    std::string dv, by;
  };
  for (const Case& c : {Case{"ttest-toothgrowth", "ToothGrowth.csv", "len", "supp"},
                        Case{"ttest-mtcars", "mtcars.csv", "mpg", "am"}}) {
    const TTests tests = ttests(data(c.file), {c.dv}, c.by);
    ASSERT_EQ(tests.tests.size(), 1u);
    const TTest& t = tests.tests[0];
    Checker check(c.name);
    check("student.t", t.studentT);
    check.p("student.p", t.studentP);
    check("welch.t", t.welchT);
    check("welch.df", t.welchDf);
    check.p("welch.p", t.welchP);
    check("d", t.cohensD);
    for (size_t g = 0; g < 2; ++g) {
      check("mean" + at({g}), t.groups[g].mean);
      check("sd" + at({g}), t.groups[g].sd());
    }
  }
}

// Catches a leading zero where APA drops it, "nan" in a table, or p rounded to ".000".
TEST(ApaNumbersTest, AsApaPrintsThem) {
  const double nan = std::nan("");
  const std::pair<std::string, std::string> rows[] = {
      {fixed(12.345), "12.35"},    {fixed(-0.004), "-0.00"},  {fixed(nan), "--"},
      {bounded(0.934), ".93"},     {bounded(-0.09), "-.09"},  {bounded(1), "1.00"},
      {pValue(0.0004), "< .001"},  {pValue(0.0126), ".013"},  {pValue(0.001), ".001"},
      {pValue(nan), "--"},         {stars(0.009), "**"},      {stars(0.049), "*"},
      {stars(0.05), ""},           {count(1234567), "1,234,567"}, {count(999), "999"},
      {degrees(55.309), "55.3"},   {degrees(58), "58"},
  };
  for (const auto& [got, expected] : rows) EXPECT_EQ(got, expected);
}
