#include "fbx/scene/fbx_deformer.h"

#include "fbx/core/fbx_property_page.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

namespace {

void DeclareChannel(FbxPropertyPage& page) {
  page.Declare("DeformPercent", FbxDoubleDT, 0.0, FbxPropertyFlags::eAnimatable);
}

}  // namespace

FBX_OBJECT_DEFINE(FbxDeformer, FbxObject, "Deformer", nullptr)
FBX_OBJECT_DEFINE(FbxSkin, FbxDeformer, "Deformer", nullptr)
FBX_OBJECT_DEFINE(FbxBlendShape, FbxDeformer, "Deformer", nullptr)
FBX_OBJECT_DEFINE(FbxSubDeformer, FbxObject, "SubDeformer", nullptr)
FBX_OBJECT_DEFINE(FbxCluster, FbxSubDeformer, "Deformer", nullptr)
FBX_OBJECT_DEFINE(FbxBlendShapeChannel, FbxSubDeformer, "Deformer", DeclareChannel)

FbxGeometry* FbxDeformer::GetGeometry() const { return GetDstObject<FbxGeometry>(); }

FbxNode* FbxCluster::GetLink() const { return GetSrcObject<FbxNode>(); }

int FbxBlendShapeChannel::GetTargetShapeCount() const { return GetSrcObjectCount<FbxShape>(); }

FbxShape* FbxBlendShapeChannel::GetTargetShape(int index) const {
  return GetSrcObject<FbxShape>(index);
}

FBX_OBJECT_DEFINE(FbxPose, FbxObject, "Pose", nullptr)

void FbxPose::Add(FbxNode* node, const FbxMatrix& matrix, bool local) {
  firstByNode_.emplace(node, GetCount());
  entries_.push_back({node, matrix, local});
}

FbxNode* FbxPose::GetNode(int index) const {
  return index < 0 || index >= GetCount() ? nullptr : entries_[static_cast<size_t>(index)].node;
}

const FbxMatrix& FbxPose::GetMatrix(int index) const {
  static const FbxMatrix kIdentity;
  return index < 0 || index >= GetCount() ? kIdentity : entries_[static_cast<size_t>(index)].matrix;
}

bool FbxPose::IsLocalMatrix(int index) const {
  return index >= 0 && index < GetCount() && entries_[static_cast<size_t>(index)].local;
}

void FbxPose::SetMatrix(int index, const FbxMatrix& matrix) {
  if (index >= 0 && index < GetCount()) entries_[static_cast<size_t>(index)].matrix = matrix;
}

int FbxPose::Find(const FbxNode* node) const {
  const auto found = firstByNode_.find(node);
  return found == firstByNode_.end() ? -1 : found->second;
}

int FbxPose::Find(const char* name, int what) const {
  const std::string wanted = NoPrefixName(name == nullptr ? "" : name);
  for (size_t i = 0; i < entries_.size(); ++i) {
    const FbxNode* node = entries_[i].node;
    if (node == nullptr) continue;
    if (((what & eInitialName) != 0 && NoPrefixName(node->InitialName()) == wanted) ||
        ((what & eCurrentName) != 0 && NoPrefixName(node->Name()) == wanted)) {
      return static_cast<int>(i);
    }
  }
  return -1;
}

bool FbxPose::GetBindPoseContaining(const FbxScene* scene, const FbxNode* node,
                                    std::vector<FbxPose*>& poses, std::vector<int>& indices) {
  if (scene == nullptr || node == nullptr) return false;
  const size_t before = poses.size();
  const int count = scene->GetSrcObjectCount<FbxPose>();
  for (int i = 0; i < count; ++i) {
    FbxPose* pose = scene->GetSrcObject<FbxPose>(i);
    const int index = pose->IsBindPose() ? pose->Find(node) : -1;
    if (index < 0) continue;
    poses.push_back(pose);
    indices.push_back(index);
  }
  return poses.size() > before;
}
