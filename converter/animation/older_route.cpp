#include "converter/animation/older_route.h"

#include <algorithm>
#include <array>

#include "cal3d/io/saver.h"
#include "cal3d/model/core_animation.h"
#include "converter/animation/export_animation.h"
#include "converter/base/log.h"
#include "converter/base/names.h"
#include "converter/base/records.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/scene/node_paths.h"
#include "converter/scene/scene_channels.h"
#include "converter/skeleton/skeleton_roots.h"
#include "converter/space/frames.h"
#include "fbx/anim/fbx_animation.h"
#include "fbx/scene/fbx_node.h"

namespace {

bool IsScaling(const ChannelCurve& curve) { return curve.channel->front() == 'S'; }

// The times at which translation or rotation have keys, ascending, each once.
std::vector<FbxTime> KeyTimes(const NodeChannels& channels) {
  std::vector<FbxTime> times;
  for (const ChannelCurve& curve : channels.transform) {
    if (IsScaling(curve)) continue;
    const int count = curve.curve->KeyGetCount();
    for (int i = 0; i < count; ++i) times.push_back(curve.curve->KeyGetTime(i));
  }
  std::sort(times.begin(), times.end(), [](FbxTime a, FbxTime b) { return a.Get() < b.Get(); });
  times.erase(std::unique(times.begin(), times.end()), times.end());
  return times;
}

// Each value as the character of its truncated number, "," between them.
template <size_t kCount>
std::string AsCharacters(const std::array<double, kCount>& values) {
  std::string text;
  for (const double value : values) {
    if (!text.empty()) text += ',';
    text += static_cast<char>(Truncated<int32_t>(value));
  }
  return text;
}

void PrintKeyframe(int verbosity, FbxTime time, const FbxVector4& t, const FbxQuaternion& q) {
  std::string text;
  if (verbosity > 1) text.append(" ").append(std::to_string(FrameOf(time))).append(" ");
  if (verbosity > 2) {
    text.append(" T{").append(AsCharacters(t.Xyz())).append("} Q{");
    text.append(AsCharacters(q.data)).append("}\n");
  }
  Print(text);
}

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

void PrintTransform(size_t bone, float seconds, const FbxQuaternion& r, const FbxVector4& t) {
  PrintFormatted("%2.2zu\t %2.2f r:%2.2f %2.2f %2.2f %2.2f t:%2.2f %2.2f %2.2f \n", bone,
                 static_cast<double>(seconds), r[0], r[1], r[2], r[3], t[0], t[1], t[2]);
}

void CompareBone(size_t bone, const FbxNode& node, const CalCoreTrack& track, float seconds) {
  FbxTime time;
  time.SetSecondDouble(static_cast<double>(seconds));
  const CalTransform transform = track.getCurrentTransform(seconds);
  const FbxVector4 fbxTranslation = node.EvaluateLocalTranslation(time);
  const CalVector4 t = transform.translation.asCalVector4();
  const FbxVector4 calTranslation(static_cast<double>(t.x), static_cast<double>(t.y),
                                  static_cast<double>(t.z), 1.0);
  const FbxQuaternion fbxRotation = node.EvaluateLocalTransform(time).GetQ();
  const CalQuaternion& r = transform.rotation;
  const FbxQuaternion calRotation(static_cast<double>(r.x), static_cast<double>(r.y),
                                  static_cast<double>(r.z), static_cast<double>(r.w));
  if (fbxRotation != calRotation) {
    PrintFormatted("rotation mismatch at %zu, frame %d \n", bone,
                   Truncated<int>(static_cast<double>(seconds)));
  }
  PrintTransform(bone, seconds, fbxRotation, fbxTranslation);
  PrintTransform(bone, seconds, calRotation, calTranslation);
}

}  // namespace

// A skeletal animation: stack by stack, a track for each layer, without axis conversion, in seconds
// by the command's frame rate.

bool ExportAnimation::Export(const ConversionArguments& args, zevoMagicStops magicStops) {
  LOG_INFO(args.toString());
  CalCoreAnimation animation;
  AddAnimation(args, animation);
  if (magicStops == kStopBeforeAnimation) {
    return std::any_of(animation.tracks.begin(), animation.tracks.end(),
                       [](const CalCoreTrack& track) { return !track.keyframes.empty(); });
  }
  return CalSaver::saveCoreAnimation(args.outputFilename, &animation);
}

bool ExportAnimation::AddAnimation(const ConversionArguments& args, CalCoreAnimation& animation) {
  const FbxNode* root = GetSkeletonRoot(&scene_, args).node;
  if (root == nullptr) return false;
  const BoneNameMap bones = BuildBoneNameMap(BuildSkeleton(&scene_, root, args));
  for (FbxAnimStack* stack : scene_.GetAnimList()) {
    if (stack->Name() != args.exportObjectName) continue;
    if (args.verbosity > 0) PrintFormatted(" [%s]", stack->GetName());
    scene_.GetScene()->SetCurrentAnimationStack(stack);
    animation.duration = std::max(animation.duration, StackSeconds(*stack, args.frameRate));
    AddTracksToAnimation(args, stack, animation, bones);
  }
  return true;
}

void ExportAnimation::AddTracksToAnimation(const ConversionArguments& args, FbxAnimStack* stack,
                                           CalCoreAnimation& animation, const BoneNameMap& bones) {
  for (int i = 0; i < stack->GetLayerCount(); ++i) {
    AddTracksFromLayer(args, scene_.GetRootNode(), stack->GetLayer(i), animation, bones);
  }
}

