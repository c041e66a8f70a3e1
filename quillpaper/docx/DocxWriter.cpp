#include "quillpaper/docx/DocxWriter.h"

#include "quillpaper/OutputFile.h"

#include "quillpaper/docx/Package.h"
#include "quillpaper/docx/Parts.h"
#include "quillpaper/docx/Runs.h"

namespace quillpaper::docx {

namespace {

constexpr const char* kRelBase = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/";
constexpr const char* kWordml = "application/vnd.openxmlformats-officedocument.wordprocessingml.";

std::string wordml(const char* part) { return std::string(kWordml) + part; }
std::string relType(const char* type) { return std::string(kRelBase) + type; }

}  // namespace

std::string paperBytes(const Layout& layout, const PaperOptions& options) {
  resetControlIds();
  const PageGeometry geometry = PageGeometry::from(options.format);
  Package package;
  const std::string documentPath = "word/document.xml";

  // A section linked to the previous one shows the previous header.
  std::vector<std::string> headerIds;
  std::vector<std::pair<std::string, std::string>> headers;  // path, xml
  for (size_t i = 0; i < layout.sections.size(); ++i) {
    const doc::Section& s = *layout.sections[i].section;
    // A section without a page header (a lone table) has no header at all.
    if ((i > 0 && s.sameAsPreviousSection.value_or(false)) || s.pageHeader.empty()) {
      headerIds.emplace_back();
      continue;
    }
    const std::string n = std::to_string(headers.size() + 1);
    headerIds.push_back("rIdHeader" + n);
    headers.emplace_back("word/header" + n + ".xml", headerXml(s.pageHeader, geometry));
  }

  std::vector<std::string> comments;
  Spool body = documentXml(layout, options.format, geometry, headerIds, options.editingHints, comments);
  bool hasLists = false;
  for (const auto& s : layout.sections)
    for (const auto& p : s.pages)
      for (const doc::Block& b : p.page->blocks) hasLists |= std::holds_alternative<doc::GeneratedList>(b);

  package.addPart(documentPath, wordml("document.main+xml"), std::move(body));
  package.addPart("word/styles.xml", wordml("styles+xml"), stylesXml(options.format, geometry));
  package.addPart("word/settings.xml", wordml("settings+xml"), settingsXml(hasLists));
  package.addPart("word/fontTable.xml", wordml("fontTable+xml"), fontTableXml());
  package.relate(documentPath, {"rIdStyles", relType("styles"), "styles.xml"});
  package.relate(documentPath, {"rIdSettings", relType("settings"), "settings.xml"});
  package.relate(documentPath, {"rIdFonts", relType("fontTable"), "fontTable.xml"});
  for (size_t i = 0; i < headers.size(); ++i) {
    package.addPart(headers[i].first, wordml("header+xml"), headers[i].second);
    package.relate(documentPath, {"rIdHeader" + std::to_string(i + 1), relType("header"),
                                  headers[i].first.substr(5)});
  }
  if (!comments.empty()) {
    package.addPart("word/comments.xml", wordml("comments+xml"), commentsXml(comments));
    package.relate(documentPath, {"rIdComments", relType("comments"), "comments.xml"});
  }
  package.addPart("docProps/core.xml", "application/vnd.openxmlformats-package.core-properties+xml",
                  corePropertiesXml(options.title, options.author));
  package.addPart("docProps/app.xml", "application/vnd.openxmlformats-officedocument.extended-properties+xml",
                  appPropertiesXml());
  package.relatePackage({"rId1", relType("officeDocument"), documentPath});
  package.relatePackage(
      {"rId2", "http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties",
       "docProps/core.xml"});
  package.relatePackage({"rId3", relType("extended-properties"), "docProps/app.xml"});
  std::string runningHead;
  for (const auto& s : layout.sections)
    if (runningHead.empty()) runningHead = runningHeadOf(s.section->pageHeader);
  if (!runningHead.empty()) {
    package.addPart("docProps/custom.xml", "application/vnd.openxmlformats-officedocument.custom-properties+xml",
                    customPropertiesXml(runningHead));
    package.relatePackage({"rId4", relType("custom-properties"), "docProps/custom.xml"});
  }
  return package.bytes();
}

void writePaper(const Layout& layout, const PaperOptions& options, const std::filesystem::path& path) {
  writeFileAtomically(path, paperBytes(layout, options));
}

}  // namespace quillpaper::docx
