// References as people type them: every form reads into APA 6, no word is
// lost or added, and nothing leaves the list without a word.
#include <gtest/gtest.h>

#include <sstream>

#include "quillpaper/references/ReferenceList.h"
#include "quillpaper/references/TypedForms.h"
#include "quillpaper/references/WordAudit.h"
#include "tests/quillpaper/references/ReferenceSupport.h"

namespace quillpaper {
namespace {

using testing::format;
using testing::markdown;

// Each row: an entry as people type it, and the APA 6 form a careful person
// writes from it (italics as *...*). Catches a form that is damaged, kept as
// typed or read as the wrong kind of work.
TEST(TypedReferencesTest, FormsPeopleTypeComeOutInApaForm) {
  struct Row {
    const char* typed;
    const char* apa;
    int type;
  };
  const Row rows[] = {
      // "and" for "&", with or without its comma.
      {"Smith, J. and Jones, K. (2010). Sleep and memory. Journal of Sleep, 3(2), 45–67.",
       "Smith, J., & Jones, K. (2010). Sleep and memory. *Journal of Sleep*, *3*(2), 45–67.", 1},
      {"Smith, J., Jones, K., and Lee, M. (2010). Sleep and memory. Journal of Sleep, 3(2), 45–67.",
       "Smith, J., Jones, K., & Lee, M. (2010). Sleep and memory. *Journal of Sleep*, *3*(2), 45–67.", 1},
      // Written-out given names become initials.
      {"Ueda, Toshihide. (2010). Sleep and memory. Journal of Sleep, 3(2), 45–67.",
       "Ueda, T. (2010). Sleep and memory. *Journal of Sleep*, *3*(2), 45–67.", 1},
      {"Smith, Jonathan Paul, & Lee, Mary-Ann. (2010). Sleep and memory. Journal of Sleep, 3(2), 45–67.",
       "Smith, J. P., & Lee, M.-A. (2010). Sleep and memory. *Journal of Sleep*, *3*(2), 45–67.", 1},
      // A role after each name.
      {"Kubrick, S. (Director). (1968). 2001: A space odyssey [Motion picture]. United States: Metro-Goldwyn-Mayer.",
       "Kubrick, S. (Director). (1968). *2001: A space odyssey* [Motion picture]. United States: Metro-Goldwyn-Mayer.",
       0},
      {"Harris, B. (Producer), & Carter, C. (Director). (2010). The long night [Motion picture]. United States: Fox.",
       "Harris, B. (Producer), & Carter, C. (Director). (2010). *The long night* [Motion picture]. United States: Fox.",
       0},
      // Group authors with commas, "and" or "Inc." stay one name.
      {"United Nations, General Assembly. (1948). Universal declaration of human rights. New York, NY: Author.",
       "United Nations, General Assembly. (1948). *Universal declaration of human rights*. New York, NY: Author.", 0},
      {"National Heart, Lung, and Blood Institute. (2003). Managing asthma (NIH Publication No. 02-2650). Retrieved "
       "from http://www.nhlbi.nih.gov/asthma.pdf",
       "National Heart, Lung, and Blood Institute. (2003). *Managing asthma* (NIH Publication No. 02-2650). Retrieved "
       "from http://www.nhlbi.nih.gov/asthma.pdf",
       0},
      {"Microsoft, Inc. (2010). Annual report. Redmond, WA: Author.",
       "Microsoft, Inc. (2010). *Annual report*. Redmond, WA: Author.", 0},
      // Abbreviations inside names and publishers.
      {"Lee, A. (2010). A study of light. Phys. Rev. Lett., 104(3), 1–4.",
       "Lee, A. (2010). A study of light. *Phys. Rev. Lett.*, *104*(3), 1–4.", 1},
      {"Lee, A. (2010). A study of signals. IEEE Trans. Inf. Theory, 56(3), 100–110.",
       "Lee, A. (2010). A study of signals. *IEEE Trans. Inf. Theory*, *56*(3), 100–110.", 1},
      {"Lee, A. (1990). Fonts in C. Dr. Dobb's Journal, 15(3), 22–28.",
       "Lee, A. (1990). Fonts in C. *Dr. Dobb's Journal*, *15*(3), 22–28.", 1},
      {"Lee, A. (2010). Writing software. Chicago, IL: Univ. of Chicago Press.",
       "Lee, A. (2010). *Writing software*. Chicago, IL: Univ. of Chicago Press.", 0},
      {"Lee, A. (2010). Writing software. New York, NY: Harper & Co.",
       "Lee, A. (2010). *Writing software*. New York, NY: Harper & Co.", 0},
      // Proceedings without "In".
      {"Lee, A. (2010). Sleep and stuff. Proceedings of the Conference on Sleep, 1–10. New York, NY: ACM.",
       "Lee, A. (2010). Sleep and stuff. In *Proceedings of the Conference on Sleep* (pp. 1–10). New York, NY: ACM.",
       0},
      // Articles with only an identifier, and "pp." before an article's pages.
      {"Lee, A. (2010). A study of stuff. Journal of Stuff. doi:10.1037/a0012345",
       "Lee, A. (2010). A study of stuff. *Journal of Stuff*. doi:10.1037/a0012345", 1},
      {"Lee, A. (2010). A study of stuff. Journal of Stuff. Retrieved from http://stuff.example.org/a",
       "Lee, A. (2010). A study of stuff. *Journal of Stuff*. Retrieved from http://stuff.example.org/a", 1},
      {"Lee, A. (2004). Law and things. Hofstra Law Review, 30, pp. 1001–1013.",
       "Lee, A. (2004). Law and things. *Hofstra Law Review*, *30*, 1001–1013.", 1},
      {"Lee, A. (2004). Law and things. Hofstra Law Review, vol. 19, no. 3, pp. 81–90.",
       "Lee, A. (2004). Law and things. *Hofstra Law Review*, *19*(3), 81–90.", 1},
      {"Lee, A. (2004). Law and things. Hofstra Law Review, 19(3): 81-90.",
       "Lee, A. (2004). Law and things. *Hofstra Law Review*, *19*(3), 81–90.", 1},
      // The date closed by a comma.
      {"Smith, J. (2016), Title of the work. Journal of Things, 3(2), 45–67.",
       "Smith, J. (2016). Title of the work. *Journal of Things*, *3*(2), 45–67.", 1},
      // Combined parentheticals after a book's title.
      {"Plato. (2000). Symposium (Vol. 4; J. Burnet, Ed.). Oxford, England: Clarendon Press.",
       "Plato. (2000). *Symposium* (Vol. 4; J. Burnet, Ed.). Oxford, England: Clarendon Press.", 0},
      {"Lee, A. (2000). The form of the book (R. Bringhurst, Ed.; H. Hadeler, Trans.). Vancouver, Canada: Hartley & "
       "Marks.",
       "Lee, A. (2000). *The form of the book* (R. Bringhurst, Ed.; H. Hadeler, Trans.). Vancouver, Canada: Hartley & "
       "Marks.",
       0},
      // A book without author: the title first, its edition roman.
      {"The Chicago manual of style (15th ed.). (2003). Chicago, IL: University of Chicago Press.",
       "*The Chicago manual of style* (15th ed.). (2003). Chicago, IL: University of Chicago Press.", 0},
      // "Institution, City" after a thesis; a place with no publisher.
      {"Lee, A. (2008). Sleep and memory (Doctoral dissertation). University of Toronto, Toronto, Canada.",
       "Lee, A. (2008). *Sleep and memory* (Doctoral dissertation). University of Toronto, Toronto, Canada.", 0},
      {"Lee, A. (1923). Sleep and memory. London, England.", "Lee, A. (1923). *Sleep and memory*. London, England.",
       0},
      // Electronic sources: retrieval dates, site names, https, any case of the bracket.
      {"Lee, A. (2012, March 3). Getting a job [Web log post]. Retrieved May 5, 2012, from http://blog.example.com/job",
       "Lee, A. (2012, March 3). Getting a job [Web log post]. Retrieved May 5, 2012, from http://blog.example.com/job",
       4},
      {"Lee, A. (2012, March 3). Getting a job [Web log post]. Career Blog. Retrieved from http://blog.example.com/job",
       "Lee, A. (2012, March 3). Getting a job [Web log post]. Career Blog. Retrieved from http://blog.example.com/job",
       4},
      {"Lee, A. (2012, March 3). Getting a job [web log post]. Retrieved from https://blog.example.com/job",
       "Lee, A. (2012, March 3). Getting a job [Web log post]. Retrieved from https://blog.example.com/job", 4},
      {"Norton, M. (2010, May 11). Money can buy happiness [Video File]. Retrieved from http://www.youtube.com/x",
       "Norton, M. (2010, May 11). Money can buy happiness [Video file]. Retrieved from http://www.youtube.com/x", 4},
      {"Lee, A. (2012, March 3). Re: Getting a job [Online forum comment]. Retrieved from http://forum.example.org/3",
       "Lee, A. (2012, March 3). Re: Getting a job [Online forum comment]. Retrieved from http://forum.example.org/3",
       4},
      // Retrieval statements as people write them.
      {"Lee, A. (2010). A book about sleep. Retrieved May 5, 2010, from https://books.example.org/sleep",
       "Lee, A. (2010). *A book about sleep*. Retrieved May 5, 2010, from https://books.example.org/sleep", 0},
      {"Lee, A. (2010). A book about sleep. Available at: https://books.example.org/sleep",
       "Lee, A. (2010). *A book about sleep*. Retrieved from https://books.example.org/sleep", 0},
      // A site's name before the address, with or without APA's "Retrieved from", and with the date it was read on.
      {"Lee, A. (2010). A book about sleep. U.S. Department of Sleep website: https://sleep.example.gov/book",
       "Lee, A. (2010). *A book about sleep*. Retrieved from U.S. Department of Sleep website: "
       "https://sleep.example.gov/book",
       0},
      {"Lee, A. (2010). A book about sleep. Available at: Harbor University website: https://sleep.example.edu/book",
       "Lee, A. (2010). *A book about sleep*. Retrieved from Harbor University website: https://sleep.example.edu/book",
       0},
      {"Lee, A. (2010). A book about sleep. Retrieved May 5, 2010, from U.S. Department of Sleep website: "
       "https://sleep.example.gov/book",
       "Lee, A. (2010). *A book about sleep*. Retrieved May 5, 2010, from U.S. Department of Sleep website: "
       "https://sleep.example.gov/book",
       0},
      {"Lee, A. (2010). A book about sleep. https://books.example.org/sleep. Accessed May 5, 2010.",
       "Lee, A. (2010). *A book about sleep*. Retrieved May 5, 2010, from https://books.example.org/sleep", 0},
      {"Lee, A. (2010). Sleep. Journal of Things, 3, 4–5. DOI: 10.1037/a0012345",
       "Lee, A. (2010). Sleep. *Journal of Things*, *3*, 4–5. doi:10.1037/a0012345", 1},
      {"Lee, A. (2010). Sleep. Journal of Things, 3, 4–5. https://doi.org/fg6rf9",
       "Lee, A. (2010). Sleep. *Journal of Things*, *3*, 4–5. Retrieved from https://doi.org/fg6rf9", 1},
      // A dissertation's database and its number; an ERIC document.
      {"Lee, A. (2008). Sleep and memory (Doctoral dissertation). Available from ProQuest Dissertations and Theses "
       "database. (UMI No. 1434728)",
       "Lee, A. (2008). *Sleep and memory* (Doctoral dissertation). Available from ProQuest Dissertations and Theses "
       "database. (UMI No. 1434728)",
       0},
      {"Lee, A. (2008). Sleep and memory (Doctoral dissertation). Retrieved from ProQuest Dissertations and Theses "
       "database. (UMI No. 1434728)",
       "Lee, A. (2008). *Sleep and memory* (Doctoral dissertation). Retrieved from ProQuest Dissertations and Theses "
       "database. (UMI No. 1434728)",
       0},
      {"Lee, A. (2001). Teaching reading. Retrieved from ERIC database. (ED123456)",
       "Lee, A. (2001). *Teaching reading*. Retrieved from ERIC database. (ED123456)", 0},
      // A title with a question and no publisher; a review without title of its own.
      {"Lee, A. (2010). Is sleep needed? A new look at rest. Retrieved from https://example.org/sleep",
       "Lee, A. (2010). *Is sleep needed? A new look at rest*. Retrieved from https://example.org/sleep", 0},
      {"Lee, A. (2010). [Review of the book Sleep, by K. Lee]. Journal of Sleep Research, 19(2), 123–130.",
       "Lee, A. (2010). [Review of the book Sleep, by K. Lee]. *Journal of Sleep Research*, *19*(2), 123–130.", 1},
      {"Lee, A. (2010). [Review of the book Sleep, by K. Lee]. New York, NY: Norton.",
       "Lee, A. (2010). [Review of the book Sleep, by K. Lee]. New York, NY: Norton.", 0},
      // A web document without author whose title holds a periodical's word.
      {"New child vaccine gets funding boost. (2001). Retrieved from http://news.example.com/story_13178.asp",
       "*New child vaccine gets funding boost*. (2001). Retrieved from http://news.example.com/story_13178.asp", 0},
      // Notes at the end, after an address too.
      {"Smith, J. (1769). A treatise. Retrieved from http://books.example.org/treatise (Original work published 1769)",
       "Smith, J. (1769). *A treatise*. Retrieved from http://books.example.org/treatise (Original work published "
       "1769)",
       0},
      {"Smith, J. (1999). A title. Journal of Things, 3, 4–5. (Original work published 1923)",
       "Smith, J. (1999). A title. *Journal of Things*, *3*, 4–5. (Original work published 1923)", 1},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.typed);
    const FormattedReference f = format(r.typed);
    ASSERT_TRUE(f.ok()) << f.problems.front();
    EXPECT_EQ(markdown(f), r.apa);
    EXPECT_EQ(f.type, r.type);
  }
}

// Where the library's rule writes what APA 6 writes otherwise, the host
// corrects it; both are pinned. Catches a correction that is lost, and a
// library rule that changes behind the host's back.
TEST(TypedReferencesTest, HostCorrectsWhatApaWritesOtherwise) {
  struct Row {
    const char* entry;
    const char* library;  // the library's own output
    const char* host;     // the corrected output
  };
  const Row rows[] = {
      // The parenthesised words of an article's title are not italic.
      {"Smith, J. (2005). Things (in parentheses) and more. Journal of Things, 2(1), 1–10.",
       "Smith, J. (2005). Things (*in parentheses*) and more. *Journal of Things*, *2*(1), 1–10.",
       "Smith, J. (2005). Things (in parentheses) and more. *Journal of Things*, *2*(1), 1–10."},
      // A reprint note is closed by no full stop.
      {"London, J. (1990). Call of the wild. New York, NY: Dover. (Original work published 1903)",
       "London, J. (1990). *Call of the wild*. New York, NY: Dover. (Original work published 1903).",
       "London, J. (1990). *Call of the wild*. New York, NY: Dover. (Original work published 1903)"},
      // A periodical's name may start with a digit.
      {"Smith, J. (2005). Printing today. 3D Printing and Additive Manufacturing, 2(1), 1–10.",
       "Smith, J. (2005). Printing today, *3D Printing and Additive Manufacturing, 2*(1), 1–10.",
       "Smith, J. (2005). Printing today. *3D Printing and Additive Manufacturing*, *2*(1), 1–10."},
      // "Rev." inside a journal's name is no sign of a book.
      {"Lee, A. (2010). A study of light. Phys. Rev. Lett., 104(3), 1–4.",
       "Lee, A. (2010). *A study of light*. Phys. Rev. Lett., 104(3), 1–4.",
       "Lee, A. (2010). A study of light. *Phys. Rev. Lett.*, *104*(3), 1–4."},
      // A book without author keeps its edition roman.
      {"The Chicago manual of style (15th ed.). (2003). Chicago, IL: University of Chicago Press.",
       "*The Chicago manual of style (15th ed.)*. (2003). Chicago, IL: University of Chicago Press.",
       "*The Chicago manual of style* (15th ed.). (2003). Chicago, IL: University of Chicago Press."},
      // A volume of a multi-part work is in one italic span with its work.
      {"Lee, A. (1983). Handbook of things: Vol. 2. Special things. London, England: Sage.",
       "Lee, A. (1983). *Handbook of things*: *Vol. 2. Special things*. London, England: Sage.",
       "Lee, A. (1983). *Handbook of things: Vol. 2. Special things*. London, England: Sage."},
      // An en dash in page ranges, as the settings ask.
      {"Lee, A. (2004). Law and things. Hofstra Law Review, 30, 1001-1013.",
       "Lee, A. (2004). Law and things. *Hofstra Law Review*, *30*, 1001-1013.",
       "Lee, A. (2004). Law and things. *Hofstra Law Review*, *30*, 1001–1013."},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.entry);
    const FormattedReference library =
        ReferencePipeline(testing::session(), {.steps = ReferencePipeline::Steps::LibraryOnly}).format(r.entry, 1);
    EXPECT_EQ(markdown(library), r.library);
    const FormattedReference host = format(r.entry);
    ASSERT_TRUE(host.ok()) << host.problems.front();
    EXPECT_EQ(markdown(host), r.host);
  }
}

