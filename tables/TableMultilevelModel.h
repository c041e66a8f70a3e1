#pragma once

#include <string>

#include "tables/StatisticsTable.h"

namespace QuillFormatAPA {

class TableMultilevelModel final : public tables::StatisticsTable<TableMultilevelModel> {
 public:
  static const tables::TableLayout& layout();
  // "(sigma_squared" + subscript + ")": the variance marker the template renders as σ².
  std::string sigmaSquared(const std::string& subscript);
};

}  // namespace QuillFormatAPA
