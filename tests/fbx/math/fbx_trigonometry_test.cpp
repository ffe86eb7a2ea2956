#include "fbx/math/fbx_trigonometry.h"

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

namespace {

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
  for (const double start : {0.0, -360.0, 1e6 * 360, 1e12 * 360}) {
    for (size_t i = 0; i < 4; ++i) {
      const SinCos turn = SinCosOfDegrees(start + 90.0 * static_cast<double>(i));
      EXPECT_EQ(turn.sin, turns[i].sin);
      EXPECT_EQ(turn.cos, turns[i].cos);
      EXPECT_EQ(std::signbit(turn.sin), turns[i].sin < 0) << "no negative zeros";
      EXPECT_EQ(std::signbit(turn.cos), turns[i].cos < 0) << "no negative zeros";
    }
  }
  EXPECT_FALSE(std::signbit(SinCosOfDegrees(-0.0).sin));
  // Zeros of either sign, as std::atan2 takes them, and the diagonals.
  const double values[] = {0.0, -0.0, 3.0, -3.0};
  for (const double y : values) {
    for (const double x : values) {
      const double truth = std::atan2(y, x) * (180.0 / std::numbers::pi);
      EXPECT_EQ(std::bit_cast<uint64_t>(DegreesOf({y, x})), std::bit_cast<uint64_t>(truth));
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
