// The animations of a scene, which the session keeps with it, so that several export commands on
// one file analyse it only once.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "converter/animation/animation_info.h"

// From the path of a skeleton's root to its animations. Two more keys hold the complete lists.
using AnimationMap = std::map<std::string, std::vector<AnimationInfoHolder>>;

inline constexpr char kCompleteSkeletalList[] = "COMPLETE_SKELETAL_ANIM_LIST";
inline constexpr char kCompleteMorphList[] = "COMPLETE_MORPH_ANIM_LIST";

struct AnimationCache {
  std::string fileName;  // the input file that the maps describe; empty until they are filled
  AnimationMap skeletalAnimations;
  AnimationMap morphAnimations;
};
