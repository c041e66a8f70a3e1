#pragma once

#include "tables/StatisticsTable.h"

namespace QuillFormatAPA {

class TableLisrel final : public tables::StatisticsTable<TableLisrel> {
 public:
  static const tables::TableSpec& spec();
};

}  // namespace QuillFormatAPA
