#include "quillpaper/docx/Package.h"

#include <unistd.h>
#include <zip.h>

#include <cstdio>
#include <memory>
#include <stdexcept>

#include "quillpaper/OutputFile.h"
#include "quillpaper/docx/Xml.h"

namespace quillpaper::docx {

namespace {

// 1980-01-01 00:00, the earliest time a zip entry can carry, as the zip's own
// date and time fields hold it (a time_t would be read in the machine's time
// zone): the same input gives the same bytes in Tokyo and in New York.
constexpr zip_uint16_t kFixedDosTime = 0;                           // 00:00:00
constexpr zip_uint16_t kFixedDosDate = (0 << 9) | (1 << 5) | 1;  // 1980-01-01

std::string folderOf(const std::string& path) {
  const auto slash = path.rfind('/');
  return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

std::string fileOf(const std::string& path) {
  const auto slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

void Package::addPart(std::string path, std::string contentType, std::string content) {
  parts_.push_back({std::move(path), std::move(contentType), std::move(content), nullptr});
}

void Package::addPart(std::string path, std::string contentType, Spool content) {
  parts_.push_back({std::move(path), std::move(contentType), {}, std::make_shared<Spool>(std::move(content))});
}

void Package::relate(const std::string& sourcePath, Relationship r) {
  for (PartRels& p : partRels_)
    if (p.source == sourcePath) {
      p.rels.push_back(std::move(r));
      return;
    }
  partRels_.push_back({sourcePath, {std::move(r)}});
}

std::string Package::contentTypesXml() const {
  XmlDocument doc;
  pugi::xml_node types = doc.root("Types", "http://schemas.openxmlformats.org/package/2006/content-types");
  pugi::xml_node rels = types.append_child("Default");
  rels.append_attribute("Extension") = "rels";
  rels.append_attribute("ContentType") = "application/vnd.openxmlformats-package.relationships+xml";
  pugi::xml_node xml = types.append_child("Default");
  xml.append_attribute("Extension") = "xml";
  xml.append_attribute("ContentType") = "application/xml";
  for (const Part& p : parts_) {
    pugi::xml_node o = types.append_child("Override");
    o.append_attribute("PartName") = ("/" + p.path).c_str();
    o.append_attribute("ContentType") = p.contentType.c_str();
  }
  return doc.str();
}

std::string Package::relationshipsXml(const std::vector<Relationship>& rels) {
  XmlDocument doc;
  pugi::xml_node root = doc.root("Relationships", "http://schemas.openxmlformats.org/package/2006/relationships");
  for (const Relationship& r : rels) {
    pugi::xml_node n = root.append_child("Relationship");
    n.append_attribute("Id") = r.id.c_str();
    n.append_attribute("Type") = r.type.c_str();
    n.append_attribute("Target") = r.target.c_str();
  }
  return doc.str();
}

std::string Package::bytes() const {
  // The parts themselves are not copied: a reference list's body can be large.
  std::vector<std::pair<std::string, std::string>> generated;
  generated.emplace_back("[Content_Types].xml", contentTypesXml());
  generated.emplace_back("_rels/.rels", relationshipsXml(packageRels_));
  for (const PartRels& p : partRels_)
    generated.emplace_back(folderOf(p.source) + "_rels/" + fileOf(p.source) + ".rels", relationshipsXml(p.rels));
  struct Entry {
    const std::string& name;
    const std::string& content;
    std::FILE* file;  // the content, when it was spooled to a file
  };
  std::vector<Entry> entries;
  for (const auto& [name, content] : generated) entries.push_back({name, content, nullptr});
  for (const Part& p : parts_)
    entries.push_back({p.path, p.spooled ? p.spooled->text() : p.content, p.spooled ? p.spooled->file() : nullptr});

  zip_error_t error;
  zip_error_init(&error);
  zip_source_t* buffer = zip_source_buffer_create(nullptr, 0, 0, &error);
  if (!buffer) throw std::runtime_error("cannot create the zip buffer");
  zip_t* archive = zip_open_from_source(buffer, ZIP_TRUNCATE, &error);
  if (!archive) {
    zip_source_free(buffer);
    throw std::runtime_error("cannot create the zip archive");
  }
  zip_source_keep(buffer);
  for (const auto& [name, content, file] : entries) {
    // A spooled part is read from its own handle on the temporary file, which libzip closes.
    std::FILE* own = file ? fdopen(dup(fileno(file)), "rb") : nullptr;
    if (own) std::rewind(own);
    if (file && !own) {
      zip_discard(archive);
      zip_source_free(buffer);
      throw std::runtime_error("cannot read back the temporary file of " + name);
    }
    zip_source_t* s = own ? zip_source_filep(archive, own, 0, -1)
                          : zip_source_buffer(archive, content.data(), content.size(), 0);
    if (own && !s) std::fclose(own);
    const zip_int64_t index = s ? zip_file_add(archive, name.c_str(), s, ZIP_FL_ENC_UTF_8) : -1;
    if (index < 0) {
      if (s) zip_source_free(s);
      zip_discard(archive);
      zip_source_free(buffer);
      throw std::runtime_error("cannot add " + name + " to the package");
    }
    zip_file_set_dostime(archive, static_cast<zip_uint64_t>(index), kFixedDosTime, kFixedDosDate, 0);
    zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), ZIP_CM_DEFLATE, 6);
  }
  if (zip_close(archive) < 0) {
    zip_discard(archive);
    zip_source_free(buffer);
    throw std::runtime_error("cannot finish the package");
  }
  std::string out;
  if (zip_source_open(buffer) == 0) {
    zip_source_seek(buffer, 0, SEEK_END);
    const zip_int64_t size = zip_source_tell(buffer);
    zip_source_seek(buffer, 0, SEEK_SET);
    out.resize(static_cast<size_t>(size));
    zip_source_read(buffer, out.data(), static_cast<zip_uint64_t>(size));
    zip_source_close(buffer);
  }
  zip_source_free(buffer);
  return out;
}

void Package::save(const std::filesystem::path& path) const { writeFileAtomically(path, bytes()); }

}  // namespace quillpaper::docx
