// quillpaper refs: a reference list, as people type them, back in APA form.
#include <cstdlib>
#include <functional>
#include <optional>

#include "quillpaper/CommandLine.h"
#include "quillpaper/Commands.h"
#include "quillpaper/Json.h"
#include "quillpaper/references/ReferenceList.h"
#include "quillpaper/references/ReferenceInput.h"
#include "quillpaper/references/ReaderModel.h"
#include "quillpaper/references/ReferenceJobs.h"
#include "quillpaper/references/ReferencePipeline.h"
#include "quillpaper/OutputFile.h"

namespace quillpaper {

namespace {

constexpr const char* kUsage =
    "usage: quillpaper refs [FILE|-] [--format=text|html|markdown|json|docx] [--output=FILE] [--sort]\n"
    "                       [--edition=7|6] [--reader-threshold=N] [--jobs=N]\n"
    "\n"
    "Reads a reference list, one reference per line (from FILE, or standard input when it is\n"
    "'-' or missing; UTF-8 or UTF-16 with its byte-order mark; lines may end in LF, CRLF or CR;\n"
    "blank lines are skipped), recognises the type of each reference, splits it into its fields\n"
    "and writes it back in APA form, the 7th edition's unless --edition=6 asks for the 6th (either\n"
    "edition may be typed):\n"
    "  text      one reference a line (the default)\n"
    "  html      a page with italics as <i> and hanging indents\n"
    "  markdown  italics as *...*\n"
    "  json      JSON Lines: the line number, the type (0 book or other non-periodical work,\n"
    "            1 periodical article, 4 electronic source), every field, the formatted text,\n"
    "            its runs, which reader read it and how sure the learned reader was\n"
    "  docx      a References page: heading, hanging indent, double spacing, in APA order\n"
    "A reference typed in another citation style (MLA, Chicago, Vancouver, IEEE, Harvard, ...)\n"
    "is read by the learned reader; it is rewritten only when the reader is at least as sure as\n"
    "--reader-threshold (default 50; a reading under it is kept as typed, with the fields read).\n"
    "No word you typed is lost: a reference that cannot be made sense of, or whose APA form\n"
    "would lose or add a word, is kept as typed and reported on standard error with its line\n"
    "number and the reason. --sort orders the list as APA orders a reference list (the .docx is\n"
    "always sorted). --output writes to FILE instead of standard output (needed for docx); FILE\n"
    "is replaced only once the whole list is written. --jobs=N formats on N threads (default 1);\n"
    "the output is the same, in the same order.\n";

ListFormat listFormat(const std::string& name) {
  if (name == "html") return ListFormat::Html;
  if (name == "markdown") return ListFormat::Markdown;
  if (name == "json") return ListFormat::Json;
  return ListFormat::Text;
}

void report(const FormattedReference& r, std::ostream& err) {
  if (!r.ok()) err << "quillpaper refs: line " << r.line << ": kept as typed: " << r.problems.front() << "\n";
  if (!r.excludedBecause.empty())
    err << "quillpaper refs: line " << r.line << ": left out of the list: " << r.excludedBecause << "\n";
}

// The most threads --jobs may ask for, and how many entries each is given at a time.
constexpr int kMostJobs = 64;
constexpr size_t kBatchPerJob = 64;

std::string tooLong(int line) {
  return "line " + std::to_string(line) + " is longer than " + std::to_string(kLongestEntry) +
         " bytes: no reference is; it is kept as typed";
}

}  // namespace

int refsCommand(CommandLine& cl, std::ostream& out, std::ostream& err) {
  if (cl.flag("help")) {
    out << kUsage;
    return 0;
  }
  const std::string format = cl.option("format").value_or("text");
  const std::optional<std::string> output = cl.option("output");
  const bool sort = cl.flag("sort") || format == "docx";
  const int edition = cl.edition();
  double threshold = kReaderThreshold;
  if (const std::optional<std::string> t = cl.option("reader-threshold")) {
    char* end = nullptr;
    threshold = std::strtod(t->c_str(), &end);
    if (t->empty() || *end != '\0' || !(threshold >= 0))
      throw UsageError("--reader-threshold must be a number of 0 or more, not '" + *t + "'");
  }
  int jobs = 1;
  if (const std::optional<std::string> j = cl.option("jobs")) {
    char* end = nullptr;
    const long n = std::strtol(j->c_str(), &end, 10);
    if (j->empty() || *end != '\0' || n < 1 || n > kMostJobs)
      throw UsageError("--jobs must be a whole number from 1 to " + std::to_string(kMostJobs) + ", not '" + *j + "'");
    jobs = static_cast<int>(n);
  }
  const std::vector<std::string> files = cl.positional();
  if (files.size() > 1) throw UsageError("one input file at most, not '" + files[1] + "'");
  if (format != "text" && format != "html" && format != "markdown" && format != "json" && format != "docx")
    throw UsageError("--format must be text, html, markdown, json or docx, not '" + format + "'");
  if (format == "docx" && !output) throw UsageError("--format=docx needs --output=FILE.docx");
  std::vector<std::filesystem::path> inputs;
  if (!files.empty() && files[0] != "-") inputs.emplace_back(files[0]);
  if (output) inputs.emplace_back(*output);
  Session session(cl.diagnostics(inputs));
  cl.finish();

  const std::unique_ptr<std::istream> input = openReferenceList(files.empty() ? "-" : files[0]);
  ReferenceReader reader(*input);
  std::string modelProblem;
  const quillreader::Model* model = readerModel(modelProblem);
  if (!model) err << "quillpaper refs: entries in other citation styles are kept as typed: " << modelProblem << "\n";
  const ReferencePipeline::Options options{.edition = edition, .reader = model, .readerThreshold = threshold};
  // One pipeline on this thread, or the threads' own.
  std::optional<ReferencePipeline> pipeline;
  std::optional<ReferenceJobs> threads;
  if (jobs > 1)
    threads.emplace(session, options, jobs);
  else
    pipeline.emplace(session, options);
  std::optional<OutputFile> file;
  if (output) file.emplace(*output);
  std::ostream& sink = file ? file->stream() : out;

  // Entries go in batches to the threads, one at a time without them; each
  // comes back in its place.
  std::vector<ReferenceLine> batch;
  const auto formatBatch = [&](const std::function<void(const FormattedReference&)>& take) {
    if (batch.empty()) return;
    if (threads) {
      for (const FormattedReference& r : threads->format(batch)) {
        report(r, err);
        take(r);
      }
    } else {
      for (const ReferenceLine& l : batch) {
        const FormattedReference r = pipeline->format(l.text, l.number);
        report(r, err);
        take(r);
      }
    }
    batch.clear();
  };
  const size_t batchSize = threads ? kBatchPerJob * static_cast<size_t>(jobs) : 1;

  ReferenceLine line;
  if (sort) {
    // A sorted list is known only once it is whole.
    const bool docx = format == "docx";
    SortedReferenceList list(docx ? std::nullopt : std::optional(listFormat(format)));
    const auto add = [&](const FormattedReference& r) { list.add(r); };
    while (reader.next(line)) {
      if (line.longLine) throw std::runtime_error(tooLong(line.number) + "; it can be listed unsorted, not sorted");
      batch.push_back(std::move(line));
      if (batch.size() >= batchSize) formatBatch(add);
    }
    formatBatch(add);
    if (docx) {
      file.reset();
      writeReferenceListDocx(list.paragraphs(), session, *output, edition);
      out << "wrote " << *output << "\n";
      return session.finish(err);
    }
    list.write(sink);
  } else {
    ReferenceListWriter writer(listFormat(format), sink);
    const auto add = [&](const FormattedReference& r) { writer.add(r); };
    writer.begin();
    while (reader.next(line)) {
      if (line.longLine) {
        formatBatch(add);  // what came before it goes first
        err << "quillpaper refs: " << tooLong(line.number) << "\n";
        writer.beginAsTyped(line.number, tooLong(line.number));
        std::string piece = std::move(line.text);
        do writer.asTypedPiece(piece);
        while (reader.nextPiece(piece));
        writer.endAsTyped();
        continue;
      }
      batch.push_back(std::move(line));
      if (batch.size() >= batchSize) formatBatch(add);
    }
    formatBatch(add);
    writer.end();
  }
  if (reader.wasUtf16()) err << "quillpaper refs: the list was UTF-16; it is written in UTF-8\n";
  if (file) {
    file->commit();
    out << "wrote " << *output << "\n";
  }
  return session.finish(err);
}

}  // namespace quillpaper
