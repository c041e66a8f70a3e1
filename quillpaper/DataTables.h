#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "quillpaper/CommandLine.h"
#include "quillpaper/Document.h"
#include "stats/Analyses.h"

namespace quillpaper {

// A table computed from the user's data file rather than the manual's example.
struct DataTableRequest {
  std::string kind;  // descriptives, correlation, regression, anova or ttest
  std::filesystem::path data;
  std::vector<std::string> columns;  // descriptives and correlation; all columns of numbers when empty
  std::string by;                    // descriptives (optional) and ttest: the grouping column
  quillstats::Missing missing = quillstats::Missing::Pairwise;
  bool intervals = false;                        // correlation: 95% confidence intervals
  std::vector<std::string> outcomes;             // regression and anova: one; ttest: one or more
  std::vector<std::vector<std::string>> blocks;  // regression: --iv, then each --block
  std::vector<std::string> between;              // anova's factors
};

// The kinds of table computed from data, for usage messages.
extern const char* const kDataTableKinds;

// True for a kind computed from data ("descriptives", "t-test", ...).
bool isDataTableKind(const std::string& kind);

// Reads --data and the options of the data tables; nullopt without --data.
// Options that do not fit the kind are UsageErrors.
std::optional<DataTableRequest> dataTableOptions(CommandLine& cl);

// The request for one kind of table: checks that the kind has what it needs
// (a regression its outcome and predictors, ...).
DataTableRequest forKind(DataTableRequest request, const std::string& kind);

// Refuses options that none of `kinds` takes (--between for a correlation table).
void checkOptionsApply(const DataTableRequest& request, const std::vector<std::string>& kinds);

// Computes the table and lays it out as the statistics tables are laid out,
// through the host's table object. A problem with the data is a
// quillstats::DataError that says where it is.
std::shared_ptr<doc::TableBlock> buildDataTable(const DataTableRequest& request, int number);

}  // namespace quillpaper
