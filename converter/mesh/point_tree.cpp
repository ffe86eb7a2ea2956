#include "converter/mesh/point_tree.h"

#include <algorithm>
#include <numeric>
#include <utility>

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
