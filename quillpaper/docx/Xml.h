#pragma once

#include <pugixml.hpp>

#include <cstdio>
#include <memory>
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

// A part's content as it is written: in memory while it is small, in an
// anonymous temporary file once it grows past `limit`, so that a long
// reference list never stands in memory as a whole. Throws
// std::runtime_error when the temporary file cannot be written.
class Spool : public pugi::xml_writer {
 public:
  explicit Spool(size_t limit = 4u << 20) : limit_(limit) {}
  Spool(Spool&&) noexcept = default;
  Spool& operator=(Spool&&) noexcept = default;
  void write(const void* data, size_t size) override;
  void append(std::string_view text) { write(text.data(), text.size()); }
  // Flushes what went to the temporary file.
  void finish();

  // The content, when it stayed in memory.
  const std::string& text() const { return text_; }
  // The temporary file holding it, flushed, or null when it stayed in memory.
  std::FILE* file() const { return file_.get(); }

 private:
  struct Close {
    void operator()(std::FILE* f) const { std::fclose(f); }
  };
  size_t limit_;
  std::string text_;
  std::unique_ptr<std::FILE, Close> file_;
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
