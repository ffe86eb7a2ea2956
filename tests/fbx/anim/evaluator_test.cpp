#include <gtest/gtest.h>

#include "fbx/anim/fbx_animation.h"
#include "tests/fbx/anim/curves.h"
#include "tests/fbx/near.h"
#include "tests/support/loaded_scene.h"

namespace {

FbxAMatrix T(double x, double y, double z) { return {{x, y, z}, {0, 0, 0}, {1, 1, 1}}; }
FbxAMatrix R(double x, double y, double z) { return {{0, 0, 0}, {x, y, z}, {1, 1, 1}}; }
FbxAMatrix S(double x, double y, double z) { return {{0, 0, 0}, {0, 0, 0}, {x, y, z}}; }

FbxRecord Translation(double x, double y, double z) { return P("Lcl Translation", {x, y, z}); }
FbxRecord Rotation(double x, double y, double z) { return P("Lcl Rotation", {x, y, z}); }
FbxRecord Scaling(double x, double y, double z) { return P("Lcl Scaling", {x, y, z}); }

TEST(NodeTransform, ComposesTheWholeChain) {
  SceneBuilder scene;
  scene.Node(
      "n", SceneBuilder::kRoot,
      {Translation(1, 2, 3), Rotation(10, 20, 30), Scaling(2, 3, 4), P("RotationOffset", {5, 6, 7}),
       P("RotationPivot", {1, -2, 3}), P("ScalingOffset", {-4, 5, 6}),
       P("ScalingPivot", {7, 8, -9}), P("PreRotation", {15, 25, 35}),
       P("PostRotation", {-5, 45, 65}), P("RotationOrder", {eEulerZXY}), P("RotationActive", {1})});
  const LoadedScene file(scene);
  FbxAMatrix r;
  FbxRotationOrder(eEulerZXY).V2M(r, {10, 20, 30});
  const FbxAMatrix chain = T(1, 2, 3) * T(5, 6, 7) * T(1, -2, 3) * R(15, 25, 35) * r *
                           R(-5, 45, 65).Inverse() * T(-1, 2, -3) * T(-4, 5, 6) * T(7, 8, -9) *
                           S(2, 3, 4) * T(-7, -8, 9);
  ExpectNear(file.Node("n").EvaluateGlobalTransform(), chain);
  ExpectNear(file.Node("n").EvaluateLocalTransform(), chain);
  ExpectNear(file.Node("n").EvaluateLocalTranslation(), {1, 2, 3});
}

TEST(NodeTransform, RotationSpaceCountsOnlyWhileActive) {
  SceneBuilder scene;
  scene.Node("plain", SceneBuilder::kRoot,
             {Rotation(10, 20, 30), P("PreRotation", {90, 0, 0}), P("PostRotation", {0, 90, 0}),
              P("RotationOrder", {eEulerZYX})});
  scene.Node("pivot", SceneBuilder::kRoot, {Rotation(90, 0, 0), P("RotationPivot", {0, 1, 0})});
  const LoadedScene file(scene);
  ExpectNear(file.Node("plain").EvaluateGlobalTransform(), R(10, 20, 30));
  ExpectNear(file.Node("pivot").EvaluateGlobalTransform().GetT(), {0, 1, -1});
}

TEST(NodeTransform, InheritTypesPassScalingOn) {
  SceneBuilder scene;
  const int64_t above = scene.Node("parent", SceneBuilder::kRoot,
                                   {Translation(1, 0, 0), Rotation(0, 0, 90), Scaling(2, 3, 4)});
  for (const int type : {0, 1, 2}) {
    scene.Node(
        "child", above,
        {Translation(1, 0, 0), Rotation(30, 40, 50), Scaling(1, 5, 1), P("InheritType", {type})});
  }
  const LoadedScene file(scene);
  FbxNode& parent = file.Node("parent");
  const auto child = [&](int type) { return parent.GetChild(type); };
  const FbxAMatrix place = T(1, 2, 0) * R(0, 0, 90);
  ExpectNear(child(0)->EvaluateGlobalTransform(), place * R(30, 40, 50) * S(2, 3, 4) * S(1, 5, 1));
  ExpectNear(child(1)->EvaluateGlobalTransform(), place * S(2, 3, 4) * R(30, 40, 50) * S(1, 5, 1));
  ExpectNear(child(2)->EvaluateGlobalTransform(), place * R(30, 40, 50) * S(1, 5, 1));
  // The local matrix comes from the global ones, and so shows the shear of type 0.
  ExpectNear(parent.EvaluateGlobalTransform() * child(0)->EvaluateLocalTransform(),
             child(0)->EvaluateGlobalTransform());
  // A parent scaled to nothing still places a child that doesn't inherit scaling.
  parent.LclScaling().Set(FbxDouble3{0, 0, 0});
  ExpectNear(
      child(2)->EvaluateGlobalTransform(FbxTime::Infinite(), FbxNode::eSourcePivot, false, true),
      T(1, 0, 0) * R(0, 0, 90) * R(30, 40, 50) * S(1, 5, 1));
  // Its children's local transforms, which the global ones don't tell any more, are their own.
  for (const int type : {0, 1, 2}) {
    ExpectNear(child(type)->EvaluateLocalTransform(), T(1, 0, 0) * R(30, 40, 50) * S(1, 5, 1));
  }
}

TEST(NodeTransform, LimitsClampEachAxisWhereSet) {
  SceneBuilder scene;
  scene.Node("moved", SceneBuilder::kRoot,
             {Translation(9, 9, -9), P("TranslationActive", {1}), P("TranslationMax", {5, 5, 5}),
              P("TranslationMin", {-1, -1, -1}), P("TranslationMaxX", {1}),
              P("TranslationMinZ", {1}), Scaling(9, 9, 9), P("ScalingMaxX", {1})});
  // 30 about X is 120 in the limits' space, whose pre rotation is -90.
  scene.Node(
      "turned", SceneBuilder::kRoot,
      {Rotation(30, 0, 0), P("RotationActive", {1}), P("RotationSpaceForLimitOnly", {1}),
       P("PreRotation", {-90, 0, 0}), P("RotationMax", {100, 0, 0}), P("RotationMaxX", {1})});
  const LoadedScene file(scene);
  EXPECT_EQ(file.Node("moved").EvaluateLocalTranslation(), FbxVector4(5, 9, -1));
  EXPECT_EQ(file.Node("moved").EvaluateLocalScaling(), FbxVector4(9, 9, 9)) << "not active";
  ExpectNear(file.Node("turned").EvaluateLocalRotation(), {10, 0, 0});
}

TEST(Evaluator, CurvesReplaceTheValuesOfTheCurrentStack) {
  SceneBuilder scene;
  const int64_t n = scene.Node("n", SceneBuilder::kRoot, {Translation(7, 8, 9)});
  const int64_t layerId = scene.AddClip("first", 0, 60).layer;
  const int64_t curvesId = scene.Drive(layerId, n, "Lcl Translation", {"X"}, {0, 30}, {0, 10});
  scene.Object(curvesId).children.back().Add(P("d|Z", "Number", "", "A", {5.0}));
  // Of two curve nodes the property's first counts.
  scene.Drive(layerId, n, "Lcl Translation", {"X"}, {0, 30}, {3, 3});
  scene.Key(layerId, n, "RZ", {0, 30}, {0, 90});
  scene.Drive(scene.AddClip("other", 0, 60).layer, n, "Lcl Translation", {"Y"}, {0, 30}, {-1, -1});
  const LoadedScene file(scene);
  const FbxNode& node = file.Node("n");
  FbxAnimLayer* layer = file.AnimLayer();
  // Y is in no channel and keeps the property's value; Z has no curve and shows the channel's.
  EXPECT_EQ(node.EvaluateLocalTranslation(Seconds(0.5)), FbxVector4(5, 8, 5));
  ExpectNear(node.EvaluateGlobalTransform(Seconds(1)), T(10, 8, 5) * R(0, 0, 90));
  EXPECT_EQ(node.EvaluateLocalTranslation(), FbxVector4(7, 8, 9)) << "without animation";
  EXPECT_EQ(node.LclTranslation().GetCurve(layer, "Y"), nullptr);
  EXPECT_EQ(node.LclScaling().GetCurveNode(layer), nullptr);
  const FbxAnimCurveNode* curves = node.LclTranslation().GetCurveNode(layer);
  EXPECT_EQ(curves->GetChannelIndex("Z"), 1);
  EXPECT_EQ(curves->GetCurveCount(1), 0);

  file.scene->SetCurrentAnimationStack(file.Find<FbxAnimStack>("other"));
  EXPECT_EQ(node.EvaluateLocalTranslation(Seconds(1)), FbxVector4(7, -1, 9));
  file.scene->SetCurrentAnimationStack(nullptr);
  EXPECT_EQ(node.EvaluateLocalTranslation(Seconds(1)), FbxVector4(7, 8, 9));
}

TEST(Evaluator, LayersBlendInOrder) {
  struct Case {
    int mode;
    FbxVector4 translation;
    FbxVector4 scaling;
  };
  const Case cases[] = {{FbxAnimLayer::eBlendAdditive, {11, 2, 3}, {6, 1, 1}},
                        {FbxAnimLayer::eBlendOverride, {1, 0, 0}, {1, .5, .5}},
                        {FbxAnimLayer::eBlendOverridePassthrough, {6, 1, 1.5}, {3, 1, 1}}};
  for (const Case& c : cases) {
    SceneBuilder scene;
    const int64_t n = scene.Node("n", SceneBuilder::kRoot, {Translation(0, 2, 3)});
    const SceneBuilder::Clip clip = scene.AddClip("clip", 0, 60);
    const int64_t second = scene.AddLayer(clip, {P("BlendMode", {c.mode}), P("Weight", {50.0})});
    scene.Drive(clip.layer, n, "Lcl Translation", {"X"}, {0, 30}, {10, 10});
    scene.Drive(clip.layer, n, "Lcl Scaling", {"X"}, {0, 30}, {4, 4});
    scene.Key(second, n, "TX", {0, 30}, {2, 2});  // Y and Z are 0
    scene.Drive(second, n, "Lcl Scaling", {"X"}, {0, 30}, {2, 2});
    const LoadedScene file(scene);
    const FbxNode& node = file.Node("n");
    file.AnimLayer(0)->FindProperty("Weight").Set(10.0);  // of no effect
    EXPECT_EQ(node.EvaluateLocalTranslation(Seconds(0)), c.translation) << "mode " << c.mode;
    EXPECT_EQ(node.EvaluateLocalScaling(Seconds(0)), c.scaling) << "mode " << c.mode;
    file.AnimLayer(1)->FindProperty("Mute").Set(true);
    EXPECT_EQ(node.EvaluateLocalTranslation(Seconds(1)), FbxVector4(10, 2, 3));
    file.AnimLayer(1)->FindProperty("Mute").Set(false);
    file.AnimLayer(0)->FindProperty("Mute").Set(true);
    EXPECT_NE(node.EvaluateLocalTranslation(Seconds(0)), FbxVector4(0, 2, 3));
  }
}

TEST(Evaluator, AnimatedWeightCounts) {
  SceneBuilder scene;
  const int64_t second = scene.AddLayer(scene.AddClip("clip", 0, 60));
  scene.Drive(second, second, "Weight", {"Weight"}, {0, 30}, {0, 100});
  scene.Key(second, scene.Node("n"), "TX", {0, 30}, {8, 8});
  const LoadedScene file(scene);
  ExpectNear(file.Node("n").EvaluateLocalTranslation(Seconds(0.25)), {2, 0, 0});
}

}  // namespace
