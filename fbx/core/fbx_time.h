// Time as a signed count of ticks, 46186158000 to the second: a number that the frame times of all
// common rates divide. The infinite time stands for "without animation".
#pragma once

#include <compare>
#include <cstdint>
#include <limits>

class FbxTime {
 public:
  // Frame rate modes, by the numbers that files hold; a file may hold any other, too.
  enum EMode : int {
    eDefaultMode = 0,
    eFrames120,
    eFrames100,
    eFrames60,
    eFrames50,
    eFrames48,
    eFrames30,
    eFrames30Drop,  // has no rate: every conversion gives 0
    eNTSCDropFrame,
    eNTSCFullFrame,
    ePAL,
    eFrames24,
    eFrames1000,
    eFilmFullFrame,
    eCustom,
    eFrames96,
    eFrames72,
    eFrames59dot94,
  };
  enum EProtocol : int { eSMPTE = 0, eFrameCount = 1, eDefaultProtocol = 2 };

  static constexpr int64_t kTicksPerSecond = 46186158000;

  constexpr FbxTime() = default;
  constexpr explicit FbxTime(int64_t ticks) : ticks_(ticks) {}
  static constexpr FbxTime Infinite() { return FbxTime(std::numeric_limits<int64_t>::max()); }

  constexpr int64_t Get() const { return ticks_; }
  constexpr void Set(int64_t ticks) { ticks_ = ticks; }
  constexpr bool IsInfinite() const { return *this == Infinite(); }

  double GetSecondDouble() const { return static_cast<double>(ticks_) / kTicksPerSecond; }
  // Truncates to whole ticks; a value beyond the range of the count stops at its ends.
  void SetSecondDouble(double seconds);
  // Sets the time of a frame. 0 in a mode without a rate.
  void SetFrame(int64_t frames, EMode mode = eDefaultMode);
  // Whole frames, truncated toward zero. 0 in a mode without a rate.
  int64_t GetFrameCount(EMode mode = eDefaultMode) const;
  double GetFrameCountPrecise(EMode mode = eDefaultMode) const;

  // Ticks of one frame; 0 for a mode without a rate. The default mode counts as the global one, and
  // a global mode that is itself the default counts 30 frames a second.
  static int64_t GetOneFrameValue(EMode mode);

  static EMode GetGlobalTimeMode();
  // `customRate` in frames a second is taken in mode eCustom when it is above 0.
  static void SetGlobalTimeMode(EMode mode, double customRate = 0.0);
  static EProtocol GetGlobalTimeProtocol();
  static void SetGlobalTimeProtocol(EProtocol protocol);

  friend constexpr bool operator==(FbxTime a, FbxTime b) = default;
  friend constexpr auto operator<=>(FbxTime a, FbxTime b) = default;
  // The difference wraps instead of overflowing: times come from files.
  friend constexpr FbxTime operator-(FbxTime a, FbxTime b) {
    return FbxTime(
        static_cast<int64_t>(static_cast<uint64_t>(a.ticks_) - static_cast<uint64_t>(b.ticks_)));
  }
  friend constexpr FbxTime operator+(FbxTime a, FbxTime b) {
    return FbxTime(
        static_cast<int64_t>(static_cast<uint64_t>(a.ticks_) + static_cast<uint64_t>(b.ticks_)));
  }

 private:
  int64_t ticks_ = 0;
};

struct FbxTimeSpan {
  FbxTime start;
  FbxTime stop;
};
