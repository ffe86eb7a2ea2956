// The names that a room's special places get: seats with their poses and handles, furniture
// anchors, cameras. Nodes are found by patterns, regular expressions, in their loose names.
#pragma once

#include <map>
#include <regex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "converter/scene/node_visitors.h"

using NameMatch = std::match_results<std::string_view::const_iterator>;

// What expressions are given of a name, which comes from a file and may be as long as it likes:
// std::regex calls itself for every character, and a search can cost the square of the length. At
// 256 bytes, which no tool's names reach, the most hostile name costs 1 microsecond a byte.
inline std::string_view MatchedPart(std::string_view name) { return name.substr(0, 256); }

// The first match in a text; its groups are empty where there is none.
inline NameMatch Search(std::string_view text, const std::regex& pattern) {
  NameMatch match;
  std::regex_search(text.begin(), text.end(), match, pattern);
  return match;
}

inline std::string_view Group(const NameMatch& match, size_t group) {
  if (!match[group].matched) return {};
  return {match[group].first, match[group].second};
}

// Finds nodes whose names match regular expressions. A node can match several. Names are looked at
// as far as MatchedPart goes.
class NodeNameVisitor : public NodeVisitorBase {
 public:
  // With `stopOnMatch` the walk doesn't go below a node that matches. A pattern may match anywhere
  // with `searchWithinName`, otherwise the whole name.
  NodeNameVisitor(std::vector<std::string> patterns, bool stopOnMatch, bool caseSensitive,
                  bool searchWithinName);
  bool VisitNode(FbxNode* node) override;

  const std::vector<std::string>& Patterns() const { return patterns_; }
  // The nodes that match a pattern, in walk order.
  const std::vector<FbxNode*>& Matches(const std::string& pattern) const;

 private:
  std::vector<std::string> patterns_;
  std::vector<std::regex> expressions_;
  bool stopOnMatch_;
  bool searchWithinName_;
  std::map<std::string, std::vector<FbxNode*>> matches_;
};

// Finds the first node whose whole name matches one pattern, in its own case.
class NodeNameFinderVisitor : public NodeNameVisitor {
 public:
  explicit NodeNameFinderVisitor(const std::string& pattern)
      : NodeNameVisitor({pattern}, true, true, false), pattern_(pattern) {}
  bool Found() const { return !Matches(pattern_).empty(); }

 private:
  std::string pattern_;
};

// All special places of a room, in the order in which they are reported.
const std::vector<std::string>& RoomPatterns();
// The camera that the runtime looks for.
inline constexpr const char* kRoomCameraPattern = "camera\\.01\\.01.root";

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
