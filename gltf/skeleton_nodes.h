// The bones of a model as nodes and as one skin, and what of a submesh hangs on them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "cal3d/model/core_mesh.h"
#include "gltf/glb_builder.h"
#include "gltf/view_model.h"

// Adds node 0, which turns the model's Z up into the Y up of glTF, and one node for each bone below
// it: bone i is node i + 1. Bones that stand for lights carry them.
void AddSkeleton(GlbBuilder& glb, const ViewModel& model);

// Adds the skin whose joint i is bone i. With `restJoint` there is one more, the root itself, on
// which vertices without bones stand still. Nothing happens for a model without bones.
void AddSkin(GlbBuilder& glb, const ViewModel& model, bool restJoint);

// The influences of a submesh in sets of four, the heaviest of each vertex first.
struct SkinSets {
  // One for each set; four numbers for each vertex.
  std::vector<std::vector<uint16_t>> joints;
  std::vector<std::vector<float>> weights;
  bool usesRestJoint = false;
  int32_t strangeBone = -1;  // a bone that the skeleton doesn't have; -1 if there is none
  bool hasTooMany = false;   // a vertex has more influences than can be shown
  bool hasNegative = false;  // a weight below 0
};

// `bones` is the number of bones; the rest joint's number is the same.
SkinSets PackInfluences(const CalCoreSubmesh& submesh, size_t bones);

// The rotation with length 1; no rotation for one without a length.
CalQuaternion UnitRotation(const CalQuaternion& rotation);
