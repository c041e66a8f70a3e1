#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "quillpaper/docx/Xml.h"

namespace quillpaper::docx {

// The Open Packaging layer of a .docx: parts with their content types, the
// package and part relationships, and the zip container. Output is
// deterministic: parts in the order added, fixed timestamps.
class Package {
 public:
  struct Relationship {
    std::string id;
    std::string type;    // the relationship type URI
    std::string target;  // relative to the source part's folder
  };

  // Adds a part; `path` without a leading slash ("word/document.xml").
  void addPart(std::string path, std::string contentType, std::string content);
  // Adds a part whose content was spooled (kept in memory or in a temporary file).
  void addPart(std::string path, std::string contentType, Spool content);
  // A relationship of the package itself (from "/_rels/.rels").
  void relatePackage(Relationship r) { packageRels_.push_back(std::move(r)); }
  // A relationship of the part at `sourcePath`.
  void relate(const std::string& sourcePath, Relationship r);

  // The complete .docx as bytes.
  std::string bytes() const;
  // Writes the package to `path` atomically: a failure leaves no file behind
  // and an existing file untouched. Throws std::runtime_error with the reason.
  void save(const std::filesystem::path& path) const;

 private:
  struct Part {
    std::string path;
    std::string contentType;
    std::string content;
    std::shared_ptr<Spool> spooled;  // instead of `content`
  };
  struct PartRels {
    std::string source;
    std::vector<Relationship> rels;
  };
  std::string contentTypesXml() const;
  static std::string relationshipsXml(const std::vector<Relationship>& rels);

  std::vector<Part> parts_;
  std::vector<Relationship> packageRels_;
  std::vector<PartRels> partRels_;
};


}  // namespace quillpaper::docx
