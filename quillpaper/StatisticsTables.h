#pragma once

#include <memory>
#include <string>
#include <vector>

#include "quillpaper/Document.h"
#include "quillpaper/Session.h"

namespace quillpaper {

// One button of the table form.
struct TableButton {
  int index = 0;        // 1 to 9
  std::string caption;  // as the library gives it: "&ANOVA (ANalysis Of VAriance)"
  std::string tooltip;  // with its markup: "<i>F</i>&nbsp; ratios"
  std::string name;     // for people: "ANOVA (ANalysis Of VAriance)"
  std::string key;      // for the command line: "anova"
  std::string help;     // the tooltip as plain text
};

// The nine buttons of the table form, from the library.
std::vector<TableButton> tableButtons(Session& session);

// The button a command-line KIND names: its index (1 to 9), its key, its name
// or a unique beginning of it, ignoring case, blanks and hyphens. 0 if none.
int findTableButton(const std::vector<TableButton>& buttons, const std::string& kind);

// The table of button `index`, filled by the library row by row, numbered `number`.
std::shared_ptr<doc::TableBlock> buildStatisticsTable(Session& session, int index, int number);

}  // namespace quillpaper
