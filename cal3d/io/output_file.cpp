#include "cal3d/io/output_file.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

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

// Repeats a call that a signal has interrupted.
template <typename Call>
auto Uninterrupted(const Call& call) {
  while (true) {
    const auto result = call();
    if (result >= 0 || errno != EINTR) return result;
  }
}

}  // namespace

OutputFile::OutputFile(const std::string& path)
    : target_(FollowLink(path)),
      buffer_(std::make_unique_for_overwrite<char[]>(kBufferSize)),
      cursor_(buffer_.get()),
      limit_(buffer_.get() + kBufferSize) {
  struct stat status {};
  if (path.empty() || path.find('\0') != std::string::npos) {
    // An embedded NUL would cut the name short and write some other file.
    errno = path.empty() ? ENOENT : EINVAL;
    Fail();
  } else if (stat(target_.c_str(), &status) != 0) {
    OpenTemporary(0666);
  } else if (S_ISREG(status.st_mode)) {
    constexpr mode_t kPermissions = 0777;
    OpenTemporary(status.st_mode & kPermissions);
    // The mask of the process has taken bits away. A file system without such bits may refuse.
    if (file_ >= 0) static_cast<void>(fchmod(file_, status.st_mode & kPermissions));
  } else {
    file_ = Uninterrupted([this] { return open(target_.c_str(), O_WRONLY | O_CLOEXEC); });
    if (file_ < 0) Fail();
  }
}

OutputFile::~OutputFile() {
  if (file_ >= 0) close(file_);
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

void OutputFile::OpenTemporary(unsigned mode) {
  // The name doesn't grow with the target's, which may be as long as the file system allows.
  static std::atomic<unsigned> counter = 0;
  const std::string directory = target_.substr(0, target_.rfind('/') + 1);
  do {
    temporary_ =
        directory + ".veltrum-" + std::to_string(getpid()) + "-" + std::to_string(counter++);
    file_ = Uninterrupted([&] { return unfinished_.Create(temporary_, mode); });
  } while (file_ < 0 && errno == EEXIST);
  if (file_ >= 0) return;
  temporary_.clear();
  Fail();
}

void OutputFile::Fail() {
  if (error_ == 0) error_ = errno;
  if (file_ >= 0) close(file_);
  file_ = -1;
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
    const size_t left = static_cast<size_t>(cursor_ - at);
    const ssize_t written = Uninterrupted([&] { return write(file_, at, left); });
    if (written > 0) {
      at += written;
    } else {
      if (written == 0) errno = EIO;
      Fail();
    }
  }
  cursor_ = buffer_.get();
}

bool OutputFile::Commit() {
  Flush();
  if (file_ < 0) return false;
  // The descriptor is gone whatever close says; what it says may be that bytes were lost.
  const int closed = close(std::exchange(file_, -1));
  if (closed != 0 ||
      (!temporary_.empty() && std::rename(temporary_.c_str(), target_.c_str()) != 0)) {
    Fail();
    return false;
  }
  temporary_.clear();
  unfinished_.Forget();
  return true;
}
