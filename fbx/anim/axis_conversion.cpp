// The conversion of a scene to another axis system. With M the conversion matrix, every node that
// has no parent but the root gets local data whose transform is M times what it was; the rest of
// the tree follows by inheritance. A transform is translation, rotation and scaling, in that order,
// so M splits into a rotation, which PreRotation carries, and where the systems differ in
// handedness a mirroring in all three axes, which Lcl Scaling carries as its sign.
#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <functional>
#include <iterator>
#include <unordered_set>
#include <utility>
#include <vector>

#include "fbx/anim/curve_conversion.h"
#include "fbx/anim/fbx_anim_evaluator.h"
#include "fbx/anim/fbx_animation.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

namespace {

using Index = FbxNode::PropertyIndex;

FbxVector4 Vector(const FbxNode& node, int Index::*which) {
  return FbxVector4(node.Property(which).Get<FbxDouble3>());
}

// Writes only what changes a property, the sign of a zero included: most pivots and limits stay at
// the class's value, and each that a node overrides costs memory.
template <typename T>
void Change(FbxProperty property, const T& value) {
  using Bytes = std::array<std::byte, sizeof(T)>;
  if (std::bit_cast<Bytes>(property.Get<T>()) != std::bit_cast<Bytes>(value)) property.Set(value);
}

void SetVector(FbxNode& node, int Index::*which, const FbxVector4& value) {
  Change(node.Property(which), value.Xyz());
}

FbxAMatrix Rotation(const FbxVector4& degrees) {
  FbxAMatrix matrix;
  matrix.SetR(degrees);
  return matrix;
}

bool IsAnimated(const FbxProperty& property) {
  return property.GetSrcObjectCount<FbxAnimCurveNode>() > 0;
}

// What a node's local transform gets: local translation times `axes`, local rotation times
// `rotation`, local scaling times `scalingSign`.
struct LocalChange {
  FbxAMatrix axes;
  FbxAMatrix rotation;
  double scalingSign = 1.0;
};

// Limits of a triple whose components change places and signs.
void ConvertLimits(FbxNode& node, int Index::*min, int Index::*max, int Index::*flags,
                   const FbxAxisPermutation& axes) {
  const FbxVector4 oldMin = Vector(node, min), oldMax = Vector(node, max);
  const int first = FbxNode::Properties().*flags;
  const auto flag = [&](size_t at) { return FbxProperty(&node, first + static_cast<int>(at)); };
  std::array<bool, 6> oldFlags{};
  for (size_t i = 0; i < 6; ++i) oldFlags[i] = flag(i).Get<bool>();
  FbxVector4 newMin, newMax;
  for (size_t i = 0; i < 3; ++i) {
    const size_t from = axes.from[i];
    const bool negative = axes.sign[i] < 0;
    newMin[i] = negative ? 0.0 - oldMax[from] : oldMin[from];
    newMax[i] = negative ? 0.0 - oldMin[from] : oldMax[from];
    Change(flag(i), oldFlags[negative ? from + 3 : from]);
    Change(flag(i + 3), oldFlags[negative ? from : from + 3]);
  }
  SetVector(node, min, newMin);
  SetVector(node, max, newMax);
}

// Makes `rotation` the whole of a node's rotation space, where the node had none in force. Being
// active switches the rotation limits on, too, which therefore go.
void ReplaceRotationSpace(FbxNode& node, const FbxAMatrix& rotation) {
  Change(node.Property(&Index::rotationActive), true);
  Change(node.Property(&Index::rotationSpaceForLimitOnly), false);
  Change(node.Property(&Index::rotationOrder), static_cast<int>(eEulerXYZ));
  SetVector(node, &Index::preRotation, rotation.GetR());
  SetVector(node, &Index::postRotation, {0.0, 0.0, 0.0});
  for (int i = 0; i < 6; ++i) {
    Change(FbxProperty(&node, FbxNode::Properties().rotationLimitFlags + i), false);
  }
}

void ConvertRotation(FbxNode& node, const FbxAMatrix& rotation) {
  const FbxTransform& transform = node.GetTransform();
  if (!transform.rotationActive) {
    ReplaceRotationSpace(node, rotation);
    return;
  }
  const FbxVector4 preRotation = (rotation * Rotation(Vector(node, &Index::preRotation))).GetR();
  if (!transform.rotationSpaceForLimitOnly) {
    SetVector(node, &Index::preRotation, preRotation);
  } else if (transform.rotationLimits.HasAny() && !IsAnimated(node.LclRotation())) {
    SetVector(node, &Index::preRotation, preRotation);
    SetVector(node, &Index::lclRotation,
              (rotation * Rotation(Vector(node, &Index::lclRotation))).GetR());
  } else {
    // Animated angles can't take a rotation on and keep their limits: the limits give way.
    ReplaceRotationSpace(node, rotation);
  }
}

// With c = (1 - S) * Sp + Soff - Rp, the pivots add LRM * c + Rp + Roff to the translation. The new
// ones must add `axes` times that for every rotation and scaling that animation may bring.
void ConvertPivots(FbxNode& node, const LocalChange& change) {
  const FbxVector4 scalingPivot = Vector(node, &Index::scalingPivot);
  const FbxVector4 scalingOffset = Vector(node, &Index::scalingOffset);
  const FbxVector4 rotationPivot = Vector(node, &Index::rotationPivot);
  const FbxVector4 rotationOffset = Vector(node, &Index::rotationOffset);
  // axes = rotation * t: what is left for c once the new LRM has taken `rotation` on.
  const double t = (change.rotation.Inverse() * change.axes).Get(0, 0) < 0.0 ? -1.0 : 1.0;
  const double s = change.scalingSign;
  SetVector(node, &Index::scalingPivot, scalingPivot * (s * t));
  SetVector(node, &Index::scalingOffset, (scalingOffset + scalingPivot * (1.0 - s)) * t);
  SetVector(node, &Index::rotationPivot, rotationPivot * t);
  SetVector(node, &Index::rotationOffset,
            change.axes.MultT(rotationPivot + rotationOffset) - rotationPivot * t);
}

void ConvertNode(FbxNode& node, const LocalChange& change) {
  const FbxAxisPermutation axes(change.axes);
  SetVector(node, &Index::lclTranslation, axes.Apply(Vector(node, &Index::lclTranslation)));
  ConvertLimits(node, &Index::translationMin, &Index::translationMax, &Index::translationLimitFlags,
                axes);
  if (!change.rotation.IsIdentity()) ConvertRotation(node, change.rotation);
  if (change.scalingSign < 0.0) {
    FbxAMatrix mirror;
    mirror.SetS({-1.0, -1.0, -1.0});
    SetVector(node, &Index::lclScaling, Vector(node, &Index::lclScaling) * -1.0);
    ConvertLimits(node, &Index::scalingMin, &Index::scalingMax, &Index::scalingLimitFlags,
                  FbxAxisPermutation(mirror));
  }
  ConvertPivots(node, change);
  node.UpdatePivotsAndLimitsFromProperties();
}

// The root's children and the nodes that hang nowhere.
std::vector<FbxNode*> TopLevelNodes(const FbxScene& scene) {
  std::vector<FbxNode*> nodes;
  FbxNode* root = scene.GetRootNode();
  std::copy_if(root->Children().begin(), root->Children().end(), std::back_inserter(nodes),
               [root](const FbxNode* child) { return child->GetParent() == root; });
  const int count = scene.GetSrcObjectCount<FbxNode>();
  for (int i = 0; i < count; ++i) {
    auto* node = scene.GetSrcObject<FbxNode>(i);
    if (node->GetParent() == nullptr && node != root) nodes.push_back(node);
  }
  return nodes;
}

// Below nodes whose scaling has become negative, the nodes that don't inherit it must mirror
// themselves. Returns the nodes with negated scaling, `tops` among them.
std::vector<FbxNode*> MirrorDescendants(const std::vector<FbxNode*>& tops) {
  std::vector<FbxNode*> mirrored = tops;
  struct Pending {
    FbxNode* node;
    bool parentMirrored;
  };
  std::vector<Pending> pending;
  const auto addChildren = [&pending](const FbxNode& node, bool isMirrored) {
    for (FbxNode* child : node.Children()) pending.push_back({child, isMirrored});
  };
  for (const FbxNode* top : tops) addChildren(*top, true);
  while (!pending.empty()) {
    const auto [node, parentMirrored] = pending.back();
    pending.pop_back();
    const EFbxInheritType type = ToInheritType(node->Property(&Index::inheritType).Get<int>());
    const bool mirror = parentMirrored && type == eInheritRrs;
    if (mirror) {
      ConvertNode(*node, {{}, {}, -1.0});
      mirrored.push_back(node);
    }
    addChildren(*node, mirror);
  }
  return mirrored;
}

// Whether a curve node multiplies the scaling of the layers below it, so that their sign stays.
bool IsFactor(const FbxAnimCurveNode& node) {
  const auto* layer = node.GetDstObject<FbxAnimLayer>();
  if (layer == nullptr || layer->GetBlendMode() == FbxAnimLayer::eBlendOverride ||
      layer->GetBlendMode() == FbxAnimLayer::eBlendOverridePassthrough) {
    return false;
  }
  const auto* stack = layer->GetDstObject<FbxAnimStack>();
  return stack != nullptr && stack->GetLayer(0) != layer;
}

void ConvertCurves(FbxScene& scene, const std::vector<FbxNode*>& nodes,
                   FbxProperty (FbxNode::*property)() const, const FbxAMatrix& axes,
                   std::function<bool(const FbxAnimCurveNode&)> exempt = {}) {
  const std::unordered_set<const FbxObject*> set(nodes.begin(), nodes.end());
  FbxCurveConversion conversion(
      scene, FbxAxisPermutation(axes),
      [&](const FbxProperty& user) {
        const FbxObject* object = user.GetFbxObject();
        return set.contains(object) && (static_cast<const FbxNode*>(object)->*property)() == user;
      },
      std::move(exempt));
  for (const FbxNode* node : nodes) conversion.Convert((node->*property)());
}

// Poses hold global matrices, but for entries relative to a parent.
void ConvertPoses(const FbxScene& scene, const FbxAMatrix& matrix) {
  const int count = scene.GetSrcObjectCount<FbxPose>();
  for (int i = 0; i < count; ++i) {
    auto* pose = scene.GetSrcObject<FbxPose>(i);
    for (int j = 0; j < pose->GetCount(); ++j) {
      if (pose->IsLocalMatrix(j)) {
        const FbxNode* node = pose->GetNode(j);
        if (node == nullptr || node == scene.GetRootNode()) continue;
        if (node->GetParent() != nullptr && node->GetParent() != scene.GetRootNode()) continue;
      }
      const FbxMatrix& old = pose->GetMatrix(j);
      FbxMatrix product;
      for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
          double sum = 0.0;
          for (int k = 0; k < 4; ++k) sum += old.Get(row, k) * matrix.Get(k, column);
          product.At(row, column) = sum;
        }
      }
      pose->SetMatrix(j, product);
    }
  }
}

