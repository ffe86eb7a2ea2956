// Arrays of a scene file that are decoded when first asked for.
//
// Until then, and again after Release, an array is kept as the file holds it, in a third of the
// room or less. So a listing decodes no mesh at all, and an export that releases each mesh before
// the next works in memory that the processor has at hand. All bytes are read when the scene is: a
// file that can't be read fails then, never in the middle of an export.
//
// An array that no cache holds gains nothing by that: once decoded it stays so, and what the file
// holds of it is dropped. The same goes for text, which is decoded at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

class FbxInflater;

// The array without its type.
class FbxStoredBytes {
 public:
  // A deflated array as it stands in the file.
  struct Packed {
    std::shared_ptr<FbxInflater> inflater;
    std::unique_ptr<char[]> stream;
    size_t streamSize = 0;
    size_t room = 0;      // bytes that its elements are said to take
    bool isWide = false;  // numbers are of 8 bytes, not 4
    bool swap = false;    // numbers are in the other byte order
    bool isKept = true;   // when it has been decoded
    size_t counted = 0;   // bytes that the inflater counts for it
  };

  FbxStoredBytes() = default;
  explicit FbxStoredBytes(Packed packed);
  // One that isn't deflated: a copy of those bytes.
  FbxStoredBytes(const void* bytes, size_t size);

  // Has the array stay decoded, once it is, and its stream dropped.
  void DecodeForGood();
  // Whether the array can be decoded again, or for the first time.
  bool IsPacked() const { return packed_ != nullptr; }
  // Gives back the memory of the elements, if the array can be decoded again. What refers to them
  // is invalid then.
  void Release() const;

 protected:
  void Decode() const;

  mutable std::unique_ptr<Packed> packed_;
  mutable bool isDecoded_ = true;
  mutable std::unique_ptr<char[]> bytes_;
  mutable size_t size_ = 0;
};

// An array of numbers, or of vectors whose components stand in the file one after the other; a rest
// that is no whole vector is dropped.
template <class T>
class FbxStoredArray : public FbxStoredBytes {
 public:
  using Scalar = std::conditional_t<std::is_arithmetic_v<T>, T, double>;
  static_assert(std::is_trivially_copyable_v<T> && sizeof(T) % sizeof(Scalar) == 0);

  FbxStoredArray() = default;
  FbxStoredArray(FbxStoredBytes bytes) : FbxStoredBytes(std::move(bytes)) {}
  FbxStoredArray(const std::vector<T>& values)
      : FbxStoredBytes(values.data(), values.size() * sizeof(T)) {}

  // Valid until the array is released. Empty if the stored bytes can't be decoded.
  std::span<const T> Values() const {
    if (!isDecoded_) Decode();
    return {reinterpret_cast<const T*>(bytes_.get()), size_ / sizeof(T)};
  }
  // Null if it is out of range.
  const T* At(int i) const {
    if (!isDecoded_) Decode();
    const auto behind = (static_cast<size_t>(i) + 1) * sizeof(T);
    return i < 0 || behind > size_ ? nullptr : reinterpret_cast<const T*>(bytes_.get()) + i;
  }
};
