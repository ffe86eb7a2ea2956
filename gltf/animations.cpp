#include "gltf/animations.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>
#include <span>
#include <string>
#include <unordered_set>
#include <utility>

#include "cal3d/io/file_format.h"
#include "gltf/skeleton_nodes.h"

namespace {

using Target = GlbBuilder::Target;
using Shape = GlbBuilder::Shape;

// One animation as it grows.
class Clip {
 public:
  Clip(GlbBuilder& glb, const std::string& file, const char* kind, float start)
      : glb_(glb), shift_(start < 0 ? start : 0) {
    json_ = {{"name", FileStem(file)}, {"channels", Json::array()}, {"samplers", Json::array()}};
    json_["extras"] = {{"kind", kind}};
    if (start < 0) json_["extras"]["start"] = start;
  }

  // Times in seconds that ascend strictly. Tracks of the same times share them.
  size_t Times(const std::vector<float>& times) {
    const auto found = times_.find(times);
    if (found != times_.end()) return found->second;
    std::vector<float> shifted = times;
    for (float& time : shifted) time -= shift_;
    const size_t accessor = glb_.AddFloats(shifted, Shape::kScalar, Target::kNone);
    times_.emplace(times, accessor);
    return accessor;
  }

  void Add(size_t node, const char* path, size_t times, size_t values) {
    Json& samplers = json_["samplers"];
    samplers.push_back({{"input", times}, {"output", values}});
    json_["channels"].push_back(
        {{"sampler", samplers.size() - 1}, {"target", {{"node", node}, {"path", path}}}});
  }

  // Puts the animation into the file; false if it moves nothing, which the format doesn't allow.
  bool Finish() {
    if (json_["channels"].empty()) return false;
    glb_.Add("animations", std::move(json_));
    return true;
  }

 private:
  GlbBuilder& glb_;
  float shift_;
  Json json_;
  std::map<std::vector<float>, size_t> times_;
};

template <typename Track>
float StartOf(const std::vector<Track>& tracks) {
  float start = 0;
  for (const Track& track : tracks) {
    for (const auto& keyframe : track.keyframes)
      start = std::min(start, FiniteOrZero(keyframe.time));
  }
  return start;
}

// The keyframes whose time is later than that of all before.
template <typename Keyframe>
std::vector<const Keyframe*> Ascending(const std::vector<Keyframe>& keyframes, float shift) {
  std::vector<const Keyframe*> kept;
  for (const Keyframe& keyframe : keyframes) {
    // Compared as they will be written: a shift may round two times to one.
    if (kept.empty() ||
        FiniteOrZero(keyframe.time) - shift > FiniteOrZero(kept.back()->time) - shift) {
      kept.push_back(&keyframe);
    }
  }
  return kept;
}

template <typename Keyframe>
std::vector<float> TimesOf(const std::vector<const Keyframe*>& keyframes) {
  std::vector<float> times;
  for (const Keyframe* keyframe : keyframes) times.push_back(FiniteOrZero(keyframe->time));
  return times;
}

// A morph track's weight at a time, between keyframes in a straight line.
class WeightCurve {
 public:
  WeightCurve(const CalCoreMorphTrack& track, float shift)
      : keyframes_(Ascending(track.keyframes, shift)) {}

  const std::vector<const CalCoreMorphKeyframe*>& Keyframes() const { return keyframes_; }

  float At(float time) const {
    const auto after = std::ranges::upper_bound(
        keyframes_, time, {},
        [](const CalCoreMorphKeyframe* key) { return FiniteOrZero(key->time); });
    if (after == keyframes_.begin()) return FiniteOrZero((*after)->weight);
    const CalCoreMorphKeyframe& from = **(after - 1);
    const float weight = FiniteOrZero(from.weight);
    if (after == keyframes_.end()) return weight;
    const float t =
        (time - FiniteOrZero(from.time)) / (FiniteOrZero((*after)->time) - FiniteOrZero(from.time));
    return FiniteOrZero(weight + (FiniteOrZero((*after)->weight) - weight) * t);
  }

