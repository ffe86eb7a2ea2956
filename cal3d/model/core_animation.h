// Animations: the movement of bones, and of the weights of morph targets.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cal3d/model/vector.h"

struct CalCoreKeyframe {
  float time = 0;  // seconds
  CalQuaternion rotation;
  CalVector translation;

  bool operator==(const CalCoreKeyframe&) const = default;
};

// The movement of one bone: keyframes in ascending time, relative to the bone's parent.
struct CalCoreTrack {
  CalCoreTrack(int32_t boneId, const std::vector<CalCoreKeyframe>& frames);

  // The transform at `time` in seconds: between two keyframes the translation is blended linearly
  // and the rotation spherically along the shorter way; before the first and after the last one
  // their own values hold. A track without keyframes gives the identity.
  CalTransform getCurrentTransform(float time) const;

  int32_t coreBoneId;
  std::vector<CalCoreKeyframe> keyframes;

  // Whether the keyframes that the constructor was given differ in rotation, in translation.
  bool rotates;
  bool translates;
};

// A skeletal animation. A bone may have several tracks; the first one counts.
struct CalCoreAnimation {
  // The first track of that bone, null if there is none. It lives as long as the list isn't
  // changed.
  const CalCoreTrack* getCoreTrack(int32_t coreBoneId) const {
    for (const CalCoreTrack& track : tracks) {
      if (track.coreBoneId == coreBoneId) return &track;
    }
    return nullptr;
  }

  float duration = 0;  // seconds
  std::vector<CalCoreTrack> tracks;
};

struct CalCoreMorphKeyframe {
  float time = 0;    // seconds
  float weight = 0;  // 1 is the full target
};

// The weights of one morph target, which is told by its name alone.
struct CalCoreMorphTrack {
  void addCoreMorphKeyframe(CalCoreMorphKeyframe keyframe) { keyframes.push_back(keyframe); }

  std::string morphName;
  std::vector<CalCoreMorphKeyframe> keyframes;
};

struct CalCoreMorphAnimation {
  float duration = 0;  // seconds
  std::vector<CalCoreMorphTrack> tracks;
};
