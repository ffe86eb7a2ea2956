// The remapping of exported coordinates that --up, --front and --coord ask for. Loading has already
// brought every scene to Z up, -Y front, right-handed, so this is the identity for the defaults.
//
// The component that `upAxis` names, with its sign, becomes z; the one that `frontAxis` names, with
// the opposite sign, becomes y; x completes a right-handed system, or its mirror image for "left".
// An axis string names the axis that it ends with and is negative if it starts with "-". Axes that
// are no two different letters change nothing.
#pragma once

#include <array>

#include "converter/base/conversion_arguments.h"
#include "fbx/math/fbx_vector.h"

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
