// References per second, end to end: free text through the library and the
// host's reference objects to a formatted entry, with entry and exit tracing
// on as shipped (parameter texts off, as without the trace switch).
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "quillpaper/ReferencePipeline.h"

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

}  // namespace
