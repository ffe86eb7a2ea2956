#include "gltf/skeleton_nodes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>

#include "cal3d/io/file_format.h"

namespace {

constexpr size_t kInSet = 4;
// What a graphics card can't take in anyway.
constexpr size_t kMostInfluences = 32;

CalVector FiniteVector(const CalVector& v) {
  return {FiniteOrZero(v.x), FiniteOrZero(v.y), FiniteOrZero(v.z)};
}

Json Numbers(const CalVector& v) { return {v.x, v.y, v.z}; }
Json Numbers(const CalQuaternion& q) { return {q.x, q.y, q.z, q.w}; }

// The number behind an option of a light's name, as in "lightPoint:bright=0.5".
double OptionOf(std::string_view name, std::string_view option, double fallback) {
  const size_t at = name.find(option);
  if (at == std::string_view::npos) return fallback;
  name.remove_prefix(at + option.size());
  double value = fallback;
  std::from_chars(name.data(), name.data() + name.size(), value);
  return std::isfinite(value) ? value : fallback;
}

// Adds the light that a bone stands for and its node; nothing for the kinds that glTF lacks.
std::optional<size_t> AddLight(GlbBuilder& glb, const CalCoreBone& bone) {
  const char* type = bone.lightType == CalLightType::kPoint         ? "point"
                     : bone.lightType == CalLightType::kDirectional ? "directional"
                     : bone.lightType == CalLightType::kSpot        ? "spot"
                                                                    : nullptr;
  if (type == nullptr) return {};
  // Point lights are told in candela, which fall off by the square of the distance in units; an
  // avatar of 1.8 m has 600 of them.
  constexpr double kUnitsOfMetre = 600 / 1.8;
  constexpr double kBrightLux = 3;
  const double bright = std::max(OptionOf(bone.name, ":bright=", 1), 0.0);
  const CalVector color = FiniteVector(bone.lightColor);
  const auto part = [](float value) { return std::clamp(value, 0.0F, 1.0F); };
  Json light = {
      {"type", type},
      {"color", {part(color.x), part(color.y), part(color.z)}},
      {"intensity",
       bright * kBrightLux *
           (bone.lightType == CalLightType::kDirectional ? 1 : kUnitsOfMetre * kUnitsOfMetre)}};
  if (bone.lightType == CalLightType::kSpot) {
    // The option is the whole cone in degrees, the format wants half of it in radians.
    constexpr double kHalfDegree = 3.14159265 / 360;
    const double cone = std::clamp(OptionOf(bone.name, ":cone=", 45), 1.0, 179.0);
    light["spot"] = {{"innerConeAngle", 0}, {"outerConeAngle", cone * kHalfDegree}};
  }
  const double radius = OptionOf(bone.name, ":radius=", 0);
  if (radius > 0 && bone.lightType != CalLightType::kDirectional) light["range"] = radius;

  glb.Use("KHR_lights_punctual");
  Json& lights = glb["extensions"]["KHR_lights_punctual"]["lights"];
  lights.push_back(std::move(light));
  // A scene's lights shine along -Y, those of the format along -Z.
  constexpr double kHalfRoot = 0.70710678;
  return glb.Add("nodes",
                 {{"name", bone.name},
                  {"rotation", {-kHalfRoot, 0, 0, kHalfRoot}},
                  {"extensions", {{"KHR_lights_punctual", {{"light", lights.size() - 1}}}}}});
}

// The transform as a matrix of the format: columns, one after the other.
std::array<float, 16> MatrixOf(const CalQuaternion& rotation, const CalVector& translation) {
  const CalQuaternion q = UnitRotation(rotation);
  const CalVector t = FiniteVector(translation);
  const auto at = [](double value) { return static_cast<float>(value); };
  const double x = q.x;
  const double y = q.y;
  const double z = q.z;
  const double w = q.w;
  return {at(1 - 2 * (y * y + z * z)),
          at(2 * (x * y + z * w)),
          at(2 * (x * z - y * w)),
          0,
          at(2 * (x * y - z * w)),
          at(1 - 2 * (x * x + z * z)),
          at(2 * (y * z + x * w)),
          0,
          at(2 * (x * z + y * w)),
          at(2 * (y * z - x * w)),
          at(1 - 2 * (x * x + y * y)),
          0,
          t.x,
          t.y,
          t.z,
          1};
}

// One vertex's share of each joint.
using Shares = std::vector<std::pair<uint16_t, float>>;

// Brings the shares of one vertex into the order and the form that the format wants: each joint
// once, the heaviest first, summing up to 1. Without any the vertex stands still.
void Settle(Shares& shares, size_t bones, SkinSets& sets) {
  std::ranges::stable_sort(shares, {}, &Shares::value_type::first);
  size_t kept = 0;
  for (const auto& share : shares) {
    if (kept > 0 && shares[kept - 1].first == share.first) {
      shares[kept - 1].second += share.second;
    } else {
      shares[kept++] = share;
    }
  }
  shares.resize(kept);
  std::ranges::stable_sort(shares, std::greater<>(), &Shares::value_type::second);
  if (shares.size() > kMostInfluences) {
    sets.hasTooMany = true;
    shares.resize(kMostInfluences);
  }
  double sum = 0;
  for (const auto& share : shares) sum += share.second;
  if (shares.empty()) {
    sets.usesRestJoint = true;
    shares.emplace_back(static_cast<uint16_t>(bones), 1.0F);
    sum = 1;
  }
  for (auto& share : shares) share.second = static_cast<float>(share.second / sum);
  std::erase_if(shares, [](const auto& share) { return share.second == 0; });
}

}  // namespace

