// Writes material files and lists textures. Both work on the materials of the meshes that hang on
// the skeleton that the command names, or of all meshes if it names none. Texture files themselves
// are not copied.
#pragma once

#include "converter/base/conversion_arguments.h"
#include "converter/scene/fbx_wrapper.h"

// One .xrf file for each material that has a map in a supported channel, named after the material,
// and a record for each file that was written.
void ExportMaterials(FbxWrapper& scene, const ConversionArguments& args);

// The files in the scene's media folder, the materials, then the textures of each.
void PrintTextureList(FbxWrapper& scene, const ConversionArguments& args);
