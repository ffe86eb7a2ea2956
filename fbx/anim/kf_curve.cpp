#include "fbx/anim/kf_curve.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

namespace {

constexpr double kTicksPerSecond = static_cast<double>(FbxTime::kTicksPerSecond);

// The distance to a later time, which always fits.
uint64_t Ticks(int64_t from, int64_t to) {
  return static_cast<uint64_t>(to) - static_cast<uint64_t>(from);
}

int64_t Later(int64_t time, uint64_t ticks) {
  return static_cast<int64_t>(static_cast<uint64_t>(time) + ticks);
}

int64_t Earlier(int64_t time, uint64_t ticks) {
  return static_cast<int64_t>(static_cast<uint64_t>(time) - ticks);
}

bool IsRepetition(KFCurve::EExtrapolation mode) {
  return mode == KFCurve::eRepetition || mode == KFCurve::eMirrorRepetition ||
         mode == KFCurve::eRelativeRepetition;
}

// Whether an extrapolation reaches so far that its `period`, counted from 0, is still repeated.
bool Reaches(KFCurve::Extrapolation extrapolation, uint64_t period) {
  return extrapolation.count == -1 ||
         (extrapolation.count > 0 && period < static_cast<uint64_t>(extrapolation.count));
}

// Where a time `distance` outside the keys falls within them, as a distance from the end key that
// it lies beyond.
uint64_t Fold(KFCurve::Extrapolation extrapolation, uint64_t distance, uint64_t span) {
  const uint64_t period = distance / span;
  const uint64_t offset = distance % span;
  const bool reached = Reaches(extrapolation, period);
  if (extrapolation.mode == KFCurve::eMirrorRepetition) {
    if (reached) return period % 2 == 0 ? offset : span - offset;
    return extrapolation.count > 0 && extrapolation.count % 2 != 0 ? span : 0;
  }
  return reached ? span - offset : 0;
}

// Periods by which relative repetition has moved the value.
double PeriodsCrossed(KFCurve::Extrapolation extrapolation, uint64_t distance, uint64_t span) {
  const uint64_t period = distance / span;
  return Reaches(extrapolation, period) ? static_cast<double>(period) + 1.0
                                        : static_cast<double>(std::max(extrapolation.count, 0));
}

// Seconds over which a kept slope goes on.
double SlopeSeconds(KFCurve::Extrapolation extrapolation, uint64_t distance, uint64_t span) {
  double ticks = static_cast<double>(distance);
  if (extrapolation.count != -1) {
    ticks = std::min(ticks, static_cast<double>(span) * std::max(extrapolation.count, 0));
  }
  return ticks / kTicksPerSecond;
}

float AsFloat(uint32_t word) { return std::bit_cast<float>(word); }

double Weight(uint32_t word, int shift) {
  return static_cast<double>(static_cast<int16_t>(word >> shift & 0xFFFF)) / 9999.0;
}

double Bezier(double p0, double p1, double p2, double p3, double u) {
  const auto mix = [u](double a, double b) { return a + u * (b - a); };
  const double p01 = mix(p0, p1), p12 = mix(p1, p2), p23 = mix(p2, p3);
  return mix(mix(p01, p12), mix(p12, p23));
}

// The parameter at which the curve in time with control times 0, wr, 1 - wl, 1 reaches f, by
// secant steps.
double SolveTime(double wr, double wl, double f) {
  constexpr int kIterations = 16;
  constexpr double kStep = 1e-6;
  double u0 = 0.0, u1 = 1.0;
  double e0 = -f, e1 = 1.0 - f;
  for (int i = 0; i < kIterations && e1 != 0.0 && e1 != e0; ++i) {
    const double step = e1 * (u1 - u0) / (e1 - e0);
    u0 = std::exchange(u1, u1 - step);
    e0 = std::exchange(e1, Bezier(0.0, wr, 1.0 - wl, 1.0, u1) - f);
    if (std::abs(step) < kStep) break;
  }
  return std::clamp(u1, 0.0, 1.0);
}

}  // namespace

KFCurveAttributes::KFCurveAttributes(std::vector<KFCurveKeyAttr> attrs,
                                     const std::vector<uint32_t>& counts)
    : attrs_(std::move(attrs)) {
  attrs_.resize(std::min(attrs_.size(), counts.size()));
  ends_.reserve(attrs_.size());
  size_t end = 0;
  for (size_t i = 0; i < attrs_.size(); ++i) ends_.push_back(end += counts[i]);
}

