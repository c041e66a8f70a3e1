#pragma once

#include <string>
#include <vector>

#include "host/Object.h"

namespace quillpaper {

// The start-up form as the library describes it: the paper's sections with
// their instruction codes and defaults, and the title-page fields per paper type.
struct StartupForm {
  struct Section {
    int index = 0;
    std::string caption;
    int code = 0;  // 3: nested under "Body of the paper"
    bool onByDefault = false;
    bool postgraduateOnly = false;
    bool onByDefaultForPostgraduates = false;
  };
  struct Field {
    std::string caption;
    std::string hint;  // empty when the field has none
  };
  std::vector<Section> sections;
  std::vector<std::vector<Field>> fieldsByPaperType;  // paper types 0 to 3
  int edition = 6;                                    // the APA edition whose title pages the fields are

  // Asks the command object for the form's settings; the 7th edition's title
  // pages have fields of their own (course, instructor, short title, ...).
  static StartupForm load(const QuillFormatAPA::ObjectRef& main2, int edition = 6);

  // The section whose caption matches `name` (case-insensitive, blanks and
  // hyphens ignored: "table-of-contents", "TableOfContents"), or -1.
  int sectionIndex(const std::string& name) const;
  // Whether section `index` is on by default for `paperType`.
  bool defaultFor(int index, int paperType) const;

  std::string text() const;
  std::string json() const;
};

// Paper types 0 to 3 in plain words, and what each changes.
const char* paperTypeName(int paperType);
const char* paperTypeEffect(int paperType);
bool isPostgraduate(int paperType);

}  // namespace quillpaper
