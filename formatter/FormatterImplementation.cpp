#include "formatter/FormatterImplementation.h"

#include <algorithm>
#include <vector>

#include "diagnostics/Procedure.h"
#include "host/PaperProxies.h"
#include "host/ReferenceProxies.h"
#include "strings/StringUtility.h"

namespace QuillFormatAPA::FormatterImplementation {

namespace {

const StaticModule kModule("FormatterImplementation");

const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }

// A zero-based array of Variants, as a literal list of values makes one.
template <class... T>
Array listOf(T... values) {
  return Array::list({Variant(values)...});
}

}  // namespace

// ---- settings --------------------------------------------------------------

std::string getMetaData(const ObjectRef& settings, int16_t edition) {
  std::string chapter, heading1, heading2, heading3, heading4;
  return traced(kModule, "getMetaData", params(arg("settings", settings)), [&](Procedure& proc) {
    proc.local("chapter", chapter);
    proc.local("heading1", heading1);
    proc.local("heading2", heading2);
    proc.local("heading3", heading3);
    proc.local("heading4", heading4);
    const host::CommandRef super(settings);
    proc.step([&] { super.Add("defaultOutputType", "citation"); });
    proc.step([&] { super.Add("outputTypes", listOf("citation")); });
    // Setting numbers and values as the template reads them; 15 and 16 are
    // written in lower case on purpose.
    const std::pair<int16_t, const char*> numbered[] = {{1, "False"}, {5, "False"}, {6, "False"},
                                                        {19, "True"}, {2, "True"},  {4, "False"},
                                                        {14, "True"}, {15, "false"}, {16, "false"}};
    for (const auto& [key, value] : numbered) proc.step([&] { super.Add(key, value); });
    proc.step([&] { chapter = super.buildStyle(true, false, true, false, false, true, false); });
    proc.step([&] { heading1 = super.buildStyle(true, false, true, false, false, true, false); });
    proc.step([&] { heading2 = super.buildStyle(false, false, true, false, false, true, false); });
    // The 7th edition: level 3 flush left in bold italics, level 4 indented
    // in bold.
    if (edition == 7) {
      proc.step([&] { heading3 = super.buildStyle(false, false, true, true, false, true, false); });
      proc.step([&] { heading4 = super.buildStyle(false, true, true, false, false, true, false); });
    } else {
      proc.step([&] { heading3 = super.buildStyle(false, true, true, false, false, true, false); });
      proc.step([&] { heading4 = super.buildStyle(false, true, true, true, false, true, false); });
    }
    proc.step([&] { super.addHeadings(chapter, heading1, heading2, heading3, heading4); });
    const std::pair<int16_t, const char*> last[] = {{3, "True"}, {8, "False"}, {9, "False"}, {20, "True"}};
    for (const auto& [key, value] : last) proc.step([&] { super.Add(key, value); });
    return std::string("APA");
  });
}

