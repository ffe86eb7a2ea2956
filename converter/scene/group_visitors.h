// Searches for groups of meshes: nodes whose meshes go out together.
#pragma once

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "converter/scene/mesh_holder.h"
#include "converter/scene/node_visitors.h"

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
