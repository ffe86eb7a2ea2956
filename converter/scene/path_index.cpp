#include "converter/scene/path_index.h"

#include "converter/scene/node_visitors.h"
#include "fbx/scene/fbx_node.h"

PathIndex::PathIndex(FbxNode* root) {
  std::unordered_map<Key, FbxNode*, KeyHash> firstsByPath;
  const NodeOrder order(root);
  for (FbxNode* node : order.All()) {
    const std::string_view name = node->Name();
    if (name.find('/') != std::string_view::npos) continue;
    const FbxNode* parent = nullptr;
    if (node != root) {
      // Parents stand first; one that can't be found hides what is below it.
      parent = FirstWithPathOf(node->GetParent());
      if (parent == nullptr) continue;
    }
    firsts_[node] = firstsByPath.try_emplace({parent, name}, node).first->second;
  }
}

FbxNode* PathIndex::FirstWithPathOf(const FbxNode* node) const {
  const auto at = firsts_.find(node);
  return at == firsts_.end() ? nullptr : at->second;
}
