#include "fbx/anim/fbx_animation.h"

#include "fbx/core/fbx_property_page.h"

namespace {

void DeclareLayer(FbxPropertyPage& page) {
  const FbxDataType number = GetDataTypeFromName("Number");
  const FbxDataType boolean = GetDataTypeFromName("Bool");
  page.Declare("Weight", number, 100.0, FbxPropertyFlags::eAnimatable);
  page.Declare("Mute", boolean, int64_t{0});
  page.Declare("Solo", boolean, int64_t{0});
  page.Declare("Lock", boolean, int64_t{0});
  page.Declare("BlendMode", GetDataTypeFromName("Enum"), int64_t{FbxAnimLayer::eBlendAdditive}, 0,
               -1, {"Additive", "Override", "OverridePassthrough"});
}

void DeclareStack(FbxPropertyPage& page) {
  page.Declare("Description", GetDataTypeFromName("KString"));
  for (const char* name : {"LocalStart", "LocalStop", "ReferenceStart", "ReferenceStop"}) {
    page.Declare(name, GetDataTypeFromName("Time"), FbxTime());
  }
}

}  // namespace

FBX_OBJECT_DEFINE(FbxAnimLayer, FbxCollection, "AnimationLayer", DeclareLayer)
FBX_OBJECT_DEFINE(FbxAnimStack, FbxCollection, "AnimationStack", DeclareStack)

void FbxScene::SetCurrentAnimationStack(FbxAnimStack* stack) {
  currentStack_ = stack;
  ++animationRevision_;
}

FbxAnimStack* FbxScene::GetCurrentAnimationStack() const {
  return static_cast<FbxAnimStack*>(currentStack_);
}

double FbxAnimLayer::GetWeight() const { return FindProperty("Weight").Get<double>(); }

int FbxAnimLayer::GetBlendMode() const { return FindProperty("BlendMode").Get<int>(); }

bool FbxAnimLayer::IsMuted() const { return FindProperty("Mute").Get<bool>(); }

FbxTimeSpan FbxAnimStack::GetLocalTimeSpan() const {
  return {FindProperty("LocalStart").Get<FbxTime>(), FindProperty("LocalStop").Get<FbxTime>()};
}

FbxTimeSpan FbxAnimStack::GetReferenceTimeSpan() const {
  return {FindProperty("ReferenceStart").Get<FbxTime>(),
          FindProperty("ReferenceStop").Get<FbxTime>()};
}

namespace {

constexpr const char* kChannelParent = "d";

void DeclareCurveNode(FbxPropertyPage& page) {
  page.Declare(kChannelParent, GetDataTypeFromName("Compound"));
}

}  // namespace

FBX_OBJECT_DEFINE(FbxAnimCurveBase, FbxObject, "", nullptr)
FBX_OBJECT_DEFINE(FbxAnimCurve, FbxAnimCurveBase, "AnimationCurve", nullptr)
FBX_OBJECT_DEFINE(FbxAnimCurveNode, FbxObject, "AnimationCurveNode", DeclareCurveNode)

const std::vector<FbxProperty>& FbxAnimCurveNode::Channels() const {
  const FbxProperty parent = FindProperty(kChannelParent);
  FbxProperty p = lastSeen_.IsValid() ? GetNextProperty(lastSeen_) : GetFirstProperty();
  for (; p.IsValid(); p = GetNextProperty(p)) {
    if (p.IsChildOf(parent) && p.GetPropertyDataType().HasValue()) channels_.push_back(p);
    lastSeen_ = p;
  }
  return channels_;
}

int FbxAnimCurveNode::GetChannelsCount() const { return static_cast<int>(Channels().size()); }

FbxProperty FbxAnimCurveNode::GetChannel(int channel) const {
  const std::vector<FbxProperty>& channels = Channels();
  return channel < 0 || static_cast<size_t>(channel) >= channels.size()
             ? FbxProperty()
             : channels[static_cast<size_t>(channel)];
}

FbxProperty FbxAnimCurveNode::GetChannel(const char* name) const {
  return FindProperty(kChannelParent).Find(name);
}

FbxProperty FbxAnimCurveNode::CreateChannel(const char* name, FbxDataType type) {
  return FbxProperty::Create(FindProperty(kChannelParent), type, name);
}

int FbxAnimCurveNode::GetChannelIndex(const char* name) const {
  const std::vector<FbxProperty>& channels = Channels();
  const FbxProperty channel = GetChannel(name);
  for (size_t i = 0; i < channels.size(); ++i) {
    if (channels[i] == channel) return static_cast<int>(i);
  }
  return -1;
}

int FbxAnimCurveNode::GetCurveCount(int channel) const {
  return GetChannel(channel).GetSrcObjectCount<FbxAnimCurve>();
}

FbxAnimCurve* FbxAnimCurveNode::GetCurve(int channel, int index) const {
  return GetChannel(channel).GetSrcObject<FbxAnimCurve>(index);
}

FbxAnimCurveNode* FbxProperty::GetCurveNode(const FbxAnimLayer* layer) const {
  if (layer == nullptr) return nullptr;
  for (const FbxProperty& source : Sources()) {
    FbxObject* object = source.GetFbxObject();
    if (source.IsRoot() && object->Is<FbxAnimCurveNode>() && layer->IsConnectedSrcObject(object)) {
      return static_cast<FbxAnimCurveNode*>(object);
    }
  }
  return nullptr;
}

FbxAnimCurve* FbxProperty::GetCurve(const FbxAnimLayer* layer, const char* channel) const {
  const FbxAnimCurveNode* node = GetCurveNode(layer);
  if (node == nullptr) return nullptr;
  return channel == nullptr ? node->GetCurve(0)
                            : node->GetChannel(channel).GetSrcObject<FbxAnimCurve>();
}
