// What in a scene is an animation: which stacks move which skeletons and morph which meshes, with
// duplicates found and names given.
#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "converter/animation/animation_trace.h"
#include "converter/animation/curve_visitors.h"
#include "converter/animation/export_animation.h"
#include "converter/base/log.h"
#include "converter/base/records.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/scene/node_paths.h"
#include "converter/scene/scene_channels.h"
#include "converter/scene/scene_queries.h"
#include "converter/skeleton/skeleton_roots.h"
#include "fbx/anim/fbx_animation.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"

namespace {

// Animations in the order of the texts of their curves.
struct CurveTextLess {
  bool withNodes;
  bool operator()(const ChannelRuns& a, const ChannelRuns& b) const {
    return CompareCurveTexts(a, b, withNodes) < 0;
  }
};
using HoldersByText = std::map<ChannelRuns, AnimationInfoHolder, CurveTextLess>;

// Whether a channel of the animation bears the name of one of the mesh's morph targets.
bool DrivesTargetOf(const FbxMesh* mesh, const AnimationInfoHolder& holder) {
  const std::unordered_set<std::string_view> channels(holder.morphChannels.begin(),
                                                      holder.morphChannels.end());
  const std::vector<std::string> targets = getMorphTargetsOnMesh(mesh);
  return std::any_of(targets.begin(), targets.end(),
                     [&channels](const std::string& target) { return channels.contains(target); });
}

// Finds the skeletons that have meshes with morph targets of an animation's channels.
class TargetIndex {
 public:
  explicit TargetIndex(const MeshesBySkeleton& meshesOnSkeletons) {
    for (const auto& [path, meshes] : meshesOnSkeletons) {
      for (const MeshHolder_* holder : meshes) {
        for (std::string& target : getMorphTargetsOnMesh(holder->mesh)) {
          std::vector<const std::string*>& skeletons = skeletons_[std::move(target)];
          if (skeletons.empty() || skeletons.back() != &path) skeletons.push_back(&path);
        }
      }
    }
  }

  // Their paths, each once.
  std::unordered_set<const std::string*> SkeletonsOf(const AnimationInfoHolder& holder) const {
    std::unordered_set<const std::string*> found;
    for (const std::string& channel : holder.morphChannels) {
      const auto skeletons = skeletons_.find(channel);
      if (skeletons == skeletons_.end()) continue;
      found.insert(skeletons->second.begin(), skeletons->second.end());
    }
    return found;
  }

 private:
  std::unordered_map<std::string, std::vector<const std::string*>> skeletons_;  // by target
};

// The first animation of a name keeps it, further ones get "_1", "_2" ... within each list. A stack
// may really be called "walk_1" beside two called "walk"; counting on until the name is free gives
// each a file of its own.
void NameAnimations(AnimationMap& animations, bool encodeNames) {
  for (auto& [key, holders] : animations) {
    std::unordered_map<std::string, int> counts;
    std::unordered_set<std::string> taken;  // as files have them
    for (AnimationInfoHolder& holder : holders) {
      if (holder.nodes.empty()) continue;
      const std::string plain = holder.buildFileName();
      int& count = counts[plain];
      std::string name = plain;
      if (count > 0) name.append("_").append(std::to_string(count));
      ++count;
      while (!taken.insert(urlencode(name)).second) {
        name = plain + "_" + std::to_string(count++);
      }
      holder.fileName = encodeName(encodeNames, name);
    }
  }
}

}  // namespace

ExportAnimation::ExportAnimation(FbxWrapper& scene, const ConversionArguments& args)
    : scene_(scene), args_(args) {
  LOG_INFO(args.toString());
}

void ExportAnimation::BuildAnimLists(AnimationMap& skeletal, AnimationMap& morph) {
  scene_.UseTimeSettings();
  if (scene_.BuildSkeletonList(args_.treatAsRoom).empty()) return;
  const std::vector<FbxAnimStack*> stacks = scene_.GetAnimList();
  TraceStackCount(args_, stacks.size());
  if (stacks.empty()) return;
  HoldersByRoot byRoot = FindByRoot(stacks);
  Analyze(byRoot, skeletal, morph);
  NameAnimations(skeletal, args_.encodeNames);
  TraceMorphLists(args_, scene_, morph);
  NameAnimations(morph, args_.encodeNames);
}

