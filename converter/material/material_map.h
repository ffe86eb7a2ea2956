// Surface materials as plain text: a material map names the material and, for each channel that has
// a texture, the texture's file as the scene stores it. A material without a diffuse texture, or
// with transparency but no texture for it, gets a synthetic file name that carries the colour or
// the alpha, so that it still survives as a material of its own.
#pragma once

#include <map>
#include <string>

#include "fbx/core/fbx_property.h"

class FbxSurfaceMaterial;
class FbxTexture;
struct MeshHolder_;

// From channel name to texture name. A layer of a layered texture has the channel's name followed
// by its number. The key _MATERIAL holds the material's name; no channel has that name.
using MaterialMap = std::map<std::string, std::string>;
// The material maps of one node by material index. Materials that give no entry are left out, so
// the keys may have gaps.
using MaterialMaps = std::map<int, MaterialMap>;

inline constexpr char _MATERIAL[] = "MATERIAL";  // NOLINT(bugprone-reserved-identifier)
inline constexpr char _TEXTURE[] = "TEXTURE";    // NOLINT(bugprone-reserved-identifier)

// Layers of one layered texture that are looked at. Artists stack a handful; the bound keeps a file
// in which thousands of materials share a texture of thousands of layers from filling the memory.
inline constexpr int kMaxTextureLayers = 64;

// The material maps of a mesh, never empty: a mesh without materials has the one named "unused" at
// index 0. Read from the scene at the first call, with any warnings, and kept in the holder.
const MaterialMaps& GetMeshMaterialMap(MeshHolder_& holder);

// Enters the file of `texture`, as stored, for the channel that `property` is, or for one layer of
// it; `layer` is -1 for a texture without layers. False, and no entry, if the texture isn't a file
// or its name has no base name or no extension.
bool AssignTextureToMaterial(MaterialMap& map, const FbxSurfaceMaterial* material,
                             const FbxProperty& property, const FbxTexture* texture, int layer);
// Enters a name made of the diffuse colour: "COLOR-FF7F00-Skin-DiffuseColor", or one that begins
// with "MISSING-" where the colour is unknown. Components are clamped at 0 below; above 1 they take
// more than two digits. Always true.
bool AssignMissingTextureToMaterial(MaterialMap& map, const FbxSurfaceMaterial* material,
                                    const FbxProperty& property);
// Enters a name made of the opacity, "ALPHA-7F7F7F-Glass-TransparencyFactor", for a material that
// isn't opaque. Always true.
bool AssignMissingAlphaToMaterial(MaterialMap& map, const FbxSurfaceMaterial* material,
                                  const FbxProperty& property);

// The value of _MATERIAL, "" if the map has none.
const std::string& MaterialName(const MaterialMap& map);
