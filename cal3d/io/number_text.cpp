#include "cal3d/io/number_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <system_error>

namespace {

bool IsSpace(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }

const char* SkipSpace(const char* at, const char* end) {
  while (at != end && IsSpace(*at)) ++at;
  return at;
}

std::from_chars_result ReadNumber(const char* at, const char* end, int32_t& value) {
  return std::from_chars(at, end, value);
}

std::from_chars_result ReadNumber(const char* at, const char* end, float& value) {
  std::from_chars_result result = std::from_chars(at, end, value);
  if (result.ec == std::errc::result_out_of_range) {
    // Too large and too small look the same; the wider type tells them apart.
    double wide = 0;
    result = std::from_chars(at, end, wide);
    if (std::fabs(wide) < 1)
      value = static_cast<float>(wide);
    else
      result.ec = std::errc::result_out_of_range;
  } else if (!std::isfinite(value)) {
    result.ec = std::errc::invalid_argument;
  }
  return result;
}

template <typename Number>
bool ReadAll(std::string_view text, std::span<Number> numbers) {
  const char* at = text.data();
  const char* const end = at + text.size();
  for (Number& number : numbers) {
    at = SkipSpace(at, end);
    // from_chars knows no plus sign, other writers do.
    if (end - at > 1 && *at == '+' && at[1] != '-') ++at;
    const std::from_chars_result result = ReadNumber(at, end, number);
    if (result.ec != std::errc()) return false;
    at = result.ptr;
    if (at != end && !IsSpace(*at)) return false;
  }
  return SkipSpace(at, end) == end;
}

// Most numbers of a model are fractions between these two, whose shortest text isn't scientific.
// WriteFraction takes 14 ns for one where std::to_chars takes 40, and gives the same text for each
// of them.
constexpr float kLeastFraction = 0.001F;
constexpr float kMostFraction = 100000.0F;

// What a fraction from kLeastFraction on needs.
constexpr size_t kMostDecimals = 10;

constexpr auto kPowersOfTen = [] {
  std::array<uint64_t, kMostDecimals + 1> powers = {1};
  for (size_t i = 1; i < powers.size(); ++i) powers[i] = 10 * powers[i - 1];
  return powers;
}();

constexpr auto kDigitPairs = [] {
  std::array<std::array<char, 2>, 100> pairs = {};
  for (size_t i = 0; i < pairs.size(); ++i) {
    pairs[i] = {static_cast<char>('0' + i / 10), static_cast<char>('0' + i % 10)};
  }
  return pairs;
}();

// Writes the digits of a number below 1000 and returns their end.
char* WriteSmall(char* at, uint32_t number) {
  if (number >= 100) *at++ = static_cast<char>('0' + number / 100);
  if (number < 10) {
    *at = static_cast<char>('0' + number);
    return at + 1;
  }
  std::memcpy(at, &kDigitPairs[number % 100], 2);
  return at + 2;
}

// The digits of a number below 10^8, a byte for each, the first one lowest. It is cut into fours,
// in pairs and in single digits, all parts at once: 10486 / 2^20 is 1/100 and 103 / 2^10 is 1/10.
constexpr uint64_t EightDigits(uint32_t number) {
  const uint64_t fours = uint64_t{number % 10000} << 32U | number / 10000;
  const uint64_t hundreds = (fours * 10486 >> 20U) & 0x0000007F0000007FU;
  const uint64_t pairs = (fours - 100 * hundreds) << 16U | hundreds;
  const uint64_t tens = (pairs * 103 >> 10U) & 0x000F000F000F000FU;
  return (pairs - 10 * tens) << 8U | tens;
}

// Writes the digits behind the point of `decimals` / 10^10, which is below 1 and not 0, and returns
// the end of the last that isn't 0.
char* WriteDecimals(char* at, uint64_t decimals) {
  const auto first = static_cast<uint32_t>(decimals / 100000000);
  const uint64_t others = EightDigits(static_cast<uint32_t>(decimals % 100000000));
  std::memcpy(at, &kDigitPairs[first], 2);
  if (others == 0) return at + (first % 10 == 0 ? 1 : 2);
  constexpr uint64_t kZeros = 0x3030303030303030U;
  auto text = std::bit_cast<std::array<char, 8>>(others | kZeros);
  if constexpr (std::endian::native == std::endian::big) std::reverse(text.begin(), text.end());
  std::memcpy(at + 2, &text, 8);
  return at + 10 - std::countl_zero(others) / 8;
}

// Writes the shortest decimal number that reads back to `value`, of these the nearest to it, for a
// value from kLeastFraction up to kMostFraction that isn't whole.
//
// The value is m * 2^-q, and what lies within half a step of it, 2^-q / 2, reads back to it. With k
// the least power of ten above 2^q, the numbers of k decimals that do are at least one and at most
// ten, and at most one of them ends in 0; if there is one, all shorter ones are that same number
// (Raffaello Giulietti's search). All products are exact in 64 bits.
char* WriteFraction(char* at, float value) {
  constexpr int kFractionBits = 23;
  constexpr uint32_t kImplicitBit = 1U << kFractionBits;
  const uint32_t bits = std::bit_cast<uint32_t>(value);
  const uint64_t m = (bits & (kImplicitBit - 1)) | kImplicitBit;
  const int q = 127 + kFractionBits - static_cast<int>(bits >> kFractionBits);
  const auto k = static_cast<size_t>((q * 1233 >> 12) + 1);  // log10(2) is 1233 / 4096
  const uint64_t power = kPowersOfTen[k];
  const uint64_t exact = m * power;
  // Steps below a power of two are half as long. The ends read back to even numbers only.
  const uint64_t odd = m & 1U;
  const uint64_t least = exact - (m == kImplicitBit ? power / 4 : power / 2) + odd;
  const uint64_t most = exact + power / 2 - odd;

  // Of two that are equally near, the even one.
  const uint64_t half = uint64_t{1} << (q - 1);
  const uint64_t nearest = (exact + half - 1 + (exact >> q & 1U)) >> q;
  const uint64_t tens = nearest / 10 * 10;
  const uint64_t below = tens << q >= least ? tens : nearest;
  const uint64_t found = (tens + 10) << q <= most ? tens + 10 : below;

  // A whole number between would be a float itself, so that the part before the point is settled.
  const auto whole = static_cast<uint32_t>(value);
  at = whole < 1000 ? WriteSmall(at, whole) : std::to_chars(at, at + kLongestNumber, whole).ptr;
  *at++ = '.';
  return WriteDecimals(at, (found - whole * power) * kPowersOfTen[kMostDecimals - k]);
}

}  // namespace

