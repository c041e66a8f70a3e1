#include "server/Registration.h"

#include <dlfcn.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <system_error>

#include "command/ClassFactory.h"
#include "host/AutomationError.h"
#include "server/Json.h"
#include "server/TypeLibrary.h"

namespace QuillFormatAPA::server {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fileError(const std::string& what, const fs::path& path, const std::error_code& ec) {
  AutomationError e(kPathFileAccessError, what + " " + path.string() + ": " + ec.message(), "DllRegisterServer");
  e.setLastDllError(ec.value());
  throw e;
}

std::string readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream all;
  all << in.rdbuf();
  return all.str();
}

std::string record(const fs::path& library, const fs::path& typeLibrary) {
  std::string out = "{\n  \"library\": " + jsonString(library.string()) +
                    ",\n  \"typeLibrary\": " + jsonString(typeLibrary.string()) +
                    ",\n  \"version\": " + jsonString(version()) + ",\n  \"classes\": [";
  bool first = true;
  for (const PublicClass& c : publicClasses()) {
    out += (first ? "\n    " : ",\n    ") + jsonString(c.name);
    first = false;
  }
  return out + "\n  ]\n}\n";
}

// Writes `text` to a temporary file beside `path` and renames it into place,
// so that a reader never sees half a record.
void writeAtomically(const fs::path& path, const std::string& text) {
  std::error_code ec;
  fs::create_directories(path.parent_path(), ec);
  if (ec) fileError("cannot create the folder of", path, ec);
  const fs::path temp = path.string() + ".tmp";
  {
    std::ofstream out(temp, std::ios::binary | std::ios::trunc);
    out << text;
    out.flush();
    if (!out) {
      fs::remove(temp, ec);
      fileError("cannot write", temp, std::make_error_code(std::errc::io_error));
    }
  }
  fs::rename(temp, path, ec);
  if (ec) {
    std::error_code ignored;
    fs::remove(temp, ignored);
    fileError("cannot write", path, ec);
  }
}

}  // namespace

fs::path registrationPath() {
  fs::path base;
  if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg && *xdg)
    base = xdg;
  else if (const char* home = std::getenv("HOME"); home && *home)
    base = fs::path(home) / ".local" / "share";
  else
    base = ".local/share";
  return base / "QuillFormatAPA" / "registration.json";
}

fs::path libraryPath() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<const void*>(&registrationPath), &info) == 0 || !info.dli_fname)
    throw AutomationError(kFileNotFound, "cannot tell where the library was loaded from", "DllRegisterServer");
  std::error_code ec;
  const fs::path path = fs::canonical(info.dli_fname, ec);
  return ec ? fs::absolute(info.dli_fname) : path;
}

void registerServer() {
  const fs::path library = libraryPath();
  const fs::path typeLibrary = library.parent_path() / kTypeLibraryFile;
  if (!fs::exists(typeLibrary))
    throw AutomationError(kFileNotFound, "the type library is not beside the library: " + typeLibrary.string(),
                          "DllRegisterServer");
  writeAtomically(registrationPath(), record(library, typeLibrary));
}

bool unregisterServer(std::string& why) {
  const fs::path path = registrationPath();
  if (!fs::exists(path)) {
    why = "QuillFormatAPA is not registered for this user (no " + path.string() + ")";
    return false;
  }
  const fs::path library = libraryPath();
  const auto registered = jsonStringField(readFile(path), "library");
  if (registered && fs::path(*registered) != library) {
    why = "QuillFormatAPA is registered for another library (" + *registered + "); the record stays";
    return false;
  }
  std::error_code ec;
  if (!fs::remove(path, ec) && ec) fileError("cannot remove", path, ec);
  fs::remove(path.parent_path(), ec);  // only if nothing else is left in it
  return true;
}

}  // namespace QuillFormatAPA::server
