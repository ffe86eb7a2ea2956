#include "converter/base/log.h"

#include <cerrno>
#include <cstring>
#include <new>
#include <span>

#include <sys/stat.h>

#include "converter/base/complaint.h"
#include "converter/base/names.h"
#include "converter/base/records.h"

namespace {

void ComplainOfLog(const std::string& name, const char* what) {
  const std::string reason = std::strerror(errno);
  Complain("the log '" + name + "' can't be " + what + ": " + reason);
}

std::FILE* Open(const std::string& name) {
  std::FILE* const file = std::fopen(name.c_str(), "w");
  if (file == nullptr) ComplainOfLog(name, "opened");
  return file;
}

// Whether both paths lead to one file, by whatever names.
bool IsSameFile(const std::string& a, const std::string& b) {
  struct stat first {};
  struct stat second {};
  return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

// Whether the log that word `option` + 1 names is a scene: by its name; because it is the file that
// another word names, which is no log; or because the group option has no value, so that the word
// is the scene.
bool ReplacesScene(std::span<const char* const> words, size_t option, const std::string& log) {
  if (!fileExists(log)) return false;
  if (ToLower(log).ends_with(".fbx")) return true;
  if (words[option] == std::string_view("-g") && !log.starts_with('-')) return true;
  struct stat status {};
  if (stat(log.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  for (size_t i = 1; i < words.size(); ++i) {
    const bool isLog = i == option + 1 || words[i - 1] == std::string_view("--log");
    if (!isLog && IsSameFile(log, removeUnneededDoubleQuotes(words[i]))) return true;
  }
  return false;
}

}  // namespace

std::string FileLogOutput::setFileName(std::string_view name) {
  static std::string fileName;
  if (!name.empty()) fileName = name;
  return fileName;
}

std::FILE* FileLogOutput::Stream() {
  static std::FILE* const pStream = Open(getFileName());
  return pStream;
}

void FileLogOutput::Output(std::string_view text) noexcept {
  try {
    std::FILE* const stream = Stream();
    if (stream == nullptr) return;
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
    if (std::fflush(stream) != 0 || !isWritten) ComplainOfLog(getFileName(), "written");
  } catch (const std::bad_alloc&) {
    // The file wasn't opened, or there is no memory to tell what became of it. Both are tried again
    // with the next text.
  }
}

void WriteLogLine(std::string_view sourcePath, std::string_view message) {
  FileLog(true) << "\t[" << getFileNameFromPath(sourcePath) << "] "
                << "info"
                << "\t" << message;
}

void initLog(int argc, const char* const* argv) {
  for (int i = 0; i < argc - 1; ++i) {
    const std::string_view word = argv[i];
    if (word != "--log" && word != "-g") continue;
    const std::string name = removeUnneededDoubleQuotes(argv[i + 1]);
    if (FileLogOutput::setFileName(name).empty()) {
      AddWarning(std::string(word) + "=" + name + "error opening logfile");
    }
    if (ReplacesScene({argv, static_cast<size_t>(argc)}, static_cast<size_t>(i), name)) {
      Complain("the log that " + std::string(word) + " names replaces the scene '" + name + "'");
    }
    return;
  }
}