void getQLRefMetaData(const ObjectRef& formatterSettings) {
  traced(kModule, "getQLRefMetaData", params(arg("formatterSettings", formatterSettings)), [&](Procedure& proc) {
    const host::FormatterSettingsRef settings(formatterSettings);
    proc.step([&] { settings.setFormat(1); });
    proc.step([&] { settings.setIsSeasonFirst(false); });
    proc.step([&] { settings.setJournalFormat("yyyy"); });
    proc.step([&] { settings.setTooltipTextJournal("Format: 1944"); });
    proc.step([&] { settings.setTooltipTextPeriodical("Format: 1944, June 6 or 1993, Spring"); });
    proc.step([&] { settings.setSameAuthorPrefixInReferenceList("__UNINITIALIZED__"); });
    proc.step([&] { settings.setTwoEditorsIsOnlyCaseHaveNoComma(true); });
    proc.step([&] { settings.setReverseEditors(false); });
    proc.step([&] { settings.setPublishDateFormat("yyyy, mmmm d"); });

    auto reset = [&](int16_t entry, std::vector<NamedArg> named) {
      proc.step([&] { host::OutputTemplateRef(settings.outputTemplates(entry)).Reset(named); });
    };
    // The author template: a reference list shows up to seven authors, from
    // eight on the first six, an ellipsis and the last.
    reset(0, {{"supportAnonAndPseudoAuthors", false},
              {"SquareBracketIsForFirstName", true},
              {"editorTags", "(Comp.),(Ed.),(Trans.)"},
              {"andSeparator", "&"},
              {"twoAuthorsIsOnlyCaseHaveNoComma", false},
              {"reverseFirstOnFootnote", true},
              {"reverseSecondaryAuthors", true},
              {"reversedAuthorUsesComma", true},
              {"reversedAuthorPostfixUsesComma", true},
              {"numAuthorsToTriggerEtAl", int16_t{8}},
              {"numAuthorsToTriggerEtAlCitation", int16_t{6}},
              {"numAuthorsToTriggerEtAlMinimalString", int16_t{6}},
              {"numAuthorsInEtAl", int16_t{7}},
              {"numAuthorsInEtAlMinimalString", int16_t{1}},
              {"etAlUsesElipses", true},
              {"etAlInReferenceList", true},
              {"etAlHasComma", true},
              {"etAlCitationHasComma", true},
              {"editorSeparator", " "},
              {"initialsOnly", true},
              {"initialsUsePeriods", true},
              {"semicolonBetweenGroupAuthors", false},
              {"supportsCompilerAndEditor", false}});

    // Title rules. The rows name a kind of title and three 0/1 flags for the
    // settings object; template 0 takes the rules with the rows of parts of
    // books, and the title templates of books (3) and periodicals (2) are
    // cloned from it for heading capitalisation, each with its own rows.
    const Array bookTitleTypes = listOf("Chapter title,1,1,1", "Reference entry,1,0,0", "Afterword,1,0,0",
                                        "Foreword,1,0,0", "Introduction,1,0,0", "Preface,1,0,0");
    const Array periodicalTitleTypes = listOf("Article title,1,1,1", "Editorial,1,1,0", "Monograph,1,1,0");
    reset(0, {{"titleTypes", bookTitleTypes},
              {"unItalicizeSpeciesAndNamesOfShips", false},
              {"chapterAndWebsiteRule", ""},
              {"capitalizeSubtitle", true},
              {"bookAndArticleRule",
               "Capitalize only the first word of the title and of the subtitle, if any, and any proper nouns. "
               "(APA 6.29)"},
              {"capitalizeHyphenatedWord", false},
              {"sentenceCapitalization", true},
              {"authorTemplate", int16_t{1}},
              {"Format", int16_t{1}}});
    proc.step([&] {
      host::OutputTemplateRef(settings.outputTemplates(3))
          .CloneForHeadingCapitalization(settings.outputTemplates(0), bookTitleTypes);
    });
    proc.step([&] {
      host::OutputTemplateRef(settings.outputTemplates(2))
          .CloneForHeadingCapitalization(settings.outputTemplates(0), periodicalTitleTypes);
    });

    reset(4, {{"cityTooltip", "City, State (e.g., Washington, DC) or City, Country (e.g., London, England)"},
              {"cityInBrackets", false},
              {"outputArticle", false}});
    reset(5, {{"removePublisherAbbreviations", false},
              {"shortenUniversityAndPress", false},
              {"usePublisherUnknown", false},
              {"useAdvancedOptions", true},
              {"supportCoPublisher", false}});
    reset(6, {{"useEnDashForYearRange", true},
              {"noDateString", "n.d."},
              {"supportYearForSure", false},
              {"circa", "ca."},
              {"supportYearGuess", false},
              {"supportInPress", false},
              {"supportForthcoming", false}});
    reset(15, {{"repeatLocationIfInPublisherName", false},
               {"expandAbbreviations", false},
               {"supportPlaceForSure", false},
               {"supportPlaceGuess", false},
               {"supportPlaceNotKnown", false}});
    reset(7, {{"shortenedPage", false},
              {"supportsDOI", true},
              {"supportsNotes", false},
              {"elideZero", false},
              {"usePagePrefix", false},
              {"usePagePrefixInCitations", true},
              {"noPageStr", "n.p."},
              {"chapterPrefix", "Chapter"},
              {"chapterPluralPrefix", "Chapter"},
              {"paraPrefix", "para."},
              {"paraPluralPrefix", "para."},
              {"addDotToAdvancedPrefix", true},
              {"useEnDashForPageRange", true}});
    reset(7, {{"pageTemplate", int16_t{7}}, {"Format", int16_t{1}}});
    reset(10, {{"shortenSeriesInTitle", false},
               {"supportVolsToDate", false},
               {"prefixedVols", true},
               {"overrideDefaultEditorPrefix", false},
               {"volTitleSeparator", ". "},
               {"addPeriodToVol", true},
               {"SupportGeneralEditor", false}});
    reset(11, {{"journalSettings", listOf("Regular,,", "Special issue,,", "Special section,,", "Supplement,,")},
               {"Format", int16_t{1}}});
    reset(0, {{"Format", int16_t{1}},
              {"endsEditionWithEd", true},
              {"useTrans", false},
              {"useSer", true},
              {"useDots", false},
              {"publisherTemplate", int16_t{12}},
              {"pageTemplate", int16_t{5}},
              {"authorTemplate", int16_t{7}}});
    reset(13, {{"DOIPrefix", "doi:"},
               {"usesRetrievedPrefix", true},
               {"SupportsWebsiteAsEric", true},
               {"SupportsWebsiteAsDatabase", false}});
    // The 7th edition, where the host asks for it: up to 20 authors (from 21
    // the first 19, an ellipsis and the last), DOIs as addresses, an address
    // without "Retrieved from", a publisher without its place.
    int16_t edition = 6;
    proc.step([&] { edition = settings.edition(); });
    if (edition == 7) {
      reset(0, {{"numAuthorsToTriggerEtAl", int16_t{21}}, {"numAuthorsInEtAl", int16_t{20}}});
      reset(13, {{"DOIPrefix", "https://doi.org/"}, {"usesRetrievedPrefix", false}});
      reset(4, {{"showsPublisherPlace", false}});
    }
    reset(16, {{"shortenedMicroform", false},
               {"supportsAdvancedCD", false},
               {"useSquareBrackets", true},
               {"supports", "Digital file,Monograph"}});
  });
}

