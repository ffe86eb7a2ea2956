// Takes the animation of triples from one axis system to another: the curves of X, Y and Z change
// places and signs. Files share curves among channels and curve nodes among properties; each is
// converted once, and where a part of its users must keep it as it was, they get different objects.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <unordered_map>
#include <vector>

#include "fbx/anim/fbx_animation.h"
#include "fbx/math/fbx_matrix.h"

class FbxScene;

// New component i is component from[i] times sign[i].
struct FbxAxisPermutation {
  std::array<size_t, 3> from{0, 1, 2};
  std::array<int, 3> sign{1, 1, 1};

  // Of a matrix whose rows and columns hold one 1 or -1 each.
  explicit FbxAxisPermutation(const FbxAMatrix& matrix);

  FbxVector4 Apply(const FbxVector4& v) const;
};

class FbxCurveConversion {
 public:
  // The animation of curve nodes that are `exempt` (the second argument, if given) stays as it is.
  // `converted` tells of any property whether it is among those that Convert will be called with.
  FbxCurveConversion(FbxScene& scene, const FbxAxisPermutation& axes,
                     std::function<bool(const FbxProperty&)> converted,
                     std::function<bool(const FbxAnimCurveNode&)> exempt = {});

  // Converts the curve nodes of a property, whose own value has been converted, in every layer and
  // stack.
  void Convert(FbxProperty property);

 private:
  FbxAnimCurveNode* Converted(FbxAnimCurveNode& node);
  FbxAnimCurveNode* Kept(FbxAnimCurveNode& node, const FbxProperty& property);
  FbxAnimCurveNode* Copy(const FbxAnimCurveNode& node);
  void Permute(FbxAnimCurveNode& node);
  FbxAnimCurve* Negated(FbxAnimCurve& curve, bool inPlace);

  FbxScene& scene_;
  FbxAxisPermutation axes_;
  std::function<bool(const FbxProperty&)> converted_;
  std::function<bool(const FbxAnimCurveNode&)> exempt_;
  std::unordered_map<FbxAnimCurveNode*, FbxAnimCurveNode*> nodes_;
  std::unordered_map<FbxAnimCurve*, FbxAnimCurve*> negated_;
};
