// Node paths: the names of the nodes from the top down, joined by "/". Names stand as they are, so
// a name that holds "/" can't be found again by its path. The scene's root is "RootNode".
#pragma once

#include <string>
#include <string_view>

class FbxNode;

inline constexpr std::string_view kRootNodeName = "RootNode";

// The path of `node` from `stopAt` down, both included, with `suffix` behind it; from the scene's
// root when `stopAt` is null or no ancestor.
std::string BuildNodeName(std::string_view suffix, const FbxNode* node, const FbxNode* stopAt);
std::string BuildRootNodeName(const FbxNode* node, const FbxNode* stopAt);

// The type number of the node's attribute; that of a null node, 1, for a node without attribute.
int GetAttributeType(const FbxNode* node);
