// Reads a pose's record, the current list.
#pragma once

#include "fbx/reader/read_connections.h"

class FbxIO;
class FbxPose;

// An entry whose id isn't a node's is passed over.
void ReadPose(FbxIO& io, FbxPose& pose, const FbxObjectsById& objects);
