// A tree of boxes over the corners of a large polygon, in which corners are switched on and off:
// finds one that lies inside an ear without looking at all of them.
#pragma once

#include <cstdint>
#include <vector>

#include "converter/mesh/corner_geometry.h"
#include "fbx/math/fbx_vector.h"

class PointTree {
 public:
  // `points` must stay alive, and be finite. All are off.
  explicit PointTree(const std::vector<FbxVector4>& points);

  void Switch(uint32_t point, bool on);
  // A point that is on, inside the triangle and none of its corners; -1 if there is none.
  int32_t FindInside(const EarTriangle& triangle, uint32_t previous, uint32_t corner,
                     uint32_t next) const;

 private:
  static constexpr uint32_t kLeafSize = 16;

  struct Node {
    FbxDouble3 min;
    FbxDouble3 max;
    uint32_t first;  // in order_
    uint32_t count;
    uint32_t onCount = 0;
    uint32_t parent;
    uint32_t children = 0;  // the first of two in a row; 0 for a leaf
  };

  // A node on the way down, with what is known of its parent.
  struct Step {
    uint32_t node;
    EarTriangle::Outlook known;
  };

  void Build(uint32_t node);

  const std::vector<FbxVector4>& points_;
  // Leaf by leaf, and in each the points that are on first.
  std::vector<uint32_t> order_;
  std::vector<FbxDouble3> ordered_;  // the points in that order
  std::vector<uint32_t> places_;     // in order_, by point
  std::vector<uint32_t> leaves_;     // by point
  std::vector<uint8_t> isOn_;        // by point
  std::vector<Node> nodes_;
  bool isFlat_ = false;  // all points have one x, one y or one z
  mutable std::vector<Step> stack_;
};