KFCurveKeyAttr KFCurveAttributes::Of(size_t key) const {
  const auto end = std::upper_bound(ends_.begin(), ends_.end(), key);
  return end == ends_.end() ? KFCurveKeyAttr() : attrs_[static_cast<size_t>(end - ends_.begin())];
}

KFCurve::EExtrapolation KFCurve::ExtrapolationOfLetter(char letter) {
  switch (letter) {
    case 'R':
      return eRepetition;
    case 'M':
      return eMirrorRepetition;
    case 'K':
      return eKeepSlope;
    case 'A':
      return eRelativeRepetition;
    default:
      return eConstant;
  }
}

void KFCurve::SetKeys(FbxSharedArray<int64_t> times, std::vector<float> values) {
  sharedTimes_ = std::move(times);
  times_ = {};
  if (sharedTimes_ != nullptr) times_ = *sharedTimes_;
  values_ = std::move(values);
  values_.resize(times_.size());
  sorted_ = std::is_sorted(times_.begin(), times_.end());
}

KFCurve::Key KFCurve::KeyGet(int index) const {
  if (index < 0 || index >= KeyGetCount()) return {};
  const size_t key = static_cast<size_t>(index);
  return {FbxTime(times_[key]), values_[key]};
}

bool KFCurve::HasTimesOf(const KFCurve& other) const {
  return sharedTimes_ == other.sharedTimes_ ||
         std::equal(times_.begin(), times_.end(), other.times_.begin(), other.times_.end());
}

uint64_t KFCurve::Span() const {
  return times_.empty() || times_.back() <= times_.front() ? 0
                                                           : Ticks(times_.front(), times_.back());
}

float KFCurve::EvaluateAny(FbxTime time, int* last) const {
  if (times_.size() < 2) return EvaluateIndex(0.0);
  const int64_t ticks = time.Get();
  const uint64_t span = Span();
  const size_t end = times_.size() - 1;
  const bool before = ticks < times_.front();
  const bool after = !before && ticks > times_.back();
  if (!before && !after) {
    const size_t key = FindKey(ticks, last);
    return ticks == times_[key] ? values_[key] : EvaluateIndex(IndexOf(ticks, key));
  }
  if (before && pre_.mode == eKeepSlope) {
    const double seconds = SlopeSeconds(pre_, Ticks(ticks, times_.front()), span);
    return static_cast<float>(Value(0) - seconds * RightDerivative(0));
  }
  if (after && post_.mode == eKeepSlope) {
    const double seconds = SlopeSeconds(post_, Ticks(times_.back(), ticks), span);
    return static_cast<float>(Value(end) + seconds * LeftDerivative(static_cast<int>(end)));
  }
  const float value = EvaluateIndex(KeyFindAll(time, last));
  if (span == 0) return value;
  const double delta = Value(end) - Value(0);
  if (before && pre_.mode == eRelativeRepetition) {
    const double periods = PeriodsCrossed(pre_, Ticks(ticks, times_.front()), span);
    return static_cast<float>(static_cast<double>(value) - delta * periods);
  }
  if (after && post_.mode == eRelativeRepetition) {
    const double periods = PeriodsCrossed(post_, Ticks(times_.back(), ticks), span);
    return static_cast<float>(static_cast<double>(value) + delta * periods);
  }
  return value;
}

double KFCurve::KeyFindAll(FbxTime time, int* last) const {
  const uint64_t span = Span();
  if (span != 0) {
    const int64_t ticks = time.Get();
    if (ticks < times_.front() && IsRepetition(pre_.mode)) {
      const uint64_t distance = Fold(pre_, Ticks(ticks, times_.front()), span);
      return KeyFind(FbxTime(Later(times_.front(), distance)), last);
    }
    if (ticks > times_.back() && IsRepetition(post_.mode)) {
      const uint64_t distance = Fold(post_, Ticks(times_.back(), ticks), span);
      return KeyFind(FbxTime(Earlier(times_.back(), distance)), last);
    }
  }
  return KeyFind(time, last);
}

double KFCurve::KeyFind(FbxTime time, int* last) const {
  return times_.empty() ? 0.0 : IndexOf(time.Get(), FindKey(time.Get(), last));
}