// The audit: what APA rewrites passes, what damages the entry does not.
// Catches an audit that lets damage through or keeps good entries as typed.
TEST(TypedReferencesTest, AuditTellsRewritesFromDamage) {
  struct Row {
    const char* typed;
    const char* written;
    const char* reason;  // "" for clean
  };
  const Row rows[] = {
      {"Smith, J. and Jones, K. (2001). T.", "Smith, J., & Jones, K. (2001). T.", ""},
      {"A, vol. 19, no. 3, pp. 81–90.", "A, 19(3), 81–90.", ""},
      {"A. Available at: http://x.org/a", "A. Retrieved from http://x.org/a", ""},
      {"A. Retrieved May 5, 2010, from http://x.org/a", "A. Retrieved May 5, 2010, from http://x.org/a", ""},
      {"A. https://doi.org/10.1037/ABC", "A. doi:10.1037/abc", ""},
      {"A (Second edition).", "A (2nd ed.).", ""},
      {"A [Supplement].", "A [Supplemental material].", ""},
      {"A. Book (pp. 1–2).", "A. In Book (pp. 1–2).", ""},
      {"Ueda, Toshihide. (2010).", "Ueda, & Toshihide. (2010).", "the APA form would add \"and\""},
      {"Smith, J. (2016), Title.", "Smith, J. (2016). , Title.", "the APA form would break \". ,\""},
      {"Review, 38(9):229\u2013231.", "Review, 38(9), :229\u2013231.", "the APA form would break \", :\""},
      {"A. Harbor website: http://x.org/a", "A. Harbor website:. Retrieved from http://x.org/a",
       "the APA form would break \":.\""},
      {"Law Review, 30, pp. 81.", "Law Review, 30, pp, 81.",
       "the APA form would add \"pp\"; it would break \"pp without its full stop\""},
      {"Review, vol. 19.", "Review, vol.", "the APA form would lose \"19\"; it would add \"vol\""},
      {"A. D. Edn frl. Title. A. D. Edn", "A. D. Edn frl. Title. A. D. Edn.", ""},
      {"Lee, A. & Ko, B. T. J. 65, 1190–1204 (1993).", "Lee, A., & Ko, B. T. J. 65, & 1190–1204. (1993).",
       "the APA form would add \"and\"; it would break \"& before a number\""},
      {"A. Retrieved from http://x.org/a", "A. Retrieved from http://x.org/a. Retrieved from http://x.org/a",
       "the APA form would add \"http://x.org/a\""},
      {"A. Retrieved from http://x.org/a", "A. Retrieved from x.org/a",
       "the APA form would lose \"http://x.org/a\"; it would add \"a\", \"x\", \"org\""},
      {"A. Retrieved May 5, 2010, from http://x.org/a", "A. Retrieved from http://x.org/a",
       "the APA form would lose \"may\", \"5\", \"2010\""},
      {"Lee, A. (1983). What are they? Review, 4.", "Lee, A. (1983). What are they. Review, 4.",
       "the APA form would break \"? left out\""},
      {"Lee, A. What are they? Review, 4, 1983.", "Lee, A. (1983). What are they? Review, 4.", ""},
      {"Lee, A. On \u201cNaps\u201d. Review, 4, 1983.", "Lee, A. (1983). On \u201cNaps. Review, 4.",
       "the APA form would break \"\u201c without its \u201d\""},
  };
  for (const Row& r : rows) {
    const WordAudit audit = auditWords(r.typed, r.written);
    EXPECT_EQ(audit.reason(), r.reason) << r.typed << " / " << r.written;
    EXPECT_EQ(audit.clean(), !*r.reason) << r.typed;
  }
  // What the pipeline declares: initials for written-out names, the names
  // the first-six-and-last rule leaves out.
  Rewrites initials;
  initials.mayLose = {"Jonathan"};
  initials.mayAdd = {"J."};
  EXPECT_TRUE(auditWords("Smith, Jonathan. (2001).", "Smith, J. (2001).", initials).clean());
  EXPECT_FALSE(auditWords("Smith, Jonathan. (2001).", "Smith, J. (2001).").clean());
}

