// The keys of one animation curve and their evaluation. A curve is whatever a file says: times may
// be unsorted or equal, attributes may be missing, values may be NaN. Every operation is total on
// such keys and costs no more than a search: differences of times are taken without overflow, and
// repetition folds a time by division, never period by period.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "fbx/core/fbx_time.h"
#include "fbx/io/fbx_shared_array.h"

// How a run of keys leads on to the next one: the flags tell interpolation and tangents. The words
// hold, by tangent mode, right slope, percent or tension; next left slope, percent or continuity;
// right and next left weight as two int16 (low bits, high bits) or bias; velocities likewise. A
// percent mixes the slope of an auto tangent from those to both neighbours: 100 the left one's,
// -100 the right one's, 0 their mean. The words are kept as bit patterns, since files write weights
// into arrays of floats.
struct KFCurveKeyAttr {
  enum Flags : uint32_t {
    kInterpolationMask = 0xE,
    kConstant = 0x2,
    kLinear = 0x4,
    kCubic = 0x8,
    kConstantNext = 0x100,  // with kConstant: the next key's value
    kTangentMask = 0xF00,
    kTangentAuto = 0x100,
    kTangentTCB = 0x200,
    kTangentUser = 0x400,
    kTangentAutoBreak = 0x900,
    kClampMask = 0x6000,
    kClamped = 0x2000,  // an auto tangent is flat unless the key lies between its neighbours
    kProgressiveClamp = 0x6000,  // and never more than 3 times as steep as the way to either
    kWeightedRight = 0x1000000,
    kWeightedNextLeft = 0x2000000,
  };

  uint32_t flags = 0;
  std::array<uint32_t, 4> words{};

  uint32_t Interpolation() const { return flags & kInterpolationMask; }
  bool IsTCB() const { return Interpolation() == kCubic && (flags & kTangentMask) == kTangentTCB; }
  bool IsAuto() const {
    const uint32_t mode = flags & kTangentMask;
    return Interpolation() == kCubic && (mode == kTangentAuto || mode == kTangentAutoBreak);
  }
};

// The attributes of a curve's keys, in runs.
class KFCurveAttributes {
 public:
  // `counts[i]` keys in a row take `attrs[i]`, key 0 first. Keys beyond the sum have none.
  KFCurveAttributes(std::vector<KFCurveKeyAttr> attrs, const std::vector<uint32_t>& counts);

  // No flags and words of 0 for a key without an attribute.
  KFCurveKeyAttr Of(size_t key) const;

 private:
  std::vector<KFCurveKeyAttr> attrs_;
  std::vector<size_t> ends_;  // the key after the last of each run
};

class KFCurve {
 public:
  enum EExtrapolation {
    eConstant = 1,
    eRepetition,
    eMirrorRepetition,
    eKeepSlope,  // value per second
    eRelativeRepetition,
  };
  // What a time before the first or after the last key gives.
  struct Extrapolation {
    EExtrapolation mode = eConstant;
    int count = -1;  // periods; -1 for ever, anything else below 0 none
  };

  struct Key {
    FbxTime time;
    float value = 0.0F;
  };

  // The mode that a letter in a file stands for; constant for an unknown one.
  static EExtrapolation ExtrapolationOfLetter(char letter);

  // Replaces all keys. The times, in ticks, set their number; values missing are 0, further ones
  // dropped. Curves may share times, as all channels of a baked clip do; null means no keys.
  void SetKeys(FbxSharedArray<int64_t> times, std::vector<float> values);
  // Replaces all attributes. Curves may share them; null means none.
  void SetAttributes(std::shared_ptr<const KFCurveAttributes> attributes) {
    attributes_ = std::move(attributes);
  }
  void SetAttributes(std::vector<KFCurveKeyAttr> attrs, const std::vector<uint32_t>& counts) {
    SetAttributes(std::make_shared<const KFCurveAttributes>(std::move(attrs), counts));
  }
  void SetDefaultValue(float value) { defaultValue_ = value; }
  void SetPreExtrapolation(Extrapolation extrapolation) { pre_ = extrapolation; }
  void SetPostExtrapolation(Extrapolation extrapolation) { post_ = extrapolation; }

