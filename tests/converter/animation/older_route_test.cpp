// The export route stack by stack, which no command takes.
#include "converter/animation/older_route.h"

#include <gmock/gmock.h>

#include "cal3d/model/core_animation.h"
#include "converter/animation/export_animation.h"
#include "fbx/scene/fbx_node.h"
#include "tests/converter/animation/clip_file.h"
#include "tests/support/printed.h"

namespace {

using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

class OlderRoute : public ClipFile {};

TEST_F(OlderRoute, MovesAndTheirComparison) {
  const int64_t hips = scene_.Bone("Hips");
  const SceneBuilder::Clip clip = scene_.AddClip("Walk", 10, 70);
  scene_.Key(clip.layer, hips, "TX", {0, 15.5}, {0, 31});  // two keys are enough
  scene_.Key(clip.layer, scene_.Bone("Spine", hips), "SX", {0, 1, 2}, {1, 1, 1});
  FbxWrapper& wrapper = Load();
  args_.frameRate = 15;  // the command's rate, not the scene's 30
  args_.scaleFactor = 2;
  args_.verbosity = 3;
  args_.exportObjectName = "Walk";
  ExportAnimation exporter(wrapper, args_);
  CalCoreAnimation animation;
  using std::string_literals::operator""s;
  EXPECT_EQ(Printed([&] { EXPECT_TRUE(exporter.AddAnimation(args_, animation)); }),
            " [Walk]\nHipsRootNode/Hips 2 key frames "
            " 0  T{\0,\0,\0} Q{\0,\0,\0,\1}\n 15  T{>,\0,\0} Q{\0,\0,\0,\1}\n"s);
  EXPECT_FLOAT_EQ(animation.duration, 4);
  ASSERT_THAT(animation.tracks, SizeIs(1)) << "scaling makes no track";
  EXPECT_FLOAT_EQ(animation.tracks[0].keyframes.at(1).time, 15.5F / 15);
  EXPECT_FLOAT_EQ(animation.tracks[0].keyframes.at(1).translation.x, 62);
  animation.tracks[0].keyframes[0].rotation = {1, 0, 0, 0};
  EXPECT_THAT(Printed([&] { exporter.Compare(args_, animation); }),
              StartsWith("rotation mismatch at 0, frame 0 \n"));
  EXPECT_TRUE(exporter.Export(args_, kStopBeforeAnimation));
  EXPECT_FALSE(FileExists(args_.outputFilename));
  exportASingleAutomationFile(wrapper, "Walk", args_, kStopBeforeMorphAnimation);  // a save
  EXPECT_TRUE(FileExists(args_.outputFilename));
}

TEST_F(OlderRoute, MorphsWithTwoKeysEnough) {
  const SceneBuilder::MeshIds face = scene_.Mesh("Face", {"smile"}, scene_.Bone("Hips"));
  const struct {
    std::string stack;
    SceneBuilder::Frames frames;
    SceneBuilder::Values values;
    size_t tracks;
    bool shows;  // by the check for a morph animation
  } cases[] = {{"one key", {0}, {5}, 0, false},
               {"no change", {0, 1}, {5, 5}, 0, true},
               {"change", {0, 7.5}, {0, 0.0004F}, 1, true},
               {"three keys", {0, 1, 2}, {0, 0, 0}, 1, true}};
  for (const auto& c : cases) {
    scene_.KeyMorph(scene_.AddClip(c.stack, 0, 60).layer, face.channels[0], c.frames, c.values);
  }
  FbxWrapper& wrapper = Load();
  ExportAnimation exporter(wrapper, args_);
  for (size_t i = 0; i < std::size(cases); ++i) {
    const std::string& name = cases[i].stack;
    args_.exportObjectName = name;
    CalCoreMorphAnimation animation;
    EXPECT_TRUE(exporter.AddMorphAnimation(args_, animation));
    EXPECT_THAT(animation.tracks, SizeIs(cases[i].tracks)) << name;
    const bool shows = cases[i].shows;
    EXPECT_EQ(Printed([&] {
                EXPECT_EQ(exporter.CheckTracksForMorphAnimation(&wrapper, Stack(wrapper, i)),
                          shows);
              }),
              shows ? "found morph animation in stack " + name + " on node Face\n" : "");
  }
  EXPECT_TRUE(exporter.ExportMorphAnim(args_, kStopBeforeAnimation));  // a save
  EXPECT_THAT(ReadFile(args_.outputFilename), HasSubstr("NUMKEYFRAMES=\"3\""));
  EXPECT_THAT(*exporter.GetMorphNodes(wrapper.GetRootNode(), Stack(wrapper, 3)), SizeIs(1));
}

}  // namespace
