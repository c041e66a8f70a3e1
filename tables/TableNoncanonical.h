#pragma once

#include "tables/StatisticsTable.h"

namespace QuillFormatAPA {

class TableNoncanonical final : public tables::StatisticsTable<TableNoncanonical> {
 public:
  static const tables::TableSpec& spec();
};

}  // namespace QuillFormatAPA
