// The listings: one operation for each type of object. Each reports what it lists in records.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "converter/base/conversion_arguments.h"
#include "converter/scene/fbx_wrapper.h"

// A row of the listing of skeletons.
struct ListedSkeleton {
  std::string path;                    // of its first node
  std::string friendlyName;            // that node's name; its path where two skeletons share one
  std::vector<std::string> meshNames;  // sorted
  size_t boneCount = 0;
};
// The skeleton at the scene's root is left out unless meshes hang on it.
std::vector<ListedSkeleton> SkeletonsToList(FbxWrapper& scene, const ConversionArguments& args);

// The scene's skeletons with their meshes or, with a skeleton's path in `args`, that skeleton's
// nodes.
void ListNodes(FbxWrapper& scene, const ConversionArguments& args);

// The meshes with their materials and, in a verbose command, their morph targets. Returns the path
// of the command's root; where it says "find", what was found.
std::string ListMeshes(FbxWrapper& scene, const ConversionArguments& args);
