#pragma once

#include "tables/StatisticsTable.h"

namespace QuillFormatAPA {

class TableAnova final : public tables::StatisticsTable<TableAnova> {
 public:
  static const tables::TableLayout& layout();
};

}  // namespace QuillFormatAPA
