// Any bytes as a data file: the CSV reader and every analysis either give
// their result or a DataError; nothing else may come out (no other
// exception, no crash, no hang).
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "stats/Analyses.h"

namespace {

const std::string& path() {
  static const std::string p = "/tmp/fuzz_csv_" + std::to_string(::getpid()) + ".csv";
  return p;
}

template <class F>
void guarded(F&& f) {
  try {
    f();
  } catch (const quillstats::DataError&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 1 << 16) return 0;
  std::FILE* f = std::fopen(path().c_str(), "wb");
  if (!f) return 0;
  std::fwrite(data, 1, size, f);
  std::fclose(f);
  std::vector<std::string> header;
  guarded([&] {
    quillstats::CsvReader csv(path());
    header = csv.header();
    while (csv.next())
      for (size_t c = 0; c < header.size(); ++c) guarded([&] { csv.number(c); });
  });
  if (header.size() < 3 || header[0] == header[1] || header[0] == header[2] || header[1] == header[2]) return 0;
  using namespace quillstats;
  guarded([&] { describe(path(), {}, header[2]); });
  guarded([&] { correlate(path(), {}, Missing::Pairwise); });
  guarded([&] { correlate(path(), {header[0], header[1]}, Missing::Listwise); });
  guarded([&] { regress(path(), header[0], {{header[1]}, {header[2]}}); });
  guarded([&] { anova(path(), header[0], {header[1], header[2]}); });
  guarded([&] { ttests(path(), {header[0], header[1]}, header[2]); });
  return 0;
}
