// What a model must hold to make a good file. The savers refuse to write anything else, so that
// every file of ours can be loaded; the loaders check the same as they read.
#pragma once

#include <string>

#include "cal3d/model/core_animation.h"
#include "cal3d/model/core_mesh.h"
#include "cal3d/model/core_skeleton.h"

// Each returns what is wrong, or an empty text.

// Null bones, parents that aren't in the list, parents in a circle.
std::string FaultOf(const CalCoreSkeleton& skeleton);
// Null objects, vertex indices of faces and morph targets out of range, negative bone ids.
std::string FaultOf(const CalCoreMesh& mesh);
// Negative bone ids.
std::string FaultOf(const CalCoreAnimation& animation);
