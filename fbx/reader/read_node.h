// Reads nodes and the attributes that aren't geometry. The current list is the object's record.
#pragma once

#include "fbx/scene/fbx_node_attribute.h"

class FbxIO;
class FbxNode;

void ReadNode(FbxIO& io, FbxNode& node);

void ReadSkeleton(FbxIO& io, FbxSkeleton& skeleton, FbxSkeleton::ESkeletonType type);
