#include "converter/scene/group_visitors.h"

#include <utility>

#include "converter/base/names.h"
#include "converter/scene/node_paths.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"

MeshCollectorVisitor::MeshCollectorVisitor(const Candidates& candidates, std::string firstGroupName)
    : groupName(std::move(firstGroupName)), candidates_(candidates) {}

bool MeshCollectorVisitor::VisitNode(FbxNode* node) {
  if (groupName.empty()) {
    groupName = node->Name();
  } else if (groupName == kRootNodeName) {
    groupName.clear();
  }
  if (node->GetMesh() == nullptr) return false;
  const auto found = candidates_.find(BuildRootNodeName(node, nullptr));
  if (found != candidates_.end()) meshes.push_back(found->second);
  return false;
}

GroupFinderVisitor::GroupFinderVisitor(const std::vector<MeshHolder_*>& holders) {
  for (MeshHolder_* holder : holders) candidates_.emplace(holder->path, holder);
}

bool GroupFinderVisitor::VisitNode(FbxNode* node) {
  if (!isGroup(node)) return false;
  MeshCollectorVisitor collector(candidates_, std::string(kRootNodeName));
  WalkNodes(node, collector);
  if (!collector.meshes.empty()) {
    std::string key = node->Name();
    if (!collector.groupName.empty()) key.append("-").append(collector.groupName);
    std::vector<MeshHolder_*>& group = groups[key];
    group.insert(group.end(), collector.meshes.begin(), collector.meshes.end());
  }
  return true;
}

bool GroupFinderVisitor::isGroup(FbxNode* node) const {
  const std::string name = ToLower(node->Name());
  for (const char* tag : {"group", "component", "instance"}) {
    if (name.find(tag) != std::string::npos) return true;
  }
  return false;
}

bool ExtremeGroupFinderVisitor::isGroup(FbxNode* node) const {
  const FbxNode* parent = node->GetParent();
  const FbxNode* grandparent = parent == nullptr ? nullptr : parent->GetParent();
  return grandparent != nullptr && grandparent->Name() == kRootNodeName;
}
