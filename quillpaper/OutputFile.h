#pragma once

#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

namespace quillpaper {

// A file written whole or not at all. The bytes go to a temporary file beside
// it, which takes the file's place only once every byte is written and
// synced; a failure (a full disk, a kill) leaves the file as it was, or
// absent, and the reason is thrown as std::runtime_error.
//  - What stands at the path must be a regular file or nothing: a symbolic
//    link is followed and its target replaced; a device, a folder or a pipe
//    is refused before anything is written.
//  - A replaced file keeps its permissions; a new one gets the umask's. A
//    file with other hard links is rewritten in place once the temporary copy
//    is complete, so that every name of it sees the new content.
class OutputFile {
 public:
  explicit OutputFile(const std::filesystem::path& path);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  // Where the bytes go; a failed write puts the stream in its bad state.
  std::ostream& stream();
  void write(std::string_view bytes) { stream().write(bytes.data(), static_cast<std::streamsize>(bytes.size())); }
  // The file takes its new content; throws when any write failed.
  void commit();

 private:
  class Buffer;
  std::filesystem::path target_;
  std::string temporary_;
  int fd_ = -1;
  bool committed_ = false;
  std::unique_ptr<Buffer> buffer_;
  std::unique_ptr<std::ostream> stream_;
};

// `bytes` written to `path` through an OutputFile.
void writeFileAtomically(const std::filesystem::path& path, std::string_view bytes);

// Whether standard output took everything written to it; call before exiting.
// Answers the reason when it did not ("No space left on device").
std::string standardOutputProblem();

}  // namespace quillpaper
