// A folder of its own for one test, removed with everything in it at the end of
// the scope.
#pragma once

#include <string>
#include <string_view>

class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  // The folder's path, without a separator at its end.
  const std::string& Path() const { return path_; }
  // The path of `name` inside the folder; nothing is made.
  std::string File(std::string_view name) const;
  // Writes `bytes` to the file `name` inside the folder and returns its path.
  std::string Write(std::string_view name, std::string_view bytes) const;

 private:
  std::string path_;
};

// The bytes of a file; a test failure and an empty string when it can't be
// read.
std::string ReadFile(const std::string& path);
bool FileExists(const std::string& path);
