// Which skeleton a command means, and how its bones are numbered.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "converter/base/conversion_arguments.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/scene/node_visitors.h"

struct Bone {
  int id = -1;    // index in the skeleton
  int rank = -1;  // place of the path among those of all bones, byte-wise
};

// The bones of a skeleton by their full node paths. The paths themselves are not held: a deep
// hierarchy would take the square of its depth. What is held is a tree of their components, and two
// nodes have one path exactly when they stand for one entry of it. A name that holds "/" counts as
// several components, since its path reads like theirs.
//
// Names must not change while a map is in use.
class BoneNameMap {
 public:
  BoneNameMap() = default;
  // The indices in `nodes` are the ids; of several nodes with one path the last counts.
  explicit BoneNameMap(NodeSpan nodes);

  // The number of different paths.
  int Count() const { return count_; }
  // The bone that has the full path of the node, or the path; null if none has. The node may be any
  // node of the scene.
  const Bone* Find(const FbxNode* node) const;
  const Bone* Find(std::string_view path) const;

 private:
  struct Component {
    int above;  // the entry
    std::string_view name;
    bool operator==(const Component&) const = default;
  };
  struct ComponentHash {
    size_t operator()(const Component& c) const {
      return std::hash<std::string_view>()(c.name) * 31 + static_cast<size_t>(c.above);
    }
  };

  static constexpr int kTop = 0;  // the entry above all paths
  static constexpr int kNone = -1;

  int Climb(const FbxNode* node, std::vector<const FbxNode*>& chain) const;
  int Enter(const FbxNode* node);
  int FindBelow(int entry, std::string_view path) const;
  const Bone* BoneOf(int entry) const;
  void RankPaths();

  std::vector<Bone> bones_{Bone()};  // by entry; without an id where no bone ends
  std::unordered_map<Component, int, ComponentHash> entries_;
  std::unordered_map<const FbxNode*, int> entryOfNode_;  // of the bones and what is above them
  int count_ = 0;
};

// The first node of each skeleton.
std::vector<FbxNode*> BuildRootList(FbxWrapper* wrapper, const ConversionArguments& args);
// The nodes of the skeleton that begins at `root`; empty if none does.
NodeSpan BuildSkeleton(FbxWrapper* wrapper, const FbxNode* root, const ConversionArguments& args);
// From full node path to the index in `nodes`; of several nodes with one path the last.
BoneNameMap BuildBoneNameMap(NodeSpan nodes);

struct SkeletonRoot {
  FbxNode* node = nullptr;
  std::string path;  // where the command says "find", what was found
};
// The node that `skeletonRootPath` names. The word "find" is resolved here, and nowhere else: it
// becomes the path of the scene's only skeleton, or of the scene's root when it has none. No node,
// after a record that says why, when there is more than one; none without a record for a path that
// names no node. The path then is the command's.
SkeletonRoot GetSkeletonRoot(FbxWrapper* wrapper, const ConversionArguments& args);

// The skeleton that begins at that root.
struct CommandSkeleton {
  std::string rootPath;  // as in SkeletonRoot
  std::string name;      // the path of its first node; "RootNode" if no skeleton begins there
  NodeSpan nodes;        // empty then
};
// Without looking for a root if the command has none.
CommandSkeleton GetCommandSkeleton(FbxWrapper* wrapper, const ConversionArguments& args);
