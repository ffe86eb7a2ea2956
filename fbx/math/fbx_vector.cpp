#include "fbx/math/fbx_vector.h"

#include <cmath>

#include "fbx/math/fbx_trigonometry.h"

double FbxVector4::Length() const { return std::sqrt(DotProduct(*this)); }

void FbxVector4::Normalize() {
  const double length = Length();
  if (length == 0.0) return;
  for (size_t i = 0; i < 3; ++i) data[i] /= length;
}

FbxQuaternion FbxQuaternion::FromEulerXYZ(const FbxVector4& degrees) {
  FbxDouble3 sines, cosines;
  for (size_t i = 0; i < 3; ++i) {
    const SinCos half = SinCosOfDegrees(degrees[i] * 0.5);
    sines[i] = half.sin;
    cosines[i] = half.cos;
  }
  return FromHalfAnglesXYZ(sines, cosines);
}

FbxQuaternion FbxQuaternion::FromHalfAnglesXYZ(const FbxDouble3& sines, const FbxDouble3& cosines) {
  const auto [sx, sy, sz] = sines;
  const auto [cx, cy, cz] = cosines;
  return {sx * cy * cz - cx * sy * sz, cx * sy * cz + sx * cy * sz, cx * cy * sz - sx * sy * cz,
          cx * cy * cz + sx * sy * sz};
}
