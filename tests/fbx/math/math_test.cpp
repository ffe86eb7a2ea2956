#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numbers>
#include <random>

#include <gtest/gtest.h>

#include "fbx/math/fbx_matrix.h"
#include "fbx/math/fbx_trigonometry.h"
#include "tests/fbx/near.h"

namespace {

FbxAMatrix About(int axis, double degrees) {
  FbxVector4 angles;
  angles[static_cast<size_t>(axis)] = degrees;
  FbxAMatrix matrix;
  matrix.SetR(angles);
  return matrix;
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

constexpr long double kRadians = std::numbers::pi_v<long double> / 180;

// How far a value is from the true one, in units of the true one's last place.
double Error(double value, long double truth) {
  const double near = std::abs(static_cast<double>(truth));
  const double unit = std::nextafter(near, std::numeric_limits<double>::infinity()) - near;
  return static_cast<double>(std::abs(value - truth) / unit);
}

// Angles of every size: few turns, many turns, tiny ones, near whole quarter degrees.
double RandomAngle(std::mt19937_64& random) {
  const double unit = static_cast<double>(static_cast<int64_t>(random())) * 0x1p-63;
  const int exponent = static_cast<int>(random() % 300);
  switch (random() % 4) {
    case 0:
      return unit * 720;
    case 1:
      return unit * 1e7;
    case 2:
      return std::ldexp(unit, -exponent);
    default:
      return std::round(unit * 1440) / 4 + std::ldexp(unit, -exponent);
  }
}

TEST(Trigonometry, StaysWithinItsErrorBound) {
  std::mt19937_64 random(1);
  double sine = 0, cosine = 0, angle = 0;
  for (int i = 0; i < 400000; ++i) {
    const double degrees = RandomAngle(random);
    const SinCos turn = SinCosOfDegrees(degrees);
    // The remainder is exact, so the reference loses nothing near its zeros.
    int quarters = 0;
    const long double rest = std::remquo(static_cast<long double>(degrees), 90.0L, &quarters);
    const long double s = std::sin(rest * kRadians), c = std::cos(rest * kRadians);
    const std::array<long double, 5> around = {s, c, -s, -c, s};
    const size_t quarter = static_cast<unsigned>(quarters) % 4U;
    sine = std::max(sine, Error(turn.sin, around[quarter]));
    cosine = std::max(cosine, Error(turn.cos, around[quarter + 1]));
    // Sine and cosine of another angle make a point that is on no circle.
    const SinCos point = {turn.sin, i % 2 == 0 ? turn.cos : RandomAngle(random)};
    const long double truth =
        std::atan2(static_cast<long double>(point.sin), static_cast<long double>(point.cos));
    if (truth != 0) angle = std::max(angle, Error(DegreesOf(point), truth / kRadians));
  }
  EXPECT_LT(sine, 0.75);
  EXPECT_LT(cosine, 0.75);
  EXPECT_LT(angle, 0.75);
}

TEST(Trigonometry, QuarterTurnsAreExact) {
  const std::array<SinCos, 4> turns = {{{0, 1}, {1, 0}, {0, -1}, {-1, 0}}};
  const auto bits = [](double value) { return std::bit_cast<uint64_t>(value); };
  for (const double start : {0.0, -360.0, 1e6 * 360, 1e12 * 360}) {
    for (size_t i = 0; i < 4; ++i) {
      const SinCos turn = SinCosOfDegrees(start + 90.0 * static_cast<double>(i));
      EXPECT_EQ(bits(turn.sin), bits(turns[i].sin)) << "no negative zeros";
      EXPECT_EQ(bits(turn.cos), bits(turns[i].cos)) << "no negative zeros";
    }
  }
  // Zeros of either sign, as std::atan2 takes them, and the diagonals.
  const double values[] = {0.0, -0.0, 3.0, -3.0};
  for (const double y : values) {
    for (const double x : values) {
      EXPECT_EQ(bits(DegreesOf({y, x})), bits(std::atan2(y, x) * (180.0 / std::numbers::pi)));
    }
  }
}

TEST(Trigonometry, WhatIsNoAngleGivesNaN) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double degrees : {infinity, -infinity, std::nan("")}) {
    EXPECT_TRUE(std::isnan(SinCosOfDegrees(degrees).sin));
    EXPECT_TRUE(std::isnan(SinCosOfDegrees(degrees).cos));
  }
  EXPECT_TRUE(std::isnan(DegreesOf({std::nan(""), 1.0})));
}

// One number for the bits of many results. It may only change together with the functions: another
// compiler, processor or optimisation must give the same.
TEST(Trigonometry, GivesTheSameBitsEverywhere) {
  std::mt19937_64 random(2);
  uint64_t sum = 0;
  const auto add = [&sum](double value) {
    sum = (sum ^ std::bit_cast<uint64_t>(value)) * 1099511628211U;
  };
  for (int i = 0; i < 100000; ++i) {
    const SinCos turn = SinCosOfDegrees(RandomAngle(random));
    add(turn.sin);
    add(turn.cos);
    add(DegreesOf(turn));
  }
  EXPECT_EQ(sum, 8708668363416445558U);
}

}  // namespace