// Catches an entry whose damage would be written: it is kept as typed and
// the reason is given, in every output form.
TEST(TypedReferencesTest, DamagedEntriesAreKeptAsTyped) {
  // A list the reader cannot pair: "&" would be added between its parts.
  const std::string typed = "Wyrostek, translator, P. (1992). LaTeX. Kraków, Poland: Ariel.";
  const FormattedReference f = format(typed);
  ASSERT_FALSE(f.ok());
  EXPECT_EQ(f.problems.front(), "the APA form would add \"and\"");
  std::ostringstream text, json, html;
  writeText({f}, text);
  writeJsonLines({f}, json);
  writeHtml({f}, html);
  EXPECT_EQ(text.str(), typed + "\n");
  EXPECT_NE(json.str().find("\"formatted_text\":\"" + typed + "\""), std::string::npos);
  EXPECT_NE(json.str().find("would add"), std::string::npos);
  EXPECT_NE(html.str().find(typed), std::string::npos);
}

// The personal-communication rule: an e-mail or a personal communication is
// left out of the list with its reason; an entry only read as one is not
// dropped. Catches a web log post lost without a word.
TEST(TypedReferencesTest, OnlyPersonalCommunicationsLeaveTheList) {
  const FormattedReference email = format("Smith, J. (2010, May 5). Re: our meeting [E-mail].");
  EXPECT_EQ(email.excludedBecause, "Cite personal communications in text only. (APA, 6.20)");
  const FormattedReference personal = format("(J. Smith, personal communication, May 5, 2010)");
  EXPECT_EQ(personal.excludedBecause, "Cite personal communications in text only. (APA, 6.20)");
  // Read as an e-mail by the library (no bracket at the end), but it is not one.
  const FormattedReference post = format("Lee, A. (2012, March 3). Getting a job [Web log post]. Career Blog.");
  EXPECT_TRUE(post.excludedBecause.empty());
  EXPECT_FALSE(post.ok());
  std::ostringstream text, json;
  writeText({email, post}, text);
  writeJsonLines({email, post}, json);
  EXPECT_EQ(text.str(), std::string(post.input) + "\n");
  EXPECT_NE(json.str().find("\"excluded\":\"Cite personal communications"), std::string::npos);
}

