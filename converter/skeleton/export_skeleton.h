// Turns a hierarchy of the scene into a Cal3D skeleton file. Every node below the chosen root
// becomes a bone; the rest pose is the bind pose where the file has one. A room's special nodes are
// renamed first, and bones can stand for lights.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "cal3d/model/core_skeleton.h"
#include "converter/base/conversion_arguments.h"
#include "converter/skeleton/room_names.h"
#include "fbx/math/fbx_matrix.h"

// Writes the skeleton below `root` to `fileName`; false if the file can't be written. For a room
// the root's name is changed only while the skeleton is built, and the names of special nodes for
// good.
bool ExportCal3DSkeleton(FbxNode* root, const std::string& fileName,
                         const ConversionArguments& args);

// Appends the bones of `node` and of everything below it, each behind its parent. `parentGlobal` is
// the parent's global transform as the bones describe it, `parentId` the parent's index in `bones`,
// -1 for the root. Bones take their names from `names`, and nodes that have none there are entered
// with their own. An ambient light becomes the scene's ambient colour.
void AddBoneToList(const FbxAMatrix& parentGlobal,
                   std::vector<boost::shared_ptr<CalCoreBone>>& bones, FbxNode* node, int parentId,
                   const ConversionArguments& args, NodeNames& names);
