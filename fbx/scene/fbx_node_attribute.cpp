#include "fbx/scene/fbx_node_attribute.h"

#include "fbx/core/fbx_property_page.h"
#include "fbx/scene/fbx_node.h"

namespace {

void DeclareSkeleton(FbxPropertyPage& page) {
  page.Declare("Size", FbxDoubleDT, 100.0);
  page.Declare("LimbLength", FbxDoubleDT, 1.0);
  page.Declare("Color", FbxColor3DT, FbxDouble3{0.8, 0.8, 0.8});
}

void DeclareNull(FbxPropertyPage& page) { page.Declare("Size", FbxDoubleDT, 100.0); }

void DeclareLight(FbxPropertyPage& page) {
  page.Declare("LightType", FbxEnumDT, int64_t{FbxLight::ePoint}, 0, -1,
               {"Point Light", "Infinite Light", "Spot Light", "Area Light", "Volume Light"});
  page.Declare("CastLight", FbxBoolDT, int64_t{1});
  page.Declare("CastShadows", FbxBoolDT, int64_t{0});
  page.Declare("Color", FbxColor3DT, FbxDouble3{1.0, 1.0, 1.0}, kAnimatable);
  page.Declare("Intensity", FbxDoubleDT, 100.0, kAnimatable);
  page.Declare("InnerAngle", FbxDoubleDT, 0.0, kAnimatable);
  page.Declare("OuterAngle", FbxDoubleDT, 45.0, kAnimatable);
}

}  // namespace

FBX_OBJECT_DEFINE(FbxNodeAttribute, FbxObject, "NodeAttribute", nullptr)
FBX_OBJECT_DEFINE(FbxNull, FbxNodeAttribute, "NodeAttribute", DeclareNull)
FBX_OBJECT_DEFINE(FbxSkeleton, FbxNodeAttribute, "NodeAttribute", DeclareSkeleton)
FBX_OBJECT_DEFINE(FbxCamera, FbxNodeAttribute, "NodeAttribute", nullptr)
FBX_OBJECT_DEFINE(FbxLight, FbxNodeAttribute, "NodeAttribute", DeclareLight)

FbxNode* FbxNodeAttribute::GetNode(int index) const { return GetDstObject<FbxNode>(index); }

int FbxLight::GetLightType() const { return FindProperty("LightType").Get<int>(); }

FbxDouble3 FbxLight::GetColor() const { return FindProperty("Color").Get<FbxDouble3>(); }
