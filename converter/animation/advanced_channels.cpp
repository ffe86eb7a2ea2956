#include "converter/animation/advanced_channels.h"

#include <array>
#include <span>

#include "converter/animation/curve_visitors.h"
#include "fbx/anim/fbx_anim_curve.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_node_attribute.h"

namespace {

constexpr std::array<const char*, 3> kComponents = {"X", "Y", "Z"};

struct LabelledProperty {
  const char* name;
  const char* label;
};
constexpr std::array<LabelledProperty, 3> kLightProperties = {
    {{"Intensity", "Intensity"}, {"OuterAngle", "Outer Angle"}, {"Fog", "Fog"}}};
constexpr std::array<LabelledProperty, 6> kCameraProperties = {
    {{"FieldOfView", "Field of View"},
     {"FieldOfViewX", "Field of View X"},
     {"FieldOfViewY", "Field of View Y"},
     {"OpticalCenterX", "Optical Center X"},
     {"OpticalCenterY", "Optical Center Y"},
     {"Roll", "Roll"}}};

void DisplayAttribute(const FbxAnimLayer* layer, const FbxNodeAttribute& attribute,
                      AnimationCurveVisitor& visitor) {
  constexpr std::array<const char*, 3> kColors = {"Red", "Green", "Blue"};
  const FbxProperty color = attribute.FindProperty("Color");
  for (size_t i = 0; i < 3; ++i) {
    MaybeDisplayCurve(color.GetCurve(layer, kComponents[i]), visitor, kColors[i]);
  }
  std::span<const LabelledProperty> properties;
  if (attribute.GetAttributeType() == FbxNodeAttribute::eLight) properties = kLightProperties;
  if (attribute.GetAttributeType() == FbxNodeAttribute::eCamera) properties = kCameraProperties;
  for (const LabelledProperty& property : properties) {
    MaybeDisplayCurve(attribute.FindProperty(property.name).GetCurve(layer), visitor,
                      property.label);
  }
}

void DisplayUserProperty(const FbxAnimLayer* layer, FbxProperty property,
                         AnimationCurveVisitor& visitor) {
  std::string label = "Property:" + property.GetName().Text();
  if (!property.GetLabel().IsEmpty()) {
    label.append(" (Label: ").append(property.GetLabel().Text()).append(")");
  }
  const auto display = [&](const char* component, const std::string& name) {
    FbxAnimCurve* curve = property.GetCurve(layer, component);
    if (IsCurveValid(curve)) visitor.VisitCurveProperty(name, curve, &property);
  };
  const EFbxType type = property.GetPropertyDataType().GetType();
  if (type == eFbxDouble3 || type == eFbxDouble4) {
    for (const char* component : kComponents) display(component, label + ":" + component);
  } else {
    display(nullptr, label);
  }
}

class ChannelFinder : public AnimationCurveVisitor {
 public:
  void VisitCurve(const std::string& /*channel*/, FbxAnimCurve* /*curve*/) override {
    found = true;
  }
  void VisitCurveProperty(const std::string& /*name*/, FbxAnimCurve* /*curve*/,
                          FbxProperty* /*property*/) override {
    found = true;
  }
  bool found = false;
};

}  // namespace

void DisplayAdvancedChannels(const FbxAnimLayer* layer, FbxNode* node,
                             AnimationCurveVisitor& visitor) {
  if (const FbxNodeAttribute* attribute = node->GetNodeAttribute()) {
    DisplayAttribute(layer, *attribute, visitor);
  }
  for (FbxProperty property = node->GetFirstProperty(); property.IsValid();
       property = node->GetNextProperty(property)) {
    if (property.GetFlag(FbxPropertyFlags::eUserDefined) &&
        property.GetFlag(FbxPropertyFlags::eAnimatable)) {
      DisplayUserProperty(layer, property, visitor);
    }
  }
}

bool HasChannels(const LayerChannels& layer, FbxNode* node) {
  ChannelFinder finder;
  for (const NodeChannels& channels : layer.Of(node)) DisplayChannels(channels, finder);
  DisplayAdvancedChannels(layer.Layer(), node, finder);
  return finder.found;
}

FbxString DisplayAnimationNodes(const LayerChannels& layer, const FbxNode* node, bool wanted) {
  std::string text;
  for (FbxNode* any : layer.Subtree(node)) {
    if (HasChannels(layer, any) == wanted) text.append("[").append(any->Name()).append("] ");
  }
  return text;
}
