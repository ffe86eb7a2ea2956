#include "fbx/io/base64.h"

#include <array>
#include <cstdint>

namespace {

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
