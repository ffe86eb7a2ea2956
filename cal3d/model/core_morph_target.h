// One shape that a submesh can be blended into, told by the vertices that it moves. A vertex that
// it leaves where it is has no offset, so a smile on a large head costs what the mouth costs.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "cal3d/model/sse_array.h"
#include "cal3d/model/vector.h"

struct VertexOffset {
  std::int32_t vertexId = 0;
  CalVector4 position;  // morphed position minus base position
  CalVector4 normal;    // the morphed normal itself, no difference
};

class CalCoreMorphTarget {
 public:
  // `vertexCount` is the number of vertices of the submesh, which the ids in `offsets` index into.
  CalCoreMorphTarget(std::string name, std::int32_t vertexCount,
                     const cal3d::SSEArray<VertexOffset>& offsets)
      : name_(std::move(name)), vertex_count_(vertexCount), offsets_(offsets) {}

  const std::string& name() const { return name_; }
  std::int32_t vertexCount() const { return vertex_count_; }
  const cal3d::SSEArray<VertexOffset>& vertexOffsets() const { return offsets_; }

 private:
  std::string name_;
  std::int32_t vertex_count_;
  cal3d::SSEArray<VertexOffset> offsets_;
};
