#include "converter/animation/animation_trace.h"

#include "converter/animation/curve_visitors.h"
#include "converter/base/records.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/scene/node_paths.h"
#include "converter/scene/scene_queries.h"
#include "converter/skeleton/skeleton_roots.h"
#include "fbx/anim/fbx_animation.h"
#include "fbx/scene/fbx_node.h"

void TraceListedAnimation(const ConversionArguments& args, SceneChannels& channels,
                          const AnimationInfoHolder& holder) {
  if (args.verbosity < 1) return;
  AddOutput(holder.isMorph ? "MORPH: " + holder.fileName : "\t", holder.toString(), true);
  if (args.verbosity < 3) return;
  const ChannelRuns curves = ChannelsBelow(channels, holder.animStack, holder.rootNode);
  AddOutput("DATA", CurveText(curves, true), true);
}

void TraceMorphLists(const ConversionArguments& args, const FbxWrapper& scene,
                     const AnimationMap& morph) {
  if (args.verbosity < 2) return;
  for (const auto& [key, holders] : morph) {
    Print(key);
    const FbxNode* node = scene.GetNodeByPath(key);
    if (const FbxMesh* mesh = node == nullptr ? nullptr : node->GetMesh()) {
      for (const std::string& target : getMorphTargetsOnMesh(mesh)) {
        Print(" ");
        Print(target);
      }
    }
    Print("\n");
    for (const AnimationInfoHolder& holder : holders) {
      Print(" ");
      Print(holder.toString());
      Print("\n");
    }
  }
}

void TraceBones(const ConversionArguments& args, const std::vector<NodeSpan>& skeletons,
                const std::string& rootPath, const BoneNameMap& bones) {
  if (args.verbosity < 2) return;
  for (const NodeSpan& skeleton : skeletons) {
    if (BuildRootNodeName(skeleton.front(), nullptr) != rootPath) continue;
    for (size_t i = 0; i < skeleton.size(); ++i) {
      const Bone* bone = bones.Find(skeleton[i]);
      PrintFormatted("%s %zu %d\n", skeleton[i]->GetName(), i, bone == nullptr ? 0 : bone->id);
    }
    return;
  }
}

void TraceCandidate(const ConversionArguments& args, SceneChannels& channels,
                    const AnimationInfoHolder& holder, const ChannelRuns& curves) {
  if (args.verbosity < 2) return;
  Print(holder.toString() + "\n");
  if (args.verbosity < 3) return;
  Print(CurveText(curves, !holder.isMorph));
  Print("DATA:" + holder.dataString(channels));
}

void TraceStackCount(const ConversionArguments& args, size_t count) {
  if (args.verbosity >= 3) PrintFormatted("\nAnimation Stacks: %zu\n", count);
}

void TraceMorphFound(const ConversionArguments& args, const FbxAnimStack& stack,
                     const FbxNode& node, const std::vector<std::string>& targets) {
  if (args.verbosity < 3) return;
  PrintFormatted("found morph animation in stack %s on node %s; target:", stack.GetName(),
                 node.GetName());
  for (const std::string& target : targets) Print(" " + target);
  Print("\n");
}
