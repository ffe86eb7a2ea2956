#include "fbx/anim/curve_conversion.h"

#include <algorithm>
#include <utility>

#include "fbx/core/fbx_property_page.h"
#include "fbx/scene/fbx_scene.h"

namespace {

constexpr std::array<const char*, 3> kAxes = {"X", "Y", "Z"};

struct Channel {
  FbxProperty property;
  std::vector<FbxAnimCurve*> curves;
  bool hasValue = false;
  double value = 0.0;
};

std::vector<FbxAnimCurve*> CurvesOf(const FbxProperty& channel) {
  std::vector<FbxAnimCurve*> curves;
  for (const FbxProperty& source : channel.Sources()) {
    if (source.IsRoot() && source.GetFbxObject()->Is<FbxAnimCurve>()) {
      curves.push_back(static_cast<FbxAnimCurve*>(source.GetFbxObject()));
    }
  }
  return curves;
}

}  // namespace

FbxAxisPermutation::FbxAxisPermutation(const FbxAMatrix& matrix) {
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      const double element = matrix.Get(row, column);
      if (element == 0.0) continue;
      from[static_cast<size_t>(column)] = static_cast<size_t>(row);
      sign[static_cast<size_t>(column)] = element < 0.0 ? -1 : 1;
    }
  }
}

FbxVector4 FbxAxisPermutation::Apply(const FbxVector4& v) const {
  FbxVector4 result = v;
  // Subtracting from 0 makes no negative zeros.
  for (size_t i = 0; i < 3; ++i) result[i] = sign[i] < 0 ? 0.0 - v[from[i]] : v[from[i]];
  return result;
}

FbxCurveConversion::FbxCurveConversion(FbxScene& scene, const FbxAxisPermutation& axes,
                                       std::function<bool(const FbxProperty&)> converted,
                                       std::function<bool(const FbxAnimCurveNode&)> exempt)
    : scene_(scene), axes_(axes), converted_(std::move(converted)), exempt_(std::move(exempt)) {}

void FbxCurveConversion::Convert(FbxProperty property) {
  std::vector<FbxAnimCurveNode*> before;
  std::vector<FbxAnimCurveNode*> after;
  for (const FbxProperty& source : property.Sources()) {
    if (!source.IsRoot() || !source.GetFbxObject()->Is<FbxAnimCurveNode>()) continue;
    before.push_back(static_cast<FbxAnimCurveNode*>(source.GetFbxObject()));
  }
  for (FbxAnimCurveNode* node : before) {
    after.push_back(exempt_ && exempt_(*node) ? Kept(*node, property) : Converted(*node));
  }
  if (after == before) return;
  // All of them, since their order tells which one counts in a layer.
  for (FbxAnimCurveNode* node : before) property.DisconnectSrcObject(node);
  for (FbxAnimCurveNode* node : after) property.ConnectSrcObject(node);
}

FbxAnimCurveNode* FbxCurveConversion::Converted(FbxAnimCurveNode& node) {
  const auto [at, added] = nodes_.try_emplace(&node, &node);
  if (!added) return at->second;
  const FbxPropertyEnds& users = node.RootProperty().Destinations();
  const bool shared = std::any_of(users.begin(), users.end(), [this](const FbxProperty& user) {
    return !user.IsRoot() && !converted_(user);
  });
  if (shared) {
    at->second = Copy(node);
    nodes_.emplace(at->second, at->second);
  }
  Permute(*nodes_.at(&node));
  return nodes_.at(&node);
}

// Where an exempt curve node shows the value of the property, which has been converted, it goes on
// showing what that was.
FbxAnimCurveNode* FbxCurveConversion::Kept(FbxAnimCurveNode& node, const FbxProperty& property) {
  const auto converted = property.Get<FbxDouble3>();
  FbxDouble3 before{};
  for (size_t i = 0; i < 3; ++i) {
    before[axes_.from[i]] = axes_.sign[i] < 0 ? 0.0 - converted[i] : converted[i];
  }
  FbxAnimCurveNode* kept = &node;
  for (size_t i = 0; i < 3; ++i) {
    const FbxProperty channel = node.GetChannel(kAxes[i]);
    if (channel.Modified() || channel.GetSrcObjectCount<FbxAnimCurve>() > 0) continue;
    const bool isShared = node.RootProperty().GetDstPropertyCount() > 1;
    if (isShared && kept == &node) kept = Copy(node);
    kept->CreateChannel(kAxes[i], FbxDoubleDT).Set(before[i]);
  }
  return kept;
}

// A curve node of the same layers with the same curves, connected to no property.
FbxAnimCurveNode* FbxCurveConversion::Copy(const FbxAnimCurveNode& node) {
  auto* copy = FbxAnimCurveNode::Create(node.GetFbxManager(), node.GetName());
  for (const FbxProperty& user : node.RootProperty().Destinations()) {
    if (user.IsRoot()) user.GetFbxObject()->ConnectSrcObject(copy);
  }
  for (const char* name : kAxes) {
    const FbxProperty channel = node.GetChannel(name);
    if (!channel.IsValid()) continue;
    FbxProperty own = copy->CreateChannel(name, channel.GetPropertyDataType());
    if (channel.Modified()) own.SetValue(channel.GetValue());
    for (FbxAnimCurve* curve : CurvesOf(channel)) own.ConnectSrcObject(curve);
  }
  return copy;
}

void FbxCurveConversion::Permute(FbxAnimCurveNode& node) {
  std::array<Channel, 3> channels;
  std::unordered_map<FbxAnimCurve*, int> uses;
  for (size_t i = 0; i < 3; ++i) {
    Channel& channel = channels[i];
    channel.property = node.GetChannel(kAxes[i]);
    channel.curves = CurvesOf(channel.property);
    channel.hasValue = channel.property.Modified();
    channel.value = channel.property.Get<double>();
    for (FbxAnimCurve* curve : channel.curves) {
      channel.property.DisconnectSrcObject(curve);
      ++uses[curve];
    }
  }
  for (auto& [curve, count] : uses) count += curve->RootProperty().GetDstPropertyCount();
  for (size_t i = 0; i < 3; ++i) {
    const Channel& from = channels[axes_.from[i]];
    const bool negative = axes_.sign[i] < 0;
    FbxProperty& property = channels[i].property;
    if (!property.IsValid()) {
      if (!from.property.IsValid()) continue;
      property = node.CreateChannel(kAxes[i], from.property.GetPropertyDataType());
    }
    // A channel without a value shows the property's, which is converted itself.
    if (from.hasValue) {
      property.Set(negative ? 0.0 - from.value : from.value);
    } else {
      property.SetValueInheritType(FbxProperty::eInherit);
    }
    for (FbxAnimCurve* curve : from.curves) {
      property.ConnectSrcObject(negative ? Negated(*curve, uses.at(curve) == 1) : curve);
    }
  }
}

FbxAnimCurve* FbxCurveConversion::Negated(FbxAnimCurve& curve, bool inPlace) {
  if (inPlace) {
    curve.curve.Negate();
    return &curve;
  }
  const auto [at, added] = negated_.try_emplace(&curve, nullptr);
  if (added) {
    at->second = FbxAnimCurve::Create(curve.GetFbxManager(), curve.GetName());
    at->second->curve = curve.curve;
    at->second->curve.Negate();
    scene_.ConnectSrcObject(at->second);
  }
  return at->second;
}
