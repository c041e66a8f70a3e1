#pragma once

#include "tables/StatisticsTable.h"

namespace QuillFormatAPA {

class TableCorrelation final : public tables::StatisticsTable<TableCorrelation> {
 public:
  static const tables::TableLayout& layout();
};

}  // namespace QuillFormatAPA
