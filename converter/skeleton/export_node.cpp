#include "converter/skeleton/export_node.h"

#include "converter/base/log.h"
#include "converter/skeleton/node_matrices.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_node.h"

ExportNode::ExportNode(const ConversionArguments& args) : args_(args) {
  LOG_INFO(args_.toString());
}

std::unordered_map<const FbxNode*, int> ExportNode::BuildBoneIdMap(NodeSpan nodes) {
  std::unordered_map<const FbxNode*, int> indices;
  for (size_t i = 0; i < nodes.size(); ++i) indices[nodes[i]] = static_cast<int>(i);
  return indices;
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
