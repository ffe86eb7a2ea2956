#include "fbx/math/fbx_matrix.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/fbx/near.h"

namespace {

FbxAMatrix About(int axis, double degrees) {
  FbxVector4 angles;
  angles[static_cast<size_t>(axis)] = degrees;
  FbxAMatrix matrix;
  matrix.SetR(angles);
  return matrix;
}

TEST(FbxVector4, ProductsLeaveTheFourthComponentOut) {
  FbxVector4 v(3, 4, 0, 7);
  EXPECT_EQ(v.Length(), 5.0);
  EXPECT_EQ(FbxVector4(1, 0, 0).CrossProduct({0, 1, 0}), FbxVector4(0, 0, 1, 0));
  v.Normalize();
  EXPECT_EQ(v, FbxVector4(0.6, 0.8, 0, 7));
  EXPECT_TRUE(FbxVector4().IsZero(3));
  EXPECT_FALSE(FbxVector4().IsZero());
}

TEST(FbxAMatrix, IdentityHasNoParts) {
  FbxAMatrix m({1, 2, 3}, {10, 20, 30}, {4, 5, 6});
  m.SetIdentity();
  EXPECT_EQ(m.GetT(), FbxVector4(0, 0, 0));
  EXPECT_EQ(m.GetS(), FbxVector4(1, 1, 1));
  EXPECT_EQ(m.GetR(), FbxVector4(0, 0, 0));
  for (const double angle : m.GetR().data) EXPECT_FALSE(std::signbit(angle));
  m.SetT({1e-3, 0, 0});
  EXPECT_FALSE(m.IsIdentity(1e-4));
  EXPECT_TRUE(m.IsIdentity(1e-2));
  m.SetT({std::numeric_limits<double>::quiet_NaN(), 0, 0});
  EXPECT_FALSE(m.IsIdentity(1e9));
}

TEST(FbxAMatrix, RotationsTurnTheRightWayRound) {
  ExpectNear(About(2, 90).MultT({1, 0, 0}), {0, 1, 0});
  ExpectNear(About(0, 90).MultT({0, 1, 0}), {0, 0, 1});
  ExpectNear(About(1, 90).MultT({0, 0, 1}), {1, 0, 0});
  FbxAMatrix byQuaternion;
  byQuaternion.SetQ(FbxQuaternion::FromEulerXYZ({10, 20, 30}));
  ExpectNear(byQuaternion, About(2, 30) * About(1, 20) * About(0, 10));
}

TEST(FbxAMatrix, PartsComeBackOutAndReassemble) {
  const FbxVector4 t(1, 2, 3), r(10, -20, 130);
  const FbxAMatrix m(t, r, {2, 3, 4});
  EXPECT_EQ(m.GetT(), t);
  ExpectNear(m.GetR(), r);
  ExpectNear(m.GetS(), {2, 3, 4});
  EXPECT_FALSE(m.IsFlat());
  // At the pole only the sum of two angles is known.
  const FbxAMatrix pole({0, 0, 0}, {20, 90, 35}, {1, 1, 1});
  FbxAMatrix again;
  again.SetR(pole.GetR());
  ExpectNear(again, pole);
  // A mirror is reported in the first two scales.
  ExpectNear(FbxAMatrix(t, {30, 40, 50}, {2, 3, -4}).GetS(), {-2, -3, 4});
  // Rows in a plane mirror nothing, whichever way rounding moves them.
  const FbxAMatrix inPlane(FbxDouble4x4{1, 0, 0, 0, 0, 1, 0, 0, 3, 4, -1e-17, 0, 0, 0, 0, 1});
  EXPECT_EQ(inPlane.GetS(), FbxVector4(1, 1, 5));
  EXPECT_TRUE(inPlane.IsFlat());
  // A row of length 0 gives no NaN, and no inverse.
  const FbxAMatrix flat(t, {0, 0, 0}, {1, 0, 1});
  EXPECT_EQ(flat.GetR(), FbxVector4(0, 0, 0));
  EXPECT_TRUE(flat.Inverse().IsIdentity());
}

TEST(FbxAMatrix, ProductAppliesTheRightFactorFirst) {
  const FbxAMatrix a({1, 2, 3}, {10, 20, 30}, {2, 3, 4});
  const FbxAMatrix b({-4, 5, 6}, {70, -20, 3}, {1, -0.5, 2});
  const FbxVector4 p(7, 8, 9);
  ExpectNear((a * b).MultT(p), a.MultT(b.MultT(p)));
  ExpectNear((a * b) * (a * b).Inverse(), FbxAMatrix());
  // Tiny scales still invert.
  const FbxAMatrix tiny({1, 2, 3}, {10, 20, 30}, {1e-9, 1e-9, 1e-9});
  ExpectNear(tiny.Inverse() * tiny, FbxAMatrix(), 1e-6);
}

TEST(FbxAMatrix, DropsTheLastColumnOfAGeneralMatrix) {
  FbxMatrix general;
  general.At(0, 3) = 5;
  general.At(3, 3) = 2;
  general.At(3, 0) = 9;
  EXPECT_EQ(FbxAMatrix(general), FbxAMatrix({9, 0, 0}, {0, 0, 0}, {1, 1, 1}));
}

TEST(FbxRotationOrder, FirstNamedAxisRotatesFirst) {
  // The one past the last and every other number stand for the first.
  constexpr int kAxes[8][3] = {{0, 1, 2}, {0, 2, 1}, {1, 2, 0}, {1, 0, 2},
                               {2, 0, 1}, {2, 1, 0}, {0, 1, 2}, {0, 1, 2}};
  const FbxVector4 degrees(10, 20, 30);
  for (int i = -1; i < 8; ++i) {
    SCOPED_TRACE(i);
    const FbxRotationOrder order(static_cast<EFbxRotationOrder>(i));
    FbxAMatrix expected;
    for (const int axis : kAxes[i < 0 ? 0 : i]) {
      expected = About(axis, degrees[static_cast<size_t>(axis)]) * expected;
    }
    ExpectNear(order.M2V(expected), degrees);
    // The translation stays.
    expected.SetT({1, 2, 3});
    FbxAMatrix m({1, 2, 3}, {0, 0, 0}, {1, 1, 1});
    order.V2M(m, degrees);
    ExpectNear(m, expected);
  }
}

}  // namespace
