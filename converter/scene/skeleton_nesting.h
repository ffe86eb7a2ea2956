// Which skeletons a node lies in. Rigs have skeletons inside skeletons, and a scene may have
// thousands of them, so that asking each one costs far more than the answer is long.
#pragma once

#include <span>
#include <vector>

#include "converter/scene/node_visitors.h"

class SkeletonNesting {
 public:
  // Of skeletons that are subtrees of `order`, in walk order.
  SkeletonNesting(const NodeOrder& order, std::span<const NodeSpan> skeletons);

  // The indices of all skeletons that hold any of the nodes, each once, in no order.
  std::vector<int> Around(const std::vector<const FbxNode*>& nodes);

 private:
  static constexpr int kNone = -1;

  const NodeOrder& order_;
  std::vector<int> innermost_;  // by place in the order
  std::vector<int> outer_;      // by skeleton: the next one around it
  std::vector<int> lastAsked_;  // by skeleton: the call of Around that met it last
  int asked_ = 0;
};