// ---- start-up form, chapters, citation template -----------------------------

void initializeSectionInstructions(const ObjectRef& super, Array& sectionInstructions) {
  std::vector<std::string> instructions;
  traced(kModule, "initializeSectionInstructions",
         params(arg("super", super), arg("sectionInstructions", sectionInstructions)), [&](Procedure& proc) {
           proc.local("instructions", instructions);
           // Code 3 nests a section under "Body of the paper".
           const std::pair<const char*, int16_t> sections[] = {
               {"Title Page", 0},    {"Table of Contents", 0}, {"List of Tables", 0}, {"List of Figures", 0},
               {"Abstract", 0},      {"Body of the paper", 0}, {"Introduction", 3},   {"Method", 3},
               {"Results", 3},       {"Discussion", 3},        {"References", 0},     {"Footnotes", 0},
               {"Tables", 0},        {"Figures", 0},           {"Appendix", 0}};
           instructions.assign(std::size(sections), std::string());
           const host::CommandRef command(super);
           for (size_t i = 0; i < std::size(sections); ++i)
             proc.step([&] { instructions[i] = command.buildInstruction(sections[i].first, sections[i].second); });
           proc.step([&] { sectionInstructions = stringArray(instructions); });
         });
}

void initTitleInstructions(int16_t PaperType, Array& TitleInstructions) {
  traced(kModule, "initTitleInstructions",
         params(arg("PaperType", PaperType), arg("TitleInstructions", TitleInstructions)), [&](Procedure& proc) {
           const std::string titleHint = "The recommended length for a title is no more than 12 words. (APA 2.01)^^^";
           const std::string authorHint =
               "The preferred form of an author's name is first name, middle initial(s), and last name... Omit all "
               "titles (e.g., Dr, Professor) and degrees (e.g. PhD, PsyD, EdD). (APA 2.02)^^^";
           const std::string affiliationHint =
               "Identifies the location where the author or authors were when the research was conducted. When an "
               "author has no institutional affiliation, list the city and state of residence. (APA 2.02)^^^";
           if (PaperType >= 0 && PaperType <= 2) {
             proc.step([&] {
               TitleInstructions = stringArray(str().toStringArray(titleHint + "Title", authorHint + "Author", "College"));
             });
           } else if (PaperType == 3) {
             proc.step([&] {
               TitleInstructions = stringArray(str().toStringArray(
                   titleHint + "Title", authorHint + "Author", affiliationHint + "Affiliation",
                   authorHint + "2nd Author", affiliationHint + "2nd Author's Affil."));
             });
           }
         });
}

