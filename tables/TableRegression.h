#pragma once

#include "tables/StatisticsTable.h"

namespace QuillFormatAPA {

class TableRegression final : public tables::StatisticsTable<TableRegression> {
 public:
  static const tables::TableLayout& layout();
  // Rules the cell under the spanners again: the rule goes missing on that
  // cell once the spanner rows above are in place.
  void WorkaroundUnderlineLoss(const ObjectRef& table);
};

}  // namespace QuillFormatAPA
