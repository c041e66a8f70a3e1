// word/headerN.xml: the running head flush left and the page number flush right.
#include <cctype>

#include "quillpaper/docx/Parts.h"
#include "quillpaper/docx/Runs.h"
#include "quillpaper/docx/Xml.h"

namespace quillpaper::docx {

namespace {
constexpr std::string_view kLabel = "Running head: ";
}

std::string headerXml(const std::string& pageHeaderRecord, const PageGeometry&) {
  // The record: the code's digits, then the running head. Code 3 means the
  // running head is still the placeholder, so it is shown as one.
  size_t digits = pageHeaderRecord.starts_with("-") ? 1 : 0;
  while (digits < pageHeaderRecord.size() && std::isdigit(static_cast<unsigned char>(pageHeaderRecord[digits]))) ++digits;
  const std::string code = pageHeaderRecord.substr(0, digits);
  std::string text = pageHeaderRecord.substr(digits);

  XmlDocument doc;
  pugi::xml_node hdr = doc.wordRoot("w:hdr");
  pugi::xml_node p = child(hdr, "w:p");
  valued(child(p, "w:pPr"), "w:pStyle", "Header");
  RunWriter runs(p);
  if (text.starts_with(kLabel)) {
    runs.text(kLabel);
    text.erase(0, kLabel.size());
  }
  if (code == "3")
    runs.placeholder(text);
  else
    runs.text(text);
  runs.tab();
  runs.field("PAGE", "1");
  return doc.str();
}

}  // namespace quillpaper::docx
