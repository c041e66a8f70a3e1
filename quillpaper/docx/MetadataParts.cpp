// The small parts around the document: settings, font table and the core
// and application properties.
#include "quillpaper/docx/Parts.h"
#include "quillpaper/docx/Xml.h"

namespace quillpaper::docx {

PageGeometry PageGeometry::from(const PaperFormat& format) {
  PageGeometry g;
  auto twips = [](double points) { return static_cast<long>(points * 20 + 0.5); };
  g.top = twips(format.marginTop);
  g.bottom = twips(format.marginBottom);
  g.left = twips(format.marginLeft);
  g.right = twips(format.marginRight);
  return g;
}

std::string settingsXml(bool updateFieldsOnOpen) {
  XmlDocument doc;
  pugi::xml_node settings = doc.wordRoot("w:settings");
  // In the schema's order: zoom, defaultTabStop, characterSpacingControl,
  // updateFields, compat.
  attr(child(settings, "w:zoom"), "w:percent", 100L);
  valued(settings, "w:defaultTabStop", "720");
  valued(settings, "w:characterSpacingControl", "doNotCompress");
  // Word refreshes the generated lists' page numbers when the paper opens.
  if (updateFieldsOnOpen) valued(settings, "w:updateFields", "true");
  pugi::xml_node compat = child(child(settings, "w:compat"), "w:compatSetting");
  attr(compat, "w:name", "compatibilityMode");
  attr(compat, "w:uri", "http://schemas.microsoft.com/office/word");
  attr(compat, "w:val", "15");
  return doc.str();
}

std::string fontTableXml() {
  XmlDocument doc;
  pugi::xml_node fonts = doc.wordRoot("w:fonts");
  pugi::xml_node font = child(fonts, "w:font");
  attr(font, "w:name", "Times New Roman");
  // Metric-compatible, so a page breaks where it would in Times New Roman.
  valued(font, "w:altName", "Liberation Serif");
  valued(font, "w:panose1", "02020603050405020304");
  valued(font, "w:charset", "00");
  valued(font, "w:family", "roman");
  valued(font, "w:pitch", "variable");
  return doc.str();
}

std::string corePropertiesXml(const std::string& title, const std::string& author) {
  XmlDocument doc;
  pugi::xml_node core =
      doc.root("cp:coreProperties", "http://schemas.openxmlformats.org/package/2006/metadata/core-properties");
  core.remove_attribute("xmlns");
  attr(core, "xmlns:cp", "http://schemas.openxmlformats.org/package/2006/metadata/core-properties");
  attr(core, "xmlns:dc", "http://purl.org/dc/elements/1.1/");
  if (!title.empty()) child(core, "dc:title").text() = xmlSafe(title).c_str();
  if (!author.empty()) child(core, "dc:creator").text() = xmlSafe(author).c_str();
  return doc.str();
}

std::string customPropertiesXml(const std::string& runningHead) {
  XmlDocument doc;
  pugi::xml_node props =
      doc.root("Properties", "http://schemas.openxmlformats.org/officeDocument/2006/custom-properties");
  attr(props, "xmlns:vt", "http://schemas.openxmlformats.org/officeDocument/2006/docPropsVTypes");
  pugi::xml_node p = child(props, "property");
  attr(p, "fmtid", "{D5CDD505-2E9C-101B-9397-08002B2CF9AE}");
  attr(p, "pid", 2L);
  attr(p, "name", kRunningHeadProperty);
  child(p, "vt:lpwstr").text() = xmlSafe(runningHead).c_str();
  return doc.str();
}

std::string appPropertiesXml() {
  XmlDocument doc;
  pugi::xml_node props =
      doc.root("Properties", "http://schemas.openxmlformats.org/officeDocument/2006/extended-properties");
  child(props, "Application").text() = "quillpaper";
  return doc.str();
}

}  // namespace quillpaper::docx
