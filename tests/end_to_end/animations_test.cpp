// Scenes in, animation listings and animation files out, through the program.
#include <limits>

#include <gmock/gmock.h>

#include "cal3d/io/loader.h"
#include "cal3d/model/core_animation.h"
#include "tests/support/program_test.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kHips = "--root=RootNode/Hips";
// Behind the name, in a clip of frames 0 to 20.
const std::string kTo20 =
    " MODE: 30 frames/s PROTOCOL:  Default protocol (initialized to eFRAMES) START: 0 END: 20 "
    "DURATION: 20\n";

class Animations : public SceneTest {
 protected:
  Animations() : hips_(scene_.Bone("Hips")) {}

  // A clip of frames 0 to 20 that moves a node to `x` and back.
  SceneBuilder::Clip Move(const std::string& name, int64_t node, const std::string& channel,
                          float x) {
    const SceneBuilder::Clip clip = scene_.AddClip(name, 0, 20);
    scene_.Key(clip.layer, node, channel, {0, 10, 20}, {0, x, 0});
    return clip;
  }
  SceneBuilder::Clip Walk(const std::string& name, float x) { return Move(name, hips_, "TX", x); }

  CalCoreAnimation Load(const std::string& name) {
    const std::string bytes = File(name);
    return *CalLoader::loadCoreAnimation(CalBufferSource(bytes.data(), bytes.size()));
  }

  // Exports the clip "Walk" of the hips with further options and loads it.
  CalCoreAnimation ExportWalk(Words options = {}) {
    options.insert(options.end(), {kHips, "s.fbx", "export", "anim", "Walk"});
    EXPECT_EQ(Run(options), "ANIMATION: Walk FILENAME: Walk.xaf\n");
    return Load("Walk.xaf");
  }

  static std::vector<float> Times(const CalCoreTrack& track) {
    std::vector<float> times;
    for (const CalCoreKeyframe& keyframe : track.keyframes) times.push_back(keyframe.time);
    return times;
  }

  int64_t hips_;
};

TEST_F(Animations, ListingCountsThirtiethsAndSortsByCurveText) {
  scene_.SetTimeMode(11);  // frames a second change nothing in the listing
  Walk("Second", 7);       // "...10:7" sorts behind "...10:5"
  Walk("First", 5);
  const SceneBuilder::Clip late = scene_.AddClip("Late", 10, 20.9, 40);
  scene_.Key(late.layer, hips_, "RX", {10, 12, 14}, {0, 1, 2});
  const std::string mode =
      " MODE: 24 frames/s PROTOCOL:  Default protocol (initialized to eFRAMES)";
  EXPECT_EQ(Run({"s.fbx", "list", "anim"}),
            "ANIM: Late" + mode +
                " START: 10 END: 20 DURATION: 10 REFERENCE_START: 10 REFERENCE_END: 40 "
                "REFERENCE_DURATION: 30\n"
                "ANIM: First" +
                mode +
                " START: 0 END: 20 DURATION: 20\n"
                "ANIM: Second" +
                mode + " START: 0 END: 20 DURATION: 20\n");
  EXPECT_EQ(Run({"s.fbx", "list", "morphanim"}), "");
  EXPECT_EQ(Run({"--root=RootNode/None", "s.fbx", "list", "anim"}), "");
}

TEST_F(Animations, EqualCurvesAreOneAnimationUnderItsPlainestName) {
  Walk("Female|stroll", 5);
  Walk("Male|walk", 5);
  Walk("amble", 5);
  Walk("Female|run", 6);  // no plain name: it gets the first node's
  Walk("Female|", 7);     // nothing behind the bar
  EXPECT_EQ(Run({"s.fbx", "list", "anim"}),
            "ANIM: amble" + kTo20 + "ANIM: run-Hips" + kTo20 + "ANIM: Female|-Hips" + kTo20);
}