 private:
  std::vector<const CalCoreMorphKeyframe*> keyframes_;
};

void AddSkeletal(GlbBuilder& glb, const ViewPart<CalCoreAnimation>& animation, size_t bones,
                 ViewNotes& notes) {
  const float start = StartOf(animation.core->tracks);
  Clip clip(glb, animation.file, "skeletal", start);
  std::unordered_set<int32_t> done;  // the first track of a bone counts
  size_t strangers = 0;
  int32_t stranger = 0;
  for (const CalCoreTrack& track : animation.core->tracks) {
    if (static_cast<size_t>(track.coreBoneId) >= bones) {
      ++strangers;
      stranger = track.coreBoneId;
      continue;
    }
    if (track.keyframes.empty() || !done.insert(track.coreBoneId).second) continue;
    const auto keyframes = Ascending(track.keyframes, start);
    std::vector<float> translations;
    std::vector<float> rotations;
    for (const CalCoreKeyframe* keyframe : keyframes) {
      const CalVector& at = keyframe->translation;
      translations.insert(translations.end(),
                          {FiniteOrZero(at.x), FiniteOrZero(at.y), FiniteOrZero(at.z)});
      const CalQuaternion q = UnitRotation(keyframe->rotation);
      rotations.insert(rotations.end(), {q.x, q.y, q.z, q.w});
    }
    const size_t times = clip.Times(TimesOf(keyframes));
    const size_t node = static_cast<size_t>(track.coreBoneId) + 1;
    clip.Add(node, "translation", times, glb.AddFloats(translations, Shape::kVec3, Target::kNone));
    clip.Add(node, "rotation", times, glb.AddFloats(rotations, Shape::kVec4, Target::kNone));
  }
  if (strangers > 0) {
    notes.warnings.push_back(animation.file + " has " + std::to_string(strangers) +
                             " tracks of bones that aren't there, such as bone " +
                             std::to_string(stranger) + " of " + std::to_string(bones) +
                             ": do they belong together?");
  }
  if (!clip.Finish()) notes.warnings.push_back(animation.file + " moves nothing and isn't shown");
}

void AddMorphs(GlbBuilder& glb, const ViewPart<CalCoreMorphAnimation>& animation,
               const std::vector<MeshNode>& meshes, ViewNotes& notes) {
  const float start = StartOf(animation.core->tracks);
  Clip clip(glb, animation.file, "morph", start);
  std::map<std::string, WeightCurve> curves;  // the first track of a name counts
  std::set<float> moments;
  for (const CalCoreMorphTrack& track : animation.core->tracks) {
    if (track.keyframes.empty()) continue;
    const auto [curve, isNew] = curves.try_emplace(track.morphName, track, start);
    if (!isNew) continue;
    for (const float time : TimesOf(curve->second.Keyframes())) moments.insert(time);
  }
  // The channel of a mesh tells all its weights at each of its times: those of all its tracks.
  std::vector<float> times;
  for (const float moment : moments) {
    if (times.empty() || moment - start > times.back() - start) times.push_back(moment);
  }
  std::unordered_set<std::string> known;
  for (const MeshNode& mesh : meshes) {
    std::vector<const WeightCurve*> own;
    for (const std::string& name : mesh.morphs) {
      const auto found = curves.find(name);
      own.push_back(found == curves.end() ? nullptr : &found->second);
      if (own.back() != nullptr) known.insert(name);
    }
    if (std::ranges::all_of(own, [](const WeightCurve* curve) { return curve == nullptr; }))
      continue;
    constexpr size_t kMostWeights = size_t{1} << 27;  // 512 MB
    if (times.size() > kMostWeights / own.size()) {
      notes.warnings.push_back(animation.file + " has too many weights to be shown");
      continue;
    }
    std::vector<float> weights;
    weights.reserve(times.size() * own.size());
    for (const float time : times) {
      for (const WeightCurve* curve : own)
        weights.push_back(curve == nullptr ? 0 : curve->At(time));
    }
    clip.Add(mesh.node, "weights", clip.Times(times),
             glb.AddFloats(weights, Shape::kScalar, Target::kNone));
  }
  for (const auto& [name, curve] : curves) {
    if (known.contains(name)) continue;
    notes.warnings.push_back(animation.file + " moves the morph " + name + ", which no mesh has");
  }
  if (!clip.Finish()) notes.warnings.push_back(animation.file + " moves nothing and isn't shown");
}

}  // namespace

void AddAnimations(GlbBuilder& glb, const ViewModel& model, const std::vector<MeshNode>& meshes,
                   ViewNotes& notes) {
  const size_t bones = model.skeleton.core ? model.skeleton.core->coreBones.size() : 0;
  for (const auto& animation : model.animations) AddSkeletal(glb, animation, bones, notes);
  for (const auto& animation : model.morphAnimations) AddMorphs(glb, animation, meshes, notes);
}
