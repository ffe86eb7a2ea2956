#include "fbx/math/fbx_vector.h"

#include <cmath>
#include <numbers>

FbxQuaternion FbxQuaternion::FromEulerXYZ(const FbxVector4& degrees) {
  constexpr double kHalfRadians = std::numbers::pi / 360.0;
  const double sx = std::sin(degrees[0] * kHalfRadians), cx = std::cos(degrees[0] * kHalfRadians);
  const double sy = std::sin(degrees[1] * kHalfRadians), cy = std::cos(degrees[1] * kHalfRadians);
  const double sz = std::sin(degrees[2] * kHalfRadians), cz = std::cos(degrees[2] * kHalfRadians);
  return {sx * cy * cz - cx * sy * sz, cx * sy * cz + sx * cy * sz, cx * cy * sz - sx * sy * cz,
          cx * cy * cz + sx * sy * sz};
}
