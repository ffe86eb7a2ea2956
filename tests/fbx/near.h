// Vectors and matrices that are alike up to rounding.
#pragma once

#include <gtest/gtest.h>

#include "fbx/math/fbx_matrix.h"

// Compares the first three components.
inline void ExpectNear(const FbxVector4& a, const FbxVector4& b, double tolerance = 1e-6) {
  for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(a[i], b[i], tolerance) << "component " << i;
}

inline void ExpectNear(const FbxAMatrix& a, const FbxAMatrix& b, double tolerance = 1e-9) {
  for (int i = 0; i < 16; ++i) EXPECT_NEAR(a[i], b[i], tolerance) << "element " << i;
}
