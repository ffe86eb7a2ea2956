// A morph animation: tracks of weights, tied to the morph targets of a mesh by name alone.
#pragma once

#include <string>
#include <vector>

struct CalCoreMorphKeyframe {
  float time = 0;    // seconds
  float weight = 0;  // 1 is the full target
};

struct CalCoreMorphTrack {
  void addCoreMorphKeyframe(CalCoreMorphKeyframe keyframe) { keyframes.push_back(keyframe); }

  std::string morphName;
  std::vector<CalCoreMorphKeyframe> keyframes;
};

struct CalCoreMorphAnimation {
  float duration = 0;  // seconds
  std::vector<CalCoreMorphTrack> tracks;
};
