// The older route to a morph animation, and the question whether a stack has one. Both take curves
// with two keys, where the visitors ask for three.
#include <algorithm>

#include "cal3d/io/saver.h"
#include "converter/animation/export_animation.h"
#include "converter/base/log.h"
#include "converter/base/output.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/scene/scene_channels.h"
#include "converter/space/frames.h"
#include "fbx/anim/fbx_anim_curve.h"
#include "fbx/anim/fbx_anim_stack.h"
#include "fbx/scene/fbx_node.h"

namespace {

bool IsTaken(const ConversionArguments& args, const FbxAnimStack& stack) {
  if (args.commandVersion == 1) return stack.Name() == args.exportObjectName;
  const std::vector<std::string>& names = args.exportObjectNames;
  return std::find(names.begin(), names.end(), stack.Name()) == names.end();
}

// Whether the values of a curve say anything: two keys do only if they differ.
bool Changes(const FbxAnimCurve& curve) {
  const int count = curve.KeyGetCount();
  return count > 2 || (count == 2 && curve.KeyGetValue(0) != curve.KeyGetValue(1));
}

// Whether it has a value to show: two keys do unless both are 0.
bool IsShown(const FbxAnimCurve& curve) {
  const int count = curve.KeyGetCount();
  return count > 2 ||
         (count == 2 && (curve.KeyGetValue(0) != 0.0F || curve.KeyGetValue(1) != 0.0F));
}

}  // namespace

bool ExportAnimation::ExportMorphAnim(const ConversionArguments& args, zevoMagicStops magicStops) {
  LOG_INFO(args.toString());
  CalCoreMorphAnimation animation;
  AddMorphAnimation(args, animation);
  if (magicStops == kStopBeforeMorphAnimation) return !animation.tracks.empty();
  return CalSaver::saveCoreMorphAnimation(args.outputFilename, &animation);
}

bool ExportAnimation::AddMorphAnimation(const ConversionArguments& args,
                                        CalCoreMorphAnimation& animation) {
  for (FbxAnimStack* stack : scene_.GetAnimList()) {
    if (!IsTaken(args, *stack)) continue;
    if (args.verbosity > 0) PrintFormatted(" [%s]", stack->GetName());
    scene_.GetScene()->SetCurrentAnimationStack(stack);
    animation.duration = std::max(animation.duration, StackSeconds(*stack, args.frameRate));
    AddTracksToMorphAnimation(args, stack, animation);
  }
  return true;
}

void ExportAnimation::AddTracksToMorphAnimation(const ConversionArguments& args,
                                                FbxAnimStack* stack,
                                                CalCoreMorphAnimation& animation) {
  for (int i = 0; i < stack->GetLayerCount(); ++i) {
    AddTracksToMorphAnimationFromLayer(args, scene_.GetRootNode(), stack->GetLayer(i), animation);
  }
}

void ExportAnimation::AddTracksToMorphAnimationFromLayer(const ConversionArguments& args,
                                                         FbxNode* node, FbxAnimLayer* layer,
                                                         CalCoreMorphAnimation& animation) {
  for (const NodeChannels& channels : Channels().Of(layer).Below(node)) {
    AddTracksToMorphAnimationFromChannels(args, channels, animation);
  }
}

void ExportAnimation::AddTracksToMorphAnimationFromChannels(const ConversionArguments& args,
                                                            const NodeChannels& channels,
                                                            CalCoreMorphAnimation& animation) {
  if (!channels.showsMorphs) return;
  for (const ChannelCurves& shape : channels.morphs) {
    for (const ChannelCurve& channel : shape) {
      const FbxAnimCurve& curve = *channel.curve;
      if (!Changes(curve)) continue;
      CalCoreMorphTrack track;
      track.morphName = *channel.channel;
      for (int i = 0; i < curve.KeyGetCount(); ++i) {
        constexpr float kPercent = 100.0F;
        track.addCoreMorphKeyframe({FrameRateSeconds(curve.KeyGetTime(i), args.frameRate),
                                    curve.KeyGetValue(i) / kPercent});
      }
      animation.tracks.push_back(std::move(track));
    }
  }
}

bool ExportAnimation::CheckTracksForMorphAnimation(FbxWrapper* wrapper, FbxAnimStack* stack) {
  for (int i = 0; i < stack->GetLayerCount(); ++i) {
    if (CheckTracksForMorphAnimationInLayer(wrapper->GetRootNode(), stack, stack->GetLayer(i))) {
      return true;
    }
  }
  return false;
}

bool ExportAnimation::CheckTracksForMorphAnimationInLayer(FbxNode* node, FbxAnimStack* stack,
                                                          FbxAnimLayer* layer) {
  const std::span<const NodeChannels> animated = Channels().Of(layer).Below(node);
  return std::any_of(animated.begin(), animated.end(), [stack](const NodeChannels& channels) {
    return CheckTracksForMorphAnimationInChannels(channels, stack);
  });
}

bool ExportAnimation::CheckTracksForMorphAnimationInChannels(const NodeChannels& channels,
                                                             FbxAnimStack* stack) {
  if (!channels.showsMorphs) return false;
  for (const ChannelCurves& shape : channels.morphs) {
    for (const ChannelCurve& channel : shape) {
      if (!IsShown(*channel.curve)) continue;
      PrintFormatted("found morph animation in stack %s on node %s\n", stack->GetName(),
                     channels.node->GetName());
      return true;
    }
  }
  return false;
}
