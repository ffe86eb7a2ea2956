// The numbers of animation: frames, seconds, and values of keys.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "fbx/anim/fbx_animation.h"
#include "fbx/core/fbx_time.h"

// Truncates toward zero, total on whatever times a file holds. A value beyond the type's range
// stops at its ends; NaN gives 0.
template <typename Integer>
Integer Truncated(double value) {
  using Limits = std::numeric_limits<Integer>;
  if (std::isnan(value)) return 0;
  if (value >= static_cast<double>(Limits::max())) return Limits::max();
  if (value <= static_cast<double>(Limits::min())) return Limits::min();
  return static_cast<Integer>(value);
}

// The frame of a time in the default mode, as animation texts and tracks count it.
inline int64_t FrameOf(FbxTime time) { return Truncated<int64_t>(time.GetFrameCountPrecise()); }
inline int32_t TrackFrameOf(FbxTime time) {
  return Truncated<int32_t>(time.GetFrameCountPrecise());
}

// Seconds by the frame rate that the command gives, whatever the time mode is: for the older export
// route.
inline float FrameRateSeconds(FbxTime time, float frameRate) {
  return static_cast<float>(time.GetFrameCountPrecise() / static_cast<double>(frameRate));
}
inline float StackSeconds(const FbxAnimStack& stack, float frameRate) {
  const FbxTimeSpan span = stack.GetLocalTimeSpan();
  const double frames = span.stop.GetFrameCountPrecise() - span.start.GetFrameCountPrecise();
  return static_cast<float>(frames / static_cast<double>(frameRate));
}

// The two numeric rules that all animation code shares compute in 32-bit floats throughout:
// listings and duplicate tests compare texts made from their results.
//
// Rounds to thousandths by adding 0.0005 and truncating toward zero, for negative values too, which
// land up to a thousandth nearer zero: -1.0004 gives -0.999.
float clampKeyValue(float value);

// The time in seconds of a frame in the global time mode. Modes without a rate of their own, a
// custom one among them, count 30 frames a second.
float frameToSeconds(float frame);
