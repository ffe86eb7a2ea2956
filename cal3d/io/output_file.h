// A file that appears under its name only when it is whole: it is written beside its target under
// a temporary name, in large pieces, and renamed at the end.
//
// A target that isn't a regular file (a device, a pipe) is written as it is, since a rename would
// put a file in its place; a symbolic link keeps pointing at its file, and that file is replaced.
// An existing file's permission bits go over to the new one.
//
// Nothing is synced to the disk: a crash of the program can't harm the earlier file, and for a
// crash of the machine whoever runs thousands of exports can't pay the wait.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "cal3d/io/unfinished_files.h"

class OutputFile {
 public:
  // The room that Room() gives at least.
  static constexpr size_t kRoom = 4096;

  // Opens the temporary file. Whether that worked is told by Commit.
  explicit OutputFile(const std::string& path);
  // Removes the temporary file unless Commit has renamed it.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // Where the next byte goes. The caller may write up to kRoom bytes there and then tells, with
  // Advance, where they end. This pair spares the inner loops a call and a check for every number.
  char* Room() {
    if (static_cast<size_t>(limit_ - cursor_) < kRoom) Flush();
    return cursor_;
  }
  void Advance(char* end) { cursor_ = end; }

  // Appends bytes of any number.
  void Append(std::string_view bytes);

  // Writes what is left and moves the file to its name. False if anything failed since the
  // constructor; the target is then as it was.
  bool Commit();

  // The errno of the first thing that failed, 0 if nothing has.
  int Error() const { return error_; }

 private:
  void OpenTemporary(unsigned mode);
  void Flush();
  // Remembers errno, and gives the file up.
  void Fail();

  static constexpr size_t kBufferSize = size_t{1} << 20;

  std::string target_;
  std::string temporary_;  // empty when the target is written directly, and after the rename
  UnfinishedFile unfinished_;
  int file_ = -1;
  int error_ = 0;
  std::unique_ptr<char[]> buffer_;
  char* cursor_;
  char* limit_;
};
