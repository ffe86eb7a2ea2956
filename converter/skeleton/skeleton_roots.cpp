#include "converter/skeleton/skeleton_roots.h"

#include <cstdio>

#include "converter/base/records.h"
#include "converter/scene/node_paths.h"

std::vector<FbxNode*> BuildRootList(FbxWrapper* wrapper, const ConversionArguments& args) {
  std::vector<FbxNode*> roots;
  for (const NodeSpan& skeleton : wrapper->BuildSkeletonList(args.treatAsRoom)) {
    roots.push_back(skeleton.front());
  }
  return roots;
}

NodeSpan BuildSkeleton(FbxWrapper* wrapper, const FbxNode* root, const ConversionArguments& args) {
  for (const NodeSpan& skeleton : wrapper->BuildSkeletonList(args.treatAsRoom)) {
    if (skeleton.front() == root) return skeleton;
  }
  return {};
}

BoneNameMap BuildBoneNameMap(NodeSpan nodes) { return BoneNameMap(nodes); }

FbxNode* GetSkeletonRoot(FbxWrapper* wrapper, ConversionArguments& args) {
  if (FbxNode* node = wrapper->GetNodeByPath(args.skeletonRootPath)) return node;
  if (args.skeletonRootPath != "find") return nullptr;
  const std::vector<FbxNode*> roots = BuildRootList(wrapper, args);
  if (roots.size() > 1) {
    AddError("You must choose a skeleton root:\n");
    return nullptr;
  }
  if (roots.empty()) {
    AddWarning("No skeleton roots found in FBX, using RootNode");
    args.skeletonRootPath = kRootNodeName;
    return wrapper->GetNodeByPath(args.skeletonRootPath);
  }
  args.skeletonRootPath = BuildRootNodeName(roots.front(), nullptr);
  AddWarning("Using node " + args.skeletonRootPath + " as skeleton root");
  FbxNode* node = wrapper->GetNodeByPath(args.skeletonRootPath);
  if (node == nullptr) std::printf("Node %s not found in FBX\n", args.skeletonRootPath.c_str());
  return node;
}
