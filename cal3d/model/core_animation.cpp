#include "cal3d/model/core_animation.h"

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
  const float sign = cosine < 0 ? -1.0F : 1.0F;
  cosine *= sign;
  float fromPart = 1 - t;
  float toPart = t;
  // Close together the sine in the divisor vanishes, and the linear blend is as good.
  if (cosine < 0.9999F) {
    const float angle = std::acos(cosine);
    const float sine = std::sin(angle);
    fromPart = std::sin((1 - t) * angle) / sine;
    toPart = std::sin(t * angle) / sine;
  }
  toPart *= sign;
  return {from.x * fromPart + to.x * toPart, from.y * fromPart + to.y * toPart,
          from.z * fromPart + to.z * toPart, from.w * fromPart + to.w * toPart};
}

}  // namespace

CalCoreTrack::CalCoreTrack(int32_t boneId, const std::vector<CalCoreKeyframe>& frames)
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
