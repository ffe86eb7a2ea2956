// The animations of the current input file, so that several export commands on one file analyse it
// only once.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "converter/animation/animation_info.h"
#include "converter/base/conversion_arguments.h"

// From the path of a skeleton's root to its animations. Two more keys hold the complete lists.
using AnimationMap = std::map<std::string, std::vector<AnimationInfoHolder>>;

inline constexpr char kCompleteSkeletalList[] = "COMPLETE_SKELETAL_ANIM_LIST";
inline constexpr char kCompleteMorphList[] = "COMPLETE_MORPH_ANIM_LIST";

struct AnimationCache {
  // Analyses the scene of `args` unless the maps describe it already. A file that was loaded anew
  // is analysed anew: the maps point into its scene. Loads the scene if need be, and throws as
  // FbxWrapper::getInstance does.
  void Update(ConversionArguments& args);

  std::string fileName;     // the input file that the maps describe
  uint64_t loadNumber = 0;  // which load of it
  AnimationMap skeletalAnimations;
  AnimationMap morphAnimations;
};

// The one cache of the process.
extern AnimationCache _currentAnimationCache;  // NOLINT(bugprone-reserved-identifier)
