#include "fbx/core/fbx_time.h"

#include <array>
#include <cmath>

namespace {

struct GlobalTime {
  FbxTime::EMode mode = FbxTime::eDefaultMode;
  FbxTime::EProtocol protocol = FbxTime::eDefaultProtocol;
  double customRate = 12.5;
};

GlobalTime& Global() {
  static GlobalTime global;
  return global;
}

}  // namespace

void FbxTime::SetSecondDouble(double seconds) {
  const double ticks = seconds * static_cast<double>(kTicksPerSecond);
  constexpr double kLimit = 9223372036854775807.0;
  if (std::isnan(ticks)) {
    ticks_ = 0;
  } else if (ticks >= kLimit) {
    ticks_ = std::numeric_limits<int64_t>::max();
  } else if (ticks <= -kLimit) {
    ticks_ = std::numeric_limits<int64_t>::min();
  } else {
    ticks_ = static_cast<int64_t>(ticks);
  }
}

void FbxTime::SetFrame(int64_t frames, EMode mode) {
  ticks_ = static_cast<int64_t>(static_cast<uint64_t>(frames) *
                                static_cast<uint64_t>(GetOneFrameValue(mode)));
}

int64_t FbxTime::GetFrameCount(EMode mode) const {
  const int64_t frame = GetOneFrameValue(mode);
  return frame == 0 ? 0 : ticks_ / frame;
}

double FbxTime::GetFrameCountPrecise(EMode mode) const {
  const int64_t frame = GetOneFrameValue(mode);
  return frame == 0 ? 0.0 : static_cast<double>(ticks_) / static_cast<double>(frame);
}

int64_t FbxTime::GetOneFrameValue(EMode mode) {
  static constexpr std::array<int64_t, 18> kTicks = {
      0,          384884650,  461861580,  769769300,  923723160,  962211625,
      1539538600, 0,          1541078138, 1541078138, 1847446320, 1924423250,
      46186158,   1926347673, 0,          481105812,  641474416,  770539069};
  if (mode == eDefaultMode) mode = GetGlobalTimeMode();
  if (mode == eDefaultMode) mode = eFrames30;
  if (mode < eFrames120 || mode > eFrames59dot94) return 0;
  if (mode == eCustom) {
    const double ticks = static_cast<double>(kTicksPerSecond) / Global().customRate;
    return ticks >= 1.0 && ticks < 9e18 ? static_cast<int64_t>(ticks) : 0;
  }
  return kTicks[static_cast<size_t>(mode)];
}

FbxTime::EMode FbxTime::GetGlobalTimeMode() { return Global().mode; }

void FbxTime::SetGlobalTimeMode(EMode mode, double customRate) {
  Global().mode = mode;
  if (mode == eCustom) Global().customRate = customRate > 0.0 ? customRate : 12.5;
}

FbxTime::EProtocol FbxTime::GetGlobalTimeProtocol() { return Global().protocol; }

void FbxTime::SetGlobalTimeProtocol(EProtocol protocol) { Global().protocol = protocol; }
