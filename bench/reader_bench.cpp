// The learned reader: entries labelled per second on one core, and what
// loading the committed model costs (time, size).
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>
#include <vector>

#include "reader/ReferenceReader.h"

namespace {

const char* const kEntries[] = {
    "Kernis MH, Cornell DP, Sun CR. There's more to self-esteem than whether it is high or low. J Pers Soc Psychol. "
    "1993;65:1190-204.",
    "[3] M. H. Kernis et al., “There's more to self-esteem than whether it is high or low,” J. Pers. Soc. Psychol., "
    "vol. 65, pp. 1190–1204, 1993.",
    "Kernis, M. H., et al. “There's More to Self-Esteem than Whether It Is High or Low.” Journal of Personality and "
    "Social Psychology, vol. 65, 1993, pp. 1190–204.",
    "Shotton, M. A. (1989). Computer addiction? A study of computer dependency. London, England: Taylor & Francis.",
};

const quillreader::Model& model() {
  static const quillreader::Model m = quillreader::Model::load(QFA_READER_MODEL_SOURCE);
  return m;
}

void BM_ReaderLabelsEntries(benchmark::State& state) {
  const quillreader::Model& m = model();
  size_t done = 0;
  for (auto _ : state) {
    for (const char* e : kEntries) benchmark::DoNotOptimize(m.read(e));
    done += std::size(kEntries);
  }
  state.counters["entries/s"] = benchmark::Counter(static_cast<double>(done), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_ReaderLabelsEntries);

void BM_ReaderModelLoad(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(quillreader::Model::load(QFA_READER_MODEL_SOURCE));
  state.counters["model_mb"] =
      static_cast<double>(std::filesystem::file_size(QFA_READER_MODEL_SOURCE)) / (1024.0 * 1024.0);
}
BENCHMARK(BM_ReaderModelLoad)->Unit(benchmark::kMillisecond);

}  // namespace
