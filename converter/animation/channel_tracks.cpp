// The older route to a skeletal animation: stack by stack, a track for each layer, without axis
// conversion, in seconds by the command's frame rate.
#include <algorithm>
#include <array>

#include "cal3d/io/saver.h"
#include "converter/animation/export_animation.h"
#include "converter/base/log.h"
#include "converter/base/output.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/scene/node_paths.h"
#include "converter/scene/scene_channels.h"
#include "converter/skeleton/skeleton_roots.h"
#include "converter/space/frames.h"
#include "fbx/anim/fbx_anim_curve.h"
#include "fbx/anim/fbx_anim_stack.h"
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

}  // namespace

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
