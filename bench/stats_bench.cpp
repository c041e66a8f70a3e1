// Tables from data: a correlation table over N rows x 10 columns and a
// regression over N rows, read from a CSV file as the command reads it. The
// time is the whole analysis, parsing included; rss_growth_mb is how far the
// peak resident size rose above where it stood before, which stays flat as N
// grows because the file is read as it goes.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>

#include "stats/Analyses.h"

namespace {

// A file of `rows` rows: y and x1..x9, correlated, with a missing value now and then.
const std::filesystem::path& dataFile(int64_t rows) {
  static std::map<int64_t, std::filesystem::path> files;
  auto& path = files[rows];
  if (!path.empty()) return path;
  path = std::filesystem::temp_directory_path() /
         ("quill-stats-bench-" + std::to_string(::getpid()) + "-" + std::to_string(rows) + ".csv");
  std::FILE* f = std::fopen(path.c_str(), "w");
  std::fputs("y,x1,x2,x3,x4,x5,x6,x7,x8,x9\n", f);
  std::mt19937_64 random(42);
  std::normal_distribution<double> normal;
  for (int64_t r = 0; r < rows; ++r) {
    double x[9], y = 0;
    for (int k = 0; k < 9; ++k) {
      x[k] = normal(random) + 0.3 * (k > 0 ? x[k - 1] : 0);
      y += 0.2 * (k + 1) * x[k];
    }
    y += normal(random);
    std::fprintf(f, "%.6f", y);
    for (int k = 0; k < 9; ++k)
      if (r % 997 == k) std::fputs(",NA", f);
      else std::fprintf(f, ",%.6f", x[k]);
    std::fputc('\n', f);
  }
  std::fclose(f);
  return path;
}

long statusKb(const char* field) {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line))
    if (line.starts_with(field)) return std::stol(line.substr(std::string(field).size()));
  return 0;
}

// Resets the peak resident size to the present one (Linux), so that the next
// reading of VmHWM is this benchmark's own peak.
long resetPeak() {
  std::ofstream("/proc/self/clear_refs") << "5";
  return statusKb("VmRSS:");
}

void report(benchmark::State& state, long before) {
  state.counters["rss_growth_mb"] = static_cast<double>(statusKb("VmHWM:") - before) / 1024.0;
  state.counters["rows/s"] = benchmark::Counter(static_cast<double>(state.iterations() * state.range(0)),
                                                benchmark::Counter::kIsRate);
}

void BM_CorrelationTable(benchmark::State& state) {
  const auto& file = dataFile(state.range(0));
  const long before = resetPeak();
  for (auto _ : state) benchmark::DoNotOptimize(quillstats::correlate(file, {}, quillstats::Missing::Pairwise));
  report(state, before);
}
BENCHMARK(BM_CorrelationTable)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_RegressionTable(benchmark::State& state) {
  const auto& file = dataFile(state.range(0));
  const long before = resetPeak();
  for (auto _ : state)
    benchmark::DoNotOptimize(
        quillstats::regress(file, "y", {{"x1", "x2", "x3", "x4", "x5"}, {"x6", "x7", "x8", "x9"}}));
  report(state, before);
}
BENCHMARK(BM_RegressionTable)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  for (int64_t rows : {100'000, 1'000'000}) std::filesystem::remove(dataFile(rows));
  return 0;
}
