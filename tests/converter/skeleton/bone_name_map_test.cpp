#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "converter/skeleton/skeleton_roots.h"
#include "fbx/core/fbx_object.h"
#include "fbx/scene/fbx_node.h"

namespace {

class BoneNames : public testing::Test {
 protected:
  ~BoneNames() override { manager_->Destroy(); }

  FbxNode* Node(const std::string& name, FbxNode* parent) {
    FbxNode* node = FbxNode::Create(manager_, name.c_str());
    if (parent != nullptr) parent->ConnectSrcObject(node);
    return node;
  }

  FbxManager* manager_ = FbxManager::Create();
  FbxNode* root_ = Node("RootNode", nullptr);
};

TEST_F(BoneNames, AreTheirWholePaths) {
  FbxNode* a = Node("a", root_);
  FbxNode* x = Node("x", a);
  FbxNode* blank = Node("a b", root_);
  FbxNode* twin = Node("a", root_);
  FbxNode* slash = Node("a/x", root_);  // reads like the path of x
  FbxNode* other = Node("x", twin);     // no bone
  FbxNode* below = Node("y", x);        // neither
  const std::vector<FbxNode*> nodes = {root_, a, x, blank, twin, slash};
  const BoneNameMap bones{NodeSpan(nodes)};
  EXPECT_EQ(bones.Count(), 4);

  struct Case {
    const FbxNode* node;
    const char* path;
    int id;
    int rank;
  };
  // Of one path the last bone counts, and "/" comes behind " ".
  for (const Case& c : std::vector<Case>{{root_, "RootNode", 0, 0},
                                         {a, "RootNode/a", 4, 1},
                                         {twin, "RootNode/a", 4, 1},
                                         {blank, "RootNode/a b", 3, 2},
                                         {x, "RootNode/a/x", 5, 3},
                                         {other, "RootNode/a/x", 5, 3}}) {
    const Bone* bone = bones.Find(c.node);
    ASSERT_NE(bone, nullptr) << c.path;
    EXPECT_EQ(bone->id, c.id) << c.path;
    EXPECT_EQ(bone->rank, c.rank) << c.path;
    EXPECT_EQ(bones.Find(c.path), bone);
  }
  EXPECT_EQ(bones.Find(below), nullptr);
  for (const char* path : {"", "a", "RootNode/", "RootNode/a/x/y"}) {
    EXPECT_EQ(bones.Find(path), nullptr) << path;
  }
}

// Bones of a part of a scene: what is above them has paths, but is no bone.
TEST_F(BoneNames, BelowAnotherRoot) {
  FbxNode* group = Node("g", root_);
  const std::vector<FbxNode*> nodes = {Node("hips", group)};
  const BoneNameMap bones{NodeSpan(nodes)};
  EXPECT_EQ(bones.Count(), 1);
  EXPECT_EQ(bones.Find(nodes[0])->rank, 0);
  EXPECT_EQ(bones.Find(group), nullptr);
  EXPECT_EQ(BoneNameMap().Find(root_), nullptr);
}

}  // namespace
