// quillpaper table: one APA statistics table as a .docx, or the list of them.
#include <iostream>

#include "host/CallSite.h"
#include "quillpaper/CommandLine.h"
#include "quillpaper/Commands.h"
#include "quillpaper/DataTables.h"
#include "quillpaper/Paper.h"
#include "quillpaper/SettingsDictionary.h"
#include "quillpaper/StatisticsTables.h"
#include "quillpaper/docx/DocxWriter.h"

namespace quillpaper {

namespace {

constexpr const char* kUsage =
    "usage: quillpaper table KIND [OUTPUT.docx] [--edition=7|6] [--data=FILE ...]\n"
    "       quillpaper table --list\n"
    "\n"
    "Writes one of the nine sample APA statistics tables to OUTPUT.docx "
    "(default KIND.docx):\n"
    "its number and title, the column heads, spanners and rows with horizontal "
    "rules only,\n"
    "and its notes. KIND is the table's name as --list shows it (anova, "
    "correlation, lisrel,\n"
    "model-comparison, multilevel-model, regression, "
    "hierarchical-multiple-regression, word,\n"
    "noncanonical; a unique beginning will do) or its number 1 to 9. In the "
    "7th edition (the\n"
    "default) the number is set in bold; --edition=6 writes the 6th edition's "
    "plain number.\n"
    "'quillpaper new --table=KIND' puts tables on the tables page of a "
    "paper.\n"
    "\n"
    "From your own data (a CSV file with a header row; comma, semicolon or tab; empty cells\n"
    "and NA are missing values):\n"
    "  quillpaper table descriptives --data=FILE [--columns=A,B,...] [--by=GROUP]\n"
    "  quillpaper table correlation --data=FILE [--columns=A,B,...] [--missing=pairwise|listwise] [--ci]\n"
    "  quillpaper table regression --data=FILE --dv=Y --iv=X1,X2 [--block=X3,X4 ...]\n"
    "  quillpaper table anova --data=FILE --dv=Y --between=A,B\n"
    "  quillpaper table ttest --data=FILE --dv=Y[,Y2,...] --by=GROUP\n"
    "Without --columns, every column of numbers is used. Each --block adds its predictors to\n"
    "the model before it (hierarchical regression). The ANOVA is a factorial between-subjects\n"
    "one with type III sums of squares; the t tests are Welch's, with Student's in the note.\n"
    "A value that is not a number, a row with too many or too few fields, or data that cannot\n"
    "give the table (a constant column, collinear predictors, an empty group) is an error that\n"
    "says where, and nothing is written.\n";

}  // namespace

int tableCommand(CommandLine& cl, std::ostream& out, std::ostream& err) {
  if (cl.flag("help")) {
    out << kUsage;
    return 0;
  }
  const bool list = cl.flag("list");
  const int edition = cl.edition();
  const std::optional<DataTableRequest> data = dataTableOptions(cl);
  const std::vector<std::string> args = cl.positional();
  Session session(cl.diagnostics());
  cl.finish();
  const std::vector<TableButton> buttons = tableButtons(session);
  if (list) {
    if (!args.empty()) throw UsageError("--list takes no table");
    for (const TableButton& b : buttons) {
      std::string line = "  " + std::to_string(b.index) + "  " + b.key;
      line.resize(std::max<size_t>(line.size() + 2, 40), ' ');
      out << line << b.name << "\n      " << b.help << "\n";
    }
    return 0;
  }
  if (args.empty()) throw UsageError("which table? (quillpaper table --list shows them)");
  if (args.size() > 2) throw UsageError("unexpected argument '" + args[2] + "'");
  std::optional<DataTableRequest> computed;
  int index = 0;
  if (data) {
    computed = forKind(*data, args[0]);
    checkOptionsApply(*computed, {args[0]});
  } else {
    index = findTableButton(buttons, args[0]);
    if (index == 0) {
      const std::string more = isDataTableKind(args[0]) ? " without --data=FILE" : "";
      throw UsageError("no table is called '" + args[0] + "'" + more + " (quillpaper table --list shows them)");
    }
  }
  const std::filesystem::path output =
      args.size() > 1 ? args[1] : (computed ? computed->kind : buttons[static_cast<size_t>(index - 1)].key) + ".docx";

  auto settings = make<SettingsDictionary>();
  if (edition == 7) settings->Add("APAEdition", Variant(int16_t{7}));
  callByName(session.main2(), "getMetaData", ObjectRef(settings));
  std::shared_ptr<doc::TableBlock> table;
  try {
    table = computed ? buildDataTable(*computed, 1) : buildStatisticsTable(session, index, 1);
  } catch (const quillstats::DataError& e) {
    err << "quillpaper table: " << e.what() << "\nquillpaper table: nothing was written\n";
    return 1;
  }
  if (const std::string problem = session.errorSummary(); !problem.empty()) {
    err << "quillpaper table: " << problem << "\nquillpaper table: nothing was written\n";
    return 1;
  }
  doc::Document document;
  auto section = std::make_shared<doc::Section>();
  auto page = std::make_shared<doc::Page>();
  page->part = -1;
  page->blocks.emplace_back(table);
  section->pages.push_back(page);
  document.sections.push_back(section);
  docx::PaperOptions options;
  options.title = "Table 1";
  options.format = PaperFormat::fromSettings(*settings, false);
  docx::writePaper(docx::Layout::of(document, [](int) { return true; }), options, output);
  out << "wrote " << output.string() << "\n";
  return session.finish(err);
}

}  // namespace quillpaper
