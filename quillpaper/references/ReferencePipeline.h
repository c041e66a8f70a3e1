#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quillpaper/references/AuthorNames.h"
#include "quillpaper/references/ReferenceFormatter.h"
#include "quillpaper/FormattedText.h"
#include "quillpaper/Session.h"
#include "reader/ReferenceReader.h"

namespace quillpaper {

// One reference as the pipeline gives it back: its type, its fields, and the
// entry in APA form as runs (italic where APA sets italics).
struct FormattedReference {
  int line = 0;
  std::string input;
  int type = -1;  // 0 non-periodical, 1 periodical article, 4 electronic source
  std::vector<TextRun> runs;
  std::vector<PersonName> authors;
  std::vector<PersonName> editors;
  bool editorsLead = false;  // the editors stand where the authors would ("Lee, A. (Ed.). (2001).")
  std::string year, title, containerTitle, volume, issue, pages, publisher, place, edition, doi, url;
  // Why the entry could not be made sense of; it is then kept as typed.
  std::vector<std::string> problems;
  // Set by the template's disable settings: kept out of the reference list, and why.
  std::string excludedBecause;
  // Which reader read it: "apa" (the entry classes' rules, for APA input that
  // round-trips) or "learned" (the reader of other citation styles), and how
  // sure the learned reader was (0 when it was not asked).
  std::string reader = "apa";
  double readerConfidence = 0;

  bool ok() const { return problems.empty(); }
  std::string text() const { return plainText(runs); }
};

// What the host tidies in an entry before the library sees it: blanks
// collapsed, control characters dropped, and the DOI forms that came after
// APA 6 ("https://doi.org/10…", "http://dx.doi.org/10…", "DOI: 10…",
// "doi: 10…") written as the "doi:10…" the parser knows.
std::string tidyEntry(std::string_view raw);

// Free text to APA: the forms people type read as the library reads them,
// the title found, the type classified, the entry class made, the entry
// parsed into the data source's fields and formatted back through the output
// template, the host's corrections of what APA writes otherwise, and the
// audit that keeps an entry as typed rather than lose or add a word.
// `Steps::LibraryOnly` leaves out what the host adds: the entry as the
// library alone reads and writes it. `edition` is the APA edition the
// formatter is asked for (the template's own, 6, unless 7 is). An entry the
// APA rules cannot read goes to the learned reader when there is one: its
// labels are written as the APA form the rules read, and the result is kept
// only when the reader is sure of it and it keeps every typed word. One
// pipeline serves one thread of a session: another thread makes its own,
// with a command object of its own.
class ReferencePipeline {
 public:
  enum class Steps { All, LibraryOnly };
  struct Options {
    Steps steps = Steps::All;
    int edition = 6;
    // The learned reader for entries the APA rules cannot read, with the
    // confidence under which its reading is not trusted; none: APA rules only.
    const quillreader::Model* reader = nullptr;
    double readerThreshold = 0;
  };
  // `main2`: the command object to use, the session's when none.
  ReferencePipeline(Session& session, Options options, ObjectRef main2 = {});
  explicit ReferencePipeline(Session& session) : ReferencePipeline(session, Options{}) {}
  ~ReferencePipeline();
  FormattedReference format(std::string_view entry, int line = 0);

 private:
  // An entry class made once for the list, with the settings and template it
  // registered: what the contract asks of each entry (its data source, the
  // parse, the items) is done again for each.
  struct EntryClass {
    Ref<FormatterSettings> settings;
    ObjectRef entry;
  };
  const EntryClass& entryClass(int type);
  // The work's own text, a list's numbering aside, read by the rules and then
  // by the learned reader when they cannot read it.
  FormattedReference formatTheWork(std::string_view work, int line);
  // The entry as the APA rules read it.
  // `type`, when known beforehand (the learned reader's), is the entry's
  // type; otherwise the library classifies it.
  FormattedReference formatWithRules(std::string_view entry, int line, std::optional<int> type = std::nullopt);
  // The entry as the learned reader reads it, or `rules` when it cannot do better.
  FormattedReference formatAsLabelled(std::string_view entry, FormattedReference rules);

  Session& session_;
  Options options_;
  ObjectRef main2_;
  ObjectRef probe_;  // the periodical reader that finds titles for the classifier
  std::map<int, EntryClass> classes_;
};

}  // namespace quillpaper
