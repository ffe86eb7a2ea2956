// Time, strings and statuses.
#include <limits>

#include <gtest/gtest.h>

#include "fbx/core/fbx_string.h"
#include "fbx/core/fbx_time.h"

namespace {

TEST(FbxTime, CountsFramesFromTicks) {
  const FbxTime second(FbxTime::kTicksPerSecond);
  EXPECT_EQ(second.GetFrameCount(FbxTime::eNTSCFullFrame), 29);
  EXPECT_NEAR(second.GetFrameCountPrecise(FbxTime::eNTSCFullFrame), 30.0 / 1.001, 1e-7);
  for (const int none : {7, 18, -1, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(second.GetFrameCount(static_cast<FbxTime::EMode>(none)), 0) << none;
    EXPECT_EQ(second.GetFrameCountPrecise(static_cast<FbxTime::EMode>(none)), 0.0) << none;
  }
  EXPECT_EQ(FbxTime(-FbxTime::kTicksPerSecond / 3).GetFrameCount(FbxTime::ePAL), -8);
  EXPECT_EQ(FbxTime(-FbxTime::kTicksPerSecond / 4).GetFrameCountPrecise(FbxTime::ePAL), -6.25);
  // Each rate's frame time is the second's, cut to whole ticks.
  const std::vector<std::pair<int, double>> rates = {
      {1, 120}, {2, 100}, {3, 60},    {4, 50},          {5, 48},  {6, 30},  {8, 30 / 1.001},
      {10, 25}, {11, 24}, {12, 1000}, {13, 24 / 1.001}, {15, 96}, {16, 72}, {17, 60 / 1.001}};
  for (const auto& [mode, rate] : rates) {
    FbxTime frame;
    frame.SetFrame(1, static_cast<FbxTime::EMode>(mode));
    EXPECT_NEAR(static_cast<double>(frame.Get()), FbxTime::kTicksPerSecond / rate, 1.0) << mode;
  }
}

TEST(FbxTime, FollowsTheGlobalMode) {
  const FbxTime second(FbxTime::kTicksPerSecond);
  FbxTime::SetGlobalTimeMode(FbxTime::eFrames24);
  EXPECT_EQ(second.GetFrameCount(), 24);
  FbxTime::SetGlobalTimeMode(FbxTime::eDefaultMode);
  EXPECT_EQ(second.GetFrameCount(), 30);
  FbxTime::SetGlobalTimeMode(FbxTime::eCustom, 10.0);
  EXPECT_EQ(second.GetFrameCount(), 10);
  EXPECT_EQ(second.GetFrameCount(FbxTime::eFrames24), 24);
  FbxTime::SetGlobalTimeMode(FbxTime::eCustom, -1.0);
  EXPECT_EQ(second.GetFrameCountPrecise(), 12.5) << "the rate where the file has none";
  FbxTime::SetGlobalTimeMode(FbxTime::eDefaultMode);
}

TEST(FbxTime, TruncatesSecondsAndStopsAtItsRange) {
  const std::vector<std::pair<double, int64_t>> cases = {
      {1.5, FbxTime::kTicksPerSecond / 2 * 3},
      {-0.5 / FbxTime::kTicksPerSecond, 0},
      {1e300, FbxTime::Infinite().Get()},
      {-1e300, std::numeric_limits<int64_t>::min()},
      {std::numeric_limits<double>::quiet_NaN(), 0}};
  for (const auto& [seconds, ticks] : cases) {
    FbxTime time(7);
    time.SetSecondDouble(seconds);
    EXPECT_EQ(time.Get(), ticks) << seconds;
  }
}

TEST(FbxString, CutsPrefixes) {
  EXPECT_EQ(StripPrefix("Model::ns::name"), "ns::name");
  EXPECT_EQ(NoPrefixName("Model::ns::name"), "name");
}

TEST(FbxStatus, HasATextForEachCode) {
  FbxStatus status;
  EXPECT_STREQ(status.GetErrorString(), "");
  status.SetCode(FbxStatus::eIndexOutOfRange);
  EXPECT_STREQ(status.GetErrorString(), "Index out of range");
  status.SetCode(FbxStatus::eInvalidFile, "File %s, %d", std::string(5000, 'x').c_str(), 7);
  EXPECT_EQ(status.GetErrorString(), "File " + std::string(5000, 'x') + ", 7");
  status.Clear();
  EXPECT_FALSE(status.Error());
}

}  // namespace
