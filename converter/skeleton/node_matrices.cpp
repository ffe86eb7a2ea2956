#include "converter/skeleton/node_matrices.h"

#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_pose.h"
#include "fbx/scene/fbx_scene.h"

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

FbxAMatrix GetPoseMatrix(const FbxPose& pose, int index) {
  return FbxAMatrix(pose.GetMatrix(index));
}

FbxAMatrix GetGeometry(const FbxNode* node) {
  return {node->GetGeometricTranslation(FbxNode::eSourcePivot),
          node->GetGeometricRotation(FbxNode::eSourcePivot),
          node->GetGeometricScaling(FbxNode::eSourcePivot)};
}

FbxAMatrix GetGlobalPosition(const FbxNode* node, FbxTime time, const FbxPose* pose,
                             const FbxAMatrix* parentGlobal) {
  // Up the tree as long as the pose stores nodes relative to their parents, without recursion.
  FbxAMatrix below;
  for (const FbxNode* n = node; n != nullptr; n = n->GetParent()) {
    const int index = pose == nullptr ? -1 : pose->Find(n);
    if (index < 0) return n->EvaluateGlobalTransform(time) * below;
    below = GetPoseMatrix(*pose, index) * below;
    if (!pose->IsLocalMatrix(index)) return below;
    if (parentGlobal != nullptr) return *parentGlobal * below;
  }
  return below;
}

FbxAMatrix getLocalTransform(const FbxAMatrix& parent, const FbxAMatrix& child) {
  const FbxVector4 unit(1.0, 1.0, 1.0);
  return FbxAMatrix(parent.GetT(), parent.GetR(), unit).Inverse() *
         FbxAMatrix(child.GetT(), child.GetR(), unit);
}

void getMatrixFromCalBone(FbxAMatrix& matrix, const CalCoreBone& bone) {
  const CalQuaternion& q = bone.relativeRotation;
  const CalVector& t = bone.relativeTranslation;
  matrix.SetIdentity();
  matrix.SetQ({q.x, q.y, q.z, q.w});
  matrix.SetT({t.x, t.y, t.z});
}

void getSkeletalMatrix(FbxAMatrix& matrix, const std::vector<boost::shared_ptr<CalCoreBone>>& bones,
                       int boneId) {
  std::vector<int> chain;
  for (int id = boneId; id != -1; id = bones[static_cast<size_t>(id)]->parentId) {
    chain.push_back(id);
  }
  matrix.SetIdentity();
  for (size_t i = chain.size(); i-- > 0;) {
    FbxAMatrix bone;
    getMatrixFromCalBone(bone, *bones[static_cast<size_t>(chain[i])]);
    matrix *= bone;
  }
}
