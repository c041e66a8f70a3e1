#pragma once

#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace quillpaper::docx {

// The namespaces of WordprocessingML parts.
inline constexpr const char* kWordNs = "http://schemas.openxmlformats.org/wordprocessingml/2006/main";
inline constexpr const char* kRelNs = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";

// An XML part under construction, serialised compactly with the standalone declaration.
class XmlDocument {
 public:
  // Creates the root element with its default namespace.
  pugi::xml_node root(const char* name, const char* ns);
  // A WordprocessingML root ("w:document", "w:styles", ...) with the w and r prefixes.
  pugi::xml_node wordRoot(const char* name);
  std::string str() const;

 private:
  pugi::xml_document doc_;
};

// A pugixml writer appending to a string.
class StringWriter : public pugi::xml_writer {
 public:
  explicit StringWriter(std::string& out) : out_(out) {}
  void write(const void* data, size_t size) override { out_.append(static_cast<const char*>(data), size); }

 private:
  std::string& out_;
};

// Text that XML 1.0 can carry: control characters dropped, malformed UTF-8
// replaced by U+FFFD.
std::string xmlSafe(std::string_view text);
// Appends <name w:val="value"/>.
pugi::xml_node valued(pugi::xml_node parent, const char* name, std::string_view value);
// Appends a child named `name` and returns it.
inline pugi::xml_node child(pugi::xml_node parent, const char* name) { return parent.append_child(name); }
// The same attribute, set from a number.
void attr(pugi::xml_node node, const char* name, long value);
void attr(pugi::xml_node node, const char* name, std::string_view value);

}  // namespace quillpaper::docx