ExportAnimation::HoldersByRoot ExportAnimation::FindByRoot(
    const std::vector<FbxAnimStack*>& stacks) {
  const NodeSpan last = scene_.BuildSkeletonList(args_.treatAsRoom).back();
  const std::unordered_set<const FbxNode*> lastSkeleton(last.begin(), last.end());
  const auto inLastSkeleton = [&lastSkeleton](NodeSpan run) {
    return std::any_of(run.begin(), run.end(), [&lastSkeleton](const FbxNode* node) {
      return lastSkeleton.contains(node);
    });
  };
  std::vector<FbxNode*> roots = BuildRootList(&scene_, args_);
  std::erase_if(
      roots, [](const FbxNode* root) { return BuildRootNodeName(root, nullptr) == kRootNodeName; });
  const std::vector<MeshHolder_*> meshes = scene_.GetMeshList();

  HoldersByRoot byRoot;
  const auto add = [&byRoot](AnimationInfoHolder& holder) {
    byRoot[BuildRootNodeName(holder.rootNode, nullptr)].push_back(std::move(holder));
  };
  for (FbxAnimStack* stack : stacks) {
    bool movesLastRoot = false;
    for (FbxNode* root : roots) {
      AnimationInfoHolder skeletal = std::move(GetAnimatedNodes(root, stack)[0]);
      movesLastRoot = !skeletal.nodes.empty();
      if (movesLastRoot) add(skeletal);
    }
    // Single meshes matter only in a stack that leaves the last skeleton alone, and of the stacks
    // that are left most morph none.
    const std::vector<const LayerChannels*> layers = scene_.Channels().Of(stack);
    const bool morphs = std::any_of(layers.begin(), layers.end(), [&](const LayerChannels* layer) {
      return !layer->MorphedBelow(scene_.GetRootNode()).empty();
    });
    if (morphs && !movesLastRoot) {
      for (const MeshHolder_* mesh : meshes) {
        AnimationInfoHolder morph = std::move(GetAnimatedNodes(mesh->node, stack)[1]);
        if (!morph.nodes.empty() && DrivesTargetOf(mesh->mesh, morph)) add(morph);
      }
    }
    std::vector<AnimationInfoHolder> scene = GetAnimatedNodes(scene_.GetRootNode(), stack);
    if (std::any_of(scene[0].nodes.begin(), scene[0].nodes.end(), inLastSkeleton)) add(scene[0]);
    if (!scene[1].nodes.empty()) add(scene[1]);
  }
  return byRoot;
}

std::vector<AnimationInfoHolder> ExportAnimation::GetAnimatedNodes(FbxNode* node,
                                                                   FbxAnimStack* stack) {
  std::vector<AnimationInfoHolder> holders(2);
  for (AnimationInfoHolder& holder : holders) holder.rootNode = node;
  for (int i = 0; i < stack->GetLayerCount(); ++i) {
    GetAnimationsInLayer(stack, stack->GetLayer(i), node, holders[0], holders[1]);
  }
  for (AnimationInfoHolder& holder : holders) {
    if (holder.nodes.empty()) continue;
    holder.info.Init(node, stack);
    holder.animNames.insert(holder.info.stackName);
  }
  return holders;
}

void ExportAnimation::GetAnimationsInLayer(FbxAnimStack* stack, FbxAnimLayer* layer, FbxNode* node,
                                           AnimationInfoHolder& skeletal,
                                           AnimationInfoHolder& morph) {
  GetSkelAnimationInLayer(stack, layer, node, skeletal);
  GetMorphAnimationInLayer(stack, layer, node, morph);
}

