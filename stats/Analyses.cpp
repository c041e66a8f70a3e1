#include "stats/Analyses.h"

#include <Eigen/Dense>
#include <algorithm>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <map>
#include <set>

namespace quillstats {

namespace {

// --- distributions ---------------------------------------------------------------

double twoSidedT(double t, double df) {
  if (!std::isfinite(t)) return 0;
  return 2 * boost::math::cdf(boost::math::complement(boost::math::students_t(df), std::fabs(t)));
}

double criticalT(double df) { return boost::math::quantile(boost::math::complement(boost::math::students_t(df), 0.025)); }

double upperF(double F, double df1, double df2) {
  if (!std::isfinite(F)) return 0;
  if (F <= 0) return 1;
  return boost::math::cdf(boost::math::complement(boost::math::fisher_f(df1, df2), F));
}

double criticalZ() { return boost::math::quantile(boost::math::complement(boost::math::normal(), 0.025)); }

// --- columns -----------------------------------------------------------------------

std::vector<size_t> columnsOf(const CsvReader& csv, const std::vector<std::string>& names) {
  std::vector<size_t> out;
  for (const std::string& name : names) {
    const size_t c = csv.column(name);
    if (std::find(out.begin(), out.end(), c) != out.end()) throw DataError("column \"" + name + "\" is named twice");
    out.push_back(c);
  }
  return out;
}

std::string joined(const std::vector<std::string>& items) {
  std::string out;
  for (const std::string& s : items) out += (out.empty() ? "" : ", ") + s;
  return out;
}

// Bivariate running sums on the rows where both values are present.
struct CoMoments {
  size_t n = 0;
  double mx = 0, my = 0, sxx = 0, syy = 0, sxy = 0;
  void add(double x, double y) {
    ++n;
    const double dx = x - mx;
    const double dy = y - my;
    mx += dx / static_cast<double>(n);
    my += dy / static_cast<double>(n);
    sxx += dx * (x - mx);
    syy += dy * (y - my);
    sxy += dx * (y - my);
  }
};

// The R factor of a tall matrix fed row by row: blocks of rows are stacked
// under the R so far and decomposed again (a Householder QR each time), so
// memory stays that of one block however many rows come.
class StreamingQR {
 public:
  explicit StreamingQR(Eigen::Index columns)
      : q_(columns), r_(Eigen::MatrixXd::Zero(columns, columns)), block_(kBlock + columns, columns) {}

  void add(const Eigen::RowVectorXd& row) {
    block_.row(q_ + pending_) = row;
    if (++pending_ == kBlock) fold();
  }

  const Eigen::MatrixXd& r() {
    if (pending_ > 0) fold();
    return r_;
  }