TEST_F(Animations, NamesAreMadeUniqueWithinEachList) {
  const int64_t other = scene_.Bone("Other");
  Walk("My Walk", 6);
  Walk("My Walk", 5);
  Move("My Walk", other, "TX", 2);
  // By text: Hips 5, Hips 6, Other.
  EXPECT_EQ(Run({"s.fbx", "list", "anim"}),
            "ANIM: My Walk" + kTo20 + "ANIM: My Walk_1" + kTo20 + "ANIM: My Walk_2" + kTo20);
  EXPECT_EQ(Run({"--root=RootNode/Other", "s.fbx", "list", "anim"}), "ANIM: My Walk" + kTo20);
  EXPECT_EQ(Run({"-e", kHips, "s.fbx", "list", "anim"}),
            "ANIM: My%20Walk" + kTo20 + "ANIM: My%20Walk_1" + kTo20);
  // The path is encoded always, and so twice with -e.
  EXPECT_EQ(Run({kHips, "s.fbx", "export", "anim", "My Walk_1"}),
            "ANIMATION: My Walk_1 FILENAME: My%20Walk_1.xaf\n");
  EXPECT_EQ(Load("My%20Walk_1.xaf").tracks.at(0).keyframes.at(1).translation.x, 6);
  EXPECT_EQ(Run({"-e", kHips, "s.fbx", "export", "anim", "My%20Walk_1"}),
            "ANIMATION: My%20Walk_1 FILENAME: My%2520Walk_1.xaf\n");
}

TEST_F(Animations, WhatCountsAsAnimation) {
  Move("OnlyScale", hips_, "SX", 2);
  const SceneBuilder::Clip twoKeys = scene_.AddClip("TwoKeys", 0, 20);
  scene_.Key(twoKeys.layer, hips_, "TX", {0, 20}, {1, 2});
  EXPECT_EQ(Run({"s.fbx", "list", "anim"}), "");
  const SceneBuilder::Clip upper = scene_.AddClip("UpperLayer", 0, 20);
  scene_.Key(scene_.AddLayer(upper), hips_, "RY", {0, 10, 20}, {1, 2, 1});
  EXPECT_EQ(Run({"s.fbx", "list", "anim"}), "ANIM: UpperLayer" + kTo20);
}

TEST_F(Animations, AnimationBelowTheSceneRootAlone) {
  // A node that no skeleton holds, beside a mesh: the skeleton of the scene's root comes last, and
  // so its animation is listed under "RootNode".
  Move("Spin", scene_.Mesh("Body").node, "RZ", 90);
  EXPECT_EQ(Run({"--root=RootNode", "s.fbx", "list", "anim"}), "ANIM: Spin" + kTo20);
  EXPECT_EQ(Run({kHips, "s.fbx", "list", "anim"}), "");
  // A scene without a skeleton has no animations.
  scene_ = SceneBuilder();
  Move("Walk", scene_.Node("Node"), "TX", 1);
  EXPECT_EQ(Run({"s.fbx", "list", "anim"}), "");
}

