// The listing of animations.
#include "converter/animation/curve_visitors.h"
#include "converter/animation/export_animation.h"
#include "converter/base/records.h"
#include "converter/scene/scene_channels.h"

namespace {

void ListAnimation(const ConversionArguments& args, SceneChannels& channels,
                   const AnimationInfoHolder& holder) {
  const sAnim& info = holder.info;
  AddAnimOutput(holder.fileName, info.timeMode, info.timeProtocol, info.startFrame, info.endFrame,
                info.durationFrames, info.referenceStartFrame, info.referenceEndFrame,
                info.referenceDurationFrames, holder.isMorph);
  if (args.verbosity != 0) {
    AddOutput(holder.isMorph ? "MORPH: " + holder.fileName : "\t", holder.toString(), true);
  }
  if (args.verbosity > 2) {
    const ChannelRuns curves = ChannelsBelow(channels, holder.animStack, holder.rootNode);
    AddOutput("DATA", CurveText(curves, true), true);
  }
}

void ListAnimations(const ConversionArguments& args, SceneChannels& channels,
                    const AnimationMap& animations, const char* completeList) {
  const auto list =
      animations.find(args.skeletonRootPath.empty() ? completeList : args.skeletonRootPath);
  if (list == animations.end()) return;
  for (const AnimationInfoHolder& holder : list->second) {
    if (!holder.nodes.empty()) ListAnimation(args, channels, holder);
  }
}

}  // namespace

std::vector<sAnim> ExportAnimation::List() {
  AnimationMap skeletal;
  AnimationMap morph;
  BuildAnimLists(skeletal, morph);
  const auto lists = [this](ObjectType type) {
    return args_.type == LIST_ALL_OBJECT || (args_.type & type) != 0;
  };
  if (lists(ANIM_OBJECT)) ListAnimations(args_, Channels(), skeletal, kCompleteSkeletalList);
  if (lists(MORPHANIM_OBJECT)) ListAnimations(args_, Channels(), morph, kCompleteMorphList);
  return {};
}
