// Geometry is computed in doubles; the character model holds 32-bit floats. This is where values
// pass from one to the other.
#pragma once

#include <cmath>

#include "cal3d/model/vector.h"
#include "fbx/math/fbx_vector.h"

inline CalVector ToCalVector(const FbxVector4& v) {
  return {static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2])};
}

inline CalVector4 ToCalVector4(const FbxVector4& v) {
  return {static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2]),
          static_cast<float>(v[3])};
}

inline CalQuaternion ToCalQuaternion(const FbxQuaternion& q) {
  return {static_cast<float>(q[0]), static_cast<float>(q[1]), static_cast<float>(q[2]),
          static_cast<float>(q[3])};
}

// Of length 1 in floats, unless it is zero. The fourth component is 0.
inline CalVector4 ToCalNormal(const FbxDouble3& normal) {
  const CalVector n = ToCalVector(FbxVector4(normal));
  const float length = std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z);
  if (length == 0.0F) return n.asCalVector4();
  return {n.x / length, n.y / length, n.z / length, 0.0F};
}
