#include "quillpaper/Paper.h"

#include <algorithm>
#include <cctype>

#include "host/CallSite.h"
#include "quillpaper/ChapterInstructions.h"
#include "quillpaper/SettingsDictionary.h"
#include "quillpaper/StartupForm.h"
#include "quillpaper/StatisticsTables.h"
#include "quillpaper/docx/DocxWriter.h"
#include "quillpaper/references/ReaderModel.h"
#include "quillpaper/references/ReferenceList.h"
#include "quillpaper/references/ReferencePipeline.h"
#include "strings/StringUtility.h"

namespace quillpaper {

namespace {

constexpr int kReferencesPart = 10;
constexpr int kTablesPart = 12;

void execute(Session& session, std::string command, const ObjectRef& argument) {
  callByName(session.main2(), "Execute", byRef(command), argument);
}

// Chapters go before the references, each on a page of its own.
void addChapters(Session& session, PaperBuilder& builder, int count) {
  for (auto& section : builder.document().sections) {
    auto& pages = section->pages;
    auto at = std::find_if(pages.begin(), pages.end(), [](const auto& p) { return p->part == kReferencesPart; });
    if (at == pages.end()) continue;
    for (int k = 0; k < count; ++k) {
      auto page = std::make_shared<doc::Page>();
      page->part = -1;  // the user's own: always kept
      at = pages.insert(at, page) + 1;
      execute(session, "StartNewChapter", make<ChapterInstructions>(Ref<PaperBuilder>(&builder), page));
    }
    return;
  }
}

// Real tables take the place of the sample on the tables page, each on a page of its own.
void addTables(Session& session, PaperBuilder& builder, const std::vector<PaperRequest::Table>& tables) {
  for (auto& section : builder.document().sections) {
    auto& pages = section->pages;
    auto at = std::find_if(pages.begin(), pages.end(), [](const auto& p) { return p->part == kTablesPart; });
    if (at == pages.end()) continue;
    (*at)->blocks.clear();
    for (size_t k = 0; k < tables.size(); ++k) {
      if (k > 0) {
        auto page = std::make_shared<doc::Page>();
        page->part = kTablesPart;
        at = pages.insert(at + 1, page);
      }
      const int number = builder.sequences().next("Table");
      std::shared_ptr<doc::TableBlock> table = tables[k].computed;
      if (table)
        table->number = number;
      else
        table = buildStatisticsTable(session, tables[k].button, number);
      (*at)->blocks.emplace_back(std::move(table));
    }
    return;
  }
}

// The formatted reference list goes on the references page, in APA order.
void addReferences(Session& session, Paper& paper, const std::vector<std::pair<int, std::string>>& entries,
                   int edition) {
  std::string readerProblem;
  const quillreader::Model* reader = readerModel(readerProblem);
  if (!reader) paper.referenceNotes.push_back("entries in other citation styles are kept as typed: " + readerProblem);
  ReferencePipeline pipeline(session, {ReferencePipeline::Steps::All, edition, reader, kReaderThreshold});
  std::vector<FormattedReference> list;
  for (const auto& [line, entry] : entries) list.push_back(pipeline.format(entry, line));
  for (const FormattedReference& r : list) {
    if (!r.ok()) paper.referenceNotes.push_back("line " + std::to_string(r.line) + ": kept as typed: " + r.problems.front());
    if (!r.excludedBecause.empty())
      paper.referenceNotes.push_back("line " + std::to_string(r.line) + ": left out of the list: " + r.excludedBecause);
  }
  sortReferenceList(list);
  for (auto& section : paper.builder->document().sections)
    for (auto& page : section->pages) {
      if (page->part != kReferencesPart) continue;
      // The page ends in the empty paragraph the library styled for the list.
      page->trimEnd();
      for (doc::Paragraph& p : referenceParagraphs(list)) page->blocks.emplace_back(std::move(p));
      return;
    }
}

// The 6th edition's author note as APA sets it: its paragraphs indented
// under the label with no blank line between, the e-mail address closing the
// correspondence paragraph.
void authorNoteAsApaWritesIt(doc::Document& document) {
  for (auto& section : document.sections)
    for (auto& page : section->pages) {
      auto& blocks = page->blocks;
      const auto label = std::find_if(blocks.begin(), blocks.end(), [](const doc::Block& b) {
        const auto* p = std::get_if<doc::Paragraph>(&b);
        return p && p->plainText() == "Author Note";
      });
      if (label == blocks.end()) continue;
      size_t at = static_cast<size_t>(label - blocks.begin()) + 1;
      while (at < blocks.size() && std::holds_alternative<doc::Paragraph>(blocks[at]) &&
             std::get<doc::Paragraph>(blocks[at]).empty())
        blocks.erase(blocks.begin() + static_cast<long>(at));
      for (size_t k = at; k < blocks.size(); ++k) {
        auto* p = std::get_if<doc::Paragraph>(&blocks[k]);
        if (!p || p->empty()) continue;
        p->style = doc::Style::Paragraph;
        auto* before = k > at ? std::get_if<doc::Paragraph>(&blocks[k - 1]) : nullptr;
        if (before && p->plainText().starts_with("E-mail:")) {
          doc::Inline space;
          space.text = " ";
          before->inlines.push_back(std::move(space));
          before->inlines.insert(before->inlines.end(), p->inlines.begin(), p->inlines.end());
          blocks.erase(blocks.begin() + static_cast<long>(k--));
        }
      }
      return;
    }
}

// The 6th edition's section labels are plain: "Appendix" as "Abstract" and "References".
void appendixLabelPlain(doc::Document& document) {
  for (auto& section : document.sections)
    for (auto& page : section->pages)
      for (doc::Block& block : page->blocks) {
        auto* p = std::get_if<doc::Paragraph>(&block);
        if (!p || p->style != doc::Style::Heading1 || p->plainText() != "Appendix") continue;
        for (doc::Inline& i : p->inlines)
          if (i.kind == doc::Inline::Kind::Text) i.toggleBold = true;
      }
}

// The 6th edition's running head: the short title, when there is one, in
// capitals in every header ("Running head: SLEEP AND MEMORY" on the title
// page). A head over APA's 50 characters is reported.
std::string setRunningHead(doc::Document& document, const std::string& shortTitle) {
  std::string head;
  for (auto& section : document.sections) {
    doc::PageHeaderRecord record = doc::PageHeaderRecord::parse(section->pageHeader);
    if (record.placeholder()) return {};  // nothing typed
    if (!shortTitle.empty()) {
      record.head = QuillStrings::strings().upper(shortTitle);
      section->pageHeader = record.str();
    }
    if (head.empty()) head = record.head;
  }
  constexpr size_t kLongest = 50;
  const size_t characters = static_cast<size_t>(
      std::count_if(head.begin(), head.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
  if (characters > kLongest)
    return "the running head \"" + head + "\" is longer than APA's 50 characters: give a --short-title";
  return {};
}

}  // namespace

Paper makePaper(Session& session, const PaperRequest& request) {
  Paper paper;
  auto settings = make<SettingsDictionary>();
  if (request.edition == 7) settings->Add("APAEdition", Variant(int16_t{7}));
  callByName(session.main2(), "getMetaData", ObjectRef(settings));
  paper.format = PaperFormat::fromSettings(*settings, isPostgraduate(request.paperType));
  paper.format.font = request.font;
  paper.format.fontSize = request.fontSize;

  PaperBuilder::Options options;
  options.outputTemplate = request.hints;
  options.paperType = request.paperType;
  options.selectedParts = request.parts;
  options.configuration = request.fields;
  options.edition = request.edition;
  paper.builder = make<PaperBuilder>(options);
  execute(session, "InitializeBuilder", paper.builder);
  // Headings in title case ("Participant (Subject) Characteristics"): the 7th
  // edition's at every level, the 6th's at levels 1 and 2.
  doc::titleCaseHeadings(paper.builder->document(), request.edition == 7 ? 5 : 2);
  if (request.edition == 6) {
    const auto shortTitle = request.fields.find("Short Title");
    paper.runningHeadNote =
        setRunningHead(paper.builder->document(), shortTitle == request.fields.end() ? "" : shortTitle->second);
    authorNoteAsApaWritesIt(paper.builder->document());
    appendixLabelPlain(paper.builder->document());
  }
  if (request.chapters > 0) addChapters(session, *paper.builder, request.chapters);
  if (!request.tables.empty()) addTables(session, *paper.builder, request.tables);
  if (!request.references.empty()) addReferences(session, paper, request.references, request.edition);
  return paper;
}

void writePaperFile(const Paper& paper, const PaperRequest& request, const std::filesystem::path& output) {
  const std::set<int>& parts = request.parts;
  const docx::Layout layout =
      docx::Layout::of(paper.builder->document(), [&](int part) { return parts.count(part) > 0; });
  docx::PaperOptions options;
  const auto title = request.fields.find("Title");
  const auto author = request.fields.find("Author");
  if (title != request.fields.end()) options.title = title->second;
  if (author != request.fields.end()) options.author = author->second;
  options.format = paper.format;
  options.editingHints = request.hints;
  docx::writePaper(layout, options, output);
}

}  // namespace quillpaper
