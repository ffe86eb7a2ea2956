// Scenes in, listings and skeleton files out, through the program.
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cal3d/io/loader.h"
#include "cal3d/model/core_skeleton.h"
#include "tests/support/fbx_builder.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* kVersionLine = "VERSION: 012 FBX lib version 1.0.0\n";

FbxRecord Translation(double x, double y, double z) { return P("Lcl Translation", {x, y, z}); }
FbxRecord Rotation(double x, double y, double z) { return P("Lcl Rotation", {x, y, z}); }
FbxRecord Scaling(double x, double y, double z) { return P("Lcl Scaling", {x, y, z}); }

class Skeletons : public testing::Test {
 protected:
  // A bone below `parent`.
  int64_t Bone(const std::string& name, int64_t parent, FbxRecords properties = {}) {
    const int64_t bone = scene_.AddModel(name, "LimbNode", std::move(properties));
    scene_.Connect(scene_.AddNodeAttribute(name, "LimbNode"), bone);
    scene_.Connect(bone, parent);
    return bone;
  }

  int64_t Node(const std::string& name, int64_t parent, FbxRecords properties = {}) {
    const int64_t node = scene_.AddModel(name, "Null", std::move(properties));
    scene_.Connect(node, parent);
    return node;
  }

  int64_t Mesh(const std::string& name, int64_t parent) {
    const int64_t mesh = scene_.AddMesh(name, {0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, -3});
    const int64_t node = scene_.AddModel(name, "Mesh");
    scene_.Connect(mesh, node);
    scene_.Connect(node, parent);
    return mesh;
  }

  void Influence(int64_t mesh, int64_t bone, double weight) {
    const std::vector<double> identity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    const int64_t skin = scene_.AddSkin();
    const int64_t cluster = scene_.AddCluster("", {0}, {weight}, identity, identity);
    scene_.Connect(skin, mesh);
    scene_.Connect(cluster, skin);
    scene_.Connect(bone, cluster);
  }

  // A bind pose with translations only.
  void BindPose(const std::vector<std::pair<int64_t, std::vector<double>>>& entries) {
    FbxRecords records = {{"NbPoseNodes", {static_cast<int32_t>(entries.size())}}};
    for (const auto& [node, t] : entries) {
      records.push_back(
          {"PoseNode",
           {},
           {{"Node", {node}},
            {"Matrix",
             {std::vector<double>{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, t[0], t[1], t[2], 1}}}}});
    }
    scene_.AddObject("Pose", "Pose", "bind", "BindPose", {}, std::move(records));
  }

  // What the program prints behind its version line.
  std::string Run(std::vector<std::string> words) {
    folder_.Write("s.fbx", scene_.Write());
    words.insert(words.begin(), "-2");
    const RunResult result = RunVeltrum(words, folder_.Path());
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(result.out.starts_with(kVersionLine));
    return result.out.substr(std::min(result.out.size(), std::string(kVersionLine).size()));
  }

  boost::shared_ptr<CalCoreSkeleton> Load(const std::string& name) {
    const std::string bytes = ReadFile(folder_.File(name));
    return CalLoader::loadCoreSkeleton(CalBufferSource(bytes.data(), bytes.size()));
  }

  // Exports from `root` with further options and loads the result.
  boost::shared_ptr<CalCoreSkeleton> Export(const std::string& root,
                                            std::vector<std::string> options = {}) {
    options.insert(options.end(), {"--root=" + root, "s.fbx", "export", "skel", "out"});
    Run(options);
    return Load("out.xsf");
  }

  static void ExpectVector(const CalVector& v, float x, float y, float z) {
    EXPECT_NEAR(v.x, x, 1e-4);
    EXPECT_NEAR(v.y, y, 1e-4);
    EXPECT_NEAR(v.z, z, 1e-4);
  }

  SceneBuilder scene_;
  TempDir folder_;
};

TEST_F(Skeletons, ListingNamesCountsAndMeshes) {
  const int64_t left = Node("Left", SceneBuilder::kRoot);
  const int64_t right = Node("Right", SceneBuilder::kRoot);
  const int64_t leftHips = Bone("Hips", left);
  Bone("Spine", leftHips);
  const int64_t rightHips = Bone("Hips", right);
  Influence(Mesh("Coat", SceneBuilder::kRoot), leftHips, 0.5);
  Influence(Mesh("Body", SceneBuilder::kRoot), leftHips, 1.0);
  Influence(Mesh("Hat", SceneBuilder::kRoot), rightHips, 0.0);  // a bone that moves nothing
  EXPECT_EQ(
      Run({"s.fbx", "list", "skel"}),
      "NODE: RootNode/Left/Hips MESHCOUNT: 2 FRIENDLYSKELNAME: RootNode/Left/Hips MESHNAME: Body "
      "MESHNAME: Coat BONECOUNT: 2\n"
      "NODE: RootNode/Right/Hips MESHCOUNT: 0 FRIENDLYSKELNAME: RootNode/Right/Hips BONECOUNT: "
      "1\n"
      "NODE: RootNode MESHCOUNT: 1 FRIENDLYSKELNAME: No Skeleton MESHNAME: Hat BONECOUNT: 6\n");
  EXPECT_THAT(Run({"--root=RootNode/Left/Hips", "-v", "s.fbx", "list", "skel"}),
              HasSubstr("\nNODE 0:eSkeleton: Hips\nNODE 0:eSkeleton: Hips/Spine\n"));
  EXPECT_EQ(Run({"--root=RootNode/Left/Hips", "s.fbx", "list", "skel"}),
            "NODE: Hips\nNODE: Hips/Spine\n");
  EXPECT_EQ(Run({"--root=RootNode/None", "s.fbx", "list", "skel"}), "");
}