size_t KFCurve::FindKey(int64_t ticks, int* last) const {
  const size_t end = times_.size() - 1;
  size_t low = 0;
  if (ticks >= times_.back()) {
    low = end;
  } else if (ticks >= times_.front()) {
    // Holds throughout, sorted or not: times_[low] <= ticks < times_[high].
    size_t high = end;
    if (last != nullptr && sorted_ && *last >= 0 && static_cast<size_t>(*last) < end &&
        times_[static_cast<size_t>(*last)] <= ticks) {
      low = static_cast<size_t>(*last);
      // A sweep stays between two keys or goes on to the next one.
      if (ticks < times_[low + 1]) {
        high = low + 1;
      } else if (++low < end && ticks < times_[low + 1]) {
        high = low + 1;
      }
    }
    while (high - low > 1) {
      const size_t middle = low + (high - low) / 2;
      (times_[middle] <= ticks ? low : high) = middle;
    }
  }
  if (last != nullptr) *last = static_cast<int>(low);
  return low;
}

double KFCurve::IndexOf(int64_t ticks, size_t key) const {
  const double index = static_cast<double>(key);
  if (key + 1 == times_.size() || ticks <= times_[key]) return index;
  return index + static_cast<double>(Ticks(times_[key], ticks)) /
                     static_cast<double>(Ticks(times_[key], times_[key + 1]));
}

float KFCurve::EvaluateIndex(double index) const {
  if (times_.empty()) return defaultValue_;
  const size_t end = times_.size() - 1;
  if (!(index > 0.0)) return values_.front();  // NaN too
  if (index >= static_cast<double>(end)) return values_.back();
  const size_t a = static_cast<size_t>(index);
  const double f = index - static_cast<double>(a);
  if (f == 0.0) return values_[a];
  const KFCurveKeyAttr attr = KeyGetAttr(static_cast<int>(a));
  switch (attr.Interpolation()) {
    case KFCurveKeyAttr::kConstant:
      return (attr.flags & KFCurveKeyAttr::kConstantNext) != 0 ? values_[a + 1] : values_[a];
    case KFCurveKeyAttr::kLinear:
      return static_cast<float>(Value(a) + f * (Value(a + 1) - Value(a)));
    case KFCurveKeyAttr::kCubic:
      return EvaluateCubic(a, attr, f);
    default:
      return 0.0F;
  }
}

float KFCurve::EvaluateCubic(size_t a, const KFCurveKeyAttr& attr, double f) const {
  constexpr uint32_t kStoredTangents = 0xD00;
  double wr = 1.0 / 3.0, wl = 1.0 / 3.0;
  double u = f;
  if ((attr.flags & (KFCurveKeyAttr::kWeightedRight | KFCurveKeyAttr::kWeightedNextLeft)) != 0) {
    wr = wl = 0.33333334;
    if ((attr.flags & KFCurveKeyAttr::kWeightedRight) != 0 && (attr.flags & kStoredTangents) != 0) {
      wr = Weight(attr.words[2], 0);
    }
    if ((attr.flags & KFCurveKeyAttr::kWeightedNextLeft) != 0) wl = Weight(attr.words[2], 16);
    u = SolveTime(wr, wl, f);
  }
  const size_t b = a + 1;
  const double dt = Seconds(a, b);
  const double p1 = Value(a) + wr * dt * RightDerivative(static_cast<int>(a));
  const double p2 = Value(b) - wl * dt * LeftDerivative(static_cast<int>(b));
  return static_cast<float>(Bezier(Value(a), p1, p2, Value(b), u));
}

double KFCurve::RightDerivative(int index) const {
  const int end = KeyGetCount() - 1;
  if (index < 0 || index > end || end == 0) return 0.0;
  if (index == end) return LeftDerivative(index);
  const size_t key = static_cast<size_t>(index);
  const KFCurveKeyAttr attr = KeyGetAttr(index);
  if (attr.Interpolation() == KFCurveKeyAttr::kLinear) return Slope(key, key + 1);
  if (attr.Interpolation() != KFCurveKeyAttr::kCubic) return 0.0;
  if (attr.IsTCB()) return TCBDerivative(key, attr, true);
  const double word = static_cast<double>(AsFloat(attr.words[0]));
  return attr.IsAuto() ? AutoDerivative(key, attr.flags, word) : slopeSign_ * word;
}

