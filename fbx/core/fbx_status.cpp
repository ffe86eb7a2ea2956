#include "fbx/core/fbx_status.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string>

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
