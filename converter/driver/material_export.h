// Writes material files and lists textures. Both work on the materials of the meshes that hang on
// the skeleton that the command names, or of all meshes if it names none; the root "find" is
// replaced by the path that was found. Texture files themselves are not copied.
#pragma once

#include "converter/base/conversion_arguments.h"

// One .xrf file for each material that has a map in a supported channel, named after the material,
// and a record for each file that was written.
void ExportMaterials(ConversionArguments& args);

// The files in the scene's media folder, the materials, then the textures of each.
void PrintTextureList(ConversionArguments& args);
