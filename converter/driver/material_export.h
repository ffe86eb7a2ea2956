// Writes material files and lists textures, and the folders that textures are in. Both work on the
// materials of the meshes that hang on the skeleton that the command names, or of all meshes if it
// names none. Texture files themselves are not copied.
#pragma once

#include <string>
#include <vector>

#include "converter/base/conversion_arguments.h"
#include "converter/scene/fbx_wrapper.h"

// One .xrf file for each material that has a map in a supported channel, named after the material,
// and a record for each file that was written.
void ExportMaterials(FbxWrapper& scene, const ConversionArguments& args);

// The files in the scene's media folder, the materials, then the textures of each.
void PrintTextureList(FbxWrapper& scene, const ConversionArguments& args);

// The media folder of a scene, in which the importer unpacks embedded media beside it: Model.fbm
// for Model.fbx.
std::string GetMediaFolder(const std::string& fbxFileName);

// The moving of textures out of it, which no command reaches: the list of textures to move is
// always empty. Both operations keep the shape that callers know.
//
// Looks through the scene's folder of textures, Model_textures, and returns an empty list.
std::vector<std::string> gatherTextureListFromDirectory(const std::string& fbxFileName);

// If there is a media folder, makes the folder of textures and then renames an absolute `texture`,
// or copies a relative one, to that folder's path without its "_textures". Always true; throws the
// file system's errors.
bool MoveFileFromSDKTextureDirectoryToZEVOTextureDirectory(const std::string& fbxFileName,
                                                           const std::string& texture,
                                                           const ConversionArguments& args);