void getStartupFormSettings(const ObjectRef& IntArrayProvider, Array& postGradIndices, Array& defaultAlwaysOn,
                            Array& defaultPostgrad, int16_t& defaultPaperType) {
  traced(kModule, "getStartupFormSettings",
         params(arg("IntArrayProvider", IntArrayProvider), arg("postGradIndices", postGradIndices),
                arg("defaultAlwaysOn", defaultAlwaysOn), arg("defaultPostgrad", defaultPostgrad),
                arg("defaultPaperType", defaultPaperType)),
         [&](Procedure& proc) {
           const host::CommandRef provider(IntArrayProvider);
           // The lists and the title page's paper type are for postgraduates only.
           proc.step([&] { provider.IntArray(postGradIndices, listOf(int16_t{1}, int16_t{2}, int16_t{3})); });
           proc.step([&] {
             provider.IntArray(defaultAlwaysOn, listOf(int16_t{0}, int16_t{4}, int16_t{5}, int16_t{6}, int16_t{7},
                                                       int16_t{8}, int16_t{9}, int16_t{10}));
           });
           proc.step([&] { provider.IntArray(defaultPostgrad, listOf(int16_t{1}, int16_t{2}, int16_t{3})); });
           // defaultPaperType is the caller's to keep.
         });
}

void InitializeCitationTemplate(const ObjectRef& theCitationOutputTemplate, bool supportsSubwork,
                                const std::string& emailKey, bool useWebsiteWhenNoAuthorAndDateFlag) {
  traced(kModule, "InitializeCitationTemplate",
         params(arg("theCitationOutputTemplate", theCitationOutputTemplate), arg("supportsSubwork", supportsSubwork),
                arg("emailKey", emailKey), arg("useWebsiteWhenNoAuthorAndDateFlag", useWebsiteWhenNoAuthorAndDateFlag)),
         [&](Procedure& proc) {
           proc.step([&] {
             Variant separator[] = {", "};
             NamedArg named[] = {{"useNoDate", false},
                                 {"volPrefix", ""},
                                 {"useAuthorOrPeriodicalTitle", true},
                                 {"useTitle", false},
                                 {"useOriginalYear", true},
                                 {"titleIsQuoted", false},
                                 {"useEmailKey", emailKey},
                                 {"useDegree", false},
                                 {"supportsSubwork", supportsSubwork},
                                 {"useWebsiteWhenNoAuthorAndDate", useWebsiteWhenNoAuthorAndDateFlag}};
             host::OutputTemplateRef(theCitationOutputTemplate).Reset(separator, named);
           });
         });
}

void StartNewChapter(const ObjectRef& param) {
  traced(kModule, "StartNewChapter", params(arg("param", param)), [&](Procedure& proc) {
    const host::InstructionBuilderRef builder(param);
    proc.step([&] { builder.addStyle("-2"); });
    proc.step([&] { builder.addText("CHAPTER "); });
    proc.step([&] { builder.AddAutoNumber("chapter"); });
    proc.step([&] { builder.addText(" "); });
    proc.step([&] { builder.addOneClick("Click here in main text and type your chapter title"); });
    proc.step([&] { builder.addCarriageReturns(1); });
    proc.step([&] { builder.addStyle("Paragraph"); });
    proc.step([&] { builder.addOneClick("Click here and type your chapter"); });
  });
}

bool UpdateFrontMatter() {
  return traced(kModule, "UpdateFrontMatter[Get]", [](Procedure&) { return false; });
}

void InitializeMain(const ObjectRef& Main) {
  traced(kModule, "InitializeMain", params(arg("Main", Main)), [](Procedure&) {});
}

// ---- reference type classification -------------------------------------------------

