#include <array>
#include <random>

#include <gmock/gmock.h>

#include "cal3d/model/core_animation.h"
#include "converter/animation/animation_info.h"
#include "converter/animation/curve_visitors.h"
#include "converter/animation/export_animation.h"
#include "converter/animation/older_route.h"
#include "fbx/anim/fbx_animation.h"
#include "fbx/scene/fbx_node.h"
#include "tests/converter/animation/clip_file.h"
#include "tests/support/printed.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

TEST(AnimationInfo, NamesSortPlainThenShortThenByBytes) {
  const std::set<std::string, animNameSorter> names = {"b|a", "walk", "run", "a|b",
                                                       "abc", "",     "|",   "longer name"};
  EXPECT_THAT(names, ElementsAre("", "abc", "run", "walk", "longer name", "|", "a|b", "b|a"));
}

TEST(AnimationInfo, TimeTexts) {
  std::string modes;
  for (int mode = 0; mode < 20; ++mode) {
    modes.append(GlobalTimeModeHumanReadable(mode)).append("|");
  }
  EXPECT_EQ(
      modes,
      "DEFAULT|120 frames/s|100 frames/s|60 frames/s|50 frames/s|48 frame/s|30 frames/s|30 "
      "frames/s|~29.97|~29.97|25 frames/s|24 frames/s|1000 milli/s|~23.976 frames/s| Custom|96 "
      "frames/s|72 frames/s|~59.94 frames/s|    Number of time modes|UNKNOWN|");
  EXPECT_STREQ(GlobalProtocolHumanReadable(0), "SMPTE EProtocol");
  EXPECT_STREQ(GlobalProtocolHumanReadable(-1), "UNKNOWN");
}

class AnimationHolders : public ClipFile {};

TEST_F(AnimationHolders, NodesOfTheSameMorph) {
  scene_.Bone("Hips");
  const SceneBuilder::Clip clip = scene_.AddClip("Male|Big|Talk", 20, -1, 1e12);
  for (const std::string name : {"Left", "Right", "Hat"}) {
    const SceneBuilder::MeshIds mesh = scene_.Mesh(name, {"smile"});
    scene_.KeyMorph(clip.layer, mesh.channels[0], {0, 1, 2}, {0, name == "Hat" ? 1.0F : 2.0F, 0});
  }
  FbxWrapper& wrapper = Load();
  const AnimationInfoHolder holder =
      ExportAnimation(wrapper, args_).GetAnimatedNodes(wrapper.GetRootNode(), Stack(wrapper))[1];
  EXPECT_THAT(holder.morphChannels, ElementsAre("smile"));
  EXPECT_EQ(holder.buildFileName(), "Big|Talk-smile");
  EXPECT_EQ(holder.info.endFrame, -1);
  EXPECT_EQ(holder.info.durationFrames, 21);
  const auto groups = holder.getMorphs(wrapper.Channels());
  ASSERT_THAT(groups, SizeIs(2));
  const AnimationInfoHolder& pair = groups.at("smile 3\n0:0 1:2 2:0 \n");
  ASSERT_THAT(pair.nodes, SizeIs(2));
  EXPECT_EQ(pair.nodes[1].front()->Name(), "Right");
}

class CurveVisitors : public ClipFile {
 protected:
  static std::string TextBelow(FbxWrapper& wrapper, const std::string& path, size_t stack = 0) {
    AnimationCurveVisitorString visitor;
    DisplayAnimation(wrapper.Channels(), Stack(wrapper, stack), wrapper.GetNodeByPath(path),
                     visitor);
    return visitor.text;
  }
};