TEST_F(Animations, KeyframesAreTheKeyedFramesOfEachBone) {
  const int64_t spine = scene_.Bone("Spine", hips_, {P("Lcl Translation", {0, 0, 10})});
  const int64_t head = scene_.Bone("Head", spine, {P("Lcl Rotation", {0, 90, 0})});
  const int64_t twoKeys = scene_.Bone("Neck", spine);
  const SceneBuilder::Clip clip = scene_.AddClip("Walk", 0, 20);
  scene_.Key(clip.layer, head, "SY", {0, 10, 20}, {1, 2, 1});
  scene_.Key(clip.layer, hips_, "TX", {0, 10, 20}, {2, 4, 2});
  scene_.Key(clip.layer, hips_, "RX", {5, 10, 15}, {0, 90, 0});
  scene_.Key(clip.layer, spine, "RZ", {10, 10.9, 11}, {0, 0, 0});
  scene_.Key(clip.layer, spine, "TX", {0, 20}, {1, 1});
  scene_.Key(clip.layer, twoKeys, "TX", {0, 20}, {0, 1});
  const CalCoreAnimation walk = ExportWalk();
  ASSERT_EQ(walk.tracks.size(), 3U);  // by path: Hips, Hips/Spine, Hips/Spine/Head
  EXPECT_FLOAT_EQ(walk.duration, 20.0F / 30);
  EXPECT_THAT(Times(walk.tracks[0]), ElementsAre(0, 5 / 30.0F, 10 / 30.0F, 0.5F, 20 / 30.0F));
  EXPECT_FLOAT_EQ(walk.tracks[0].keyframes[1].translation.x, 3);  // evaluated, not a key
  EXPECT_NEAR(walk.tracks[0].keyframes[2].rotation.x, 0.70710678, 1e-6);
  EXPECT_NEAR(walk.tracks[0].keyframes[2].rotation.w, 0.70710678, 1e-6);
  EXPECT_EQ(walk.tracks[1].coreBoneId, 1);
  EXPECT_THAT(Times(walk.tracks[1]), ElementsAre(10 / 30.0F, 11 / 30.0F));  // 10.9 truncates
  EXPECT_EQ(walk.tracks[2].coreBoneId, 2);
  EXPECT_THAT(Times(walk.tracks[2]), ElementsAre());  // scaling makes a track, but no keyframe
}

TEST_F(Animations, TranslationsTakeAxesAndScales) {
  const int64_t big = scene_.Bone("Big", hips_, {P("Lcl Scaling", {3, 1, 1})});
  const SceneBuilder::Clip clip = Walk("Walk", 5);
  const auto highest = [this](const Words& options) {
    return ExportWalk(options).tracks.at(0).keyframes.at(1).translation.x;
  };
  EXPECT_EQ(highest({}), 5);
  EXPECT_EQ(highest({"--scale=2"}), 10);
  EXPECT_EQ(highest({"--up=y", "--front=-z"}), -5);  // that pair's new x is -x
  // The rest scale of the moved node that was visited last counts.
  scene_.Key(clip.layer, big, "SX", {0, 1, 2}, {9, 9, 9});
  EXPECT_EQ(highest({}), 15);
}

TEST_F(Animations, SelectionAndFailures) {
  Walk("Walk", 5);
  const SceneBuilder::Clip both = Walk("Both", 6);
  const int64_t prop = scene_.Bone("Prop");
  scene_.Key(both.layer, prop, "TX", {0, 10, 20}, {1, 2, 3});
  EXPECT_EQ(Run({kHips, "s.fbx", "export", "anim"}), "");   // no names select nothing
  EXPECT_EQ(Run({"s.fbx", "export", "anim", "Walk"}), "");  // no root, no animation
  EXPECT_EQ(Run({"--root=RootNode/None", "s.fbx", "export", "anim", "Walk"}), "");
  EXPECT_EQ(Run({kHips, "s.fbx", "export", "anim", "None"}), "");
  EXPECT_EQ(Run({"--root=RootNode/Prop", "s.fbx", "export", "anim", "Both"}),
            "ANIMATION: Both FILENAME: Both.xaf\n");
  EXPECT_EQ(Load("Both.xaf").tracks.size(), 1U);  // the other bone belongs to another skeleton
  dir_.Write("no.directory", "");
  EXPECT_EQ(Run({kHips, "--directory=no.directory", "s.fbx", "export", "anim", "Walk", "Both"}),
            "ERROR: Failed to create file no.directory/Walk.xaf for ANIMATION Walk\n"
            "ERROR: Failed to create file no.directory/Both.xaf for ANIMATION Both\n");
  // Known to the complete list alone, whose name is no skeleton: no bones, no tracks.
  EXPECT_EQ(Run({"--root=COMPLETE_SKELETAL_ANIM_LIST", "s.fbx", "export", "anim", "Walk"}),
            "ERROR: Failed to create file Walk.xaf for ANIMATION Walk\n");
  EXPECT_FALSE(Exists("Walk.xaf"));
}

