// What the skeleton export tells on standard output at a verbosity above 0, and of matrices at one
// above 1. Nothing here changes what is written.
#pragma once

#include <string>

#include "converter/base/conversion_arguments.h"
#include "converter/skeleton/node_matrices.h"
#include "converter/skeleton/room_names.h"

class FbxNode;

// How many nodes a room has of each kind.
void TraceMatches(const ConversionArguments& args, const NodeNameVisitor& visitor);
// While the node still has its old name.
void TraceRenaming(const ConversionArguments& args, const FbxNode& node, const std::string& name);
void TraceRoomRoot(const ConversionArguments& args, const FbxNode& root);

// A bone and the matrices that its place comes from.
struct TracedBone {
  const FbxNode& node;
  size_t id;
  bool isRoot;
  bool useBindPose;
  const RestMatrices& rest;
  const FbxAMatrix& parentGlobal;  // as the bones describe it
  const FbxAMatrix& transform;     // relative to the parent
};
void TraceBone(const ConversionArguments& args, const TracedBone& bone);
// The bone's Cal3D-side global transform and its inverse.
void TraceBoneSpace(const ConversionArguments& args, const FbxAMatrix& skelTransform,
                    const FbxAMatrix& inverseBind);
