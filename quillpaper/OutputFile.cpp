#include "quillpaper/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <stdexcept>
#include <streambuf>
#include <vector>

namespace quillpaper {

namespace {

std::string reason(int error) { return std::strerror(error); }

// Writes all of `bytes` to `fd`; false with errno set when it cannot.
bool writeAll(int fd, const char* bytes, size_t size) {
  while (size > 0) {
    const ssize_t n = ::write(fd, bytes, size);
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes += n;
    size -= static_cast<size_t>(n);
  }
  return true;
}

mode_t currentUmask() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return mask;
}

}  // namespace

// A buffer over the temporary file that remembers the first failed write.
class OutputFile::Buffer : public std::streambuf {
 public:
  explicit Buffer(int fd) : fd_(fd), data_(1 << 16) { setp(data_.data(), data_.data() + data_.size()); }
  int error() const { return error_; }

 protected:
  int_type overflow(int_type c) override {
    if (!drain()) return traits_type::eof();
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
      *pptr() = traits_type::to_char_type(c);
      pbump(1);
    }
    return traits_type::not_eof(c);
  }
  int sync() override { return drain() ? 0 : -1; }

 private:
  bool drain() {
    if (error_ != 0) return false;
    if (!writeAll(fd_, pbase(), static_cast<size_t>(pptr() - pbase()))) {
      error_ = errno;
      return false;
    }
    setp(data_.data(), data_.data() + data_.size());
    return true;
  }
  int fd_;
  int error_ = 0;
  std::vector<char> data_;
};

OutputFile::OutputFile(const std::filesystem::path& path) : target_(path) {
  std::error_code ec;
  // A symbolic link stands for its target: the target is what gets replaced.
  if (std::filesystem::is_symlink(std::filesystem::symlink_status(target_, ec)))
    target_ = std::filesystem::weakly_canonical(target_, ec);
  struct stat existing {};
  const bool exists = ::stat(target_.c_str(), &existing) == 0;
  if (exists && !S_ISREG(existing.st_mode))
    throw std::runtime_error("will not write " + path.string() + ": it is not a regular file");
  const std::filesystem::path folder = target_.has_parent_path() ? target_.parent_path() : ".";
  temporary_ = (folder / ("." + target_.filename().string() + ".XXXXXX")).string();
  fd_ = ::mkstemp(temporary_.data());
  if (fd_ < 0) throw std::runtime_error("cannot write in " + folder.string() + ": " + reason(errno));
  const mode_t mode = exists ? existing.st_mode & 07777 : 0666 & ~currentUmask();
  ::fchmod(fd_, mode);
  buffer_ = std::make_unique<Buffer>(fd_);
  stream_ = std::make_unique<std::ostream>(buffer_.get());
}

OutputFile::~OutputFile() {
  if (fd_ >= 0) ::close(fd_);
  if (!committed_) ::unlink(temporary_.c_str());
}

std::ostream& OutputFile::stream() { return *stream_; }

void OutputFile::commit() {
  const std::string name = target_.string();
  stream_->flush();
  if (buffer_->error() != 0 || !*stream_)
    throw std::runtime_error("cannot write " + name + ": " + reason(buffer_->error() ? buffer_->error() : EIO));
  if (::fsync(fd_) != 0) throw std::runtime_error("cannot write " + name + ": " + reason(errno));
  struct stat existing {};
  if (::stat(target_.c_str(), &existing) == 0 && existing.st_nlink > 1) {
    // Other names share the file: its content is rewritten where it is, from
    // the complete copy, which stays if that fails.
    const int out = ::open(target_.c_str(), O_WRONLY | O_TRUNC);
    std::vector<char> block(1 << 16);
    bool ok = out >= 0 && ::lseek(fd_, 0, SEEK_SET) == 0;
    for (ssize_t n = 0; ok && (n = ::read(fd_, block.data(), block.size())) != 0;)
      ok = n > 0 && writeAll(out, block.data(), static_cast<size_t>(n));
    ok = ok && ::fsync(out) == 0;
    const int error = errno;
    if (out >= 0) ::close(out);
    if (!ok) {
      committed_ = true;  // the copy is the only complete one now: it stays
      throw std::runtime_error("cannot write " + name + ": " + reason(error) + "; the complete text is in " +
                               temporary_);
    }
    return;
  }
  if (::close(fd_) != 0) {
    fd_ = -1;
    throw std::runtime_error("cannot write " + name + ": " + reason(errno));
  }
  fd_ = -1;
  if (std::rename(temporary_.c_str(), target_.c_str()) != 0)
    throw std::runtime_error("cannot write " + name + ": " + reason(errno));
  committed_ = true;
}

void writeFileAtomically(const std::filesystem::path& path, std::string_view bytes) {
  OutputFile file(path);
  file.write(bytes);
  file.commit();
}

std::string standardOutputProblem() {
  std::cout.flush();
  errno = 0;
  const bool flushed = std::fflush(stdout) == 0;
  const int error = errno;
  if (flushed && !std::ferror(stdout) && std::cout) return {};
  return error ? reason(error) : "a write failed";
}

}  // namespace quillpaper
