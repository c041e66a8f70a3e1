#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "quillpaper/FormattedText.h"

namespace quillpaper {

class ReferenceSource;
class FormatterSettings;

// Where the entry classes' rules give output that APA 6 itself writes
// otherwise, the host corrects the output and leaves the rule alone. Each
// step names the rule it corrects.
namespace corrections {

// The classifier takes "Rev." and "Trans." for signs of a book wherever they
// stand; inside a periodical's name ("Phys. Rev. Lett.", "IEEE Trans. Inf.
// Theory") they are not. `decorated` is the periodical reader's decorated
// title ("title@periodical"); `classify` asks the classifier about a text.
int type(int libraryType, std::string_view entry, std::string_view decorated,
         const std::function<int(const std::string&)>& classify);

// The fields after parsing, before the entry class writes its items:
//  - a periodical's name that starts with a digit ("3D Printing and Additive
//    Manufacturing, 2(1)") is a name, not the front of a volume;
//  - page ranges take an en dash where the settings ask for one
//    (useEnDashForPageRange).
void fields(int type, ReferenceSource& source, FormatterSettings& settings);

// The formatted items before the join:
//  - the parenthesised words of an article's title stay roman (the periodical
//    class sets them in italics);
//  - the edition or volume after a book's title in the author's place is
//    roman ("The Chicago manual of style (15th ed.)");
//  - a bracketed description standing for a title ("[Review of the book
//    …]") is roman.
void items(int type, std::vector<std::vector<TextRun>>& formatted);

// The joined entry: a multi-part work's title and the title of its volume
// are one italic span ("A book: Vol. 3", not "A book" ": " "Vol. 3").
void runs(int type, std::vector<TextRun>& runs);

}  // namespace corrections
}  // namespace quillpaper