// Catches edited books sorted by their title instead of their editors.
TEST(TypedReferencesTest, EditedBooksSortByEditor) {
  std::vector<FormattedReference> list = {
      format("Zeller, A. (1990). Alpha things. New York, NY: Wiley."),
      format("Brown, B. (Ed.). (1990). Zebra things. New York, NY: Wiley."),
      format("Young, C. (1990). Middle things. New York, NY: Wiley."),
  };
  sortReferenceList(list);
  ASSERT_TRUE(list[0].editorsLead);
  EXPECT_EQ(list[0].editors.front().family, "Brown");
  EXPECT_EQ(list[1].authors.front().family, "Young");
  EXPECT_EQ(list[2].authors.front().family, "Zeller");
}

// The forms the host reads before the library sees the entry. Catches a
// label or note taken off with the words around it.
TEST(TypedReferencesTest, TypedFormsReadAsTheLibraryReads) {
  struct Row {
    const char* typed;
    const char* text;
    const char* accessDate;
    const char* note;
    const char* database;
    const char* site;
  };
  const Row rows[] = {
      {"A. (2001). T. J, 3, 4. (Original work published 1900).", "A. (2001). T. J, 3, 4.", "",
       "(Original work published 1900)", "", ""},
      {"A. (2001). T. Retrieved from http://x.org (Reprinted from B, 1990)", "A. (2001). T. Retrieved from http://x.org",
       "", "(Reprinted from B, 1990)", "", ""},
      {"A. (2001). T. Retrieved 5 May 2010 from https://x.org/a", "A. (2001). T. Retrieved from https://x.org/a",
       "5 May 2010", "", "", ""},
      {"A. (2001). T. https://x.org/a [Accessed 5 May 2010].", "A. (2001). T. Retrieved from https://x.org/a",
       "5 May 2010", "", "", ""},
      {"A. (2001). T. URL: http://x.org/a", "A. (2001). T. Retrieved from http://x.org/a", "", "", "", ""},
      {"A. (2001). T. doi: 10.1/x", "A. (2001). T. doi:10.1/x", "", "", "", ""},
      {"A. (2001). T. Retrieved from PsycINFO database.", "A. (2001). T.", "", "",
       "Retrieved from PsycINFO database.", ""},
      {"A. (2001). T [Web log post]. Career Blog. Retrieved from http://x.org",
       "A. (2001). T [Web log post]. Retrieved from http://x.org", "", "", "", "Career Blog"},
      {"A. (2001): T. J, 3, 4.", "A. (2001). T. J, 3, 4.", "", "", "", ""},
      {"A. [ca. 1937]. T. J, 3, 4.", "A. (ca. 1937). T. J, 3, 4.", "", "", "", ""},
      {"A. (2001) T. J, 3, 4.", "A. (2001). T. J, 3, 4.", "", "", "", ""},
      {"A. (2001). T. J, Vol. 3, No. 2, p. 4.", "A. (2001). T. J, 3(2), 4.", "", "", "", ""},
      {"A. (2001). T. J, 3(2): 4–9.", "A. (2001). T. J, 3(2), 4–9.", "", "", "", ""},
      // A book's volume stays: "vol. 3" alone has no issue and no pages.
      {"A. (2001). T, vol. 3. London: B.", "A. (2001). T, vol. 3. London: B.", "", "", "", ""},
      {"A. (2001). T [VIDEO FILE]. Retrieved from http://x.org", "A. (2001). T [Video file]. Retrieved from http://x.org",
       "", "", "", ""},
  };
  for (const Row& r : rows) {
    const TypedEntry t = readTypedForms(r.typed);
    EXPECT_EQ(t.text, r.text) << r.typed;
    EXPECT_EQ(t.accessDate, r.accessDate) << r.typed;
    EXPECT_EQ(t.trailingNote, r.note) << r.typed;
    EXPECT_EQ(t.databaseStatement, r.database) << r.typed;
    EXPECT_EQ(t.siteName, r.site) << r.typed;
  }
}

