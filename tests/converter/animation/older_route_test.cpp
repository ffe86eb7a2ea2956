// The export route stack by stack, which no command takes.
#include "converter/animation/older_route.h"

#include <gmock/gmock.h>

#include "cal3d/model/core_animation.h"
#include "converter/animation/export_animation.h"
#include "fbx/scene/fbx_node.h"
#include "tests/converter/animation/clip_file.h"
#include "tests/support/printed.h"

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

class ChannelTracks : public ClipFile {
 protected:
  ChannelTracks() : hips_(scene_.Bone("Hips")) {}

  // The skeletal animation of the stack of this name.
  CalCoreAnimation Tracks(const std::string& name) {
    args_.exportObjectName = name;
    CalCoreAnimation animation;
    EXPECT_TRUE(ExportAnimation(*loaded_, args_).AddAnimation(args_, animation));
    return animation;
  }

  int64_t hips_;
};

TEST_F(ChannelTracks, ATrackForEachLayerWithTwoKeysEnough) {
  const SceneBuilder::Clip clip = scene_.AddClip("My Walk", 10, 70);
  scene_.Key(clip.layer, hips_, "TX", {0, 15.5}, {0, 31});
  scene_.Key(clip.layer, hips_, "SX", {1, 2}, {1, 1});  // scaling has no keyframes
  scene_.Key(scene_.AddLayer(clip), hips_, "RX", {0, 30, 30}, {0, 0, 0});
  scene_.Key(clip.layer, scene_.Bone("Stranger"), "TX", {0, 1, 2}, {1, 1, 1});
  scene_.Key(clip.layer, scene_.Bone("Spine", hips_), "SX", {0, 1, 2}, {1, 1, 1});
  scene_.AddClip("Run", 0, 900);
  FbxWrapper& wrapper = Load();
  args_.frameRate = 15;  // the command's rate, not the scene's 30
  args_.scaleFactor = 2;
  args_.upAxis = "y";  // no conversion on this route
  args_.frontAxis = "-z";
  CalCoreAnimation animation = Tracks("My Walk");
  EXPECT_FLOAT_EQ(animation.duration, 4);
  ASSERT_THAT(animation.tracks, SizeIs(2));
  ASSERT_THAT(animation.tracks[0].keyframes, SizeIs(2));
  EXPECT_FLOAT_EQ(animation.tracks[0].keyframes[1].time, 15.5F / 15);
  EXPECT_FLOAT_EQ(animation.tracks[0].keyframes[1].translation.x, 62);
  EXPECT_THAT(animation.tracks[1].keyframes, SizeIs(2));

  ExportAnimation exporter(wrapper, args_);
  const auto moves = [&](const std::string& bone) {
    return exporter.IsAnimationOnSkeleton(Stack(wrapper), wrapper.GetRootNode(), {bone});
  };
  EXPECT_FALSE(moves("Spine")) << "scaling makes no track";
  EXPECT_EQ(Printed([&] { EXPECT_TRUE(moves("Hips")); }),
            "found skeletal animation in stack My Walk on node Hips\n");
  EXPECT_TRUE(exporter.Export(args_, kStopBeforeAnimation));
  EXPECT_FALSE(FileExists(args_.outputFilename));
  args_.outputFilename.clear();
  args_.directoryForOutputFiles = folder_.Path() + "/";
  exportASingleAutomationFile(wrapper, "My Walk", args_, kStopBeforeMorphAnimation);  // a save
  EXPECT_TRUE(FileExists(folder_.File("My%20Walk.xaf")));
  exportASingleAutomationFile(wrapper, "Run", args_, kNoMagicStop);
  EXPECT_EQ(args_.outputFilename, folder_.File("My%20Walk.xaf"));  // the first one stays
  EXPECT_FALSE(exporter.Export(args_, kStopBeforeAnimation));
  args_.skeletonRootPath = "RootNode/None";
  EXPECT_FALSE(exporter.AddAnimation(args_, animation));
}

