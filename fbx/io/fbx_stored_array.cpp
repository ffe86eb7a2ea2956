#include "fbx/io/fbx_stored_array.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "fbx/io/fbx_inflater.h"
#include "fbx/io/stored_value.h"

namespace {

// About what a processor's cache holds of one array among others.
constexpr size_t kMostReleased = size_t{4} << 20;

template <class T>
void SwapNumbers(char* bytes, size_t size) {
  for (char* at = bytes; at + sizeof(T) <= bytes + size; at += sizeof(T)) {
    const T number = LoadNumber<T>(at, true);
    std::memcpy(at, &number, sizeof(T));
  }
}

}  // namespace

FbxStoredBytes::FbxStoredBytes(Packed packed)
    : packed_(std::make_unique<Packed>(std::move(packed))), isDecoded_(false) {}

FbxStoredBytes::FbxStoredBytes(const void* bytes, size_t size)
    : bytes_(std::make_unique_for_overwrite<char[]>(size)), size_(size) {
  if (size > 0) std::memcpy(bytes_.get(), bytes, size);
}

void FbxStoredBytes::DecodeForGood() {
  if (packed_ != nullptr) packed_->isKept = false;
}

void FbxStoredBytes::Release() const {
  if (packed_ == nullptr) return;
  isDecoded_ = false;
  bytes_.reset();
  size_ = 0;
}

void FbxStoredBytes::Decode() const {
  size_t room = 0;
  size_t made = 0;
  const auto grow = [&](size_t size) {
    std::unique_ptr<char[]> larger = std::make_unique_for_overwrite<char[]>(size);
    std::copy_n(bytes_.get(), room, larger.get());
    bytes_ = std::move(larger);
    room = size;
    return bytes_.get();
  };
  // An array counts once against what the file's streams may grow to, however often it is decoded.
  packed_->inflater->Uncount(std::exchange(packed_->counted, 0));
  const bool isWhole = packed_->inflater->InflateArray({packed_->stream.get(), packed_->streamSize},
                                                       packed_->room, grow, made);
  if (isWhole) {
    packed_->counted = size_ = made;
    if (packed_->swap && packed_->isWide) SwapNumbers<uint64_t>(bytes_.get(), made);
    if (packed_->swap && !packed_->isWide) SwapNumbers<uint32_t>(bytes_.get(), made);
  } else {
    bytes_.reset();
  }
  isDecoded_ = true;
  // A damaged one would be damaged again.
  if (!isWhole || !packed_->isKept || made > kMostReleased) packed_.reset();
}
