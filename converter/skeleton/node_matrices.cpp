#include "converter/skeleton/node_matrices.h"

#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

namespace {

// A pose matrix this near to the identity is no pose.
constexpr double kIdentityThreshold = 1e-6;

}  // namespace

FbxAMatrix getBindPoseMatrix(const FbxNode* node) {
  std::vector<FbxPose*> poses;
  std::vector<int> indices;
  if (FbxPose::GetBindPoseContaining(node->GetScene(), node, poses, indices)) {
    for (size_t i = 0; i < poses.size(); ++i) {
      if (indices[i] > 0) return GetPoseMatrix(*poses[i], indices[i]);
    }
  }
  return {};
}

RestMatrices GetRestMatrices(const FbxNode* node, bool useBindPose) {
  RestMatrices rest;
  rest.global = node->EvaluateGlobalTransform();
  if (useBindPose) rest.globalPose = getBindPoseMatrix(node);
  if (rest.globalPose.IsIdentity(kIdentityThreshold)) rest.globalPose = rest.global;
  return rest;
}

FbxAMatrix GetPoseMatrix(const FbxPose& pose, int index) {
  return FbxAMatrix(pose.GetMatrix(index));
}

FbxAMatrix GetGeometry(const FbxNode* node) {
  return {node->GetGeometricTranslation(FbxNode::eSourcePivot),
          node->GetGeometricRotation(FbxNode::eSourcePivot),
          node->GetGeometricScaling(FbxNode::eSourcePivot)};
}

void getMatrixFromCalBone(FbxAMatrix& matrix, const CalCoreBone& bone) {
  const CalQuaternion& q = bone.relativeRotation;
  const CalVector& t = bone.relativeTranslation;
  matrix.SetIdentity();
  matrix.SetQ({q.x, q.y, q.z, q.w});
  matrix.SetT({t.x, t.y, t.z});
}
