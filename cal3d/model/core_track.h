// The movement of one bone: keyframes in ascending time, relative to the bone's parent.
#pragma once

#include <cstdint>
#include <vector>

#include "cal3d/model/vector.h"

struct CalCoreKeyframe {
  float time = 0;  // seconds
  CalQuaternion rotation;
  CalVector translation;

  bool operator==(const CalCoreKeyframe&) const = default;
};

struct CalCoreTrack {
  CalCoreTrack(std::int32_t boneId, const std::vector<CalCoreKeyframe>& frames);

  // The transform at `time` in seconds: between two keyframes the translation is blended linearly
  // and the rotation spherically along the shorter way; before the first and after the last one
  // their own values hold. A track without keyframes gives the identity.
  CalTransform getCurrentTransform(float time) const;

  std::int32_t coreBoneId;
  std::vector<CalCoreKeyframe> keyframes;

  // Whether the keyframes that the constructor was given differ in rotation, in translation.
  bool rotates;
  bool translates;
};
