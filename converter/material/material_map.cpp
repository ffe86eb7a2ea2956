#include "converter/material/material_map.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <string_view>
#include <utility>

#include "converter/base/records.h"
#include "converter/scene/mesh_holder.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"

namespace {

constexpr std::string_view kDiffuseColor = "DiffuseColor";
constexpr std::string_view kTransparencyFactor = "TransparencyFactor";
constexpr char kUnused[] = "unused";

// A colour component or an alpha as an integer from 0 up; 255 for 1.
unsigned ToByteScale(double value) {
  const double scaled = value * 255.0;
  if (!(scaled > 0.0)) return 0;
  constexpr unsigned kLargest = std::numeric_limits<unsigned>::max();
  return scaled < kLargest ? static_cast<unsigned>(scaled) : kLargest;
}

std::string HexTriple(unsigned first, unsigned second, unsigned third) {
  char text[3 * 8 + 1];
  std::snprintf(text, sizeof text, "%02X%02X%02X", first, second, third);
  return text;
}

void Enter(MaterialMap& map, const FbxSurfaceMaterial& material, std::string key,
           std::string value) {
  map[std::move(key)] = std::move(value);
  map[_MATERIAL] = material.Name();
}

// Enters "<prefix><material>-<channel>" for a channel without a texture.
void EnterSynthetic(MaterialMap& map, const FbxSurfaceMaterial& material,
                    const FbxProperty& property, std::string prefix) {
  const FbxString channel = property.GetName();
  prefix.append(material.Name()).append("-").append(channel.Text());
  Enter(map, material, channel.Text(), std::move(prefix));
}

bool AssignLayersToMaterial(MaterialMap& map, const FbxSurfaceMaterial& material,
                            const FbxProperty& property, const FbxLayeredTexture& layered) {
  const int count = layered.GetSrcObjectCount<FbxTexture>();
  if (count > kMaxTextureLayers) {
    AddWarning("Material " + material.Name() + " has " + std::to_string(count) +
               " texture layers on " + property.GetName().Text() + ", and only the first " +
               std::to_string(kMaxTextureLayers) + " are used.");
  }
  bool assigned = false;
  for (int layer = 0; layer < std::min(count, kMaxTextureLayers); ++layer) {
    const FbxTexture* texture = layered.GetSrcObject<FbxTexture>(layer);
    assigned |= AssignTextureToMaterial(map, &material, property, texture, layer);
  }
  return assigned;
}

void AssignChannelToMaterial(MaterialMap& map, const FbxSurfaceMaterial& material,
                             std::string_view channel) {
  const FbxProperty property = material.FindProperty(channel);
  if (!property.IsValid()) return;
  bool assigned = false;
  for (const FbxProperty& source : property.Sources()) {
    const FbxObject* object = source.IsRoot() ? source.GetFbxObject() : nullptr;
    if (object == nullptr || !object->Is<FbxTexture>()) continue;
    if (object->Is<FbxLayeredTexture>()) {
      assigned |= AssignLayersToMaterial(map, material, property,
                                         static_cast<const FbxLayeredTexture&>(*object));
    } else {
      assigned |= AssignTextureToMaterial(map, &material, property,
                                          static_cast<const FbxTexture*>(object), -1);
    }
  }
  if (assigned) return;
  if (channel == kDiffuseColor) {
    AssignMissingTextureToMaterial(map, &material, property);
  } else if (channel == kTransparencyFactor) {
    AssignMissingAlphaToMaterial(map, &material, property);
  }
}

}  // namespace

