#include <array>
#include <cmath>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include "converter/skeleton/bone_lights.h"
#include "converter/skeleton/export_node.h"
#include "converter/skeleton/node_matrices.h"
#include "converter/skeleton/skeleton_roots.h"
#include "fbx/core/fbx_object.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

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

FbxAMatrix Placed(double x, double y, double z) { return {{x, y, z}, {0, 0, 0}, {1, 1, 1}}; }

std::string At(const FbxAMatrix& matrix) {
  std::string text;
  for (size_t i = 0; i < 3; ++i) text += std::to_string(std::lround(matrix.GetT()[i])) + " ";
  return text;
}

// No command asks so.
TEST_F(BoneNames, PlacesFromAPoseAndWithoutOne) {
  FbxScene* scene = FbxScene::Create(manager_, "");
  FbxNode* parent = Node("parent", scene->GetRootNode());
  FbxNode* child = Node("child", parent);
  parent->LclTranslation().Set(FbxDouble3{10, 0, 0});
  child->LclTranslation().Set(FbxDouble3{0, 5, 0});
  FbxPose* pose = FbxPose::Create(manager_, "pose");
  const auto place = [pose](const FbxNode* node, const FbxAMatrix* above = nullptr) {
    return At(GetGlobalPosition(node, FbxTime::Infinite(), pose, above));
  };
  EXPECT_EQ(place(child), "10 5 0 ");
  pose->Add(child, Placed(0, 0, 1).ToMatrix(), true);
  EXPECT_EQ(place(child), "10 0 1 ") << "relative to the parent, which the pose doesn't know";
  const FbxAMatrix given = Placed(0, 100, 0);
  EXPECT_EQ(place(child, &given), "0 100 1 ");
  pose->Add(parent, Placed(7, 7, 7).ToMatrix(), false);
  EXPECT_EQ(place(child), "7 7 8 ");
  pose->Add(scene->GetRootNode(), Placed(0, 0, 1).ToMatrix(), true);
  EXPECT_EQ(place(scene->GetRootNode()), "0 0 1 ") << "nothing is above it";
  // Without the scaling of either.
  const FbxAMatrix local = getLocalTransform(FbxAMatrix({1, 0, 0}, {0, 0, 90}, {2, 2, 2}),
                                             FbxAMatrix({1, 3, 0}, {0, 0, 90}, {5, 5, 5}));
  EXPECT_EQ(At(local), "3 0 0 ");
  EXPECT_NEAR(local.GetS()[0], 1.0, 1e-9);

  std::vector<boost::shared_ptr<CalCoreBone>> bones;
  for (int i = 0; i < 3; ++i) {
    bones.push_back(boost::make_shared<CalCoreBone>("bone", i - 1));
    bones.back()->relativeTranslation = {1.0F + static_cast<float>(i), 0, 0};
    bones.back()->relativeRotation = {0, 0, 0.70710678F, 0.70710678F};  // 90 degrees about Z
  }
  FbxAMatrix matrix;
  getSkeletalMatrix(matrix, bones, 2);
  EXPECT_EQ(At(matrix), "-2 2 0 ") << "the product from the root down";
  getSkeletalMatrix(matrix, bones, -1);
  EXPECT_TRUE(matrix.IsIdentity());
}

class BoneLights : public testing::Test {
 protected:
  ~BoneLights() override { manager_->Destroy(); }

  // The type of the node's light and its new name, and its colour unless that is the default grey.
  std::string Of(const std::string& name, FbxLight* attached = nullptr) {
    FbxNode* node = FbxNode::Create(manager_, name.c_str());
    if (attached != nullptr) node->ConnectSrcObject(attached);
    CalLightType type = CalLightType::kNone;
    std::string newName;
    CalVector color;
    getLightFromBone(node, name, type, newName, color);
    constexpr std::array<const char*, 5> kTypes = {"none ", "point ", "directional ", "spot ",
                                                   "ambient "};
    std::string text = kTypes.at(static_cast<size_t>(type)) + newName;
    if (color == CalVector{0.5F, 0.5F, 0.5F}) return text;
    for (const float component : {color.x, color.y, color.z}) {
      text.append(" ").append(std::to_string(std::lround(component * 255.0F)));
    }
    return text;
  }
  FbxLight* Attached(int type) {
    FbxLight* light = FbxLight::Create(manager_, "");
    light->FindProperty("LightType").Set(type);
    light->FindProperty("Color").Set(FbxDouble3{1.0, 0.2, 0.0});
    return light;
  }

