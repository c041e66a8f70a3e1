#pragma once

#include <string>
#include <string_view>

namespace quillpaper {

// An entry as people type it, brought to the forms the entry classes read,
// with what those forms have no place for kept aside. Every step changes
// only labels and punctuation, never a word:
//   - the date's closing punctuation: "(2016), Title" and "(2016) Title"
//     read as "(2016). Title"; an estimated date, "[ca. 1937]", as
//     "(ca. 1937)";
//   - a periodical's numbers: "vol. 19, no. 3, pp. 81–90", "19(3): 81–90"
//     and "30, pp. 1001–1013" read as "19(3), 81–90" and "30, 1001–1013";
//   - the retrieval statement: a bare address, "Available at: …", "URL: …",
//     "Retrieved May 5, 2010, from …" and "… Accessed May 5, 2010" read as
//     "Retrieved from …", the retrieval date kept aside;
//   - a DOI as "DOI: 10…", "https://doi.org/10…" reads as "doi:10…";
//   - an electronic source's bracketed description in APA 6's case and words
//     ("[Video File]" and the 7th edition's "[Video]" read as "[Video file]");
//   - a note at the very end, "(Original work published 1900)" or
//     "(Reprinted from …)", kept aside to be written last;
//   - a database statement, which the entry classes would take for an
//     address ("Available from ProQuest Dissertations and Theses database.
//     (UMI No. 1434728)", "Retrieved from ERIC database. (ED123456)"), kept
//     aside to be written after the work;
//   - an e-mail ("… Re: our meeting [E-mail].") read as the personal
//     communication it is: its bracket goes, and `email` says so;
//   - the name of a site between an electronic source's bracketed
//     description and its address ("[Web log post]. Career Blog. Retrieved
//     from …"), kept aside to be written before the address.
struct TypedEntry {
  std::string text;
  std::string accessDate;         // "May 5, 2010", as typed
  std::string trailingNote;       // "(Original work published 1900)"
  std::string databaseStatement;  // "Retrieved from ERIC database. (ED123456)"
  std::string siteName;           // "Career Blog"
  bool email = false;
};

TypedEntry readTypedForms(std::string_view entry);

}  // namespace quillpaper
