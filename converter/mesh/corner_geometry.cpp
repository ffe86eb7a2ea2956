#include "converter/mesh/corner_geometry.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// A bound, with a margin, on the relative error of the products of two directions across a corner,
// in the cheap form and in the full one together.
constexpr double kRounding = 64.0 * std::numeric_limits<double>::epsilon();

// The same for distances from the edges and the plane of a triangle that is no sliver.
constexpr double kLeastSine = 1e-5;
constexpr double kSlack = 1e-9;

FbxDouble3 Subtract(const FbxDouble3& a, const FbxDouble3& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
FbxDouble3 Cross(const FbxDouble3& a, const FbxDouble3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double Dot(const FbxDouble3& a, const FbxDouble3& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
// At least the length.
double LengthBound(const FbxDouble3& a) { return std::abs(a[0]) + std::abs(a[1]) + std::abs(a[2]); }
FbxDouble3 Normalized(const FbxDouble3& a) {
  FbxVector4 vector(a);
  vector.Normalize();
  return vector.Xyz();
}

}  // namespace

FbxVector4 getCrossProductOfCorner(const FbxVector4& a, const FbxVector4& b, const FbxVector4& c) {
  FbxVector4 into = b - a;
  FbxVector4 out = c - b;
  into.Normalize();
  out.Normalize();
  FbxVector4 cross = into.CrossProduct(out);
  cross.Normalize();
  return cross;
}

bool IsConvexCorner(const FbxVector4& previous, const FbxVector4& corner, const FbxVector4& next,
                    const FbxDouble3& normal) {
  const FbxDouble3 into = Subtract(corner.Xyz(), previous.Xyz());
  const FbxDouble3 out = Subtract(next.Xyz(), corner.Xyz());
  const double dot = Dot(Cross(into, out), normal);
  const double bound = kRounding * LengthBound(into) * LengthBound(out) * LengthBound(normal);
  if (std::abs(dot) > bound) return dot > 0.0;
  return getCrossProductOfCorner(previous, corner, next).DotProduct(FbxVector4(normal)) > 0.0;
}

bool VecNearZero(const FbxVector4& vector, double tolerance) {
  return std::abs(vector[0]) <= tolerance && std::abs(vector[1]) <= tolerance &&
         std::abs(vector[2]) <= tolerance;
}

EarTriangle::EarTriangle(const FbxVector4& previous, const FbxVector4& corner,
                         const FbxVector4& next)
    : corners_{corner, next, previous} {
  for (size_t i = 0; i < 3; ++i) {
    edges_[i] = Normalized(Subtract(corners_[i].Xyz(), corners_[(i + 2) % 3].Xyz()));
  }
  const FbxDouble3 across = Cross(edges_[0], edges_[1]);
  hasPlane_ = LengthBound(across) > kLeastSine;
  normal_ = Normalized(across);
  for (size_t i = 0; i < 3; ++i) {
    inward_[i] = Cross(normal_, edges_[i]);
    size_ = std::max(size_, LengthBound(Subtract(corners_[i].Xyz(), corners_[0].Xyz())));
  }
}

bool EarTriangle::Contains(const FbxVector4& point) const {
  std::array<FbxDouble3, 3> crosses;
  std::array<double, 3> distances;
  for (size_t i = 0; i < 3; ++i) {
    const FbxDouble3 offset = Subtract(point.Xyz(), corners_[i].Xyz());
    crosses[i] = Cross(edges_[i], offset);
    distances[i] = LengthBound(offset);
  }
  bool isNegative = false;
  bool isPositive = false;
  bool isOpen = false;
  for (size_t i = 0; i < 3; ++i) {
    const size_t j = (i + 1) % 3;
    const double dot = Dot(crosses[i], crosses[j]);
    const double bound = kRounding * distances[i] * distances[j];
    if (dot > bound) {
      isPositive = true;
    } else if (dot < -bound) {
      isNegative = true;
    } else {
      isOpen = true;
    }
  }
  if (isNegative && isPositive) return false;
  return isOpen ? ContainsExactly(point) : true;
}

bool EarTriangle::ContainsExactly(const FbxVector4& point) const {
  const FbxVector4& previous = corners_[2];
  const FbxVector4& corner = corners_[0];
  const FbxVector4& next = corners_[1];
  const FbxVector4 c1 = getCrossProductOfCorner(previous, corner, point);
  const FbxVector4 c2 = getCrossProductOfCorner(corner, next, point);
  const FbxVector4 c3 = getCrossProductOfCorner(next, previous, point);
  const bool is12Negative = c1.DotProduct(c2) < 0.0;
  const bool is23Negative = c2.DotProduct(c3) < 0.0;
  return is12Negative == is23Negative && is23Negative == (c3.DotProduct(c1) < 0.0);
}

// The product of the directions across two edges is that of the distances from them, up to the
// square of the height above the plane. For a point on opposite sides of two edges their product is
// negative, and those with the third edge have different signs: unless the height, or rounding,
// outweighs its distance `side` from the third edge, one of them is positive.
bool EarTriangle::IsClearBesideEdge(double side, double height, double reach,
                                    double distance) const {
  return side > 0.0 && side * distance > 2.0 * height * height + kRounding * reach * reach;
}

EarTriangle::Outlook EarTriangle::Look(const FbxDouble3& boxMin, const FbxDouble3& boxMax,
                                       bool isFlat, const Outlook& known) const {
  if (!hasPlane_) return {};
  FbxDouble3 center;
  FbxDouble3 half;
  for (size_t i = 0; i < 3; ++i) {
    center[i] = 0.5 * (boxMin[i] + boxMax[i]);
    half[i] = 0.5 * (boxMax[i] - boxMin[i]);
  }
  const auto spread = [&half](const FbxDouble3& direction) {
    return std::abs(direction[0]) * half[0] + std::abs(direction[1]) * half[1] +
           std::abs(direction[2]) * half[2];
  };
  const FbxDouble3 toCenter = Subtract(center, corners_[0].Xyz());
  const double reach = LengthBound(toCenter) + LengthBound(half) + size_;
  const double slack = kSlack * reach;
  // How far off the plane points of the box are at most.
  const double height = std::abs(Dot(toCenter, normal_)) + spread(normal_) + slack;
  // How far they are from an edge at least, with the side as the sign; 0 if they may lie on it.
  const auto sideOf = [&](size_t edge) {
    const double distance = Dot(Subtract(center, corners_[edge].Xyz()), inward_[edge]);
    const double margin = spread(inward_[edge]) + slack;
    return distance > margin ? distance - margin : distance < -margin ? distance + margin : 0.0;
  };
  if (known.openEdge >= 0) {
    Outlook outlook = known;
    const double side = std::abs(sideOf(static_cast<size_t>(known.openEdge)));
    outlook.isClear = IsClearBesideEdge(side, height, reach, known.distance);
    return outlook;
  }
  const std::array<double, 3> sides{sideOf(0), sideOf(1), sideOf(2)};
  for (size_t i = 0; i < 3; ++i) {
    const size_t j = (i + 1) % 3;
    const size_t open = (i + 2) % 3;
    if (!(sides[i] * sides[j] < 0.0)) continue;
    // In a flat polygon all directions are along one axis: two opposite ones are enough.
    if (isFlat) return {.isClear = true};
    const double distance = std::min(std::abs(sides[i]), std::abs(sides[j]));
    if (!IsClearBesideEdge(distance, height, reach, distance)) continue;
    return {IsClearBesideEdge(std::abs(sides[open]), height, reach, distance),
            static_cast<int>(open), distance};
  }
  return {};
}

bool EarTriangle::IsClear(const FbxDouble3& point, const Outlook& known) const {
  const auto edge = static_cast<size_t>(known.openEdge);
  const FbxDouble3 offset = Subtract(point, corners_[edge].Xyz());
  const double reach = LengthBound(offset) + size_;
  const double slack = kSlack * reach;
  const double side = std::abs(Dot(offset, inward_[edge])) - slack;
  const double height = std::abs(Dot(offset, normal_)) + slack;
  return IsClearBesideEdge(side, height, reach, known.distance);
}
