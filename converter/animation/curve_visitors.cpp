#include "converter/animation/curve_visitors.h"

#include <algorithm>
#include <array>
#include <bit>
#include <span>

#include "cal3d/io/number_text.h"
#include "converter/space/frames.h"
#include "fbx/anim/fbx_animation.h"
#include "fbx/scene/fbx_node.h"

namespace {

void AppendKey(std::string& text, int64_t frame, float value) {
  AppendNumber(text, frame);
  text += ':';
  AppendNumber(text, value);
  text += ' ';
}

void AppendCurveHead(std::string& text, const std::string& channel, const FbxAnimCurve& curve) {
  text += channel;
  text += ' ';
  AppendNumber(text, int64_t{curve.KeyGetCount()});
  text += '\n';
}

// The curves that visitors are shown, one after the other.
class CurveWalk {
 public:
  explicit CurveWalk(const ChannelRuns& runs) : runs_(runs) {}

  // Goes to the next curve; false at the end.
  bool Next() {
    for (; run_ < runs_.size(); ++run_, node_ = 0) {
      for (; node_ < runs_[run_].size(); ++node_, shape_ = kTransform, channel_ = 0) {
        const NodeChannels& node = Node();
        const size_t shapes = node.showsMorphs ? node.morphs.size() : 0;
        for (; shape_ == kTransform || shape_ < shapes; ++shape_, channel_ = 0) {
          const ChannelCurves& curves = shape_ == kTransform ? node.transform : node.morphs[shape_];
          while (channel_ < curves.size()) {
            current_ = curves[channel_++];
            if (IsCurveValid(current_.curve)) return true;
          }
        }
      }
    }
    return false;
  }

  const NodeChannels& Node() const { return runs_[run_][node_]; }
  const std::string& Channel() const { return *current_.channel; }
  const FbxAnimCurve& Curve() const { return *current_.curve; }

 private:
  static constexpr size_t kTransform = static_cast<size_t>(-1);  // before the first shape

  const ChannelRuns& runs_;
  size_t run_ = 0;
  size_t node_ = 0;
  size_t shape_ = kTransform;
  size_t channel_ = 0;  // within the transform, or the shape
  ChannelCurve current_;
};

int CompareKeys(const FbxAnimCurve& a, const FbxAnimCurve& b) {
  std::string aText;
  std::string bText;
  const int count = a.KeyGetCount();
  for (int i = 0; i < count; ++i) {
    const KFCurve::Key aKey = a.curve.KeyGet(i);
    const KFCurve::Key bKey = b.curve.KeyGet(i);
    if (aKey.time == bKey.time &&
        std::bit_cast<uint32_t>(aKey.value) == std::bit_cast<uint32_t>(bKey.value)) {
      continue;
    }
    aText.clear();
    bText.clear();
    AppendKey(aText, FrameOf(aKey.time), clampKeyValue(aKey.value));
    AppendKey(bText, FrameOf(bKey.time), clampKeyValue(bKey.value));
    if (const int order = aText.compare(bText)) return order;
  }
  return 0;
}

}  // namespace

bool isSkeletal(std::string_view channel) {
  constexpr std::string_view kProperties = "TRS";
  constexpr std::string_view kAxes = "XYZ";
  return channel.size() == 2 && kProperties.find(channel[0]) != std::string_view::npos &&
         kAxes.find(channel[1]) != std::string_view::npos;
}

void AnimationCurveVisitorString::AppendCurve(const std::string& channel,
                                              const FbxAnimCurve& curve) {
  AppendCurveHead(text, channel, curve);
  if (detailLevel < 3) return;
  const int count = curve.KeyGetCount();
  for (int i = 0; i < count; ++i) {
    const KFCurve::Key key = curve.curve.KeyGet(i);
    AppendKey(text, FrameOf(key.time), clampKeyValue(key.value));
  }
  text += '\n';
}

void AnimationCurveVisitorString::VisitCurve(const std::string& channel, FbxAnimCurve* curve) {
  text += currentNode->Name();
  text += ' ';
  AppendCurve(channel, *curve);
}

