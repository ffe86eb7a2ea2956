#include "converter/mesh/point_tree.h"

#include <algorithm>
#include <numeric>
#include <utility>

PointTree::PointTree(const std::vector<FbxVector4>& points)
    : points_(points), order_(points.size()), places_(points.size()), leaves_(points.size()) {
  std::iota(order_.begin(), order_.end(), 0U);
  nodes_.reserve(points.size() / 2 + 1);
  nodes_.push_back({{}, {}, 0, static_cast<uint32_t>(points.size()), 0, 0, 0});
  // Children are appended behind, so that this walks the tree level by level.
  for (uint32_t node = 0; node < nodes_.size(); ++node) Build(node);
  ordered_.reserve(points.size());
  for (const uint32_t point : order_) {
    places_[point] = static_cast<uint32_t>(ordered_.size());
    ordered_.push_back(points[point].Xyz());
  }
  for (size_t axis = 0; axis < 3; ++axis) {
    isFlat_ = isFlat_ || nodes_[0].min[axis] == nodes_[0].max[axis];
  }
}

void PointTree::Build(uint32_t node) {
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
  nodes_[node].min = min;
  nodes_[node].max = max;
  if (count <= kLeafSize) {
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
  nodes_.push_back({{}, {}, first, half, 0, node, 0});
  nodes_.push_back({{}, {}, first + half, count - half, 0, node, 0});
}

void PointTree::Switch(uint32_t point, bool on) {
  const Node& leaf = nodes_[leaves_[point]];
  const uint32_t place = places_[point];
  const uint32_t firstOff = leaf.first + leaf.onCount;
  if ((place < firstOff) == on) return;
  // Trade places with the one at the border.
  const uint32_t border = on ? firstOff : firstOff - 1;
  std::swap(places_[point], places_[order_[border]]);
  std::swap(order_[place], order_[border]);
  std::swap(ordered_[place], ordered_[border]);
  for (uint32_t node = leaves_[point];; node = nodes_[node].parent) {
    nodes_[node].onCount += on ? 1U : ~0U;
    if (node == 0) return;
  }
}

int32_t PointTree::FindInside(const EarTriangle& triangle, uint32_t previous, uint32_t corner,
                              uint32_t next) const {
  stack_.assign(1, {0, {}});
  while (!stack_.empty()) {
    const Step step = stack_.back();
    stack_.pop_back();
    const Node& node = nodes_[step.node];
    if (node.onCount == 0) continue;
    const EarTriangle::Outlook outlook = triangle.Look(node.min, node.max, isFlat_, step.known);
    if (outlook.isClear) continue;
    if (node.children != 0) {
      stack_.push_back({node.children + 1, outlook});
      stack_.push_back({node.children, outlook});
      continue;
    }
    for (uint32_t i = node.first; i < node.first + node.onCount; ++i) {
      if (outlook.openEdge >= 0 && triangle.IsClear(ordered_[i], outlook)) continue;
      const uint32_t point = order_[i];
      if (point == previous || point == corner || point == next) continue;
      if (triangle.Contains(points_[point])) return static_cast<int32_t>(point);
    }
  }
  return -1;
}
