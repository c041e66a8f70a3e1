#include "builder/DocumentBuilder.h"

#include <utility>

#include "builder/SeventhEdition.h"
#include "diagnostics/Procedure.h"
#include "host/PaperProxies.h"
#include "strings/StringUtility.h"
#include "tables/TableAnova.h"
#include "tables/TableCorrelation.h"
#include "tables/TableHierarchRegression.h"
#include "tables/TableLisrel.h"
#include "tables/TableModelComparison.h"
#include "tables/TableMultilevelModel.h"
#include "tables/TableNoncanonical.h"
#include "tables/TableRegression.h"
#include "tables/TableWord.h"

namespace QuillFormatAPA::DocumentBuilder {

namespace {

// The document-builder object of the build in progress (reported as "params").
thread_local ObjectRef builderParams;
const StaticModule kModule("DocumentBuilder", [](const VariableReport& r) { r.variable("params", builderParams); });

const QuillStrings::StringUtility& str() { return QuillStrings::strings(); }
host::DocumentBuilderRef builder() { return host::DocumentBuilderRef(builderParams); }

constexpr std::string_view kCrLf = "\r\n";
constexpr std::string_view kTitlePlaceholder = "Double click and select me to enter an abbreviated title";
// The labelled running head may be this long (APA 8.03).
constexpr int16_t kRunningHeadLimit = 50;
// The key that stands for both authors on one title-page line.
const std::string kBothAuthors = std::string("Author") + "2nd Author";

std::string withCrLf(std::string_view text) { return std::string(text) + std::string(kCrLf); }

std::string titlePageHint(const std::string& key) {
  static const std::pair<const char*, const char*> hints[] = {
      {"Author", "The primary author(s) of this paper"},
      {"Title", "The title of your paper"},
      {"College", "The College which grants your degree"},
      {"Affiliation",
       "Institution where research was conducted, or use author's city and state of residence (APA 2.02)"},
      {"2nd Author's Affil.",
       "Institution where research was conducted, or use author's city and state of residence (APA 2.02)"},
  };
  for (const auto& [k, hint] : hints)
    if (key == k) return hint;
  return "";
}

// A page procedure: adds a page to `section` and fills it.
template <class Fill>
void addFilledPage(Procedure& proc, const host::SectionRef& section, Fill fill) {
  ObjectRef page;
  proc.step([&] { page = section.addPage(); });
  proc.step([&] { fill(page); });
}

void addEmptyPage(Procedure& proc, const host::SectionRef& section) {
  proc.step([&] { section.addPage(); });
}

}  // namespace

// ---- the frame ---------------------------------------------------------------

void InitializeBuilder(const ObjectRef& theParam, const ObjectRef& super) {
  traced(kModule, "InitializeBuilder", params(arg("theParam", theParam), arg("super", super)), [&](Procedure& proc) {
    bool outputTemplate = false;
    proc.local("outputTemplate", outputTemplate);
    const Holding held(builderParams);
    proc.step([&] { builderParams = theParam; });
    proc.step([&] { outputTemplate = builder().outputTemplate(); });
    proc.step([&] { AddTitlePageMetadata(builderParams, outputTemplate, super); });
    proc.step([&] { AddPreliminariesMetadata(builderParams, outputTemplate, super); });
    proc.step([&] { AddMainTextMetadata(builderParams, outputTemplate, super); });
    proc.step([&] { AddBackMatter(builderParams, outputTemplate, super); });
    proc.step([&] { builderParams = ObjectRef(); });
  });
}

std::string runningHead(bool outputPrefix) {
  return traced(kModule, "runningHead[Get]", params(arg("outputPrefix", outputPrefix)), [&](Procedure& proc) {
    std::string title;
    proc.local("title", title);
    proc.step([&] { title = str().trimmed(builder().UserConfigurationValue("Title")); });
    if (title.empty()) title = kTitlePlaceholder;
    title = str().upper(title);
    // The label keeps its own case.
    if (outputPrefix) title = "Running head: " + title;
    return title;
  });
}

std::string header(const ObjectRef& super, bool outputPrefix) {
  return traced(kModule, "header[Get]", params(arg("super", super), arg("outputPrefix", outputPrefix)),
                [&](Procedure& proc) {
                  std::string result;
                  bool titled = false;
                  // A blank title is as good as none: the header then shows the placeholder.
                  proc.step([&] { titled = !str().trimmed(builder().UserConfigurationValue("Title")).empty(); });
                  // Code 2: built from a configured title; code 3: still the placeholder.
                  const int16_t code = titled ? 2 : 3;
                  // The 7th edition: no label, and a student paper's header is its page
                  // number alone.
                  int16_t edition = 6;
                  proc.step([&] { edition = builder().edition(); });
                  const std::string head = edition == 7 ? seventh::runningHead(builder()) : runningHead(outputPrefix);
                  proc.step([&] { result = host::CommandRef(super).buildPageHeader(head, code); });
                  return result;
                });
}

void AddTitlePageMetadata(const ObjectRef& builderObject, bool outputTemplate, const ObjectRef& super) {
  traced(kModule, "AddTitlePageMetadata",
         params(arg("builder", builderObject), arg("outputTemplate", outputTemplate), arg("super", super)),
         [&](Procedure& proc) {
           ObjectRef section;
           proc.local("section", section);
           proc.step([&] { section = host::DocumentBuilderRef(builderObject).AddSection(0, 0, header(super, true)); });
           addFilledPage(proc, host::SectionRef(section), [&](const ObjectRef& page) { AddTitlePage(page, outputTemplate); });
         });
}

void AddPreliminariesMetadata(const ObjectRef& builderObject, bool outputTemplate, const ObjectRef& super) {
  traced(kModule, "AddPreliminariesMetadata",
         params(arg("builder", builderObject), arg("outputTemplate", outputTemplate), arg("super", super)),
         [&](Procedure& proc) {
           ObjectRef section;
           proc.local("section", section);
           proc.step([&] { section = host::DocumentBuilderRef(builderObject).AddSection(1, 4, header(super, false)); });
           const host::SectionRef s(section);
           addFilledPage(proc, s, [](const ObjectRef& page) { AddTOCPage(page); });
           addFilledPage(proc, s, [](const ObjectRef& page) { AddListOfTablesPage(page); });
           addFilledPage(proc, s, [](const ObjectRef& page) { AddListOfFiguresPage(page); });
           addFilledPage(proc, s, [&](const ObjectRef& page) { AddAbstractPage(page, outputTemplate); });
         });
}

void AddMainTextMetadata(const ObjectRef& builderObject, bool outputTemplate, const ObjectRef& super) {
  traced(kModule, "AddMainTextMetadata",
         params(arg("builder", builderObject), arg("outputTemplate", outputTemplate), arg("super", super)),
         [&](Procedure& proc) {
           ObjectRef section;
           bool addBody = false;
           proc.local("section", section);
           proc.local("addBody", addBody);
           const host::DocumentBuilderRef b(builderObject);
           proc.step([&] { section = b.AddSection(5, 10, header(super, false), false); });
           proc.step([&] { addBody = b.part(5); });
           const host::SectionRef s(section);
           addEmptyPage(proc, s);  // part 5 stays empty
           addFilledPage(proc, s, [&](const ObjectRef& page) { AddIntroductionPage(page, outputTemplate, addBody); });
           // Either way three pages follow, so that part numbers never shift.
           if (addBody) {
             addFilledPage(proc, s, [&](const ObjectRef& page) { AddMethodPage(page, outputTemplate); });
             addFilledPage(proc, s, [&](const ObjectRef& page) { AddResultsPage(page, outputTemplate); });
             addFilledPage(proc, s, [&](const ObjectRef& page) { AddDiscussionPage(page, outputTemplate); });
           } else {
             for (int i = 0; i < 3; ++i) addEmptyPage(proc, s);
           }
           addFilledPage(proc, s, [](const ObjectRef& page) { AddReferencesPage(page); });
         });
}

void AddBackMatter(const ObjectRef& builderObject, bool outputTemplate, const ObjectRef& super) {
  traced(kModule, "AddBackMatter",
         params(arg("builder", builderObject), arg("outputTemplate", outputTemplate), arg("super", super)),
         [&](Procedure& proc) {
           ObjectRef section;
           proc.local("section", section);
           proc.step(
               [&] { section = host::DocumentBuilderRef(builderObject).AddSection(11, 14, header(super, false), false); });
           const host::SectionRef s(section);
           addFilledPage(proc, s, [&](const ObjectRef& page) { AddFootnotesPage(page, outputTemplate); });
           addFilledPage(proc, s, [&](const ObjectRef& page) { AddTablesPage(page, outputTemplate); });
           addFilledPage(proc, s, [&](const ObjectRef& page) { AddFiguresPage(page, outputTemplate); });
           addFilledPage(proc, s, [&](const ObjectRef& page) { AddAppendixPage(page, outputTemplate); });
         });
}

// ---- the title page ---------------------------------------------------------------

void AddTitlePage(const ObjectRef& page, bool outputTemplate) {
  traced(kModule, "AddTitlePage", params(arg("page", page), arg("outputTemplate", outputTemplate)),
         [&](Procedure& proc) {
           int16_t n = 0;
           int16_t paperType = 0;
           proc.local("n", n);
           proc.local("paperType", paperType);
           const host::PageRef p(page);
           int16_t edition = 6;
           proc.step([&] { edition = builder().edition(); });
           if (edition == 7) {
             proc.step([&] { seventh::AddTitlePage(builder(), page, outputTemplate); });
             return;
           }
           // The limit applies to the labelled form, "Running head: " included.
           proc.step([&] { n = Variant(str().length(runningHead(true))).toInteger(); });
           if (n > kRunningHeadLimit) {
             proc.step([&] {
               p.addOneClick("WARNING: Your Running head is currently " + std::to_string(n) +
                             " characters long, counting letters, spaces and");
             });
             proc.step([&] {
               p.addOneClick(
                   "punctuation. It must be 50 characters or less (APA 8.03). Double click the page headers to fix "
                   "them.");
             });
           }
           proc.step([&] { p.addStyle("Front Matter"); });
           proc.step([&] { p.addCarriageReturns(3); });
           proc.step([&] { paperType = builder().PaperType(); });
           if (paperType != 3) proc.step([&] { p.addCarriageReturns(2); });
           proc.step([&] { AddTitlePageLine(page, "Title", true); });
           if (paperType != 3) {
             proc.step([&] { AddTitlePageLine(page, "Author", true); });
             proc.step([&] { AddTitlePageLine(page, "College", true); });
             return;
           }
           bool secondAuthor = false;
           bool sameAffiliation = false;
           proc.step([&] { secondAuthor = !builder().UserConfigurationValue("2nd Author").empty(); });
           if (secondAuthor) {
             proc.step([&] {
               const host::DocumentBuilderRef b = builder();
               sameAffiliation = str().lower(str().trimmed(b.UserConfigurationValue("Affiliation"))) ==
                                 str().lower(str().trimmed(b.UserConfigurationValue("2nd Author's Affil.")));
             });
           }
           if (secondAuthor && sameAffiliation) {
             proc.step([&] { AddTitlePageLine(page, kBothAuthors, true); });
             proc.step([&] { AddTitlePageLine(page, "Affiliation", true); });
           } else {
             proc.step([&] { AddTitlePageLine(page, "Author", true); });
             proc.step([&] { AddTitlePageLine(page, "Affiliation", true); });
             if (secondAuthor) {
               proc.step([&] { AddTitlePageLine(page, "2nd Author", true); });
               proc.step([&] { AddTitlePageLine(page, "2nd Author's Affil.", true); });
             }
           }
           proc.step([&] { AddAuthorNote(page, outputTemplate); });
         });
}

void AddTitlePageLine(const ObjectRef& page, const std::string& key, bool addCarriageReturn) {
  traced(kModule, "AddTitlePageLine",
         params(arg("page", page), arg("key", key), arg("addCarriageReturn", addCarriageReturn)), [&](Procedure& proc) {
           std::string value;
           proc.local("value", value);
           const host::PageRef p(page);
           if (key == kBothAuthors) {
             // Never empty: two missing authors still give " and ".
             proc.step([&] {
               const host::DocumentBuilderRef b = builder();
               value = b.UserConfigurationValue("Author") + " and " + b.UserConfigurationValue("2nd Author");
             });
           } else {
             proc.step([&] { value = builder().UserConfigurationValue(key); });
           }
           if (!value.empty())
             proc.step([&] { p.addText(value); });
           else
             proc.step([&] { p.addOneClick("[" + titlePageHint(key) + "]"); });
           if (addCarriageReturn) proc.step([&] { p.addCarriageReturns(1); });
         });
}

void AddAuthorNote(const ObjectRef& page, bool outputTemplate) {
  traced(kModule, "AddAuthorNote", params(arg("page", page), arg("outputTemplate", outputTemplate)),
         [&](Procedure& proc) {
           const host::PageRef p(page);
           proc.step([&] { p.addCarriageReturns(1); });
           proc.step([&] { p.addText("Author Note" + std::string(kCrLf) + std::string(kCrLf)); });
           if (!outputTemplate) return;
           proc.step([&] { addDepartmentalAffiliation(page); });
           proc.step([&] { p.addCarriageReturns(1); });
           proc.step([&] { changesOfAffiliation(page); });
           proc.step([&] { p.addCarriageReturns(1); });
           proc.step([&] { acknowledgements(page); });
           proc.step([&] { p.addCarriageReturns(1); });
           proc.step([&] { personToContact(page); });
         });
}

void addDepartmentalAffiliation(const ObjectRef& page) {
  traced(kModule, "addDepartmentalAffiliation", params(arg("page", page)), [&](Procedure& proc) {
    const host::PageRef p(page);
    bool secondAuthor = false;
    proc.step([&] { p.addStyle("-1"); });
    proc.step([&] { AddTitlePageLine(page, "Author", false); });
    proc.step([&] { p.addText(", "); });
    proc.step([&] { AddTitlePageLine(page, "Affiliation", false); });
    proc.step([&] { secondAuthor = !builder().UserConfigurationValue("2nd Author").empty(); });
    if (secondAuthor) {
      proc.step([&] { p.addText("; "); });
      proc.step([&] { AddTitlePageLine(page, "2nd Author", false); });
      proc.step([&] { p.addText(", "); });
      proc.step([&] { AddTitlePageLine(page, "2nd Author's Affil.", false); });
    }
    proc.step([&] { p.addText("."); });
  });
}

void changesOfAffiliation(const ObjectRef& page) {
  traced(kModule, "changesOfAffiliation", params(arg("page", page)), [&](Procedure& proc) {
    const host::PageRef p(page);
    proc.step([&] { AddTitlePageLine(page, "Author", false); });
    proc.step([&] { p.addText(" is now at "); });
    proc.step([&] { p.addOneClick("[New affiliation]"); });
    proc.step([&] { p.addOneClick("Delete this paragraph if affiliation has not changed"); });
  });
}

void acknowledgements(const ObjectRef& page) {
  traced(kModule, "acknowledgements", params(arg("page", page)), [&](Procedure& proc) {
    const host::PageRef p(page);
    proc.step([&] { p.addOneClick("If there are special circumstances or conflicts of interest, disclose them here"); });
    proc.step(
        [&] { p.addOneClick("Identify financial support for your study, colleagues who assisted, and personal thanks"); });
  });
}

void personToContact(const ObjectRef& page) {
  traced(kModule, "personToContact", params(arg("page", page)), [&](Procedure& proc) {
    const host::PageRef p(page);
    proc.step([&] { p.addText("Correspondence concerning this article should be addressed to "); });
    proc.step([&] { AddTitlePageLine(page, "Author", false); });
    proc.step([&] { p.addText(", "); });
    proc.step([&] { AddTitlePageLine(page, "Affiliation", false); });
    proc.step([&] { p.addText(", "); });
    proc.step([&] { p.addOneClick("[Place]"); });
    proc.step([&] { p.addText(", "); });
    proc.step([&] { p.addOneClick("[State]"); });
    proc.step([&] { p.addText(" "); });
    proc.step([&] { p.addOneClick("[Zipcode]"); });
    proc.step([&] { p.addText(withCrLf(".")); });
    proc.step([&] { p.addText("E-mail: "); });
    proc.step([&] { p.addOneClick("[name@university.edu]"); });
  });
}

// ---- body and back matter ---------------------------------------------------------

void addNonBoldPage(const ObjectRef& page, const std::string& title, const std::string& description,
                    bool outputTemplate) {
  traced(kModule, "addNonBoldPage",
         params(arg("page", page), arg("title", title), arg("description", description),
                arg("outputTemplate", outputTemplate)),
         [&](Procedure& proc) {
           const host::PageRef p(page);
           int16_t edition = 6;
           proc.step([&] { edition = builder().edition(); });
           proc.step([&] { p.addStyle("-2"); });
           // The 7th edition sets section labels in bold, as its headings.
           if (edition == 7)
             proc.step([&] { p.addText(withCrLf(title)); });
           else
             proc.step([&] { p.addTextToggleBold(withCrLf(title)); });
           proc.step([&] { p.addStyle("-1"); });
           if (outputTemplate) proc.step([&] { p.addOneClick(description); });
         });
}

void AddSubSection(const ObjectRef& page, const std::string& heading, const std::string& Text, bool outputTemplate,
                   int16_t editingHintId) {
  traced(kModule, "AddSubSection",
         params(arg("page", page), arg("heading", heading), arg("Text", Text), arg("outputTemplate", outputTemplate),
                arg("editingHintId", editingHintId)),
         [&](Procedure& proc) {
           const host::PageRef p(page);
           proc.step([&] { p.addStyle("-3"); });
           proc.step([&] { p.addText(withCrLf(heading)); });
           proc.step([&] { p.addStyle("Paragraph"); });
           if (outputTemplate) proc.step([&] { p.addOneClick(Text); });
           if (editingHintId != -1) proc.step([&] { p.addEditingHint(editingHintId); });
           proc.step([&] { p.addCarriageReturns(1); });
         });
}

void AddAbstractPage(const ObjectRef& page, bool outputTemplate) {
  traced(kModule, "AddAbstractPage", params(arg("page", page), arg("outputTemplate", outputTemplate)),
         [&](Procedure& proc) {
           int16_t edition = 6;
           proc.step([&] { edition = builder().edition(); });
           if (edition == 7) {
             proc.step([&] { seventh::AddAbstractPage(page, outputTemplate); });
             return;
           }
           proc.step([&] {
             addNonBoldPage(page, "Abstract",
                            "Summarize the paper in 150 to 250 words with a single paragraph without indentation "
                            "(APA 2.04).",
                            outputTemplate);
           });
         });
}

void AddFootnotesPage(const ObjectRef& page, bool outputTemplate) {
  traced(kModule, "AddFootnotesPage", params(arg("page", page), arg("outputTemplate", outputTemplate)),
         [&](Procedure& proc) {
           proc.step([&] {
             addNonBoldPage(page, "Footnotes",
                            "Footnotes are usually integrated into the main text, but can be placed here instead "
                            "(APA 2.12).",
                            outputTemplate);
           });
         });
}

void AddAppendixPage(const ObjectRef& page, bool outputTemplate) {
  traced(kModule, "AddAppendixPage", params(arg("page", page), arg("outputTemplate", outputTemplate)),
         [&](Procedure& proc) {
           proc.step([&] {
             host::PageRef(page).AddSection(
                 "Appendix",
                 "Use appendices only if they help to understand, evaluate, or replicate the study (APA 2.13)",
                 outputTemplate);
           });
         });
}

void AddTablesPage(const ObjectRef& page, bool outputTemplate) {
  traced(kModule, "AddTablesPage", params(arg("page", page), arg("outputTemplate", outputTemplate)),
         [&](Procedure& proc) {
           proc.step([&] {
             host::PageRef(page).AddSection("Table 1. Sample table caption.", "Start each on a separate page (APA 8.03)",
                                            outputTemplate);
           });
         });
}

void AddFiguresPage(const ObjectRef& page, bool outputTemplate) {
  traced(kModule, "AddFiguresPage", params(arg("page", page), arg("outputTemplate", outputTemplate)),
         [&](Procedure& proc) {
           proc.step([&] {
             host::PageRef(page).AddSection("Figure 1. Sample figure caption.",
                                            "Start each on a separate page (APA 8.03)", outputTemplate);
           });
         });
}

void AddReferencesPage(const ObjectRef& page) {
  traced(kModule, "AddReferencesPage", params(arg("page", page)), [&](Procedure& proc) {
    const host::PageRef p(page);
    int16_t edition = 6;
    proc.step([&] { edition = builder().edition(); });
    const bool toggle = edition != 7;  // the 7th edition's label is bold, as its headings
    // The heading is written around its bookmark, so the bookmark sits
    // inside the word.
    proc.step([&] { p.addStyle("-2"); });
    proc.step([&] { toggle ? p.addTextToggleBold("Refer") : p.addText("Refer"); });
    proc.step([&] { p.addBookmark("References"); });
    proc.step([&] { toggle ? p.addTextToggleBold(withCrLf("ences")) : p.addText(withCrLf("ences")); });
    proc.step([&] { p.addStyle("Bibliographic Reference"); });
  });
}

namespace {

// The common start of the Method, Results and Discussion pages.
void startBodyPage(Procedure& proc, const ObjectRef& page, const char* heading, const char* hint, int32_t hintId,
                   bool outputTemplate) {
  const host::PageRef p(page);
  int16_t paperType = 0;
  proc.step([&] { paperType = builder().PaperType(); });
  // Papers of types 0 and 3 run on from the previous page.
  if (paperType == 0 || paperType == 3) proc.step([&] { p.suppressPageBreak(); });
  proc.step([&] { p.AddSection(heading, hint, outputTemplate); });
  proc.step([&] { p.addEditingHint(hintId); });
}

}  // namespace

void AddMethodPage(const ObjectRef& page, bool outputTemplate) {
  traced(kModule, "AddMethodPage", params(arg("page", page), arg("outputTemplate", outputTemplate)),
         [&](Procedure& proc) {
           startBodyPage(proc, page, "Method", "Describe in detail how the study was conducted. (APA 2.06)", 4,
                         outputTemplate);
           proc.step([&] { host::PageRef(page).addCarriageReturns(1); });
           if (!outputTemplate) return;
           const std::tuple<const char*, const char*, int16_t> subsections[] = {
               {"Participant (subject) characteristics", "Detail the sample's major demographic characteristics (APA 2.06)", 5},
               {"Sampling procedures", "Describe the procedures for selecting participants (APA 2.06)", 6},
               {"Sample size, power, and precision",
                "Demonstrate that sample size has sufficient power for results' precision (APA 2.06)", 7},
               {"Measures and covariates", "Define primary and secondary outcome measures and covariates (APA 2.06)", 8},
               {"Research design", "Specify the research design (APA 2.06)", 9},
               {"Experimental manipulations or interventions",
                "Describe the content, setting, properties, and participants of the intervention (APA 2.06)", 10},
           };
           for (const auto& [heading, text, id] : subsections)
             proc.step([&] { AddSubSection(page, heading, text, outputTemplate, id); });
         });
}

void AddResultsPage(const ObjectRef& page, bool outputTemplate) {
  traced(kModule, "AddResultsPage", params(arg("page", page), arg("outputTemplate", outputTemplate)),
         [&](Procedure& proc) {
           startBodyPage(proc, page, "Results", "Report and summarize the results of your experiment (APA 2.07)", 11,
                         outputTemplate);
           proc.step([&] { host::PageRef(page).addCarriageReturns(1); });
           if (!outputTemplate) return;
           // The typo "partipants" is the program's text.
           const std::pair<const char*, const char*> subsections[] = {
               {"Recruitment", "Provide dates of when you recruited subjects, plus follow-up (APA 2.07)"},
               {"Statistics and data analysis", "Analyze the data to disprove the null hypothesis (APA 2.07)"},
               {"Ancillary analyses", "Report any other analyses performed (e.g. for subgroups) (APA 2.07)"},
               {"Participant flow", "Describe the flow of partipants through the study (APA 2.07)"},
               {"Intervention or manipulation fidelity",
                "Provide evidence that intervention was administered correctly (APA 2.07)"},
               {"Baseline data",
                "Provide baseline demographic and/or clinical characteristics of each group (APA 2.07)"},
               {"Adverse events", "Detail all events with serious consequences (APA 2.07)"},
           };
           for (const auto& [heading, text] : subsections)
             proc.step([&] { AddSubSection(page, heading, text, outputTemplate, -1); });
         });
}

void AddDiscussionPage(const ObjectRef& page, bool outputTemplate) {
  traced(kModule, "AddDiscussionPage", params(arg("page", page), arg("outputTemplate", outputTemplate)),
         [&](Procedure& proc) {
           startBodyPage(proc, page, "Discussion",
                         "Examine and interpret the results to draw inferences and conclusions from them (APA 2.08)",
                         12, outputTemplate);
         });
}

void AddIntroductionPage(const ObjectRef& page, bool outputTemplate, bool addBody) {
  traced(kModule, "AddIntroductionPage",
         params(arg("page", page), arg("outputTemplate", outputTemplate), arg("addBody", addBody)),
         [&](Procedure& proc) {
           const host::PageRef p(page);
           if (addBody) {
             // Two blanks after the first full stop, as the program writes it.
             const std::string hint = outputTemplate
                                          ? "Click here and type your paper.  In the Introduction, you should:"
                                          : "Click here and type your paper.";
             int16_t paperType = 0;
             proc.step([&] { paperType = builder().PaperType(); });
             if (paperType != 0 && paperType != 3) {
               proc.step([&] { p.AddSection("Introduction", hint, outputTemplate); });
             } else {
               // Types 0 and 3 repeat the paper's title instead of a heading "Introduction".
               std::string title;
               proc.step([&] { title = builder().UserConfigurationValue("Title"); });
               if (title.empty()) title = "The title of your paper";
               proc.step([&] { p.AddCenteredParagraph(title, false); });
               proc.step([&] { p.addStyle("Paragraph"); });
               if (outputTemplate) proc.step([&] { p.addOneClick(hint); });
               proc.step([&] { p.addCarriageReturns(1); });
             }
             proc.step([&] { p.addCarriageReturns(1); });
             if (outputTemplate) {
               const char* hints[] = {"1) Introduce the problem (APA 2.05)", "2) Explore importance of the problem (APA 2.05)",
                                      "3) Describe relevant scholarship (APA 2.05)",
                                      "4) State hypotheses and their correspondence to research design (APA 2.05)"};
               for (int16_t k = 0; k < 4; ++k) {
                 proc.step([&] { p.addOneClick(hints[k]); });
                 proc.step([&] { p.addEditingHint(k); });
                 proc.step([&] { p.addCarriageReturns(2); });
               }
             }
           }
           // Sample captions give the generated lists an entry to show.
           bool figures = false, tables = false;
           proc.step([&] { figures = builder().part(3); });
           if (figures) proc.step([&] { p.AddCaption("Figure"); });
           proc.step([&] { tables = builder().part(2); });
           if (tables) proc.step([&] { p.AddCaption("Table"); });
         });
}

// ---- generated lists and the table form -------------------------------------------------

void AddTable(const ObjectRef& page, const std::string& heading, int32_t whichType) {
  traced(kModule, "AddTable", params(arg("page", page), arg("heading", heading), arg("whichType", whichType)),
         [&](Procedure& proc) {
           const host::PageRef p(page);
           proc.step([&] { p.AddCenteredParagraph(heading, true); });
           proc.step([&] { p.addTOC(Variant(whichType).toInteger()); });
           proc.step([&] { p.addStyle("-1"); });
         });
}

void AddTOCPage(const ObjectRef& page) {
  traced(kModule, "AddTOCPage", params(arg("page", page)),
         [&](Procedure& proc) { proc.step([&] { AddTable(page, "Table of Contents", 0); }); });
}

void AddListOfTablesPage(const ObjectRef& page) {
  traced(kModule, "AddListOfTablesPage", params(arg("page", page)),
         [&](Procedure& proc) { proc.step([&] { AddTable(page, "List of Tables", 3); }); });
}

void AddListOfFiguresPage(const ObjectRef& page) {
  traced(kModule, "AddListOfFiguresPage", params(arg("page", page)),
         [&](Procedure& proc) { proc.step([&] { AddTable(page, "List of Figures", 2); }); });
}

namespace {

// The table form's nine buttons, in button order (the index is the position
// from 1). The tooltips keep their markup for the form to render; the LISREL
// button deliberately carries the means-and-intercorrelations text.
struct TableButton {
  const char* caption;
  const char* tooltip;
  ObjectRef (*create)();
};

template <class T>
ObjectRef makeTable() {
  return make<T>();
}

const TableButton kTableButtons[] = {
    {"&ANOVA (ANalysis Of VAriance)",
     "Report the source, degrees of freedom, and <i>F</i>&nbsp; ratios. Identify statistically significant "
     "<i>F</i>&nbsp; ratios with probability asterisks. (APA 5th edition, 3.69)",
     makeTable<TableAnova>},
    {"C&orrelation",
     "Report the correlations in two groups. Use dashes for correlations of the variable with itself. (APA 5th "
     "edition, 3.62)",
     makeTable<TableCorrelation>},
    {"&LISREL (LInear Structural RELations)",
     "Present the means, standard deviations, and intercorrelations of the entire set of variables. (APA 5th "
     "edition, 3.69)",
     makeTable<TableLisrel>},
    {"&Model comparison (multiple LISREL)", "Compare multiple models in LISREL analyses. (APA 5.14)",
     makeTable<TableModelComparison>},
    {"M&ultilevel model", "Multilevel model table. (APA 5.15)", makeTable<TableMultilevelModel>},
    {"&Regression", "List both unstandardized and standardized coefficients. (APA 5.12)", makeTable<TableRegression>},
    {"&Hierarchical multiple regression", "List both unstandardized and standardized coefficients. (APA 5.13)",
     makeTable<TableHierarchRegression>},
    {"&Word",
     "Present qualitative comparisons or descriptive information. Word tables illustrate the discussion in the "
     "text; they should not repeat the discussion. (APA 5.16)",
     makeTable<TableWord>},
    {"&Noncanonical",
     "The judicious use of noncanonical forms can be effective but must always be motivated by the special "
     "circumstances of the data array. (APA 5th edition, 3.62)",
     makeTable<TableNoncanonical>},
};

}  // namespace

int16_t TableFormMetaData(Array& ButtonNames, Array& ButtonTooltips) {
  return traced(kModule, "TableFormMetaData[Get]",
                params(arg("ButtonNames", ButtonNames), arg("ButtonTooltips", ButtonTooltips)), [&](Procedure& proc) {
                  std::vector<std::string> captions, tooltips;
                  for (const TableButton& b : kTableButtons) {
                    captions.emplace_back(b.caption);
                    tooltips.emplace_back(b.tooltip);
                  }
                  proc.step([&] { ButtonNames = stringArray(captions); });
                  proc.step([&] { ButtonTooltips = stringArray(tooltips); });
                  return int16_t{1};
                });
}

ObjectRef TableTemplate(int16_t buttonClickedIndex, Array& metadata) {
  return traced(kModule, "TableTemplate[Get]",
                params(arg("buttonClickedIndex", buttonClickedIndex), arg("metadata", metadata)),
                [&](Procedure& proc) {
                  ObjectRef table;
                  int32_t lower = 0;
                  proc.local("table", table);
                  // Counted from the array's lower bound; a short array fails here, before any table is made.
                  proc.step([&] { lower = metadata.lowerBound(); });
                  proc.step([&] { metadata.set(lower + 6, "True"); });
                  proc.step([&] { metadata.set(lower + 9, "True"); });
                  proc.step([&] { metadata.set(lower + 13, "True"); });
                  proc.step([&] { metadata.set(lower + 10, "Note."); });
                  // Any other index is not an error: there is simply no table.
                  if (buttonClickedIndex >= 1 && buttonClickedIndex <= 9)
                    proc.step([&] { table = kTableButtons[buttonClickedIndex - 1].create(); });
                  return table;
                });
}

}  // namespace QuillFormatAPA::DocumentBuilder
