#include "cal3d/io/input_file.h"

#include <bit>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

[[noreturn]] void Fail(const std::string& path, const char* what, int error) {
  throw std::runtime_error("'" + path + "' can't be " + what + ": " +
                           std::generic_category().message(error));
}

// The descriptor of a regular file. A directory opens too, and a pipe that nobody writes into would
// hang us.
int Open(const std::string& path, off_t& size) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) Fail(path, "opened", errno);
  if (S_ISDIR(status.st_mode)) Fail(path, "opened", EISDIR);
  if (!S_ISREG(status.st_mode)) throw std::runtime_error("'" + path + "' is no regular file");
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) Fail(path, "opened", errno);
  size = status.st_size;
  return file;
}

}  // namespace

std::string ReadInputFile(const std::string& path) {
  struct Descriptor {
    ~Descriptor() { close(number); }
    int number;
  };
  off_t size = 0;
  const Descriptor file{Open(path, size)};
  std::string bytes(static_cast<size_t>(size), '\0');
  size_t filled = 0;
  while (filled < bytes.size()) {
    const ssize_t count = read(file.number, bytes.data() + filled, bytes.size() - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) Fail(path, "read", errno);
    if (count == 0) throw std::runtime_error("'" + path + "' became shorter while it was read");
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
