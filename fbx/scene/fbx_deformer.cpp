#include "fbx/scene/fbx_deformer.h"

#include "fbx/core/fbx_property_page.h"
#include "fbx/scene/fbx_geometry.h"
#include "fbx/scene/fbx_node.h"

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
