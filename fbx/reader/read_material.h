// Reads surface materials and their textures. The current list is the object's record.
#pragma once

#include <string>
#include <string_view>

#include "fbx/core/fbx_class_id.h"

class FbxFileTexture;
class FbxIO;
class FbxLayeredTexture;
class FbxMediaFolder;
class FbxSurfaceMaterial;

// The shading model of a material's record, which its subclass names, or else a field.
std::string ReadShadingModel(FbxIO& io, std::string_view subclass);
// Phong for "Phong" and "Blinn", Lambert for "Lambert", in any case, else the base class.
FbxClassId SurfaceMaterialClass(std::string_view shadingModel);
void ReadSurfaceMaterial(FbxIO& io, FbxSurfaceMaterial& material, std::string_view shadingModel);
void ReadFileTexture(FbxIO& io, FbxFileTexture& texture, const FbxMediaFolder& media);
void ReadLayeredTexture(FbxIO& io, FbxLayeredTexture& texture);
