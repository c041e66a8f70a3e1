#include "quillpaper/DataTables.h"

#include <algorithm>

#include "quillpaper/WordTable.h"
#include "stats/ApaNumbers.h"

namespace quillpaper {

using namespace quillstats;

const char* const kDataTableKinds = "descriptives, correlation, regression, anova, ttest";

namespace {

// The kind's canonical name: "t-test" and "t test" are "ttest".
std::string canonical(const std::string& kind) {
  std::string out;
  for (char c : kind)
    if (c != '-' && c != ' ' && c != '_') out += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  if (out == "correlations") return "correlation";
  if (out == "descriptive") return "descriptives";
  return out;
}

std::vector<std::string> list(const std::string& text) {
  std::vector<std::string> out;
  size_t start = 0;
  for (;;) {
    const size_t comma = text.find(',', start);
    std::string item = text.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
    while (!item.empty() && item.front() == ' ') item.erase(0, 1);
    while (!item.empty() && item.back() == ' ') item.pop_back();
    if (!item.empty()) out.push_back(item);
    if (comma == std::string::npos) return out;
    start = comma + 1;
  }
}

// --- laying a table out through the host's table object ------------------------------

// One row as the statistics tables write theirs: cells from the first
// column (or after `skip` cells), spanners, and the rule under the row.
struct Row {
  std::vector<std::string> cells;
  int skip = 0;
  std::vector<std::pair<std::string, int>> spanners;  // text and columns, before the cells
  bool rule = false;
  bool closing = false;
  bool names = false;  // the stub and the spanners are the user's words, written as they stand
};

class Layout {
 public:
  Layout(std::string caption, int columns) : caption_(std::move(caption)), columns_(columns) {}

  Row& add(std::vector<std::string> cells = {}) {
    Row row;
    row.cells = std::move(cells);
    rows_.push_back(std::move(row));
    return rows_.back();
  }
  void spanAll(const std::string& text) {
    Row& row = add();
    row.spanners = {{text, columns_}};
    row.names = true;
  }
  // A body row: its stub is a name from the data.
  Row& named(std::vector<std::string> cells) {
    Row& row = add(std::move(cells));
    row.names = true;
    return row;
  }
  void generalNote(std::string text) { general_ = std::move(text); }
  void note(std::string text) { notes_.push_back(std::move(text)); }

  std::shared_ptr<doc::TableBlock> render(int number) {
    rows_.back().closing = true;
    auto table = make<WordTable>(static_cast<int>(rows_.size()), columns_);
    for (size_t r = 0; r < rows_.size(); ++r) {
      const Row& row = rows_[r];
      table->selectRow(static_cast<int>(r) + 1);
      if (row.skip > 0) table->MoveRight(static_cast<int16_t>(row.skip));
      for (const auto& [text, span] : row.spanners)
        table->AddSpanner(text, static_cast<int16_t>(span), true, columns_ != span);
      if (!row.cells.empty()) {
        std::vector<Variant> cells;
        for (const std::string& c : row.cells) cells.emplace_back(c.empty() ? std::string(" ") : c);
        table->TypeIntoSelectedCell(ParamArray{cells});
      }
      if (row.rule || row.closing) table->UnderLineRow(static_cast<int16_t>(columns_), row.closing, row.rule);
    }
    if (!general_.empty()) table->AddTableNote(general_, true);
    for (const std::string& n : notes_) table->AddTableNote(n, false);
    std::shared_ptr<doc::TableBlock> block = table->block();
    for (size_t r = 0; r < rows_.size(); ++r)
      if (rows_[r].names) {
        std::vector<doc::TableCell>& cells = block->rows[r].cells;
        cells[0].literal = !rows_[r].cells.empty();
        for (size_t c = static_cast<size_t>(rows_[r].skip), k = 0; k < rows_[r].spanners.size(); ++k) {
          cells[c].literal = true;
          c += static_cast<size_t>(rows_[r].spanners[k].second);
        }
      }
    block->caption = caption_;
    block->number = number;
    return block;
  }

