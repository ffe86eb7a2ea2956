// What a model must hold to make a good file. The savers refuse to write anything else, so that
// every file of ours can be loaded; the loaders check the same as they read.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "cal3d/model/core_animation.h"
#include "cal3d/model/core_mesh.h"
#include "cal3d/model/core_skeleton.h"

// Each returns what is wrong, or an empty text.

// Null bones, parents that aren't in the list, parents in a circle.
std::string FaultOf(const CalCoreSkeleton& skeleton);
// Null objects, vertex indices of faces and morph targets out of range, negative bone ids.
std::string FaultOf(const CalCoreMesh& mesh);
// Negative bone ids.
std::string FaultOf(const CalCoreAnimation& animation);
// Everything that these two can hold makes a good file.
inline std::string FaultOf(const CalCoreMaterial& /*material*/) { return {}; }
inline std::string FaultOf(const CalCoreMorphAnimation& /*animation*/) { return {}; }

// What the readers of both forms share. Each check throws std::runtime_error with a text that names
// the number at fault.

// The colour of a vertex in files that tell none.
inline constexpr uint32_t kWhite = 0xFFFFFFFF;

// Return their argument if it is within the versions that we read, not negative, below `vertices`.
int32_t CheckedVersion(int32_t version);
int32_t CheckedBoneId(int32_t bone);
int32_t CheckedVertexId(int32_t vertex, int32_t vertices);

// A face of three vertices of a submesh that has `vertices` of them. A face holds 16-bit indices.
CalCoreSubmesh::Face CheckedFace(std::span<const int32_t, 3> corners, int32_t vertices);

// The offset of a morph that puts the vertex `id` of the submesh, checked before, at `position`.
VertexOffset LoadedOffset(const CalCoreSubmesh& submesh, int32_t id, const CalVector& position,
                          const CalVector& normal);

// A skeleton as its file tells it. The children are told twice, by their own parent and in the
// parent's list; the parents make the skeleton, and the lists must agree with them.
struct LoadedSkeleton {
  // Throws for a parent out of range, for bones in a circle, and for a child listed under a bone
  // that isn't its parent.
  boost::shared_ptr<CalCoreSkeleton> Finish(const CalVector& ambient) const;

  std::vector<boost::shared_ptr<CalCoreBone>> bones;
  std::vector<std::pair<int32_t, int32_t>> children;  // parent, child
};