 private:
  static constexpr Eigen::Index kBlock = 512;
  void fold() {
    block_.topRows(q_) = r_;
    Eigen::HouseholderQR<Eigen::MatrixXd> qr(block_.topRows(q_ + pending_));
    r_ = qr.matrixQR().topRows(q_).triangularView<Eigen::Upper>();
    pending_ = 0;
  }
  Eigen::Index q_;
  Eigen::MatrixXd r_;
  Eigen::MatrixXd block_;
  Eigen::Index pending_ = 0;
};

}  // namespace

void sortLevels(std::vector<std::string>& levels) {
  std::vector<std::pair<double, std::string>> numbers;
  for (const std::string& l : levels) {
    double v = 0;
    if (!parseNumber(l, false, v)) {
      std::sort(levels.begin(), levels.end());
      return;
    }
    numbers.emplace_back(v, l);
  }
  std::sort(numbers.begin(), numbers.end());
  for (size_t k = 0; k < levels.size(); ++k) levels[k] = numbers[k].second;
}

std::vector<std::string> numericColumns(const std::filesystem::path& file, const std::vector<std::string>& except) {
  CsvReader csv(file);
  const size_t columns = csv.header().size();
  std::vector<int> state(columns, 0);  // 0 nothing seen, 1 numbers, -1 not numbers
  int rows = 0;
  for (; rows < 100 && csv.next(); ++rows)
    for (size_t c = 0; c < columns; ++c) {
      if (state[c] != 0 || csv.missing(c)) continue;  // judged on its first value
      double v = 0;
      state[c] = parseNumber(csv.field(c), csv.delimiter() == ';', v) ? 1 : -1;
    }
  if (rows == 0) throw DataError(file.string() + " has a header but no rows of data");
  std::vector<std::string> out;
  for (size_t c = 0; c < columns; ++c)
    if (state[c] > 0 && !csv.header()[c].empty() &&
        std::find(except.begin(), except.end(), csv.header()[c]) == except.end())
      out.push_back(csv.header()[c]);
  if (out.empty()) throw DataError(file.string() + " has no column of numbers");
  return out;
}

// --- descriptives ---------------------------------------------------------------

Descriptives describe(const std::filesystem::path& file, std::vector<std::string> variables, const std::string& by) {
  if (variables.empty()) variables = numericColumns(file, {by});
  CsvReader csv(file);
  const std::vector<size_t> columns = columnsOf(csv, variables);
  const size_t group = by.empty() ? 0 : csv.column(by);
  std::map<std::string, std::vector<Moments>> cells;
  Descriptives d;
  d.variables = variables;
  d.by = by;
  std::vector<double> values(columns.size());
  while (csv.next()) {
    ++d.rows;
    for (size_t k = 0; k < columns.size(); ++k) values[k] = csv.number(columns[k]);
    if (!by.empty() && csv.missing(group)) continue;
    std::vector<Moments>& cell = cells[by.empty() ? std::string() : std::string(csv.text(group))];
    cell.resize(columns.size());
    for (size_t k = 0; k < columns.size(); ++k)
      if (!std::isnan(values[k])) cell[k].add(values[k]);
  }
  if (d.rows == 0) throw DataError(file.string() + " has a header but no rows of data");
  for (const auto& [name, _] : cells) d.groups.push_back(name);
  sortLevels(d.groups);
  for (const std::string& g : d.groups) d.cells.push_back(cells[g]);
  if (d.groups.empty()) throw DataError(file.string() + ": every row's \"" + by + "\" is missing");
  return d;
}

// --- correlations ----------------------------------------------------------------

size_t Correlations::minN() const {
  size_t m = SIZE_MAX;
  for (size_t i = 1; i < n.size(); ++i)
    for (size_t j = 0; j < i; ++j) m = std::min(m, n[i][j]);
  return m == SIZE_MAX ? 0 : m;
}

size_t Correlations::maxN() const {
  size_t m = 0;
  for (size_t i = 1; i < n.size(); ++i)
    for (size_t j = 0; j < i; ++j) m = std::max(m, n[i][j]);
  return m;
}

Correlations correlate(const std::filesystem::path& file, std::vector<std::string> variables, Missing missing) {
  if (variables.empty()) variables = numericColumns(file, {});
  if (variables.size() < 2) throw DataError("a correlation table needs two columns of numbers at least");
  CsvReader csv(file);
  const std::vector<size_t> columns = columnsOf(csv, variables);
  const size_t k = columns.size();
  Correlations c;
  c.variables = variables;
  c.missing = missing;
  c.moments.resize(k);
  std::vector<CoMoments> pairs(k * (k - 1) / 2);
  std::vector<double> v(k);
  while (csv.next()) {
    ++c.rows;
    bool complete = true;
    for (size_t i = 0; i < k; ++i) {
      v[i] = csv.number(columns[i]);
      complete = complete && !std::isnan(v[i]);
    }
    c.complete += complete;
    if (missing == Missing::Listwise && !complete) continue;
    CoMoments* pair = pairs.data();
    for (size_t i = 0; i < k; ++i) {
      const bool hasI = !std::isnan(v[i]);
      if (hasI) c.moments[i].add(v[i]);
      for (size_t j = 0; j < i; ++j, ++pair)
        if (hasI && !std::isnan(v[j])) pair->add(v[i], v[j]);
    }
  }
  if (c.rows == 0) throw DataError(file.string() + " has a header but no rows of data");
  for (size_t i = 0; i < k; ++i)
    if (c.moments[i].n > 1 && c.moments[i].m2 == 0)
      throw DataError("column \"" + variables[i] + "\" is constant: its correlations are undefined");
  const auto square = [k](auto fill) { return std::vector<std::vector<decltype(fill)>>(k, std::vector<decltype(fill)>(k, fill)); };
  c.r = square(kNaN);
  c.p = square(kNaN);
  c.lower = square(kNaN);
  c.upper = square(kNaN);
  c.n = square(size_t{0});
  const double z = criticalZ();
  const CoMoments* pair = pairs.data();
  for (size_t i = 0; i < k; ++i)
    for (size_t j = 0; j < i; ++j, ++pair) {
      const size_t n = pair->n;
      c.n[i][j] = n;
      if (n < 3) throw DataError("columns \"" + variables[i] + "\" and \"" + variables[j] + "\" have " +
                                 std::to_string(n) + " rows in common: a correlation needs three at least");
      if (pair->sxx == 0 || pair->syy == 0)
        throw DataError("columns \"" + variables[i] + "\" and \"" + variables[j] +
                        "\": one of them is constant on the rows they share, so their correlation is undefined");
      const double r = std::clamp(pair->sxy / std::sqrt(pair->sxx * pair->syy), -1.0, 1.0);
      c.r[i][j] = r;
      const double df = static_cast<double>(n) - 2;
      c.p[i][j] = std::fabs(r) == 1 ? 0 : twoSidedT(r * std::sqrt(df / (1 - r * r)), df);
      if (n > 3 && std::fabs(r) < 1) {
        const double se = 1 / std::sqrt(static_cast<double>(n) - 3);
        c.lower[i][j] = std::tanh(std::atanh(r) - z * se);
        c.upper[i][j] = std::tanh(std::atanh(r) + z * se);
      }
    }
  return c;
}

// --- regression -------------------------------------------------------------------

Regression regress(const std::filesystem::path& file, const std::string& dv,
                   const std::vector<std::vector<std::string>>& blocks) {
  std::vector<std::string> predictors;
  for (const auto& block : blocks) predictors.insert(predictors.end(), block.begin(), block.end());
  if (predictors.empty()) throw DataError("a regression needs one predictor at least (--iv)");
  if (std::find(predictors.begin(), predictors.end(), dv) != predictors.end())
    throw DataError("\"" + dv + "\" is the outcome and cannot be a predictor too");
  CsvReader csv(file);
  std::vector<std::string> all = predictors;
  all.push_back(dv);
  const std::vector<size_t> columns = columnsOf(csv, all);
  const Eigen::Index p = static_cast<Eigen::Index>(predictors.size()) + 1;  // with the intercept
  StreamingQR qr(p + 1);
  std::vector<Moments> moments(all.size());
  Eigen::RowVectorXd row(p + 1);
  Regression reg;
  reg.dv = dv;
  reg.blocks = blocks;
  while (csv.next()) {
    ++reg.rows;
    bool complete = true;
    for (size_t k = 0; k < columns.size(); ++k) {
      row(static_cast<Eigen::Index>(k) + 1) = csv.number(columns[k]);
      complete = complete && !std::isnan(row(static_cast<Eigen::Index>(k) + 1));
    }
    if (!complete) continue;
    row(0) = 1;
    qr.add(row);
    for (size_t k = 0; k < all.size(); ++k) moments[k].add(row(static_cast<Eigen::Index>(k) + 1));
    ++reg.n;
  }
  if (reg.rows == 0) throw DataError(file.string() + " has a header but no rows of data");
  if (reg.n <= static_cast<size_t>(p))
    throw DataError(std::to_string(reg.n) + " rows have the outcome and every predictor, too few for " +
                    std::to_string(p) + " coefficients and an error term");
  for (size_t k = 0; k < all.size(); ++k)
    if (moments[k].m2 == 0) throw DataError("column \"" + all[k] + "\" is constant on the rows used");
  const Eigen::MatrixXd& r = qr.r();
  for (Eigen::Index j = 1; j < p; ++j)
    if (std::fabs(r(j, j)) <= 1e-9 * r.col(j).head(j + 1).norm()) {
      std::vector<std::string> before(predictors.begin(), predictors.begin() + (j - 1));
      throw DataError("\"" + predictors[static_cast<size_t>(j - 1)] +
                      "\" is a linear combination of " + (before.empty() ? "the intercept" : "the intercept and " + joined(before)) +
                      " (perfectly collinear predictors): leave it out");
    }
  const Eigen::VectorXd z = r.col(p).head(p);  // Q'y
  const double rssFull = r(p, p) * r(p, p);
  // The residual sum of squares of the model with the first m columns.
  const auto rss = [&](Eigen::Index m) { return rssFull + z.tail(p - m).squaredNorm(); };
  const double tss = rss(1);
  const double n = static_cast<double>(reg.n);
  Eigen::Index m = 1;
  double previousRss = tss;
  Eigen::Index previousM = 1;
  double previousR2 = 0;
  for (const auto& block : blocks) {
    m += static_cast<Eigen::Index>(block.size());
    Model model;
    const double residual = rss(m);
    const double dfResidual = n - static_cast<double>(m);
    const auto R = r.topLeftCorner(m, m).triangularView<Eigen::Upper>();
    const Eigen::VectorXd b = R.solve(z.head(m));
    const Eigen::MatrixXd rInverse = R.solve(Eigen::MatrixXd::Identity(m, m));
    const double sigma2 = residual / dfResidual;
    const double tCritical = criticalT(dfResidual);
    for (Eigen::Index j = 0; j < m; ++j) {
      Coefficient c;
      c.name = j == 0 ? "(Intercept)" : predictors[static_cast<size_t>(j - 1)];
      c.b = b(j);
      c.se = std::sqrt(sigma2 * rInverse.row(j).squaredNorm());
      c.t = c.b / c.se;
      c.p = twoSidedT(c.t, dfResidual);
      c.lower = c.b - tCritical * c.se;
      c.upper = c.b + tCritical * c.se;
      if (j > 0) c.beta = c.b * moments[static_cast<size_t>(j - 1)].sd() / moments.back().sd();
      model.coefficients.push_back(c);
    }
    model.dfModel = static_cast<int>(m - 1);
    model.dfResidual = static_cast<int>(dfResidual);
    model.r2 = 1 - residual / tss;
    model.adjustedR2 = 1 - (1 - model.r2) * (n - 1) / dfResidual;
    model.F = ((tss - residual) / static_cast<double>(m - 1)) / sigma2;
    model.pF = upperF(model.F, static_cast<double>(m - 1), dfResidual);
    model.dfDelta = static_cast<int>(m - previousM);
    model.deltaR2 = model.r2 - previousR2;
    model.deltaF = ((previousRss - residual) / static_cast<double>(m - previousM)) / sigma2;
    model.pDelta = upperF(model.deltaF, static_cast<double>(m - previousM), dfResidual);
    reg.models.push_back(std::move(model));
    previousRss = residual;
    previousM = m;
    previousR2 = reg.models.back().r2;
  }
  return reg;
}

// --- factorial ANOVA --------------------------------------------------------------

namespace {

// Effect coding of level `l` of a factor with `levels` levels: one column
// per level but the last, which is coded -1 throughout.
Eigen::RowVectorXd effectCode(size_t l, size_t levels) {
  Eigen::RowVectorXd code = Eigen::RowVectorXd::Zero(static_cast<Eigen::Index>(levels - 1));
  if (l + 1 < levels)
    code(static_cast<Eigen::Index>(l)) = 1;
  else
    code.setConstant(-1);
  return code;
}

Eigen::RowVectorXd kronecker(const Eigen::RowVectorXd& a, const Eigen::RowVectorXd& b) {
  Eigen::RowVectorXd out(a.size() * b.size());
  for (Eigen::Index i = 0; i < a.size(); ++i) out.segment(i * b.size(), b.size()) = a(i) * b;
  return out;
}

// The weighted residual sum of squares of the cell means on the columns kept.
double residualOf(const Eigen::MatrixXd& x, const Eigen::VectorXd& y, const std::vector<Eigen::Index>& kept) {
  Eigen::MatrixXd sub(x.rows(), static_cast<Eigen::Index>(kept.size()));
  for (size_t k = 0; k < kept.size(); ++k) sub.col(static_cast<Eigen::Index>(k)) = x.col(kept[k]);
  const Eigen::VectorXd b = sub.colPivHouseholderQr().solve(y);
  return (y - sub * b).squaredNorm();
}

}  // namespace

Anova anova(const std::filesystem::path& file, const std::string& dv, const std::vector<std::string>& between) {
  if (between.empty()) throw DataError("an ANOVA needs one between-subjects factor at least (--between)");
  if (between.size() > 4) throw DataError("an ANOVA here takes four factors at most");
  if (std::find(between.begin(), between.end(), dv) != between.end())
    throw DataError("\"" + dv + "\" is the outcome and cannot be a factor too");
  CsvReader csv(file);
  const size_t outcome = csv.column(dv);
  const std::vector<size_t> factorColumns = columnsOf(csv, between);
  Anova a;
  a.dv = dv;
  a.factors = between;
  std::map<std::vector<std::string>, Moments> cells;
  std::vector<std::set<std::string>> seen(between.size());
  std::vector<std::string> key(between.size());
  while (csv.next()) {
    ++a.rows;
    const double y = csv.number(outcome);
    bool complete = !std::isnan(y);
    for (size_t f = 0; f < between.size(); ++f) {
      complete = complete && !csv.missing(factorColumns[f]);
      key[f] = csv.text(factorColumns[f]);
    }
    if (!complete) continue;
    cells[key].add(y);
    for (size_t f = 0; f < between.size(); ++f) seen[f].insert(key[f]);
    ++a.n;
  }
  if (a.rows == 0) throw DataError(file.string() + " has a header but no rows of data");
  size_t cellCount = 1;
  for (size_t f = 0; f < between.size(); ++f) {
    a.levels.emplace_back(seen[f].begin(), seen[f].end());
    sortLevels(a.levels.back());
    if (a.levels.back().size() < 2)
      throw DataError("factor \"" + between[f] + "\" has " +
                      (a.levels.back().empty() ? std::string("no values") : "one value (" + a.levels.back().front() + ")") +
                      ": a factor needs two groups at least");
    cellCount *= a.levels.back().size();
  }
  if (cellCount > 10000) throw DataError("the factors make " + std::to_string(cellCount) + " groups: too many");
  // Every combination of levels, the first factor's changing slowest.
  std::vector<std::vector<size_t>> combos(1);
  for (const auto& levels : a.levels) {
    std::vector<std::vector<size_t>> next;
    for (const auto& c : combos)
      for (size_t l = 0; l < levels.size(); ++l) {
        next.push_back(c);
        next.back().push_back(l);
      }
    combos = std::move(next);
  }
  // The terms: every non-empty set of factors, smaller sets first.
  for (size_t size = 1; size <= between.size(); ++size)
    for (unsigned mask = 1; mask < (1u << between.size()); ++mask) {
      if (static_cast<size_t>(__builtin_popcount(mask)) != size) continue;
      AnovaTerm t;
      t.df = 1;
      for (size_t f = 0; f < between.size(); ++f)
        if (mask & (1u << f)) {
          t.factors.push_back(f);
          t.name += (t.name.empty() ? "" : " \u00d7 ") + between[f];
          t.df *= static_cast<int>(a.levels[f].size() - 1);
        }
      a.terms.push_back(t);
    }
  // The cell-means design, each cell weighted by its count.
  const Eigen::Index rows = static_cast<Eigen::Index>(combos.size());
  Eigen::Index width = 1;
  for (const AnovaTerm& t : a.terms) width += t.df;
  Eigen::MatrixXd x(rows, width);
  Eigen::VectorXd y(rows);
  std::vector<std::vector<Eigen::Index>> termColumns(a.terms.size());
  size_t firstCount = 0;
  for (Eigen::Index c = 0; c < rows; ++c) {
    const auto& combo = combos[static_cast<size_t>(c)];
    std::vector<std::string> names;
    for (size_t f = 0; f < combo.size(); ++f) names.push_back(a.levels[f][combo[f]]);
    const auto cell = cells.find(names);
    if (cell == cells.end()) {
      std::string which;
      for (size_t f = 0; f < names.size(); ++f) which += (f ? ", " : "") + between[f] + " = " + names[f];
      throw DataError("the group " + which + " has no rows: every combination of the factors needs some");
    }
    const Moments& m = cell->second;
    if (c == 0) firstCount = m.n;
    a.balanced = a.balanced && m.n == firstCount;
    a.ssError += m.m2;
    const double w = std::sqrt(static_cast<double>(m.n));
    x(c, 0) = w;
    Eigen::Index at = 1;
    for (size_t t = 0; t < a.terms.size(); ++t) {
      Eigen::RowVectorXd code = Eigen::RowVectorXd::Ones(1);
      for (size_t f : a.terms[t].factors) code = kronecker(code, effectCode(combo[f], a.levels[f].size()));
      x.row(c).segment(at, code.size()) = w * code;
      if (c == 0)
        for (Eigen::Index k = 0; k < code.size(); ++k) termColumns[t].push_back(at + k);
      at += code.size();
    }
    y(c) = w * m.mean;
  }
  a.dfError = static_cast<int>(a.n - combos.size());
  if (a.dfError < 1) throw DataError("every group has a single value: no degrees of freedom are left for error");
  a.mse = a.ssError / a.dfError;
  if (a.mse == 0) throw DataError("\"" + dv + "\" does not vary within the groups: the F ratios are undefined");
  std::vector<Eigen::Index> all(static_cast<size_t>(width));
  for (Eigen::Index k = 0; k < width; ++k) all[static_cast<size_t>(k)] = k;
  const double full = residualOf(x, y, all);
  for (size_t t = 0; t < a.terms.size(); ++t) {
    std::vector<Eigen::Index> kept;
    for (Eigen::Index k : all)
      if (std::find(termColumns[t].begin(), termColumns[t].end(), k) == termColumns[t].end()) kept.push_back(k);
    AnovaTerm& term = a.terms[t];
    term.ss = residualOf(x, y, kept) - full;
    term.F = (term.ss / term.df) / a.mse;
    term.p = upperF(term.F, term.df, a.dfError);
    term.partialEta2 = term.ss / (term.ss + a.ssError);
  }
  return a;
}

// --- two-group comparison ----------------------------------------------------------

TTests ttests(const std::filesystem::path& file, const std::vector<std::string>& dvs, const std::string& by) {
  if (dvs.empty()) throw DataError("a t test needs an outcome (--dv)");
  if (std::find(dvs.begin(), dvs.end(), by) != dvs.end())
    throw DataError("\"" + by + "\" is the grouping column and cannot be an outcome too");
  CsvReader csv(file);
  const std::vector<size_t> columns = columnsOf(csv, dvs);
  const size_t group = csv.column(by);
  std::map<std::string, std::vector<Moments>> groups;
  TTests out;
  out.by = by;
  std::vector<double> v(columns.size());
  while (csv.next()) {
    ++out.rows;
    for (size_t k = 0; k < columns.size(); ++k) v[k] = csv.number(columns[k]);
    if (csv.missing(group)) continue;
    std::vector<Moments>& g = groups[std::string(csv.text(group))];
    g.resize(columns.size());
    for (size_t k = 0; k < columns.size(); ++k)
      if (!std::isnan(v[k])) g[k].add(v[k]);
  }
  if (out.rows == 0) throw DataError(file.string() + " has a header but no rows of data");
  std::vector<std::string> levels;
  for (const auto& [name, _] : groups) levels.push_back(name);
  sortLevels(levels);
  if (levels.size() != 2)
    throw DataError("a t test compares two groups; \"" + by + "\" has " + std::to_string(levels.size()) +
                    (levels.empty() ? "" : ": " + joined(levels)));
  out.levels[0] = levels[0];
  out.levels[1] = levels[1];
  for (size_t k = 0; k < columns.size(); ++k) {
    TTest t;
    t.dv = dvs[k];
    t.groups[0] = groups[levels[0]][k];
    t.groups[1] = groups[levels[1]][k];
    const Moments& a = t.groups[0];
    const Moments& b = t.groups[1];
    for (int g = 0; g < 2; ++g)
      if (t.groups[g].n < 2)
        throw DataError("\"" + t.dv + "\" has " + std::to_string(t.groups[g].n) + " value" +
                        (t.groups[g].n == 1 ? "" : "s") + " in group " + by + " = " + levels[static_cast<size_t>(g)] +
                        ": a t test needs two in each group");
    if (a.m2 == 0 && b.m2 == 0)
      throw DataError("\"" + t.dv + "\" is constant within both groups: the t test is undefined");
    const double na = static_cast<double>(a.n), nb = static_cast<double>(b.n);
    const double difference = a.mean - b.mean;
    const double pooled = (a.m2 + b.m2) / (na + nb - 2);
    t.studentDf = static_cast<int>(a.n + b.n - 2);
    t.studentT = difference / std::sqrt(pooled * (1 / na + 1 / nb));
    t.studentP = twoSidedT(t.studentT, t.studentDf);
    const double va = a.variance() / na, vb = b.variance() / nb;
    t.welchT = difference / std::sqrt(va + vb);
    t.welchDf = (va + vb) * (va + vb) / (va * va / (na - 1) + vb * vb / (nb - 1));
    t.welchP = twoSidedT(t.welchT, t.welchDf);
    t.cohensD = difference / std::sqrt(pooled);
    out.tests.push_back(t);
  }
  return out;
}

}  // namespace quillstats
