// Writes animations of a list to files, by the visitors.
#include <unordered_set>

#include "cal3d/io/file_kinds.h"
#include "cal3d/io/saver.h"
#include "converter/animation/export_animation.h"
#include "converter/animation/key_framers.h"
#include "converter/base/names.h"
#include "converter/base/output.h"
#include "converter/base/records.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/scene/node_paths.h"
#include "converter/skeleton/skeleton_roots.h"
#include "fbx/scene/fbx_node.h"

namespace {

void PrintBones(const std::vector<NodeSpan>& skeletons, const std::string& rootPath,
                const BoneNameMap& bones) {
  for (const NodeSpan& skeleton : skeletons) {
    if (BuildRootNodeName(skeleton.front(), nullptr) != rootPath) continue;
    for (size_t i = 0; i < skeleton.size(); ++i) {
      const Bone* bone = bones.Find(skeleton[i]);
      PrintFormatted("%s %zu %d\n", skeleton[i]->GetName(), i, bone == nullptr ? 0 : bone->id);
    }
    return;
  }
}

// These write nothing and return false for an animation without tracks.
bool SaveSkeletal(const ConversionArguments& args, SceneChannels& channels,
                  const AnimationInfoHolder& holder, const BoneNameMap& bones,
                  const std::string& path) {
  AnimationCurveVisitorAnimKeyFramer visitor(bones, holder.animStack);
  DisplayAnimation(channels, holder.animStack, holder.rootNode, visitor);
  const CalCoreAnimation animation = visitor.GetAnimation(args);
  return !animation.tracks.empty() && CalSaver::saveCoreAnimation(path, &animation);
}

bool SaveMorph(SceneChannels& channels, const AnimationInfoHolder& holder,
               const std::string& path) {
  AnimationCurveVisitorMorphKeyFramer visitor;
  DisplayAnimation(channels, holder.animStack, holder.rootNode, visitor);
  const CalCoreMorphAnimation& animation = visitor.coreMorphAnimation;
  return !animation.tracks.empty() && CalSaver::saveCoreMorphAnimation(path, &animation);
}

}  // namespace

void ExportAnimation::ExportAnimationsFromList(const AnimationMap& animations,
                                               const std::vector<std::string>& names) {
  scene_.UseTimeSettings();
  const CommandSkeleton skeleton = GetCommandSkeleton(&scene_, args_);
  const BoneNameMap bones = BuildBoneNameMap(skeleton.nodes);
  if (args_.verbosity >= 2) {
    PrintBones(scene_.BuildSkeletonList(args_.treatAsRoom), skeleton.rootPath, bones);
  }
  const auto list = animations.find(skeleton.rootPath);
  if (list == animations.end()) return;
  const std::unordered_set<std::string> selected(names.begin(), names.end());
  for (const AnimationInfoHolder& holder : list->second) {
    if (!selected.contains(holder.fileName)) continue;
    const CalFileKind& kind = holder.isMorph ? kMorphAnimationFile : kAnimationFile;
    const std::string path = prependPathToFileName(
        args_.directoryForOutputFiles, urlencode(holder.fileName).append(kind.extension));
    const bool saved = holder.isMorph ? SaveMorph(Channels(), holder, path)
                                      : SaveSkeletal(args_, Channels(), holder, bones, path);
    if (saved) {
      AddOutput(holder.isMorph ? "MORPHANIMS" : "ANIMATION", holder.fileName, false);
      AddOutput("FILENAME", path, true);
    } else {
      AddError("Failed to create file " + path + " for ANIMATION " + holder.fileName);
    }
  }
}
