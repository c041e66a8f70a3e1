#include "diagnostics/RuntimeObjects.h"

#include <dlfcn.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "diagnostics/vbwProtector.h"
#include "host/LibraryObject.h"
#include "host/MemberTable.h"

#ifndef QFA_VERSION_MAJOR
#define QFA_VERSION_MAJOR 0
#define QFA_VERSION_MINOR 0
#define QFA_VERSION_PATCH 0
#endif

namespace QuillFormatAPA::runtime {

namespace {

std::string environment(const char* name) {
  const char* v = std::getenv(name);
  return v ? v : "";
}

class App : public Dispatchable<App>, private LibraryObject {
 public:
  static const MemberTable& members() {
    static const MemberTable& table = ClassBuilder<App>("App")
                                  .get<&App::Title>("Title")
                                  .get<&App::EXEName>("EXEName")
                                  .get<&App::Path>("Path")
                                  .get<&App::Major>("Major")
                                  .get<&App::Minor>("Minor")
                                  .get<&App::Revision>("Revision")
                                  .get<&App::ThreadID>("ThreadID")
                                  .build();
    return table;
  }
  std::string Title() const { return "QuillFormatAPA"; }
  std::string EXEName() const { return "QuillFormatAPA"; }
  // The folder the library was loaded from.
  std::string Path() const {
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void*>(&appObject), &info) || !info.dli_fname) return "";
    std::string file = info.dli_fname;
    const auto slash = file.rfind('/');
    return slash == std::string::npos ? "." : file.substr(0, slash);
  }
  int16_t Major() const { return QFA_VERSION_MAJOR; }
  int16_t Minor() const { return QFA_VERSION_MINOR; }
  int16_t Revision() const { return QFA_VERSION_PATCH; }
  int32_t ThreadID() const { return static_cast<int32_t>(syscall(SYS_gettid)); }
};

class Err : public Dispatchable<Err>, private LibraryObject {
 public:
  static const MemberTable& members() {
    static const MemberTable& table = ClassBuilder<Err>("ErrObject")
                                  .get<&Err::Number>("Number")
                                  .get<&Err::Description>("Description")
                                  .get<&Err::Source>("Source")
                                  .get<&Err::LastDllError>("LastDllError")
                                  .build();
    return table;
  }
  int32_t Number() const { return vbwProtector::currentError().number(); }
  std::string Description() const { return vbwProtector::currentError().description(); }
  std::string Source() const { return vbwProtector::currentError().source(); }
  int32_t LastDllError() const { return vbwProtector::currentError().lastDllError(); }
};

class Screen : public Dispatchable<Screen>, private LibraryObject {
 public:
  static const MemberTable& members() {
    static const MemberTable& table = ClassBuilder<Screen>("Screen")
                                  .get<&Screen::DisplayName>("DisplayName")
                                  .get<&Screen::Available>("Available")
                                  .get<&Screen::TwipsPerPixelX>("TwipsPerPixelX")
                                  .get<&Screen::TwipsPerPixelY>("TwipsPerPixelY")
                                  .build();
    return table;
  }
  // A library sees only what the environment names; a headless host has none.
  std::string DisplayName() const {
    const std::string wayland = environment("WAYLAND_DISPLAY");
    return wayland.empty() ? environment("DISPLAY") : wayland;
  }
  bool Available() const { return !DisplayName().empty(); }
  int32_t TwipsPerPixelX() const { return 15; }
  int32_t TwipsPerPixelY() const { return 15; }
};

class Printer : public Dispatchable<Printer>, private LibraryObject {
 public:
  static const MemberTable& members() {
    static const MemberTable& table = ClassBuilder<Printer>("Printer")
                                  .get<&Printer::DeviceName>("DeviceName")
                                  .get<&Printer::Available>("Available")
                                  .build();
    return table;
  }
  std::string DeviceName() const {
    const std::string printer = environment("PRINTER");
    return printer.empty() ? environment("LPDEST") : printer;
  }
  bool Available() const { return !DeviceName().empty(); }
};

}  // namespace

ObjectRef appObject() { return make<App>(); }
ObjectRef errObject() { return make<Err>(); }
ObjectRef screenObject() { return make<Screen>(); }
ObjectRef printerObject() { return make<Printer>(); }

}  // namespace QuillFormatAPA::runtime
