// Tree searches. All of them are visitors driven by one walk: depth first, parents before children,
// children in index order. They decide what a skeleton is and what a group of meshes.
#pragma once

#include <map>
#include <span>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "converter/scene/mesh_holder.h"

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
  // By the nodes' unique ids, from the lowest in the tree on. Nodes of a tree are mostly made one
  // after the other.
  std::vector<int> indices_;
  uint64_t lowestId_ = 0;
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

// Which skeletons a node lies in. Rigs have skeletons inside skeletons, and a scene may have
// thousands of them, so that asking each one costs far more than the answer is long.
class SkeletonNesting {
 public:
  // Of skeletons that are subtrees of `order`, in walk order.
  SkeletonNesting(const NodeOrder& order, std::span<const NodeSpan> skeletons);

  // The indices of all skeletons that hold any of the nodes, each once, in no order.
  std::vector<int> Around(const std::vector<const FbxNode*>& nodes);

 private:
  static constexpr int kNone = -1;

  const NodeOrder& order_;
  std::vector<int> innermost_;  // by place in the order
  std::vector<int> outer_;      // by skeleton: the next one around it
  std::vector<int> lastAsked_;  // by skeleton: the call of Around that met it last
  int asked_ = 0;
};

// Collects those of the candidate meshes that lie on a tree, and takes down the name of the tree's
// second node.
class MeshCollectorVisitor : public NodeVisitorBase {
 public:
  // From node path to candidate; of several with one path, the first.
  using Candidates = std::unordered_map<std::string, MeshHolder_*>;

  MeshCollectorVisitor(const Candidates& candidates, std::string firstGroupName);
  bool VisitNode(FbxNode* node) override;

  std::vector<MeshHolder_*> meshes;
  // A visit sets an empty name to the node's, and "RootNode" to the empty one.
  std::string groupName;

 private:
  const Candidates& candidates_;
};

// Groups by name: a node whose name says that it is a group, a component or an instance. Groups
// inside a group make no entry of their own.
class GroupFinderVisitor : public NodeVisitorBase {
 public:
  explicit GroupFinderVisitor(const std::vector<MeshHolder_*>& holders);
  bool VisitNode(FbxNode* node) override;
  virtual bool isGroup(FbxNode* node) const;

  // From the group's name, with "-" and its first descendant's behind it, to its meshes. Groups
  // whose names agree in both make one, so that no mesh is lost.
  std::map<std::string, std::vector<MeshHolder_*>> groups;

 private:
  MeshCollectorVisitor::Candidates candidates_;
};

// Groups by depth: every node two levels below the scene's root.
class ExtremeGroupFinderVisitor : public GroupFinderVisitor {
 public:
  using GroupFinderVisitor::GroupFinderVisitor;
  bool isGroup(FbxNode* node) const override;
};
