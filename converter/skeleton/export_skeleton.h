// Turns a hierarchy of the scene into a Cal3D skeleton file. Every node below the chosen root
// becomes a bone; the rest pose is the bind pose where the file has one. A room's special nodes are
// renamed first, and bones can stand for lights.
#pragma once

#include <string>

#include "converter/base/conversion_arguments.h"

class FbxNode;

// Writes the skeleton below `root` to `fileName`; false if the file can't be written. For a room
// the root's name is changed only while the skeleton is built, and the names of special nodes for
// good.
bool ExportCal3DSkeleton(FbxNode* root, const std::string& fileName,
                         const ConversionArguments& args);