CalQuaternion UnitRotation(const CalQuaternion& rotation) {
  const double x = FiniteOrZero(rotation.x);
  const double y = FiniteOrZero(rotation.y);
  const double z = FiniteOrZero(rotation.z);
  const double w = FiniteOrZero(rotation.w);
  const double length = std::sqrt(x * x + y * y + z * z + w * w);
  if (!(length > 0)) return {0, 0, 0, 1};
  return {static_cast<float>(x / length), static_cast<float>(y / length),
          static_cast<float>(z / length), static_cast<float>(w / length)};
}

void AddSkeleton(GlbBuilder& glb, const ViewModel& model) {
  constexpr double kHalfRoot = 0.70710678;  // a quarter turn about X
  glb.Add("nodes", {{"name", "veltrum"}, {"rotation", {-kHalfRoot, 0, 0, kHalfRoot}}});
  if (!model.skeleton.core) return;
  const auto& bones = model.skeleton.core->coreBones;
  for (const auto& bone : bones) {
    Json node = {{"name", bone->name},
                 {"translation", Numbers(FiniteVector(bone->relativeTranslation))},
                 {"rotation", Numbers(UnitRotation(bone->relativeRotation))}};
    for (const int32_t child : bone->childIds) node["children"].push_back(child + 1);
    glb.Add("nodes", std::move(node));
  }
  for (size_t i = 0; i < bones.size(); ++i) {
    if (bones[i]->parentId < 0) glb.At("nodes", 0)["children"].push_back(i + 1);
    if (const auto light = AddLight(glb, *bones[i])) {
      glb.At("nodes", i + 1)["children"].push_back(*light);
    }
  }
}

void AddSkin(GlbBuilder& glb, const ViewModel& model, bool restJoint) {
  if (!model.skeleton.core || model.skeleton.core->coreBones.empty()) return;
  Json joints = Json::array();
  std::vector<float> inverses;
  for (const auto& bone : model.skeleton.core->coreBones) {
    const auto matrix = MatrixOf(bone->boneSpaceRotation, bone->boneSpaceTranslation);
    inverses.insert(inverses.end(), matrix.begin(), matrix.end());
    joints.push_back(joints.size() + 1);
  }
  if (restJoint) {
    const auto matrix = MatrixOf({0, 0, 0, 1}, {});
    inverses.insert(inverses.end(), matrix.begin(), matrix.end());
    joints.push_back(0);
  }
  const size_t accessor =
      glb.AddFloats(inverses, GlbBuilder::Shape::kMat4, GlbBuilder::Target::kNone);
  glb.Add("skins", {{"name", FileStem(model.skeleton.file)},
                    {"inverseBindMatrices", accessor},
                    {"joints", std::move(joints)}});
}

SkinSets PackInfluences(const CalCoreSubmesh& submesh, size_t bones) {
  SkinSets sets;
  const size_t vertices = submesh.vertices().size();
  Shares shares;
  size_t vertex = 0;
  for (const CalCoreSubmesh::Influence& influence : submesh.influences()) {
    const float weight = FiniteOrZero(influence.weight);
    if (influence.boneId >= 0 && static_cast<size_t>(influence.boneId) >= bones) {
      sets.strangeBone = std::max(sets.strangeBone, influence.boneId);
    } else if (weight < 0) {
      sets.hasNegative = true;
    } else if (influence.boneId >= 0 && weight > 0) {
      // Cut, so that no sum of them overflows.
      shares.emplace_back(static_cast<uint16_t>(influence.boneId), std::min(weight, 1e6F));
    }
    if (influence.lastInfluenceForThisVertex == 0) continue;
    Settle(shares, bones, sets);
    for (size_t i = 0; i < shares.size(); ++i) {
      const size_t set = i / kInSet;
      if (set == sets.joints.size()) {
        sets.joints.emplace_back(vertices * kInSet);
        sets.weights.emplace_back(vertices * kInSet);
      }
      sets.joints[set][vertex * kInSet + i % kInSet] = shares[i].first;
      sets.weights[set][vertex * kInSet + i % kInSet] = shares[i].second;
    }
    shares.clear();
    ++vertex;
  }
  return sets;
}
