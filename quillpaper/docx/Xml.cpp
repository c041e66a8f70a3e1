#include "quillpaper/docx/Xml.h"

#include <cerrno>
#include <cstring>
#include <sstream>
#include <stdexcept>

namespace quillpaper::docx {

pugi::xml_node XmlDocument::root(const char* name, const char* ns) {
  pugi::xml_node decl = doc_.append_child(pugi::node_declaration);
  decl.append_attribute("version") = "1.0";
  decl.append_attribute("encoding") = "UTF-8";
  decl.append_attribute("standalone") = "yes";
  pugi::xml_node r = doc_.append_child(name);
  r.append_attribute("xmlns") = ns;
  return r;
}

pugi::xml_node XmlDocument::wordRoot(const char* name) {
  pugi::xml_node decl = doc_.append_child(pugi::node_declaration);
  decl.append_attribute("version") = "1.0";
  decl.append_attribute("encoding") = "UTF-8";
  decl.append_attribute("standalone") = "yes";
  pugi::xml_node r = doc_.append_child(name);
  r.append_attribute("xmlns:w") = kWordNs;
  r.append_attribute("xmlns:r") = kRelNs;
  return r;
}

void Spool::write(const void* data, size_t size) {
  if (!file_ && text_.size() + size > limit_) {
    file_.reset(std::tmpfile());
    if (!file_ || (!text_.empty() && std::fwrite(text_.data(), 1, text_.size(), file_.get()) != text_.size()))
      throw std::runtime_error(std::string("cannot write a temporary file: ") + std::strerror(errno));
    std::string().swap(text_);
  }
  if (!file_) {
    text_.append(static_cast<const char*>(data), size);
    return;
  }
  if (std::fwrite(data, 1, size, file_.get()) != size)
    throw std::runtime_error(std::string("cannot write a temporary file: ") + std::strerror(errno));
}

void Spool::finish() {
  if (file_ && std::fflush(file_.get()) != 0)
    throw std::runtime_error(std::string("cannot write a temporary file: ") + std::strerror(errno));
}

std::string XmlDocument::str() const {
  std::string out;
  StringWriter writer(out);
  doc_.save(writer, "", pugi::format_raw, pugi::encoding_utf8);
  return out;
}

pugi::xml_node valued(pugi::xml_node parent, const char* name, std::string_view value) {
  pugi::xml_node n = parent.append_child(name);
  n.append_attribute("w:val") = std::string(value).c_str();
  return n;
}

std::string xmlSafe(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    // Control characters other than tab, newline and return cannot appear in XML 1.0.
    if (c < 0x20 && c != '\t' && c != '\n' && c != '\r') {
      ++i;
      continue;
    }
    if (c < 0x80) {
      out += static_cast<char>(c);
      ++i;
      continue;
    }
    // Keep well-formed UTF-8; a stray byte becomes U+FFFD.
    size_t len = (c & 0xE0) == 0xC0 ? 2 : (c & 0xF0) == 0xE0 ? 3 : (c & 0xF8) == 0xF0 ? 4 : 0;
    bool ok = len > 0 && i + len <= text.size();
    for (size_t k = 1; ok && k < len; ++k) ok = (static_cast<unsigned char>(text[i + k]) & 0xC0) == 0x80;
    if (ok && len == 2 && c < 0xC2) ok = false;
    if (ok && len == 3) {
      const unsigned char c1 = static_cast<unsigned char>(text[i + 1]);
      if ((c == 0xE0 && c1 < 0xA0) || (c == 0xED && c1 >= 0xA0)) ok = false;  // overlong, surrogate
    }
    if (ok && len == 4) {
      const unsigned char c1 = static_cast<unsigned char>(text[i + 1]);
      if ((c == 0xF0 && c1 < 0x90) || c > 0xF4 || (c == 0xF4 && c1 >= 0x90)) ok = false;
    }
    if (ok) {
      out.append(text.substr(i, len));
      i += len;
    } else {
      out += "\xEF\xBF\xBD";
      ++i;
    }
  }
  return out;
}

void attr(pugi::xml_node node, const char* name, long value) { node.append_attribute(name) = value; }

void attr(pugi::xml_node node, const char* name, std::string_view value) {
  node.append_attribute(name) = std::string(value).c_str();
}

}  // namespace quillpaper::docx