TEST_F(CurveVisitors, WhatIsAnimatedBelowANode) {
  const int64_t hips = scene_.Bone("Hips");
  const int64_t spine = scene_.Bone("Spine", hips);
  const SceneBuilder::MeshIds face = scene_.Mesh("Face", {"smile", "wink", "TX"}, spine);
  scene_.Connect(face.mesh, scene_.Node("Twin"));  // the same geometry
  const SceneBuilder::Clip clip = scene_.AddClip("Walk", 0, 20);
  const int64_t upper = scene_.AddLayer(clip);
  scene_.Key(upper, hips, "TX", {1, 2, 3}, {1, 1, 1});
  scene_.Key(clip.layer, spine, "SZ", {0, 1, 2}, {1, 1, 1});
  scene_.KeyMorph(clip.layer, face.channels[2], {0, 1, 2}, {5, 5, 5});
  scene_.KeyMorph(clip.layer, face.channels[1], {0, 1}, {5, 6});  // two keys are none
  scene_.KeyMorph(clip.layer, face.channels[0], {0, 1, 2}, {0, 50, 100});
  scene_.Key(clip.layer, face.node, "RX", {0, 1, 2}, {1, 1, 1});
  scene_.Key(clip.layer, hips, "RZ", {0, 1}, {1, 2});
  // Frames and values truncate toward zero; values have three decimals, six digits.
  scene_.Key(clip.layer, hips, "TY", {-2.5, -0.5, 1000000}, {1234567.0F, 1.0006F, -1.0004F});
  scene_.Key(clip.layer, hips, "TZ", {0, 1, 2}, {-0.0004F, 0.1F, 1e-9F});
  FbxWrapper& wrapper = Load();
  FbxNode* root = wrapper.GetRootNode();
  const FbxNode* faceNode = wrapper.GetNodeByPath("RootNode/Hips/Spine/Face");
  EXPECT_EQ(TextBelow(wrapper, "RootNode"),
            "Hips TY 3\n-2:1.23457e+06 0:1.001 1000000:-0.999 \n"
            "Hips TZ 3\n0:0 1:0.1 2:0 \n"
            "Spine SZ 3\n0:1 1:1 2:1 \n"
            "Face RX 3\n0:1 1:1 2:1 \n"
            "Face smile 3\n0:0 1:50 2:100 \n"
            "Face TX 3\n0:5 1:5 2:5 \n"
            "Twin smile 3\n0:0 1:50 2:100 \n"
            "Twin TX 3\n0:5 1:5 2:5 \n"
            "Hips TX 3\n1:1 2:1 3:1 \n");
  EXPECT_EQ(CurveText(ChannelsBelow(wrapper.Channels(), Stack(wrapper), faceNode), false),
            "RX 3\n0:1 1:1 2:1 \nsmile 3\n0:0 1:50 2:100 \nTX 3\n0:5 1:5 2:5 \n");

  const LayerChannels& layer = wrapper.Channels().Of(Stack(wrapper)->GetLayer(0));
  const auto names = [](NodeSpan nodes) {
    std::string text;
    for (const FbxNode* node : nodes) text += node->Name() + " ";
    return text;
  };
  EXPECT_EQ(names(layer.MovedBelow(root)), "Hips Face ");  // scaling is no movement
  EXPECT_EQ(names(layer.MovedBelow(faceNode->GetParent())), "Face ");
  EXPECT_EQ(names(layer.MorphedBelow(root)), "Face Twin ");
  EXPECT_THAT(HasBlendShapeMorph(layer.Of(faceNode).front()), ElementsAre("smile", "TX"));
}

// A property may have curve nodes in many layers, and by mistake two in one.
TEST_F(CurveVisitors, ChannelsAreThoseThatPropertiesKnow) {
  const int64_t hips = scene_.Bone("Hips");
  const int64_t first = scene_.AddClip("First", 0, 20).layer;
  const int64_t second = scene_.AddClip("Second", 0, 20).layer;
  const int64_t twin = scene_.Node("Twin");
  // The layer meets them in one order, the property in the other, which counts.
  std::vector<int64_t> curveNodes;
  for (const float value : {0.0F, 1.0F, 2.0F}) {
    curveNodes.push_back(scene_.Drive(value < 2 ? first : second, twin, "Lcl Rotation", {"X"},
                                      {0, 1, 2}, {value, value, value}));
  }
  for (const size_t i : {2U, 1U, 0U}) {
    scene_.ConnectProperty(curveNodes[i], hips, "Lcl Translation");
  }
  const int64_t smile = scene_.Mesh("Face", {"smile"}).channels[0];
  for (const float value : {5.0F, 6.0F}) {
    scene_.KeyMorph(first, smile, {0, 1, 2}, {value, value, value});
  }
  FbxWrapper& wrapper = Load();
  EXPECT_EQ(TextBelow(wrapper, "RootNode/Hips", 0), "Hips TX 3\n0:1 1:1 2:1 \n");
  EXPECT_EQ(TextBelow(wrapper, "RootNode/Hips", 1), "Hips TX 3\n0:2 1:2 2:2 \n");
  EXPECT_EQ(TextBelow(wrapper, "RootNode/Face"), "Face smile 3\n0:5 1:5 2:5 \n");
}

class EverythingVisitor : public AnimationCurveVisitorString {
  bool UseAdvancedCurves() override { return true; }
};

