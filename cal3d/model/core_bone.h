// One bone of a skeleton: its place relative to its parent, and the transform that takes a vertex
// from model space into the bone's space. A bone may stand for a light.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "cal3d/model/vector.h"

enum class CalLightType : std::int32_t {
  kNone = 0,
  kPoint = 1,
  kDirectional = 2,
  kSpot = 3,
  kAmbient = 4,
};

class CalCoreBone {
 public:
  // `parentId` is the parent's index in the list of bones, -1 for a root.
  CalCoreBone(std::string boneName, std::int32_t parent)
      : name(std::move(boneName)), parentId(parent) {}

  const std::string name;
  const std::int32_t parentId;
  CalVector lightColor;  // components from 0 to 1; counts only when the bone is a light
  CalLightType lightType = CalLightType::kNone;
  CalQuaternion relativeRotation;
  CalVector relativeTranslation;
  CalQuaternion boneSpaceRotation;
  CalVector boneSpaceTranslation;

  // Indices of the children in ascending order. A CalCoreSkeleton fills it in from the parents of
  // the bones that it is made of.
  std::vector<std::int32_t> childIds;
};
