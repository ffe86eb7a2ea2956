// The listing of animations, and their files.
#include "converter/animation/export_animation.h"

#include <set>
#include <string_view>
#include <unordered_set>

#include "cal3d/io/saver.h"
#include "converter/animation/animation_trace.h"
#include "converter/animation/curve_visitors.h"
#include "converter/animation/key_framers.h"
#include "converter/base/complaint.h"
#include "converter/base/names.h"
#include "converter/base/records.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/scene/scene_channels.h"
#include "converter/skeleton/skeleton_roots.h"

namespace {

void ListAnimation(const ConversionArguments& args, SceneChannels& channels,
                   const AnimationInfoHolder& holder) {
  const sAnim& info = holder.info;
  AddAnimOutput(holder.fileName, info.timeMode, info.timeProtocol, info.startFrame, info.endFrame,
                info.durationFrames, info.referenceStartFrame, info.referenceEndFrame,
                info.referenceDurationFrames, holder.isMorph);
  TraceListedAnimation(args, channels, holder);
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

// These write nothing and return false for an animation without tracks; why, is on standard error.
bool SaveSkeletal(const ConversionArguments& args, SceneChannels& channels,
                  const AnimationInfoHolder& holder, const BoneNameMap& bones,
                  const std::string& path) {
  AnimationCurveVisitorAnimKeyFramer visitor(bones, holder.animStack);
  DisplayAnimation(channels, holder.animStack, holder.rootNode, visitor);
  const CalCoreAnimation animation = visitor.GetAnimation(args);
  if (animation.tracks.empty()) {
    Complain("'" + path + "' isn't written: no bone of the skeleton moves in it");
    return false;
  }
  if (CalSaver::saveCoreAnimation(path, &animation)) return true;
  ComplainOfOutput(path);
  return false;
}

bool SaveMorph(SceneChannels& channels, const AnimationInfoHolder& holder,
               const std::string& path) {
  AnimationCurveVisitorMorphKeyFramer visitor;
  DisplayAnimation(channels, holder.animStack, holder.rootNode, visitor);
  const CalCoreMorphAnimation& animation = visitor.coreMorphAnimation;
  if (animation.tracks.empty()) {
    Complain("'" + path + "' isn't written: no morph target moves in it");
    return false;
  }
  if (CalSaver::saveCoreMorphAnimation(path, &animation)) return true;
  ComplainOfOutput(path);
  return false;
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

std::vector<std::string> ExportAnimation::ExportAnimationsFromList(
    const AnimationMap& animations, const std::vector<std::string>& names) {
  scene_.UseTimeSettings();
  const CommandSkeleton skeleton = GetCommandSkeleton(&scene_, args_);
  const BoneNameMap bones = BuildBoneNameMap(skeleton.nodes);
  TraceBones(args_, scene_.BuildSkeletonList(args_.treatAsRoom), skeleton.rootPath, bones);
  const std::unordered_set<std::string_view> selected(names.begin(), names.end());
  std::set<std::string_view> missing(names.begin(), names.end());
  if (const auto list = animations.find(skeleton.rootPath); list != animations.end()) {
    for (const AnimationInfoHolder& holder : list->second) {
      if (!selected.contains(holder.fileName)) continue;
      missing.erase(holder.fileName);
      ExportOne(holder, bones);
    }
  }
  if (skeleton.nodes.empty()) return {};
  return {missing.begin(), missing.end()};
}

void ExportAnimation::ExportOne(const AnimationInfoHolder& holder, const BoneNameMap& bones) {
  const ObjectKind& kind = holder.isMorph ? kMorphAnimKind : kAnimKind;
  const std::string path = OutputPath(args_, holder.fileName, kind);
  const bool saved = holder.isMorph ? SaveMorph(Channels(), holder, path)
                                    : SaveSkeletal(args_, Channels(), holder, bones, path);
  if (saved) {
    AddOutput(kind.label, holder.fileName, false);
    AddOutput("FILENAME", path, true);
  } else {
    AddError("Failed to create file " + path + " for ANIMATION " + holder.fileName);
  }
}