// A group's word keeps a list of names one group's name ("Acme Institute,
// Blue Hills"); without it the second part would be taken for given names.
// Each word of the rule has its row; the control word shows the row reads it.
TEST(TypedReferencesTest, GroupWordsMakeOneGroupsName) {
  for (const char* word :
       {"Academy", "Administration", "Agency", "Alliance", "American", "Assembly", "Association", "Authority",
        "Bank", "Board", "British", "Bureau", "Census", "Center", "Centre", "Clinic", "Club", "Coalition", "College",
        "Commission", "Committee", "Company", "Congress", "Consortium", "Corporation", "Council", "Court",
        "Department", "Division", "European", "Federal", "Federation", "Force", "Foundation", "Fund", "Government",
        "Group", "Health", "Hospital", "Inc", "Initiative", "Institute", "Institutes", "Institution",
        "International", "Laboratory", "League", "Library", "Ltd", "Ministry", "Museum", "National", "Nations",
        "Network", "Office", "Organisation", "Organization", "Panel", "Parliament", "Partnership", "Press",
        "Program", "Programme", "Project", "Research", "School", "Senate", "Service", "Services", "Society"}) {
    const NameList list = readNames(std::string("Green ") + word + ", Blue Hills");
    ASSERT_EQ(list.names.size(), 1u) << word;
    EXPECT_EQ(list.names[0].given, "") << word;
  }
  EXPECT_EQ(readNames("Green Zorbly, Blue Hills").names.at(0).given, "Blue Hills");
}

// A group after a title with a describing word is the work's description,
// not part of its title: "A study of things (Technical report)".
TEST(TypedReferencesTest, DescriptionWordsMakeAGroupADescription) {
  for (const char* group : {"(Master's thesis)", "(Doctoral dissertation)", "(Technical report)",
                            "(Agency publication)", "(Research monograph)", "(Kindle version)", "(Lecture series)",
                            "(Patient brochure)", "(Unpublished manuscript)", "(Paper no. A)"}) {
    const FormattedReference f =
        format(std::string("Lee, A. (2001). A study of things ") + group + ". New York, NY: Acme.");
    ASSERT_TRUE(f.ok()) << group;
    EXPECT_EQ(f.title, "A study of things") << group;
    EXPECT_EQ(markdown(f), std::string("Lee, A. (2001). *A study of things* ") + group + ". New York, NY: Acme.");
  }
  EXPECT_EQ(format("Lee, A. (2001). A study of things (Zorbly). New York, NY: Acme.").title,
            "A study of things (Zorbly)");
}

// A region at the end of a publisher's statement starts its address with
// the city before it: "Acme Press, Springfield, Finland".
TEST(TypedReferencesTest, RegionsEndAPublishersAddress) {
  for (const char* region :
       {"OH", "ONT", "Mass.", "Calif.", "Ill.", "Conn.", "Penn.", "Mich.", "Wis.", "Minn.", "Tex.", "Fla.", "N.Y.",
        "U.S.A.", "U.K.", "England", "Scotland", "Wales", "Ireland", "Canada", "Australia", "New Zealand",
        "Germany", "France", "Italy", "Spain", "Portugal", "The Netherlands", "Netherlands", "Belgium",
        "Switzerland", "Austria", "Denmark", "Sweden", "Norway", "Finland", "Iceland", "Poland", "Czech Republic",
        "Hungary", "Greece", "Turkey", "Russia", "Israel", "Egypt", "South Africa", "Nigeria", "Kenya", "India",
        "Pakistan", "China", "Japan", "Korea", "South Korea", "Taiwan", "Singapore", "Malaysia", "Indonesia",
        "Thailand", "Philippines", "Vietnam", "Brazil", "Argentina", "Chile", "Mexico", "Colombia", "Peru",
        "Hong Kong", "United States", "United Kingdom", "Polska", "Deutschland", "Schweiz"}) {
    std::string place = std::string("Springfield, ") + region;
    if (place.back() != '.') place += '.';
    const FormattedReference f = format("Lee, A. (2001). A report on things. Acme Press, " + place);
    ASSERT_TRUE(f.ok()) << region;
    place.pop_back();
    EXPECT_EQ(f.publisher, "Acme Press") << region;
    EXPECT_EQ(f.place, place) << region;
  }
  EXPECT_EQ(format("Lee, A. (2001). A report on things. Acme Press, Springfield, Zorbly.").place, "");
}