namespace {

// The signs that settle a type on their own, tested in this order.
constexpr std::string_view kNonPeriodicalSigns[] = {"Trans.", "(Ed.),", "Vols.", "Vol.", "Rev.", "ed.,", "Enl.",
                                                    "Web site:"};
constexpr std::string_view kElectronicSourceSigns[] = {", personal communication", "[Electronic mailing", "[Web log post",
                                                       "[Web log comment", "[Online forum", "[Video file"};

bool isNumeric(std::string_view text) {
  double d = 0;
  return parseNumber(text, d);
}

// The character at 1-based position `pos`, or "" past either end.
std::string charAt(const std::string& text, int32_t pos) { return pos < 1 ? "" : str().mid(text, pos, 1); }

}  // namespace

int16_t GetReferenceType(const std::string& entry, const std::string& title, const std::string& subTitle,
                         const ObjectRef& controller) {
  return traced(kModule, "GetReferenceType",
                params(arg("entry", entry), arg("title", title), arg("subTitle", subTitle),
                       arg("controller", controller)),
                [&](Procedure& proc) {
                  std::string copy = entry;
                  int16_t type = 0;
                  bool fired = false;
                  proc.local("copy", copy);
                  proc.local("type", type);
                  // An identifier says nothing of the type; what stands before it does.
                  proc.step([&] {
                    str().cutAtMarker(copy, "doi:", true);
                    str().trimTrailing(copy, ".");
                  });
                  proc.step([&] { fired = ReferenceTypeHasDistinguisingFeature(copy, type); });
                  if (fired) return type;
                  proc.step([&] { fired = DistinguishedByIn(copy, title, type); });
                  if (fired) return type;
                  proc.step([&] { fired = DistinguishedByPage(copy, type); });
                  if (fired) return type;
                  proc.step([&] { str().cutAtMarker(copy, "Retrieved", true); });
                  proc.step([&] { fired = EndsWithAPage(controller, copy, type); });
                  if (fired) return type;
                  proc.step([&] { fired = DistinguishedByPublisher(copy, type); });
                  if (fired) return type;
                  // Past the author and the date: ". Title..." or, after a bracketed
                  // description, another parenthesis first.
                  proc.step([&] {
                    str().dropThroughMarker(copy, ")");
                    str().trimLeading(copy, ".", true);
                    if (str().beginsWith(copy, "(")) {
                      str().dropThroughMarker(copy, ")");
                      str().trimLeading(copy, ".", true);
                    }
                  });
                  bool opensWithTitle = false;
                  proc.step([&] {
                    // Every text begins with an empty title.
                    opensWithTitle = str().beginsWith(copy, title) || str().beginsWith(copy, "In ");
                  });
                  // "@" in the decorated title: a periodical's name follows the title.
                  type = opensWithTitle ? (str().contains(title, "@") ? 1 : 0) : 1;
                  return type;
                });
}

bool ReferenceTypeHasDistinguisingFeature(const std::string& entry, int16_t& theModelType) {
  return traced(kModule, "ReferenceTypeHasDistinguisingFeature",
                params(arg("entry", entry), arg("theModelType", theModelType)), [&](Procedure& proc) {
                  bool found = false;
                  proc.step([&] {
                    // All eight are tested; "Web site:" makes an entry non-periodical
                    // before any electronic-source test is reached.
                    for (std::string_view sign : kNonPeriodicalSigns) found |= str().containsFrom(entry, sign, 1);
                  });
                  if (found) {
                    theModelType = 0;
                    return true;
                  }
                  proc.step([&] {
                    found = str().beginsWith(entry, "Editorial:") || str().contains(entry, "Advance online publication") ||
                            str().contains(entry, "Abstract retrieved") || hasPeriodicalNumber(entry);
                  });
                  if (found) {
                    theModelType = 1;
                    return true;
                  }
                  proc.step([&] {
                    for (std::string_view sign : kElectronicSourceSigns) found |= str().contains(entry, sign);
                  });
                  if (found) {
                    theModelType = 4;
                    return true;
                  }
                  return false;
                });
}

