#include "fbx/core/fbx_string.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string>

FbxString& FbxString::operator+=(const char* text) {
  if (text != nullptr) text_ += text;
  return *this;
}

FbxString& FbxString::operator+=(const FbxString& other) {
  text_ += other.text_;
  return *this;
}

int FbxString::Find(const char* text, size_t start) const {
  const size_t at = text_.find(text, start);
  return at == std::string::npos ? -1 : static_cast<int>(at);
}

int FbxString::ReverseFind(char character) const {
  const size_t at = text_.rfind(character);
  return at == std::string::npos ? -1 : static_cast<int>(at);
}

FbxString FbxString::Mid(size_t first, size_t count) const {
  return first >= text_.size() ? FbxString() : FbxString(text_.substr(first, count));
}

bool FbxString::FindAndReplace(const char* find, const char* replace) {
  const std::string_view needle = find;
  const std::string_view substitute = replace;
  if (needle.empty()) return false;
  size_t at = text_.find(needle);
  if (at == std::string::npos) return false;
  // Built anew rather than in place: replacing inside the string is quadratic in its length.
  std::string result;
  size_t copied = 0;
  for (; at != std::string::npos; at = text_.find(needle, copied)) {
    result.append(text_, copied, at - copied).append(substitute);
    copied = at + needle.size();
  }
  text_ = result.append(text_, copied, std::string::npos);
  return true;
}

FbxString FbxString::Lower() const {
  FbxString result = *this;
  for (char& c : result.text_) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return result;
}

std::string StripPrefix(std::string_view name) {
  const size_t at = name.find("::");
  return std::string(at == std::string_view::npos ? name : name.substr(at + 2));
}

std::string NoPrefixName(std::string_view name) {
  const size_t at = name.rfind("::");
  return std::string(at == std::string_view::npos ? name : name.substr(at + 2));
}

void FbxStatus::SetCode(EStatusCode code) {
  static constexpr std::array<const char*, 8> kTexts = {"",
                                                        "Unknown error",
                                                        "Insufficient memory",
                                                        "Invalid parameter",
                                                        "Index out of range",
                                                        "Invalid password",
                                                        "Unsupported file version",
                                                        "Invalid file"};
  code_ = code;
  text_ = kTexts[code];
}

void FbxStatus::SetCode(EStatusCode code, const char* format, ...) {
  code_ = code;
  va_list arguments;
  va_start(arguments, format);
  va_list counted;
  va_copy(counted, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, counted);
  va_end(counted);
  std::string text(length > 0 ? static_cast<size_t>(length) + 1 : 1, '\0');
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  text.pop_back();
  text_ = FbxString(std::move(text));
}

void FbxStatus::Clear() { SetCode(eSuccess); }
