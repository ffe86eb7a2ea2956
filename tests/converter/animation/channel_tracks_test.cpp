// The export route stack by stack, which no command takes.
#include <gmock/gmock.h>

#include "cal3d/io/loader.h"
#include "cal3d/model/core_morph_animation.h"
#include "converter/animation/automation_file.h"
#include "converter/animation/export_animation.h"
#include "fbx/scene/fbx_node.h"
#include "tests/converter/animation/clip_file.h"
#include "tests/support/printed.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

class ChannelTracks : public ClipFile {
 protected:
  ChannelTracks() : hips_(scene_.Bone("Hips")) {}
  int64_t hips_;
};

TEST_F(ChannelTracks, ATrackForEachLayerWithTwoKeysEnough) {
  const ClipScene::Clip clip = scene_.AddClip("Walk", 10, 70);
  scene_.Key(clip.layer, hips_, "TX", {0, 15.5}, {0, 31});
  scene_.Key(scene_.AddLayer(clip), hips_, "RX", {0, 30, 30}, {0, 0, 0});
  scene_.Key(clip.layer, scene_.Bone("Stranger"), "TX", {0, 1, 2}, {1, 1, 1});
  scene_.AddClip("Run", 0, 900);
  Load();
  args_.exportObjectName = "Walk";
  args_.frameRate = 15;  // the command's rate, not the scene's 30
  args_.scaleFactor = 2;
  args_.upAxis = "y";  // no conversion on this route
  args_.frontAxis = "-z";
  CalCoreAnimation animation;
  ASSERT_TRUE(ExportAnimation(args_).AddAnimation(args_, animation));
  EXPECT_FLOAT_EQ(animation.duration, 4);
  ASSERT_THAT(animation.tracks, SizeIs(2));
  ASSERT_THAT(animation.tracks[0].keyframes, SizeIs(2));
  EXPECT_FLOAT_EQ(animation.tracks[0].keyframes[1].time, 15.5F / 15);
  EXPECT_FLOAT_EQ(animation.tracks[0].keyframes[1].translation.x, 62);
  EXPECT_THAT(animation.tracks[1].keyframes, SizeIs(2));

  EXPECT_EQ(ExportAnimation(args_).Export(args_, kStopBeforeAnimation), true);
  EXPECT_FALSE(FileExists(args_.outputFilename));
  EXPECT_EQ(ExportAnimation(args_).Export(args_, kStopBeforeMorphAnimation), true);  // a save
  EXPECT_TRUE(FileExists(args_.outputFilename));
  args_.exportObjectName = "Run";
  EXPECT_EQ(ExportAnimation(args_).Export(args_, kStopBeforeAnimation), false);
  args_.skeletonRootPath = "RootNode/None";
  EXPECT_FALSE(ExportAnimation(args_).AddAnimation(args_, animation));
}

TEST_F(ChannelTracks, VerboseKeyframes) {
  const ClipScene::Clip clip = scene_.AddClip("Walk", 0, 20);
  scene_.Key(clip.layer, hips_, "TX", {0, 10}, {65.5F, 66});
  Load();
  args_.exportObjectName = "Walk";
  args_.verbosity = 3;
  CalCoreAnimation animation;
  using std::string_literals::operator""s;
  EXPECT_EQ(Printed([&] { ExportAnimation(args_).AddAnimation(args_, animation); }),
            " [Walk]\nHipsRootNode/Hips 2 key frames "
            " 0  T{A,\0,\0} Q{\0,\0,\0,\1}\n"
            " 10  T{B,\0,\0} Q{\0,\0,\0,\1}\n"s);
}

TEST_F(ChannelTracks, OneAutomationFile) {
  const ClipScene::Clip clip = scene_.AddClip("My Walk", 0, 20);
  scene_.Key(clip.layer, hips_, "TX", {0, 10}, {1, 2});
  Load();
  args_.outputFilename.clear();
  args_.directoryForOutputFiles = folder_.Path() + "/";
  exportASingleAutomationFile("My Walk", args_, kNoMagicStop);
  EXPECT_EQ(args_.outputFilename, folder_.File("My%20Walk.xaf"));
  EXPECT_TRUE(FileExists(args_.outputFilename));
  exportASingleAutomationFile("Other", args_, kNoMagicStop);
  EXPECT_EQ(args_.outputFilename, folder_.File("My%20Walk.xaf"));  // the first one stays
}

