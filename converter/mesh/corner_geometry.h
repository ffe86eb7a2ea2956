// The tests on corners of a polygon in space that triangulation is made of. Their results decide
// which triangles come out and in what order, so they are told by one exact sequence of operations
// in doubles. Each test here first tries a cheap form without square roots and divisions; it
// answers only where rounding can't have changed the sign, and otherwise leaves it to the full one.
#pragma once

#include <array>

#include "fbx/math/fbx_vector.h"

// The direction across the corner b of the path a, b, c: the normalised product of the normalised
// edges. The zero vector if the points are collinear or coincide.
FbxVector4 getCrossProductOfCorner(const FbxVector4& a, const FbxVector4& b, const FbxVector4& c);

// Whether the corner turns the way that its normal says: strictly, so that a flat corner doesn't.
bool IsConvexCorner(const FbxVector4& previous, const FbxVector4& corner, const FbxVector4& next,
                    const FbxDouble3& normal);

// Whether x, y and z lie within `tolerance` of 0, ends included.
bool VecNearZero(const FbxVector4& vector, double tolerance);

// The triangle that an ear would cut off, prepared for tests of many points.
class EarTriangle {
 public:
  EarTriangle(const FbxVector4& previous, const FbxVector4& corner, const FbxVector4& next);

  // Whether a point lies inside: on each edge, the directions across it and across the next edge
  // are on the same side. For points off the plane that says more than its name.
  bool Contains(const FbxVector4& point) const;

  // What is known of the points of a box: that none of them can be inside; or that all of them lie
  // on opposite sides of two edges, at least so far away, so that the third decides. That holds for
  // every box within it, too.
  struct Outlook {
    bool isClear = false;
    int openEdge = -1;
    double distance = 0.0;
  };
  // `known` is what is known of a box around this one. With `isFlat` the box and the triangle lie
  // in one plane across an axis, exactly.
  Outlook Look(const FbxDouble3& boxMin, const FbxDouble3& boxMax, bool isFlat,
               const Outlook& known) const;
  // The same for a point of such a box: true only if it can't be inside.
  bool IsClear(const FbxDouble3& point, const Outlook& known) const;

 private:
  bool ContainsExactly(const FbxVector4& point) const;
  bool IsClearBesideEdge(double side, double height, double reach, double distance) const;

  std::array<FbxVector4, 3> corners_;  // the end of each edge: corner, next, previous
  std::array<FbxDouble3, 3> edges_;    // into that end, of length 1
  std::array<FbxDouble3, 3> inward_;   // across each edge in the plane
  FbxDouble3 normal_{};
  double size_ = 0.0;      // no corner is further from another
  bool hasPlane_ = false;  // false for a sliver, whose plane rounding leaves open
};
