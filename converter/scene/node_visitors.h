// Tree searches. All of them are visitors driven by one walk: depth first, parents before children,
// children in index order. These decide what a skeleton is; the visitors that decide what a group
// of meshes is stand in group_visitors.h.
#pragma once

#include <span>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class FbxNode;

// Nodes in walk order. The wrapper of the scene owns what is behind it.
using NodeSpan = std::span<FbxNode* const>;

class NodeVisitorBase {
 public:
  virtual ~NodeVisitorBase() = default;
  // True: don't descend below this node. The walk goes on with its siblings.
  virtual bool VisitNode(FbxNode* node) = 0;
};

// Walks `node` and what is below it; a null node is skipped. Children that a visitor adds below the
// node it visits are visited too.
void WalkNodes(FbxNode* node, NodeVisitorBase& visitor);

// Collects every node.
class SkeletonBuilderVisitor : public NodeVisitorBase {
 public:
  bool VisitNode(FbxNode* node) override;
  std::vector<FbxNode*> nodes;
};

// The nodes of a tree in walk order, in which every subtree is one run. Skeletons are such runs, so
// that skeletons inside skeletons, which rigs do have, cost nothing to hold.
class NodeOrder {
 public:
  // Walks the tree below `root`, which may be null.
  explicit NodeOrder(FbxNode* root);

  NodeSpan All() const { return nodes_; }
  // The node and everything below it; empty for a node that isn't in the tree.
  NodeSpan Subtree(const FbxNode* node) const;
  // The node's place in the order, -1 if it isn't in the tree.
  int Index(const FbxNode* node) const;

 private:
  std::vector<FbxNode*> nodes_;
  std::vector<size_t> subtreeSizes_;
  std::unordered_map<const FbxNode*, int> indices_;
};

// Finds where skeletons begin: at the topmost skeleton node of a branch, and at every node whose
// name says so, also inside a skeleton found before.
class SkeletonRootFinderVisitor : public NodeVisitorBase {
 public:
  explicit SkeletonRootFinderVisitor(const NodeOrder& order) : order_(order) {}
  bool VisitNode(FbxNode* node) override;
  std::vector<NodeSpan> skeletons;

 private:
  const NodeOrder& order_;
};

// Collects what is left beside the skeletons, and whether there is a mesh among it.
class RootNodeSkeletonBuilderVisitor : public NodeVisitorBase {
 public:
  explicit RootNodeSkeletonBuilderVisitor(const std::vector<NodeSpan>& avoid);
  bool VisitNode(FbxNode* node) override;
  std::vector<FbxNode*> nodes;
  bool sawMesh = false;

 private:
  std::unordered_set<const FbxNode*> avoidedRoots_;
};