TEST_F(ChannelTracks, Morphs) {
  const ClipScene::Morphed face = scene_.Mesh("Face", {"two", "still", "one", "low"}, hips_);
  const ClipScene::Clip talk = scene_.AddClip("Talk", 0, 60);
  scene_.KeyMorph(talk.layer, face.channels[0], {0, 7.5}, {0, 0.0004F});
  scene_.KeyMorph(talk.layer, face.channels[1], {0, 10}, {5, 5});
  scene_.KeyMorph(talk.layer, face.channels[2], {0}, {5});
  const ClipScene::Clip smile = scene_.AddClip("Smile", 0, 90);
  scene_.KeyMorph(smile.layer, face.channels[3], {0, 1, 2}, {0, 0, 0});
  FbxWrapper& wrapper = Load();
  ExportAnimation exporter(args_);
  args_.exportObjectName = "Talk";
  CalCoreMorphAnimation animation;
  EXPECT_TRUE(exporter.AddMorphAnimation(args_, animation));
  EXPECT_FLOAT_EQ(animation.duration, 2);
  ASSERT_THAT(animation.tracks, SizeIs(1));
  EXPECT_EQ(animation.tracks[0].morphName, "two");
  EXPECT_FLOAT_EQ(animation.tracks[0].keyframes.at(1).weight, 0.000004F);
  EXPECT_FLOAT_EQ(animation.tracks[0].keyframes.at(1).time, 0.25F);

  // With version 2 the names say what to leave out.
  args_.commandVersion = 2;
  args_.exportObjectNames = {"Talk"};
  animation = {};
  exporter.AddMorphAnimation(args_, animation);
  ASSERT_THAT(animation.tracks, SizeIs(1));
  EXPECT_EQ(animation.tracks[0].morphName, "low");
  args_.exportObjectNames.clear();
  EXPECT_TRUE(exporter.ExportMorphAnim(args_, kStopBeforeMorphAnimation));
  EXPECT_FALSE(FileExists(args_.outputFilename));
  EXPECT_TRUE(exporter.ExportMorphAnim(args_, kStopBeforeAnimation));  // a save
  EXPECT_THAT(ReadFile(args_.outputFilename), HasSubstr("NUMTRACKS=\"2\""));

  EXPECT_EQ(Printed([&] {
              EXPECT_TRUE(exporter.CheckTracksForMorphAnimation(&wrapper, Stack(wrapper)));
            }),
            "found morph animation in stack Talk on node Face\n");
}

TEST_F(ChannelTracks, WhetherAStackMorphs) {
  const ClipScene::Morphed face = scene_.Mesh("Face", {"smile"}, hips_);
  const std::vector<std::pair<ClipScene::Values, bool>> cases = {
      {{0}, false}, {{5}, false}, {{0, 0}, false}, {{5, 5}, true}, {{0, 0, 0}, true}};
  for (const auto& [values, expected] : cases) {
    const ClipScene::Clip clip = scene_.AddClip("Talk", 0, 60);
    ClipScene::Frames frames;
    for (size_t i = 0; i < values.size(); ++i) frames.push_back(static_cast<double>(i));
    scene_.KeyMorph(clip.layer, face.channels[0], frames, values);
  }
  FbxWrapper& wrapper = Load();
  ExportAnimation exporter(args_);
  for (size_t i = 0; i < cases.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(exporter.CheckTracksForMorphAnimation(&wrapper, Stack(wrapper, i)), cases[i].second);
  }
  FbxNode* root = wrapper.GetRootNode();
  FbxAnimStack* last = Stack(wrapper, cases.size() - 1);
  EXPECT_THAT(*exporter.GetMorphNodes(root, last), SizeIs(1));
  EXPECT_THAT(exporter.GetMorphChannelName(root, last), ElementsAre("smile"));
  EXPECT_THAT(exporter.GetMorphChannelName(root, Stack(wrapper, 3)), SizeIs(0));  // two keys
}

TEST_F(ChannelTracks, AnimationOnASkeleton) {
  const ClipScene::Clip clip = scene_.AddClip("Walk", 0, 60);
  scene_.Key(clip.layer, scene_.Bone("Spine", hips_), "RZ", {0}, {1});
  scene_.Key(clip.layer, hips_, "SX", {0, 1, 2}, {1, 1, 1});
  FbxWrapper& wrapper = Load();
  ExportAnimation exporter(args_);
  const auto found = [&](const std::string& bone) {
    return exporter.IsAnimationOnSkeleton(Stack(wrapper), wrapper.GetRootNode(), {bone});
  };
  EXPECT_EQ(Printed([&] { EXPECT_TRUE(found("Spine")); }),
            "found skeletal animation in stack Walk on node Spine\n");
  EXPECT_FALSE(found("Hips"));  // scaling alone
}

TEST_F(ChannelTracks, CompareShowsBothSides) {
  scene_.Bone("Spine", hips_);
  const ClipScene::Clip clip = scene_.AddClip("Walk", 0, 60);
  scene_.Key(clip.layer, hips_, "TX", {0, 30, 60}, {1, 2, 3});
  Load();
  args_.exportObjectName = "Walk";
  CalCoreAnimation animation;
  ExportAnimation exporter(args_);
  ASSERT_TRUE(exporter.AddAnimation(args_, animation));
  const std::string text = Printed([&] { EXPECT_TRUE(exporter.Compare(args_, animation)); });
  // Steps lie 30 seconds apart: the second one is past the end. A bone without a track is left out.
  EXPECT_THAT(text, StartsWith("00\t 0.00 r:0.00 0.00 0.00 1.00 t:1.00 0.00 0.00 \n"
                               "00\t 0.00 r:0.00 0.00 0.00 1.00 t:1.00 0.00 0.00 \n"
                               "00\t 30.00 r:0.00 0.00 0.00 1.00 t:3.00 0.00 0.00 \n"));
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 240);
  animation.tracks[0].keyframes[0].rotation = {1, 0, 0, 0};
  EXPECT_THAT(Printed([&] { exporter.Compare(args_, animation); }),
              StartsWith("rotation mismatch at 0, frame 0 \n"));
}

}  // namespace
