#include "fbx/reader/media_folder.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include <boost/filesystem.hpp>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = boost::filesystem;

namespace {

bool IsFile(const fs::path& path) {
  boost::system::error_code error;
  return fs::is_regular_file(path, error);
}

class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  ~FileDescriptor() { Close(); }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  bool IsOpen() const { return descriptor_ >= 0; }
  int Get() const { return descriptor_; }
  bool WriteAll(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
      if (written < 0 && errno == EINTR) continue;
      if (written <= 0) return false;
      bytes.remove_prefix(static_cast<size_t>(written));
    }
    return true;
  }
  bool Close() {
    const int descriptor = std::exchange(descriptor_, -1);
    return descriptor >= 0 && ::close(descriptor) == 0;
  }

 private:
  int descriptor_;
};

// Holds back all signals: one that ends the program comes when there is nothing half made on the
// disk. A picture is written in a moment; a list of what to remove would have to be shared with
// whoever catches signals.
class SignalsWait {
 public:
  SignalsWait() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~SignalsWait() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsWait(const SignalsWait&) = delete;
  SignalsWait& operator=(const SignalsWait&) = delete;

 private:
  sigset_t before_;
};

constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

// A folder of this run below `parent`, gone with the file in it at the end: whoever lists or reads
// the parent beside this run sees whole files only.
class PartFolder {
 public:
  static constexpr const char* kFile = "part";

  explicit PartFolder(int parent)
      : parent_(parent), name_(".part-" + std::to_string(::getpid())), folder_(Make()) {}
  ~PartFolder() {
    const int error = errno;
    Empty();
    ::unlinkat(parent_, name_.c_str(), AT_REMOVEDIR);
    errno = error;
  }
  PartFolder(const PartFolder&) = delete;
  PartFolder& operator=(const PartFolder&) = delete;

  int Get() const { return folder_.Get(); }
  // Of an earlier run with this number.
  void Empty() const { ::unlinkat(folder_.Get(), kFile, 0); }

 private:
  int Make() const {
    ::mkdirat(parent_, name_.c_str(), 0700);
    return ::openat(parent_, name_.c_str(), kOpenFolder);
  }

  int parent_;
  std::string name_;
  FileDescriptor folder_;
};

// Writes `name` in the folder, which is made if it isn't there. False with errno set.
bool WriteFile(const fs::path& folder, const std::string& name,
               const std::function<std::string_view()>& next) {
  const SignalsWait wait;
  const int made = ::mkdir(folder.c_str(), 0777) == 0 ? 0 : errno;
  const FileDescriptor directory(::open(folder.c_str(), kOpenFolder));
  if (!directory.IsOpen()) {
    if (errno == ENOENT) errno = made;
    return false;
  }
  const PartFolder part(directory.Get());
  part.Empty();
  FileDescriptor file(::openat(part.Get(), PartFolder::kFile,
                               O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
  bool isWritten = file.IsOpen();
  for (std::string_view bytes = next(); isWritten && !bytes.empty(); bytes = next()) {
    isWritten = file.WriteAll(bytes);
  }
  if (struct stat old{}; ::fstatat(directory.Get(), name.c_str(), &old, AT_SYMLINK_NOFOLLOW) == 0 &&
                         S_ISREG(old.st_mode)) {
    // A picture that was there keeps its permissions. A file system without them may refuse.
    constexpr mode_t kPermissions = 0777;
    static_cast<void>(::fchmod(file.Get(), old.st_mode & kPermissions));
  }
  // A name that is a symbolic link is replaced by this, not followed.
  return isWritten && file.Close() &&
         ::renameat(part.Get(), PartFolder::kFile, directory.Get(), name.c_str()) == 0;
}

}  // namespace

std::string_view PlainFileName(std::string_view path) {
  const size_t separator = path.find_last_of("/\\");
  const std::string_view name =
      separator == std::string_view::npos ? path : path.substr(separator + 1);
  const bool isRefused = name == "." || name == ".." || name.find('\0') != std::string_view::npos;
  return isRefused ? std::string_view() : name;
}

std::string FbxMediaFolder::Find(const std::string& absolute, const std::string& relative) const {
  if (!IsEnabled() || relative.empty() || (!absolute.empty() && IsThere(absolute))) return {};
  const fs::path folder = fs::path(sceneFile_).parent_path();
  // A backslash is an ordinary character here, so the name as it stands comes first.
  std::string slashes = relative;
  std::replace(slashes.begin(), slashes.end(), '\\', '/');
  for (const std::string& name : {relative, slashes}) {
    std::string path = (folder / name).lexically_normal().string();
    if (IsThere(path)) return path;
  }
  return {};
}

bool FbxMediaFolder::IsThere(const std::string& path) const {
  return IsFile(path) || unwritten_.contains(fs::path(path).lexically_normal().string());
}

FbxMediaFolder::Written FbxMediaFolder::Write(std::string_view name,
                                              const std::function<std::string_view()>& next) {
  const std::string plainName(PlainFileName(name));
  if (!IsEnabled() || plainName.empty()) return {};
  const fs::path folder = fs::path(sceneFile_).replace_extension(".fbm");
  const fs::path path = folder / plainName;
  if (!WriteFile(folder, plainName, next)) {
    const std::string reason = std::generic_category().message(errno);
    messages_.push_back("the embedded picture '" + path.string() + "' can't be written: " + reason);
    unwritten_.insert(path.lexically_normal().string());
  }
  return {path.string(), (folder.filename() / plainName).string()};
}
