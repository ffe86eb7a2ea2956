#include "cal3d/io/output_file.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
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

namespace {

constexpr std::array kEndingSignals = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXCPU};

struct Place {
  volatile std::sig_atomic_t taken;
  char path[PATH_MAX];  // as it was opened: the program never changes its folder
};

std::array<Place, 4> places;  // one file is written at a time; the rest is reserve

void RemoveAndEnd(int signal) {
  for (Place& place : places) {
    if (place.taken != 0) unlink(place.path);
  }
  std::signal(signal, SIG_DFL);
  std::raise(signal);  // comes when the handler returns
}

sigset_t EndingSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : kEndingSignals) sigaddset(&set, signal);
  return set;
}

}  // namespace

void RemoveUnfinishedFilesOnSignals() {
  std::signal(SIGXFSZ, SIG_IGN);
  for (const int signal : kEndingSignals) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;
    action = {};
    action.sa_handler = RemoveAndEnd;
    // A second signal waits: the first is about to end the program.
    action.sa_mask = EndingSignals();
    sigaction(signal, &action, nullptr);
  }
}

int UnfinishedFile::Create(const std::string& path, unsigned mode) {
  const sigset_t ending = EndingSignals();
  sigset_t before;
  sigprocmask(SIG_BLOCK, &ending, &before);
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  const int error = errno;
  if (file >= 0) {
    for (size_t i = 0; i < places.size() && place_ == kNone; ++i) {
      if (places[i].taken != 0 || path.size() >= sizeof places[i].path) continue;
      std::memcpy(places[i].path, path.c_str(), path.size() + 1);
      places[i].taken = 1;
      place_ = i;
    }
  }
  sigprocmask(SIG_SETMASK, &before, nullptr);
  errno = error;
  return file;
}

void UnfinishedFile::Forget() {
  if (place_ != kNone) places[place_].taken = 0;
  place_ = kNone;
}
