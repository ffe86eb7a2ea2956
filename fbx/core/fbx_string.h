// The scene library's owning byte string, and the status that its operations report. Bytes are kept
// as they stand in the file: nothing here decodes, normalises or folds them, but for Lower, which
// knows ASCII only.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

class FbxString {
 public:
  FbxString() = default;
  FbxString(const char* text) : text_(text == nullptr ? "" : text) {}
  FbxString(std::string text) : text_(std::move(text)) {}
  FbxString(std::string_view text) : text_(text) {}

  // Never null; "" for an empty string.
  const char* Buffer() const { return text_.c_str(); }
  operator const char*() const { return text_.c_str(); }
  const std::string& Text() const { return text_; }

  bool IsEmpty() const { return text_.empty(); }

  FbxString& operator+=(const char* text);
  FbxString& operator+=(const FbxString& other);
  friend FbxString operator+(const FbxString& a, const FbxString& b) {
    return FbxString(a.text_ + b.text_);
  }
  friend bool operator==(const FbxString& a, const FbxString& b) { return a.text_ == b.text_; }
  friend bool operator==(const FbxString& a, const char* b) { return a.text_ == b; }

  // Byte order, as strcmp: below, at or above 0.
  int Compare(const char* text) const { return text_.compare(text); }
  // Index of the first (last) occurrence, -1 if there is none. `start` is where the search begins.
  int Find(const char* text, size_t start = 0) const;
  int ReverseFind(char character) const;
  // The text from `first` on, at most `count` bytes; empty past the end.
  FbxString Mid(size_t first, size_t count = std::string::npos) const;
  // Replaces every occurrence; true if there was one.
  bool FindAndReplace(const char* find, const char* replace);
  // A copy with the ASCII letters A to Z in lower case.
  FbxString Lower() const;

 private:
  std::string text_;
};

// The text behind the first "::", as the name stands in "Class::Name"; the whole without one.
std::string StripPrefix(std::string_view name);
// The text behind the last "::"; the whole without one.
std::string NoPrefixName(std::string_view name);

// The outcome of an operation of the scene library: one code and one text. The library doesn't
// throw; an operation that fails sets a status and returns false, null or 0.
class FbxStatus {
 public:
  enum EStatusCode {
    eSuccess = 0,
    eFailure = 1,
    eInsufficientMemory = 2,
    eInvalidParameter = 3,
    eIndexOutOfRange = 4,
    ePasswordError = 5,
    eInvalidFileVersion = 6,
    eInvalidFile = 7,
  };

  // Stores the code with its default text.
  void SetCode(EStatusCode code);
  // Stores the code with a text in printf's form.
  [[gnu::format(printf, 3, 4)]] void SetCode(EStatusCode code, const char* format, ...);
  void Clear();

  EStatusCode GetCode() const { return code_; }
  bool Error() const { return code_ != eSuccess; }
  const char* GetErrorString() const { return text_.Buffer(); }

 private:
  EStatusCode code_ = eSuccess;
  FbxString text_;
};
