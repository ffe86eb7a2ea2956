// Single values as scene files hold them: numbers in either byte order, numbers and base64 in text,
// and the flush of tiny numbers.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

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

inline bool IsSpace(char character) {
  return character == ' ' || (character >= '\t' && character <= '\r');
}

// Numbers in text are read as C's strtoul, strtoll and atof read them: white space and a sign may
// lead, the longest prefix that is a number counts, and a text without one is 0. Never the locale.

// Base 10. A negative number wraps; one that is too large gives the largest.
uint64_t ParseUnsigned(std::string_view text);
// Base 10. A number out of range gives the nearest.
int64_t ParseSigned(std::string_view text);
// Decimal and hexadecimal numbers, infinities and NaN. A number out of range gives an infinity or
// 0.
double ParseReal(std::string_view text);

// The bytes that `text` encodes. Characters outside the alphabet are passed over; '=' ends it.
std::string DecodeBase64(std::string_view text);

// 0 for a number below the type's normal range, with one power of two to spare.
inline float FlushTiny(float number) { return std::fabs(number) < 0x1p-125F ? 0.0F : number; }
inline double FlushTiny(double number) { return std::fabs(number) < 0x1p-1021 ? 0.0 : number; }

// A value of an ASCII file. 32-bit numbers are read as unsigned and wrap.
template <class T>
T ValueFromText(std::string_view text) {
  if constexpr (std::is_same_v<T, bool>) {
    return static_cast<int32_t>(ParseUnsigned(text)) != 0;
  } else if constexpr (std::is_floating_point_v<T>) {
    return FlushTiny(static_cast<T>(ParseReal(text)));
  } else if constexpr (sizeof(T) == sizeof(int32_t)) {
    return static_cast<T>(ParseUnsigned(text));
  } else {
    return static_cast<T>(ParseSigned(text));
  }
}
