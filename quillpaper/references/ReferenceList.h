#pragma once

#include <filesystem>
#include <optional>
#include <ostream>
#include <vector>

#include "quillpaper/Document.h"
#include "quillpaper/references/ReferencePipeline.h"
#include "quillpaper/Session.h"

namespace quillpaper {

// Orders references as an APA reference list: by the family name of the first
// author (of the first editor for an edited book) letter by letter (an entry
// without author by its title, "A", "An" and "The" left out), then by the
// other authors, then by year.
void sortReferenceList(std::vector<FormattedReference>& references);

// The list's output forms that are written as the entries come.
enum class ListFormat { Text, Html, Markdown, Json };

// Writes a list one entry at a time, with memory that does not grow with
// the list. An entry that could not be made sense of is written as typed; an
// entry kept out of the list (a personal communication) is left out, and
// in JSON it is there with the reason.
class ReferenceListWriter {
 public:
  ReferenceListWriter(ListFormat format, std::ostream& out) : format_(format), out_(out) {}
  void begin();
  void add(const FormattedReference& r);
  // A line too long to be a reference, written as typed as it is read.
  void beginAsTyped(int line, const std::string& problem);
  void asTypedPiece(std::string_view piece);
  void endAsTyped();
  void end();

 private:
  ListFormat format_;
  std::ostream& out_;
  std::string problem_;
};

// A list written in APA order once it is whole. Each entry is kept only as
// its order and what its output shows (the text in the list's form, or the
// runs of a .docx paragraph), so that memory stays near the list's own size.
class SortedReferenceList {
 public:
  // `format` empty: the entries are kept for paragraphs().
  explicit SortedReferenceList(std::optional<ListFormat> format) : format_(format) {}
  void add(const FormattedReference& r);
  void write(std::ostream& out);
  std::vector<doc::Paragraph> paragraphs();

 private:
  struct Entry {
    std::string key;
    std::string shown;            // the entry in the list's form
    std::vector<TextRun> runs;    // or its runs, for paragraphs
    std::string keptBecause;      // why it is kept as typed, if it is
  };
  void sort();
  std::optional<ListFormat> format_;
  std::vector<Entry> entries_;
};

// The whole list in one form.
void writeList(ListFormat format, const std::vector<FormattedReference>& references, std::ostream& out);
inline void writeText(const std::vector<FormattedReference>& r, std::ostream& out) { writeList(ListFormat::Text, r, out); }
inline void writeHtml(const std::vector<FormattedReference>& r, std::ostream& out) { writeList(ListFormat::Html, r, out); }
inline void writeMarkdown(const std::vector<FormattedReference>& r, std::ostream& out) {
  writeList(ListFormat::Markdown, r, out);
}
inline void writeJsonLines(const std::vector<FormattedReference>& r, std::ostream& out) {
  writeList(ListFormat::Json, r, out);
}

// The list as paragraphs of the reference-list style.
std::vector<doc::Paragraph> referenceParagraphs(const std::vector<FormattedReference>& references);
// A .docx with the References page, its label as the edition (6 or 7) sets it.
void writeReferenceListDocx(std::vector<doc::Paragraph> paragraphs, Session& session,
                            const std::filesystem::path& path, int edition);

}  // namespace quillpaper
