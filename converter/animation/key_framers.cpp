#include "converter/animation/key_framers.h"

#include <algorithm>
#include <iterator>

#include "converter/space/axis_mod.h"
#include "converter/space/frames.h"
#include "fbx/anim/fbx_animation.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

namespace {

CalCoreKeyframe KeyframeAt(const ConversionArguments& args, const FbxNode& node, int32_t frame,
                           float factor) {
  FbxTime time;
  time.SetFrame(frame);
  const FbxAMatrix matrix = node.EvaluateLocalTransform(time);
  FbxVector4 translation = matrix.GetT();
  for (size_t i = 0; i < 3; ++i) translation[i] *= static_cast<double>(factor);
  FbxQuaternion rotation = matrix.GetQ();
  AxisModOnVector(args, translation);
  AxisModOnQuat(args, rotation);
  const auto narrow = [](double value) { return static_cast<float>(value); };
  return {frameToSeconds(static_cast<float>(frame)),
          {narrow(rotation[0]), narrow(rotation[1]), narrow(rotation[2]), narrow(rotation[3])},
          {narrow(translation[0]), narrow(translation[1]), narrow(translation[2])}};
}

}  // namespace

AnimationCurveVisitorAnimKeyFramer::AnimationCurveVisitorAnimKeyFramer(const BoneNameMap& bones,
                                                                       FbxAnimStack* stack)
    : bones_(bones), stack_(stack) {}

AnimationCurveVisitorAnimKeyFramer::BoneKeys*
AnimationCurveVisitorAnimKeyFramer::KeysOfCurrentNode() {
  if (lastNode_ == currentNode) return lastKeys_;
  lastNode_ = currentNode;
  const Bone* bone = bones_.Find(currentNode);
  lastKeys_ = bone == nullptr ? nullptr : &keyCurves_[bone->rank];
  if (bone != nullptr) lastKeys_->boneId = bone->id;
  return lastKeys_;
}

void AnimationCurveVisitorAnimKeyFramer::VisitCurve(const std::string& channel,
                                                    FbxAnimCurve* curve) {
  if (!isSkeletal(channel)) return;
  if (curve->KeyGetCount() == 0) return;
  BoneKeys* const keys = KeysOfCurrentNode();
  if (keys == nullptr) return;
  keys->node = currentNode;
  const bool scaling = channel[0] == 'S';
  if (scaling) return;
  // A bone's channels are mostly keyed at the same times.
  if (keys->lastCurve == nullptr || !curve->curve.HasTimesOf(keys->lastCurve->curve)) {
    AddFrames(*curve, keys->frames);
  }
  keys->lastCurve = curve;
}

void AnimationCurveVisitorAnimKeyFramer::AddFrames(const FbxAnimCurve& curve,
                                                   std::vector<int32_t>& frames) {
  curveFrames_.clear();
  const int count = curve.KeyGetCount();
  for (int i = 0; i < count; ++i) curveFrames_.push_back(TrackFrameOf(curve.KeyGetTime(i)));
  if (!std::is_sorted(curveFrames_.begin(), curveFrames_.end())) {
    std::sort(curveFrames_.begin(), curveFrames_.end());
  }
  curveFrames_.erase(std::unique(curveFrames_.begin(), curveFrames_.end()), curveFrames_.end());
  if (std::includes(frames.begin(), frames.end(), curveFrames_.begin(), curveFrames_.end())) return;
  std::vector<int32_t> merged;
  merged.reserve(frames.size() + curveFrames_.size());
  std::set_union(frames.begin(), frames.end(), curveFrames_.begin(), curveFrames_.end(),
                 std::back_inserter(merged));
  frames = std::move(merged);
}

// Bones are evaluated frame by frame, so that what they have in common above them is evaluated once
// for a frame.
CalCoreAnimation AnimationCurveVisitorAnimKeyFramer::GetAnimation(const ConversionArguments& args) {
  CalCoreAnimation animation;
  if (FbxScene* scene = stack_->GetScene()) scene->SetCurrentAnimationStack(stack_);
  const float nodeScale = lastNode_ == nullptr
                              ? 1.0F
                              : static_cast<float>(lastNode_->EvaluateGlobalTransform().GetS()[0]);
  const float factor = nodeScale * args.scaleFactor;

  std::vector<Sample> samples;
  std::vector<const FbxNode*> nodes;
  std::vector<std::vector<CalCoreKeyframe>> keyframes;
  for (const auto& [rank, keys] : keyCurves_) {
    const auto track = static_cast<uint32_t>(nodes.size());
    for (const int32_t frame : keys.frames) samples.push_back({frame, track});
    nodes.push_back(keys.node);
    keyframes.emplace_back().reserve(keys.frames.size());
  }
  std::stable_sort(samples.begin(), samples.end(),
                   [](const Sample& a, const Sample& b) { return a.frame < b.frame; });
  for (const Sample& sample : samples) {
    const CalCoreKeyframe keyframe = KeyframeAt(args, *nodes[sample.track], sample.frame, factor);
    animation.duration = std::max(animation.duration, keyframe.time);
    keyframes[sample.track].push_back(keyframe);
  }
  size_t track = 0;
  for (const auto& [rank, keys] : keyCurves_) {
    animation.tracks.emplace_back(keys.boneId, keyframes[track++]);
  }
  return animation;
}

void AnimationCurveVisitorMorphKeyFramer::VisitCurve(const std::string& channel,
                                                     FbxAnimCurve* curve) {
  if (isSkeletal(channel)) return;
  CalCoreMorphTrack track;
  track.morphName = channel;
  const int count = curve->KeyGetCount();
  track.keyframes.reserve(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) {
    const double frame = curve->KeyGetTime(i).GetFrameCountPrecise();
    const float seconds = frameToSeconds(static_cast<float>(frame));
    if (seconds > maxSeconds_) {
      maxSeconds_ = seconds;
      coreMorphAnimation.duration = seconds;
    }
    constexpr float kPercent = 100.0F;
    track.addCoreMorphKeyframe({seconds, clampKeyValue(curve->KeyGetValue(i)) / kPercent});
  }
  if (!track.keyframes.empty()) coreMorphAnimation.tracks.push_back(std::move(track));
}
