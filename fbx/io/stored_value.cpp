#include "fbx/io/stored_value.h"

#include <charconv>
#include <limits>

namespace {

// Removes white space and a sign; true for a minus.
bool TakeSign(std::string_view& text) {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
  if (text.empty() || (text.front() != '-' && text.front() != '+')) return false;
  const bool isNegative = text.front() == '-';
  text.remove_prefix(1);
  return isNegative;
}

// Leading digits, and whether they fit.
uint64_t TakeDigits(std::string_view text, bool& isTooLarge) {
  uint64_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  isTooLarge = result.ec == std::errc::result_out_of_range;
  return result.ec == std::errc() ? number : 0;
}

// Of a decimal number out of range: whether it is too large, not too small.
bool IsLarge(std::string_view text) {
  int64_t exponent = 0;
  const size_t mark = text.find_first_of("eE");
  if (mark != std::string_view::npos) exponent = ParseSigned(text.substr(mark + 1));
  const std::string_view digits = text.substr(0, mark);
  const size_t point = std::min(digits.find('.'), digits.size());
  const size_t first = std::min(digits.find_first_of("123456789"), digits.size());
  const int64_t magnitude = static_cast<int64_t>(point) - static_cast<int64_t>(first);
  // Exponents of 19 digits stop at the ends of the range; halves can't overflow.
  return exponent / 2 + magnitude / 2 > 0;
}

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr uint8_t kNoDigit = 64;

constexpr std::array<uint8_t, 256> kDigits = [] {
  std::array<uint8_t, 256> digits = {};
  digits.fill(kNoDigit);
  for (size_t i = 0; i < kAlphabet.size(); ++i) {
    digits[static_cast<unsigned char>(kAlphabet[i])] = static_cast<uint8_t>(i);
  }
  return digits;
}();

}  // namespace

uint64_t ParseUnsigned(std::string_view text) {
  const bool isNegative = TakeSign(text);
  bool isTooLarge = false;
  const uint64_t number = TakeDigits(text, isTooLarge);
  if (isTooLarge) return std::numeric_limits<uint64_t>::max();
  return isNegative ? uint64_t{0} - number : number;
}

int64_t ParseSigned(std::string_view text) {
  constexpr int64_t kMax = std::numeric_limits<int64_t>::max();
  const bool isNegative = TakeSign(text);
  bool isTooLarge = false;
  const uint64_t number = TakeDigits(text, isTooLarge);
  if (isTooLarge || number > static_cast<uint64_t>(kMax)) return isNegative ? -kMax - 1 : kMax;
  return isNegative ? -static_cast<int64_t>(number) : static_cast<int64_t>(number);
}

double ParseReal(std::string_view text) {
  const bool isNegative = TakeSign(text);
  // from_chars would take a second sign.
  if (text.empty() || text.front() == '-') return 0.0;
  double number = 0.0;
  std::from_chars_result result;
  const bool isHex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  if (isHex) text.remove_prefix(2);
  result = std::from_chars(text.data(), text.data() + text.size(), number,
                           isHex ? std::chars_format::hex : std::chars_format::general);
  if (result.ec == std::errc::result_out_of_range) {
    const std::string_view matched = text.substr(0, static_cast<size_t>(result.ptr - text.data()));
    number = !isHex && IsLarge(matched) ? std::numeric_limits<double>::infinity() : 0.0;
  } else if (result.ec != std::errc()) {
    number = 0.0;
  }
  return isNegative ? -number : number;
}

std::string DecodeBase64(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3 + 3);
  uint32_t group = 0;
  int bits = 0;
  for (const char character : text) {
    if (character == '=') break;
    const uint8_t digit = kDigits[static_cast<unsigned char>(character)];
    if (digit == kNoDigit) continue;
    group = group << 6 | digit;
    bits += 6;
    if (bits >= 8) {
      bits -= 8;
      bytes += static_cast<char>(group >> bits & 0xFF);
    }
  }
  return bytes;
}
