#include "cal3d/io/output_file.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The file that a symbolic link leads to, so that the link itself survives a rename.
std::string FollowLink(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return path;
  const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                         &std::free);
  return real ? std::string(real.get()) : path;
}

bool IsSpecialFile(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

}  // namespace

OutputFile::OutputFile(const std::string& path)
    : target_(FollowLink(path)),
      buffer_(std::make_unique_for_overwrite<char[]>(kBufferSize)),
      cursor_(buffer_.get()),
      limit_(buffer_.get() + kBufferSize) {
  // An embedded NUL would cut the name short and write some other file.
  if (path.empty() || path.find('\0') != std::string::npos) return;
  if (IsSpecialFile(target_)) {
    file_ = open(target_.c_str(), O_WRONLY | O_CLOEXEC);
  } else {
    OpenTemporary();
  }
}

OutputFile::~OutputFile() {
  if (file_ >= 0) close(file_);
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

void OutputFile::OpenTemporary() {
  // The name doesn't grow with the target's, which may be as long as the file system allows.
  static std::atomic<unsigned> counter = 0;
  const std::string directory = target_.substr(0, target_.rfind('/') + 1);
  do {
    temporary_ =
        directory + ".veltrum-" + std::to_string(getpid()) + "-" + std::to_string(counter++);
    file_ = open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  } while (file_ < 0 && errno == EEXIST);
  if (file_ < 0) temporary_.clear();
}

void OutputFile::Append(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::string_view piece = bytes.substr(0, kRoom);
    char* at = Room();
    std::memcpy(at, piece.data(), piece.size());
    Advance(at + piece.size());
    bytes.remove_prefix(piece.size());
  }
}

void OutputFile::Flush() {
  const char* at = buffer_.get();
  while (file_ >= 0 && at != cursor_) {
    const ssize_t written = write(file_, at, static_cast<size_t>(cursor_ - at));
    if (written > 0) {
      at += written;
    } else if (written == 0 || errno != EINTR) {
      close(file_);
      file_ = -1;
    }
  }
  cursor_ = buffer_.get();
}

bool OutputFile::Commit() {
  Flush();
  if (file_ < 0) return false;
  const bool closed = close(file_) == 0;
  file_ = -1;
  if (!closed) return false;
  if (temporary_.empty()) return true;
  if (std::rename(temporary_.c_str(), target_.c_str()) != 0) return false;
  temporary_.clear();
  return true;
}
