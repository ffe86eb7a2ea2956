// Which skeleton a command means, and how its bones are numbered.
#pragma once

#include <string>
#include <vector>

#include "converter/base/conversion_arguments.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/skeleton/bone_name_map.h"

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
