#include "fbx/math/fbx_matrix.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace {

void ExpectNear(const FbxVector4& a, const FbxVector4& b, double tolerance = 1e-12) {
  for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(a[i], b[i], tolerance) << "component " << i;
}

void ExpectNear(const FbxAMatrix& a, const FbxAMatrix& b, double tolerance = 1e-12) {
  for (int i = 0; i < 16; ++i) {
    EXPECT_NEAR(a.Get(i / 4, i % 4), b.Get(i / 4, i % 4), tolerance) << "element " << i;
  }
}

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
  EXPECT_EQ(v + FbxVector4(1, 1, 1, 1), FbxVector4(4, 5, 1, 8));
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
  EXPECT_TRUE(m.IsIdentity());
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
  FbxAMatrix m;
  m.SetR({10, 20, 30});
  ExpectNear(m, About(2, 30) * About(1, 20) * About(0, 10));
  FbxAMatrix byQuaternion;
  byQuaternion.SetQ(FbxQuaternion::FromEulerXYZ({10, 20, 30}));
  ExpectNear(byQuaternion, m);
}

TEST(FbxAMatrix, PartsComeBackOutAndReassemble) {
  const FbxVector4 t(1, 2, 3), r(10, -20, 130), s(2, 3, 4);
  const FbxAMatrix m(t, r, s);
  EXPECT_EQ(m.GetT(), t);
  ExpectNear(m.GetR(), r);
  ExpectNear(m.GetS(), s);
  // At the pole only the sum of two angles is known.
  const FbxAMatrix pole({0, 0, 0}, {20, 90, 35}, {1, 1, 1});
  FbxAMatrix again;
  again.SetR(pole.GetR());
  ExpectNear(again, pole);
}

TEST(FbxAMatrix, MirrorIsReportedInTheFirstTwoScales) {
  const FbxAMatrix m({0, 0, 0}, {0, 0, 0}, {1, 1, -1});
  EXPECT_EQ(m.GetS(), FbxVector4(-1, -1, 1));
  const FbxAMatrix turned({1, 2, 3}, {30, 40, 50}, {2, 3, -4});
  ExpectNear(turned.GetS(), {-2, -3, 4});
  // Rows in a plane mirror nothing, whichever way rounding moves them.
  const FbxAMatrix inPlane(FbxDouble4x4{1, 0, 0, 0, 0, 1, 0, 0, 3, 4, -1e-17, 0, 0, 0, 0, 1});
  EXPECT_EQ(inPlane.GetS(), FbxVector4(1, 1, 5));
  EXPECT_TRUE(inPlane.IsFlat());
  EXPECT_FALSE(turned.IsFlat());
  // A row of length 0 gives no NaN.
  const FbxAMatrix flat({0, 0, 0}, {0, 0, 0}, {1, 0, 1});
  EXPECT_EQ(flat.GetR(), FbxVector4(0, 0, 0));
}

TEST(FbxAMatrix, ProductAppliesTheRightFactorFirst) {
  const FbxAMatrix a({1, 2, 3}, {10, 20, 30}, {2, 3, 4});
  const FbxAMatrix b({-4, 5, 6}, {70, -20, 3}, {1, -0.5, 2});
  const FbxVector4 p(7, 8, 9);
  ExpectNear((a * b).MultT(p), a.MultT(b.MultT(p)), 1e-10);
  ExpectNear((a * b) * (a * b).Inverse(), FbxAMatrix());
  // Tiny scales still invert; a flat matrix has no inverse.
  const FbxAMatrix tiny({1, 2, 3}, {10, 20, 30}, {1e-9, 1e-9, 1e-9});
  ExpectNear(tiny.Inverse() * tiny, FbxAMatrix(), 1e-6);
  EXPECT_TRUE(FbxAMatrix({1, 2, 3}, {0, 0, 0}, {1, 0, 1}).Inverse().IsIdentity());
}

TEST(FbxAMatrix, DropsTheLastColumnOfAGeneralMatrix) {
  FbxMatrix general;
  general.At(0, 3) = 5;
  general.At(3, 3) = 2;
  general.At(3, 0) = 9;
  const FbxAMatrix m(general);
  EXPECT_EQ(m.Get(0, 3), 0);
  EXPECT_EQ(m.Get(3, 3), 1);
  EXPECT_EQ(m[12], 9);
}

TEST(FbxRotationOrder, FirstNamedAxisRotatesFirst) {
  constexpr int kAxes[7][3] = {{0, 1, 2}, {0, 2, 1}, {1, 2, 0}, {1, 0, 2},
                               {2, 0, 1}, {2, 1, 0}, {0, 1, 2}};
  const FbxVector4 degrees(10, 20, 30);
  for (int i = 0; i < 7; ++i) {
    const FbxRotationOrder order(static_cast<EFbxRotationOrder>(i));
    FbxAMatrix expected;
    for (const int axis : kAxes[i]) {
      expected = About(axis, degrees[static_cast<size_t>(axis)]) * expected;
    }
    FbxAMatrix m({1, 2, 3}, {0, 0, 0}, {1, 1, 1});
    order.V2M(m, degrees);
    EXPECT_EQ(m.GetT(), FbxVector4(1, 2, 3)) << "the translation stays";
    m.SetT({0, 0, 0});
    SCOPED_TRACE(i);
    ExpectNear(m, expected);
    ExpectNear(order.M2V(m), degrees);
  }
  EXPECT_EQ(FbxRotationOrder(static_cast<EFbxRotationOrder>(-1)).GetOrder(), eEulerXYZ);
  EXPECT_EQ(FbxRotationOrder(static_cast<EFbxRotationOrder>(7)).GetOrder(), eEulerXYZ);
}

}  // namespace
