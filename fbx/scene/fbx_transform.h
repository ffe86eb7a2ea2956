// The fixed parts of a node's transform: what a node's properties say about rotation order, pre and
// post rotation, pivots and limits, in the form in which the evaluator needs them.
#pragma once

#include <array>

#include "fbx/math/fbx_matrix.h"

// How a parent's scaling reaches a child: R and S are the parent's, r and s the child's.
enum EFbxInheritType { eInheritRrSs = 0, eInheritRSrs = 1, eInheritRrs = 2 };

// The inherit type of a number in a file; RrSs for an unknown one.
constexpr EFbxInheritType ToInheritType(int number) {
  return number == eInheritRSrs || number == eInheritRrs ? static_cast<EFbxInheritType>(number)
                                                         : eInheritRrSs;
}

// Limits of a triple of values.
struct FbxLimits {
  bool active = false;
  std::array<bool, 3> minActive{};
  std::array<bool, 3> maxActive{};
  FbxVector4 min{0.0, 0.0, 0.0};
  FbxVector4 max{0.0, 0.0, 0.0};

  // Clamps each component whose axis has a limit; nothing while the limits aren't active.
  FbxVector4 Apply(const FbxVector4& value) const;
  // Whether Apply can change anything.
  bool HasAny() const;
};

struct FbxTransform {
  FbxRotationOrder rotationOrder{eEulerXYZ};
  bool rotationActive = false;
  bool rotationSpaceForLimitOnly = false;

  FbxLimits translationLimits;
  FbxLimits rotationLimits;
  FbxLimits scalingLimits;

  bool hasRotationOffset = false;
  bool hasRotationPivot = false;
  bool hasScalingOffset = false;
  bool hasScalingPivot = false;
  FbxVector4 rotationOffset;
  FbxVector4 rotationPivot;
  FbxVector4 scalingOffset;
  FbxVector4 scalingPivot;

  bool hasPreRotation = false;
  bool hasPostRotation = false;
  FbxAMatrix preRotation;
  FbxAMatrix postRotation;
  FbxAMatrix inversePostRotation;

  // The local rotation matrix of angles in degrees. `forLimits` asks for the form that applies the
  // rotation space even where it is there for the limits only.
  FbxAMatrix DoF2LRM(const FbxVector4& rotation, bool forLimits = false) const;
  // The angles of a local rotation matrix: the inverse of DoF2LRM.
  FbxVector4 LRM2DoF(const FbxAMatrix& matrix, bool forLimits = false) const;
  // The angles after the rotation limits, which apply in the node's rotation space.
  FbxVector4 ApplyRotationLimits(const FbxVector4& rotation) const;
  // The local translation: `translation` plus what the pivots and offsets add.
  FbxVector4 DoF2LT(const FbxVector4& translation, const FbxAMatrix& localRotation,
                    const FbxVector4& scaling) const;
};
