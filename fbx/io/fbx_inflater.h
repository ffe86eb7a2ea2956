// A zlib stream read piece by piece. One inflater serves all arrays of a file, so that its tables
// are made once, and counts what they inflate to: a stream of zeros grows a thousandfold, and a
// small file of such streams must not fill the memory. The arrays of a scene grow tenfold at best.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

class FbxInflater {
 public:
  enum Result { eMore, eEnd, eError };

  // For a file of that many bytes.
  explicit FbxInflater(int64_t fileSize);
  ~FbxInflater();

  // Begins a new stream. False if there is no memory for it.
  bool Begin();
  // Inflates the front of `input`, which is cut off, into `room` bytes at `out`; `written` tells
  // how many were made. Stops when one of the two is used up, or at the end of the stream; an error
  // once the file's streams have made more than any scene's would.
  Result Inflate(std::string_view& input, char* out, size_t room, size_t& written);

 private:
  struct Stream;
  std::unique_ptr<Stream> stream_;
  size_t left_;
};