 private:
  std::string caption_;
  int columns_;
  std::vector<Row> rows_;
  std::string general_;
  std::vector<std::string> notes_;
};

constexpr const char* kStarsNote = "*p < .05. **p < .01.";

std::string interval(double lower, double upper, bool isBounded) {
  return "[" + (isBounded ? bounded(lower) : fixed(lower)) + ", " + (isBounded ? bounded(upper) : fixed(upper)) + "]";
}

std::string pClause(double p) {
  const std::string v = pValue(p);
  return v.starts_with("<") ? "p " + v : "p = " + v;
}

std::string sampleSize(size_t n) { return "N = " + count(n) + "."; }

// --- the kinds -------------------------------------------------------------------------

std::shared_ptr<doc::TableBlock> descriptivesTable(const DataTableRequest& q, int number) {
  const Descriptives d = describe(q.data, q.columns, q.by);
  Layout t(q.by.empty() ? "Descriptive Statistics" : "Descriptive Statistics by " + q.by, 4);
  t.add({"Variable", "n", "M", "SD"}).rule = true;
  for (size_t g = 0; g < d.groups.size(); ++g) {
    if (!q.by.empty()) t.spanAll(q.by + ": " + d.groups[g]);
    for (size_t v = 0; v < d.variables.size(); ++v) {
      const Moments& m = d.cells[g][v];
      t.named({(q.by.empty() ? "" : "   ") + d.variables[v], count(m.n), m.n ? fixed(m.mean) : "--", fixed(m.sd())});
    }
  }
  std::string note = sampleSize(d.rows);
  for (size_t v = 0; v < d.variables.size(); ++v) {
    size_t used = 0;
    for (const auto& group : d.cells) used += group[v].n;
    if (used < d.rows) {
      note += " Missing values are left out variable by variable; n counts the values used.";
      break;
    }
  }
  t.generalNote(note);
  return t.render(number);
}

// A correlation matrix wider than this would not fit a page's width.
constexpr size_t kMostCorrelated = 20;

std::shared_ptr<doc::TableBlock> correlationTable(const DataTableRequest& q, int number) {
  const std::vector<std::string> columns = q.columns.empty() ? numericColumns(q.data, {}) : q.columns;
  if (columns.size() > kMostCorrelated)
    throw DataError("a correlation table of " + std::to_string(columns.size()) + " columns would not fit a page; " +
                    "name " + std::to_string(kMostCorrelated) + " at most with --columns=A,B,...");
  const Correlations c = correlate(q.data, columns, q.missing);
  const size_t k = c.variables.size();
  Layout t(std::string("Means, Standard Deviations, and Correlations") + (q.intervals ? " With Confidence Intervals" : ""),
           static_cast<int>(k) + 3);
  std::vector<std::string> head{"Variable", "M", "SD"};
  for (size_t i = 0; i < k; ++i) head.push_back(std::to_string(i + 1));
  t.add(head).rule = true;
  bool starred = false;
  for (size_t i = 0; i < k; ++i) {
    std::vector<std::string> cells{std::to_string(i + 1) + ". " + c.variables[i], fixed(c.moments[i].mean),
                                   fixed(c.moments[i].sd())};
    std::vector<std::string> intervals(3);
    for (size_t j = 0; j < i; ++j) {
      const std::string star = stars(c.p[i][j]);
      starred = starred || !star.empty();
      cells.push_back(bounded(c.r[i][j]) + star);
      intervals.push_back(std::isnan(c.lower[i][j]) ? "" : interval(c.lower[i][j], c.upper[i][j], true));
    }
    cells.push_back("--");
    t.named(cells);
    if (q.intervals && i > 0) t.add(intervals);
  }
  std::string note = "M and SD are the mean and standard deviation.";
  if (q.intervals) note += " Values in square brackets are the 95% confidence intervals of the correlations.";
  if (q.missing == Missing::Listwise)
    note += " N = " + count(c.complete) + " (listwise deletion of missing values).";
  else if (c.minN() == c.maxN())
    note += " N = " + count(c.minN()) + ".";
  else
    note += " Pairwise deletion of missing values: n = " + count(c.minN()) + " to " + count(c.maxN()) + ".";
  t.generalNote(note);
  if (starred) t.note(kStarsNote);
  return t.render(number);
}

std::shared_ptr<doc::TableBlock> regressionTable(const DataTableRequest& q, int number) {
  const Regression reg = regress(q.data, q.outcomes.front(), q.blocks);
  const bool steps = reg.models.size() > 1;
  Layout t(std::string(steps ? "Hierarchical Regression Analysis" : "Regression Analysis") + " Predicting " + reg.dv,
           steps ? 9 : 8);
  std::vector<std::string> head{"Variable", "B", "SE B", "beta", "t", "p", "95% CI", "R|2"};
  if (steps) head.push_back("delta_R|2");
  t.add(head).rule = true;
  bool starred = false;
  std::string fit;
  for (size_t m = 0; m < reg.models.size(); ++m) {
    const Model& model = reg.models[m];
    std::vector<std::string> label{"Model " + std::to_string(m + 1), "", "", "", "", "", "", bounded(model.r2)};
    if (steps) {
      const std::string star = stars(model.pDelta);
      starred = starred || !star.empty();
      label.push_back(bounded(model.deltaR2) + star);
    }
    t.add(label);
    for (const Coefficient& co : model.coefficients) {
      const bool intercept = co.name == "(Intercept)";
      t.named({"   " + (intercept ? std::string("Intercept") : co.name), fixed(co.b), fixed(co.se),
             intercept ? "" : bounded(co.beta), fixed(co.t), pValue(co.p), interval(co.lower, co.upper, false)});
    }
    fit += " Model " + std::to_string(m + 1) + ": R|2| = " + bounded(model.r2) + ", adjusted R|2| = " +
           bounded(model.adjustedR2) + ", F(" + std::to_string(model.dfModel) + ", " +
           std::to_string(model.dfResidual) + ") = " + fixed(model.F) + ", " + pClause(model.pF);
    if (m > 0)
      fit += "; delta_R|2| = " + bounded(model.deltaR2) + ", delta_F(" + std::to_string(model.dfDelta) + ", " +
             std::to_string(model.dfResidual) + ") = " + fixed(model.deltaF) + ", " + pClause(model.pDelta);
    fit += ".";
  }
  std::string note = sampleSize(reg.n) + " CI = confidence interval." + fit;
  if (reg.n < reg.rows) note += " Rows missing the outcome or a predictor are left out.";
  t.generalNote(note);
  if (starred) t.note(kStarsNote);
  return t.render(number);
}

std::shared_ptr<doc::TableBlock> anovaTable(const DataTableRequest& q, int number) {
  const Anova a = anova(q.data, q.outcomes.front(), q.between);
  Layout t("Analysis of Variance for " + a.dv, 5);
  t.add({"Source", "df", "F", "Partial \u03b7|2", "p"}).rule = true;
  bool starred = false;
  for (const AnovaTerm& term : a.terms) {
    const std::string star = stars(term.p);
    starred = starred || !star.empty();
    t.named({term.name, std::to_string(term.df), fixed(term.F) + star, bounded(term.partialEta2), pValue(term.p)});
  }
  t.add({"Error", count(static_cast<size_t>(a.dfError)), "(" + fixed(a.mse) + ")"});
  std::string note = sampleSize(a.n) + " Values enclosed in parentheses represent mean square errors.";
  note += a.balanced ? " Sums of squares are type III." : " The groups are of unequal size; sums of squares are type III.";
  if (a.n < a.rows) note += " Rows missing the outcome or a factor are left out.";
  t.generalNote(note);
  if (starred) t.note(kStarsNote);
  return t.render(number);
}

std::shared_ptr<doc::TableBlock> ttestTable(const DataTableRequest& q, int number) {
  const TTests tests = ttests(q.data, q.outcomes, q.by);
  Layout t("Means, Standard Deviations, and t Tests by " + tests.by, 9);
  Row& spanners = t.add();
  spanners.skip = 1;
  spanners.spanners = {{tests.by + " = " + tests.levels[0], 2}, {tests.by + " = " + tests.levels[1], 2}};
  spanners.names = true;
  t.add({"Variable", "M", "SD", "M", "SD", "t", "df", "p", "Cohen's d"}).rule = true;
  std::string student;
  for (const TTest& test : tests.tests) {
    t.named({test.dv, fixed(test.groups[0].mean), fixed(test.groups[0].sd()), fixed(test.groups[1].mean),
           fixed(test.groups[1].sd()), fixed(test.welchT), degrees(test.welchDf), pValue(test.welchP),
           fixed(test.cohensD)});
    student += (student.empty() ? " " : "; ") + test.dv + ", t(" + std::to_string(test.studentDf) + ") = " +
               fixed(test.studentT) + ", " + pClause(test.studentP) + " (n = " + count(test.groups[0].n) + " and " +
               count(test.groups[1].n) + ")";
  }
  t.generalNote("The t tests are Welch's, which do not assume equal variances; d is the difference of the means over "
                "the pooled standard deviation. With equal variances assumed (Student's t):" + student + ".");
  return t.render(number);
}

}  // namespace

bool isDataTableKind(const std::string& kind) {
  const std::string k = canonical(kind);
  return k == "descriptives" || k == "correlation" || k == "regression" || k == "anova" || k == "ttest";
}

std::optional<DataTableRequest> dataTableOptions(CommandLine& cl) {
  const std::optional<std::string> data = cl.option("data");
  DataTableRequest q;
  if (const auto columns = cl.option("columns")) q.columns = list(*columns);
  if (const auto by = cl.option("by")) q.by = *by;
  if (const auto missing = cl.option("missing")) {
    if (*missing == "listwise")
      q.missing = Missing::Listwise;
    else if (*missing != "pairwise")
      throw UsageError("--missing is pairwise or listwise, not '" + *missing + "'");
  }
  q.intervals = cl.flag("ci");
  if (const auto dv = cl.option("dv")) q.outcomes = list(*dv);
  if (const auto iv = cl.option("iv")) q.blocks.push_back(list(*iv));
  for (const std::string& block : cl.options("block")) q.blocks.push_back(list(block));
  if (const auto between = cl.option("between")) q.between = list(*between);
  const bool any = !q.columns.empty() || !q.by.empty() || q.intervals || !q.outcomes.empty() || !q.blocks.empty() ||
                   !q.between.empty();
  if (!data) {
    if (any) throw UsageError("--columns, --by, --missing, --ci, --dv, --iv, --block and --between need --data=FILE");
    return std::nullopt;
  }
  q.data = *data;
  return q;
}

void checkOptionsApply(const DataTableRequest& q, const std::vector<std::string>& kinds) {
  const auto takes = [&](std::initializer_list<const char*> which) {
    for (const std::string& kind : kinds)
      for (const char* w : which)
        if (canonical(kind) == w) return true;
    return false;
  };
  const auto refuse = [&](bool given, const char* option) {
    if (!given) return;
    std::string names;
    for (const std::string& kind : kinds) names += (names.empty() ? "" : " or ") + canonical(kind);
    throw UsageError(std::string(option) + " does not apply to a " + names + " table");
  };
  refuse(!q.columns.empty() && !takes({"descriptives", "correlation"}), "--columns");
  refuse(!q.by.empty() && !takes({"descriptives", "ttest"}), "--by");
  refuse(q.intervals && !takes({"correlation"}), "--ci");
  refuse(q.missing != Missing::Pairwise && !takes({"correlation"}), "--missing");
  refuse(!q.outcomes.empty() && !takes({"regression", "anova", "ttest"}), "--dv");
  refuse(!q.blocks.empty() && !takes({"regression"}), "--iv and --block");
  refuse(!q.between.empty() && !takes({"anova"}), "--between");
}

DataTableRequest forKind(DataTableRequest q, const std::string& kind) {
  q.kind = canonical(kind);
  if (!isDataTableKind(q.kind))
    throw UsageError("no table called '" + kind + "' is computed from data (those are: " + kDataTableKinds + ")");
  if (q.kind == "regression") {
    if (q.outcomes.size() != 1) throw UsageError("a regression takes one outcome: --dv=COLUMN");
    if (q.blocks.empty() || q.blocks.front().empty()) throw UsageError("a regression needs its predictors: --iv=X1,X2");
    for (const auto& block : q.blocks)
      if (block.empty()) throw UsageError("--block names no column");
  } else if (q.kind == "anova") {
    if (q.outcomes.size() != 1) throw UsageError("an ANOVA takes one outcome: --dv=COLUMN");
    if (q.between.empty()) throw UsageError("an ANOVA needs its factors: --between=A,B");
  } else if (q.kind == "ttest") {
    if (q.outcomes.empty()) throw UsageError("a t test needs its outcome: --dv=COLUMN");
    if (q.by.empty()) throw UsageError("a t test needs the column of its two groups: --by=COLUMN");
  }
  return q;
}

std::shared_ptr<doc::TableBlock> buildDataTable(const DataTableRequest& q, int number) {
  if (q.kind == "descriptives") return descriptivesTable(q, number);
  if (q.kind == "correlation") return correlationTable(q, number);
  if (q.kind == "regression") return regressionTable(q, number);
  if (q.kind == "anova") return anovaTable(q, number);
  return ttestTable(q, number);
}

}  // namespace quillpaper
