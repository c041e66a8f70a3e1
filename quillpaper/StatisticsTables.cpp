#include "quillpaper/StatisticsTables.h"

#include <cctype>
#include <stdexcept>

#include "host/Array.h"
#include "host/CallSite.h"
#include "quillpaper/WordTable.h"

namespace quillpaper {

using namespace QuillFormatAPA;

namespace {

// The form's markup as plain text: tags dropped, entities read, blanks collapsed.
std::string plain(std::string_view markup) {
  std::string out;
  for (size_t i = 0; i < markup.size(); ++i) {
    if (markup[i] == '<') {
      const size_t end = markup.find('>', i);
      if (end != std::string_view::npos) {
        i = end;
        continue;
      }
    }
    if (markup.substr(i).starts_with("&nbsp;")) {
      out += ' ';
      i += 5;
      continue;
    }
    if (markup[i] == '&' && markup.substr(i).starts_with("&amp;")) {
      out += '&';
      i += 4;
      continue;
    }
    if (markup[i] == '&') continue;  // an accelerator mark
    if (markup[i] == ' ' && !out.empty() && out.back() == ' ') continue;
    out += markup[i];
  }
  // A blank before punctuation came from an entity.
  for (size_t at; (at = out.find(" .")) != std::string::npos || (at = out.find(" ,")) != std::string::npos;)
    out.erase(at, 1);
  return out;
}

std::string squeeze(std::string_view s) {
  std::string out;
  for (char c : s)
    if (std::isalnum(static_cast<unsigned char>(c))) out += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

std::string withoutParenthesis(const std::string& name) { return name.substr(0, name.find(" (")); }

}  // namespace

std::vector<TableButton> tableButtons(Session& session) {
  Array names, tooltips;
  callByName(session.main2(), "TableFormMetaData", byRef(names), byRef(tooltips));
  const std::vector<std::string> captions = toStrings(names);
  const std::vector<std::string> tips = toStrings(tooltips);
  std::vector<TableButton> buttons;
  for (size_t i = 0; i < captions.size(); ++i) {
    TableButton b;
    b.index = static_cast<int>(i) + 1;
    b.caption = captions[i];
    b.tooltip = i < tips.size() ? tips[i] : "";
    b.name = plain(b.caption);
    b.help = plain(b.tooltip);
    const std::string shortName = withoutParenthesis(b.name);
    b.key.clear();
    for (char c : shortName) b.key += c == ' ' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    buttons.push_back(std::move(b));
  }
  return buttons;
}

int findTableButton(const std::vector<TableButton>& buttons, const std::string& kind) {
  const std::string wanted = squeeze(kind);
  if (wanted.empty()) return 0;
  for (const TableButton& b : buttons)
    if (wanted == std::to_string(b.index) || wanted == squeeze(b.key) || wanted == squeeze(b.name)) return b.index;
  // The first word alone ("hierarchical"), or a unique beginning of the name.
  int found = 0;
  for (const TableButton& b : buttons) {
    const std::string shortName = squeeze(withoutParenthesis(b.name));
    if (shortName.starts_with(wanted)) {
      if (found) return 0;
      found = b.index;
    }
  }
  return found;
}

std::shared_ptr<doc::TableBlock> buildStatisticsTable(Session& session, int index, int number) {
  // The metadata array the template owns: at least 14 entries.
  Array metadata = Array::vector(0, 13, VarType::String);
  const ObjectRef table = callByName(session.main2(), "TableTemplate", static_cast<int16_t>(index), byRef(metadata)).toObject();
  if (!table) throw std::runtime_error("the library made no table for button " + std::to_string(index));
  callByName(table, "initTableSpecificMetadata", byRef(metadata));
  double columns = 0, rows = 0;
  if (!parseNumber(metadata.get(1).toString(), columns) || !parseNumber(metadata.get(2).toString(), rows) ||
      columns < 1 || columns > 63 || rows < 1 || rows > 1000)
    throw std::runtime_error("the library's table metadata gives no usable size");
  auto target = make<WordTable>(static_cast<int>(rows), static_cast<int>(columns));
  for (int r = 1; r <= static_cast<int>(rows); ++r) {
    target->selectRow(r);
    callByName(table, "AddRow", static_cast<int16_t>(r), ObjectRef(target));
  }
  callByName(table, "AddTableNotes", ObjectRef(target));
  std::shared_ptr<doc::TableBlock> block = target->block();
  block->caption = metadata.get(0).toString();
  block->number = number;
  if (const std::string lead = metadata.get(10).toString(); !lead.empty()) block->noteLead = lead;
  return block;
}

}  // namespace quillpaper
