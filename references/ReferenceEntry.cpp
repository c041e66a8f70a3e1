#include "references/ReferenceEntry.h"

#include <vector>

namespace QuillFormatAPA::references {

void resetTemplate(const host::OutputTemplateRef& output, int16_t lastIndex, std::string_view list) {
  std::vector<Variant> positional{Variant(lastIndex)};
  if (!list.empty()) positional.push_back(Variant::borrow(list));
  output.Reset(positional, {});
}

void addRow(const host::OutputTemplateRef& output, const TemplateRow& row) {
  output.Add(row.item, row.formatted, std::span<const std::string_view>(row.strings.begin(), row.strings.size()));
}

}  // namespace QuillFormatAPA::references