void AnimationCurveVisitorString::VisitCurveProperty(const std::string& name, FbxAnimCurve* curve,
                                                     FbxProperty* /*property*/) {
  AppendCurveHead(text, name, *curve);
  if (detailLevel < 3) return;
  const int count = curve->KeyGetCount();
  for (int i = 0; i < count; ++i) {
    AppendNumber(text, FrameOf(curve->KeyGetTime(i)));
    text += ':';
    AppendNumber(text, Truncated<int64_t>(static_cast<double>(curve->KeyGetValue(i))));
    text += ' ';
  }
  text += '\n';
}

void AnimationCurveVisitorStringNoNode::VisitCurve(const std::string& channel,
                                                   FbxAnimCurve* curve) {
  AppendCurve(channel, *curve);
}

void DisplayAnimation(SceneChannels& channels, const FbxAnimStack* stack, const FbxNode* node,
                      AnimationCurveVisitor& visitor) {
  for (const LayerChannels* layer : channels.Of(stack)) DisplayAnimation(*layer, node, visitor);
}

void DisplayAnimation(const LayerChannels& layer, const FbxNode* node,
                      AnimationCurveVisitor& visitor) {
  if (!visitor.UseAdvancedCurves()) {
    for (const NodeChannels& channels : layer.Below(node)) DisplayChannels(channels, visitor);
    return;
  }
  for (FbxNode* any : layer.Subtree(node)) {
    visitor.VisitNode(any);
    for (const NodeChannels& channels : layer.Of(any)) {
      DisplaySkeletalChannels(channels, visitor);
      DisplayShapeChannels(channels, visitor);
    }
    DisplayAdvancedChannels(layer.Layer(), any, visitor);
  }
}

void DisplayChannels(const NodeChannels& channels, AnimationCurveVisitor& visitor) {
  visitor.VisitNode(channels.node);
  DisplaySkeletalChannels(channels, visitor);
  DisplayShapeChannels(channels, visitor);
}

void DisplaySkeletalChannels(const NodeChannels& channels, AnimationCurveVisitor& visitor) {
  for (const ChannelCurve& curve : channels.transform) {
    MaybeDisplayCurve(curve.curve, visitor, *curve.channel);
  }
}

void DisplayShapeChannels(const NodeChannels& channels, AnimationCurveVisitor& visitor) {
  if (!channels.showsMorphs) return;
  for (const ChannelCurves& shape : channels.morphs) {
    for (const ChannelCurve& curve : shape) {
      MaybeDisplayCurve(curve.curve, visitor, *curve.channel);
    }
  }
}

void MaybeDisplayCurve(FbxAnimCurve* curve, AnimationCurveVisitor& visitor,
                       const std::string& channel) {
  if (IsCurveValid(curve)) visitor.VisitCurve(channel, curve);
}

std::string CurveText(const ChannelRuns& runs, bool withNodes) {
  AnimationCurveVisitorString named;
  AnimationCurveVisitorStringNoNode nameless;
  AnimationCurveVisitorString& visitor = withNodes ? named : nameless;
  for (const std::span<const NodeChannels>& run : runs) {
    for (const NodeChannels& node : run) DisplayChannels(node, visitor);
  }
  return std::move(visitor.text);
}

int CompareCurveTexts(const ChannelRuns& a, const ChannelRuns& b, bool withNodes) {
  CurveWalk aWalk(a);
  CurveWalk bWalk(b);
  std::string aHead;
  std::string bHead;
  const auto head = [withNodes](std::string& text, const CurveWalk& walk) {
    text.clear();
    if (withNodes) text.append(walk.Node().node->Name()).append(" ");
    AppendCurveHead(text, walk.Channel(), walk.Curve());
  };
  while (true) {
    const bool aHas = aWalk.Next();
    const bool bHas = bWalk.Next();
    if (!aHas || !bHas) return static_cast<int>(aHas) - static_cast<int>(bHas);
    head(aHead, aWalk);
    head(bHead, bWalk);
    if (aHead != bHead) {
      // Heads that differ decide, unless one goes on where the other ends: names can hold line
      // ends.
      if (aHead.starts_with(bHead) || bHead.starts_with(aHead)) {
        return CurveText(a, withNodes).compare(CurveText(b, withNodes));
      }
      return aHead.compare(bHead);
    }
    if (&aWalk.Curve() == &bWalk.Curve()) continue;
    if (const int order = CompareKeys(aWalk.Curve(), bWalk.Curve())) return order;
  }
}

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
