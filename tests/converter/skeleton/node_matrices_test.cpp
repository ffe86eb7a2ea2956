#include "converter/skeleton/node_matrices.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "converter/scene/scene_queries.h"
#include "converter/skeleton/export_node.h"
#include "fbx/core/fbx_object.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"
#include "tests/support/printed.h"

namespace {

FbxMatrix Placed(double x, double y, double z) {
  return FbxAMatrix({x, y, z}, {0, 0, 0}, {1, 1, 1}).ToMatrix();
}

void ExpectAt(const FbxAMatrix& matrix, double x, double y, double z) {
  const FbxVector4 t = matrix.GetT();
  EXPECT_NEAR(t[0], x, 1e-7);
  EXPECT_NEAR(t[1], y, 1e-7);
  EXPECT_NEAR(t[2], z, 1e-7);
}

class NodeMatrices : public testing::Test {
 protected:
  ~NodeMatrices() override { manager_->Destroy(); }

  FbxNode* Add(const char* name, FbxNode* parent, const FbxDouble3& translation) {
    FbxNode* node = FbxNode::Create(manager_, name);
    parent->ConnectSrcObject(node);
    node->LclTranslation().Set(translation);
    return node;
  }

  FbxManager* manager_ = FbxManager::Create();
  FbxScene* scene_ = FbxScene::Create(manager_, "");
  FbxNode* parent_ = Add("parent", scene_->GetRootNode(), {10, 0, 0});
  FbxNode* child_ = Add("child", parent_, {0, 5, 0});
  FbxPose* pose_ = FbxPose::Create(manager_, "pose");
};

TEST_F(NodeMatrices, PlacesFromAPoseAndWithoutOne) {
  const FbxTime rest = FbxTime::Infinite();
  ExpectAt(GetGlobalPosition(child_, rest, nullptr), 10, 5, 0);
  pose_->Add(child_, Placed(0, 0, 1), true);
  // Stored relative to the parent, whose own place the pose doesn't know.
  ExpectAt(GetGlobalPosition(child_, rest, pose_), 10, 0, 1);
  const FbxAMatrix given({0, 100, 0}, {0, 0, 0}, {1, 1, 1});
  ExpectAt(GetGlobalPosition(child_, rest, pose_, &given), 0, 100, 1);
  pose_->Add(parent_, Placed(7, 7, 7), false);
  ExpectAt(GetGlobalPosition(child_, rest, pose_), 7, 7, 8);
  FbxNode* hand = Add("hand", child_, {0, 0, 0});
  pose_->Add(hand, Placed(3, 3, 3), false);
  ExpectAt(GetGlobalPosition(hand, rest, pose_), 3, 3, 3);
}

TEST_F(NodeMatrices, SkeletalMatrixIsTheProductFromTheRootDown) {
  std::vector<boost::shared_ptr<CalCoreBone>> bones;
  for (int i = 0; i < 3; ++i) {
    bones.push_back(boost::make_shared<CalCoreBone>("bone", i - 1));
    bones.back()->relativeTranslation = {1.0F + static_cast<float>(i), 0, 0};
    bones.back()->relativeRotation = {0, 0, 0.70710678F, 0.70710678F};  // 90 degrees about Z
  }
  FbxAMatrix matrix;
  getSkeletalMatrix(matrix, bones, 2);
  ExpectAt(matrix, -2, 2, 0);
  getSkeletalMatrix(matrix, bones, -1);
  EXPECT_TRUE(matrix.IsIdentity());
}

TEST_F(NodeMatrices, Diagnostics) {
  const std::vector<FbxNode*> nodes = {parent_, child_};
  EXPECT_EQ(ExportNode::BuildBoneIdMap(nodes).at(child_), 1);
  EXPECT_EQ(Printed([&] {
              PrintSkeleton(nodes);
              PrintSkeletonList({nodes});
              dumpMatrixInfo(FbxAMatrix({1, 2, 3}, {0, 0, 90}, {2, 2, 2}));
            }),
            "RootNode/parent\nSkeleton Root: \tparent bones 2\n"
            "\tT:1.000 2.000 3.000 \tR:0.000 0.000 90.000 \tS:2.000 2.000 2.000 \n");
}

}  // namespace
