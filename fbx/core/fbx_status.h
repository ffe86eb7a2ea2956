// The outcome of an operation of the scene library: one code and one text. The library doesn't
// throw; an operation that fails sets a status and returns false, null or 0.
#pragma once

#include "fbx/core/fbx_string.h"

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
