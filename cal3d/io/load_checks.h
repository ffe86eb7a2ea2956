// The checks and conversions that the readers of both forms share. Each check throws
// std::runtime_error with a text that names the number at fault.
#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "cal3d/model/core_mesh.h"
#include "cal3d/model/core_skeleton.h"

// The colour of a vertex in files that tell none.
inline constexpr std::uint32_t kWhite = 0xFFFFFFFF;

// Return their argument if it is within the versions that we read, not negative, below `vertices`.
std::int32_t CheckedVersion(std::int32_t version);
std::int32_t CheckedBoneId(std::int32_t bone);
std::int32_t CheckedVertexId(std::int32_t vertex, std::int32_t vertices);

// A face of three vertices of a submesh that has `vertices` of them. A face holds 16-bit indices.
CalCoreSubmesh::Face CheckedFace(std::span<const std::int32_t, 3> corners, std::int32_t vertices);

// The offset of a morph that puts the vertex `id` of the submesh, checked before, at `position`.
VertexOffset LoadedOffset(const CalCoreSubmesh& submesh, std::int32_t id, const CalVector& position,
                          const CalVector& normal);

// A skeleton as its file tells it. The children are told twice, by their own parent and in the
// parent's list; the parents make the skeleton, and the lists must agree with them.
struct LoadedSkeleton {
  // Throws for a parent out of range, for bones in a circle, and for a child listed under a bone
  // that isn't its parent.
  boost::shared_ptr<CalCoreSkeleton> Finish(const CalVector& ambient) const;

  std::vector<boost::shared_ptr<CalCoreBone>> bones;
  std::vector<std::pair<std::int32_t, std::int32_t>> children;  // parent, child
};
