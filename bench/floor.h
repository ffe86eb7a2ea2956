// What any converter must do at least, for the programs that measure it: read the scene, inflate
// its arrays, format numbers.
#pragma once

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include <zlib.h>

inline std::string ReadWhole(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline double CpuSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// Reads a file in one piece, as fast as it can be; empty if it can't.
inline std::string ReadScene(const char* path) {
  std::string scene;
  if (std::FILE* file = std::fopen(path, "rb")) {
    std::fseek(file, 0, SEEK_END);
    scene.resize(static_cast<size_t>(std::ftell(file)));
    std::rewind(file);
    if (std::fread(scene.data(), 1, scene.size(), file) != scene.size()) scene.clear();
    std::fclose(file);
  }
  return scene;
}

// Walks the records of a binary file with 32-bit offsets and inflates every array.
class Inflater {
 public:
  explicit Inflater(std::string_view bytes) : bytes_(bytes) {}

  uint64_t Run() {
    constexpr size_t kHeader = 27;
    WalkList(kHeader, bytes_.size());
    return inflated_;
  }

 private:
  template <typename T>
  T Read(size_t at) const {
    T value{};
    if (at + sizeof(T) <= bytes_.size()) std::memcpy(&value, bytes_.data() + at, sizeof(T));
    return value;
  }

  void WalkList(size_t at, size_t end) {
    while (at + 13 <= end) {
      const size_t next = Read<uint32_t>(at);
      if (next <= at) return;  // the record of zeros that ends a list
      const uint32_t values = Read<uint32_t>(at + 4);
      const size_t valueBytes = Read<uint32_t>(at + 8);
      const size_t first = at + 13 + Read<uint8_t>(at + 12);
      ReadValues(first, values);
      WalkList(first + valueBytes, next);
      at = next;
    }
  }

  void ReadValues(size_t at, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
      const char type = Read<char>(at++);
      switch (type) {
        case 'C':
        case 'B':
        case 'Z':
          at += 1;
          break;
        case 'Y':
          at += 2;
          break;
        case 'I':
        case 'F':
          at += 4;
          break;
        case 'L':
        case 'D':
          at += 8;
          break;
        case 'S':
        case 'R':
          at += 4 + Read<uint32_t>(at);
          break;
        default: {
          const size_t size = type == 'd' || type == 'l' ? 8 : type == 'f' || type == 'i' ? 4 : 1;
          const size_t bytes = Read<uint32_t>(at) * size;
          const size_t stored = Read<uint32_t>(at + 8);
          if (Read<uint32_t>(at + 4) == 1) Inflate(at + 12, stored, bytes);
          inflated_ += bytes;
          at += 12 + stored;
        }
      }
    }
  }

  void Inflate(size_t at, size_t stored, size_t bytes) {
    array_.resize(bytes);
    auto length = static_cast<uLongf>(bytes);
    const auto* source = reinterpret_cast<const Bytef*>(bytes_.data() + at);
    if (uncompress(array_.data(), &length, source, static_cast<uLong>(stored)) != Z_OK) {
      std::fprintf(stderr, "floor: an array is damaged\n");
    }
  }

  std::string_view bytes_;
  std::vector<Bytef> array_;
  uint64_t inflated_ = 0;
};

// Writes numbers to a file, each with a character behind it.
class Formatter {
 public:
  explicit Formatter(const char* path) : file_(std::fopen(path, "wb")), buffer_(1U << 20U) {}
  ~Formatter() {
    Flush();
    if (file_ != nullptr) std::fclose(file_);
  }
  Formatter(const Formatter&) = delete;
  Formatter& operator=(const Formatter&) = delete;

  template <typename T>
  void Add(T value, char after) {
    if (buffer_.size() - used_ < 64) Flush();
    char* const at = buffer_.data() + used_;
    char* const end = std::to_chars(at, buffer_.data() + buffer_.size(), value).ptr;
    *end = after;
    used_ += static_cast<size_t>(end - at) + 1;
  }

 private:
  void Flush() {
    if (file_ != nullptr) std::fwrite(buffer_.data(), 1, used_, file_);
    used_ = 0;
  }

  std::FILE* file_;
  std::vector<char> buffer_;
  size_t used_ = 0;
};
