// The visitors that collect an animation for export. Keyframe times are absolute: an animation that
// starts late has a late first keyframe.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "cal3d/model/core_animation.h"
#include "converter/animation/curve_visitors.h"
#include "converter/base/conversion_arguments.h"
#include "converter/skeleton/skeleton_roots.h"

class FbxAnimStack;

// Collects the frames at which bones have keys. The curves only say when: what is stored is the
// bone's whole local transform, evaluated at that frame.
class AnimationCurveVisitorAnimKeyFramer : public AnimationCurveVisitor {
 public:
  // `bones` must stay alive.
  AnimationCurveVisitorAnimKeyFramer(const BoneNameMap& bones, FbxAnimStack* stack);

  void VisitCurve(const std::string& channel, FbxAnimCurve* curve) override;

  // One track for each bone that was visited and has an id, in the order of their paths; without
  // keyframes for a bone of which only the scaling has keys. Makes the stack its scene's current
  // one.
  CalCoreAnimation GetAnimation(const ConversionArguments& args);

 private:
  struct BoneKeys {
    int boneId = -1;
    const FbxNode* node = nullptr;            // the last one visited, where several share the path
    std::vector<int32_t> frames;              // ascending, each once, of translation and rotation
    const FbxAnimCurve* lastCurve = nullptr;  // the last one that gave frames
  };
  // A keyframe to come.
  struct Sample {
    int32_t frame;
    uint32_t track;
  };

  BoneKeys* KeysOfCurrentNode();
  void AddFrames(const FbxAnimCurve& curve, std::vector<int32_t>& frames);

  const BoneNameMap& bones_;
  FbxAnimStack* stack_;
  std::map<int, BoneKeys> keyCurves_;  // by the rank of the bone's path
  const FbxNode* lastNode_ = nullptr;  // whose scale all translations are multiplied by
  BoneKeys* lastKeys_ = nullptr;       // of that node; null if it is no bone
  std::vector<int32_t> curveFrames_;   // working space
};

// Copies the keys of blend shape channels: one track for each curve, in the order of the walk.
// Curves of one name are not merged.
class AnimationCurveVisitorMorphKeyFramer : public AnimationCurveVisitor {
 public:
  void VisitCurve(const std::string& channel, FbxAnimCurve* curve) override;

  CalCoreMorphAnimation coreMorphAnimation;

 private:
  float maxSeconds_ = 0.0F;
};