TEST_F(Animations, MorphsAreTiedToSkeletonsByTheNamesOfTargets) {
  const int64_t other = scene_.Bone("Other");
  const SceneBuilder::MeshIds face = scene_.Mesh("Face", {"smile", "blink"});
  for (const int64_t bone : {hips_, other}) scene_.Cluster(scene_.Skin(face.mesh), bone);
  // The second stack has the same curves and adds nothing, not even its name.
  for (const char* stack : {"Talk", "A"}) {
    const SceneBuilder::Clip clip = scene_.AddClip(stack, 0, 20);
    scene_.KeyMorph(clip.layer, face.channels[1], {0, 10, 20}, {0, 100, 50});
    scene_.KeyMorph(clip.layer, face.channels[0], {0.5, 10, 20}, {100.0004F, 0.0004F, -20});
  }
  const std::string line = "MORPH: Talk-smile-blink" + kTo20;
  EXPECT_EQ(Run({"s.fbx", "list", "morphanim"}), line);
  EXPECT_EQ(Run({kHips, "s.fbx", "list", "morphanim"}), line);
  EXPECT_EQ(Run({"--root=RootNode/Other", "s.fbx", "list", "morphanim"}), line);
  EXPECT_EQ(Run({"s.fbx", "list", "anim"}), "");

  EXPECT_EQ(Run({kHips, "s.fbx", "export", "morphanim", "Talk-smile-blink"}),
            "MORPHANIMS: Talk-smile-blink FILENAME: Talk-smile-blink.xpf\n");
  const std::string file = File("Talk-smile-blink.xpf");
  EXPECT_THAT(file, HasSubstr("DURATION=\"0.6666667\" NUMTRACKS=\"2\""));
  EXPECT_LT(file.find("MORPHNAME=\"smile\""), file.find("MORPHNAME=\"blink\""));
  // Times aren't truncated to frames, weights are rounded to thousandths of a percent.
  EXPECT_THAT(file, HasSubstr("TIME=\"0.016666668\">\n      <WEIGHT>1<"));
  EXPECT_THAT(file, HasSubstr("TIME=\"0.33333334\">\n      <WEIGHT>0<"));
  EXPECT_THAT(file, HasSubstr("<WEIGHT>-0.19999<"));
}

TEST_F(Animations, MorphsOfAStackThatMovesNothing) {
  const SceneBuilder::MeshIds face = scene_.Mesh("Face", {"smile"});
  const SceneBuilder::MeshIds hat = scene_.Mesh("Hat", {"tip"}, face.node);
  const SceneBuilder::MeshIds stand = scene_.Mesh("Stand");
  const SceneBuilder::MeshIds doll = scene_.Mesh("Doll", {"wink"}, stand.node);
  const SceneBuilder::Clip clip = scene_.AddClip("Talk", 0, 20);
  for (const SceneBuilder::MeshIds& mesh : {face, hat, doll}) {
    scene_.KeyMorph(clip.layer, mesh.channels[0], {0, 10, 20}, {0, 50, 0});
  }
  // The scene as a whole, and every mesh with what is below it, if one of its own targets is among
  // that: the stand has none.
  EXPECT_EQ(Run({"s.fbx", "list", "morphanim"}),
            "MORPH: Talk-smile-tip" + kTo20 + "MORPH: Talk-smile-tip-wink" + kTo20 +
                "MORPH: Talk-tip" + kTo20 + "MORPH: Talk-wink" + kTo20);
}

TEST_F(Animations, MorphsOfAStackThatAlsoMoves) {
  const SceneBuilder::MeshIds face = scene_.Mesh("Face", {"smile"}, hips_);
  const SceneBuilder::MeshIds stray = scene_.Mesh("Stray", {"wink"});
  const SceneBuilder::Clip clip = Walk("Walk", 5);
  scene_.KeyMorph(clip.layer, face.channels[0], {0, 10, 20}, {0, 100, 0});
  scene_.KeyMorph(clip.layer, stray.channels[0], {0, 10, 20}, {0, 50, 0});
  // One search of the whole scene, none of single meshes: the stack moves the last skeleton.
  EXPECT_EQ(Run({"s.fbx", "list", "morphanim"}), "MORPH: Walk-smile-wink" + kTo20);
  const std::string list = Run({"s.fbx", "list"});
  EXPECT_THAT(list, HasSubstr("ANIM: Walk" + kTo20 + "MORPH: Walk-smile-wink" + kTo20));
}