  FbxManager* manager_ = FbxManager::Create();
};

TEST_F(BoneLights, FromTheirNames) {
  const std::string digits(200000, '1');
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"Hips", "none Hips"},
      {"lightbulb", "none lightbulb"},
      {"light_cone4", "none light_cone4"},  // no type, so no light
      {"Omni01", "point Omni01"},
      {"myLIGHTPOINT", "point myLIGHTPOINT"},
      {"lightDirection", "directional lightDirection"},
      {"lightTarget", "spot lightTarget"},
      {"lightTargetOmni", "point lightTargetOmni"},  // the first word of the list wins
      {"lightAmbient_rgb101010", "ambient lightAmbient 16 16 16"},
      {"lightPoint_rgbff0000_bright0.5", "point lightPoint:bright=0.5 255 0 0"},
      {"lightPoint_rgb:00FF00", "point lightPoint 0 255 0"},
      {"lightPoint_rgbff", "point lightPoint 0 0 255"},  // right-aligned
      {"lightPoint_rgb", "point lightPoint"},
      {"lightPoint_rgbff000080", "point lightPoint 255 0 0"},
      {"lightTarget.spot.cone45", "spot lightTarget:type=spot:cone=45"},
      {"Omni_spot", "point Omni"},
      {"lightTarget_type.spot", "spot lightTarget:type=spot"},
      {"lightTarget.cone.45", "spot lightTarget:cone=45"},
      {"lightPoint_res100", "point lightPoint"},
      {"lightPoint_res1024_res32", "point lightPoint:res=32"},  // the last one wins
      {"lightPoint_nearOffset3_farOffset4", "point lightPoint"},
      {"lightPoint_soft2_radius.5_shadow=off_bright12",
       "point lightPoint:shadow=off:bright=12:radius=5:soft=2"},
      {"lightPoint_bright2.5", "point lightPoint:bright=2"},  // only 0 and 1 stand before a point
      {"lightPoint_shadowon", "point lightPoint:shadow=on"},
      {"lightPoint_radius1234567", "point lightPoint:radius=1.23457e+06"},
      {"LightPoint-01 cone=.25", "point LightPoint:cone=0.25"},
      {"lightPoint_cone", "point lightPoint"},
      // Two line ends leave no place to split at.
      {"lightPoint\n_cone4\n", "point lightPoint\n_cone4\n"},
      {"lightPoint\ncone4", "point lightPoint:cone=4"},
      // Any length and any bytes; no float is that large.
      {"lightPoint_cone" + digits, "point lightPoint"},
      {"lightPoint_" + digits, "point lightPoint"},
      {"lightPoint\xff\x80_cone2", "point lightPoint:cone=2"},
  };
  for (const auto& [name, expected] : cases) EXPECT_EQ(Of(name), expected) << name.substr(0, 80);
}

TEST_F(BoneLights, FromAttachedLights) {
  EXPECT_EQ(Of("Lamp", Attached(FbxLight::eSpot)), "spot Lamp 255 51 0");
  EXPECT_EQ(Of("Lamp", Attached(FbxLight::eArea)), "none Lamp 255 51 0");
  // A name's type replaces the attached one, and any separator cuts the name.
  EXPECT_EQ(Of("Omni", Attached(FbxLight::eSpot)), "point Omni 255 51 0");
  EXPECT_EQ(Of("Lamp_left", Attached(FbxLight::ePoint)), "point Lamp 255 51 0");
}

}  // namespace
