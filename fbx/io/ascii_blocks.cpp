#include "fbx/io/ascii_blocks.h"

#include <algorithm>
#include <cstring>

#include "fbx/io/fbx_byte_source.h"
#include "fbx/io/stored_value.h"

namespace {

// Smaller blocks are searched again rather than remembered.
constexpr int64_t kSmallBlock = 256;

constexpr bool IsBlockStop(char c) {
  // Without branches, for the loop below.
  return ((c == '"') | (c == '{') | (c == '}') | (c == '\n')) != 0;
}

const char* FindStop(const char* at, const char* end) {
  // Arrays are long rows without a stop. Compilers compare many characters at once in a loop that
  // has no early end.
  constexpr int kStep = 64;
  const auto hasStop = [](const char* step) {
    uint8_t has = 0;
    for (int i = 0; i < kStep; ++i) has |= static_cast<uint8_t>(IsBlockStop(step[i]));
    return has != 0;
  };
  while (end - at >= kStep && !hasStop(at)) at += kStep;
  return std::find_if(at, end, IsBlockStop);
}

// The next `wanted`, or `end`.
const char* Find(const char* at, const char* end, char wanted) {
  const void* found = std::memchr(at, wanted, static_cast<size_t>(end - at));
  return found == nullptr ? end : static_cast<const char*>(found);
}

}  // namespace

char FbxAsciiScanner::Next(std::vector<char>* text) {
  while (position_ < limit_) {
    std::string_view view = source_.View(position_);
    if (view.empty()) break;
    view = view.substr(0, static_cast<size_t>(limit_ - position_));
    const char* const begin = view.data();
    const char* const end = begin + view.size();
    const char* at = begin;
    while (at != end) {
      if (isComment_) {
        at = Find(at, end, '\n');
        if (at == end) break;
        ++at;
        isComment_ = false;
        isLineStart_ = true;
      }
      if (isLineStart_) {
        while (at != end && IsSpace(*at)) ++at;
        if (at == end) break;
        isLineStart_ = false;
        isComment_ = *at == ';';
        if (isComment_) continue;
      }
      const char* const stop = isQuote_ ? Find(at, end, '"') : FindStop(at, end);
      const bool isBrace = stop != end && (*stop == '{' || *stop == '}') && !isQuote_;
      const char* const behind = stop == end ? end : stop + 1;
      if (text != nullptr) text->insert(text->end(), at, isBrace ? stop : behind);
      at = behind;
      if (stop == end) break;
      if (isBrace) {
        position_ += at - begin;
        return *stop;
      }
      isQuote_ = *stop == '"' && !isQuote_;
      isLineStart_ = *stop == '\n';
    }
    position_ += at - begin;
  }
  return 0;
}

int64_t FbxAsciiBlocks::Skip(FbxByteSource& source, int64_t position) {
  const auto found =
      std::lower_bound(blocks_.begin(), blocks_.end(), position,
                       [](const Block& block, int64_t start) { return block.start < start; });
  if (found != blocks_.end() && found->start == position) return found->end;
  return Search(source, position);
}

int64_t FbxAsciiBlocks::Search(FbxByteSource& source, int64_t position) {
  const bool isNew = position >= searched_;
  // Starts of the blocks that are open, as indices of `blocks_` where those are remembered.
  std::vector<size_t> open;
  size_t depth = 0;
  const auto enter = [&](int64_t start) {
    if (++depth > kMaxDepth || !isNew) return;
    open.push_back(blocks_.size());
    blocks_.push_back({start, source.Size()});
  };
  const auto leave = [&](int64_t end) {
    if (depth-- > kMaxDepth || !isNew) return;
    Block& block = blocks_[open.back()];
    block.end = end;
    // The blocks within a small one are smaller, so nothing stands behind it.
    if (block.end - block.start < kSmallBlock) blocks_.resize(open.back());
    open.pop_back();
  };
  FbxAsciiScanner scanner(source, position, source.Size());
  enter(position);
  while (depth > 0) {
    const char brace = scanner.Next(nullptr);
    if (brace == 0) break;
    brace == '{' ? enter(scanner.Position()) : leave(scanner.Position());
  }
  if (isNew) searched_ = scanner.Position();
  return scanner.Position();
}