TEST_F(Animations, VerboseForms) {
  const SceneBuilder::MeshIds face = scene_.Mesh("Face", {"smile"}, hips_);
  const SceneBuilder::Clip clip = Walk("Walk", 5);
  scene_.KeyMorph(clip.layer, face.channels[0], {0, 10, 20}, {0, 100, 0});
  const std::string skeletal = "ROOT:RootNode  NODES: RootNode/Hips ANIM STACK:Walk ";
  const std::string morph =
      "MORPH: smile MESH:RootNode  NODES: RootNode/Hips/Face ANIM STACK:Walk ";
  const std::string text = "Hips TX 3\n0:0 10:5 20:0 \nFace smile 3\n0:0 10:100 20:0 \n";
  const std::string one = Run({"-v", "s.fbx", "list"});
  EXPECT_THAT(one, HasSubstr("ANIM: Walk" + kTo20 + "\t: " + skeletal + "\n"));
  EXPECT_THAT(one, HasSubstr("MORPH: Walk-smile" + kTo20 + "MORPH: Walk-smile: " + morph + "\n"));
  EXPECT_THAT(one, Not(HasSubstr("DATA")));
  const std::string two = Run({"-vv", "s.fbx", "list", "anim"});
  EXPECT_THAT(two, HasSubstr("\n" + skeletal + "\n"));
  EXPECT_THAT(two, HasSubstr("\nCOMPLETE_MORPH_ANIM_LIST\n " + morph + "\n"));
  EXPECT_THAT(two, Not(HasSubstr("DATA")));
  const std::string three = Run({"-vvv", "s.fbx", "list", "anim"});
  EXPECT_THAT(three, HasSubstr("\nAnimation Stacks: 1\n"));
  EXPECT_THAT(three,
              HasSubstr("found morph animation in stack Walk on node Face; target: smile\n"));
  EXPECT_THAT(three, HasSubstr("DATA:smile 3\n0:0 10:100 20:0 \n"));
  EXPECT_THAT(three, HasSubstr("DATA: " + text + "\n"));
  EXPECT_THAT(Run({"-vv", kHips, "s.fbx", "export", "anim", "Walk"}),
              HasSubstr("\nHips 0 0\nFace 1 1\nANIMATION: Walk FILENAME"));
}

TEST_F(Animations, HostileKeys) {
  constexpr int64_t kMax = std::numeric_limits<int64_t>::max();
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  const SceneBuilder::Clip clip = scene_.AddClip("Walk", -1e9, 5e9);
  scene_.KeyTicks(clip.layer, hips_, "TX", {-kMax, 0, kMax}, {kNaN, 3e38F, -3e38F});
  scene_.KeyTicks(clip.layer, hips_, "TY", {SceneBuilder::Ticks(7), 0, 0}, {1, 2});
  const std::string list = Run({"-vvv", "s.fbx", "list", "anim"});
  EXPECT_THAT(list, HasSubstr("DATA: Hips TX 3\n-5990997586:nan 0:"));
  ExportWalk();
}

TEST_F(Animations, DeepSkeleton) {
  int64_t bone = hips_;
  for (int i = 0; i < 3000; ++i) bone = scene_.Bone("b", bone);
  const SceneBuilder::Clip clip = Walk("Walk", 5);
  scene_.Key(clip.layer, bone, "TX", {0, 10, 20}, {0, 1, 0});
  EXPECT_EQ(Run({"s.fbx", "list", "anim"}), "ANIM: Walk" + kTo20);
  EXPECT_EQ(ExportWalk().tracks.size(), 2U);
}

}  // namespace
