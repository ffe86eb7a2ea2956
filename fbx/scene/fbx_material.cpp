#include "fbx/scene/fbx_material.h"

#include <utility>

#include "fbx/core/fbx_property_page.h"

namespace {

void DeclareMaterial(FbxPropertyPage& page) {
  page.Declare("ShadingModel", FbxStringDT, std::string("Unknown"));
  page.Declare("MultiLayer", FbxBoolDT, int64_t{0});
}

void DeclareColor(FbxPropertyPage& page, const char* name, double grey) {
  page.Declare(name, FbxColor3DT, FbxDouble3{grey, grey, grey}, kAnimatable);
}

void DeclareFactor(FbxPropertyPage& page, const char* name, double factor) {
  page.Declare(name, FbxDoubleDT, factor, kAnimatable);
}

void DeclareLambert(FbxPropertyPage& page) {
  DeclareColor(page, "EmissiveColor", 0.0);
  DeclareFactor(page, "EmissiveFactor", 1.0);
  DeclareColor(page, "AmbientColor", 0.2);
  DeclareFactor(page, "AmbientFactor", 1.0);
  DeclareColor(page, "DiffuseColor", 0.8);
  DeclareFactor(page, "DiffuseFactor", 1.0);
  page.Declare("Bump", FbxDouble3DT);
  page.Declare("NormalMap", FbxDouble3DT);
  DeclareFactor(page, "BumpFactor", 1.0);
  DeclareColor(page, "TransparentColor", 0.0);
  DeclareFactor(page, "TransparencyFactor", 0.0);
  DeclareColor(page, "DisplacementColor", 0.0);
  DeclareFactor(page, "DisplacementFactor", 1.0);
  DeclareColor(page, "VectorDisplacementColor", 0.0);
  DeclareFactor(page, "VectorDisplacementFactor", 1.0);
}

void DeclarePhong(FbxPropertyPage& page) {
  DeclareColor(page, "SpecularColor", 0.2);
  DeclareFactor(page, "SpecularFactor", 1.0);
  DeclareFactor(page, "ShininessExponent", 20.0);
  DeclareColor(page, "ReflectionColor", 0.0);
  DeclareFactor(page, "ReflectionFactor", 1.0);
}

void DeclareTexture(FbxPropertyPage& page) {
  const auto declareEnum = [&page](const char* name, std::vector<std::string> items) {
    page.Declare(name, FbxEnumDT, int64_t{0}, 0, -1, std::move(items));
  };
  declareEnum("TextureTypeUse", {"Color", "Spherical Reflection Map", "Sphere Map", "Shadow Map",
                                 "Light Map", "Bump Map (NormalMap)"});
  page.Declare("Texture alpha", FbxDoubleDT, 1.0, kAnimatable);
  declareEnum("CurrentMappingType", {"None", "UV", "Z", "X", "Y", "Spherical", "Cylindrical",
                                     "Environment", "Projection", "Box", "Face"});
  declareEnum("WrapModeU", {"Repeat", "Clamp"});
  declareEnum("WrapModeV", {"Repeat", "Clamp"});
  page.Declare("UVSwap", FbxBoolDT);
  page.Declare("PremultiplyAlpha", FbxBoolDT, int64_t{1});
  page.Declare("Translation", FbxDouble3DT, {}, kAnimatable);
  page.Declare("Rotation", FbxDouble3DT, {}, kAnimatable);
  page.Declare("Scaling", FbxDouble3DT, FbxDouble3{1.0, 1.0, 1.0}, kAnimatable);
  page.Declare("TextureRotationPivot", FbxDouble3DT);
  page.Declare("TextureScalingPivot", FbxDouble3DT);
  declareEnum("CurrentTextureBlendMode", {"Translucent", "Additive", "Modulate", "Modulate2"});
  page.Declare("UVSet", FbxStringDT, std::string("default"));
}

void DeclareFileTexture(FbxPropertyPage& page) {
  page.Declare("UseMaterial", FbxBoolDT);
  page.Declare("UseMipMap", FbxBoolDT);
  page.Declare("AlphaSource", FbxStringDT);
}

}  // namespace

FBX_OBJECT_DEFINE(FbxSurfaceMaterial, FbxObject, "Material", DeclareMaterial)
FBX_OBJECT_DEFINE(FbxSurfaceLambert, FbxSurfaceMaterial, "Material", DeclareLambert)
FBX_OBJECT_DEFINE(FbxSurfacePhong, FbxSurfaceLambert, "Material", DeclarePhong)
FBX_OBJECT_DEFINE(FbxTexture, FbxObject, "", DeclareTexture)
FBX_OBJECT_DEFINE(FbxFileTexture, FbxTexture, "Texture", DeclareFileTexture)
FBX_OBJECT_DEFINE(FbxLayeredTexture, FbxTexture, "LayeredTexture", nullptr)
FBX_OBJECT_DEFINE(FbxVideo, FbxObject, "Video", nullptr)

void FbxLayeredTexture::ConnectNotify(FbxObject& source, bool connected) {
  if (!source.Is<FbxTexture>()) return;
  if (connected) {
    if (++textureCount_ > inputs.size()) inputs.emplace_back();
    return;
  }
  size_t position = 0;
  for (const FbxProperty& end : RootProperty().Sources()) {
    if (end.GetFbxObject() == &source) break;
    if (end.IsRoot() && end.GetFbxObject()->Is<FbxTexture>()) ++position;
  }
  --textureCount_;
  if (position < inputs.size()) inputs.erase(inputs.begin() + static_cast<ptrdiff_t>(position));
}
