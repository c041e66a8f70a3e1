#pragma once

#include "tables/StatisticsTable.h"

namespace QuillFormatAPA {

class TableModelComparison final : public tables::StatisticsTable<TableModelComparison> {
 public:
  static const tables::TableLayout& layout();
};

}  // namespace QuillFormatAPA
