#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "converter/space/axis_mod.h"
#include "converter/space/frames.h"
#include "fbx/core/fbx_time.h"

namespace {

using testing::ElementsAre;

ConversionArguments Axes(const std::string& up, const std::string& front,
                         const std::string& coord = "") {
  ConversionArguments args;
  args.upAxis = up;
  args.frontAxis = front;
  args.coordinateSystem = coord;
  return args;
}

// Where x=1, y=2, z=3 go.
FloatQuad Moved(const ConversionArguments& args) {
  FloatQuad value{1, 2, 3, 4};
  AxisMod(args, value);
  return value;
}

TEST(AxisMod, EveryPairOfAxes) {
  struct Row {
    const char* up;
    const char* front;
    float x, y, z;
  };
  constexpr Row kRows[] = {
      {"-x", "-y", 3, 2, -1},  {"-x", "y", -3, -2, -1}, {"-x", "-z", -2, 3, -1},
      {"-x", "z", 2, -3, -1},  {"x", "-y", -3, 2, 1},   {"x", "y", 3, -2, 1},
      {"x", "-z", 2, 3, 1},    {"x", "z", -2, -3, 1},   {"-y", "-x", -3, 1, -2},
      {"-y", "x", 3, -1, -2},  {"-y", "-z", 1, 3, -2},  {"-y", "z", -1, -3, -2},
      {"y", "-x", 3, 1, 2},    {"y", "x", -3, -1, 2},   {"y", "-z", -1, 3, 2},
      {"y", "z", 1, -3, 2},    {"-z", "-x", 2, 1, -3},  {"-z", "x", -2, -1, -3},
      {"-z", "-y", -1, 2, -3}, {"-z", "y", 1, -2, -3},  {"z", "-x", -2, 1, 3},
      {"z", "x", 2, -1, 3},    {"z", "-y", 1, 2, 3},    {"z", "y", -1, -2, 3},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(std::string(row.up) + " " + row.front);
    EXPECT_THAT(Moved(Axes(row.up, row.front)), ElementsAre(row.x, row.y, row.z, 4));
    EXPECT_THAT(Moved(Axes(row.up, row.front, "left")), ElementsAre(-row.x, row.y, row.z, 4));
  }
}

TEST(AxisMod, DefaultsAndWordsThatMeanNothing) {
  EXPECT_THAT(Moved(Axes("", "", "left")), ElementsAre(-1, 2, 3, 4));
  EXPECT_THAT(Moved(Axes("zx", "+z")), ElementsAre(-2, -3, 1, 4));  // the last letter names
  for (const ConversionArguments& args :
       {Axes("", ""), Axes("", "", "lefty"), Axes("y", "", "left"), Axes("z", "z", "left"),
        Axes("q", "", "left"), Axes("", "-", "left")}) {
    EXPECT_THAT(Moved(args), ElementsAre(1, 2, 3, 4)) << args.upAxis << " " << args.frontAxis;
  }
}

TEST(AxisMod, DoublesPassThroughFloats) {
  FbxVector4 vector(0.1, 0.2, 0.3, 0.4);
  AxisModOnVector(Axes("", ""), vector);
  EXPECT_EQ(vector, FbxVector4(0.1F, 0.2F, 0.3F, 0.4));
  FbxQuaternion quaternion(0.1, 0.2, 0.3, 0.4);
  AxisModOnQuat(Axes("-y", "z", "left"), quaternion);
  EXPECT_EQ(quaternion, FbxQuaternion(0.1F, -0.3F, -0.2F, 0.4));
}

TEST(KeyValues, ClampAddsBeforeItTruncates) {
  EXPECT_EQ(clampKeyValue(1.0004F), 1.0F);
  EXPECT_EQ(clampKeyValue(1.0006F), 1.001F);
  EXPECT_EQ(clampKeyValue(-1.0004F), -0.999F);
  EXPECT_FALSE(std::signbit(clampKeyValue(-0.001F)));  // the text of the value must be "0"
  EXPECT_EQ(clampKeyValue(3e20F), 3e20F);              // beyond any integer
}

TEST(KeyValues, SecondsOfAFrame) {
  const FbxTime::EMode before = FbxTime::GetGlobalTimeMode();
  // By mode. The custom one counts 30 frames whatever its rate is.
  constexpr float kRates[] = {30,     120, 100, 60,   50,      48, 30, 30, 29.97F,
                              29.97F, 25,  24,  1000, 23.976F, 30, 96, 72, 59.94F};
  for (int mode = 0; mode < 18; ++mode) {
    FbxTime::SetGlobalTimeMode(static_cast<FbxTime::EMode>(mode), 12.0);
    EXPECT_EQ(frameToSeconds(30), 30 / kRates[mode]) << mode;
  }
  FbxTime::SetGlobalTimeMode(before);
}

}  // namespace
