#include "fbx/anim/kf_curve.h"

#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "tests/fbx/anim/curves.h"

namespace {

using Attr = KFCurveKeyAttr;

constexpr uint32_t kUser = Attr::kCubic | Attr::kTangentUser;

uint32_t Bits(float value) { return std::bit_cast<uint32_t>(value); }

TEST(KFCurve, WithoutKeysGivesTheDefaultAndWithOneKeyItsValue) {
  KFCurve curve;
  curve.SetDefaultValue(7.5F);
  EXPECT_EQ(curve.Evaluate(Seconds(3)), 7.5F);
  EXPECT_EQ(curve.KeyGetValue(0), 0.0F);
  curve = Curve({4}, {kUser, {}});
  EXPECT_EQ(curve.Evaluate(Seconds(-9)), 4.0F);
  EXPECT_EQ(curve.RightDerivative(0), 0.0);
}

TEST(KFCurve, InterpolatesByTheLeftKeysAttribute) {
  EXPECT_EQ(Curve({0, 1}, {Attr::kLinear, {}}).Evaluate(Seconds(0.25)), 0.25F);
  EXPECT_EQ(Curve({3, 5}, {Attr::kConstant, {}}).Evaluate(Seconds(0.99)), 3.0F);
  const KFCurve next = Curve({3, 5, 8}, {Attr::kConstant | Attr::kConstantNext, {}});
  EXPECT_EQ(next.Evaluate(Seconds(0.01)), 5.0F);
  EXPECT_EQ(next.Evaluate(Seconds(1)), 5.0F) << "on a key its own value holds";
  EXPECT_EQ(Curve({3, 5}, {0, {}}).Evaluate(Seconds(0.5)), 0.0F) << "unknown interpolation";
  // Two runs; the third key's attribute is missing and doesn't matter to the last key.
  KFCurve mixed = Curve({0, 10, 20}, {});
  mixed.SetAttributes({{Attr::kLinear, {}}, {Attr::kConstant, {}}}, {1, 1});
  EXPECT_EQ(mixed.Evaluate(Seconds(0.5)), 5.0F);
  EXPECT_EQ(mixed.Evaluate(Seconds(1.5)), 10.0F);
  EXPECT_EQ(mixed.KeyGetAttr(2).flags, 0U);
}

TEST(KFCurve, AutoTangentsMixTheSlopesToTheNeighbours) {
  struct Case {
    uint32_t flags;
    float percent;
    std::vector<float> values;  // of keys a second apart
    double slope;               // at key 1
  };
  constexpr uint32_t kClamped = Attr::kTangentAuto | Attr::kClamped;
  constexpr uint32_t kProgressive = Attr::kTangentAuto | Attr::kProgressiveClamp;
  const Case cases[] = {
      {Attr::kTangentAuto, 0, {0, 2, 8}, 4},
      {Attr::kTangentAutoBreak, 0, {0, 2, 8}, 4},
      {Attr::kTangentAuto, 50, {0, 2, 8}, 3},
      {Attr::kTangentAuto, -50, {0, 2, 8}, 5},
      {Attr::kTangentAuto, 100, {0, 2, 8}, 2},
      {Attr::kTangentAuto, -100, {0, 2, 8}, 6},
      {Attr::kTangentAuto, 600, {0, 2, 8}, -8},  // beyond 500 by the same line
      {Attr::kTangentAuto, 0, {0, 2, 0}, 0},
      {Attr::kTangentAuto, 50, {0, 2, 1}, 1.25},
      {kClamped, 50, {0, 2, 1}, 0},
      {kClamped, 50, {0, 2, 2}, 0},
      {kClamped, 0, {0, 1, 11}, 5.5},
      {Attr::kTangentAuto | 0x4000, 50, {0, 2, 1}, 1.25},  // half a progressive clamp is none
      {kProgressive, 0, {0, 1, 11}, 3},
      {kProgressive, 0, {0, -1, -11}, -3},
      {kProgressive, 0, {0, 2, 8}, 4},
      {kProgressive, 0, {0, 2, 1}, 0},
  };
  for (const Case& c : cases) {
    const uint32_t bits = Bits(c.percent);
    const KFCurve curve = Curve(c.values, {Attr::kCubic | c.flags, {bits, bits, 0, 0}});
    EXPECT_DOUBLE_EQ(curve.RightDerivative(1), c.slope) << c.flags << " at " << c.percent;
    EXPECT_DOUBLE_EQ(curve.LeftDerivative(1), c.slope) << c.flags << " at " << c.percent;
    // At the ends there is one neighbour.
    EXPECT_EQ(curve.RightDerivative(0), c.values[1] - c.values[0]);
    EXPECT_EQ(curve.LeftDerivative(2), c.values[2] - c.values[1]);
  }
  EXPECT_EQ(Curve({0, 10, 20}, {Attr::kCubic | kClamped, {}}).Evaluate(Seconds(0.25)), 2.5F);
  // Each side has its percent, the left one kept with the key before.
  KFCurve mixed = Curve({0, 2, 8, 0}, {});
  const Attr broken{Attr::kCubic | Attr::kTangentAutoBreak, {Bits(100), Bits(-100), 0, 0}};
  mixed.SetAttributes({broken, {kUser, {Bits(7), Bits(9), 0, 0}}}, {2, 2});
  EXPECT_DOUBLE_EQ(mixed.LeftDerivative(1), 6);
  EXPECT_DOUBLE_EQ(mixed.RightDerivative(1), 2);
  // What that word means is told by the key whose tangent it is.
  EXPECT_DOUBLE_EQ(mixed.LeftDerivative(2), -100);
  mixed.SetAttributes({{kUser, {0, Bits(100), 0, 0}}, broken, {}}, {1, 1, 2});
  EXPECT_DOUBLE_EQ(mixed.LeftDerivative(1), 2);
  EXPECT_DOUBLE_EQ(mixed.LeftDerivative(2), -8);
}

TEST(KFCurve, ExtrapolatesByModeAndCount) {
  using Extrapolation = KFCurve::Extrapolation;
  // 0 at 0 s up to 4 at 1 s, then down to 2 at 2 s.
  const auto value = [](Extrapolation both, double seconds) {
    KFCurve curve = Curve({0, 4, 2}, {Attr::kLinear, {}});
    curve.SetPreExtrapolation(both);
    curve.SetPostExtrapolation(both);
    return curve.Evaluate(Seconds(seconds));
  };
  struct Case {
    Extrapolation extrapolation;
    double seconds;
    float value;
  };
  const Case cases[] = {
      {{KFCurve::eConstant, -1}, -5, 0},          {{KFCurve::eConstant, -1}, 5, 2},
      {{KFCurve::eRepetition, -1}, -0.5, 3},      {{KFCurve::eRepetition, -1}, 2.5, 2},
      {{KFCurve::eRepetition, -1}, -100.5, 3},    {{KFCurve::eRepetition, -1}, 101.5, 3},
      {{KFCurve::eRepetition, 1}, -1.5, 2},       {{KFCurve::eRepetition, 1}, -2.5, 0},
      {{KFCurve::eRepetition, 1}, 4.5, 2},        {{KFCurve::eRepetition, 0}, 2.5, 2},
      {{KFCurve::eMirrorRepetition, -1}, -.5, 2}, {{KFCurve::eMirrorRepetition, -1}, 2.5, 3},
      {{KFCurve::eMirrorRepetition, -1}, -3, 4},  {{KFCurve::eMirrorRepetition, -1}, -2.5, 3},
      {{KFCurve::eMirrorRepetition, 1}, -9, 2},   {{KFCurve::eMirrorRepetition, 2}, -9, 0},
      {{KFCurve::eMirrorRepetition, 1}, 9, 0},    {{KFCurve::eMirrorRepetition, 2}, 9, 2},
      {{KFCurve::eKeepSlope, -1}, -2, -8},        {{KFCurve::eKeepSlope, -1}, 4, -2},
      {{KFCurve::eKeepSlope, 1}, -9, -8},         {{KFCurve::eKeepSlope, 1}, 9, -2},
      {{KFCurve::eKeepSlope, 0}, -9, 0},          {{KFCurve::eRelativeRepetition, -1}, 3, 6},
      {{KFCurve::eRelativeRepetition, -1}, 4, 4}, {{KFCurve::eRelativeRepetition, -1}, -1, 2},
      {{KFCurve::eRelativeRepetition, 2}, 99, 6}, {{KFCurve::eRelativeRepetition, 2}, -99, -4},
      {{KFCurve::eRelativeRepetition, 2}, 6, 6},  {{KFCurve::eRelativeRepetition, -1}, -4, -4},
  };
  for (const Case& c : cases) {
    EXPECT_NEAR(value(c.extrapolation, c.seconds), c.value, 1e-5)
        << "mode " << c.extrapolation.mode << " count " << c.extrapolation.count << " at "
        << c.seconds;
  }
  EXPECT_EQ(KFCurve::ExtrapolationOfLetter('A'), KFCurve::eRelativeRepetition);
  EXPECT_EQ(KFCurve::ExtrapolationOfLetter('?'), KFCurve::eConstant);
}

TEST(KFCurve, HintChangesNoResult) {
  std::mt19937 random(1);
  // Keys one second apart; then in pairs at one time, and one of them out of order.
  for (const int round : {0, 1, 2}) {
    std::vector<int64_t> times;
    for (int i = 0; i < 50; ++i) times.push_back(i / (round + 1) * FbxTime::kTicksPerSecond);
    if (round == 2) std::swap(times[10], times[30]);
    KFCurve curve;
    curve.SetKeys(ShareArray(times), std::vector<float>(50));
    int last = -7;
    for (int i = 0; i < 500; ++i) {
      const FbxTime time = Seconds((static_cast<double>(random() % 6000) - 500.0) / 100.0);
      if (random() % 50 == 0) last = static_cast<int>(random() % 100) - 50;
      EXPECT_EQ(curve.KeyFind(time, &last), curve.KeyFind(time));
    }
  }
  int last = 0;
  Curve({0, 1, 2}, {Attr::kLinear, {}}).Evaluate(Seconds(1.5), &last);
  EXPECT_EQ(last, 1);
}

TEST(KFCurve, KeysAtOneTimeMakeAStep) {
  KFCurve curve;
  const int64_t s = FbxTime::kTicksPerSecond;
  curve.SetKeys(ShareArray<int64_t>({0, s, s, 2 * s}), {0, 1, 5, 6});
  for (const uint32_t flags : {uint32_t{Attr::kLinear}, Attr::kCubic | Attr::kTangentTCB, kUser}) {
    curve.SetAttributes({{flags, {}}}, {4});
    EXPECT_EQ(curve.Evaluate(Seconds(1)), 5.0F);
    for (const double t : {0.5, 1.5}) EXPECT_TRUE(std::isfinite(curve.Evaluate(Seconds(t))));
  }
}

}  // namespace
