#pragma once

#include <map>
#include <string>
#include <vector>

#include "quillpaper/Document.h"
#include "quillpaper/PaperFormat.h"
#include "quillpaper/docx/Layout.h"
#include "quillpaper/docx/Xml.h"

// One writer per part of the .docx, each returning the part's XML.
namespace quillpaper::docx {

// Sizes in twentieths of a point, as WordprocessingML counts them.
struct PageGeometry {
  long width = 12240;  // US Letter, 8.5 in
  long height = 15840;
  long top = 1440, bottom = 1440, left = 1440, right = 1440;
  long textWidth() const { return width - left - right; }
  static PageGeometry from(const PaperFormat& format);
};

std::string stylesXml(const PaperFormat& format, const PageGeometry& page);
std::string settingsXml(bool updateFieldsOnOpen);
std::string fontTableXml();
std::string corePropertiesXml(const std::string& title, const std::string& author);
// The running head as a custom document property that every header shows.
constexpr const char* kRunningHeadProperty = "RunningHead";
std::string customPropertiesXml(const std::string& runningHead);
// The running head a page-header record holds, without its label; empty
// while it is the placeholder.
std::string runningHeadOf(const std::string& pageHeaderRecord);
std::string appPropertiesXml();

// A header: the running head flush left, the page number flush right.
std::string headerXml(const std::string& pageHeaderRecord, const PageGeometry& page);

// The comments beside the text (editing hints, remarks), in order.
std::string commentsXml(const std::vector<std::string>& texts);
// The text of an editing hint.
std::string editingHintText(int id);

// The document body from the laid-out paper; `headerIds` gives each rendered
// section's header relationship id (empty: linked to the previous section).
// `comments` receives the comments' texts in order. A long
// body is spooled to a temporary file rather than held in memory.
Spool documentXml(const Layout& layout, const PaperFormat& format, const PageGeometry& page,
                  const std::vector<std::string>& headerIds, bool editingHints, std::vector<std::string>& comments);

}  // namespace quillpaper::docx
