// Braces in the text of an ASCII scene file.
//
// A nested block is skipped by looking for its closing brace. Every level of a file would search
// the same text again for its own blocks, so the first search remembers where all larger blocks
// within end, and each byte of a file is searched about once, however deep the blocks nest.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

class FbxByteSource;

// Walks through text from brace to brace. Braces in comment lines (';' behind white space) and in
// double quotes don't count; a quote runs on over the ends of lines.
class FbxAsciiScanner {
 public:
  // `position` counts as the start of a line. Nothing is read from `limit` on.
  FbxAsciiScanner(FbxByteSource& source, int64_t position, int64_t limit)
      : source_(source), position_(position), limit_(limit) {}

  // The next brace, or 0 at the end. The text before it, without comments and leading white space
  // of lines, is appended to `text` unless that is null.
  char Next(std::vector<char>* text);
  // Behind the brace.
  int64_t Position() const { return position_; }
  // Goes on at a position within a line.
  void Resume(int64_t position) { position_ = position; }

 private:
  FbxByteSource& source_;
  int64_t position_;
  int64_t limit_;
  bool isLineStart_ = true;
  bool isComment_ = false;
  bool isQuote_ = false;
};

class FbxAsciiBlocks {
 public:
  // Blocks nested deeper than this are skipped with the others, but not remembered: no list as deep
  // is ever opened, see FbxIO.
  static constexpr size_t kMaxDepth = 10000;

  // The position behind the brace that closes the block whose text begins at `position`; the end of
  // the source if there is none.
  int64_t Skip(FbxByteSource& source, int64_t position);

 private:
  struct Block {
    int64_t start;
    int64_t end;
  };

  int64_t Search(FbxByteSource& source, int64_t position);

  // In order of their starts.
  std::vector<Block> blocks_;
  // Blocks that start before this position are remembered, if they are large.
  int64_t searched_ = 0;
};