  float GetDefaultValue() const { return defaultValue_; }
  Extrapolation GetPreExtrapolation() const { return pre_; }
  Extrapolation GetPostExtrapolation() const { return post_; }

  int KeyGetCount() const { return static_cast<int>(times_.size()); }
  // Time 0 and value 0 for an index out of range.
  Key KeyGet(int index) const;
  FbxTime KeyGetTime(int index) const { return KeyGet(index).time; }
  float KeyGetValue(int index) const { return KeyGet(index).value; }
  // Whether both curves have keys at the same times, in the same order.
  bool HasTimesOf(const KFCurve& other) const;
  // As KFCurveAttributes::Of.
  KFCurveKeyAttr KeyGetAttr(int index) const {
    if (attributes_ == nullptr || index < 0) return {};
    return attributes_->Of(static_cast<size_t>(index));
  }

  // The value at a time. `last`, if not null, holds the key index at which the search starts and is
  // left at the one found, so that a forward sweep needs no search. It changes no result.
  float Evaluate(FbxTime time, int* last = nullptr) const {
    if (last == nullptr || !IsNextKey(time.Get(), *last)) return EvaluateAny(time, last);
    return values_[static_cast<size_t>(++*last)];
  }
  // The fractional key index of a time: the whole part names a key, the fraction is the position in
  // time between it and the next. Times outside the keys are folded back by the extrapolations.
  double KeyFindAll(FbxTime time, int* last = nullptr) const;
  // The same without extrapolation: the first or last index outside the keys. Of keys at one time
  // the last is found.
  double KeyFind(FbxTime time, int* last = nullptr) const;
  // The value at a fractional key index, which is clamped to the keys.
  float EvaluateIndex(double index) const;

  // Slopes per second on leaving a key and on arriving at it; 0 for an index out of range.
  double RightDerivative(int index) const;
  double LeftDerivative(int index) const;

  // Turns the curve upside down: values, default value and tangents.
  void Negate();

 private:
  double Value(size_t key) const { return static_cast<double>(values_[key]); }
  // Whether the key behind `last` is the one at a time: a sweep over the keys' own times, as over a
  // baked clip, finds one after the other.
  bool IsNextKey(int64_t ticks, int last) const {
    const size_t next = static_cast<size_t>(last) + 1;
    return sorted_ && last >= 0 && next < times_.size() && times_[next] == ticks &&
           (next + 1 == times_.size() || times_[next + 1] > ticks);
  }
  float EvaluateAny(FbxTime time, int* last) const;
  // The last key that isn't after a time, or the first; there must be keys. `last` as in Evaluate.
  size_t FindKey(int64_t ticks, int* last) const;
  // The fractional index of a time between this key and the next.
  double IndexOf(int64_t ticks, size_t key) const;
  double Seconds(size_t from, size_t to) const;
  double Slope(size_t from, size_t to) const;
  double TCBDerivative(size_t key, const KFCurveKeyAttr& attr, bool right) const;
  // The slope at a key with an auto tangent; `flags` are the tangent's.
  double AutoDerivative(size_t key, uint32_t flags, double percent) const;
  float EvaluateCubic(size_t a, const KFCurveKeyAttr& attr, double f) const;
  // The distance in ticks from the last key back to the first; 0 for keys out of order.
  uint64_t Span() const;

  FbxSharedArray<int64_t> sharedTimes_;
  std::span<const int64_t> times_;  // of sharedTimes_
  std::vector<float> values_;
  std::shared_ptr<const KFCurveAttributes> attributes_;
  float defaultValue_ = 0.0F;
  Extrapolation pre_;
  Extrapolation post_;
  double slopeSign_ = 1.0;  // of the slopes that attributes store
  bool sorted_ = true;      // a hint may be trusted
};
