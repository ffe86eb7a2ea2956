#include "fbx/scene/fbx_transform.h"

FbxVector4 FbxLimits::Apply(const FbxVector4& value) const {
  FbxVector4 limited = value;
  if (!active) return limited;
  for (size_t i = 0; i < 3; ++i) {
    if (minActive[i] && limited[i] < min[i]) limited[i] = min[i];
    if (maxActive[i] && limited[i] > max[i]) limited[i] = max[i];
  }
  return limited;
}

bool FbxLimits::HasAny() const {
  for (size_t i = 0; i < 3; ++i) {
    if (minActive[i] || maxActive[i]) return active;
  }
  return false;
}

FbxAMatrix FbxTransform::DoF2LRM(const FbxVector4& rotation, bool forLimits) const {
  FbxAMatrix matrix;
  if (!rotationActive || (rotationSpaceForLimitOnly && !forLimits)) {
    matrix.SetROnly(rotation);
    return matrix;
  }
  rotationOrder.V2M(matrix, rotation);
  if (hasPreRotation) matrix = preRotation * matrix;
  if (hasPostRotation) matrix *= inversePostRotation;
  return matrix;
}

FbxVector4 FbxTransform::LRM2DoF(const FbxAMatrix& matrix, bool forLimits) const {
  if (!rotationActive || (rotationSpaceForLimitOnly && !forLimits)) return matrix.GetR();
  FbxAMatrix rotation = matrix;
  if (hasPreRotation) rotation = preRotation.Inverse() * rotation;
  if (hasPostRotation) rotation *= postRotation;
  return rotationOrder.M2V(rotation);
}

FbxVector4 FbxTransform::ApplyRotationLimits(const FbxVector4& rotation) const {
  if (!rotationLimits.HasAny()) return rotation;
  if (!rotationSpaceForLimitOnly) return rotationLimits.Apply(rotation);
  // The limits' space has an order and pre and post rotations that the rotation itself lacks.
  const FbxVector4 limited = rotationLimits.Apply(LRM2DoF(DoF2LRM(rotation), true));
  return LRM2DoF(DoF2LRM(limited, true));
}

FbxVector4 FbxTransform::DoF2LT(const FbxVector4& translation, const FbxAMatrix& localRotation,
                                const FbxVector4& scaling) const {
  FbxVector4 v(0.0, 0.0, 0.0);
  if (hasScalingPivot) {
    for (size_t i = 0; i < 3; ++i) v[i] = (1.0 - scaling[i]) * scalingPivot[i];
  }
  if (hasScalingOffset) v += scalingOffset;
  if (hasRotationPivot) {
    v = localRotation.MultT(v - rotationPivot) + rotationPivot;
  } else if (hasScalingPivot || hasScalingOffset) {
    v = localRotation.MultT(v);
  }
  if (hasRotationOffset) v += rotationOffset;
  return {translation[0] + v[0], translation[1] + v[1], translation[2] + v[2]};
}
