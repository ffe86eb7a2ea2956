// The bones of a skeleton by their full node paths. The paths themselves are not held: a deep
// hierarchy would take the square of its depth. What is held is a tree of their components, and two
// nodes have one path exactly when they stand for one entry of it. A name that holds "/" counts as
// several components, since its path reads like theirs.
//
// Names must not change while a map is in use.
#pragma once

#include <string_view>
#include <unordered_map>
#include <vector>

#include "converter/scene/node_visitors.h"

struct Bone {
  int id = -1;    // index in the skeleton
  int rank = -1;  // place of the path among those of all bones, byte-wise
};

class BoneNameMap {
 public:
  BoneNameMap() = default;
  // The indices in `nodes` are the ids; of several nodes with one path the last counts.
  explicit BoneNameMap(NodeSpan nodes);

  // The number of different paths.
  int Count() const { return count_; }
  // The bone that has the full path of the node, or the path; null if none has. The node may be any
  // node of the scene.
  const Bone* Find(const FbxNode* node) const;
  const Bone* Find(std::string_view path) const;

 private:
  struct Component {
    int above;  // the entry
    std::string_view name;
    bool operator==(const Component&) const = default;
  };
  struct ComponentHash {
    size_t operator()(const Component& c) const {
      return std::hash<std::string_view>()(c.name) * 31 + static_cast<size_t>(c.above);
    }
  };

  static constexpr int kTop = 0;  // the entry above all paths
  static constexpr int kNone = -1;

  int Climb(const FbxNode* node, std::vector<const FbxNode*>& chain) const;
  int Enter(const FbxNode* node);
  int FindBelow(int entry, std::string_view path) const;
  const Bone* BoneOf(int entry) const;
  void RankPaths();

  std::vector<Bone> bones_{Bone()};  // by entry; without an id where no bone ends
  std::unordered_map<Component, int, ComponentHash> entries_;
  std::unordered_map<const FbxNode*, int> entryOfNode_;  // of the bones and what is above them
  int count_ = 0;
};
