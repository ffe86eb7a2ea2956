// Where a scene file's bytes come from: a file or a block of memory, read by position.
//
// Readers ask for a view of the bytes at a position rather than for copies. A list of records is
// mostly small reads with jumps between them, so a file's window starts small after a jump and
// grows while reading goes on in order: skipping a large record costs a few kilobytes, reading one
// costs large reads. A mapping would save the copy, but a file cut short while it is mapped kills
// the process.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

class FbxByteSource {
 public:
  FbxByteSource() = default;
  virtual ~FbxByteSource() = default;
  FbxByteSource(const FbxByteSource&) = delete;
  FbxByteSource& operator=(const FbxByteSource&) = delete;

  // The most that View promises to give in one piece.
  static constexpr size_t kMaxView = 4096;

  int64_t Size() const { return size_; }
  // The system's error number of the first read that failed, 0 if none has. Bytes that can't be
  // read are missing as if the source ended there, which only this tells apart.
  int GetError() const { return error_; }

  // The bytes from `position` on, as many as are at hand: at least `wanted` (up to kMaxView) unless
  // the source ends before. Valid until the next call. Empty outside the source.
  std::string_view View(int64_t position, size_t wanted = 1) {
    const int64_t offset = position - windowStart_;
    if (offset >= 0 && offset <= static_cast<int64_t>(window_.size())) {
      const std::string_view rest = window_.substr(static_cast<size_t>(offset));
      if (rest.size() >= wanted) return rest;
    }
    return Refill(position, wanted);
  }

  // Copies `count` bytes from `position` on; returns how many there were.
  virtual size_t Read(int64_t position, char* out, size_t count) = 0;

 protected:
  // Moves the window so that it holds `wanted` bytes at `position`, if the source has them.
  virtual std::string_view Refill(int64_t position, size_t wanted) = 0;

  int64_t size_ = 0;
  int error_ = 0;
  int64_t windowStart_ = 0;
  std::string_view window_;
};

// A file on disk. Its size is taken once, at opening.
class FbxCachedFile : public FbxByteSource {
 public:
  // Null with errno set if the file can't be opened, or isn't one that has positions.
  static std::unique_ptr<FbxCachedFile> Open(const char* name);
  ~FbxCachedFile() override;

  size_t Read(int64_t position, char* out, size_t count) override;

 protected:
  std::string_view Refill(int64_t position, size_t wanted) override;

 private:
  FbxCachedFile(int descriptor, int64_t size);
  size_t ReadAll(int64_t position, char* out, size_t count);

  int descriptor_;
  std::unique_ptr<char[]> buffer_;
  size_t fill_;
};

// A block of memory, which the caller keeps alive.
class FbxMemoryFile : public FbxByteSource {
 public:
  explicit FbxMemoryFile(std::string_view bytes) {
    window_ = bytes;
    size_ = static_cast<int64_t>(bytes.size());
  }

  size_t Read(int64_t position, char* out, size_t count) override;

 protected:
  std::string_view Refill(int64_t position, size_t wanted) override;
};
