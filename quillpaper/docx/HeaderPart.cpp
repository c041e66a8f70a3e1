// word/headerN.xml: the running head flush left and the page number flush right.
#include <cctype>

#include "quillpaper/docx/Parts.h"
#include "quillpaper/docx/Runs.h"
#include "quillpaper/docx/Xml.h"

namespace quillpaper::docx {

namespace {

constexpr std::string_view kLabel = "Running head: ";

// A page-header record: the code's digits, then the running head, perhaps
// with its label. Code 3 means the head is still the placeholder.
struct HeaderRecord {
  std::string code;
  bool labelled = false;
  std::string head;
};

HeaderRecord parse(const std::string& record) {
  size_t digits = record.starts_with("-") ? 1 : 0;
  while (digits < record.size() && std::isdigit(static_cast<unsigned char>(record[digits]))) ++digits;
  HeaderRecord r{record.substr(0, digits), false, record.substr(digits)};
  if (r.head.starts_with(kLabel)) {
    r.labelled = true;
    r.head.erase(0, kLabel.size());
  }
  return r;
}

}  // namespace

std::string runningHeadOf(const std::string& pageHeaderRecord) {
  const HeaderRecord r = parse(pageHeaderRecord);
  return r.code == "3" ? "" : r.head;
}

std::string headerXml(const std::string& pageHeaderRecord, const PageGeometry&) {
  const HeaderRecord r = parse(pageHeaderRecord);
  XmlDocument doc;
  pugi::xml_node hdr = doc.wordRoot("w:hdr");
  pugi::xml_node p = child(hdr, "w:p");
  valued(child(p, "w:pPr"), "w:pStyle", "Header");
  RunWriter runs(p);
  if (r.labelled) runs.text(kLabel);
  // The head is the document's property, shown by every header: changed in
  // one place (the document's properties), it changes on every page.
  if (r.code == "3")
    runs.placeholder(r.head);
  else if (!r.head.empty())
    runs.field(std::string("DOCPROPERTY ") + kRunningHeadProperty + " \\* MERGEFORMAT", r.head);
  runs.tab();
  runs.field("PAGE", "1");
  return doc.str();
}

}  // namespace quillpaper::docx
