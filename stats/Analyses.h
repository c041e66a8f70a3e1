#pragma once

#include <cmath>
#include <cstddef>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "stats/Csv.h"

// The analyses behind the data tables, each read from a CSV file in one pass
// that keeps only running sums: memory does not grow with the rows.
namespace quillstats {

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Count, mean and sum of squared deviations, updated value by value (Welford).
struct Moments {
  size_t n = 0;
  double mean = 0;
  double m2 = 0;
  void add(double x) {
    ++n;
    const double d = x - mean;
    mean += d / static_cast<double>(n);
    m2 += d * (x - mean);
  }
  double variance() const { return n > 1 ? m2 / static_cast<double>(n - 1) : kNaN; }
  double sd() const { return std::sqrt(variance()); }
};

// --- descriptives ---------------------------------------------------------------
struct Descriptives {
  std::vector<std::string> variables;
  std::string by;                        // the grouping column; empty for none
  std::vector<std::string> groups;       // its values, in order; one unnamed group without it
  std::vector<std::vector<Moments>> cells;  // [group][variable]
  size_t rows = 0;                       // records read
};
Descriptives describe(const std::filesystem::path& file, std::vector<std::string> variables, const std::string& by);

// --- correlations ----------------------------------------------------------------
enum class Missing { Pairwise, Listwise };

struct Correlations {
  std::vector<std::string> variables;
  Missing missing = Missing::Pairwise;
  std::vector<Moments> moments;  // each variable's, on the values used
  // Indexed [i][j] for j < i (the lower triangle).
  std::vector<std::vector<double>> r, p, lower, upper;
  std::vector<std::vector<size_t>> n;
  size_t rows = 0;      // records read
  size_t complete = 0;  // records with every variable present
  size_t minN() const;
  size_t maxN() const;
};
Correlations correlate(const std::filesystem::path& file, std::vector<std::string> variables, Missing missing);

// --- regression -------------------------------------------------------------------
struct Coefficient {
  std::string name;  // "(Intercept)" first
  double b = 0, se = 0, beta = kNaN, t = 0, p = 0, lower = 0, upper = 0;
};
struct Model {
  std::vector<Coefficient> coefficients;
  double r2 = 0, adjustedR2 = 0, F = 0, pF = 0;
  int dfModel = 0, dfResidual = 0;
  // Against the model before it (the intercept alone for the first).
  double deltaR2 = 0, deltaF = 0, pDelta = 0;
  int dfDelta = 0;
};
struct Regression {
  std::string dv;
  std::vector<std::vector<std::string>> blocks;
  std::vector<Model> models;  // one for each block, each adding its predictors
  size_t rows = 0;            // records read
  size_t n = 0;               // records used: the outcome and every predictor present
};
Regression regress(const std::filesystem::path& file, const std::string& dv,
                   const std::vector<std::vector<std::string>>& blocks);

// --- factorial ANOVA --------------------------------------------------------------
struct AnovaTerm {
  std::vector<size_t> factors;  // indexes into Anova::factors
  std::string name;             // "A", "A × B"
  int df = 0;
  double ss = 0, F = 0, p = 0, partialEta2 = 0;
};
struct Anova {
  std::string dv;
  std::vector<std::string> factors;
  std::vector<std::vector<std::string>> levels;  // each factor's, in order
  std::vector<AnovaTerm> terms;                  // main effects, then interactions
  int dfError = 0;
  double ssError = 0, mse = 0;
  bool balanced = true;
  size_t rows = 0, n = 0;
};
// Type III sums of squares (effect coding), as for unbalanced data.
Anova anova(const std::filesystem::path& file, const std::string& dv, const std::vector<std::string>& between);

// --- two-group comparison ----------------------------------------------------------
struct TTest {
  std::string dv;
  Moments groups[2];
  double studentT = 0, studentP = 0;
  int studentDf = 0;
  double welchT = 0, welchDf = 0, welchP = 0;
  double cohensD = 0;  // the difference over the pooled standard deviation
};
struct TTests {
  std::string by;
  std::string levels[2];
  std::vector<TTest> tests;  // one for each outcome
  size_t rows = 0;
};
// The first group minus the second, groups in the order of their values.
TTests ttests(const std::filesystem::path& file, const std::vector<std::string>& dvs, const std::string& by);

// The columns of `file` whose first value is a number (a later value that is
// not one is then an error that says where): what descriptives and
// correlations use when no columns are named.
std::vector<std::string> numericColumns(const std::filesystem::path& file, const std::vector<std::string>& except);

// Values of a grouping column in the order people expect: numbers by value,
// words alphabetically.
void sortLevels(std::vector<std::string>& levels);

}  // namespace quillstats
