// A skeleton: a list of bones, numbered by their place in it.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "cal3d/model/vector.h"

enum class CalLightType : int32_t {
  kNone = 0,
  kPoint = 1,
  kDirectional = 2,
  kSpot = 3,
  kAmbient = 4,
};

// One bone: its place relative to its parent, and the transform that takes a vertex from model
// space into the bone\'s space. A bone may stand for a light.
class CalCoreBone {
 public:
  // `parentId` is the parent's index in the list of bones, -1 for a root.
  CalCoreBone(std::string boneName, int32_t parent) : name(std::move(boneName)), parentId(parent) {}

  const std::string name;
  const int32_t parentId;
  CalVector lightColor;  // components from 0 to 1; counts only when the bone is a light
  CalLightType lightType = CalLightType::kNone;
  CalQuaternion relativeRotation;
  CalVector relativeTranslation;
  CalQuaternion boneSpaceRotation;
  CalVector boneSpaceTranslation;

  // Indices of the children in ascending order. A CalCoreSkeleton fills it in from the parents of
  // the bones that it is made of.
  std::vector<int32_t> childIds;
};

// The bones are shared with whoever made them; the list itself is fixed by the constructor, which
// also fills in every bone's list of children.
class CalCoreSkeleton {
 public:
  explicit CalCoreSkeleton(const std::vector<boost::shared_ptr<CalCoreBone>>& bones);
  CalCoreSkeleton(const CalCoreSkeleton& other);
  CalCoreSkeleton& operator=(const CalCoreSkeleton&) = delete;

  // The index of the first bone of that name, -1 if there is none.
  int32_t getCoreBoneId(const std::string& name) const;

  const std::vector<boost::shared_ptr<CalCoreBone>>& coreBones;
  CalVector sceneAmbientColor;  // components from 0 to 1; 0 where a scene sets none

 private:
  std::vector<boost::shared_ptr<CalCoreBone>> bones_;
  std::unordered_map<std::string, int32_t> idsByName_;
};
