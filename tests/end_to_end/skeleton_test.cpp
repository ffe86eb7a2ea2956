// Scenes in, listings and skeleton files out, through the program.
#include <filesystem>

#include <boost/shared_ptr.hpp>
#include <gmock/gmock.h>

#include "cal3d/io/loader.h"
#include "cal3d/model/core_skeleton.h"
#include "tests/support/program_test.h"

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

FbxRecord Translation(double x, double y, double z) { return P("Lcl Translation", {x, y, z}); }

class Skeletons : public SceneTest {
 protected:
  boost::shared_ptr<CalCoreSkeleton> Load(const std::string& name) {
    const std::string bytes = File(name);
    return CalLoader::loadCoreSkeleton(CalBufferSource(bytes.data(), bytes.size()));
  }

  // Exports from `root` with further options, and checks where the bones stand below their parents.
  boost::shared_ptr<CalCoreSkeleton> Export(const std::string& root, Words options,
                                            const std::vector<CalVector>& translations) {
    options.insert(options.end(), {"--root=" + root, "s.fbx", "export", "skel", "out"});
    Run(options);
    auto skeleton = Load("out.xsf");
    EXPECT_EQ(skeleton->coreBones.size(), translations.size());
    for (size_t i = 0; i < std::min(skeleton->coreBones.size(), translations.size()); ++i) {
      SCOPED_TRACE(options[0] + ", bone " + std::to_string(i));
      ExpectVector(skeleton->coreBones[i]->relativeTranslation, translations[i]);
    }
    return skeleton;
  }

  static void ExpectVector(const CalVector& v, const CalVector& expected) {
    EXPECT_NEAR(v.x, expected.x, 1e-4);
    EXPECT_NEAR(v.y, expected.y, 1e-4);
    EXPECT_NEAR(v.z, expected.z, 1e-4);
  }

  static Words Names(const CalCoreSkeleton& skeleton) {
    Words names;
    for (const auto& bone : skeleton.coreBones) names.push_back(bone->name);
    return names;
  }
};

TEST_F(Skeletons, ListsWithTheirMeshes) {
  const std::string hips = "NODE: RootNode/group/Hips MESHCOUNT: 2 FRIENDLYSKELNAME: ";
  const std::string rest =
      "NODE: RootNode/Tail MESHCOUNT: 1 FRIENDLYSKELNAME: Tail MESHNAME: Hair BONECOUNT: 2\n";
  const int64_t bone = scene_.Bone("Hips", scene_.Node("group"));
  scene_.Bone("Spine", bone);
  const int64_t tail = scene_.Bone("Tail");
  scene_.Mesh("Hair", {}, tail);
  scene_.Cluster(scene_.Skin(scene_.Mesh("Coat").mesh), bone, {0}, {0.5});
  scene_.Cluster(scene_.Skin(scene_.Mesh("Body").mesh), bone);
  EXPECT_EQ(Run({"s.fbx", "list", "skel"}),
            hips + "Hips MESHNAME: Body MESHNAME: Coat BONECOUNT: 2\n" + rest);
  // Meshes of no skeleton, and of two skeletons with one name the paths.
  scene_.Mesh("zz");
  scene_.Cluster(scene_.Skin(scene_.Mesh("Hat").mesh), tail, {0},
                 {0.0});  // a bone that moves nothing
  scene_.Bone("Hips");
  EXPECT_EQ(Run({"s.fbx", "list", "nodes"}),
            hips + "RootNode/group/Hips MESHNAME: Body MESHNAME: Coat BONECOUNT: 2\n" + rest +
                "NODE: RootNode/Hips MESHCOUNT: 0 FRIENDLYSKELNAME: RootNode/Hips BONECOUNT: 1\n"
                "NODE: RootNode MESHCOUNT: 2 FRIENDLYSKELNAME: No Skeleton MESHNAME: Hat MESHNAME: "
                "zz BONECOUNT: 6\n");
}

