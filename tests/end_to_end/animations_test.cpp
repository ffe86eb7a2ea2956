// Animations of scenes that need to be by themselves.
#include <limits>

#include <gmock/gmock.h>

#include "tests/support/program_test.h"

namespace {

using Animations = SceneTest;

// Behind the name, in a clip of frames 0 to 20.
const std::string kTo20 =
    " MODE: 30 frames/s PROTOCOL:  Default protocol (initialized to eFRAMES) START: 0 END: 20 "
    "DURATION: 20\n";

TEST_F(Animations, NoneWithoutASkeleton) {
  scene_.Key(scene_.AddClip("Walk", 0, 20).layer, scene_.Node("n"), "TX", {0, 10, 20}, {0, 1, 0});
  EXPECT_EQ(Run({"s.fbx", "list", "anim"}), "");
}

TEST_F(Animations, MorphsOfAStackThatMovesTheLastSkeleton) {
  const int64_t hips = scene_.Bone("Hips");
  const SceneBuilder::Clip clip = scene_.AddClip("Walk", 0, 20);
  scene_.Key(clip.layer, hips, "TX", {0, 10, 20}, {0, 5, 0});
  scene_.KeyMorph(clip.layer, scene_.Mesh("Face", {"smile"}, hips).channels[0], {0, 10, 20},
                  {0, 100, 0});
  scene_.KeyMorph(clip.layer, scene_.Mesh("Stray", {"wink"}).channels[0], {0, 10, 20}, {0, 50, 0});
  // One search of the whole scene, none of single meshes.
  EXPECT_EQ(Run({"s.fbx", "list", "morphanim"}), "MORPH: Walk-smile-wink" + kTo20);
  EXPECT_THAT(Run({"s.fbx", "list"}),
              testing::HasSubstr("ANIM: Walk" + kTo20 + "MORPH: Walk-smile-wink" + kTo20));
}

TEST_F(Animations, HostileKeys) {
  constexpr int64_t kMax = std::numeric_limits<int64_t>::max();
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  const int64_t hips = scene_.Bone("Hips");
  const SceneBuilder::Clip clip = scene_.AddClip("Walk", -1e9, 5e9);
  scene_.KeyTicks(clip.layer, hips, "TX", {-kMax, 0, kMax}, {kNaN, 3e38F, -3e38F});
  scene_.KeyTicks(clip.layer, hips, "TY", {SceneBuilder::Ticks(7), 0, 0}, {1, 2});
  EXPECT_THAT(Run({"-vvv", "s.fbx", "list", "anim"}),
              testing::HasSubstr("DATA: Hips TX 3\n-5990997586:nan 0:"));
  EXPECT_EQ(Run({"-rRootNode/Hips", "s.fbx", "export", "anim", "Walk"}),
            "ANIMATION: Walk FILENAME: Walk.xaf\n");
}

}  // namespace