const MaterialMaps& GetMeshMaterialMap(MeshHolder_& holder) {
  MaterialMaps& maps = holder.materialMaps;
  if (!maps.empty()) return maps;
  const int count =
      holder.node == nullptr ? 0 : holder.node->GetSrcObjectCount<FbxSurfaceMaterial>();
  for (int i = 0; i < count; ++i) {
    const FbxSurfaceMaterial* material = holder.node->GetSrcObject<FbxSurfaceMaterial>(i);
    if (material == nullptr) continue;
    MaterialMap map;
    for (const char* channel : FbxLayerElement::sTextureChannelNames) {
      AssignChannelToMaterial(map, *material, channel);
    }
    if (!map.empty()) maps.emplace(i, std::move(map));
  }
  if (maps.empty()) {
    maps[0] = {{_MATERIAL, kUnused}, {std::string(kDiffuseColor), kUnused}};
  }
  return maps;
}

bool AssignTextureToMaterial(MaterialMap& map, const FbxSurfaceMaterial* material,
                             const FbxProperty& property, const FbxTexture* texture, int layer) {
  if (texture == nullptr || !texture->Is<FbxFileTexture>()) return false;
  const std::string name = static_cast<const FbxFileTexture*>(texture)->GetFileName();
  if (name.empty() || name.back() == '/' || name.back() == '\\') return false;
  const size_t dot = name.rfind('.');
  if (dot == std::string::npos || dot == 0 || dot == name.size() - 1) return false;
  std::string key = property.GetName().Text();
  if (layer != -1) key += std::to_string(layer);
  Enter(map, *material, std::move(key), name);
  return true;
}

bool AssignMissingTextureToMaterial(MaterialMap& map, const FbxSurfaceMaterial* material,
                                    const FbxProperty& property) {
  const FbxProperty diffuse = material->FindProperty(kDiffuseColor);
  bool known = material->Is<FbxSurfaceLambert>();  // or Phong, which derives from it
  if (!known && !diffuse.IsValid()) {
    AddWarning("DiffuseColor is not valid");
  } else if (!known) {
    const FbxDataType type = diffuse.GetPropertyDataType();
    known = type == FbxColor3DT || type == FbxColor4DT;
  }
  std::string text = "MISSING-";
  if (known) {
    const auto color = diffuse.Get<FbxDouble3>();
    text = "COLOR-" +
           HexTriple(ToByteScale(color[0]), ToByteScale(color[1]), ToByteScale(color[2])) + "-";
  }
  EnterSynthetic(map, *material, property, std::move(text));
  return true;
}

bool AssignMissingAlphaToMaterial(MaterialMap& map, const FbxSurfaceMaterial* material,
                                  const FbxProperty& property) {
  bool hasAlpha = false;
  float alpha = 1.0F;
  const FbxProperty factor = material->FindProperty(kTransparencyFactor);
  if (factor.IsValid()) hasAlpha = factor.Get<double>() != 0.0;
  const FbxProperty opacity = material->FindProperty("Opacity");
  if (opacity.IsValid()) {
    // Stands above the factor, also where it says that the material is opaque.
    alpha = static_cast<float>(opacity.Get<double>());
    hasAlpha = alpha != 1.0F;
  }
  float transparency = 0.0F;
  const FbxProperty color = material->FindProperty("TransparentColor");
  if (hasAlpha && color.IsValid()) {
    const auto value = color.Get<FbxDouble4>();
    if (value[1] != value[0] || value[2] != value[0]) {
      AddWarning("TransparentColor is not consistant.");
    }
    transparency = static_cast<float>(value[0]);
  }
  // The factor's own value never counts: it only lets the colour in.
  if (hasAlpha && alpha == 1.0F && alpha + transparency != 1.0F) alpha = 1.0F - transparency;
  const unsigned level = ToByteScale(alpha);
  if (!hasAlpha || level >= 255) return true;
  if (level == 0) AddWarning(material->Name() + " is a fully transparent material");
  EnterSynthetic(map, *material, property, "ALPHA-" + HexTriple(level, level, level) + "-");
  return true;
}

const std::string& MaterialName(const MaterialMap& map) {
  static const std::string kNone;
  const auto found = map.find(_MATERIAL);
  return found == map.end() ? kNone : found->second;
}