double KFCurve::LeftDerivative(int index) const {
  const int end = KeyGetCount() - 1;
  if (index < 0 || index > end || end == 0) return 0.0;
  if (index == 0) return RightDerivative(0);
  const size_t key = static_cast<size_t>(index);
  const KFCurveKeyAttr previous = KeyGetAttr(index - 1);
  if (previous.Interpolation() == KFCurveKeyAttr::kLinear) return Slope(key - 1, key);
  if (previous.Interpolation() != KFCurveKeyAttr::kCubic) return 0.0;
  const KFCurveKeyAttr own = KeyGetAttr(index);
  if (own.IsTCB()) return TCBDerivative(key, own, false);
  // After a TCB key word 1 is a continuity, so no slope is stored: the neutral tangent serves.
  if (previous.IsTCB()) return TCBDerivative(key, KFCurveKeyAttr(), false);
  const double word = static_cast<double>(AsFloat(previous.words[1]));
  // The tangent is this key's, wherever its word is kept; a key that isn't cubic has none to tell.
  const KFCurveKeyAttr& tangent = own.Interpolation() == KFCurveKeyAttr::kCubic ? own : previous;
  return tangent.IsAuto() ? AutoDerivative(key, tangent.flags, word) : slopeSign_ * word;
}

double KFCurve::AutoDerivative(size_t key, uint32_t flags, double percent) const {
  constexpr double kEnd = 1e-5;  // how near to 100 a percent means one side alone
  if (key == 0) return Slope(0, 1);
  if (key + 1 == times_.size()) return Slope(key - 1, key);
  const uint32_t clamp = flags & KFCurveKeyAttr::kClampMask;
  const bool clamped =
      clamp == KFCurveKeyAttr::kClamped || clamp == KFCurveKeyAttr::kProgressiveClamp;
  if (clamped && (Value(key) - Value(key - 1)) * (Value(key + 1) - Value(key)) <= 0.0) return 0.0;
  const double toLeft = Slope(key - 1, key), toRight = Slope(key, key + 1);
  double slope = ((100.0 - percent) / 100.0 * toRight + (100.0 + percent) / 100.0 * toLeft) / 2.0;
  if (std::abs(percent - 100.0) <= kEnd) slope = toLeft;
  if (std::abs(percent + 100.0) <= kEnd) slope = toRight;
  if (clamp != KFCurveKeyAttr::kProgressiveClamp) return slope;
  const double limit = 3.0 * std::min(std::abs(toLeft), std::abs(toRight));
  return std::clamp(slope, -limit, limit);
}

// Tension, continuity and bias (Kochanek-Bartels): a mix of the slopes to both neighbours.
double KFCurve::TCBDerivative(size_t key, const KFCurveKeyAttr& attr, bool right) const {
  const double t = static_cast<double>(AsFloat(attr.words[0]));
  const double b = static_cast<double>(AsFloat(attr.words[2]));
  const double c = static_cast<double>(AsFloat(attr.words[1])) * (right ? 1.0 : -1.0);
  const bool isFirst = key == 0, isLast = key + 1 == times_.size();
  const double toRight = isLast ? 0.0 : Slope(key, key + 1) * (1.0 - c) * (1.0 - b);
  const double toLeft = isFirst ? 0.0 : Slope(key - 1, key) * (1.0 + c) * (1.0 + b);
  return (1.0 - t) * (isFirst || isLast ? 1.0 : 0.5) * (toRight + toLeft);
}

double KFCurve::Seconds(size_t from, size_t to) const {
  const int64_t a = times_[from], b = times_[to];
  const double ticks =
      a <= b ? static_cast<double>(Ticks(a, b)) : -static_cast<double>(Ticks(b, a));
  return ticks / kTicksPerSecond;
}

// Value per second; 0 between keys at one time.
double KFCurve::Slope(size_t from, size_t to) const {
  const double seconds = Seconds(from, to);
  return seconds == 0.0 ? 0.0 : (Value(to) - Value(from)) / seconds;
}

void KFCurve::Negate() {
  // Subtracting from 0 makes no negative zeros.
  for (float& value : values_) value = 0.0F - value;
  defaultValue_ = 0.0F - defaultValue_;
  // Only stored slopes: percents, tension, continuity and bias shape the slopes to the neighbours,
  // which turn by themselves.
  slopeSign_ = -slopeSign_;
}
