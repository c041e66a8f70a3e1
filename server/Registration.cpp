#include "server/Registration.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

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

mode_t currentUmask() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return mask;
}

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

// Writes `text` to a temporary file of its own beside `path` and renames it
// into place, so that a reader never sees half a record, whoever else writes.
void writeAtomically(const fs::path& path, const std::string& text) {
  std::string temp = (path.parent_path() / ("." + path.filename().string() + ".XXXXXX")).string();
  const int fd = ::mkstemp(temp.data());
  if (fd < 0) fileError("cannot write in", path.parent_path(), std::error_code(errno, std::generic_category()));
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    done += static_cast<size_t>(n);
  }
  const int error = done < text.size() ? errno : ::fsync(fd) != 0 ? errno : 0;
  ::fchmod(fd, 0644 & ~currentUmask());
  ::close(fd);
  std::error_code ec = error ? std::error_code(error, std::generic_category()) : std::error_code();
  if (!ec) fs::rename(temp, path, ec);
  if (ec) {
    std::error_code ignored;
    fs::remove(temp, ignored);
    fileError("cannot write", path, ec);
  }
}

// Registering and unregistering hold a lock beside the record's folder:
// processes doing either at once take turns.
class RegistryLock {
 public:
  explicit RegistryLock(const fs::path& record) {
    const fs::path folder = record.parent_path();
    std::error_code ec;
    fs::create_directories(folder, ec);
    if (ec) fileError("cannot create the folder of", record, ec);
    const fs::path lock = folder.parent_path() / ("." + folder.filename().string() + ".lock");
    fd_ = ::open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd_ < 0) fileError("cannot lock", lock, std::error_code(errno, std::generic_category()));
    while (::flock(fd_, LOCK_EX) != 0 && errno == EINTR) {
    }
  }
  RegistryLock(const RegistryLock&) = delete;
  RegistryLock& operator=(const RegistryLock&) = delete;
  ~RegistryLock() { ::close(fd_); }

 private:
  int fd_ = -1;
};

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
  const fs::path path = registrationPath();
  RegistryLock lock(path);
  writeAtomically(path, record(library, typeLibrary));
}

bool unregisterServer(std::string& why) {
  const fs::path path = registrationPath();
  if (!fs::exists(path.parent_path())) {
    why = "QuillFormatAPA is not registered for this user (no " + path.string() + ")";
    return false;
  }
  RegistryLock lock(path);
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
