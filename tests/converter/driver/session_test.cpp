#include "converter/driver/session.h"

#include <gtest/gtest.h>

#include "converter/animation/export_animation.h"
#include "tests/support/printed.h"
#include "tests/support/scene_builder.h"
#include "tests/support/temp_dir.h"

namespace {

// A scene of one bone with a clip of 30 frames of its own rate.
ConversionArguments SceneFile(const TempDir& dir, const std::string& name, const std::string& clip,
                              int32_t timeMode) {
  SceneBuilder scene;
  const int64_t bone = scene.Bone("Hips");
  scene.Key(scene.AddClip(clip, 0, 30).layer, bone, "TX", {0, 10, 20}, {1, 2, 3});
  scene.SetTimeMode(timeMode);
  ConversionArguments args;
  args.inputFilename = dir.Write(name, scene.Write());
  args.type = ANIM_OBJECT;
  return args;
}

TEST(Session, ScenesSideBySide) {
  const TempDir dir;
  const ConversionArguments walk = SceneFile(dir, "walk.fbx", "Walk", 6);
  const ConversionArguments film = SceneFile(dir, "film.fbx", "Film", 11);
  Session first;
  Session second;
  FbxWrapper& scene = first.SceneOf(walk);
  FbxWrapper& other = second.SceneOf(film);
  // Each lists by its own rate, whichever was loaded last.
  EXPECT_EQ(Printed([&] { ExportAnimation(scene, walk).List(); }).substr(0, 31),
            "ANIM: Walk MODE: 30 frames/s PR");
  EXPECT_EQ(Printed([&] { ExportAnimation(other, film).List(); }).substr(0, 31),
            "ANIM: Film MODE: 24 frames/s PR");
}

TEST(Session, AnimationsGoWithTheirScene) {
  const TempDir dir;
  ConversionArguments args = SceneFile(dir, "a.fbx", "Walk", 6);
  Session session;
  EXPECT_EQ(session.Animations(), nullptr);
  const AnimationCache& cache = session.AnimationsOf(args);
  EXPECT_EQ(cache.skeletalAnimations.at(kCompleteSkeletalList).front().fileName, "Walk");
  args.encodeNames = true;  // no other argument plays a part
  EXPECT_EQ(&session.AnimationsOf(args), &cache);
  args.inputFilename = dir.File("none.fbx");
  EXPECT_THROW(session.SceneOf(args), std::runtime_error);
  EXPECT_EQ(session.Animations(), nullptr);
}

}  // namespace
