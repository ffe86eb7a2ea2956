#include <gtest/gtest.h>

#include "fbx/anim/fbx_anim_evaluator.h"
#include "tests/fbx/anim/anim_scene.h"
#include "tests/fbx/near.h"

namespace {

FbxAMatrix T(double x, double y, double z) { return {{x, y, z}, {0, 0, 0}, {1, 1, 1}}; }
FbxAMatrix R(double x, double y, double z) { return {{0, 0, 0}, {x, y, z}, {1, 1, 1}}; }
FbxAMatrix S(double x, double y, double z) { return {{0, 0, 0}, {0, 0, 0}, {x, y, z}}; }

TEST(NodeTransform, ComposesTheWholeChain) {
  AnimScene a;
  const FbxNode* node = a.Node("n", nullptr,
                               {{"Lcl Translation", {1, 2, 3}},
                                {"Lcl Rotation", {10, 20, 30}},
                                {"Lcl Scaling", {2, 3, 4}},
                                {"RotationOffset", {5, 6, 7}},
                                {"RotationPivot", {1, -2, 3}},
                                {"ScalingOffset", {-4, 5, 6}},
                                {"ScalingPivot", {7, 8, -9}},
                                {"PreRotation", {15, 25, 35}},
                                {"PostRotation", {-5, 45, 65}},
                                {"RotationOrder", {}, eEulerZXY},
                                {"RotationActive", {}, 1}});
  FbxAMatrix r;
  FbxRotationOrder(eEulerZXY).V2M(r, {10, 20, 30});
  const FbxAMatrix chain = T(1, 2, 3) * T(5, 6, 7) * T(1, -2, 3) * R(15, 25, 35) * r *
                           R(-5, 45, 65).Inverse() * T(-1, 2, -3) * T(-4, 5, 6) * T(7, 8, -9) *
                           S(2, 3, 4) * T(-7, -8, 9);
  ExpectNear(node->EvaluateGlobalTransform(), chain);
  ExpectNear(node->EvaluateLocalTransform(), chain);
  ExpectNear(node->EvaluateLocalTranslation(), {1, 2, 3});
}

TEST(NodeTransform, RotationSpaceCountsOnlyWhileActive) {
  AnimScene a;
  const FbxNode* plain = a.Node("n", nullptr,
                                {{"Lcl Rotation", {10, 20, 30}},
                                 {"PreRotation", {90, 0, 0}},
                                 {"PostRotation", {0, 90, 0}},
                                 {"RotationOrder", {}, eEulerZYX}});
  ExpectNear(plain->EvaluateGlobalTransform(), R(10, 20, 30));
  const FbxNode* pivot =
      a.Node("p", nullptr, {{"Lcl Rotation", {90, 0, 0}}, {"RotationPivot", {0, 1, 0}}});
  ExpectNear(pivot->EvaluateGlobalTransform().GetT(), {0, 1, -1});
}

TEST(NodeTransform, InheritTypesPassScalingOn) {
  AnimScene a;
  const FbxNode* children[3];
  FbxNode* parent = a.Node(
      "parent", nullptr,
      {{"Lcl Translation", {1, 0, 0}}, {"Lcl Rotation", {0, 0, 90}}, {"Lcl Scaling", {2, 3, 4}}});
  for (int type = 0; type < 3; ++type) {
    children[type] = a.Node("child", parent,
                            {{"Lcl Translation", {1, 0, 0}},
                             {"Lcl Rotation", {30, 40, 50}},
                             {"Lcl Scaling", {1, 5, 1}},
                             {"InheritType", {}, type}});
  }
  const FbxAMatrix place = T(1, 2, 0) * R(0, 0, 90);
  ExpectNear(children[0]->EvaluateGlobalTransform(),
             place * R(30, 40, 50) * S(2, 3, 4) * S(1, 5, 1));
  ExpectNear(children[1]->EvaluateGlobalTransform(),
             place * S(2, 3, 4) * R(30, 40, 50) * S(1, 5, 1));
  ExpectNear(children[2]->EvaluateGlobalTransform(), place * R(30, 40, 50) * S(1, 5, 1));
  // The local matrix comes from the global ones, and so shows the shear of type 0.
  ExpectNear(parent->EvaluateGlobalTransform() * children[0]->EvaluateLocalTransform(),
             children[0]->EvaluateGlobalTransform());
  // A parent scaled to nothing still places a child that doesn't inherit scaling.
  parent->LclScaling().Set(FbxDouble3{0, 0, 0});
  ExpectNear(
      children[2]->EvaluateGlobalTransform(FbxTime::Infinite(), FbxNode::eSourcePivot, false, true),
      T(1, 0, 0) * R(0, 0, 90) * R(30, 40, 50) * S(1, 5, 1));
  // Its children's local transforms, which the global ones don't tell any more, are their own.
  for (const FbxNode* child : children) {
    ExpectNear(child->EvaluateLocalTransform(), T(1, 0, 0) * R(30, 40, 50) * S(1, 5, 1));
  }
}

TEST(NodeTransform, LimitsClampEachAxisWhereSet) {
  AnimScene a;
  const FbxNode* node = a.Node("n", nullptr,
                               {{"Lcl Translation", {9, 9, -9}},
                                {"TranslationActive", {}, 1},
                                {"TranslationMax", {5, 5, 5}},
                                {"TranslationMin", {-1, -1, -1}},
                                {"TranslationMaxX", {}, 1},
                                {"TranslationMinZ", {}, 1},
                                {"Lcl Scaling", {9, 9, 9}},
                                {"ScalingMaxX", {}, 1}});
  EXPECT_EQ(node->EvaluateLocalTranslation(), FbxVector4(5, 9, -1));
  EXPECT_EQ(node->EvaluateLocalScaling(), FbxVector4(9, 9, 9)) << "not active";
  // 30 about X is 120 in the limits' space, whose pre rotation is -90.
  const FbxNode* limited = a.Node("m", nullptr,
                                  {{"Lcl Rotation", {30, 0, 0}},
                                   {"RotationActive", {}, 1},
                                   {"RotationSpaceForLimitOnly", {}, 1},
                                   {"PreRotation", {-90, 0, 0}},
                                   {"RotationMax", {100, 0, 0}},
                                   {"RotationMaxX", {}, 1}});
  ExpectNear(limited->EvaluateLocalRotation(), {10, 0, 0});
}

TEST(Evaluator, CurvesReplaceTheValuesOfTheCurrentStack) {
  AnimScene a;
  FbxNode* node = a.Node("n", nullptr, {{"Lcl Translation", {7, 8, 9}}});
  FbxAnimLayer* layer = a.Stack();
  // Of two curve nodes the property's first counts, not the layer's.
  auto* second = a.Add<FbxAnimCurveNode>();
  a.Connect(second, "X", a.Linear({3, 3}));
  layer->ConnectSrcObject(second);
  FbxAnimCurveNode* curves = a.Drive(layer, node->LclTranslation(), "X", {0, 10});
  node->LclTranslation().ConnectSrcObject(second);
  curves->CreateChannel("Z", GetDataTypeFromName("Number")).Set(5.0);
  a.Drive(layer, node->LclRotation(), "Z", {0, 90});
  // Y is in no channel and keeps the property's value; Z has no curve and shows the channel's.
  EXPECT_EQ(node->EvaluateLocalTranslation(Seconds(0.5)), FbxVector4(5, 8, 5));
  ExpectNear(node->EvaluateGlobalTransform(Seconds(1)), T(10, 8, 5) * R(0, 0, 90));
  EXPECT_EQ(node->EvaluateLocalTranslation(), FbxVector4(7, 8, 9)) << "without animation";
  EXPECT_EQ(node->LclTranslation().GetCurve(layer, "Y"), nullptr);
  EXPECT_EQ(node->LclScaling().GetCurveNode(layer), nullptr);
  EXPECT_EQ(curves->GetChannelIndex("Z"), 1);
  EXPECT_EQ(curves->GetCurveCount(1), 0);

  auto* other = a.Add<FbxAnimStack>("other");
  a.Drive(a.Layer(other), node->LclTranslation(), "Y", {-1, -1});
  a.scene->SetCurrentAnimationStack(other);
  EXPECT_EQ(node->EvaluateLocalTranslation(Seconds(1)), FbxVector4(7, -1, 9));
  a.scene->SetCurrentAnimationStack(nullptr);
  EXPECT_EQ(node->EvaluateLocalTranslation(Seconds(1)), FbxVector4(7, 8, 9));
}

TEST(Evaluator, LayersBlendInOrder) {
  struct Case {
    int mode;
    double weight;
    FbxVector4 translation;
    FbxVector4 scaling;
  };
  const Case cases[] = {{FbxAnimLayer::eBlendAdditive, 50, {11, 2, 3}, {6, 1, 1}},
                        {FbxAnimLayer::eBlendOverride, 50, {1, 0, 0}, {1, .5, .5}},
                        {FbxAnimLayer::eBlendOverridePassthrough, 50, {6, 1, 1.5}, {3, 1, 1}}};
  for (const Case& c : cases) {
    AnimScene a;
    FbxNode* node = a.Node("n", nullptr, {{"Lcl Translation", {0, 2, 3}}});
    FbxAnimLayer* base = a.Stack();
    base->FindProperty("Weight").Set(10.0);  // of no effect
    FbxAnimLayer* second = a.Layer(a.scene->GetCurrentAnimationStack());
    second->FindProperty("BlendMode").Set(c.mode);
    second->FindProperty("Weight").Set(c.weight);
    a.Drive(base, node->LclTranslation(), "X", {10, 10});
    a.Drive(base, node->LclScaling(), "X", {4, 4});
    FbxAnimCurveNode* t = a.Drive(second, node->LclTranslation(), "X", {2, 2});
    for (const char* axis : {"Y", "Z"}) {
      t->CreateChannel(axis, GetDataTypeFromName("Number")).Set(0.0);
    }
    a.Drive(second, node->LclScaling(), "X", {2, 2});
    EXPECT_EQ(node->EvaluateLocalTranslation(Seconds(0)), c.translation) << "mode " << c.mode;
    EXPECT_EQ(node->EvaluateLocalScaling(Seconds(0)), c.scaling) << "mode " << c.mode;
    second->FindProperty("Mute").Set(true);
    EXPECT_EQ(node->EvaluateLocalTranslation(Seconds(1)), FbxVector4(10, 2, 3));
  }
}

TEST(Evaluator, AnimatedWeightCounts) {
  AnimScene a;
  FbxNode* node = a.Node("n");
  a.Stack();
  FbxAnimLayer* second = a.Layer(a.scene->GetCurrentAnimationStack());
  a.Drive(second, second->FindProperty("Weight"), "Weight", {0, 100});
  a.Drive(second, node->LclTranslation(), "X", {8, 8});
  ExpectNear(node->EvaluateLocalTranslation(Seconds(0.25)), {2, 0, 0});
}

TEST(Evaluator, ComputesOnceForATimeUnlessForced) {
  AnimScene a;
  FbxNode* parent = a.Node("p");
  FbxNode* child = a.Node("c", parent);
  EXPECT_EQ(child->EvaluateGlobalTransform(Seconds(1)).GetT(), FbxVector4(0, 0, 0));
  parent->LclTranslation().Set(FbxDouble3{1, 0, 0});
  EXPECT_EQ(child->EvaluateGlobalTransform(Seconds(1)).GetT(), FbxVector4(0, 0, 0));
  EXPECT_EQ(child->EvaluateGlobalTransform(Seconds(2)).GetT(), FbxVector4(1, 0, 0));
  parent->LclTranslation().Set(FbxDouble3{2, 0, 0});
  EXPECT_EQ(
      child->EvaluateGlobalTransform(Seconds(2), FbxNode::eSourcePivot, false, true).GetT()[0], 2);
  parent->LclTranslation().Set(FbxDouble3{3, 0, 0});
  a.scene->SetCurrentAnimationStack(nullptr);
  EXPECT_EQ(child->EvaluateGlobalTransform(Seconds(2)).GetT()[0], 3);
}

TEST(Evaluator, AnimationMayGo) {
  AnimScene a;
  FbxNode* node = a.Node("n");
  FbxAnimLayer* layer = a.Stack();
  a.Drive(layer, node->LclTranslation(), "X", {5, 5});
  EXPECT_EQ(node->EvaluateLocalTranslation(Seconds(0))[0], 5);
  node->LclTranslation().GetCurve(layer, "X")->Destroy();
  EXPECT_EQ(node->EvaluateLocalTranslation(Seconds(0))[0], 0);
  a.scene->GetCurrentAnimationStack()->Destroy();
  EXPECT_EQ(a.scene->GetCurrentAnimationStack(), nullptr);
}

TEST(Evaluator, ScenesSideBySideKeepTheirStates) {
  AnimScene a, b;
  FbxNode* first = a.Node("n", nullptr, {{"Lcl Translation", {1, 0, 0}}});
  FbxNode* second = b.Node("n", nullptr, {{"Lcl Translation", {2, 0, 0}}});
  a.Drive(a.Stack(), first->LclTranslation(), "X", {10, 20});
  EXPECT_EQ(first->EvaluateGlobalTransform(Seconds(1)).GetT()[0], 20);
  EXPECT_EQ(second->EvaluateGlobalTransform(Seconds(1)).GetT()[0], 2);
  EXPECT_EQ(first->EvaluateGlobalTransform(Seconds(0)).GetT()[0], 10);
  // A node that changes scenes brings no state along.
  a.scene->RootProperty().DisconnectSrcObject(first);
  a.scene->GetRootNode()->RootProperty().DisconnectSrcObject(first);
  b.scene->ConnectSrcObject(first);
  second->ConnectSrcObject(first);
  EXPECT_EQ(first->EvaluateGlobalTransform(Seconds(1)).GetT()[0], 3);
  EXPECT_EQ(second->EvaluateGlobalTransform(Seconds(1)).GetT()[0], 2);
}

TEST(Evaluator, WalksDeepTreesInALoop) {
  AnimScene a;
  FbxNode* node = nullptr;
  constexpr int kDepth = 100000;
  for (int i = 0; i < kDepth; ++i) node = a.Node("n", node, {{"Lcl Translation", {1, 0, 0}}});
  EXPECT_EQ(node->EvaluateGlobalTransform().GetT()[0], kDepth);
}

}  // namespace