TEST_F(Skeletons, WhereSkeletonsBegin) {
  const int64_t rig = Node("MyROOTs", SceneBuilder::kRoot);
  const int64_t hips = Bone("Hips", rig);
  const int64_t spine = Bone("Spine_root", hips);
  const int64_t old = Node("old skeleton.Room 2", SceneBuilder::kRoot);
  Mesh("Cap", spine);
  const int64_t glove = Mesh("Glove", SceneBuilder::kRoot);
  Influence(glove, hips, 1.0);
  Influence(glove, old, 1.0);
  EXPECT_EQ(Run({"s.fbx", "list", "skel"}),
            "NODE: RootNode/MyROOTs MESHCOUNT: 2 FRIENDLYSKELNAME: MyROOTs MESHNAME: Cap MESHNAME: "
            "Glove BONECOUNT: 4\n"
            "NODE: RootNode/MyROOTs/Hips MESHCOUNT: 2 FRIENDLYSKELNAME: Hips MESHNAME: Cap "
            "MESHNAME: Glove BONECOUNT: 3\n"
            "NODE: RootNode/MyROOTs/Hips/Spine_root MESHCOUNT: 1 FRIENDLYSKELNAME: Spine_root "
            "MESHNAME: Cap BONECOUNT: 2\n"
            "NODE: RootNode/old skeleton.Room 2 MESHCOUNT: 1 FRIENDLYSKELNAME: old skeleton.Room 2 "
            "MESHNAME: Glove BONECOUNT: 1\n");
}

TEST_F(Skeletons, FindingTheRoot) {
  EXPECT_THAT(Run({"s.fbx", "list", "skel"}), "ERROR: Fbx file contains no skeleton hierarchies\n");
  EXPECT_EQ(
      Run({"--root=find", "s.fbx", "export", "skel", "a"}),
      "WARNING: No skeleton roots found in FBX, using RootNode\nSKELETON: a FILENAME: a.xsf\n");
  Bone("Hips", SceneBuilder::kRoot);
  EXPECT_EQ(
      Run({"--root=find", "s.fbx", "export", "skel", "b b"}),
      "WARNING: Using node RootNode/Hips as skeleton root\nSKELETON: b b FILENAME: b%20b.xsf\n");
  Bone("Other", SceneBuilder::kRoot);
  EXPECT_EQ(Run({"--root=find", "-d", "out", "s.fbx", "export", "skel", "c"}),
            "ERROR: You must choose a skeleton root:\n\n"
            "ERROR: Failed to create file out/c.xsf for ANIMATION c\n");
}

// A Y-up scene: what is (x, y, z) there comes out as (x, -z, y).
TEST_F(Skeletons, RestPoseFromTheScene) {
  const int64_t hips = Bone("Hips", SceneBuilder::kRoot, {Translation(1, 90, 5), Scaling(2, 2, 2)});
  const int64_t arm = Bone("Arm", hips, {Translation(10, 0, 0), Rotation(0, 0, 90)});
  Bone("Hand", arm, {Translation(0, 4, 0)});
  auto skeleton = Export("RootNode/Hips");
  ASSERT_EQ(skeleton->coreBones.size(), 3U);
  const CalCoreBone& root = *skeleton->coreBones[0];
  ExpectVector(root.relativeTranslation, 1, -5, 90);
  EXPECT_NEAR(root.relativeRotation.x, 0.70710678, 1e-6);  // the turn of the axes: 90 about X
  EXPECT_NEAR(root.relativeRotation.w, 0.70710678, 1e-6);
  const CalCoreBone& elbow = *skeleton->coreBones[1];
  EXPECT_EQ(elbow.parentId, 0);
  ExpectVector(elbow.relativeTranslation, 20, 0, 0);  // bones hold no scaling: it goes in here
  EXPECT_NEAR(elbow.relativeRotation.z, 0.70710678, 1e-6);
  ExpectVector(skeleton->coreBones[2]->relativeTranslation, 0, 8, 0);
  // Bone space takes the bone's own place in the file to the origin. The elbow lies at (21, -5,
  // 90), and its frame is turned by the root's turn and then its own.
  ExpectVector(elbow.boneSpaceTranslation, -90, 21, -5);

  auto scaled = Export("RootNode/Hips", {"--scale=3"});
  ExpectVector(scaled->coreBones[0]->relativeTranslation, 3, -15, 270);
  ExpectVector(scaled->coreBones[1]->relativeTranslation, 60, 0, 0);
  auto turned = Export("RootNode/Hips", {"--up=y", "--front=z"});
  ExpectVector(turned->coreBones[0]->relativeTranslation, 1, -90, -5);
}

