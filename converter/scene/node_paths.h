// Node paths: the names of the nodes from the top down, joined by "/". Names stand as they are, so
// a name that holds "/" can't be found again by its path. The scene's root is "RootNode".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class FbxNode;

inline constexpr std::string_view kRootNodeName = "RootNode";

// The path of `node` from `stopAt` down, both included, with `suffix` behind it; from the scene's
// root when `stopAt` is null or no ancestor.
std::string BuildNodeName(std::string_view suffix, const FbxNode* node, const FbxNode* stopAt);
std::string BuildRootNodeName(const FbxNode* node, const FbxNode* stopAt);

// The type number of the node's attribute; that of a null node, 1, for a node without attribute.
int GetAttributeType(const FbxNode* node);

// Finds, for many nodes of a scene, what a search by their path finds: the first node in walk order
// that has it. Names must not change while an index is in use; a single search is cheaper through
// FbxWrapper::GetNodeByPath.
class PathIndex {
 public:
  // Of the tree below `root`.
  explicit PathIndex(FbxNode* root);

  // Null for a node whose path can't be searched for, since a name on it holds "/", and for one
  // that isn't in the tree.
  FbxNode* FirstWithPathOf(const FbxNode* node) const;

 private:
  // A path as the node that was the first to have the path above it, and the last name.
  struct Key {
    const FbxNode* parent;
    std::string_view name;
    bool operator==(const Key&) const = default;
  };
  struct KeyHash {
    size_t operator()(const Key& key) const {
      return std::hash<std::string_view>()(key.name) * 31 + std::hash<const void*>()(key.parent);
    }
  };

  std::unordered_map<const FbxNode*, FbxNode*> firsts_;
};
