// What no command line reaches: help as a command, and commands of the older version.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include "converter/animation/export_animation.h"
#include "converter/driver/command_set.h"
#include "converter/driver/session.h"
#include "tests/support/printed.h"
#include "tests/support/scene_builder.h"
#include "tests/support/temp_dir.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

std::string PrintedBy(const ConversionArguments& args, int expectedStatus) {
  return Printed([&] { EXPECT_EQ(processCommandSet(args), expectedStatus); });
}

TEST(CommandSet, HelpIsAsWideAsTheTerminal) {
  ConversionArguments args;
  args.option = ConversionArguments::HELP;
  args.verbosity = 1;
  setenv("COLUMNS", "200", 1);
  const std::string wide = PrintedBy(args, 0);
  unsetenv("COLUMNS");
  const std::string normal = PrintedBy(args, 0);
  EXPECT_THAT(wide, StartsWith("veltrum version 012\n\nFBX lib version 1.0.0\n  -h --help  "));
  EXPECT_THAT(wide, HasSubstr("use more v's for more detail.\n"));
  EXPECT_THAT(normal, HasSubstr("use more v's for more\n"));
  // The blank line stands between the two export texts.
  EXPECT_THAT(normal, HasSubstr("as a node name.\n\n    export skel <input fbx file>"));
  EXPECT_THAT(normal, EndsWith("The node path to the root of the skeleton."));
}

TEST(CommandSet, TheOlderVersionTakesOneName) {
  const TempDir dir;
  SceneBuilder scene;
  scene.Bone("Hips");
  ConversionArguments args;
  args.inputFilename = dir.Write("a.fbx", scene.Write());
  args.mode = EXPORT_MODE;
  args.type = NODE_OBJECT;
  args.skeletonRootPath = "RootNode/Hips";
  args.outputFilename = dir.File("out.xsf");
  EXPECT_EQ(PrintedBy(args, 0), "SKELETON: RootNode/Hips FILENAME: " + args.outputFilename + "\n");
  args.type = MESH_OBJECT;
  args.skeletonRootPath = "Hips";
  args.exportObjectName = "Body";
  EXPECT_EQ(PrintedBy(args, 1),
            "ERROR: Skeleton Root Node [Hips] not found in FBX\n\n"
            "could not create file " +
                args.outputFilename + " from " + args.inputFilename +
                " with root Hips and mesh Body\n");
}

// A scene of one bone with a clip of 30 frames of its own rate.
ConversionArguments SceneFile(const TempDir& dir, const std::string& name, const std::string& clip,
                              int32_t timeMode) {
  SceneBuilder scene;
  const int64_t bone = scene.Bone("Hips");
  scene.Key(scene.AddClip(clip, 0, 30).layer, bone, "TX", {0, 10, 20}, {1, 2, 3});
  scene.SetTimeMode(timeMode).SetGlobal(P("TimeProtocol", "enum", "", "", {timeMode % 2}));
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
  EXPECT_THAT(Printed([&] { ExportAnimation(scene, walk).List(); }),
              StartsWith("ANIM: Walk MODE: 30 frames/s PROTOCOL: SMPTE EProtocol "));
  EXPECT_THAT(Printed([&] { ExportAnimation(other, film).List(); }),
              StartsWith("ANIM: Film MODE: 24 frames/s PROTOCOL: Frame count "));
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
