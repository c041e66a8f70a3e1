#pragma once

#include "tables/StatisticsTable.h"

namespace QuillFormatAPA {

class TableHierarchRegression final : public tables::StatisticsTable<TableHierarchRegression> {
 public:
  static const tables::TableLayout& layout();
};

}  // namespace QuillFormatAPA
