// The media folder, in which the importer unpacks embedded media beside the scene (Model.fbm for
// Model.fbx), and the moving of textures out of it. No command reaches the moving: the list of
// textures to move is always empty. Both operations keep the shape that callers know.
#pragma once

#include <string>
#include <vector>

#include "converter/base/conversion_arguments.h"

// The media folder of a scene.
std::string GetMediaFolder(const std::string& fbxFileName);

// Looks through the scene's folder of textures, Model_textures, and returns an empty list.
std::vector<std::string> gatherTextureListFromDirectory(const std::string& fbxFileName);

// If there is a media folder, makes the folder of textures and then renames an absolute `texture`,
// or copies a relative one, to that folder's path without its "_textures". Always true; throws the
// file system's errors.
bool MoveFileFromSDKTextureDirectoryToZEVOTextureDirectory(const std::string& fbxFileName,
                                                           const std::string& texture,
                                                           const ConversionArguments& args);
