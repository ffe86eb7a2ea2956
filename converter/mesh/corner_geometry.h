// The tests on corners of a polygon in space that triangulation is made of. Their results decide
// which triangles come out and in what order, so they are told by one exact sequence of operations
// in doubles. Each test here first tries a cheap form without square roots and divisions; it
// answers only where rounding can't have changed the sign, and otherwise leaves it to the full one.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "fbx/math/fbx_matrix.h"

// The direction across the corner b of the path a, b, c: the normalised product of the normalised
// edges. The zero vector if the points are collinear or coincide.
FbxVector4 getCrossProductOfCorner(const FbxVector4& a, const FbxVector4& b, const FbxVector4& c);

// Whether the corner turns the way that its normal says: strictly, so that a flat corner doesn't.
bool IsConvexCorner(const FbxVector4& previous, const FbxVector4& corner, const FbxVector4& next,
                    const FbxDouble3& normal);

// Whether x, y and z lie within `tolerance` of 0, ends included.
bool VecNearZero(const FbxVector4& vector, double tolerance);

// A box around points, along axes of its own: origin + the sum of t[i] * axes[i] with t[i] in
// [from[i], to[i]]. Corners of a polygon stand in rows of any direction; a box along a row is thin
// and tells much of all of them at once.
struct OrientedBox {
  FbxDouble3 origin{};
  std::array<FbxDouble3, 3> axes{};  // of length 1 and across each other
  FbxDouble3 from{};
  FbxDouble3 to{};

  // From the directions of two axes; one that is zero is chosen freely.
  void SetAxes(const FbxVector4& first, const FbxVector4& second);
  // Makes it reach the point.
  void Extend(const FbxDouble3& point);
};

// The triangle that an ear would cut off, prepared for tests of many points.
class EarTriangle {
 public:
  EarTriangle(const FbxVector4& previous, const FbxVector4& corner, const FbxVector4& next);

  // Whether a point lies inside: on each edge, the directions across it and across the next edge
  // are on the same side. For points off the plane that says more than its name.
  bool Contains(const FbxVector4& point) const;

  // True only if no point of the box can be inside. With `isFlat` the points and the triangle lie
  // in one plane across an axis of the space, exactly.
  bool IsClearOf(const OrientedBox& box, bool isFlat) const;

 private:
  bool ContainsExactly(const FbxVector4& point) const;

  std::array<FbxVector4, 3> corners_;  // the end of each edge: corner, next, previous
  std::array<FbxDouble3, 3> edges_;    // into that end, of length 1
};

// A tree over the corners of a large polygon, in which corners are switched on and off: finds one
// that lies inside an ear without looking at all of them.
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
