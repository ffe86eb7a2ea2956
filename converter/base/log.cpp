#include "converter/base/log.h"

#include "converter/base/names.h"
#include "converter/base/records.h"

std::string FileLogOutput::setFileName(std::string_view name) {
  static std::string fileName;
  if (!name.empty()) fileName = name;
  return fileName;
}

std::FILE* FileLogOutput::Stream() {
  static std::FILE* const pStream = std::fopen(getFileName().c_str(), "w");
  return pStream;
}

void FileLogOutput::Output(const std::string& text) {
  std::FILE* const stream = Stream();
  if (stream == nullptr) return;
  std::fwrite(text.data(), 1, text.size(), stream);
  std::fflush(stream);
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
    return;
  }
}
