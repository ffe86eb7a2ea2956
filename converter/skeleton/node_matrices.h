// The matrices that describe a node at rest, in the scene and on the Cal3D side.
#pragma once

#include "cal3d/model/core_skeleton.h"
#include "fbx/math/fbx_matrix.h"

class FbxNode;
class FbxPose;

// The node's matrix in the first of the scene's bind poses that holds it anywhere but in its first
// entry; the identity when there is none.
FbxAMatrix getBindPoseMatrix(const FbxNode* node);

// What a bone's rest pose is computed from.
struct RestMatrices {
  FbxAMatrix global;      // evaluated
  FbxAMatrix globalPose;  // from the bind pose; `global` without one, or without `useBindPose`
};
RestMatrices GetRestMatrices(const FbxNode* node, bool useBindPose);

FbxAMatrix GetPoseMatrix(const FbxPose& pose, int index);
// The offset of the node's own geometry, which children don't inherit.
FbxAMatrix GetGeometry(const FbxNode* node);
// The bone's transform relative to its parent, as the file holds it.
void getMatrixFromCalBone(FbxAMatrix& matrix, const CalCoreBone& bone);