bool hasPeriodicalNumber(const std::string& text) {
  return traced(kModule, "hasPeriodicalNumber", params(arg("text", text)), [&](Procedure& proc) {
    bool found = false;
    proc.step([&] {
      // An entry that opens with its parenthesis gets no answer here. Figures
      // are single bytes in UTF-8, so the text is read byte by byte.
      const auto figure = [&](size_t i) { return i < text.size() && text[i] >= '0' && text[i] <= '9'; };
      size_t at = text.find('(');
      if (at == std::string::npos || at == 0) return;
      for (; at != std::string::npos; at = text.find('(', at + 1)) {
        if (figure(at - 1) && figure(at + 1)) {
          found = true;
          return;
        }
      }
    });
    return found;
  });
}

bool DistinguishedByIn(const std::string& entry, const std::string& title, int16_t& theModelType) {
  return traced(kModule, "DistinguishedByIn",
                params(arg("entry", entry), arg("title", title), arg("theModelType", theModelType)),
                [&](Procedure& proc) {
                  std::string copy = entry;
                  bool found = false;
                  proc.local("copy", copy);
                  proc.step([&] { found = str().dropThroughMarker(copy, ". In "); });
                  if (!found) return false;
                  // An editor's initial ("In J. Smith (Ed.)") or the title: a part of a book.
                  proc.step([&] {
                    theModelType = (!title.empty() && str().beginsWith(copy, title)) || charAt(copy, 2) == "." ? 0 : 1;
                  });
                  return true;
                });
}

bool DistinguishedByPage(const std::string& entry, int16_t& theModelType) {
  return traced(kModule, "DistinguishedByPage", params(arg("entry", entry), arg("theModelType", theModelType)),
                [&](Procedure& proc) {
                  std::string copy = entry;
                  int32_t p = 0;
                  proc.local("copy", copy);
                  proc.local("p", p);
                  proc.step([&] { str().cutAtMarker(copy, "Retrieved from", false); });
                  proc.step([&] {
                    p = str().find(copy, ", pp.");
                    if (p == 0) {
                      str().dropThroughMarker(copy, "Comp.");
                      p = str().find(copy, ", p.");
                    }
                  });
                  if (p == 0) return false;
                  // The opening parenthesis before the comma is the test, as intended.
                  proc.step([&] { theModelType = p == 1 ? 1 : charAt(copy, p - 1) == "(" ? 0 : 1; });
                  return true;
                });
}

bool EndsWithAPage(const ObjectRef& controller, const std::string& entry, int16_t& theModelType) {
  return traced(kModule, "EndsWithAPage",
                params(arg("controller", controller), arg("entry", entry), arg("theModelType", theModelType)),
                [&](Procedure& proc) {
                  std::string last;
                  bool page = false;
                  proc.local("last", last);
                  proc.step([&] {
                    const std::vector<std::string> sentences = str().split(entry, ".", -1);
                    const std::vector<std::string> pieces = str().split(sentences.back(), ",", -1);
                    last = pieces.back();
                  });
                  proc.step([&] { page = host::ControllerRef(controller).DefaultOutputTemplate().isPage(last); });
                  if (!page) return false;
                  theModelType = 1;
                  return true;
                });
}

bool DistinguishedByPublisher(const std::string& entry, int16_t& theModelType) {
  return traced(kModule, "DistinguishedByPublisher", params(arg("entry", entry), arg("theModelType", theModelType)),
                [&](Procedure& proc) {
                  bool found = false;
                  proc.step([&] {
                    if (str().contains(entry, "(in press)")) return;
                    // Place, colon, publisher.
                    found = str().contains(str().split(entry, ".", -1).back(), ":");
                  });
                  if (!found) return false;
                  theModelType = 0;
                  return true;
                });
}

bool startsWithEditor(const std::string& text) {
  return traced(kModule, "startsWithEditor", params(arg("text", text)), [&](Procedure& proc) {
    return proc.step([&] {
      const bool ed = str().beginsWith(text, "Ed");
      const bool comp = str().beginsWith(text, "Comp");
      const bool trans = str().beginsWith(text, "Trans");
      return ed || comp || trans;
    });
  });
}

bool isPossibleBookDate(const std::string& text, bool isYear) {
  return traced(kModule, "isPossibleBookDate", params(arg("text", text), arg("isYear", isYear)),
                [&](Procedure& proc) { return proc.step([&] { return isNumeric(text) || isYear || text == "in press"; }); });
}

