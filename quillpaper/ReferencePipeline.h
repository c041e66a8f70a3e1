#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quillpaper/AuthorNames.h"
#include "quillpaper/FormattedText.h"
#include "quillpaper/Session.h"

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
  std::string year, title, containerTitle, volume, issue, pages, publisher, place, edition, doi, url;
  // Why the entry could not be made sense of; it is then kept as typed.
  std::vector<std::string> problems;
  // Set by the template's disable settings: kept out of the reference list, and why.
  std::string excludedBecause;

  bool ok() const { return problems.empty(); }
  std::string text() const { return plainText(runs); }
};

// What the host tidies in an entry before the library sees it: blanks
// collapsed, control characters dropped, and the DOI forms that came after
// APA 6 ("https://doi.org/10…", "http://dx.doi.org/10…", "DOI: 10…",
// "doi: 10…") written as the "doi:10…" the parser knows.
std::string tidyEntry(std::string_view raw);

// Free text to APA: the title found, the type classified, the entry class
// made, the entry parsed into the data source's fields and formatted back
// through the output template. One pipeline serves one session.
class ReferencePipeline {
 public:
  explicit ReferencePipeline(Session& session) : session_(session) {}
  FormattedReference format(std::string_view entry, int line = 0);

 private:
  Session& session_;
};

}  // namespace quillpaper
