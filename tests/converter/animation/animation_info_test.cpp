#include "converter/animation/animation_info.h"

#include <gmock/gmock.h>

#include "converter/animation/export_animation.h"
#include "fbx/scene/fbx_node.h"
#include "tests/converter/animation/clip_file.h"

namespace {

using testing::ElementsAre;
using testing::SizeIs;

TEST(AnimationInfo, NamesSortPlainThenShortThenByBytes) {
  const std::set<std::string, animNameSorter> names = {"b|a", "walk", "run", "a|b",
                                                       "abc", "",     "|",   "longer name"};
  EXPECT_THAT(names, ElementsAre("", "abc", "run", "walk", "longer name", "|", "a|b", "b|a"));
}

TEST(AnimationInfo, TimeTexts) {
  const std::vector<std::string> modes = {"DEFAULT",
                                          "120 frames/s",
                                          "100 frames/s",
                                          "60 frames/s",
                                          "50 frames/s",
                                          "48 frame/s",
                                          "30 frames/s",
                                          "30 frames/s",
                                          "~29.97",
                                          "~29.97",
                                          "25 frames/s",
                                          "24 frames/s",
                                          "1000 milli/s",
                                          "~23.976 frames/s",
                                          " Custom",
                                          "96 frames/s",
                                          "72 frames/s",
                                          "~59.94 frames/s",
                                          "    Number of time modes",
                                          "UNKNOWN"};
  for (size_t i = 0; i < modes.size(); ++i) {
    EXPECT_EQ(GlobalTimeModeHumanReadable(static_cast<int>(i)), modes[i]);
  }
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

}  // namespace
