// Single values as files hold them: from text, and the flush of tiny numbers.
#pragma once

#include <cmath>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "fbx/io/ascii_number.h"

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
