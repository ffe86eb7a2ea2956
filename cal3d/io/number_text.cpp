#include "cal3d/io/number_text.h"

#include <array>
#include <charconv>
#include <cmath>
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

}  // namespace

char* WriteNumber(char* at, int32_t value) {
  return std::to_chars(at, at + kLongestNumber, value).ptr;
}

char* WriteNumber(char* at, float value) {
  // Below 100000 a whole number's shortest text is its digits, and models are full of 0 and 1.
  if (std::fabs(value) < 100000.0F) {
    const int32_t whole = static_cast<int32_t>(value);
    if (static_cast<float>(whole) == value && (whole != 0 || !std::signbit(value))) {
      return WriteNumber(at, whole);
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
