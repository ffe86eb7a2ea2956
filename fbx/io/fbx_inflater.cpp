#include "fbx/io/fbx_inflater.h"

#include <algorithm>

#include <zlib.h>

struct FbxInflater::Stream {
  z_stream state = {};
  ~Stream() { inflateEnd(&state); }
};

FbxInflater::FbxInflater() = default;
FbxInflater::~FbxInflater() = default;

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
  const size_t wanted = std::min(room, kMostAtOnce);
  // zlib doesn't write to its input, but its interface doesn't say so.
  state.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
  state.avail_in = static_cast<uInt>(given);
  state.next_out = reinterpret_cast<Bytef*>(out);
  state.avail_out = static_cast<uInt>(wanted);
  const int result = inflate(&state, Z_NO_FLUSH);
  input.remove_prefix(given - state.avail_in);
  written = wanted - state.avail_out;
  if (result == Z_STREAM_END) return eEnd;
  return result == Z_OK || result == Z_BUF_ERROR ? eMore : eError;
}
