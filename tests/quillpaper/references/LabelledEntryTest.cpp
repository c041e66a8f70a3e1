#include <gtest/gtest.h>

#include "quillpaper/references/LabelledEntry.h"

namespace quillpaper {
namespace {

using quillreader::Label;

// A reading written out by hand: "{title Some title}" labels the tokens of
// "Some title" as the title; tokens outside braces are other styles' words
// and punctuation (Other).
struct Marked {
  std::string text;
  quillreader::Reading reading;
};

Marked marked(std::string_view markup) {
  Marked m;
  std::vector<std::pair<size_t, size_t>> spans;
  std::vector<Label> spanLabels;
  for (size_t i = 0; i < markup.size(); ++i) {
    if (markup[i] != '{') {
      m.text += markup[i];
      continue;
    }
    const size_t space = markup.find(' ', i);
    const size_t close = markup.find('}', space);
    spanLabels.push_back(quillreader::labelNamed(markup.substr(i + 1, space - i - 1)));
    const size_t begin = m.text.size();
    m.text += markup.substr(space + 1, close - space - 1);
    spans.emplace_back(begin, m.text.size());
    i = close;
  }
  m.reading.tokens = quillreader::tokenize(m.text);
  for (const quillreader::Token& t : m.reading.tokens) {
    Label label = Label::Other;
    for (size_t k = 0; k < spans.size(); ++k)
      if (t.begin >= spans[k].first && t.end <= spans[k].second) label = spanLabels[k];
    m.reading.labels.push_back(label);
  }
  m.reading.confidence = 100;
  return m;
}

// Readings as other styles write them, and the APA form built on them: the
// names as APA writes them, the date after them, the type from the labels, the
// parts APA has no field for kept as notes, and every typed word accounted for.
TEST(LabelledEntryTest, ApaFormOfAReading) {
  struct Row {
    const char* markup;
    const char* apa;
    const char* notes;
    int type;
    const char* lost;  // the first typed word the APA form lacks, or ""
  };
  const Row rows[] = {
      {"{author Kernis MH, Cornell DP}. {title There's more to self-esteem}. {container J Pers Soc Psychol}. "
       "{date 1993};{volume 65}:{pages 1190-204}.",
       "Kernis, M. H., & Cornell, D. P. (1993). There's more to self-esteem. J Pers Soc Psychol, 65, 1190–1204.", "",
       1, ""},
      // A report's number and a thesis stand after the title, as APA writes
      // them; what else the work is, which APA has no field for, is kept after it.
      {"{author Sherman, M.} {date 1986}. {title Producing software}. {genre Technical Report PCS-TR86-134}. "
       "{place Hanover, NH}: {publisher Dartmouth College}.",
       "Sherman, M. (1986). Producing software (Technical Report PCS-TR86-134). Hanover, NH: Dartmouth College.", "",
       0, ""},
      {"{author Sherman, M.} {date 1986}. {title Producing software}. {genre Ph.D. thesis}. "
       "{place Hanover, NH}: {publisher Dartmouth College}.",
       "Sherman, M. (1986). Producing software (Doctoral dissertation). Hanover, NH: Dartmouth College.", "", 0, ""},
      {"{author Sherman, M.} {date 1986}. {title Producing software}. {genre Poster session}. "
       "{place Hanover, NH}: {publisher Dartmouth College}.",
       "Sherman, M. (1986). Producing software. Hanover, NH: Dartmouth College.", "Poster session.", 0, ""},
      {"{author Schmets, R.} ({date 1987}) {title Vom Schriftgiessen}. ({note German}) {place Darmstadt}: "
       "{publisher Technische Hochschule}.",
       "Schmets, R. (1987). Vom Schriftgiessen. Darmstadt: Technische Hochschule.", "(German).", 0, ""},
      // Editors in the authors' place, and after the title of a work with authors.
      {"{editor Haney C, Wiener RL} (eds) ({date 2004}) {title Capital punishment}. {place New York}: "
       "{publisher Springer}",
       "Haney, C., & Wiener, R. L. (Eds.). (2004). Capital punishment. New York: Springer.", "", 0, ""},
      {"{author Anonymous}. {title A letter from Bodoni's widow}. (Edited and translated by {editor Philip J. "
       "Weimerskirch}). {container Printing History} {volume 14}, ({date 1991}).",
       "Anonymous. (1991). A letter from Bodoni's widow (P. J. Weimerskirch, Ed.). Printing History, 14.", "", 1,
       ""},
      // A periodical with an issue and no volume; a chapter in a volume of a book.
      {"{author Kristensen J}. {title The Merrymount Janson type}. {container Printing History}. {date 2017};"
       "({issue 21}).",
       "Kristensen, J. (2017). The Merrymount Janson type. Printing History, (21).", "", 1, ""},
      {"{author Poe, E. A.} {title The masque of the red death}. in {container The complete works} (ed. {editor "
       "Harrison, J. A.}) vol. {volume 4} {pages 250–258} ({publisher Thomas Y. Crowell}, {date 1902}).",
       "Poe, E. A. (1902). The masque of the red death. In J. A. Harrison (Ed.), The complete works (Vol. 4, pp. "
       "250–258). Thomas Y. Crowell.",
       "", 0, ""},
      // A group author is named whole, never read as a person's given names.
      {"{author National Center for Education Statistics}. {title Fast response survey system}. {date 2016}.",
       "National Center for Education Statistics. (2016). Fast response survey system.", "", 0, ""},
      // From eight authors on, APA names the first six and the last.
      {"{author Gilbert DG, McClernon JF, Rabinovich NE, Sugai C, Plath LC, Asgaard G, Dickinson D, Botros N}. "
       "{title Effects of quitting smoking}. {container Nicotine Tob Res}. {date 2004};{volume 6}:{pages 249-67}.",
       "Gilbert, D. G., McClernon, J. F., Rabinovich, N. E., Sugai, C., Plath, L. C., Asgaard, G., \u2026 Botros, N. "
       "(2004). Effects of quitting smoking. Nicotine Tob Res, 6, 249–267.",
       "", 1, ""},
      // A quotation opening the title keeps its opening quote, which the reading left outside.
      {"{author Perry, T. S.} \u201c{title PostScript\u201d Prints Anything}. {container IEEE Spectrum}. {date May "
       "1988}, pp {pages 42\u201346}.",
       "Perry, T. S. (1988, May). \u201cPostScript\u201d Prints Anything. IEEE Spectrum, 42\u201346.", "", 1, ""},
      // A book's edition and pages after its title; a place without a publisher;
      // the year that ends a title is the title's.
      {"{author Polakow V}. {title Lives on the edge}, {edition 2nd ed}. {place Chicago}: {publisher University of "
       "Chicago Press}, {date 1993}: {pages 175–84}.",
       "Polakow, V. (1993). Lives on the edge (2nd ed., pp. 175–184). Chicago: University of Chicago Press.", "", 0,
       ""},
      {"{author Clapton, Eric}. {date 1990}. “{title Discovering Robert Johnson}.” Pp. {pages 22–23} in {container "
       "Robert Johnson: The complete recordings}. {place Columbia}.",
       "Clapton, E. (1990). Discovering Robert Johnson. In Robert Johnson: The complete recordings (pp. 22–23). "
       "Columbia.",
       "", 0, ""},
      {"{author Blackwell DL}. {title Summary health statistics: Survey}, {date 2012}. {publisher Centers for Disease "
       "Control}; {date 2014}.",
       "Blackwell, D. L. (2014). Summary health statistics: Survey. Centers for Disease Control.", "", 0, "2012"},
      // A word the reading placed nowhere is lost, and so is the label of a part
      // it did not read ("Vol." without a volume): the entry must stay as typed.
      {"{author Knuth, D. E.} {date 1986}. {title Computers & Typesetting}. Vol. E. {place Reading, Mass.}: "
       "{publisher Addison-Wesley}.",
       "Knuth, D. E. (1986). Computers & Typesetting. Reading, Mass.: Addison-Wesley.", "", 0, "vol"},
      {"{author Soloski, A.} {title Othello}. {container The New York Times}. {date November 20, 2016}, p {issue 5}.",
       "Soloski, A. (2016, November 20). Othello. The New York Times, (5).", "", 1, "p"},
      {"{author Winckler, J.} {title TeX fonts}. in (ed. {editor Clark, M.}) ({publisher Ellis Horwood}, {date "
       "1990}).",
       "Winckler, J. (1990). TeX fonts (M. Clark, Ed.). Ellis Horwood.", "", 0, "in"},
      // The comma before "et al." read with the names is no part of the last.
      {"{author Lee, Anna, Tom Park,} et al. \u201c{title Naps at Noon},\u201d {date 2020}.",
       "Lee, A., Park, T., et al. (2020). Naps at Noon.", "", 0, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.markup);
    const Marked m = marked(row.markup);
    const std::optional<LabelledEntry> entry = apaFormOf(m.text, m.reading);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->apa, row.apa);
    EXPECT_EQ(entry->notes, row.notes);
    EXPECT_EQ(entry->type, row.type);
    const std::vector<std::string> lost = wordsLost(m.text, *entry);
    EXPECT_EQ(lost.empty() ? "" : lost.front(), row.lost);
  }
}

// Styles put punctuation between two named parts; a reading that cuts a
// phrase ("A Study of | Computer Dependency") is not to be written.
TEST(LabelledEntryTest, PartsMeetAtPunctuation) {
  const std::pair<const char*, bool> rows[] = {
      {"{author Shotton, M. A.} {title Computer Addiction? A Study of} {publisher Computer Dependency; Taylor & "
       "Francis}: {place London}, {date 1989}.",
       true},
      {"{author Shotton, M. A.} {title Computer Addiction? A Study of Computer Dependency}; {publisher Taylor & "
       "Francis}: {place London}, {date 1989}.",
       false},
      {"{title Bleeding edge}. {container Printing History} {volume 14} ({date 1991}).", false},
  };
  for (const auto& [markup, splits] : rows) {
    const Marked m = marked(markup);
    EXPECT_EQ(splitsPhrase(m.text, m.reading), splits) << markup;
  }
}

TEST(LabelledEntryTest, NoTitleOrNoDateIsNoEntry) {
  for (const char* markup : {"{author Kernis MH}. {container J Pers Soc Psychol}. {date 1993};{volume 65}.",
                             "{author Kernis MH}. {title There's more to self-esteem}. {container J Pers}."}) {
    const Marked m = marked(markup);
    EXPECT_FALSE(apaFormOf(m.text, m.reading)) << markup;
  }
}

// A publisher's place written after its name, and what a place looks like:
// a few names, their little words aside. Catches a title or an
// organisation's department taken for a place (and dropped with the 7th
// edition's places).
TEST(LabelledEntryTest, PlacesAfterThePublisher) {
  const std::pair<const char*, const char*> after[] = {
      {"Almqvist and Wiksells, Uppsala", "Uppsala"},
      {"Sage, Newbury Park, CA, second edition", "Newbury Park, CA"},
      {"Harbor Press, Frankfurt am Main", "Frankfurt am Main"},
      {"Stanford University, Department of Computer Science", ""},
      {"Sage, Inc.", ""},
      {"Basics; Harbor-Verlag, Berlin", ""},
  };
  for (const auto& [publisher, place] : after) EXPECT_EQ(std::string(placeAfterTheName(publisher)), place) << publisher;
  const std::pair<const char*, bool> places[] = {
      {"New York, NY", true}, {"Newcastle upon Tyne", true}, {"Rio de Janeiro, Brazil", true},
      {"TeX in Practice", false}, {"Boston; London", false}, {"Suite 300, Silver Spring", false},
  };
  for (const auto& [place, looks] : places) EXPECT_EQ(looksLikePlace(place), looks) << place;
}

}  // namespace
}  // namespace quillpaper