// Both matrices of a cluster are global ones at bind.
void ConvertClusters(const FbxScene& scene, const FbxAMatrix& matrix) {
  const int count = scene.GetSrcObjectCount<FbxCluster>();
  for (int i = 0; i < count; ++i) {
    auto* cluster = scene.GetSrcObject<FbxCluster>(i);
    cluster->transform = matrix * cluster->transform;
    cluster->transformLink = matrix * cluster->transformLink;
  }
}

}  // namespace

void FbxAxisSystem::ConvertScene(FbxScene* scene) const {
  if (scene == nullptr) return;
  const FbxAxisSystem source = scene->GetGlobalSettings().GetAxisSystem();
  if (source == *this || !source.IsValid() || !IsValid()) return;

  LocalChange change;
  change.axes = GetConversionMatrix(source);
  const bool mirrors = change.axes.GetS()[0] < 0.0;
  if (mirrors) change.scalingSign = -1.0;
  FbxAMatrix sign;
  sign.SetS(FbxVector4(1.0, 1.0, 1.0) * change.scalingSign);
  change.rotation = change.axes * sign;

  const std::vector<FbxNode*> tops = TopLevelNodes(*scene);
  for (FbxNode* node : tops) ConvertNode(*node, change);
  ConvertCurves(*scene, tops, &FbxNode::LclTranslation, change.axes);
  if (mirrors) {
    ConvertCurves(*scene, MirrorDescendants(tops), &FbxNode::LclScaling, sign, IsFactor);
  }
  ConvertPoses(*scene, change.axes);
  ConvertClusters(*scene, change.axes);
  scene->GetGlobalSettings().SetAxisSystem(*this);
  scene->GetAnimationEvaluator().ConvertFileAxes(change.axes);
}