void ExportAnimation::AddTracksFromLayer(const ConversionArguments& args, FbxNode* node,
                                         FbxAnimLayer* layer, CalCoreAnimation& animation,
                                         const BoneNameMap& bones) {
  for (const NodeChannels& channels : Channels().Of(layer).Below(node)) {
    AddTracksFromChannels(args, channels, animation, bones);
  }
}

void ExportAnimation::AddTracksFromChannels(const ConversionArguments& args,
                                            const NodeChannels& channels,
                                            CalCoreAnimation& animation, const BoneNameMap& bones) {
  const FbxNode& node = *channels.node;
  if (std::all_of(channels.transform.begin(), channels.transform.end(), IsScaling)) return;
  if (args.verbosity > 0) PrintFormatted("\n%s", node.GetName());
  const std::vector<FbxTime> times = KeyTimes(channels);
  const Bone* bone = bones.Find(&node);
  if (bone == nullptr || times.empty()) return;
  if (args.verbosity > 0) {
    PrintFormatted("%s %zu key frames ", BuildRootNodeName(&node, nullptr).c_str(), times.size());
  }
  const double factor =
      node.EvaluateGlobalTransform().GetS()[0] * static_cast<double>(args.scaleFactor);
  std::vector<CalCoreKeyframe> keyframes;
  for (const FbxTime time : times) {
    const FbxAMatrix matrix = node.EvaluateLocalTransform(time);
    FbxVector4 t = matrix.GetT();
    for (size_t i = 0; i < 3; ++i) t[i] *= factor;
    const FbxQuaternion q = matrix.GetQ();
    const auto narrow = [](double value) { return static_cast<float>(value); };
    keyframes.push_back({FrameRateSeconds(time, args.frameRate),
                         {narrow(q[0]), narrow(q[1]), narrow(q[2]), narrow(q[3])},
                         {narrow(t[0]), narrow(t[1]), narrow(t[2])}});
    if (args.verbosity > 1) PrintKeyframe(args.verbosity, time, t, q);
  }
  animation.tracks.emplace_back(bone->id, keyframes);
}

void exportASingleAutomationFile(FbxWrapper& scene, const std::string& name,
                                 ConversionArguments& args, zevoMagicStops stops) {
  LOG_INFO(args.toString());
  if (args.outputFilename.empty()) {
    args.outputFilename = OutputPath(args, name, kAnimKind);
  }
  args.exportObjectName = name;
  ExportAnimation(scene, args).Export(args, stops);
}

// A morph animation, and the question whether a stack has one. Both take curves with two keys,
// where the visitors ask for three.

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

// The comparison of an exported animation with the scene that it came from.

bool ExportAnimation::Compare(const ConversionArguments& args, const CalCoreAnimation& animation) {
  const FbxNode* root = GetSkeletonRoot(&scene_, args).node;
  if (root == nullptr) return false;
  const NodeSpan skeleton = BuildSkeleton(&scene_, root, args);
  constexpr int kSteps = 120;
  for (int i = 0; i < kSteps; ++i) {
    const float seconds = static_cast<float>(i) * args.frameRate;
    for (size_t bone = 0; bone < skeleton.size(); ++bone) {
      const CalCoreTrack* track = animation.getCoreTrack(static_cast<int>(bone));
      if (track != nullptr) CompareBone(bone, *skeleton[bone], *track, seconds);
    }
  }
  return true;
}

// Questions about which nodes a stack animates.

bool ExportAnimation::IsAnimationOnSkeleton(FbxAnimStack* stack, FbxNode* node,
                                            const std::set<std::string>& boneNames) {
  for (int i = 0; i < stack->GetLayerCount(); ++i) {
    if (IsAnimationOnNode(stack, stack->GetLayer(i), node, boneNames)) return true;
  }
  return false;
}

bool ExportAnimation::IsAnimationOnNode(FbxAnimStack* stack, FbxAnimLayer* layer, FbxNode* node,
                                        const std::set<std::string>& boneNames) {
  for (const NodeChannels& channels : Channels().Of(layer).Below(node)) {
    const bool moves =
        std::any_of(channels.transform.begin(), channels.transform.end(),
                    [](const ChannelCurve& curve) { return curve.channel->front() != 'S'; });
    if (!moves || !boneNames.contains(channels.node->Name())) continue;
    PrintFormatted("found skeletal animation in stack %s on node %s\n", stack->GetName(),
                   channels.node->GetName());
    return true;
  }
  return false;
}

std::shared_ptr<std::vector<FbxNode*>> ExportAnimation::GetMorphNodes(FbxNode* node,
                                                                      FbxAnimStack* stack) {
  auto nodes = std::make_shared<std::vector<FbxNode*>>();
  for (int i = 0; i < stack->GetLayerCount(); ++i) {
    GetMorphInLayer(stack->GetLayer(i), node, *nodes);
  }
  return nodes;
}

void ExportAnimation::GetMorphInLayer(FbxAnimLayer* layer, FbxNode* node,
                                      std::vector<FbxNode*>& nodes) {
  const NodeSpan morphed = Channels().Of(layer).MorphedBelow(node);
  nodes.insert(nodes.end(), morphed.begin(), morphed.end());
}

std::vector<std::string> ExportAnimation::GetMorphChannelName(FbxAnimLayer* layer, FbxNode* node) {
  const LayerChannels& channels = Channels().Of(layer);
  const NodeSpan morphed = channels.MorphedBelow(node);
  if (morphed.empty()) return {};
  return HasBlendShapeMorph(channels.Of(morphed.front()).front());
}

std::vector<std::string> ExportAnimation::GetMorphChannelName(FbxNode* node, FbxAnimStack* stack) {
  for (int i = 0; i < stack->GetLayerCount(); ++i) {
    std::vector<std::string> names = GetMorphChannelName(stack->GetLayer(i), node);
    if (!names.empty()) return names;
  }
  return {};
}
