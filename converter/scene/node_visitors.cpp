#include "converter/scene/node_visitors.h"

#include <utility>

#include "converter/base/names.h"
#include "converter/scene/node_paths.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_node_attribute.h"

void WalkNodes(FbxNode* node, NodeVisitorBase& visitor) {
  if (node == nullptr || visitor.VisitNode(node)) return;
  // A stack of our own: the file decides how deep the tree is.
  std::vector<std::pair<FbxNode*, int>> path{{node, 0}};
  while (!path.empty()) {
    auto& [parent, next] = path.back();
    if (next >= parent->GetChildCount()) {
      path.pop_back();
      continue;
    }
    FbxNode* child = parent->GetChild(next++);
    if (child != nullptr && !visitor.VisitNode(child)) path.emplace_back(child, 0);
  }
}

bool SkeletonBuilderVisitor::VisitNode(FbxNode* node) {
  nodes.push_back(node);
  return false;
}

NodeOrder::NodeOrder(FbxNode* root) {
  SkeletonBuilderVisitor builder;
  WalkNodes(root, builder);
  nodes_ = std::move(builder.nodes);
  subtreeSizes_.assign(nodes_.size(), 1);
  indices_.reserve(nodes_.size());
  for (size_t i = 0; i < nodes_.size(); ++i) indices_.emplace(nodes_[i], static_cast<int>(i));
  for (size_t i = nodes_.size(); i-- > 1;) {
    subtreeSizes_[static_cast<size_t>(indices_.at(nodes_[i]->GetParent()))] += subtreeSizes_[i];
  }
}

NodeSpan NodeOrder::Subtree(const FbxNode* node) const {
  const int index = Index(node);
  if (index < 0) return {};
  const auto first = static_cast<size_t>(index);
  return NodeSpan(nodes_).subspan(first, subtreeSizes_[first]);
}

int NodeOrder::Index(const FbxNode* node) const {
  const auto found = indices_.find(node);
  return found == indices_.end() ? -1 : found->second;
}

bool SkeletonRootFinderVisitor::VisitNode(FbxNode* node) {
  const FbxNode* parent = node->GetParent();
  const bool topmostBone = parent != nullptr &&
                           GetAttributeType(parent) != FbxNodeAttribute::eSkeleton &&
                           GetAttributeType(node) == FbxNodeAttribute::eSkeleton;
  const auto namedRoot = [&] {
    const std::string name = ToLower(node->Name());
    // The path is "RootNode" for the scene's root alone: every other path has a "/" in it.
    if (name.find("root") != std::string::npos &&
        (parent != nullptr || node->Name() != kRootNodeName)) {
      return true;
    }
    return name.find("skeleton.room") != std::string::npos;
  };
  if (topmostBone || namedRoot()) skeletons.push_back(order_.Subtree(node));
  return false;
}

RootNodeSkeletonBuilderVisitor::RootNodeSkeletonBuilderVisitor(const std::vector<NodeSpan>& avoid) {
  for (const NodeSpan& skeleton : avoid) avoidedRoots_.insert(skeleton.front());
}

bool RootNodeSkeletonBuilderVisitor::VisitNode(FbxNode* node) {
  if (avoidedRoots_.contains(node)) return true;
  nodes.push_back(node);
  if (GetAttributeType(node) == FbxNodeAttribute::eMesh) sawMesh = true;
  return false;
}
