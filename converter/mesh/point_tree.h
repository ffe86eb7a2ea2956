// A tree over the corners of a large polygon, in which corners are switched on and off: finds one
// that lies inside an ear without looking at all of them.
#pragma once

#include <cstdint>
#include <vector>

#include "converter/mesh/corner_geometry.h"
#include "fbx/math/fbx_vector.h"

class PointTree {
 public:
  // `points` must stay alive, and be finite. Those are on whose entry in `isOn` says so.
  PointTree(const std::vector<FbxVector4>& points, const std::vector<bool>& isOn);

  void Switch(uint32_t point, bool on);
  // A point that is on, inside the triangle and none of its corners; -1 if there is none.
  int32_t FindInside(const EarTriangle& triangle, uint32_t previous, uint32_t corner,
                     uint32_t next) const;

 private:
  static constexpr uint32_t kLeafSize = 64;

  struct Node {
    uint32_t first;  // in order_
    uint32_t count;
    uint32_t parent;
    uint32_t children = 0;  // the first of two in a row; 0 for a leaf
    uint32_t onCount = 0;
    bool hasBox = false;
    OrientedBox box{};  // around all points that are or were on
  };

  void Build(uint32_t node, const std::vector<bool>& isOn);
  void FitBox(Node& node, const std::vector<bool>& isOn) const;
  // Adds a point that is on for the first time.
  void Include(uint32_t point);

  const std::vector<FbxVector4>& points_;
  std::vector<uint32_t> order_;   // leaf by leaf, and in each the points that are on first
  std::vector<uint32_t> places_;  // in order_, by point
  std::vector<uint32_t> leaves_;  // by point
  std::vector<bool> wasOn_;       // by point
  std::vector<Node> nodes_;
  bool isFlat_ = false;  // all points have one x, one y or one z
  mutable std::vector<uint32_t> stack_;
};
