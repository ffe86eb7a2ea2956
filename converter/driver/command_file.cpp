#include "converter/driver/command_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

#include <boost/filesystem.hpp>

#include "converter/base/complaint.h"
#include "converter/base/names.h"
#include "converter/base/records.h"
#include "converter/driver/command_line.h"

namespace {

constexpr size_t kNowhere = std::string_view::npos;

bool IsOpen(const std::string& path, const OpenCommandFile* openFiles) {
  for (; openFiles != nullptr; openFiles = openFiles->outer) {
    boost::system::error_code unreadable;
    if (boost::filesystem::equivalent(path, openFiles->path, unreadable)) return true;
  }
  return false;
}

std::string ReadWholeFile(std::FILE* file, const std::string& path) {
  std::string bytes;
  std::array<char, 4096> block;
  while (std::feof(file) == 0) {
    bytes.append(block.data(), std::fread(block.data(), 1, block.size(), file));
    if (std::ferror(file) == 0) continue;
    // A signal is no reason to stop.
    if (errno != EINTR) {
      throw std::runtime_error("command file '" + path +
                               "' can't be read: " + std::strerror(errno));
    }
    std::clearerr(file);
  }
  return bytes;
}

std::vector<std::string> WordsOfFile(const std::string& path, std::string_view value) {
  std::vector<std::string> words;
  const auto close = [](std::FILE* stream) { std::fclose(stream); };
  // Opening a directory succeeds, reading it doesn't.
  const std::unique_ptr<std::FILE, decltype(close)> file(
      isDirectory(path) ? nullptr : std::fopen(path.c_str(), "rb"), close);
  if (file == nullptr) {
    const std::string reason = std::strerror(isDirectory(path) ? EISDIR : errno);
    PrintFormatted("Unable to open command file: %s", std::string(value).c_str());
    Complain("command file '" + path + "' can't be opened: " + reason);
    return words;
  }
  const std::string bytes = ReadWholeFile(file.get(), path);
  std::string_view text(bytes);
  // What editors on Windows add is no part of the words: a byte order mark, returns at line ends.
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  while (!text.empty()) {
    const size_t length = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, length);
    if (line.ends_with('\r')) line.remove_suffix(1);
    SplitCommandFileLine(line, words);
    text.remove_prefix(std::min(length + 1, text.size()));
  }
  if (words.empty()) Complain("command file '" + path + "' holds no commands");
  return words;
}

}  // namespace

void SplitCommandFileLine(std::string_view line, std::vector<std::string>& words) {
  const auto skipBlanks = [line](size_t at) {
    return std::min(line.find_first_not_of(' ', at), line.size());
  };
  size_t at = skipBlanks(0);
  size_t quote = line.find('"');
  // The position up to which a quote opens a word. At the start of a line that is the line's first
  // character alone; in the last word of a line no quote does.
  size_t limit = at;
  while (at < line.size()) {
    // Both are looked for anew only once they are passed, so that a line costs its length.
    if (quote < at) quote = line.find('"', at);
    std::string_view word;
    if (quote != kNowhere && limit != kNowhere && quote <= limit) {
      const size_t begin = quote + 1;
      const size_t close = line.find('"', begin);
      word = line.substr(begin, close == kNowhere ? kNowhere : close - begin);
      // Without a closing quote the words inside are read again, one by one.
      at = close == kNowhere ? begin : close + 1;
    } else {
      const size_t end = std::min(line.find(' ', at), line.size());
      word = line.substr(at, end - at);
      at = end;
    }
    if (!word.empty()) words.emplace_back(word);
    at = skipBlanks(at);
    if (limit < at) limit = line.find(' ', at);
  }
}

std::vector<ConversionArguments> ReadCommandFile(std::string_view value,
                                                 const OpenCommandFile* openFiles) {
  const std::string path = removeUnneededDoubleQuotes(value);
  if (path.empty()) {
    AddError("-z command requires filename to read commands from\n");
    return {};
  }
  if (IsOpen(path, openFiles)) {
    AddError("command file '" + path + "' reads itself");
    return {};
  }
  const std::vector<std::string> words = WordsOfFile(path, value);
  const OpenCommandFile thisFile{path, openFiles};
  return breakCommandlineIntoSegments(words, &thisFile);
}
