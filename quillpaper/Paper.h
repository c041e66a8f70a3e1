#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "quillpaper/PaperBuilder.h"
#include "quillpaper/PaperFormat.h"
#include "quillpaper/Session.h"

namespace quillpaper {

// What the user asked for on the command line.
struct PaperRequest {
  int16_t paperType = 3;
  int16_t edition = 7;                   // the APA edition: 7 or 6
  std::string font = "Times New Roman";  // with its size in points
  int fontSize = 12;
  std::map<std::string, std::string> fields;  // title-page fields by caption: "Title", "2nd Author", ...
  std::set<int> parts;                        // the selected parts 0 to 14
  bool hints = true;
  int chapters = 0;
  // The tables for the tables page: table-form buttons (1 to 9), or tables
  // computed from the user's data.
  struct Table {
    int button = 0;
    std::shared_ptr<doc::TableBlock> computed;
  };
  std::vector<Table> tables;
  std::vector<std::pair<int, std::string>> references;  // (line, entry) for the references page
};

// A paper the library has laid out, ready to be written.
struct Paper {
  Ref<PaperBuilder> builder;
  PaperFormat format;
  // What became of the references: one line for each entry kept as typed or left out.
  std::vector<std::string> referenceNotes;
  // Why the running head is not as APA wants it, when it is not ("longer than 50 characters").
  std::string runningHeadNote;
};

// Runs the library: the settings, the skeleton and any chapters. Errors the
// library reports are left in the session's service for the caller to judge.
Paper makePaper(Session& session, const PaperRequest& request);

// Writes the paper's .docx atomically.
void writePaperFile(const Paper& paper, const PaperRequest& request, const std::filesystem::path& output);

}  // namespace quillpaper
