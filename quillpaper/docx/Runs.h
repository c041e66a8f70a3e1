#pragma once

#include <optional>
#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace quillpaper::docx {

// Run-level formatting.
struct RunFormat {
  std::optional<bool> bold;  // unset: as the style says
  bool italic = false;
  bool upright = false;  // not italic even where the style is
  bool superscript = false;
  bool subscript = false;
};

// Appends runs to a paragraph (or any element that takes runs).
class RunWriter {
 public:
  explicit RunWriter(pugi::xml_node parent) : parent_(parent) {}

  void text(std::string_view text, const RunFormat& format = {});
  // A one-click placeholder: a content control showing `text` as its placeholder.
  void placeholder(std::string_view text, const RunFormat& format = {});
  // A field with its current result.
  void field(std::string_view code, std::string_view result, const RunFormat& format = {});
  // A field whose result spans paragraphs: begin, code and separator here,
  // the end in a later paragraph.
  void fieldBegin(std::string_view code);
  void fieldEnd();
  void tab();
  void lineBreak();
  void bookmarkStart(int id, std::string_view name);
  void bookmarkEnd(int id);
  // A comment anchored here.
  void comment(int id);

  pugi::xml_node parent() const { return parent_; }

 private:
  pugi::xml_node run(const RunFormat& format, const char* style = nullptr);
  pugi::xml_node parent_;
};

// Content controls need document-wide unique ids; this hands them out.
int nextControlId();
void resetControlIds();

}  // namespace quillpaper::docx