TEST_F(CurveVisitors, LightsAndUserProperties) {
  const int64_t lamp = scene_.Node("Lamp", SceneBuilder::kRoot,
                                   {P("speed", "Vector3D", "Vector", "A+U", {0.0, 0.0, 0.0}),
                                    P("mood", "Number", "", "A+U", {0.0})},
                                   "Light");
  const int64_t light = scene_.AddNodeAttribute("Lamp", "Light", {P("Color", {1.0, 1.0, 1.0})});
  scene_.Connect(light, lamp);
  const int64_t layerId = scene_.AddClip("Glow", 0, 20).layer;
  const auto drive = [&](int64_t object, const char* property, const std::string& channel) {
    scene_.Drive(layerId, object, property, {channel}, {0, 1, 2}, {7.9F, -7.9F, 0});
  };
  drive(lamp, "speed", "Y");
  drive(lamp, "mood", "mood");
  drive(light, "Color", "Z");
  drive(light, "Intensity", "Intensity");
  scene_.KeyMorph(layerId, scene_.Mesh("Face", {"smile"}).channels[0], {0, 1, 2}, {5, 5, 5});
  FbxWrapper& wrapper = Load();
  EverythingVisitor visitor;
  DisplayAnimation(wrapper.Channels().Of(Stack(wrapper)->GetLayer(0)), wrapper.GetRootNode(),
                   visitor);
  EXPECT_EQ(visitor.text,
            "Lamp Blue 3\n0:7.9 1:-7.899 2:0 \nLamp Intensity 3\n0:7.9 1:-7.899 2:0 \n"
            "Property:speed:Y 3\n0:7 1:-7 2:0 \nProperty:mood 3\n0:7 1:-7 2:0 \n"
            "Face smile 3\n0:5 1:5 2:5 \n");
  EXPECT_EQ(TextBelow(wrapper, "RootNode/Lamp"), "");  // not for export
  const LayerChannels& layer = wrapper.Channels().Of(Stack(wrapper)->GetLayer(0));
  EXPECT_EQ(DisplayAnimationNodes(layer, wrapper.GetRootNode(), true).Text(), "[Lamp] [Face] ");
  EXPECT_EQ(DisplayAnimationNodes(layer, wrapper.GetRootNode(), false).Text(), "[RootNode] ");
}

// Comparing texts without writing them must give what comparing them written gives.
TEST_F(CurveVisitors, OrderOfTexts) {
  std::vector<int64_t> bones;
  for (const char* name : {"a", "b", "a TX 3\n0:0", "a TX 3\n0:0 1:0 2:0 \na"}) {
    bones.push_back(scene_.Bone(name));
  }
  constexpr std::array<float, 6> kValues = {0.0F, 0.0002F, -0.0002F, 10.0F, 1e7F, 10000001.0F};
  constexpr size_t kStacks = 40;
  std::mt19937 random(7);
  for (size_t i = 0; i < kStacks; ++i) {
    const SceneBuilder::Clip clip = scene_.AddClip("clip", 0, 20);
    for (const int64_t bone : bones) {
      for (const char* channel : {"TX", "TY"}) {
        if (random() % 4 != 0) continue;
        const double middle = random() % 2 == 0 ? 1.0 : 1.5;
        scene_.Key(clip.layer, bone, channel, {0, middle, 2}, {0, 0, kValues[random() % 6]});
      }
    }
  }
  FbxWrapper& wrapper = Load();
  std::vector<ChannelRuns> runs;
  for (size_t i = 0; i < kStacks; ++i) {
    runs.push_back(ChannelsBelow(wrapper.Channels(), Stack(wrapper, i), wrapper.GetRootNode()));
  }
  int equal = 0;
  for (const ChannelRuns& a : runs) {
    for (const ChannelRuns& b : runs) {
      for (const bool withNodes : {true, false}) {
        const int expected = CurveText(a, withNodes).compare(CurveText(b, withNodes));
        const int order = CompareCurveTexts(a, b, withNodes);
        EXPECT_EQ(order < 0, expected < 0);
        EXPECT_EQ(order == 0, expected == 0);
        if (&a != &b && expected == 0) ++equal;
      }
    }
  }
  EXPECT_GT(equal, 0);  // the values above make some
}

// The export route stack by stack, which no command takes.

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
  for (const std::string bone : {"Hips", "Spine"}) {
    EXPECT_EQ(Printed([&] {
                exporter.IsAnimationOnSkeleton(Stack(wrapper), wrapper.GetRootNode(), {bone});
              }),
              bone == "Spine" ? "" : "found skeletal animation in stack Walk on node Hips\n");
  }
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
  EXPECT_THAT(exporter.GetMorphChannelName(wrapper.GetRootNode(), Stack(wrapper, 3)),
              ElementsAre("smile"));
}

}  // namespace
