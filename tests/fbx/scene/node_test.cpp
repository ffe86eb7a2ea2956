// Scenes and nodes as objects in memory: attributes, inherit types, settings, layered textures.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/core/fbx_object.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

using testing::ElementsAre;

namespace {

class SceneTest : public testing::Test {
 protected:
  SceneTest() : manager(FbxManager::Create()), scene(FbxScene::Create(manager, "scene")) {}
  ~SceneTest() override { manager->Destroy(); }

  template <typename T = FbxNode>
  T* Add(FbxObject* parent = nullptr) {
    T* object = T::Create(manager, "");
    scene->ConnectSrcObject(object);
    if (parent != nullptr) parent->ConnectSrcObject(object);
    return object;
  }

  FbxManager* manager;
  FbxScene* scene;
};

TEST_F(SceneTest, NodesFindTheirAttributes) {
  FbxNode* node = Add();
  EXPECT_EQ(node->GetNodeAttribute(), nullptr);
  auto* skeleton = Add<FbxSkeleton>(node);
  auto* first = Add<FbxMesh>(node);
  auto* second = Add<FbxMesh>(node);
  EXPECT_EQ(node->GetNodeAttribute(), skeleton);
  EXPECT_EQ(node->GetMesh(), first);
  FbxProperty index = node->FindProperty("DefaultAttributeIndex");
  index.Set(2);
  EXPECT_EQ(node->GetNodeAttribute(), second);
  EXPECT_EQ(node->GetMesh(), second);
  for (const int none : {-1, 3}) {
    index.Set(none);
    EXPECT_EQ(node->GetNodeAttribute(), nullptr);
    EXPECT_EQ(node->GetMesh(), first);
  }
  EXPECT_EQ(first->GetNode(), node);
}

TEST_F(SceneTest, CorrectsInheritTypesOfMarkedBonesUnderOtherNodes) {
  FbxNode* parent = Add(scene->GetRootNode());
  FbxNode* bone = Add(parent);
  FbxNode* below = Add(bone);
  FbxNode* unmarked = Add(parent);
  for (FbxNode* node : {bone, below, unmarked}) {
    Add<FbxSkeleton>(node);
    node->FindProperty("InheritType").Set(int{eInheritRrs});
    node->SetCorrectInheritType(node != unmarked);
  }
  scene->FixInheritType(scene->GetRootNode());
  for (const FbxNode* node : {bone, below, unmarked}) {
    EXPECT_EQ(node->FindProperty("InheritType").Get<int>(),
              node == bone ? eInheritRSrs : eInheritRrs);
  }
}

TEST_F(SceneTest, SettingsThatNameNoAxesCountAsTheDefault) {
  FbxGlobalSettings& settings = scene->GetGlobalSettings();
  EXPECT_TRUE(settings.GetAxisSystem() == FbxAxisSystem::MayaYUp);
  settings.SetAxisSystem(FbxAxisSystem::MayaZUp);
  EXPECT_TRUE(settings.GetAxisSystem() == FbxAxisSystem::MayaZUp);
  settings.FindProperty("UpAxis").Set(0);
  EXPECT_TRUE(settings.GetAxisSystem() == FbxAxisSystem());
  settings.SetAmbientColor({0.1, 0.2, 0.3, 0.4});
  EXPECT_EQ(settings.GetAmbientColor().mBlue, 0.3);
  EXPECT_EQ(settings.GetAmbientColor().mAlpha, 1.0);
}

}  // namespace
