// A zlib stream read piece by piece. One inflater serves all arrays of a file, so that its tables
// are made once.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

class FbxInflater {
 public:
  enum Result { eMore, eEnd, eError };

  FbxInflater();
  ~FbxInflater();

  // Begins a new stream. False if there is no memory for it.
  bool Begin();
  // Inflates the front of `input`, which is cut off, into `room` bytes at `out`; `written` tells
  // how many were made. Stops when one of the two is used up, or at the end of the stream.
  Result Inflate(std::string_view& input, char* out, size_t room, size_t& written);

 private:
  struct Stream;
  std::unique_ptr<Stream> stream_;
};