TEST_F(Skeletons, BeginAtNodesWithANameOfRoots) {
  const int64_t hips = scene_.Bone("Hips", scene_.Node("MyROOTs"));
  const int64_t spine = scene_.Bone("Spine_root", hips);
  scene_.Mesh("Cap", {}, spine);
  const int64_t skin = scene_.Skin(scene_.Mesh("Glove").mesh);
  for (const int64_t bone : {hips, scene_.Node("old skeleton.Room 2")}) scene_.Cluster(skin, bone);
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

TEST_F(Skeletons, TheRootThatIsFound) {
  const auto exported = [this] { return Run({"-rfind", "s.fbx", "export", "skel", "a"}); };
  EXPECT_EQ(Run({"s.fbx", "list", "skel"}), "ERROR: Fbx file contains no skeleton hierarchies\n");
  EXPECT_EQ(
      exported(),
      "WARNING: No skeleton roots found in FBX, using RootNode\nSKELETON: a FILENAME: a.xsf\n");
  scene_.Bone("Hips");
  EXPECT_EQ(exported(),
            "WARNING: Using node RootNode/Hips as skeleton root\nSKELETON: a FILENAME: a.xsf\n");
  scene_.Bone("Other");
  EXPECT_EQ(exported(),
            "ERROR: You must choose a skeleton root:\n\n"
            "ERROR: Failed to create file a.xsf for ANIMATION a\n");
}

TEST_F(Skeletons, FilesOfAnExport) {
  scene_.Bone("Left Hip");
  std::filesystem::create_directory(dir_.File("out"));
  const std::string root = "--root=RootNode/Left Hip";
  EXPECT_EQ(Run({root, "s.fbx", "export", "skel", "Left Hip", "x/y"}),
            "SKELETON: Left Hip FILENAME: Left%20Hip.xsf\nSKELETON: x/y FILENAME: x%2Fy.xsf\n");
  EXPECT_EQ(File("Left%20Hip.xsf"), File("x%2Fy.xsf"));
  EXPECT_EQ(Run({"-e", "-dout", root, "s.fbx", "export", "skel", "Left Hip"}),
            "SKELETON: Left%20Hip FILENAME: out/Left%20Hip.xsf\n");
  EXPECT_TRUE(Exists("out/Left%20Hip.xsf"));
  EXPECT_EQ(Run({root, "s.fbx", "export", "skel"}), "");  // no names, no skeletons
  EXPECT_EQ(Run({"-rNone", "s.fbx", "export", "skel", "My Hip"}),
            "ERROR: Failed to create file My%20Hip.xsf for ANIMATION My Hip\n");
  EXPECT_EQ(Run({"-dno/such", root, "s.fbx", "export", "skel", "b"}),
            "ERROR: Failed to create file no/such/b.xsf for ANIMATION b\n");
}

// A Y-up scene: what is (x, y, z) there comes out as (x, -z, y).
TEST_F(Skeletons, RestPoseFromTheScene) {
  scene_.SetAxes(1, 1, 2, 1, 0, 1);
  const int64_t hips = scene_.Bone("Hips", SceneBuilder::kRoot,
                                   {Translation(1, 90, 5), P("Lcl Scaling", {2, 2, 2})});
  const int64_t arm =
      scene_.Bone("Arm", hips, {Translation(10, 0, 0), P("Lcl Rotation", {0, 0, 90})});
  scene_.Bone("Hand", arm, {Translation(0, 4, 0)});
  // Bones hold no scaling: it goes into the translations below.
  const auto skeleton = Export("RootNode/Hips", {}, {{1, -5, 90}, {20, 0, 0}, {0, 8, 0}});
  const CalCoreBone& root = *skeleton->coreBones.at(0);
  EXPECT_NEAR(root.relativeRotation.x, 0.70710678, 1e-6);  // the turn of the axes: 90 about X
  EXPECT_NEAR(root.relativeRotation.w, 0.70710678, 1e-6);
  const CalCoreBone& elbow = *skeleton->coreBones.at(1);
  EXPECT_NEAR(elbow.relativeRotation.z, 0.70710678, 1e-6);
  // Bone space takes the bone's own place in the file to the origin. The elbow lies at (21, -5,
  // 90), and its frame is turned by the root's turn and then its own.
  ExpectVector(elbow.boneSpaceTranslation, {-90, 21, -5});
  EXPECT_EQ(skeleton->coreBones.at(2)->parentId, 1);

  Export("RootNode/Hips", {"--scale=3"}, {{3, -15, 270}, {60, 0, 0}, {0, 24, 0}});
  Export("RootNode/Hips", {"--up=y", "--front=z"}, {{1, -90, -5}, {20, 0, 0}, {0, 0, 8}});
}

TEST_F(Skeletons, RestPoseFromTheBindPose) {
  const int64_t hips = scene_.Bone("Hips", SceneBuilder::kRoot, {Translation(0, 1, 0)});
  const int64_t spine = scene_.Bone("Spine", hips, {Translation(0, 2, 0)});
  const int64_t head = scene_.Bone("Head", spine, {Translation(0, 4, 0)});
  FbxRecords records = {{"NbPoseNodes", {3}}};
  for (const auto& [node, y] : {std::pair(hips, 70), {spine, 80}, {head, 100}}) {
    const std::vector<double> matrix{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 1.0 * y, 0, 1};
    records.push_back({"PoseNode", {}, {{"Node", {node}}, {"Matrix", {matrix}}}});
  }
  scene_.AddObject("Pose", "Pose", "bind", "BindPose", {}, std::move(records));
  // The first entry of a pose doesn't count, and from the scene's root none does.
  Export("RootNode/Hips", {}, {{0, 1, 0}, {0, 79, 0}, {0, 20, 0}});
  Export("RootNode/Hips", {"-u"}, {{0, 1, 0}, {0, 2, 0}, {0, 4, 0}});
  Export("RootNode", {}, {{0, 0, 0}, {0, 1, 0}, {0, 2, 0}, {0, 4, 0}});
}

TEST_F(Skeletons, RoomsGetARootNameACameraAndAnAmbientColour) {
  scene_.Node("seat01.Sit", scene_.Node("myRoot"));
  EXPECT_EQ(Run({"--room", "--root=RootNode/myRoot", "s.fbx", "export", "skel", "r",  //
                 "-", "s.fbx", "list", "skel"}),
            "WARNING: myRoot is renamed skeleton.Room\n"
            "WARNING: Adding camera.01.01.root and Target\n"
            "SKELETON: r FILENAME: r.xsf\n"
            "NODE: RootNode/myRoot MESHCOUNT: 0 FRIENDLYSKELNAME: myRoot BONECOUNT: 2\n");
  const auto skeleton = Load("r.xsf");
  EXPECT_THAT(Names(*skeleton), ElementsAre("skeleton.Room", "seat01.Sit", "camera.01.01.root",
                                            "camera.01.01.root.Target"));
  EXPECT_THAT(skeleton->coreBones[0]->childIds, ElementsAre(1, 2, 3));
  EXPECT_EQ(skeleton->sceneAmbientColor, (CalVector{1, 1, 1}));
}

TEST_F(Skeletons, DeepTrees) {
  int64_t node = SceneBuilder::kRoot;
  for (int i = 0; i < 5000; ++i) node = scene_.Node("n", node);
  EXPECT_EQ(Run({"--root=RootNode", "s.fbx", "export", "skel", "deep"}),
            "SKELETON: deep FILENAME: deep.xsf\n");
  EXPECT_EQ(Load("deep.xsf")->coreBones.size(), 5001U);
}

}  // namespace
