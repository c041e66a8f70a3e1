#pragma once

#include <filesystem>
#include <string>

#include "quillpaper/Document.h"
#include "quillpaper/PaperFormat.h"
#include "quillpaper/docx/Layout.h"

namespace quillpaper::docx {

struct PaperOptions {
  std::string title;   // for the document's properties
  std::string author;
  PaperFormat format;
  bool editingHints = true;
};

// The .docx of a laid-out paper, as bytes.
std::string paperBytes(const Layout& layout, const PaperOptions& options);
// Writes it atomically to `path`.
void writePaper(const Layout& layout, const PaperOptions& options, const std::filesystem::path& path);

}  // namespace quillpaper::docx
