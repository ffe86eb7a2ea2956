#include "fbx/anim/fbx_anim_stack.h"

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
