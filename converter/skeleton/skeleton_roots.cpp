#include "converter/skeleton/skeleton_roots.h"

#include <utility>

#include "converter/base/complaint.h"
#include "converter/base/output.h"
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

SkeletonRoot GetSkeletonRoot(FbxWrapper* wrapper, const ConversionArguments& args) {
  const std::string& wanted = args.skeletonRootPath;
  if (FbxNode* node = wrapper->GetNodeByPath(wanted)) return {node, wanted};
  if (wanted != "find") return {nullptr, wanted};
  const std::vector<FbxNode*> roots = BuildRootList(wrapper, args);
  if (roots.size() > 1) {
    AddError("You must choose a skeleton root:\n");
    std::vector<std::string> paths;
    for (const FbxNode* root : roots) paths.push_back(BuildRootNodeName(root, nullptr));
    Complain("--root=find finds several skeletons: " + QuotedList(paths));
    return {nullptr, wanted};
  }
  if (roots.empty()) {
    AddWarning("No skeleton roots found in FBX, using RootNode");
    Complain("--root=find finds no skeleton and takes the scene's root");
    return {wrapper->GetNodeByPath(kRootNodeName), std::string(kRootNodeName)};
  }
  const std::string path = BuildRootNodeName(roots.front(), nullptr);
  AddWarning("Using node " + path + " as skeleton root");
  FbxNode* node = wrapper->GetNodeByPath(path);
  if (node == nullptr) PrintFormatted("Node %s not found in FBX\n", path.c_str());
  return {node, path};
}

CommandSkeleton GetCommandSkeleton(FbxWrapper* wrapper, const ConversionArguments& args) {
  CommandSkeleton skeleton{args.skeletonRootPath, std::string(kRootNodeName), {}};
  if (args.skeletonRootPath.empty()) return skeleton;
  SkeletonRoot root = GetSkeletonRoot(wrapper, args);
  skeleton.rootPath = std::move(root.path);
  if (root.node == nullptr) return skeleton;
  skeleton.nodes = BuildSkeleton(wrapper, root.node, args);
  if (!skeleton.nodes.empty()) skeleton.name = BuildRootNodeName(root.node, nullptr);
  return skeleton;
}
