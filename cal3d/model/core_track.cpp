#include "cal3d/model/core_track.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace {

template <typename Value>
bool Varies(const std::vector<CalCoreKeyframe>& frames, Value CalCoreKeyframe::*value) {
  return std::ranges::adjacent_find(frames, std::not_equal_to<>(), value) != frames.end();
}

CalVector Lerp(const CalVector& from, const CalVector& to, float t) {
  return {from.x + (to.x - from.x) * t, from.y + (to.y - from.y) * t, from.z + (to.z - from.z) * t};
}

CalQuaternion Slerp(const CalQuaternion& from, const CalQuaternion& to, float t) {
  float cosine = from.x * to.x + from.y * to.y + from.z * to.z + from.w * to.w;
  // q and -q are one rotation: the nearer one gives the shorter way.
  const float sign = cosine < 0 ? -1.0f : 1.0f;
  cosine *= sign;
  float from_part = 1 - t;
  float to_part = t;
  // Close together the sine in the divisor vanishes, and the linear blend is as good.
  if (cosine < 0.9999f) {
    const float angle = std::acos(cosine);
    const float sine = std::sin(angle);
    from_part = std::sin((1 - t) * angle) / sine;
    to_part = std::sin(t * angle) / sine;
  }
  to_part *= sign;
  return {from.x * from_part + to.x * to_part, from.y * from_part + to.y * to_part,
          from.z * from_part + to.z * to_part, from.w * from_part + to.w * to_part};
}

}  // namespace

CalCoreTrack::CalCoreTrack(std::int32_t boneId, const std::vector<CalCoreKeyframe>& frames)
    : coreBoneId(boneId),
      keyframes(frames),
      rotates(Varies(frames, &CalCoreKeyframe::rotation)),
      translates(Varies(frames, &CalCoreKeyframe::translation)) {}

CalTransform CalCoreTrack::getCurrentTransform(float time) const {
  if (keyframes.empty()) return {{0, 0, 0, 1}, {}};
  const auto after = std::ranges::upper_bound(keyframes, time, {}, &CalCoreKeyframe::time);
  if (after == keyframes.begin()) return {after->rotation, after->translation};
  const CalCoreKeyframe& from = *(after - 1);
  if (after == keyframes.end() || !(after->time > from.time)) {
    return {from.rotation, from.translation};
  }
  const float t = (time - from.time) / (after->time - from.time);
  return {Slerp(from.rotation, after->rotation, t), Lerp(from.translation, after->translation, t)};
}
