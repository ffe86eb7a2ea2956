// Numbers from bytes in either byte order.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

template <class T>
T SwapBytes(T value) {
  auto bytes = std::bit_cast<std::array<unsigned char, sizeof(T)>>(value);
  std::reverse(bytes.begin(), bytes.end());
  return std::bit_cast<T>(bytes);
}

// `bytes` holds at least sizeof(T).
template <class T>
T LoadNumber(const char* bytes, bool swap) {
  T value;
  std::memcpy(&value, bytes, sizeof(T));
  return swap ? SwapBytes(value) : value;
}
