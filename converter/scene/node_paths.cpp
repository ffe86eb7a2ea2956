#include "converter/scene/node_paths.h"

#include <vector>

#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_node_attribute.h"

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
