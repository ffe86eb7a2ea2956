#include "converter/mesh/corner_geometry.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

namespace {

// A bound, with a margin, on the relative error of the products of two directions across a corner,
// in the cheap form and in the full one together.
constexpr double kRounding = 64.0 * std::numeric_limits<double>::epsilon();

FbxDouble3 Subtract(const FbxDouble3& a, const FbxDouble3& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
FbxDouble3 Cross(const FbxDouble3& a, const FbxDouble3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
FbxDouble3 Sum(const FbxDouble3& a, const FbxDouble3& b) {
  return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
FbxDouble3 Scaled(const FbxDouble3& a, double factor) {
  return {a[0] * factor, a[1] * factor, a[2] * factor};
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

struct Range {
  double low;
  double high;
};

// Of square * t * t + linear * t + middle for t in [-1, 1].
Range RangeOfQuadratic(double square, double linear, double middle) {
  Range range{middle + square - std::abs(linear), middle + square + std::abs(linear)};
  if (std::abs(linear) < 2.0 * std::abs(square)) {
    const double extreme = middle - 0.25 * linear * linear / square;
    range.low = std::min(range.low, extreme);
    range.high = std::max(range.high, extreme);
  }
  return range;
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

void OrientedBox::SetAxes(const FbxVector4& first, const FbxVector4& second) {
  axes[0] = first.IsZero(3) ? FbxDouble3{1.0, 0.0, 0.0} : first.Xyz();
  FbxDouble3 other = second.Xyz();
  if (second.IsZero(3)) {
    other = std::abs(axes[0][0]) < 0.5 ? FbxDouble3{1.0, 0.0, 0.0} : FbxDouble3{0.0, 1.0, 0.0};
  }
  axes[1] = Normalized(Subtract(other, Scaled(axes[0], Dot(other, axes[0]))));
  axes[2] = Cross(axes[0], axes[1]);
}

void OrientedBox::Extend(const FbxDouble3& point) {
  const FbxDouble3 offset = Subtract(point, origin);
  for (size_t i = 0; i < 3; ++i) {
    const double t = Dot(offset, axes[i]);
    from[i] = std::min(from[i], t);
    to[i] = std::max(to[i], t);
  }
}

EarTriangle::EarTriangle(const FbxVector4& previous, const FbxVector4& corner,
                         const FbxVector4& next)
    : corners_{corner, next, previous} {
  for (size_t i = 0; i < 3; ++i) {
    edges_[i] = Normalized(Subtract(corners_[i].Xyz(), corners_[(i + 2) % 3].Xyz()));
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

// The direction across an edge is linear in the point, so that the product of two of them is a
// quadratic polynomial. Its range over the first two axes of the box is known but for one term;
// what the third adds is bounded. Corners far along the line of an edge, as a comb has thousands,
// are told from points inside by nothing less: their distances from the edge and from the plane,
// both near 0, decide together.
bool EarTriangle::IsClearOf(const OrientedBox& box, bool isFlat) const {
  FbxDouble3 toCenter{};
  std::array<FbxDouble3, 3> halves;
  double size = 0.0;
  for (size_t a = 0; a < 3; ++a) {
    const double half = 0.5 * (box.to[a] - box.from[a]);
    toCenter = Sum(toCenter, Scaled(box.axes[a], box.from[a] + half));
    halves[a] = Scaled(box.axes[a], half);
    size += half;
  }
  // The direction across an edge at the center, and what half the box adds to it along each axis.
  struct Across {
    FbxDouble3 center;
    std::array<FbxDouble3, 3> halves;
    double reach;
  };
  std::array<Across, 3> across;
  for (size_t i = 0; i < 3; ++i) {
    const FbxDouble3 offset = Sum(Subtract(box.origin, corners_[i].Xyz()), toCenter);
    across[i].center = Cross(edges_[i], offset);
    for (size_t a = 0; a < 3; ++a) across[i].halves[a] = Cross(edges_[i], halves[a]);
    across[i].reach = LengthBound(offset) + size;
  }
  bool isNegative = false;
  bool isPositive = false;
  for (size_t i = 0; i < 3; ++i) {
    const Across& p = across[i];
    const Across& q = across[(i + 1) % 3];
    // Terms of the product for a point at (t, u, v), each in [-1, 1], along the halves.
    const auto linear = [&](size_t a) {
      return Dot(p.center, q.halves[a]) + Dot(p.halves[a], q.center);
    };
    const auto mixed = [&](size_t a, size_t b) {
      return Dot(p.halves[a], q.halves[b]) + Dot(p.halves[b], q.halves[a]);
    };
    const auto square = [&](size_t a) { return Dot(p.halves[a], q.halves[a]); };
    const double middle = Dot(p.center, q.center);
    const double t = linear(0);
    const double tt = square(0);
    const double u = linear(1);
    const double tu = mixed(0, 1);
    // But for its square, u counts most at its ends.
    const Range left = RangeOfQuadratic(tt, t - tu, middle - u);
    const Range right = RangeOfQuadratic(tt, t + tu, middle + u);
    const double margin = std::abs(square(1)) + std::abs(linear(2)) + std::abs(mixed(0, 2)) +
                          std::abs(mixed(1, 2)) + std::abs(square(2)) +
                          2.0 * kRounding * p.reach * q.reach;
    isNegative = isNegative || std::max(left.high, right.high) < -margin;
    isPositive = isPositive || std::min(left.low, right.low) > margin;
  }
  // In a flat polygon all directions are along one axis: two opposite ones are enough.
  return isNegative && (isPositive || isFlat);
}

PointTree::PointTree(const std::vector<FbxVector4>& points, const std::vector<bool>& isOn)
    : points_(points),
      order_(points.size()),
      places_(points.size()),
      leaves_(points.size()),
      wasOn_(isOn) {
  std::iota(order_.begin(), order_.end(), 0U);
  nodes_.reserve(4 * points.size() / kLeafSize + 1);
  nodes_.push_back({0, static_cast<uint32_t>(points.size()), 0});
  // Children are appended behind, so that this walks the tree level by level.
  for (uint32_t node = 0; node < nodes_.size(); ++node) Build(node, isOn);
  for (size_t i = 0; i < order_.size(); ++i) places_[order_[i]] = static_cast<uint32_t>(i);
}

void PointTree::Build(uint32_t node, const std::vector<bool>& isOn) {
  const uint32_t first = nodes_[node].first;
  const uint32_t count = nodes_[node].count;
  const auto begin = order_.begin() + first;
  FbxDouble3 min = points_[*begin].Xyz();
  FbxDouble3 max = min;
  for (auto at = begin; at != begin + count; ++at) {
    for (size_t axis = 0; axis < 3; ++axis) {
      min[axis] = std::min(min[axis], points_[*at][axis]);
      max[axis] = std::max(max[axis], points_[*at][axis]);
    }
  }
  if (node == 0) isFlat_ = min[0] == max[0] || min[1] == max[1] || min[2] == max[2];
  FitBox(nodes_[node], isOn);
  if (count <= kLeafSize) {
    std::partition(begin, begin + count, [&](uint32_t point) { return isOn[point]; });
    for (auto at = begin; at != begin + count; ++at) leaves_[*at] = node;
    return;
  }
  size_t longest = 0;
  for (size_t axis = 1; axis < 3; ++axis) {
    if (max[axis] - min[axis] > max[longest] - min[longest]) longest = axis;
  }
  const uint32_t half = count / 2;
  std::nth_element(begin, begin + half, begin + count, [&](uint32_t a, uint32_t b) {
    return points_[a][longest] < points_[b][longest];
  });
  nodes_[node].children = static_cast<uint32_t>(nodes_.size());
  nodes_.push_back({first, half, node});
  nodes_.push_back({first + half, count - half, node});
}

// Lays the first axis from the first point to the one furthest from it, and the second towards the
// point furthest from that line.
void PointTree::FitBox(Node& node, const std::vector<bool>& isOn) const {
  const auto visit = [&](auto&& function) {
    for (uint32_t i = node.first; i < node.first + node.count; ++i) {
      if (isOn[order_[i]]) function(points_[order_[i]]);
    }
  };
  visit([&](const FbxVector4& point) {
    if (node.onCount++ == 0) node.box.origin = point.Xyz();
  });
  if (node.onCount == 0) return;
  node.hasBox = true;
  const FbxVector4 origin(node.box.origin);
  FbxVector4 first(0.0, 0.0, 0.0);
  double longest = 0.0;
  visit([&](const FbxVector4& point) {
    const FbxVector4 offset = point - origin;
    const double length = offset.Length();
    if (length > longest) {
      longest = length;
      first = offset / length;
    }
  });
  FbxVector4 second(0.0, 0.0, 0.0);
  // Below that there is only rounding.
  double widest = 1e-9 * longest;
  visit([&](const FbxVector4& point) {
    const FbxVector4 offset = point - origin;
    const FbxVector4 across = offset - first * offset.DotProduct(first);
    const double length = across.Length();
    if (length > widest) {
      widest = length;
      second = across / length;
    }
  });
  node.box.SetAxes(first, second);
  visit([&](const FbxVector4& point) { node.box.Extend(point.Xyz()); });
}

void PointTree::Include(uint32_t point) {
  wasOn_[point] = true;
  const FbxDouble3 position = points_[point].Xyz();
  for (uint32_t at = leaves_[point];; at = nodes_[at].parent) {
    Node& node = nodes_[at];
    if (!std::exchange(node.hasBox, true)) {
      node.box.origin = position;
      node.box.SetAxes({0.0, 0.0, 0.0}, {0.0, 0.0, 0.0});
    }
    node.box.Extend(position);
    if (at == 0) return;
  }
}

void PointTree::Switch(uint32_t point, bool on) {
  const Node& leaf = nodes_[leaves_[point]];
  const uint32_t place = places_[point];
  const uint32_t firstOff = leaf.first + leaf.onCount;
  if ((place < firstOff) == on) return;
  if (on && !wasOn_[point]) Include(point);
  // Trade places with the one at the border.
  const uint32_t border = on ? firstOff : firstOff - 1;
  std::swap(places_[point], places_[order_[border]]);
  std::swap(order_[place], order_[border]);
  for (uint32_t node = leaves_[point];; node = nodes_[node].parent) {
    nodes_[node].onCount += on ? 1U : ~0U;
    if (node == 0) return;
  }
}

int32_t PointTree::FindInside(const EarTriangle& triangle, uint32_t previous, uint32_t corner,
                              uint32_t next) const {
  stack_.assign(1, 0);
  while (!stack_.empty()) {
    const Node& node = nodes_[stack_.back()];
    stack_.pop_back();
    if (node.onCount == 0 || triangle.IsClearOf(node.box, isFlat_)) continue;
    if (node.children != 0) {
      stack_.push_back(node.children + 1);
      stack_.push_back(node.children);
      continue;
    }
    for (uint32_t i = node.first; i < node.first + node.onCount; ++i) {
      const uint32_t point = order_[i];
      if (point == previous || point == corner || point == next) continue;
      if (triangle.Contains(points_[point])) return static_cast<int32_t>(point);
    }
  }
  return -1;
}
