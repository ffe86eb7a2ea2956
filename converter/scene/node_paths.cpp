#include "converter/scene/node_paths.h"

#include <vector>

#include "converter/scene/node_visitors.h"
#include "fbx/scene/fbx_node.h"

std::string BuildNodeName(std::string_view suffix, const FbxNode* node, const FbxNode* stopAt) {
  std::vector<const FbxNode*> chain;
  size_t length = suffix.size();
  for (const FbxNode* n = node; n != nullptr; n = n->GetParent()) {
    chain.push_back(n);
    length += n->Name().size() + 1;
    if (n == stopAt) break;
  }
  std::string path;
  path.reserve(length);
  for (size_t i = chain.size(); i-- > 0;) {
    path += chain[i]->Name();
    if (i > 0) path += '/';
  }
  return path.append(suffix);
}

std::string BuildRootNodeName(const FbxNode* node, const FbxNode* stopAt) {
  return BuildNodeName({}, node, stopAt);
}

int GetAttributeType(const FbxNode* node) {
  const FbxNodeAttribute* attribute = node == nullptr ? nullptr : node->GetNodeAttribute();
  return attribute == nullptr ? FbxNodeAttribute::eNull : attribute->GetAttributeType();
}

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
