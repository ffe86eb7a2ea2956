#include "converter/base/names.h"

#include <cstring>

#include <boost/filesystem.hpp>

#include "converter/base/records.h"

namespace fs = boost::filesystem;

std::string prependPathToFileName(std::string_view directory, std::string_view fileName) {
  return std::string(directory).append(fileName);
}

std::string OutputPath(const ConversionArguments& args, std::string_view name,
                       const ObjectKind& kind) {
  return prependPathToFileName(args.directoryForOutputFiles,
                               urlencode(name).append(kind.file->extension));
}

std::string removeUnneededDoubleQuotes(std::string_view text) {
  if (text.size() >= 3 && text.front() == '"' && text.back() == '"') {
    text = text.substr(1, text.size() - 2);
  }
  return std::string(text);
}

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> pieces;
  for (;;) {
    const size_t end = text.find(separator);
    pieces.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return pieces;
    text.remove_prefix(end + 1);
  }
}

int lastIndexOf(const char* text, char character) {
  const char* const last = std::strrchr(text, character);
  return last == nullptr ? -1 : static_cast<int>(last - text);
}

std::string ToLower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

std::string getBaseFilenameFromFBXFileName(const std::string& path) {
  return fs::path(path).filename().string();
}

std::string getBaseFilenameWithExtension(const std::string& path) {
  return getBaseFilenameFromFBXFileName(path);
}

std::string getBaseDirectoryFromFBXFileName(const std::string& path) {
  return path.substr(0, ToLower(path).find(".fbx"));
}

std::string getFileNameFromPath(std::string_view path) {
  return std::string(path.substr(path.find_last_of("/\\") + 1));
}

bool isDirectory(const std::string& path) {
  boost::system::error_code error;
  return fs::status(path, error).type() == fs::directory_file;
}

bool fileExists(const std::string& path) {
  boost::system::error_code error;
  const fs::file_type type = fs::status(path, error).type();
  return type != fs::file_not_found && type != fs::status_error;
}

void CheckDirectoryExistsAndCreate(const std::string& path) {
  if (!fileExists(path)) fs::create_directory(path);
}

std::vector<std::string> ListFilesInDirectory(const std::string& path) {
  std::vector<std::string> files;
  boost::system::error_code error;
  fs::directory_iterator entry(path, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    boost::system::error_code unreadable;
    if (entry->status(unreadable).type() == fs::regular_file) {
      files.push_back(entry->path().string());
    }
  }
  return files;
}

void warnOfTypeOverrideByFileExtension(ObjectType oldType, const std::string& extension,
                                       ObjectType newType) {
  AddWarning("file extension '" + extension + "' is overriding resource type of '" +
             ObjectTypeAsString::getStringForEnumValue(oldType) + "' to '" +
             ObjectTypeAsString::getStringForEnumValue(newType) + "'");
}
