// From the scene's doubles to the 32-bit floats of the character model, and the remapping of
// exported coordinates that --up, --front and --coord ask for. Loading has already
// brought every scene to Z up, -Y front, right-handed, so this is the identity for the defaults.
//
// The component that `upAxis` names, with its sign, becomes z; the one that `frontAxis` names, with
// the opposite sign, becomes y; x completes a right-handed system, or its mirror image for "left".
// An axis string names the axis that it ends with and is negative if it starts with "-". Axes that
// are no two different letters change nothing.
#pragma once

#include <array>
#include <cmath>

#include "cal3d/model/vector.h"
#include "converter/base/conversion_arguments.h"
#include "fbx/math/fbx_matrix.h"

// x, y, z, and a fourth component that is never touched.
using FloatQuad = std::array<float, 4>;

// Remaps the first three components in place.
void AxisMod(const ConversionArguments& args, FloatQuad& value);

// New x, y and z from selectors in plus or minus 1 (x), 2 (y), 3 (z): the sign times the old
// component. AxisAssign(value, 1, 2, 3) is the identity.
void AxisAssign(FloatQuad& value, int a, int b, int c);

// The same for doubles. The components pass through 32-bit floats whatever the axes are.
void AxisModOnVector(const ConversionArguments& args, FbxVector4& vector);
// Remaps x, y, z like a vector and keeps w, for "left" too: its asymmetry is part of the format.
void AxisModOnQuat(const ConversionArguments& args, FbxQuaternion& quaternion);

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
