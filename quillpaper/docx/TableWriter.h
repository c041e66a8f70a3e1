#pragma once

#include <pugixml.hpp>
#include <string>

#include "quillpaper/Document.h"

namespace quillpaper::docx {

struct PageGeometry;

// An APA table: "Table N" and the title in italics above it, horizontal
// rules only, the notes below it ("Note." in italics, then each further note
// on a line of its own). `bookmark` (with `bookmarkId`) marks the table's
// number for the list of tables.
void writeTable(pugi::xml_node body, const doc::TableBlock& table, const PageGeometry& page, bool breakBefore,
                const std::string& bookmark, int bookmarkId);

}  // namespace quillpaper::docx
