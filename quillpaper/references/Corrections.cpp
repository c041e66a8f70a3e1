#include "quillpaper/references/Corrections.h"

#include <algorithm>
#include <cctype>

#include "quillpaper/references/ReferenceFormatter.h"
#include "quillpaper/references/ReferenceSource.h"
#include "strings/StringUtility.h"

namespace quillpaper::corrections {

namespace {

const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }

constexpr int kNonPeriodical = 0;
constexpr int kPeriodical = 1;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// "45-67" as "45–67": a hyphen between the numbers of a range.
std::string withEnDash(std::string pages) {
  std::string out;
  for (size_t i = 0; i < pages.size(); ++i) {
    const bool between = i > 0 && i + 1 < pages.size() && std::isalnum(static_cast<unsigned char>(pages[i - 1])) &&
                         std::isalnum(static_cast<unsigned char>(pages[i + 1]));
    if (pages[i] == '-' && between && std::any_of(pages.begin(), pages.end(), isDigit))
      out += "\u2013";
    else
      out += pages[i];
  }
  return out;
}

// Whether `inner` (a parenthesised group's text) is a book's publication
// detail: an edition, a volume, pages.
bool isPublicationDetail(std::string_view inner) {
  const std::string lower = str().lower(inner);
  return str().endsWith(lower, "ed.") || str().endsWith(lower, "edition") || str().beginsWith(inner, "Vol. ") ||
         str().beginsWith(inner, "Vols. ") || str().beginsWith(inner, "pp. ");
}

// A run whose text ends in a group of publication details gives the group
// (and the blank before it) to a roman run of its own.
void romanTrailingDetails(std::vector<TextRun>& runs) {
  for (size_t k = 0; k < runs.size(); ++k) {
    TextRun& run = runs[k];
    if (!run.italic || !str().endsWith(run.text, ")")) continue;
    const size_t open = str().lastIndexOf(run.text, " (");
    if (open == std::string::npos) continue;
    const std::string inner = run.text.substr(open + 2, run.text.size() - open - 3);
    if (!isPublicationDetail(inner)) continue;
    TextRun detail{run.text.substr(open), false};
    run.text.erase(open);
    runs.insert(runs.begin() + static_cast<long>(k) + 1, std::move(detail));
    ++k;
  }
}

// Whether the entry's last statement (before its address) is "Place:
// Publisher": a periodical's numbers never are; a volume of proceedings with
// its own publisher ends so ("16(6), 97–107. New York, NY: ACM Press.").
bool endsWithPublisher(std::string_view entry) {
  std::string text(entry);
  str().cutAtMarker(text, "Retrieved ", true);
  str().cutAtMarker(text, "doi:", true);
  str().trimTrailing(text, ". ", true);
  const size_t stop = str().lastIndexOf(text, ". ");
  if (stop == std::string::npos) return false;
  const std::string last = text.substr(stop + 2);
  const size_t colon = last.find(": ");
  return colon != std::string::npos && colon > 0 && std::none_of(last.begin(), last.end(), isDigit) &&
         !str().contains(last, "(") && std::any_of(text.begin(), text.begin() + static_cast<long>(stop), isDigit);
}

}  // namespace

int type(int libraryType, std::string_view entry, std::string_view decorated,
         const std::function<int(const std::string&)>& classify) {
  if (libraryType == kPeriodical)
    return endsWithPublisher(entry) ? kNonPeriodical : libraryType;
  if (libraryType != kNonPeriodical) return libraryType;
  const size_t at = decorated.find('@');
  if (at == std::string_view::npos) return libraryType;
  const std::string name(decorated.substr(at + 1));
  if (!str().contains(name, "Rev.") && !str().contains(name, "Trans.")) return libraryType;
  // The entry asked again with the name's full stops out of the way: the
  // classifier then judges what stands around the name.
  std::string masked(entry);
  const size_t nameAt = masked.find(name);
  if (nameAt == std::string::npos) return libraryType;
  std::string plainName = name;
  std::replace(plainName.begin(), plainName.end(), '.', ' ');
  masked.replace(nameAt, name.size(), plainName);
  return classify(masked) == kPeriodical ? kPeriodical : libraryType;
}

void fields(int type, ReferenceSource& source, FormatterSettings& settings) {
  if (type == kPeriodical && source.text("Periodical").empty()) {
    // The periodical step stops at a name opening with a digit; what it left
    // reads "3D Printing and Additive Manufacturing, 2".
    const std::string volume = source.text("volume");
    const size_t comma = str().lastIndexOf(volume, ", ");
    if (comma != std::string::npos && isDigit(volume[0])) {
      source.setProperty("Periodical", volume.substr(0, comma));
      source.setProperty("volume", volume.substr(comma + 2));
    }
  }
  const Variant enDash = settings.component(7).property("useEnDashForPageRange");
  if (!enDash.isEmpty() && enDash.toBool()) {
    for (const char* field : {"pageRange", "BookPageRange"}) {
      const std::string pages = source.text(field);
      if (str().contains(pages, "-")) source.setProperty(field, withEnDash(pages));
    }
  }
}

void items(int type, std::vector<std::vector<TextRun>>& formatted) {
  if (type == kPeriodical && formatted.size() > 2)
    for (TextRun& run : formatted[2]) run.italic = false;
  if (type == kNonPeriodical && !formatted.empty()) romanTrailingDetails(formatted[0]);
  // A description in brackets in the title's place ("[Review of the book …]")
  // is no title to set in italics.
  for (std::vector<TextRun>& item : formatted)
    for (TextRun& run : item)
      if (run.italic && str().beginsWith(run.text, "[") && str().endsWith(run.text, "]")) run.italic = false;
}

void runs(int type, std::vector<TextRun>& runs) {
  if (type != kNonPeriodical) return;
  for (size_t k = 1; k + 1 < runs.size(); ++k) {
    if (runs[k].italic || runs[k].text != ": " || !runs[k - 1].italic || !runs[k + 1].italic) continue;
    runs[k - 1].text += runs[k].text + runs[k + 1].text;
    runs.erase(runs.begin() + static_cast<long>(k), runs.begin() + static_cast<long>(k) + 2);
    --k;
  }
}

}  // namespace quillpaper::corrections
