// Which skeleton a command means, and how its bones are numbered.
#pragma once

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

// The node that `skeletonRootPath` names. With the word "find" the scene's only skeleton, or the
// scene's root when it has none, and the path found is left in `args`. Null, after a record that
// says why, when there is more than one; null without a record for a path that names no node.
FbxNode* GetSkeletonRoot(FbxWrapper* wrapper, ConversionArguments& args);
