#pragma once

#include "tables/StatisticsTable.h"

namespace QuillFormatAPA {

class TableWord final : public tables::StatisticsTable<TableWord> {
 public:
  static const tables::TableLayout& layout();
};

}  // namespace QuillFormatAPA
