#include "fbx/io/fbx_byte_source.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr size_t kSmallestFill = 16 * 1024;
constexpr size_t kLargestFill = 256 * 1024;
// Bytes before the position asked for that a refill takes along, since lists are read once for
// their records and again, from a little before, for what the records hold.
constexpr size_t kLookBehind = 1024;

size_t CopyView(std::string_view bytes, char* out, size_t count) {
  const size_t copied = std::min(count, bytes.size());
  std::copy_n(bytes.data(), copied, out);
  return copied;
}

}  // namespace

std::unique_ptr<FbxCachedFile> FbxCachedFile::Open(const char* name) {
  // Without blocking, or a pipe that nobody writes into would hang us here.
  const int descriptor = open(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return nullptr;
  struct stat information = {};
  int error = fstat(descriptor, &information) == 0 ? 0 : errno;
  if (error == 0 && !S_ISREG(information.st_mode)) {
    error = S_ISDIR(information.st_mode) ? EISDIR : ESPIPE;
  }
  if (error != 0) {
    close(descriptor);
    errno = error;
    return nullptr;
  }
  return std::unique_ptr<FbxCachedFile>(new FbxCachedFile(descriptor, information.st_size));
}

FbxCachedFile::FbxCachedFile(int descriptor, int64_t size)
    : descriptor_(descriptor), buffer_(new char[kLookBehind + kLargestFill]), fill_(kSmallestFill) {
  size_ = size;
}

FbxCachedFile::~FbxCachedFile() { close(descriptor_); }

size_t FbxCachedFile::ReadAll(int64_t position, char* out, size_t count) {
  size_t done = 0;
  while (done < count) {
    const ssize_t got = pread(descriptor_, out + done, count - done,
                              static_cast<off_t>(position + static_cast<int64_t>(done)));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0 && error_ == 0) error_ = errno;
    if (got <= 0) break;
    done += static_cast<size_t>(got);
  }
  return done;
}

size_t FbxCachedFile::Read(int64_t position, char* out, size_t count) {
  if (position < 0 || position >= size_) return 0;
  if (count <= kMaxView) return CopyView(View(position, count), out, count);
  return ReadAll(position, out, count);
}

std::string_view FbxCachedFile::Refill(int64_t position, size_t) {
  if (position < 0 || position >= size_) return {};
  const int64_t windowEnd = windowStart_ + static_cast<int64_t>(window_.size());
  const int64_t reach = static_cast<int64_t>(fill_ / 4);
  if (position >= windowStart_ && position <= windowEnd) {
    fill_ = std::min(2 * fill_, kLargestFill);
  } else if (position < windowStart_ - reach || position > windowEnd + reach) {
    fill_ = kSmallestFill;
  }
  const int64_t start = std::max<int64_t>(0, position - static_cast<int64_t>(kLookBehind));
  const size_t before = static_cast<size_t>(position - start);
  const size_t got = ReadAll(start, buffer_.get(), before + fill_);
  windowStart_ = start;
  window_ = {buffer_.get(), got};
  return window_.substr(std::min(before, got));
}

size_t FbxMemoryFile::Read(int64_t position, char* out, size_t count) {
  return CopyView(View(position), out, count);
}

std::string_view FbxMemoryFile::Refill(int64_t position, size_t) {
  if (position < 0 || position >= size_) return {};
  return window_.substr(static_cast<size_t>(position));
}
