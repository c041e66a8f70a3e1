#pragma once

#include "tables/StatisticsTable.h"

namespace QuillFormatAPA {

class TableNoncanonical final : public tables::StatisticsTable<TableNoncanonical> {
 public:
  static const tables::TableLayout& layout();
};

}  // namespace QuillFormatAPA
