// The listings: one operation for each type of object. Each reports what it lists in records.
#pragma once

#include <string>

#include "converter/base/conversion_arguments.h"
#include "converter/scene/fbx_wrapper.h"

// The scene's skeletons with their meshes or, with a skeleton's path in `args`, that skeleton's
// nodes.
void ListNodes(FbxWrapper& scene, const ConversionArguments& args);

// The meshes with their materials and, in a verbose command, their morph targets. Returns the path
// of the command's root; where it says "find", what was found.
std::string ListMeshes(FbxWrapper& scene, const ConversionArguments& args);
