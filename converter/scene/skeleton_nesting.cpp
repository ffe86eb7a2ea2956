#include "converter/scene/skeleton_nesting.h"

SkeletonNesting::SkeletonNesting(const NodeOrder& order, std::span<const NodeSpan> skeletons)
    : order_(order), outer_(skeletons.size(), kNone), lastAsked_(skeletons.size(), 0) {
  const int nodeCount = static_cast<int>(order.All().size());
  innermost_.reserve(order.All().size());
  const auto begin = [&](size_t skeleton) { return order.Index(skeletons[skeleton].front()); };
  struct Open {
    int skeleton;
    int end;  // the place behind its last node
  };
  std::vector<Open> open;
  const auto top = [&] { return open.empty() ? kNone : open.back().skeleton; };
  size_t next = 0;
  for (int node = 0; node < nodeCount; ++node) {
    while (!open.empty() && open.back().end == node) open.pop_back();
    if (next < skeletons.size() && begin(next) == node) {
      outer_[next] = top();
      open.push_back({static_cast<int>(next), node + static_cast<int>(skeletons[next].size())});
      ++next;
    }
    innermost_.push_back(top());
  }
}

std::vector<int> SkeletonNesting::Around(const std::vector<const FbxNode*>& nodes) {
  ++asked_;
  std::vector<int> around;
  for (const FbxNode* node : nodes) {
    const int place = order_.Index(node);
    int skeleton = place < 0 ? kNone : innermost_[static_cast<size_t>(place)];
    while (skeleton != kNone && lastAsked_[static_cast<size_t>(skeleton)] != asked_) {
      lastAsked_[static_cast<size_t>(skeleton)] = asked_;
      around.push_back(skeleton);
      skeleton = outer_[static_cast<size_t>(skeleton)];
    }
  }
  return around;
}
