// Times and curves in seconds.
#pragma once

#include <utility>
#include <vector>

#include "fbx/anim/kf_curve.h"

inline FbxTime Seconds(double seconds) {
  FbxTime time;
  time.SetSecondDouble(seconds);
  return time;
}

// A curve with keys one second apart, from second 0 on, that all share one attribute.
inline KFCurve Curve(std::vector<float> values, const KFCurveKeyAttr& attr) {
  std::vector<int64_t> times;
  for (size_t i = 0; i < values.size(); ++i) {
    times.push_back(static_cast<int64_t>(i) * FbxTime::kTicksPerSecond);
  }
  KFCurve curve;
  const uint32_t count = static_cast<uint32_t>(values.size());
  curve.SetKeys(ShareArray(std::move(times)), std::move(values));
  curve.SetAttributes({attr}, {count});
  return curve;
}
