// word/headerN.xml: the running head flush left and the page number flush right.
#include "quillpaper/docx/Parts.h"
#include "quillpaper/docx/Runs.h"
#include "quillpaper/docx/Xml.h"

namespace quillpaper::docx {

std::string runningHeadOf(const std::string& pageHeaderRecord) {
  const doc::PageHeaderRecord r = doc::PageHeaderRecord::parse(pageHeaderRecord);
  return r.placeholder() ? "" : r.head;
}

std::string headerXml(const std::string& pageHeaderRecord, const PageGeometry&) {
  const doc::PageHeaderRecord r = doc::PageHeaderRecord::parse(pageHeaderRecord);
  XmlDocument doc;
  pugi::xml_node hdr = doc.wordRoot("w:hdr");
  pugi::xml_node p = child(hdr, "w:p");
  valued(child(p, "w:pPr"), "w:pStyle", "Header");
  RunWriter runs(p);
  if (r.labelled) runs.text(doc::kRunningHeadLabel);
  // The head is the document's property, shown by every header: changed in
  // one place (the document's properties), it changes on every page.
  if (r.placeholder())
    runs.placeholder(r.head);
  else if (!r.head.empty())
    runs.field(std::string("DOCPROPERTY ") + kRunningHeadProperty + " \\* MERGEFORMAT", r.head);
  runs.tab();
  runs.field("PAGE", "1");
  return doc.str();
}

}  // namespace quillpaper::docx
