// The retrieval-statement split on arbitrary entries: it never raises, and
// what it gives back is taken from the entry.
#include <cstdint>
#include <cstdio>
#include <exception>
#include <cstdlib>
#include <string>

#include "formatter/FormatterImplementation.h"
#include "tests/fakes/FakeService.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // The library finds its diagnostics service before it runs a procedure.
  static const auto service = QuillFormatAPA::make<QuillFormatAPA::fakes::FakeService>();
  static const QuillFormatAPA::fakes::ServiceRegistration registration{QuillFormatAPA::ObjectRef(service)};
  service->calls.clear();  // the fake keeps a line per traced call; one run's worth is enough
  std::string entry(reinterpret_cast<const char*>(data), size);
  const std::string original = entry;
  std::string website, accessDate;
  try {
    QuillFormatAPA::FormatterImplementation::parseAndRemoveWeb(entry, website, accessDate);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "raised: %s\n", e.what());
    std::abort();
  }
  if (entry.size() > original.size() || website.size() > original.size()) std::abort();
  return 0;
}
