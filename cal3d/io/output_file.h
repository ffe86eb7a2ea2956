// A file that appears under its name only when it is whole: it is written beside its target under
// a temporary name, in large pieces, and renamed at the end.
//
// A target that isn't a regular file (a device, a pipe) is written as it is, since a rename would
// put a file in its place; a symbolic link keeps pointing at its file, and that file is replaced.
// An existing file's permission bits go over to the new one, but not the bits that lend its owner's
// rights: what they were set for is gone.
//
// Nothing is synced to the disk: a crash of the program can't harm the earlier file, and for a
// crash of the machine whoever runs thousands of exports can't pay the wait.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

// One temporary file's place in the table of those that exist right now, for as long as the file
// may exist under that name, so that a signal that ends the program takes the file along. A signal
// handler may neither allocate nor lock, so the names stand in a fixed table; the rare file that
// finds no place in it is merely left behind.
class UnfinishedFile {
 public:
  UnfinishedFile() = default;
  ~UnfinishedFile() { Forget(); }
  UnfinishedFile(const UnfinishedFile&) = delete;
  UnfinishedFile& operator=(const UnfinishedFile&) = delete;

  // Makes the file, for writing, and remembers it; no signal comes in between. Returns its
  // descriptor, or -1 with errno set, EEXIST among others: an existing file is never opened.
  int Create(const std::string& path, unsigned mode);
  // The file has its real name now, or is gone.
  void Forget();

 private:
  static constexpr size_t kNone = static_cast<size_t>(-1);

  size_t place_ = kNone;
};

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

// From now on signals that ask the program to end (hang-up, interrupt, quit, termination, the limit
// of processor time) remove the unfinished files first, and then end it as they always do. A signal
// that the program was started to ignore stays ignored. Writing beyond the limit of file sizes is
// an ordinary write error, no signal.
void RemoveUnfinishedFilesOnSignals();
