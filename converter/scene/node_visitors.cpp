#include "converter/scene/node_visitors.h"

#include <algorithm>
#include <utility>

#include "converter/base/names.h"
#include "converter/scene/node_paths.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"

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
  const auto [lowest, highest] = std::minmax_element(
      nodes_.begin(), nodes_.end(),
      [](const FbxNode* a, const FbxNode* b) { return a->GetUniqueID() < b->GetUniqueID(); });
  if (nodes_.empty()) return;
  lowestId_ = (*lowest)->GetUniqueID();
  indices_.assign((*highest)->GetUniqueID() - lowestId_ + 1, -1);
  for (size_t i = 0; i < nodes_.size(); ++i) {
    indices_[nodes_[i]->GetUniqueID() - lowestId_] = static_cast<int>(i);
  }
  for (size_t i = nodes_.size(); i-- > 1;) {
    subtreeSizes_[static_cast<size_t>(Index(nodes_[i]->GetParent()))] += subtreeSizes_[i];
  }
}

NodeSpan NodeOrder::Subtree(const FbxNode* node) const {
  const int index = Index(node);
  if (index < 0) return {};
  const auto first = static_cast<size_t>(index);
  return NodeSpan(nodes_).subspan(first, subtreeSizes_[first]);
}

int NodeOrder::Index(const FbxNode* node) const {
  if (node == nullptr) return -1;
  // Below the lowest, the difference wraps to a number past the end.
  const uint64_t place = node->GetUniqueID() - lowestId_;
  return place < indices_.size() ? indices_[place] : -1;
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

SkeletonNesting::SkeletonNesting(const NodeOrder& order, std::span<const NodeSpan> skeletons)
    : order_(order), outer_(skeletons.size(), kNone), lastAsked_(skeletons.size(), 0) {
  const int nodeCount = static_cast<int>(order.All().size());
  innermost_.reserve(order.All().size());
  const auto begin = [&](size_t skeleton) { return order.Index(skeletons[skeleton].front()); };
  struct Open {
    int skeleton;
    int end;  // the place behind its last node
  };
  std::vector<Open> open;
  const auto top = [&] { return open.empty() ? kNone : open.back().skeleton; };
  size_t next = 0;
  for (int node = 0; node < nodeCount; ++node) {
    while (!open.empty() && open.back().end == node) open.pop_back();
    if (next < skeletons.size() && begin(next) == node) {
      outer_[next] = top();
      open.push_back({static_cast<int>(next), node + static_cast<int>(skeletons[next].size())});
      ++next;
    }
    innermost_.push_back(top());
  }
}

std::vector<int> SkeletonNesting::Around(const std::vector<const FbxNode*>& nodes) {
  ++asked_;
  std::vector<int> around;
  for (const FbxNode* node : nodes) {
    const int place = order_.Index(node);
    int skeleton = place < 0 ? kNone : innermost_[static_cast<size_t>(place)];
    while (skeleton != kNone && lastAsked_[static_cast<size_t>(skeleton)] != asked_) {
      lastAsked_[static_cast<size_t>(skeleton)] = asked_;
      around.push_back(skeleton);
      skeleton = outer_[static_cast<size_t>(skeleton)];
    }
  }
  return around;
}
