#include "converter/base/log.h"

#include <cerrno>
#include <cstring>
#include <new>

#include "converter/base/complaint.h"
#include "converter/base/names.h"
#include "converter/base/records.h"

namespace {

std::FILE* Open(const std::string& name) {
  std::FILE* const file = std::fopen(name.c_str(), "w");
  if (file == nullptr) {
    Complain("the log '" + name + "' can't be opened: " + std::strerror(errno));
  }
  return file;
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
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
  } catch (const std::bad_alloc&) {
    // The file wasn't opened; the next text tries again.
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
    if (ToLower(name).ends_with(".fbx") && fileExists(name)) {
      Complain("the log that " + std::string(word) + " names replaces the scene '" + name + "'");
    }
    return;
  }
}
