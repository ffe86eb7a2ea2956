// Inflates arrays, whole or piece by piece. One inflater serves all arrays of a file, so that its
// tables are made once, and counts what they inflate to: a stream of zeros grows a thousandfold,
// and a small file of such streams must not fill the memory. The arrays of a scene grow tenfold at
// best.
//
// libdeflate takes less than half of zlib's time, a quarter of all that a large mesh costs, but
// knows whole streams only, and leaves nothing of those that it refuses: these are zlib's.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

class FbxInflater {
 public:
  // For a file of that many bytes.
  explicit FbxInflater(int64_t fileSize);
  ~FbxInflater();

  // Inflates `stream`, which is all of an array, into memory that grows with what really comes, up
  // to `room` bytes: `grow` makes room for that many in all, keeps what is there, and says where
  // it begins. `made` tells how many there are then. False if the stream is damaged, makes more, or
  // is followed by anything.
  using Grow = std::function<char*(size_t size)>;
  bool InflateArray(std::string_view stream, size_t room, const Grow& grow, size_t& made);
  // Counts the most that an array of `stored` bytes and that room can make, which is inflated
  // later: so what a file may make goes to its arrays in the order of the file, whatever is asked
  // for first. False, and nothing is counted, if not as much is left; `counted` tells how much.
  bool Count(size_t stored, size_t room, size_t& counted) {
    constexpr size_t kMostRatio = 1032;  // 258 bytes of two bits
    counted = std::min(room, stored * kMostRatio);
    if (counted > left_) return false;
    left_ -= counted;
    return true;
  }
  // For an array that is about to be inflated: what has been counted for it doesn't count twice.
  void Uncount(size_t counted) { left_ += counted; }

 private:
  enum Result { eMore, eEnd, eError };

  // Inflates `stream` into `room` bytes at `out` in one go; `written` tells how many were made.
  // False if it isn't one whole stream that fits, or there is no memory for that: what can be read
  // of it is found out piece by piece.
  bool InflateWhole(std::string_view stream, char* out, size_t room, size_t& written);

  // Begins a new stream, to be inflated piece by piece. False if there is no memory for it.
  bool Begin();
  // Inflates the front of `input`, which is cut off, into `room` bytes at `out`; `written` tells
  // how many were made. Stops when one of the two is used up, or at the end of the stream; an error
  // once the file's streams have made more than any scene's would.
  Result Inflate(std::string_view& input, char* out, size_t room, size_t& written);

  struct Stream;
  struct WholeStreams;
  std::unique_ptr<Stream> stream_;
  std::unique_ptr<WholeStreams> whole_;
  size_t left_;
};
