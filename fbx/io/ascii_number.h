// Numbers in the text of ASCII scene files, read as C's strtoul, strtoll and atof read them: white
// space and a sign may lead, the longest prefix that is a number counts, and a text without one is
// 0. Never the locale.
#pragma once

#include <cstdint>
#include <string_view>

inline bool IsSpace(char character) {
  return character == ' ' || (character >= '\t' && character <= '\r');
}
// Base 10. A negative number wraps; one that is too large gives the largest.
uint64_t ParseUnsigned(std::string_view text);
// Base 10. A number out of range gives the nearest.
int64_t ParseSigned(std::string_view text);
// Decimal and hexadecimal numbers, infinities and NaN. A number out of range gives an infinity or
// 0.
double ParseReal(std::string_view text);
