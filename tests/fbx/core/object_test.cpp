// Classes, objects and their connections, in memory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/core/fbx_object.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class ObjectTest : public testing::Test {
 protected:
  ~ObjectTest() override { manager->Destroy(); }

  template <typename T = FbxNode>
  T* Make(const char* name = "") {
    return T::Create(manager, name);
  }

  FbxManager* manager = FbxManager::Create();
};

TEST_F(ObjectTest, ClassesKnowTheirAncestors) {
  EXPECT_TRUE(FbxMesh::ClassId.Is(FbxMesh::ClassId) && FbxMesh::ClassId.Is(FbxObject::ClassId));
  EXPECT_FALSE(FbxMesh::ClassId.Is(FbxShape::ClassId) || FbxGeometry::ClassId.Is(FbxMesh::ClassId));
  EXPECT_FALSE(FbxClassId().Is(FbxObject::ClassId) || FbxMesh::ClassId.Is(FbxClassId()));
  EXPECT_EQ(manager->FindClass("FbxSkin"), FbxSkin::ClassId);
  EXPECT_FALSE(manager->FindClass("fbxskin").IsValid());
}

TEST_F(ObjectTest, ConnectionsKeepTheirOrderAndComeOnce) {
  FbxNode* parent = Make("parent");
  FbxNode* b = Make("b");
  FbxNode* a = Make("a");
  auto* mesh = Make<FbxMesh>();
  EXPECT_TRUE(parent->ConnectSrcObject(b) && parent->ConnectSrcObject(mesh));
  EXPECT_TRUE(a->ConnectDstObject(parent) && parent->IsConnectedSrcObject(a));
  EXPECT_FALSE(parent->ConnectSrcObject(b) || parent->ConnectSrcObject(nullptr) ||
               parent->ConnectSrcObject(parent));
  EXPECT_THAT(parent->Children(), ElementsAre(b, a));
  EXPECT_EQ(parent->GetSrcObject<FbxNode>(1), a);
  EXPECT_EQ(parent->GetSrcObjectCount<FbxGeometryBase>(), 1);
  EXPECT_EQ(parent->GetSrcObject<FbxNode>(2), nullptr);
  EXPECT_EQ(parent->GetSrcObject(-1), nullptr);
  EXPECT_EQ(mesh->GetDstObject(), parent);
  EXPECT_TRUE(parent->ConnectSrcObject(b, true));
  EXPECT_EQ(parent->GetSrcObjectCount<FbxNode>(), 3);
}

TEST_F(ObjectTest, TakesItselfOutOfItsNeighboursListsAndWhatNothingElseUsesAlong) {
  auto* scene = Make<FbxScene>();
  FbxNode* parent = Make("parent");
  FbxNode* shared = Make("shared");
  auto* material = Make<FbxSurfaceLambert>();
  auto* texture = Make<FbxFileTexture>();
  for (FbxNode* child : {Make("own"), shared}) {
    parent->ConnectSrcObject(child);
    child->ConnectSrcObject(material);
  }
  scene->ConnectSrcObject(shared);
  FbxProperty diffuse = material->FindProperty("DiffuseColor");
  EXPECT_TRUE(diffuse.ConnectSrcObject(texture));
  EXPECT_FALSE(diffuse.ConnectSrcObject(texture));
  parent->Destroy(true);
  EXPECT_EQ(shared->GetParent(), nullptr);
  EXPECT_EQ(material->GetDstObjectCount(), 1);
  EXPECT_EQ(shared->GetMaterial(0), material);
  EXPECT_EQ(scene->GetSrcObjectCount<FbxNode>(), 2) << "the root is the other";
  EXPECT_TRUE(diffuse.DisconnectSrcObject(texture));
  EXPECT_FALSE(diffuse.DisconnectSrcObject(texture));
  diffuse.ConnectSrcObject(texture);
  material->Destroy();
  EXPECT_EQ(shared->GetMaterialCount(), 0);
  EXPECT_THAT(texture->RootProperty().Destinations(), IsEmpty());
  shared->Destroy();
  EXPECT_EQ(scene->GetSrcObjectCount<FbxNode>(), 1);
}

// A found scene may be several connections away.
TEST_F(ObjectTest, FindsItsScene) {
  auto* scene = Make<FbxScene>();
  auto* skin = Make<FbxSkin>();
  auto* cluster = Make<FbxCluster>();
  skin->ConnectSrcObject(cluster);
  cluster->ConnectSrcObject(skin);
  EXPECT_EQ(cluster->GetScene(), nullptr);
  scene->ConnectSrcObject(skin);
  EXPECT_EQ(cluster->GetScene(), scene);
}

}  // namespace