bool ReferenceIsInFormatType(const std::string& str_, std::string& title, int16_t decoratedType,
                             const ObjectRef& controller) {
  return traced(kModule, "ReferenceIsInFormatType",
                params(arg("str", str_), arg("title", title), arg("decoratedType", decoratedType),
                       arg("controller", controller)),
                [&](Procedure& proc) {
                  std::string copy = str_;
                  bool answer = false;
                  proc.local("copy", copy);
                  // A quoted title and all after it are not looked at.
                  proc.step([&] {
                    str().cutAtMarker(copy, "\u201C", false);
                    str().cutAtMarker(copy, "\"", false);
                  });
                  if (str().beginsWith(copy, "Editorial:") || str().contains(copy, "Web site: http:")) return true;
                  std::vector<std::string> pieces;
                  proc.step([&] {
                    str().dropThroughMarker(copy, "(");
                    if (startsWithEditor(copy)) str().dropThroughMarker(copy, "(");
                    pieces = str().split(copy, ").", -1);
                  });
                  const host::OutputTemplateRef dates = host::ControllerRef(controller).DefaultOutputTemplate();
                  for (std::string piece : pieces) {
                    bool qualifies = false;
                    proc.step([&] {
                      str().dropThroughMarker(piece, "(");
                      str().cutAtMarker(piece, ",", true);
                      const bool year = dates.isYear(piece);
                      qualifies = isPossibleBookDate(piece, year) || isDate(piece);
                    });
                    if (qualifies) return true;
                  }
                  proc.step([&] { answer = str().contains(copy, ", personal communication"); });
                  return answer;
                });
}

bool firstItalicizedInReferenceIsTitle(const std::string& str_) {
  return traced(kModule, "firstItalicizedInReferenceIsTitle", params(arg("str", str_)),
                [](Procedure&) { return true; });
}

// ---- retrieval statement --------------------------------------------------------------

void parseAndRemoveWeb(std::string& str_, std::string& website, std::string& accessDate) {
  traced(kModule, "parseAndRemoveWeb",
         params(arg("str", str_), arg("website", website), arg("accessDate", accessDate)), [&](Procedure& proc) {
           std::vector<std::string> parts;
           proc.local("parts", parts);
           proc.step([&] { parts = str().split(str_, "http://", 2); });
           if (parts[1].empty()) {
             proc.step([&] { parts = str().split(str_, "doi:", 2); });
             if (!parts[1].empty()) {
               website = str().trimmed(parts[1]);
               str_ = parts[0];
               return;
             }
             proc.step([&] { parts = str().split(str_, "Retrieved from", 2); });
             if (parts[1].empty()) return;
             proc.step([&] {
               // Each strip takes its text off what the one before left, blanks aside.
               std::string address = str().trimmed(parts[1]);
               for (const char* lead : {"ERIC database", ".", "("}) {
                 str().stripLeading(address, lead);
                 address = str().trimmed(address);
               }
               str().stripTrailing(address, ")");
               website = str().trimmed(address);
               str_ = parts[0];
             });
             return;
           }
           std::string lead = str().trimmed(parts[0]);
           proc.local("lead", lead);
           website = str().trimmed(parts[1]);
           if (str().length(lead) == 14) {
             proc.step([&] { str().stripLeading(lead, "Retrieved from"); });
           } else {
             bool stripped = false;
             proc.step([&] { stripped = str().stripTrailing(lead, "Retrieved from"); });
             if (!stripped) {
               // "Retrieved October 12, 2008, from": the date goes to accessDate.
               proc.step([&] {
                 const std::string kept = lead;
                 const size_t at = str().lastIndexOf(lead, "Retrieved");
                 std::string rest = at == std::string::npos ? lead : lead.substr(at);
                 str().stripLeading(rest, "Retrieved");
                 str().stripTrailing(rest, "from");
                 rest = str().trimmed(rest);
                 str().trimTrailing(rest, ",", true);
                 if (isDate(rest)) {
                   accessDate = rest;
                   lead = at == std::string::npos ? "" : lead.substr(0, at);
                 } else {
                   lead = kept;
                 }
               });
             }
           }
           str_ = lead;
         });
}

}  // namespace QuillFormatAPA::FormatterImplementation
