#pragma once

#include "tables/StatisticsTable.h"

namespace QuillFormatAPA {

class TableLisrel final : public tables::StatisticsTable<TableLisrel> {
 public:
  static const tables::TableLayout& layout();
};

}  // namespace QuillFormatAPA
