#include "cal3d/model/sse_array.h"

#include <new>

namespace cal3d {

void* allocate_aligned_data(std::size_t bytes) {
  constexpr std::size_t kAlignment = 16;
  if (bytes > std::numeric_limits<std::size_t>::max() - kAlignment) throw std::bad_alloc();
  // aligned_alloc wants a multiple of the alignment; a request for nothing still gets a block.
  const std::size_t rounded = (bytes + kAlignment - 1) / kAlignment * kAlignment;
  void* block = std::aligned_alloc(kAlignment, rounded == 0 ? kAlignment : rounded);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

}  // namespace cal3d
