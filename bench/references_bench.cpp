// References per second, end to end: free text through the library and the
// host's reference objects to a formatted entry, with entry and exit tracing
// on as shipped (parameter texts off, as without the trace switch).
#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "quillpaper/references/ReferenceList.h"
#include "quillpaper/references/ReferencePipeline.h"

namespace {

// The "apa6_text" of each line of the development corpus.
std::vector<std::string> loadEntries() {
  std::vector<std::string> entries;
  std::ifstream in(QFA_DEV_REFERENCES);
  std::string line;
  const std::string key = "\"apa6_text\": \"";
  while (std::getline(in, line)) {
    size_t at = line.find(key);
    if (at == std::string::npos) continue;
    std::string text;
    for (size_t i = at + key.size(); i < line.size() && line[i] != '"'; ++i) {
      if (line[i] != '\\') {
        text += line[i];
        continue;
      }
      const char e = line[++i];
      if (e == 'u') {
        const unsigned code = static_cast<unsigned>(std::stoul(line.substr(i + 1, 4), nullptr, 16));
        i += 4;
        if (code < 0x80) text += static_cast<char>(code);
        else if (code < 0x800) text += static_cast<char>(0xC0 | (code >> 6)), text += static_cast<char>(0x80 | (code & 0x3F));
        else text += static_cast<char>(0xE0 | (code >> 12)), text += static_cast<char>(0x80 | ((code >> 6) & 0x3F)),
             text += static_cast<char>(0x80 | (code & 0x3F));
      } else {
        text += e == 'n' ? '\n' : e == 't' ? '\t' : e;
      }
    }
    entries.push_back(text);
  }
  return entries;
}

void BM_ReferencesEndToEnd(benchmark::State& state) {
  static const std::vector<std::string> entries = loadEntries();
  if (entries.empty()) {
    state.SkipWithError("the development references were not found");
    return;
  }
  ::setenv("XDG_CONFIG_HOME", "/nonexistent", 1);
  quillpaper::Session session(quillpaper::DiagnosticsService::Options{quillpaper::ErrorPolicy::Ignore, {}, "/tmp"});
  quillpaper::ReferencePipeline pipeline(session);
  size_t done = 0;
  for (auto _ : state) {
    for (const std::string& e : entries) benchmark::DoNotOptimize(pipeline.format(e));
    done += entries.size();
  }
  state.counters["references/s"] = benchmark::Counter(static_cast<double>(done), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_ReferencesEndToEnd)->Unit(benchmark::kMillisecond);

double peakRssMb() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

// One entry of `bytes` bytes in a shape that stresses one part of the
// reader: a long title, many sentences, many unclosed or closed groups,
// a long author list, many "In " parts, many bracketed or numbered groups
// after a title.
std::string longEntry(int shape, size_t bytes) {
  static const char* pieces[] = {"word ", "Word. ", " (x", " (a)", "Smith, J., ", ". In A (Ed.), ", "\xC3\xA9\x01]",
                                 "[a] ", "(1) "};
  std::string text = shape == 4 ? "" : shape >= 7 ? "Smith, J. (2001). T. " : "Smith, J. (2001). ";
  while (text.size() < bytes) text += pieces[shape];
  if (shape == 4) text += "(2001). Title. Place: Publisher.";
  return text + ". New York, NY: Wiley.";
}

// The cost of one long entry: linear in its length for every shape (the
// complexity fit reports it), the memory a few copies of the entry.
void BM_LongEntry(benchmark::State& state) {
  ::setenv("XDG_CONFIG_HOME", "/nonexistent", 1);
  static quillpaper::Session session(
      quillpaper::DiagnosticsService::Options{quillpaper::ErrorPolicy::Ignore, {}, "/tmp"});
  quillpaper::ReferencePipeline pipeline(session);
  const std::string entry = longEntry(static_cast<int>(state.range(0)), static_cast<size_t>(state.range(1)));
  for (auto _ : state) benchmark::DoNotOptimize(pipeline.format(entry));
  state.SetComplexityN(state.range(1));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(1));
  state.counters["peak_rss_mb"] = peakRssMb();
}
BENCHMARK(BM_LongEntry)
    ->ArgsProduct({{0, 1, 2, 3, 4, 5, 6, 7, 8}, {1 << 16, 1 << 18, 1 << 20}})
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);

// The development references, read once, and a session that formats them
// without tracing or asking.
const std::vector<std::string>& devEntries() {
  static const std::vector<std::string> entries = loadEntries();
  return entries;
}

quillpaper::Session& benchSession() {
  ::setenv("XDG_CONFIG_HOME", "/nonexistent", 1);
  static quillpaper::Session session(
      quillpaper::DiagnosticsService::Options{quillpaper::ErrorPolicy::Ignore, {}, "/tmp"});
  return session;
}

// A reference file of 10,000 and of 100,000 lines, formatted one after the
// other as `quillpaper refs` does: the time per line stays the same and the
// memory does not grow with the number of lines formatted.
void BM_ReferenceFile(benchmark::State& state) {
  const std::vector<std::string>& entries = devEntries();
  if (entries.empty()) {
    state.SkipWithError("the development references were not found");
    return;
  }
  quillpaper::Session& session = benchSession();
  quillpaper::ReferencePipeline pipeline(session);
  const size_t lines = static_cast<size_t>(state.range(0));
  const double before = peakRssMb();
  for (auto _ : state)
    for (size_t i = 0; i < lines; ++i) benchmark::DoNotOptimize(pipeline.format(entries[i % entries.size()]));
  state.counters["lines/s"] =
      benchmark::Counter(static_cast<double>(lines * state.iterations()), benchmark::Counter::kIsRate);
  state.counters["rss_growth_mb"] = peakRssMb() - before;
}
BENCHMARK(BM_ReferenceFile)->Arg(10000)->Arg(100000)->Unit(benchmark::kSecond)->Iterations(1);

// A reference list of 40,000 entries (about 10 MB) written as a .docx, as
// `quillpaper refs --format=docx` writes it: the memory it takes beyond the
// formatting, as a multiple of the list's size (run it alone for a true figure:
// the peak is the process's).
void BM_ReferenceListDocx(benchmark::State& state) {
  const std::vector<std::string>& entries = devEntries();
  if (entries.empty()) {
    state.SkipWithError("the development references were not found");
    return;
  }
  quillpaper::Session& session = benchSession();
  quillpaper::ReferencePipeline pipeline(session);
  const std::filesystem::path out = std::filesystem::temp_directory_path() / "references_bench.docx";
  const size_t lines = static_cast<size_t>(state.range(0));
  double inputMb = 0;
  const double before = peakRssMb();
  for (auto _ : state) {
    quillpaper::SortedReferenceList list(std::nullopt);
    for (size_t i = 0; i < lines; ++i) {
      const std::string& entry = entries[i % entries.size()];
      inputMb += static_cast<double>(entry.size() + 1) / (1024.0 * 1024.0);
      list.add(pipeline.format(entry));
    }
    quillpaper::writeReferenceListDocx(list.paragraphs(), session, out, 7);
  }
  std::filesystem::remove(out);
  state.counters["input_mb"] = inputMb;
  state.counters["rss_growth_mb"] = peakRssMb() - before;
  state.counters["times_input"] = (peakRssMb() - before) / inputMb;
}
BENCHMARK(BM_ReferenceListDocx)->Arg(40000)->Unit(benchmark::kSecond)->Iterations(1);

}  // namespace
