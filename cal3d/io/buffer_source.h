// A read cursor over a block of memory that the caller owns and keeps alive. The block is
// little-endian; every reader throws std::runtime_error when the rest of the block is too short.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

class CalBufferSource {
 public:
  CalBufferSource(const void* data, std::size_t length)
      : cursor_(static_cast<const char*>(data)), remaining_(data == nullptr ? 0 : length) {}

  // The bytes not read yet.
  std::string_view Rest() const { return {cursor_, remaining_}; }
  std::size_t Remaining() const { return remaining_; }

  std::string_view ReadBytes(std::size_t count);
  std::int32_t ReadInt();
  float ReadFloat();
  // An int32 length that counts the closing NUL, then the bytes.
  std::string ReadString();
  // An int32 that tells how many records follow, each of at least `record_size` bytes; checked as
  // below.
  std::int32_t ReadCount(std::uint64_t record_size, std::string_view what);
  // Throws, in words that name `what`, unless the rest of the block can hold `count` records of at
  // least `record_size` bytes (above 0): after that, allocating for the count is safe.
  void CheckCount(std::int32_t count, std::uint64_t record_size, std::string_view what) const;

 private:
  const char* cursor_;
  std::size_t remaining_;
};
