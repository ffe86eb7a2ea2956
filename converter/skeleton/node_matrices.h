// The matrices that describe a node at rest, in the scene and on the Cal3D side.
#pragma once

#include <vector>

#include <boost/shared_ptr.hpp>

#include "cal3d/model/core_skeleton.h"
#include "fbx/core/fbx_time.h"
#include "fbx/math/fbx_matrix.h"

class FbxNode;
class FbxPose;

// The node's matrix in the first of the scene's bind poses that holds it anywhere but in its first
// entry; the identity when there is none.
FbxAMatrix getBindPoseMatrix(const FbxNode* node);
FbxAMatrix GetPoseMatrix(const FbxPose& pose, int index);
// The offset of the node's own geometry, which children don't inherit.
FbxAMatrix GetGeometry(const FbxNode* node);
// The node's place in the world: as the pose has it if the pose holds the node, otherwise evaluated
// at `time`. A pose that stores the node relative to its parent is multiplied by `parentGlobal`, or
// by the parent's own place when that is null. `pose` may be null.
FbxAMatrix GetGlobalPosition(const FbxNode* node, FbxTime time, const FbxPose* pose,
                             const FbxAMatrix* parentGlobal = nullptr);
// The child's transform relative to the parent, with the scaling of both left out.
FbxAMatrix getLocalTransform(const FbxAMatrix& parent, const FbxAMatrix& child);

// The bone's transform relative to its parent, as the file holds it.
void getMatrixFromCalBone(FbxAMatrix& matrix, const CalCoreBone& bone);
// The product of those from the root down to the bone; the identity for a bone id of -1. A bone's
// parent stands before it.
void getSkeletalMatrix(FbxAMatrix& matrix, const std::vector<boost::shared_ptr<CalCoreBone>>& bones,
                       int boneId);