// The same works in the 6th and the 7th edition, as the two manuals write
// them. Each row: the entry as typed (in the 6th edition's form), its 6th
// edition form ("" for the entry itself), its 7th edition form, its type.
// The 7th edition's form, typed, reads back as itself: either edition may be
// typed. Catches a rule of one edition leaking into the other.
TEST(TypedReferencesTest, BothEditionsFromEitherEdition) {
  struct Row {
    const char* typed;
    const char* sixth;
    const char* seventh;
    int type;
  };
  const Row rows[] = {
      {"Kernis, M. H., Cornell, D. P., Sun, C.-R., Berry, A., & Harlow, T. (1993). There's more to"
       " self-esteem than whether it is high or low: The importance of stability of self-esteem. Journal of"
       " Personality and Social Psychology, 65, 1190–1204. doi:10.1037/0022-3514.65.6.1190",
       "Kernis, M. H., Cornell, D. P., Sun, C.-R., Berry, A., & Harlow, T. (1993). There's more to"
       " self-esteem than whether it is high or low: The importance of stability of self-esteem. *Journal"
       " of Personality and Social Psychology*, *65*, 1190–1204. doi:10.1037/0022-3514.65.6.1190",
       "Kernis, M. H., Cornell, D. P., Sun, C.-R., Berry, A., & Harlow, T. (1993). There's more to"
       " self-esteem than whether it is high or low: The importance of stability of self-esteem. *Journal"
       " of Personality and Social Psychology*, *65*, 1190–1204. https://doi.org/10.1037/0022-3514.65.6.1190",
       1},
      {"Lee, A., & Smith, J. (2010). Sleep and memory. Journal of Sleep, 3(2), 45–67. Retrieved from"
       " http://www.example.org/sleep",
       "Lee, A., & Smith, J. (2010). Sleep and memory. *Journal of Sleep*, *3*(2), 45–67. Retrieved from"
       " http://www.example.org/sleep",
       "Lee, A., & Smith, J. (2010). Sleep and memory. *Journal of Sleep*, *3*(2), 45–67."
       " http://www.example.org/sleep",
       1},
      {"Chamberlin, J., Novotney, A., Packard, E., & Price, M. (2008, May). Enhancing worker well-being."
       " Monitor on Psychology, 39(5), 26–29.",
       "Chamberlin, J., Novotney, A., Packard, E., & Price, M. (2008, May). Enhancing worker well-being."
       " *Monitor on Psychology*, *39*(5), 26–29.",
       "Chamberlin, J., Novotney, A., Packard, E., & Price, M. (2008, May). Enhancing worker well-being."
       " *Monitor on Psychology*, *39*(5), 26–29.",
       1},
      {"Schwartz, J. (1993, September 30). Obesity affects economic, social status. The Washington Post,"
       " pp. A1, A4.",
       "Schwartz, J. (1993, September 30). Obesity affects economic, social status. *The Washington Post*,"
       " pp. A1, A4.",
       "Schwartz, J. (1993, September 30). Obesity affects economic, social status. *The Washington Post*,"
       " pp. A1, A4.",
       1},
      {"Von Ledebur, S. C. (2007). Optimizing knowledge transfer. Journal of Mental Health. Advance online"
       " publication. doi:10.1080/09638230701496360",
       "Von Ledebur, S. C. (2007). Optimizing knowledge transfer. *Journal of Mental Health*. Advance"
       " online publication. doi:10.1080/09638230701496360",
       "Von Ledebur, S. C. (2007). Optimizing knowledge transfer. *Journal of Mental Health*. Advance"
       " online publication. https://doi.org/10.1080/09638230701496360",
       1},
      {"Wolchik, S. A., West, S. G., Sandler, I. N., Tein, J.-Y., Coatsworth, D., Lengua, L., … Griffin, W."
       " A. (2000). An experimental evaluation of theory-based mother and mother–child programs for"
       " children of divorce. Journal of Consulting and Clinical Psychology, 68, 843–856.",
       "Wolchik, S. A., West, S. G., Sandler, I. N., Tein, J.-Y., Coatsworth, D., Lengua, L., … Griffin, W."
       " A. (2000). An experimental evaluation of theory-based mother and mother–child programs for"
       " children of divorce. *Journal of Consulting and Clinical Psychology*, *68*, 843–856.",
       "Wolchik, S. A., West, S. G., Sandler, I. N., Tein, J.-Y., Coatsworth, D., Lengua, L., … Griffin, W."
       " A. (2000). An experimental evaluation of theory-based mother and mother–child programs for"
       " children of divorce. *Journal of Consulting and Clinical Psychology*, *68*, 843–856.",
       1},
      {"American Psychological Association. (2010). Publication manual of the American Psychological"
       " Association (6th ed.). Washington, DC: Author.",
       "American Psychological Association. (2010). *Publication manual of the American Psychological"
       " Association* (6th ed.). Washington, DC: Author.",
       "American Psychological Association. (2010). *Publication manual of the American Psychological"
       " Association* (6th ed.). Author.",
       0},
      {"Shotton, M. A. (1989). Computer addiction? A study of computer dependency. London, England: Taylor"
       " & Francis.",
       "Shotton, M. A. (1989). *Computer addiction? A study of computer dependency*. London, England:"
       " Taylor & Francis.",
       "Shotton, M. A. (1989). *Computer addiction? A study of computer dependency*. Taylor & Francis.",
       0},
      {"Duncan, G. J., & Brooks-Gunn, J. (Eds.). (1997). Consequences of growing up poor. New York, NY:"
       " Russell Sage Foundation.",
       "Duncan, G. J., & Brooks-Gunn, J. (Eds.). (1997). *Consequences of growing up poor*. New York, NY:"
       " Russell Sage Foundation.",
       "Duncan, G. J., & Brooks-Gunn, J. (Eds.). (1997). *Consequences of growing up poor*. Russell Sage"
       " Foundation.",
       0},
      {"Haybron, D. M. (2008). Philosophy and the science of subjective well-being. In M. Eid & R. J."
       " Larsen (Eds.), The science of subjective well-being (pp. 17–43). New York, NY: Guilford Press.",
       "Haybron, D. M. (2008). Philosophy and the science of subjective well-being. In M. Eid & R. J."
       " Larsen (Eds.), *The science of subjective well-being* (pp. 17–43). New York, NY: Guilford Press.",
       "Haybron, D. M. (2008). Philosophy and the science of subjective well-being. In M. Eid & R. J."
       " Larsen (Eds.), *The science of subjective well-being* (pp. 17–43). Guilford Press.",
       0},
      {"Laplace, P.-S. (1951). A philosophical essay on probabilities (F. W. Truscott & F. L. Emory,"
       " Trans.). New York, NY: Dover. (Original work published 1814)",
       "Laplace, P.-S. (1951). *A philosophical essay on probabilities* (F. W. Truscott & F. L. Emory,"
       " Trans.). New York, NY: Dover. (Original work published 1814)",
       "Laplace, P.-S. (1951). *A philosophical essay on probabilities* (F. W. Truscott & F. L. Emory,"
       " Trans.). Dover. (Original work published 1814)",
       0},
      {"Mazzeo, J., Druesne, B., Raffeld, P. C., Checketts, K. T., & Muhlstein, A. (1991). Comparability of"
       " computer and paper-and-pencil scores for two CLEP general examinations (College Board Rep. No."
       " 91-5). Princeton, NJ: Educational Testing Service.",
       "Mazzeo, J., Druesne, B., Raffeld, P. C., Checketts, K. T., & Muhlstein, A. (1991). *Comparability"
       " of computer and paper-and-pencil scores for two CLEP general examinations* (College Board Rep. No."
       " 91-5). Princeton, NJ: Educational Testing Service.",
       "Mazzeo, J., Druesne, B., Raffeld, P. C., Checketts, K. T., & Muhlstein, A. (1991). *Comparability"
       " of computer and paper-and-pencil scores for two CLEP general examinations* (College Board Rep. No."
       " 91-5). Educational Testing Service.",
       0},
      {"Wilfley, D. E. (1989). Interpersonal analyses of bulimia: Normal-weight and obese (Unpublished"
       " doctoral dissertation). University of Missouri, Columbia.",
       "Wilfley, D. E. (1989). *Interpersonal analyses of bulimia: Normal-weight and obese* (Unpublished"
       " doctoral dissertation). University of Missouri, Columbia.",
       "Wilfley, D. E. (1989). *Interpersonal analyses of bulimia: Normal-weight and obese* [Unpublished"
       " doctoral dissertation, University of Missouri, Columbia].",
       0},
      {"Herculano-Houzel, S., Collins, C. E., Wong, P., Kaas, J. H., & Lent, R. (2008). The basic"
       " nonuniformity of the cerebral cortex. Proceedings of the National Academy of Sciences, 105,"
       " 12593–12598. doi:10.1073/pnas.0805417105",
       "Herculano-Houzel, S., Collins, C. E., Wong, P., Kaas, J. H., & Lent, R. (2008). The basic"
       " nonuniformity of the cerebral cortex. *Proceedings of the National Academy of Sciences*, *105*,"
       " 12593–12598. doi:10.1073/pnas.0805417105",
       "Herculano-Houzel, S., Collins, C. E., Wong, P., Kaas, J. H., & Lent, R. (2008). The basic"
       " nonuniformity of the cerebral cortex. *Proceedings of the National Academy of Sciences*, *105*,"
       " 12593–12598. https://doi.org/10.1073/pnas.0805417105",
       1},
      {"Graham, G. (2005). Behaviorism. In E. N. Zalta (Ed.), The Stanford encyclopedia of philosophy (Fall"
       " 2007 ed.). Retrieved from http://plato.stanford.edu/entries/behaviorism/",
       "Graham, G. (2005). Behaviorism. In E. N. Zalta (Ed.), *The Stanford encyclopedia of philosophy*"
       " (Fall 2007 ed.). Retrieved from http://plato.stanford.edu/entries/behaviorism/",
       "Graham, G. (2005). Behaviorism. In E. N. Zalta (Ed.), *The Stanford encyclopedia of philosophy*"
       " (Fall 2007 ed.). http://plato.stanford.edu/entries/behaviorism/",
       0},
      {"Norton, M. (2010, May 11). Money can buy happiness [Video file]. Retrieved from"
       " http://www.youtube.com/watch?v=abc",
       "",
       "Norton, M. (2010, May 11). *Money can buy happiness* [Video]. http://www.youtube.com/watch?v=abc",
       4},
      {"Lee, A. (2012, March 3). Getting a job [Web log post]. Career Blog. Retrieved from"
       " http://careerblog.com/job",
       "",
       "Lee, A. (2012, March 3). Getting a job. *Career Blog*. http://careerblog.com/job",
       4},
      {"Kubrick, S. (Director). (1968). 2001: A space odyssey [Motion picture]. United States:"
       " Metro-Goldwyn-Mayer.",
       "Kubrick, S. (Director). (1968). *2001: A space odyssey* [Motion picture]. United States:"
       " Metro-Goldwyn-Mayer.",
       "Kubrick, S. (Director). (1968). *2001: A space odyssey* [Film]. Metro-Goldwyn-Mayer.",
       0},
      {"Koch, S. (Ed.). (1959–1963). Psychology: A study of science (Vols. 1–6). New York, NY: McGraw-Hill.",
       "Koch, S. (Ed.). (1959–1963). *Psychology: A study of science* (Vols. 1–6). New York, NY:"
       " McGraw-Hill.",
       "Koch, S. (Ed.). (1959–1963). *Psychology: A study of science* (Vols. 1–6). McGraw-Hill.",
       0},
      {"A, A., B, B., C, C., D, D., E, E., F, F., G, G., H, H., I, I., J, J., K, K., L, L., M, M., N, N.,"
       " O, O., P, P., Q, Q., R, R., S, S., T, T., U, U., & V, V. (2019). Many hands. Journal of Things,"
       " 1(2), 3–4. https://doi.org/10.1000/many",
       "A, A., B, B., C, C., D, D., E, E., F, F., … V, V. (2019). Many hands. *Journal of Things*, *1*(2),"
       " 3–4. doi:10.1000/many",
       "A, A., B, B., C, C., D, D., E, E., F, F., G, G., H, H., I, I., J, J., K, K., L, L., M, M., N, N.,"
       " O, O., P, P., Q, Q., R, R., S, S., … V, V. (2019). Many hands. *Journal of Things*, *1*(2), 3–4."
       " https://doi.org/10.1000/many",
       1},
      {"New child vaccine gets funding boost. (2001). Retrieved from"
       " http://news.example.com/health/story.asp",
       "*New child vaccine gets funding boost*. (2001). Retrieved from"
       " http://news.example.com/health/story.asp",
       "*New child vaccine gets funding boost*. (2001). http://news.example.com/health/story.asp",
       0},
      {"New drug appears to sharply cut risk of death from heart failure. (1993, July 15). The Washington"
       " Post, p. A12.",
       "New drug appears to sharply cut risk of death from heart failure. (1993, July 15). *The Washington"
       " Post*, p. A12.",
       "New drug appears to sharply cut risk of death from heart failure. (1993, July 15). *The Washington"
       " Post*, p. A12.",
       1},
      {"Sue, D. W., & Sue, D. (2013). Counseling the culturally diverse: Theory and practice (6th ed.)."
       " Hoboken, NJ: Wiley. doi:10.1002/9781118282830",
       "Sue, D. W., & Sue, D. (2013). *Counseling the culturally diverse: Theory and practice* (6th ed.)."
       " Hoboken, NJ: Wiley. doi:10.1002/9781118282830",
       "Sue, D. W., & Sue, D. (2013). *Counseling the culturally diverse: Theory and practice* (6th ed.)."
       " Wiley. https://doi.org/10.1002/9781118282830",
       0},
      {"Lee, A. (2010). A book about sleep [Kindle version]. Retrieved from http://www.amazon.com/sleep",
       "Lee, A. (2010). *A book about sleep* [Kindle version]. Retrieved from http://www.amazon.com/sleep",
       "Lee, A. (2010). *A book about sleep*. http://www.amazon.com/sleep",
       0},
      {"Lee, A., & Smith, J. (2010). Sleep and stuff. In Proceedings of the Conference on Sleep (pp. 1–10)."
       " New York, NY: ACM.",
       "Lee, A., & Smith, J. (2010). Sleep and stuff. In *Proceedings of the Conference on Sleep* (pp."
       " 1–10). New York, NY: ACM.",
       "Lee, A., & Smith, J. (2010). Sleep and stuff. In *Proceedings of the Conference on Sleep* (pp."
       " 1–10). ACM.",
       0},
      {"Schatz, B. R. (2000). Learning by text or context? [Review of the book The social life of"
       " information, by J. S. Brown & P. Duguid]. Science, 290, 1304.",
       "Schatz, B. R. (2000). Learning by text or context? [Review of the book The social life of"
       " information, by J. S. Brown & P. Duguid]. *Science*, *290*, 1304.",
       "Schatz, B. R. (2000). Learning by text or context? [Review of the book The social life of"
       " information, by J. S. Brown & P. Duguid]. *Science*, *290*, 1304.",
       1},
      {"Heuristic. (n.d.). In Merriam-Webster's online dictionary (11th ed.). Retrieved from"
       " http://www.m-w.com/dictionary/heuristic",
       "Heuristic. (n.d.). In *Merriam-Webster's online dictionary* (11th ed.). Retrieved from"
       " http://www.m-w.com/dictionary/heuristic",
       "Heuristic. (n.d.). In *Merriam-Webster's online dictionary* (11th ed.)."
       " http://www.m-w.com/dictionary/heuristic",
       0},
      {"Freud, S. (1961). The ego and the id. In J. Strachey (Ed. & Trans.), The standard edition of the"
       " complete psychological works of Sigmund Freud (Vol. 19, pp. 3–66). London, England: Hogarth Press."
       " (Original work published 1923)",
       "Freud, S. (1961). The ego and the id. In J. Strachey (Ed. & Trans.), *The standard edition of the"
       " complete psychological works of Sigmund Freud* (Vol. 19, pp. 3–66). London, England: Hogarth"
       " Press. (Original work published 1923)",
       "Freud, S. (1961). The ego and the id. In J. Strachey (Ed. & Trans.), *The standard edition of the"
       " complete psychological works of Sigmund Freud* (Vol. 19, pp. 3–66). Hogarth Press. (Original work"
       " published 1923)",
       0},
      {"U.S. Government Accountability Office. (2007). Telemedicine: Federal strategy is needed"
       " (Publication No. GAO-07-67). Retrieved from http://www.gao.gov/new.items/d0767.pdf",
       "U.S. Government Accountability Office. (2007). *Telemedicine: Federal strategy is needed*"
       " (Publication No. GAO-07-67). Retrieved from http://www.gao.gov/new.items/d0767.pdf",
       "U.S. Government Accountability Office. (2007). *Telemedicine: Federal strategy is needed*"
       " (Publication No. GAO-07-67). http://www.gao.gov/new.items/d0767.pdf",
       0},
      {"Lee, A. (2012, March 3). Re: Getting a job [Online forum comment]. Retrieved from"
       " http://forum.example.org/3",
       "",
       "Lee, A. (2012, March 3). Re: Getting a job [Online forum post]. http://forum.example.org/3",
       4},
      {"Lee, A. (2012, March 3). Re: Sleep [Electronic mailing list message]. Retrieved from"
       " http://lists.example.org/3",
       "",
       "Lee, A. (2012, March 3). Re: Sleep [Electronic mailing list message]. http://lists.example.org/3",
       4},
      {"Lee, A. (2001). Teaching reading. Retrieved from ERIC database. (ED123456)",
       "Lee, A. (2001). *Teaching reading*. Retrieved from ERIC database. (ED123456)",
       "Lee, A. (2001). *Teaching reading*. ERIC database. (ED123456)",
       0},
      {"Shotton, M. A. (1989). Computer addiction? A study of computer dependency. Taylor & Francis.",
       "Shotton, M. A. (1989). *Computer addiction? A study of computer dependency*. Taylor & Francis.",
       "Shotton, M. A. (1989). *Computer addiction? A study of computer dependency*. Taylor & Francis.",
       0},
      {"Lee, A., & Smith, J. (2010). Sleep and memory. Journal of Sleep, 3(2), 45–67."
       " https://doi.org/10.1000/sleep",
       "Lee, A., & Smith, J. (2010). Sleep and memory. *Journal of Sleep*, *3*(2), 45–67. doi:10.1000/sleep",
       "Lee, A., & Smith, J. (2010). Sleep and memory. *Journal of Sleep*, *3*(2), 45–67."
       " https://doi.org/10.1000/sleep",
       1},
      {"Lee, A. (2008). Sleep and memory [Doctoral dissertation, University of Toronto]. ProQuest"
       " Dissertations and Theses Global.",
       "Lee, A. (2008). *Sleep and memory* [Doctoral dissertation, University of Toronto]. ProQuest"
       " Dissertations and Theses Global.",
       "Lee, A. (2008). *Sleep and memory* [Doctoral dissertation, University of Toronto]. ProQuest"
       " Dissertations and Theses Global.",
       0},
      {"Kubrick, S. (Director). (1968). 2001: A space odyssey [Film]. Metro-Goldwyn-Mayer.",
       "Kubrick, S. (Director). (1968). *2001: A space odyssey* [Film]. Metro-Goldwyn-Mayer.",
       "Kubrick, S. (Director). (1968). *2001: A space odyssey* [Film]. Metro-Goldwyn-Mayer.",
       0},
      {"Lee, A. (2012, March 3). Getting a job [Blog post]. Career Blog. https://careerblog.com/job",
       "Lee, A. (2012, March 3). Getting a job [Web log post]. Career Blog. Retrieved from"
       " https://careerblog.com/job",
       "Lee, A. (2012, March 3). Getting a job. *Career Blog*. https://careerblog.com/job",
       4},
      {"Norton, M. (2010, May 11). Money can buy happiness [Video]. YouTube."
       " https://www.youtube.com/watch?v=abc",
       "Norton, M. (2010, May 11). Money can buy happiness [Video file]. YouTube. Retrieved from"
       " https://www.youtube.com/watch?v=abc",
       "Norton, M. (2010, May 11). *Money can buy happiness* [Video]. YouTube."
       " https://www.youtube.com/watch?v=abc",
       4},
      {"Merriam-Webster. (n.d.). Heuristic. In Merriam-Webster.com dictionary. Retrieved May 5, 2020, from"
       " https://www.merriam-webster.com/dictionary/heuristic",
       "Merriam-Webster. (n.d.). Heuristic. In *Merriam-Webster.com dictionary*. Retrieved May 5, 2020,"
       " from https://www.merriam-webster.com/dictionary/heuristic",
       "Merriam-Webster. (n.d.). Heuristic. In *Merriam-Webster.com dictionary*. Retrieved May 5, 2020,"
       " from https://www.merriam-webster.com/dictionary/heuristic",
       0},
      {"Brody, J. E. (2007, December 11). Mental reserves keep brain agile. The New York Times. Retrieved"
       " from http://www.nytimes.com/2007/12/11/health/11brod.html",
       "Brody, J. E. (2007, December 11). Mental reserves keep brain agile. *The New York Times*. Retrieved"
       " from http://www.nytimes.com/2007/12/11/health/11brod.html",
       "Brody, J. E. (2007, December 11). Mental reserves keep brain agile. *The New York Times*."
       " http://www.nytimes.com/2007/12/11/health/11brod.html",
       1},
      {"Clay, R. (2008, June). Science vs. ideology: Psychologists fight back about the misuse of research."
       " Monitor on Psychology, 39(6). Retrieved from http://www.apa.org/monitor/",
       "Clay, R. (2008, June). Science vs. ideology: Psychologists fight back about the misuse of research."
       " *Monitor on Psychology*, *39*(6). Retrieved from http://www.apa.org/monitor/",
       "Clay, R. (2008, June). Science vs. ideology: Psychologists fight back about the misuse of research."
       " *Monitor on Psychology*, *39*(6). http://www.apa.org/monitor/",
       1},
      {"World Health Organization. (2018). Global status report on road safety. Geneva, Switzerland:"
       " Author. doi:10.1000/who.2018",
       "World Health Organization. (2018). *Global status report on road safety*. Geneva, Switzerland:"
       " Author. doi:10.1000/who.2018",
       "World Health Organization. (2018). *Global status report on road safety*. Author."
       " https://doi.org/10.1000/who.2018",
       0},
  };
  ReferencePipeline sixth(testing::session(), {.edition = 6});
  ReferencePipeline seventh(testing::session(), {.edition = 7});
  for (const Row& r : rows) {
    SCOPED_TRACE(r.typed);
    const FormattedReference six = sixth.format(r.typed, 1);
    ASSERT_TRUE(six.ok()) << six.problems.front();
    EXPECT_EQ(markdown(six), *r.sixth ? r.sixth : r.typed);
    EXPECT_EQ(six.type, r.type);
    const FormattedReference seven = seventh.format(r.typed, 1);
    ASSERT_TRUE(seven.ok()) << seven.problems.front();
    EXPECT_EQ(markdown(seven), r.seventh);
    // Typed in the 7th edition's form (italics aside), it comes back the same.
    std::string typedSeventh = r.seventh;
    std::erase(typedSeventh, '*');
    const FormattedReference again = seventh.format(typedSeventh, 1);
    ASSERT_TRUE(again.ok()) << again.problems.front();
    EXPECT_EQ(markdown(again), r.seventh);
  }
}


// The 7th edition leaves out a publisher's place, and only a place: a title
// and publisher misread as the place are kept, and the entry with them.
TEST(TypedReferencesTest, SeventhEditionDropsOnlyAPlace) {
  ReferencePipeline seventh(testing::session(), {.edition = 7});
  const FormattedReference f = seventh.format(
      "(1) Shotton, M. A. Computer Addiction? A Study of Computer Dependency; Taylor & Francis: London, 1989.", 1);
  std::ostringstream out;
  writeText({f}, out);
  EXPECT_NE(out.str().find("A Study of Computer Dependency"), std::string::npos) << out.str();
}

}  // namespace
}  // namespace quillpaper
