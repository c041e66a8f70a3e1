// The classification of arbitrary entries, late-bound through the command
// object as the template calls it: an answer among the known types, never a
// library error.
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "command/ClassFactory.h"
#include "host/CallSite.h"
#include "quillpaper/references/ReferenceFormatter.h"
#include "quillpaper/references/ReferenceSource.h"
#include "quillpaper/Session.h"

using namespace QuillFormatAPA;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static quillpaper::Session session(
      quillpaper::DiagnosticsService::Options{quillpaper::ErrorPolicy::Exit, {}, std::filesystem::temp_directory_path()});
  static const ObjectRef probe = createObject("QuillFormatAPA.Periodical");
  const std::string entry(reinterpret_cast<const char*>(data), size);
  auto settings = make<quillpaper::FormatterSettings>();
  auto source = make<quillpaper::ReferenceSource>(settings, entry);
  try {
    bool isFootnote = false;
    std::string decorated, subTitle;
    callByName(probe, "FindTitleImpl", entry, byRef(isFootnote), byRef(decorated), byRef(subTitle));
    const int32_t type =
        callByName(session.main2(), "GetReferenceType", entry, byRef(decorated), byRef(subTitle), ObjectRef(source))
            .toInteger();
    if (type != 0 && type != 1 && type != 4) std::abort();
  } catch (const AutomationError&) {
    std::abort();
  }
  return 0;
}
