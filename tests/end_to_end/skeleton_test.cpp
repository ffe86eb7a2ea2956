// Skeletons of scenes that need to be by themselves.
#include <cmath>
#include <sstream>

#include "cal3d/io/loader.h"
#include "cal3d/model/core_skeleton.h"
#include "tests/support/program_test.h"

namespace {

class Skeletons : public SceneTest {
 protected:
  // Exports the skeleton below the hips with an option. Where its bones stand below their parents,
  // in hundredths; and where the elbow's space has the origin.
  std::string Places(const std::string& option) {
    Run({option, "--root=RootNode/Hips", "s.fbx", "export", "skel", "out"});
    const std::string bytes = File("out.xsf");
    const auto skeleton = CalLoader::loadCoreSkeleton(CalBufferSource(bytes.data(), bytes.size()));
    std::ostringstream text;
    const auto add = [&text](const CalVector& v) {
      for (const float x : {v.x, v.y, v.z}) text << std::round(double{x} * 100) / 100 + 0.0 << " ";
    };
    for (const auto& bone : skeleton->coreBones) {
      add(bone->relativeTranslation);
      text << "turn " << std::lround(bone->relativeRotation.x * 100.0F) << " "
           << std::lround(bone->relativeRotation.z * 100.0F) << "|";
    }
    add(skeleton->coreBones.at(1)->boneSpaceTranslation);
    return text.str();
  }
};

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

// A Y-up scene: what is (x, y, z) there comes out as (x, -z, y), by a turn of 90 degrees about X.
// Bones hold no scaling: it goes into the translations below.
TEST_F(Skeletons, RestPoseFromTheScene) {
  scene_.SetYUp();
  const int64_t hips = scene_.Bone("Hips", SceneBuilder::kRoot,
                                   {P("Lcl Translation", {1, 90, 5}), P("Lcl Scaling", {2, 2, 2})});
  const int64_t arm =
      scene_.Bone("Arm", hips, {P("Lcl Translation", {10, 0, 0}), P("Lcl Rotation", {0, 0, 90})});
  scene_.Bone("Hand", arm, {P("Lcl Translation", {0, 4, 0})});
  // Bone space takes the bone's own place in the file to the origin. The elbow lies at (21, -5,
  // 90), and its frame is turned by the root's turn and then its own.
  EXPECT_EQ(Places("-n"), "1 -5 90 turn 71 0|20 0 0 turn 0 71|0 8 0 turn 0 0|-90 21 -5 ");
  EXPECT_TRUE(Places("--scale=3").starts_with("3 -15 270 turn 71 0|60 0 0 turn 0 71|0 24 0 "));
  EXPECT_TRUE(Places("--up=y").starts_with("1 -5 90 ")) << "both axes lie on one";
}

TEST_F(Skeletons, DeepTrees) {
  int64_t node = SceneBuilder::kRoot;
  for (int i = 0; i < 5000; ++i) node = scene_.Node("n", node);
  EXPECT_EQ(Run({"--root=RootNode", "s.fbx", "export", "skel", "deep"}),
            "SKELETON: deep FILENAME: deep.xsf\n");
  EXPECT_NE(File("deep.xsf").find("NUMBONES=\"5001\""), std::string::npos);
}

}  // namespace
