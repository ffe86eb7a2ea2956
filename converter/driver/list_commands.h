// The listings: one operation for each type of object. Each reports what it lists in records and
// has no result.
#pragma once

#include "converter/base/conversion_arguments.h"
#include "converter/scene/fbx_wrapper.h"

// The scene's skeletons with their meshes or, with a skeleton's path in `args`, that skeleton's
// nodes.
void ListNodes(FbxWrapper* wrapper, const ConversionArguments& args);

// The meshes with their materials and, in a verbose command, their morph targets.
void ListMeshes(ConversionArguments& args);
