// Classes, objects and their connections.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/core/fbx_manager.h"
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
  ObjectTest() : manager(FbxManager::Create()) {}
  ~ObjectTest() override { manager->Destroy(); }

  template <typename T = FbxNode>
  T* Make(const char* name = "") {
    return T::Create(manager, name);
  }

  FbxManager* manager;
};

TEST_F(ObjectTest, ClassesKnowTheirAncestors) {
  for (const FbxClassId ancestor :
       {FbxMesh::ClassId, FbxGeometry::ClassId, FbxGeometryBase::ClassId,
        FbxLayerContainer::ClassId, FbxNodeAttribute::ClassId, FbxObject::ClassId}) {
    EXPECT_TRUE(FbxMesh::ClassId.Is(ancestor)) << ancestor.GetName();
  }
  EXPECT_FALSE(FbxMesh::ClassId.Is(FbxShape::ClassId));
  EXPECT_FALSE(FbxGeometry::ClassId.Is(FbxMesh::ClassId));
  EXPECT_FALSE(FbxClassId().Is(FbxObject::ClassId));
  EXPECT_FALSE(FbxMesh::ClassId.Is(FbxClassId()));
  EXPECT_STREQ(FbxGeometry::ClassId.GetFbxFileTypeName(false), "");
  EXPECT_STREQ(FbxGeometry::ClassId.GetFbxFileTypeName(true), "Geometry");
  EXPECT_EQ(manager->FindClass("FbxSkin"), FbxSkin::ClassId);
  EXPECT_FALSE(manager->FindClass("fbxskin").IsValid());
  EXPECT_EQ(manager->CreateNewObjectFromClassId(FbxClassId(), "x"), nullptr);
}

TEST_F(ObjectTest, KeepsItsNameAtLoad) {
  FbxNode* node = Make("first");
  node->SetName("second");
  EXPECT_STREQ(node->GetName(), "second");
  EXPECT_STREQ(node->GetInitialName(), "first");
  EXPECT_EQ(Make()->GetUniqueID(), node->GetUniqueID() + 1);
}

TEST_F(ObjectTest, ConnectionsKeepTheirOrderAndComeOnce) {
  FbxNode* parent = Make("parent");
  FbxNode* b = Make("b");
  FbxNode* a = Make("a");
  FbxNode* c = Make("c");
  auto* mesh = Make<FbxMesh>();
  EXPECT_TRUE(parent->ConnectSrcObject(b));
  EXPECT_TRUE(parent->ConnectSrcObject(mesh));
  EXPECT_TRUE(a->ConnectDstObject(parent));
  EXPECT_TRUE(parent->IsConnectedSrcObject(a));
  EXPECT_TRUE(parent->ConnectSrcObject(c));
  EXPECT_FALSE(parent->ConnectSrcObject(b));
  EXPECT_FALSE(parent->ConnectSrcObject(nullptr));
  EXPECT_FALSE(parent->ConnectSrcObject(parent));
  EXPECT_THAT(parent->Children(), ElementsAre(b, a, c));
  EXPECT_EQ(parent->GetSrcObject<FbxNode>(1), a);
  EXPECT_EQ(parent->GetSrcObjectCount<FbxNode>(), 3);
  EXPECT_EQ(parent->GetSrcObjectCount<FbxGeometryBase>(), 1);
  EXPECT_EQ(parent->GetSrcObject<FbxNode>(3), nullptr);
  EXPECT_EQ(parent->GetSrcObject(-1), nullptr);
  EXPECT_EQ(mesh->GetDstObject(), parent);
  EXPECT_TRUE(parent->ConnectSrcObject(b, true));
  EXPECT_EQ(parent->GetSrcObjectCount<FbxNode>(), 4);
}

TEST_F(ObjectTest, PropertiesHaveConnectionsOfTheirOwn) {
  auto* material = Make<FbxSurfaceLambert>();
  auto* texture = Make<FbxFileTexture>();
  FbxProperty diffuse = material->FindProperty("DiffuseColor");
  EXPECT_TRUE(diffuse.ConnectSrcObject(texture));
  EXPECT_FALSE(diffuse.ConnectSrcObject(texture));
  EXPECT_EQ(material->GetSrcObjectCount(), 0);
  EXPECT_EQ(texture->RootProperty().GetDstPropertyCount(), 1);
  EXPECT_EQ(texture->GetDstObjectCount(), 0);
  FbxProperty bump = material->FindProperty("Bump");
  EXPECT_TRUE(bump.ConnectSrcProperty(diffuse));
  EXPECT_EQ(bump.GetSrcProperty(), diffuse);
  EXPECT_EQ(bump.GetSrcObjectCount(), 0);
  EXPECT_TRUE(diffuse.DisconnectSrcObject(texture));
  EXPECT_FALSE(diffuse.DisconnectSrcObject(texture));
  EXPECT_THAT(diffuse.Sources(), IsEmpty());
}

TEST_F(ObjectTest, TakesItselfOutOfItsNeighboursListsAndWhatNothingElseUsesAlong) {
  auto* scene = Make<FbxScene>();
  FbxNode* parent = Make("parent");
  FbxNode* own = Make("own");
  FbxNode* shared = Make("shared");
  auto* material = Make<FbxSurfaceLambert>();
  auto* texture = Make<FbxFileTexture>();
  for (FbxNode* child : {own, shared}) {
    parent->ConnectSrcObject(child);
    child->ConnectSrcObject(material);
  }
  scene->ConnectSrcObject(shared);
  material->FindProperty("DiffuseColor").ConnectSrcObject(texture);
  parent->Destroy(true);
  EXPECT_EQ(shared->GetParent(), nullptr);
  EXPECT_EQ(material->GetDstObjectCount(), 1);
  EXPECT_EQ(shared->GetMaterial(0), material);
  EXPECT_EQ(scene->GetSrcObjectCount<FbxNode>(), 2) << "the root is the other";
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
