// The temporary files that exist right now, so that a signal that ends the program takes them
// along.
//
// A signal handler may neither allocate nor lock, so the names stand in a fixed table; the rare
// file that finds no place in it is merely left behind.
#pragma once

#include <cstddef>
#include <string>

// From now on signals that ask the program to end (hang-up, interrupt, quit, termination, the limit
// of processor time) remove the unfinished files first, and then end it as they always do. A signal
// that the program was started to ignore stays ignored. Writing beyond the limit of file sizes is
// an ordinary write error, no signal.
void RemoveUnfinishedFilesOnSignals();

// One temporary file's place in the table, for as long as the file may exist under that name.
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