char* WriteNumber(char* at, int32_t value) {
  if (value >= 0 && value < 1000) return WriteSmall(at, static_cast<uint32_t>(value));
  return std::to_chars(at, at + kLongestNumber, value).ptr;
}

char* WriteNumber(char* at, float value) {
  const float magnitude = std::fabs(value);
  // Below 100000 a whole number's shortest text is its digits, and models are full of 0 and 1.
  if (magnitude < kMostFraction) {
    const int32_t whole = static_cast<int32_t>(value);
    if (static_cast<float>(whole) == value && (whole != 0 || !std::signbit(value))) {
      return WriteNumber(at, whole);
    }
    if (magnitude >= kLeastFraction) {
      *at = '-';
      return WriteFraction(at + (value < 0 ? 1 : 0), magnitude);
    }
  } else if (!std::isfinite(value)) {
    *at = '0';
    return at + 1;
  }
  return std::to_chars(at, at + kLongestNumber, value).ptr;
}

bool ReadNumbers(std::string_view text, std::span<float> numbers) { return ReadAll(text, numbers); }

bool ReadNumbers(std::string_view text, std::span<int32_t> numbers) {
  return ReadAll(text, numbers);
}

void AppendNumber(std::string& text, int64_t value) {
  std::array<char, 20> digits;
  char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  text.append(digits.data(), end);
}

void AppendNumber(std::string& text, float value) {
  std::array<char, 16> digits;
  char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                  std::chars_format::general, 6)
                        .ptr;
  text.append(digits.data(), end);
}

std::string Counted(size_t count, std::string_view noun, std::string_view ending) {
  std::string text = std::to_string(count) + " ";
  text += noun;
  if (count != 1) text += ending;
  return text;
}
