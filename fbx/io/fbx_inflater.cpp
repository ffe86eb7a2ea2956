#include "fbx/io/fbx_inflater.h"

#include <algorithm>

#include <libdeflate.h>
#include <zlib.h>

namespace {

constexpr size_t kMostGrowth = 100;
// Small files may grow more.
constexpr size_t kFreeOutput = size_t{32} << 20;

}  // namespace

struct FbxInflater::Stream {
  z_stream state = {};
  ~Stream() { inflateEnd(&state); }
};

struct FbxInflater::WholeStreams {
  libdeflate_decompressor* const decompressor = libdeflate_alloc_decompressor();
  ~WholeStreams() { libdeflate_free_decompressor(decompressor); }
};

FbxInflater::FbxInflater(int64_t fileSize)
    : left_(kFreeOutput + static_cast<size_t>(fileSize) * kMostGrowth) {}
FbxInflater::~FbxInflater() = default;

bool FbxInflater::InflateArray(std::string_view stream, size_t room, const Grow& grow,
                               size_t& made) {
  constexpr size_t kStep = 65536;
  // Most arrays shrink less than this, and are made in one go.
  constexpr size_t kUsualRatio = 8;
  made = 0;
  size_t size = std::min(room, std::max(kStep, stream.size() * kUsualRatio));
  char* out = grow(size);
  if (size == room && InflateWhole(stream, out, room, made)) return true;
  made = 0;
  if (!Begin()) return false;
  while (true) {
    if (made == size && size < room) {
      size += std::min(room - size, size);
      out = grow(size);
    }
    // A stream that still writes when the array is full is too long for it.
    char spare = 0;
    const bool isFull = made == size;
    const size_t before = stream.size();
    size_t written = 0;
    const Result result = isFull ? Inflate(stream, &spare, 1, written)
                                 : Inflate(stream, out + made, size - made, written);
    if (result == eError || (isFull && written > 0)) return false;
    made += written;
    if (result == eEnd) return stream.empty();
    if (stream.empty()) return true;
    if (written == 0 && stream.size() == before) return false;
  }
}

bool FbxInflater::InflateWhole(std::string_view stream, char* out, size_t room, size_t& written) {
  // What runs into the limit is counted to the byte.
  if (room >= left_) return false;
  if (whole_ == nullptr) whole_ = std::make_unique<WholeStreams>();
  if (whole_->decompressor == nullptr) return false;
  size_t consumed = 0;
  if (libdeflate_zlib_decompress_ex(whole_->decompressor, stream.data(), stream.size(), out, room,
                                    &consumed, &written) != LIBDEFLATE_SUCCESS ||
      consumed != stream.size()) {
    return false;
  }
  left_ -= written;
  return true;
}

bool FbxInflater::Begin() {
  if (stream_ != nullptr) return inflateReset(&stream_->state) == Z_OK;
  stream_ = std::make_unique<Stream>();
  if (inflateInit(&stream_->state) == Z_OK) return true;
  stream_.reset();
  return false;
}

FbxInflater::Result FbxInflater::Inflate(std::string_view& input, char* out, size_t room,
                                         size_t& written) {
  constexpr size_t kMostAtOnce = size_t{1} << 30;
  z_stream& state = stream_->state;
  const size_t given = std::min(input.size(), kMostAtOnce);
  const size_t wanted = std::min({room, kMostAtOnce, left_});
  written = 0;
  if (wanted == 0) return eError;
  // zlib doesn't write to its input, but its interface doesn't say so.
  state.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
  state.avail_in = static_cast<uInt>(given);
  state.next_out = reinterpret_cast<Bytef*>(out);
  state.avail_out = static_cast<uInt>(wanted);
  const int result = inflate(&state, Z_NO_FLUSH);
  input.remove_prefix(given - state.avail_in);
  written = wanted - state.avail_out;
  left_ -= written;
  if (result == Z_STREAM_END) return eEnd;
  return result == Z_OK || result == Z_BUF_ERROR ? eMore : eError;
}