void ExportAnimation::GetSkelAnimationInLayer(FbxAnimStack* stack, FbxAnimLayer* layer,
                                              FbxNode* node, AnimationInfoHolder& holder) {
  const NodeSpan moved = Channels().Of(layer).MovedBelow(node);
  if (moved.empty()) return;
  holder.isMorph = false;
  holder.animStack = stack;
  holder.nodes.push_back(moved);
}

void ExportAnimation::GetMorphAnimationInLayer(FbxAnimStack* stack, FbxAnimLayer* layer,
                                               FbxNode* node, AnimationInfoHolder& holder) {
  const LayerChannels& channels = Channels().Of(layer);
  const NodeSpan morphed = channels.MorphedBelow(node);
  if (morphed.empty()) return;
  std::unordered_set<std::string> known(holder.morphChannels.begin(), holder.morphChannels.end());
  for (const FbxNode* morphedNode : morphed) {
    const std::vector<std::string> names = HasBlendShapeMorph(channels.Of(morphedNode).front());
    TraceMorphFound(args_, *stack, *morphedNode, names);
    if (holder.animStack == nullptr) {
      holder.isMorph = true;
      holder.animStack = stack;
      holder.morphChannels = names;
      known.insert(names.begin(), names.end());
      continue;
    }
    if (holder.animStack != stack) {
      AddWarning("pointers to anim stack are mixed" + holder.animStack->Name() + " " +
                 stack->Name());
    }
    for (const std::string& name : names) {
      if (known.insert(name).second) holder.morphChannels.push_back(name);
    }
  }
  holder.nodes.push_back(morphed);
}

void ExportAnimation::Analyze(HoldersByRoot& byRoot, AnimationMap& skeletal, AnimationMap& morph) {
  SceneChannels& channels = Channels();
  HoldersByText uniqueMorphs(CurveTextLess{false});
  HoldersByText uniqueAnimations(CurveTextLess{true});
  for (auto& [root, holders] : byRoot) {
    HoldersByText entryAnimations(CurveTextLess{true});
    for (AnimationInfoHolder& holder : holders) {
      if (!holder.isMorph || holder.nodes.empty()) continue;
      ChannelRuns curves = ChannelsOfNodes(channels, holder.animStack, holder.nodes);
      TraceCandidate(args_, channels, holder, curves);
      uniqueMorphs.try_emplace(std::move(curves), std::move(holder));
    }
    for (AnimationInfoHolder& holder : holders) {
      if (holder.isMorph || holder.nodes.empty()) continue;
      ChannelRuns curves = ChannelsBelow(channels, holder.animStack, holder.rootNode);
      TraceCandidate(args_, channels, holder, curves);
      const std::string stackName = holder.info.stackName;
      const auto [unique, isNew] = uniqueAnimations.try_emplace(curves, std::move(holder));
      if (!isNew) unique->second.animNames.insert(stackName);
      const auto [entry, isNewHere] =
          entryAnimations.try_emplace(std::move(curves), unique->second);
      if (!isNewHere) entry->second.animNames.insert(stackName);
    }
    std::vector<AnimationInfoHolder>& list = skeletal[root];
    list.clear();
    for (auto& [text, holder] : entryAnimations) list.push_back(std::move(holder));
  }

  std::vector<AnimationInfoHolder> complete;
  for (auto& [text, holder] : uniqueAnimations) complete.push_back(std::move(holder));
  skeletal[kCompleteSkeletalList] = std::move(complete);

  const MeshesBySkeleton meshesOnSkeletons = scene_.BuildMeshesOnSkeletonsList(args_);
  const TargetIndex targets(meshesOnSkeletons);
  complete.clear();
  for (auto& [text, holder] : uniqueMorphs) {
    for (const std::string* skeleton : targets.SkeletonsOf(holder)) {
      morph[*skeleton].push_back(holder);
    }
    complete.push_back(std::move(holder));
  }
  morph[kCompleteMorphList] = std::move(complete);
}

SceneChannels& ExportAnimation::Channels() { return scene_.Channels(); }
