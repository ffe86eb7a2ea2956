// A growable array for elements that need 16-byte alignment, with the C library's allocator below
// it: its storage can be released with free(). The sizes are 32-bit and the growth rule (0, 1, 2,
// 4, 8 ...) is fixed, because other code relies on both.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace cal3d {

// Storage of at least `bytes` bytes, aligned to 16 bytes. The caller owns it and releases it with
// free(). Throws std::bad_alloc when there is none.
inline void* allocate_aligned_data(size_t bytes) {
  constexpr size_t kAlignment = 16;
  if (bytes > std::numeric_limits<size_t>::max() - kAlignment) throw std::bad_alloc();
  // aligned_alloc wants a multiple of the alignment; a request for nothing still gets a block.
  const size_t rounded = (bytes + kAlignment - 1) / kAlignment * kAlignment;
  void* block = std::aligned_alloc(kAlignment, rounded == 0 ? kAlignment : rounded);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

template <typename T>
class SSEArray {
  static_assert(std::is_trivially_copyable_v<T>, "elements are moved with memcpy");
  static_assert(alignof(T) <= 16);

 public:
  SSEArray() = default;
  SSEArray(const SSEArray& other) { Assign(other); }
  SSEArray(SSEArray&& other) noexcept { swap(other); }
  SSEArray& operator=(const SSEArray& other) {
    if (this != &other) {
      count_ = 0;
      Assign(other);
    }
    return *this;
  }
  SSEArray& operator=(SSEArray&& other) noexcept {
    swap(other);
    return *this;
  }
  ~SSEArray() { std::free(elements_); }

  // Doubles the capacity when it is used up. Throws std::length_error past 2^32 - 1 elements.
  void push_back(const T& element) {
    const T copy = element;  // it may lie in the storage that goes
    if (count_ == capacity_) {
      constexpr uint32_t kMost = std::numeric_limits<uint32_t>::max();
      if (capacity_ > kMost / 2) throw std::length_error("cal3d::SSEArray is full");
      Reallocate(capacity_ == 0 ? 1 : capacity_ * 2);
    }
    std::memcpy(static_cast<void*>(elements_ + count_), &copy, sizeof(T));
    ++count_;
  }

  // Makes room for `capacity` elements in all.
  void reserve(uint32_t capacity) {
    if (capacity > capacity_) Reallocate(capacity);
  }

  T* data() { return elements_; }
  const T* data() const { return elements_; }
  uint32_t size() const { return count_; }
  uint32_t capacity() const { return capacity_; }
  bool empty() const { return count_ == 0; }
  T& operator[](size_t index) { return elements_[index]; }
  const T& operator[](size_t index) const { return elements_[index]; }
  T* begin() { return elements_; }
  T* end() { return elements_ + count_; }
  const T* begin() const { return elements_; }
  const T* end() const { return elements_ + count_; }

  void swap(SSEArray& other) noexcept {
    std::swap(elements_, other.elements_);
    std::swap(count_, other.count_);
    std::swap(capacity_, other.capacity_);
  }

 private:
  void Assign(const SSEArray& other) {
    reserve(other.count_);
    if (other.count_ != 0) {
      std::memcpy(static_cast<void*>(elements_), other.elements_, other.count_ * sizeof(T));
    }
    count_ = other.count_;
  }

  void Reallocate(uint32_t capacity) {
    T* larger = static_cast<T*>(allocate_aligned_data(size_t{capacity} * sizeof(T)));
    if (count_ != 0) std::memcpy(static_cast<void*>(larger), elements_, count_ * sizeof(T));
    std::free(elements_);
    elements_ = larger;
    capacity_ = capacity;
  }

  T* elements_ = nullptr;
  uint32_t count_ = 0;
  uint32_t capacity_ = 0;
};

}  // namespace cal3d
