// Files that are read whole, and the cursor that walks through their bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// The bytes of a regular file. Throws std::runtime_error, which names the path in single quotes and
// the system's reason, when it isn't one or can't be read.
std::string ReadInputFile(const std::string& path);

// A read cursor over a block of memory that the caller owns and keeps alive. The block is
// little-endian; every reader throws std::runtime_error when the rest of the block is too short.
class CalBufferSource {
 public:
  CalBufferSource(const void* data, size_t length)
      : cursor_(static_cast<const char*>(data)), remaining_(data == nullptr ? 0 : length) {}

  // The bytes not read yet.
  std::string_view Rest() const { return {cursor_, remaining_}; }

  std::string_view ReadBytes(size_t count);
  int32_t ReadInt();
  float ReadFloat();
  // An int32 length that counts the closing NUL, then the bytes.
  std::string ReadString();
  // An int32 that tells how many records follow, each of at least `recordSize` bytes; checked as
  // below.
  int32_t ReadCount(uint64_t recordSize, std::string_view what);
  // Throws, in words that name `what`, unless the rest of the block can hold `count` records of at
  // least `recordSize` bytes (above 0): after that, allocating for the count is safe.
  void CheckCount(int32_t count, uint64_t recordSize, std::string_view what) const;

 private:
  const char* cursor_;
  size_t remaining_;
};