TEST_F(ChannelTracks, MorphsWithTwoKeysEnough) {
  const SceneBuilder::MeshIds face = scene_.Mesh("Face", {"smile"}, hips_);
  const struct {
    std::string stack;
    SceneBuilder::Frames frames;
    SceneBuilder::Values values;
    size_t tracks;
    bool shows;  // by the check for a morph animation
  } cases[] = {{"one key", {0}, {5}, 0, false},
               {"two zeros", {0, 1}, {0, 0}, 0, false},
               {"no change", {0, 1}, {5, 5}, 0, true},
               {"change", {0, 7.5}, {0, 0.0004F}, 1, true},
               {"three keys", {0, 1, 2}, {0, 0, 0}, 1, true}};
  for (const auto& c : cases) {
    scene_.KeyMorph(scene_.AddClip(c.stack, 0, 60).layer, face.channels[0], c.frames, c.values);
  }
  FbxWrapper& wrapper = Load();
  ExportAnimation exporter(wrapper, args_);
  std::map<std::string, CalCoreMorphAnimation> animations;
  for (size_t i = 0; i < std::size(cases); ++i) {
    const std::string& name = cases[i].stack;
    const bool shows = cases[i].shows;
    SCOPED_TRACE(name);
    args_.exportObjectName = name;
    EXPECT_TRUE(exporter.AddMorphAnimation(args_, animations[name]));
    EXPECT_THAT(animations[name].tracks, SizeIs(cases[i].tracks));
    const std::string printed = Printed([&] {
      EXPECT_EQ(exporter.CheckTracksForMorphAnimation(&wrapper, Stack(wrapper, i)), shows);
    });
    EXPECT_EQ(printed, shows ? "found morph animation in stack " + name + " on node Face\n" : "");
  }
  EXPECT_FLOAT_EQ(animations["change"].duration, 2);
  const CalCoreMorphTrack& track = animations["change"].tracks.at(0);
  EXPECT_EQ(track.morphName, "smile");
  EXPECT_FLOAT_EQ(track.keyframes.at(1).weight, 0.000004F);
  EXPECT_FLOAT_EQ(track.keyframes.at(1).time, 0.25F);

  // With version 2 the names say what to leave out.
  args_.commandVersion = 2;
  args_.exportObjectNames = {"change"};
  EXPECT_TRUE(exporter.ExportMorphAnim(args_, kStopBeforeMorphAnimation));
  EXPECT_FALSE(FileExists(args_.outputFilename));
  EXPECT_TRUE(exporter.ExportMorphAnim(args_, kStopBeforeAnimation));  // a save
  EXPECT_THAT(ReadFile(args_.outputFilename),
              AllOf(HasSubstr("NUMTRACKS=\"1\""), HasSubstr("NUMKEYFRAMES=\"3\"")));

  FbxNode* root = wrapper.GetRootNode();
  EXPECT_THAT(*exporter.GetMorphNodes(root, Stack(wrapper, 4)), SizeIs(1));
  EXPECT_THAT(exporter.GetMorphChannelName(root, Stack(wrapper, 4)), ElementsAre("smile"));
  EXPECT_THAT(exporter.GetMorphChannelName(root, Stack(wrapper, 3)), SizeIs(0));  // two keys
}

TEST_F(ChannelTracks, VerboseKeyframesAndTheirComparison) {
  scene_.Bone("Spine", hips_);
  scene_.Key(scene_.AddClip("Walk", 0, 60).layer, hips_, "TX", {0, 30, 60}, {65.5F, 66, 67});
  Load();
  args_.verbosity = 3;
  CalCoreAnimation animation;
  using std::string_literals::operator""s;
  EXPECT_EQ(Printed([&] { animation = Tracks("Walk"); }),
            " [Walk]\nHipsRootNode/Hips 3 key frames "
            " 0  T{A,\0,\0} Q{\0,\0,\0,\1}\n"
            " 30  T{B,\0,\0} Q{\0,\0,\0,\1}\n"
            " 60  T{C,\0,\0} Q{\0,\0,\0,\1}\n"s);
  const auto compare = [&] {
    return Printed(
        [&] { EXPECT_TRUE(ExportAnimation(*loaded_, args_).Compare(args_, animation)); });
  };
  const std::string text = compare();
  // Steps lie 30 seconds apart: the second one is past the end. A bone without a track is left out.
  EXPECT_THAT(text, StartsWith("00\t 0.00 r:0.00 0.00 0.00 1.00 t:65.50 0.00 0.00 \n"
                               "00\t 0.00 r:0.00 0.00 0.00 1.00 t:65.50 0.00 0.00 \n"
                               "00\t 30.00 r:0.00 0.00 0.00 1.00 t:67.00 0.00 0.00 \n"));
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 240);
  animation.tracks[0].keyframes[0].rotation = {1, 0, 0, 0};
  EXPECT_THAT(compare(), StartsWith("rotation mismatch at 0, frame 0 \n"));
}

}  // namespace
