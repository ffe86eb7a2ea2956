#include "converter/animation/curve_visitors.h"

#include <random>

#include <gmock/gmock.h>

#include "converter/animation/advanced_channels.h"
#include "fbx/anim/fbx_anim_curve.h"
#include "fbx/scene/fbx_node.h"
#include "tests/converter/animation/clip_file.h"

namespace {

using testing::ElementsAre;

class CurveVisitors : public ClipFile {
 protected:
  static std::string TextBelow(FbxWrapper& wrapper, const std::string& path, size_t stack = 0) {
    AnimationCurveVisitorString visitor;
    DisplayAnimation(wrapper.Channels(), Stack(wrapper, stack), wrapper.GetNodeByPath(path),
                     visitor);
    return visitor.text;
  }
};

TEST_F(CurveVisitors, TextOfCurves) {
  const int64_t hips = scene_.Bone("Hips");
  const int64_t spine = scene_.Bone("Spine", hips);
  const ClipScene::Morphed face = scene_.Mesh("Face", {"smile", "TX"}, hips);
  const ClipScene::Clip clip = scene_.AddClip("Walk", 0, 20);
  const int64_t upper = scene_.AddLayer(clip);
  scene_.Key(upper, hips, "TX", {1, 2, 3}, {1, 1, 1});
  scene_.Key(clip.layer, spine, "SZ", {0, 1, 2}, {1, 1, 1});
  scene_.KeyMorph(clip.layer, face.channels[1], {0, 1, 2}, {5, 5, 5});
  scene_.KeyMorph(clip.layer, face.channels[0], {0, 1, 2}, {0, 50, 100});
  scene_.Key(clip.layer, face.node, "RX", {0, 1, 2}, {1, 1, 1});
  scene_.Key(clip.layer, hips, "RZ", {0, 1}, {1, 2});  // two keys are none
  // Frames and values truncate toward zero; values have three decimals, six digits.
  scene_.Key(clip.layer, hips, "TY", {-2.5, -0.5, 1000000}, {1234567.0F, 1.0006F, -1.0004F});
  scene_.Key(clip.layer, hips, "TZ", {0, 1, 2}, {-0.0004F, 0.1F, 1e-9F});
  FbxWrapper& wrapper = Load();
  EXPECT_EQ(TextBelow(wrapper, "RootNode"),
            "Hips TY 3\n-2:1.23457e+06 0:1.001 1000000:-0.999 \n"
            "Hips TZ 3\n0:0 1:0.1 2:0 \n"
            "Spine SZ 3\n0:1 1:1 2:1 \n"
            "Face RX 3\n0:1 1:1 2:1 \n"
            "Face smile 3\n0:0 1:50 2:100 \n"
            "Face TX 3\n0:5 1:5 2:5 \n"
            "Hips TX 3\n1:1 2:1 3:1 \n");
  EXPECT_EQ(TextBelow(wrapper, "RootNode/Hips/Spine"), "Spine SZ 3\n0:1 1:1 2:1 \n");
  EXPECT_EQ(CurveText(ChannelsBelow(wrapper.Channels(), Stack(wrapper),
                                    wrapper.GetNodeByPath("RootNode/Hips/Spine")),
                      false),
            "SZ 3\n0:1 1:1 2:1 \n");
}

// A property may have curve nodes in many layers, and by mistake two in one.
TEST_F(CurveVisitors, ChannelsAreThoseThatPropertiesKnow) {
  const int64_t hips = scene_.Bone("Hips");
  SceneBuilder& b = scene_.builder;
  const ClipScene::Clip first = scene_.AddClip("First", 0, 20);
  const ClipScene::Clip second = scene_.AddClip("Second", 0, 20);
  std::vector<int64_t> curveNodes;
  for (int i = 0; i < 3; ++i) {
    curveNodes.push_back(b.AddAnimationCurveNode("T", {P("d|X", "Number", "", "A", {0.0})}));
    const auto value = static_cast<float>(i);
    b.ConnectProperty(b.AddAnimationCurve({0, 1, 2}, {value, value, value}), curveNodes.back(),
                      "d|X");
  }
  // The layer meets them in one order, the property in the other, which counts.
  b.Connect(curveNodes[0], first.layer);
  b.Connect(curveNodes[1], first.layer);
  b.Connect(curveNodes[2], second.layer);
  for (const int i : {2, 1, 0})
    b.ConnectProperty(curveNodes[static_cast<size_t>(i)], hips, "Lcl Translation");
  FbxWrapper& wrapper = Load();
  const FbxNode* node = wrapper.GetNodeByPath("RootNode/Hips");
  for (size_t i = 0; i < 2; ++i) {
    const FbxAnimLayer* layer = Stack(wrapper, i)->GetLayer(0);
    const auto channels = wrapper.Channels().Of(layer).Of(node);
    ASSERT_EQ(channels.size(), 1U);
    ASSERT_EQ(channels[0].transform.size(), 1U);
    EXPECT_EQ(channels[0].transform[0].curve, node->LclTranslation().GetCurve(layer, "X"));
    EXPECT_EQ(channels[0].transform[0].curve->KeyGetValue(0), i == 0 ? 1.0F : 2.0F);
  }
}

TEST_F(CurveVisitors, MovedAndMorphedNodes) {
  const int64_t hips = scene_.Bone("Hips");
  const int64_t spine = scene_.Bone("Spine", hips);
  const int64_t head = scene_.Bone("Head", spine);
  const ClipScene::Morphed face = scene_.Mesh("Face", {"smile", "blink", "wink"}, spine);
  // The same geometry on another node.
  const int64_t twin = scene_.builder.AddModel("Twin", "Mesh");
  scene_.builder.Connect(twin, SceneBuilder::kRoot);
  scene_.builder.Connect(face.mesh, twin);
  const ClipScene::Clip clip = scene_.AddClip("Walk", 0, 20);
  scene_.Key(clip.layer, head, "RX", {0, 1, 2}, {1, 1, 1});
  scene_.Key(clip.layer, hips, "TX", {0, 1, 2}, {1, 1, 1});
  scene_.Key(clip.layer, spine, "SX", {0, 1, 2}, {1, 1, 1});
  scene_.KeyMorph(clip.layer, face.channels[2], {0, 1, 2}, {5, 5, 5});
  scene_.KeyMorph(clip.layer, face.channels[0], {0, 1, 2}, {5, 5, 5});
  scene_.KeyMorph(clip.layer, face.channels[1], {0, 1}, {5, 6});
  FbxWrapper& wrapper = Load();
  const LayerChannels& layer = wrapper.Channels().Of(Stack(wrapper)->GetLayer(0));
  const auto names = [](NodeSpan nodes) {
    std::vector<std::string> result;
    for (const FbxNode* node : nodes) result.push_back(node->Name());
    return result;
  };
  EXPECT_THAT(names(layer.MovedBelow(wrapper.GetRootNode())), ElementsAre("Hips", "Head"));
  EXPECT_THAT(names(layer.MovedBelow(wrapper.GetNodeByPath("RootNode/Hips/Spine"))),
              ElementsAre("Head"));
  EXPECT_THAT(names(layer.MorphedBelow(wrapper.GetRootNode())), ElementsAre("Face", "Twin"));
  EXPECT_THAT(HasBlendShapeMorph(layer.Of(wrapper.GetNodeByPath("RootNode/Twin")).front()),
              ElementsAre("smile", "wink"));
}

class EverythingVisitor : public AnimationCurveVisitorString {
  bool UseAdvancedCurves() override { return true; }
};

TEST_F(CurveVisitors, LightsAndUserProperties) {
  SceneBuilder& b = scene_.builder;
  const int64_t lamp =
      b.AddModel("Lamp", "Light",
                 {P("speed", "Vector3D", "Vector", "A+U", {0.0, 0.0, 0.0}),
                  P("mood", "Number", "", "A+U", {0.0}), P("fixed", "Number", "", "U", {0.0})});
  const int64_t light = b.AddNodeAttribute("Lamp", "Light", {P("Color", {1.0, 1.0, 1.0})});
  b.Connect(light, lamp);
  b.Connect(lamp, SceneBuilder::kRoot);
  scene_.Bone("Still");
  const ClipScene::Clip clip = scene_.AddClip("Glow", 0, 20);
  const auto drive = [&](int64_t object, const char* property, const char* channel) {
    const std::string name = std::string("d|") + channel;
    const int64_t curves = b.AddAnimationCurveNode(property, {P(name, "Number", "", "A", {0.0})});
    b.Connect(curves, clip.layer);
    b.ConnectProperty(curves, object, property);
    b.ConnectProperty(b.AddAnimationCurve({0, 1, 2}, {7.9F, -7.9F, 0}), curves, name);
  };
  drive(lamp, "speed", "Y");
  drive(lamp, "mood", "mood");
  drive(lamp, "fixed", "fixed");
  drive(light, "Color", "Z");
  drive(light, "Intensity", "Intensity");
  FbxWrapper& wrapper = Load();
  const LayerChannels& layer = wrapper.Channels().Of(Stack(wrapper)->GetLayer(0));
  EverythingVisitor visitor;
  DisplayAnimation(layer, wrapper.GetRootNode(), visitor);
  EXPECT_EQ(visitor.text,
            "Lamp Blue 3\n0:7.9 0:-7.899 0:0 \nLamp Intensity 3\n0:7.9 0:-7.899 0:0 \n"
            "Property:speed:Y 3\n0:7 0:-7 0:0 \nProperty:mood 3\n0:7 0:-7 0:0 \n");
  EXPECT_STREQ(DisplayAnimationNodes(layer, wrapper.GetRootNode(), true), "[Lamp] ");
  EXPECT_STREQ(DisplayAnimationNodes(layer, wrapper.GetRootNode(), false), "[RootNode] [Still] ");
  EXPECT_EQ(TextBelow(wrapper, "RootNode"), "");  // not for export
}

// Comparing texts without writing them must give what comparing them written gives.
TEST_F(CurveVisitors, OrderOfTexts) {
  const std::vector<std::string> names = {"a", "b", "a TX 3\n0:0", "a TX 3\n0:0 1:0 2:0 \na"};
  std::mt19937 random(7);
  const auto pick = [&random](int count) {
    return static_cast<int>(random() % static_cast<unsigned>(count));
  };
  constexpr int kStacks = 24;
  std::vector<int64_t> bones;
  for (const std::string& name : names) bones.push_back(scene_.Bone(name));
  for (int i = 0; i < kStacks; ++i) {
    const ClipScene::Clip clip = scene_.AddClip("clip", 0, 20);
    for (const int64_t bone : bones) {
      if (pick(2) == 0) continue;
      const float value = std::vector<float>{0.0F, 0.0002F, -0.0002F, 10.0F, 1e7F, 10000001.0F}.at(
          static_cast<size_t>(pick(6)));
      scene_.Key(clip.layer, bone, pick(3) == 0 ? "TY" : "TX", {0, 1.0 + 0.5 * pick(2), 2},
                 {0, 0, value});
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

}  // namespace