TEST_F(Skeletons, RestPoseFromTheBindPose) {
  const int64_t hips = Bone("Hips", SceneBuilder::kRoot, {Translation(0, 1, 0)});
  const int64_t spine = Bone("Spine", hips, {Translation(0, 2, 0)});
  const int64_t head = Bone("Head", spine, {Translation(0, 4, 0)});
  // The first entry of a pose doesn't count.
  BindPose({{hips, {0, 70, 0}}, {spine, {0, 80, 0}}, {head, {0, 100, 0}}});
  auto skeleton = Export("RootNode/Hips");
  ExpectVector(skeleton->coreBones[0]->relativeTranslation, 0, 0, 1);
  ExpectVector(skeleton->coreBones[1]->relativeTranslation, 0, 79, 0);
  ExpectVector(skeleton->coreBones[2]->relativeTranslation, 0, 20, 0);
  auto evaluated = Export("RootNode/Hips", {"-u"});
  ExpectVector(evaluated->coreBones[1]->relativeTranslation, 0, 2, 0);
  auto whole = Export("RootNode");  // from the scene's root the pose plays no part
  ExpectVector(whole->coreBones[2]->relativeTranslation, 0, 2, 0);
}

TEST_F(Skeletons, RoomsGetARootNameACameraAndAnAmbientColour) {
  const int64_t room = Node("myRoot", SceneBuilder::kRoot);
  Node("seat01.Sit", room);
  const std::string out = Run({"--room", "--root=RootNode/myRoot", "s.fbx", "export", "skel", "r",
                               "-", "s.fbx", "list", "skel"});
  EXPECT_EQ(out,
            "WARNING: myRoot is renamed skeleton.Room\n"
            "WARNING: Adding camera.01.01.root and Target\n"
            "SKELETON: r FILENAME: r.xsf\n"
            "NODE: RootNode/myRoot MESHCOUNT: 0 FRIENDLYSKELNAME: myRoot BONECOUNT: 2\n");
  auto skeleton = Load("r.xsf");
  ASSERT_EQ(skeleton->coreBones.size(), 4U);
  EXPECT_EQ(skeleton->coreBones[0]->name, "skeleton.Room");
  EXPECT_EQ(skeleton->coreBones[1]->name, "seat01.Sit");
  EXPECT_EQ(skeleton->coreBones[2]->name, "camera.01.01.root");
  EXPECT_EQ(skeleton->coreBones[3]->parentId, 0);
  EXPECT_EQ(skeleton->coreBones[0]->childIds, (std::vector<int32_t>{1, 2, 3}));
  EXPECT_EQ(skeleton->sceneAmbientColor, (CalVector{1, 1, 1}));
}

TEST_F(Skeletons, RenamedRooms) {
  const int64_t room = Node("room_skeleton", SceneBuilder::kRoot);
  Node("Camera1", room);
  Node("camera1.target", room);
  Node("seat7.Sit", room);
  Node("LightAmbient_rgb336699", room);
  const std::string out = Run({"--room", "--rename", "-v", "--root=RootNode/room_skeleton", "s.fbx",
                               "export", "skel", "r"});
  EXPECT_THAT(out, HasSubstr("found 2 nodes for camera\n"));
  EXPECT_THAT(out, HasSubstr("found 1 nodes for ((room).*(skeleton))|((skeleton).*(room))\n"));
  EXPECT_THAT(out, HasSubstr("node seat7.Sit was renamed Seat1.Sit\n"));
  EXPECT_THAT(out, Not(HasSubstr("Adding camera")));
  auto skeleton = Load("r.xsf");
  std::vector<std::string> names;
  for (const auto& bone : skeleton->coreBones) names.push_back(bone->name);
  EXPECT_EQ(names, (std::vector<std::string>{"skeleton.Room", "camera.01.01.root",
                                             "camera.01.01.root.Target", "Seat1.Sit",
                                             "LightAmbient_rgb336699"}));
  ExpectVector(skeleton->sceneAmbientColor, 0.2F, 0.4F, 0.6F);
  EXPECT_EQ(skeleton->coreBones[4]->lightType, CalLightType::kAmbient);
}

TEST_F(Skeletons, DeepAndWideTreesOfAFile) {
  int64_t node = SceneBuilder::kRoot;
  for (int i = 0; i < 5000; ++i) node = Node("n", node);
  EXPECT_EQ(Run({"--root=RootNode", "s.fbx", "export", "skel", "deep"}),
            "SKELETON: deep FILENAME: deep.xsf\n");
  EXPECT_EQ(Load("deep.xsf")->coreBones.size(), 5001U);
}

}  // namespace
