#include "fbx/reader/media_folder.h"

#include <algorithm>
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

}  // namespace

std::string_view PlainFileName(std::string_view path) {
  const size_t separator = path.find_last_of("/\\");
  const std::string_view name =
      separator == std::string_view::npos ? path : path.substr(separator + 1);
  const bool isRefused = name == "." || name == ".." || name.find('\0') != std::string_view::npos;
  return isRefused ? std::string_view() : name;
}

std::string FbxMediaFolder::Find(const std::string& absolute, const std::string& relative) const {
  if (!IsEnabled() || relative.empty() || (!absolute.empty() && IsFile(absolute))) return {};
  const fs::path folder = fs::path(sceneFile_).parent_path();
  // A backslash is an ordinary character here, so the name as it stands comes first.
  std::string slashes = relative;
  std::replace(slashes.begin(), slashes.end(), '\\', '/');
  for (const std::string& name : {relative, slashes}) {
    const fs::path path = (folder / name).lexically_normal();
    if (IsFile(path)) return path.string();
  }
  return {};
}

FbxMediaFolder::Written FbxMediaFolder::Write(std::string_view name,
                                              const std::function<std::string_view()>& next) const {
  const std::string plainName(PlainFileName(name));
  if (!IsEnabled() || plainName.empty()) return {};
  const fs::path folder = fs::path(sceneFile_).replace_extension(".fbm");
  ::mkdir(folder.c_str(), 0777);
  const FileDescriptor directory(
      ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!directory.IsOpen()) return {};

  // Under a name of its own first: a run beside this one may be reading the file.
  const std::string part = ".part-" + std::to_string(::getpid());
  ::unlinkat(directory.Get(), part.c_str(), 0);
  FileDescriptor file(::openat(directory.Get(), part.c_str(),
                               O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
  if (!file.IsOpen()) return {};
  bool isWritten = true;
  for (std::string_view bytes = next(); isWritten && !bytes.empty(); bytes = next()) {
    isWritten = file.WriteAll(bytes);
  }
  isWritten = file.Close() && isWritten;
  // A name that is a symbolic link is replaced by this, not followed.
  if (!isWritten ||
      ::renameat(directory.Get(), part.c_str(), directory.Get(), plainName.c_str()) != 0) {
    ::unlinkat(directory.Get(), part.c_str(), 0);
    return {};
  }
  return {(folder / plainName).string(), (folder.filename() / plainName).string()};
}
