#include "quillpaper/docx/Runs.h"

#include "quillpaper/docx/Xml.h"

namespace quillpaper::docx {

namespace {
thread_local int controlIds = 0;
}

int nextControlId() { return ++controlIds; }
void resetControlIds() { controlIds = 0; }

pugi::xml_node RunWriter::run(const RunFormat& format, const char* style) {
  pugi::xml_node r = child(parent_, "w:r");
  const bool any = style || format.bold || format.italic || format.upright || format.superscript || format.subscript;
  if (!any) return r;
  pugi::xml_node props = child(r, "w:rPr");
  if (style) valued(props, "w:rStyle", style);
  if (format.bold) {
    pugi::xml_node b = child(props, "w:b");
    if (!*format.bold) attr(b, "w:val", "0");
  }
  if (format.italic)
    child(props, "w:i");
  else if (format.upright)
    attr(child(props, "w:i"), "w:val", "0");
  if (format.superscript)
    valued(props, "w:vertAlign", "superscript");
  else if (format.subscript)
    valued(props, "w:vertAlign", "subscript");
  return r;
}

void RunWriter::text(std::string_view text, const RunFormat& format) {
  if (text.empty()) return;
  pugi::xml_node t = child(run(format), "w:t");
  attr(t, "xml:space", "preserve");
  t.text() = xmlSafe(text).c_str();
}

void RunWriter::placeholder(std::string_view text, const RunFormat& format) {
  pugi::xml_node sdt = child(parent_, "w:sdt");
  pugi::xml_node props = child(sdt, "w:sdtPr");
  valued(child(props, "w:rPr"), "w:rStyle", "PlaceholderText");
  valued(props, "w:id", std::to_string(nextControlId()));
  // Rich text (no type given) and temporary: the control goes away once the
  // user types into it, and what they type may run to many paragraphs.
  child(props, "w:temporary");
  child(props, "w:showingPlcHdr");
  RunWriter content(child(sdt, "w:sdtContent"));
  pugi::xml_node t = child(content.run(format, "PlaceholderText"), "w:t");
  attr(t, "xml:space", "preserve");
  t.text() = xmlSafe(text).c_str();
}

void RunWriter::field(std::string_view code, std::string_view result, const RunFormat& format) {
  attr(child(run(format), "w:fldChar"), "w:fldCharType", "begin");
  pugi::xml_node instr = child(run(format), "w:instrText");
  attr(instr, "xml:space", "preserve");
  instr.text() = (" " + xmlSafe(code) + " ").c_str();
  attr(child(run(format), "w:fldChar"), "w:fldCharType", "separate");
  text(result, format);
  attr(child(run(format), "w:fldChar"), "w:fldCharType", "end");
}

void RunWriter::fieldBegin(std::string_view code) {
  attr(child(run({}), "w:fldChar"), "w:fldCharType", "begin");
  pugi::xml_node instr = child(run({}), "w:instrText");
  attr(instr, "xml:space", "preserve");
  instr.text() = (" " + xmlSafe(code) + " ").c_str();
  attr(child(run({}), "w:fldChar"), "w:fldCharType", "separate");
}

void RunWriter::fieldEnd() { attr(child(run({}), "w:fldChar"), "w:fldCharType", "end"); }

void RunWriter::tab() { child(run({}), "w:tab"); }

void RunWriter::lineBreak() { child(run({}), "w:br"); }

void RunWriter::bookmarkStart(int id, std::string_view name) {
  pugi::xml_node b = child(parent_, "w:bookmarkStart");
  attr(b, "w:id", id);
  attr(b, "w:name", name);
}

void RunWriter::bookmarkEnd(int id) { attr(child(parent_, "w:bookmarkEnd"), "w:id", id); }

void RunWriter::comment(int id) {
  attr(child(parent_, "w:commentRangeStart"), "w:id", id);
  attr(child(parent_, "w:commentRangeEnd"), "w:id", id);
  attr(child(run({}, "CommentReference"), "w:commentReference"), "w:id", id);
}

}  // namespace quillpaper::docx
