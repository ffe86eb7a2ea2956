#include "cal3d/io/input_file.h"

#include <bit>
#include <cerrno>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

std::string ReadInputFile(const std::string& path) {
  struct Descriptor {
    ~Descriptor() {
      if (number >= 0) close(number);
    }
    int number;
  };
  // A directory opens too, and a pipe that nobody writes into would hang us.
  struct stat status {};
  const Descriptor file{stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode)
                            ? open(path.c_str(), O_RDONLY | O_CLOEXEC)
                            : -1};
  if (file.number < 0) throw std::runtime_error("[" + path + "] can't be opened");
  std::string bytes(static_cast<size_t>(status.st_size), '\0');
  size_t filled = 0;
  while (filled < bytes.size()) {
    const ssize_t count = read(file.number, bytes.data() + filled, bytes.size() - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) throw std::runtime_error("[" + path + "] can't be read");
    filled += static_cast<size_t>(count);
  }
  return bytes;
}

std::string_view CalBufferSource::ReadBytes(size_t count) {
  if (count > remaining_) {
    throw std::runtime_error("the file ends early: " + std::to_string(count) +
                             " bytes are due and " + std::to_string(remaining_) + " are left");
  }
  const std::string_view bytes(cursor_, count);
  cursor_ += count;
  remaining_ -= count;
  return bytes;
}

int32_t CalBufferSource::ReadInt() {
  const std::string_view bytes = ReadBytes(4);
  uint32_t value = 0;
  for (size_t i = 0; i < 4; ++i) {
    value |= uint32_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
  }
  return static_cast<int32_t>(value);
}

float CalBufferSource::ReadFloat() { return std::bit_cast<float>(ReadInt()); }

std::string CalBufferSource::ReadString() {
  const int32_t length = ReadCount(1, "bytes of a string");
  if (length == 0) throw std::runtime_error("a string has no closing NUL");
  std::string_view bytes = ReadBytes(static_cast<size_t>(length));
  if (bytes.back() != '\0') throw std::runtime_error("a string has no closing NUL");
  bytes.remove_suffix(1);
  return std::string(bytes);
}

int32_t CalBufferSource::ReadCount(uint64_t recordSize, std::string_view what) {
  const int32_t count = ReadInt();
  CheckCount(count, recordSize, what);
  return count;
}

void CalBufferSource::CheckCount(int32_t count, uint64_t recordSize, std::string_view what) const {
  // A division, since the product of two hostile numbers could overflow.
  if (count >= 0 && static_cast<uint64_t>(count) <= remaining_ / recordSize) return;
  throw std::runtime_error("a count of " + std::to_string(count) + " " + std::string(what) +
                           " doesn't fit the " + std::to_string(remaining_) +
                           " bytes that are left");
}
