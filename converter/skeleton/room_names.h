// The names that a room's special places get: seats with their poses and handles, furniture
// anchors, cameras. Nodes are found by patterns in their loose names.
//
// The patterns read as regular expressions and are reported as such, but are matched by functions:
// a name comes from a file and may be as long as it likes.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "converter/scene/node_visitors.h"

// A pattern of node names.
struct NamePattern {
  const char* text;
  // True if the pattern matches: anywhere in a lower-cased name for the patterns of a room, the
  // whole name for the camera's.
  bool (*matches)(std::string_view name);
};

// Finds nodes by name patterns. A node can match several.
class NodeNameVisitor : public NodeVisitorBase {
 public:
  // With `stopOnMatch` the walk doesn't go below a node that matches.
  NodeNameVisitor(std::vector<NamePattern> patterns, bool stopOnMatch, bool caseSensitive);
  bool VisitNode(FbxNode* node) override;

  const std::vector<NamePattern>& Patterns() const { return patterns_; }
  // The nodes that match a pattern, in walk order.
  const std::vector<FbxNode*>& Matches(const std::string& patternText) const;

 private:
  std::vector<NamePattern> patterns_;
  bool stopOnMatch_;
  bool caseSensitive_;
  std::map<std::string, std::vector<FbxNode*>> matches_;
};

// Finds the first node whose whole name matches one pattern, in its own case.
class NodeNameFinderVisitor : public NodeNameVisitor {
 public:
  explicit NodeNameFinderVisitor(const NamePattern& pattern)
      : NodeNameVisitor({pattern}, true, true), pattern_(pattern.text) {}
  bool Found() const { return !Matches(pattern_).empty(); }

 private:
  std::string pattern_;
};

// All special places of a room, in the order in which they are reported.
const std::vector<NamePattern>& RoomPatterns();
// The camera that the runtime looks for.
extern const NamePattern kRoomCameraPattern;

// From node to the name that goes into the skeleton file.
using NodeNames = std::unordered_map<FbxNode*, std::string>;

// The new names of the nodes that `visitor`, made of RoomPatterns, has found. No node is changed.
NodeNames RenameSpecialRoomNodes(const NodeNameVisitor& visitor);

// The steps of it. Furniture is numbered on from `counter`, over all its kinds.
void RenameFurnitureNodes(const std::vector<FbxNode*>& nodes, std::string_view word, int& counter,
                          NodeNames& names);
// Of the cameras the first whose name speaks of a target becomes the target, and the first of the
// others the camera.
void RenameCameraNodes(const std::vector<FbxNode*>& nodes, NodeNames& names);
// Seats, with the catcher and the handle that belong to each.
void RenamePoseNodes(const NodeNameVisitor& visitor, int counter, NodeNames& names);
