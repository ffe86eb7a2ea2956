#include <map>

#include <gtest/gtest.h>

#include "fbx/scene/fbx_axis_system.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_pose.h"
#include "tests/fbx/anim/anim_scene.h"
#include "tests/fbx/near.h"

namespace {

using Attr = KFCurveKeyAttr;

// The global matrices of all nodes but the root, without animation and at several times.
std::vector<FbxAMatrix> Globals(const AnimScene& a) {
  std::vector<FbxAMatrix> matrices;
  for (const FbxTime time :
       {FbxTime::Infinite(), Seconds(0), Seconds(0.3), Seconds(1), Seconds(1.7)}) {
    for (int i = 1; i < a.scene->GetSrcObjectCount<FbxNode>(); ++i) {
      matrices.push_back(a.scene->GetSrcObject<FbxNode>(i)->EvaluateGlobalTransform(time));
    }
  }
  return matrices;
}

// Converts and checks every node's global transform against the conversion matrix times the old.
void ExpectConverted(AnimScene& a, const FbxAxisSystem& target) {
  const FbxAMatrix m = target.GetConversionMatrix(a.scene->GetGlobalSettings().GetAxisSystem());
  const std::vector<FbxAMatrix> before = Globals(a);
  target.ConvertScene(a.scene);
  const std::vector<FbxAMatrix> after = Globals(a);
  ASSERT_EQ(before.size(), after.size());
  for (size_t i = 0; i < before.size(); ++i) {
    SCOPED_TRACE(i);
    ExpectNear(after[i], m * before[i], 1e-5);
  }
  EXPECT_EQ(a.scene->GetGlobalSettings().GetAxisSystem(), target);
}

constexpr FbxDouble3 kT{1, 2, 3}, kR{10, 20, 30};

// Top-level nodes of many kinds, each with children of every inherit type, all of it animated.
void BuildZoo(AnimScene& a, FbxDouble3 scaling) {
  FbxAnimLayer* layer = a.Stack();
  FbxAnimLayer* second = a.Layer(a.scene->GetCurrentAnimationStack());
  second->FindProperty("Weight").Set(50.0);
  std::vector<FbxNode*> tops = {
      a.Node("plain", nullptr, {{"Lcl Translation", kT}, {"Lcl Rotation", kR}}),
      // The rotation space and its limits are there, but not in force.
      a.Node("inactive", nullptr,
             {{"Lcl Rotation", kR},
              {"PreRotation", {5, 6, 7}},
              {"RotationOrder", {}, eEulerZYX},
              {"RotationMaxX", {}, 1},
              {"RotationPivot", {3, 1, 2}}}),
      a.Node("full", nullptr,
             {{"Lcl Translation", kT},
              {"Lcl Rotation", kR},
              {"RotationOffset", {5, 6, 7}},
              {"RotationPivot", {1, -2, 3}},
              {"ScalingOffset", {-4, 5, 6}},
              {"ScalingPivot", {7, 8, -9}},
              {"PreRotation", {15, 25, 35}},
              {"PostRotation", {-5, 45, 65}},
              {"RotationOrder", {}, eEulerYZX},
              {"RotationActive", {}, 1},
              {"RotationMax", {12, 0, 0}},
              {"RotationMaxX", {}, 1}}),
      a.Node("limited", nullptr,
             {{"Lcl Translation", kT},
              {"TranslationActive", {}, 1},
              {"TranslationMin", {0, 2.5, 0}},
              {"TranslationMax", {4, 5, 6}},
              {"TranslationMinY", {}, 1},
              {"TranslationMaxX", {}, 1},
              {"ScalingActive", {}, 1},
              {"ScalingMax", {1.25, 1.25, 1.25}},
              {"ScalingMaxX", {}, 1},
              {"ScalingMaxY", {}, 1},
              {"ScalingMaxZ", {}, 1},
              {"InheritType", {}, 2}})};
  for (FbxNode* top : tops) {
    top->LclScaling().Set(scaling);
    FbxNode* parent = top;
    for (const int type : {0, 1, 2, 2, 0}) {
      parent = a.Node("child", parent,
                      {{"Lcl Translation", kT},
                       {"Lcl Rotation", {40, -50, 60}},
                       {"Lcl Scaling", scaling},
                       {"ScalingPivot", {1, 2, 3}},
                       {"RotationPivot", {4, 5, 6}},
                       {"InheritType", {}, type}});
    }
    a.Drive(layer, top->LclTranslation(), "X", {0, 10, -3});
    a.Drive(layer, top->LclTranslation(), "Y", {4, 1, 2});
    a.Drive(second, top->LclTranslation(), "Z", {4, 8, 1});
    a.Drive(layer, top->LclRotation(), "Y", {0, 90, 120});
    a.Drive(layer, parent->LclTranslation(), "X", {0, 5, 6});
  }
}

// A node whose rotation space is for its limits alone; it isn't animated.
void AddSpaceForLimits(AnimScene& a) {
  a.Node("space", nullptr,
         {{"Lcl Rotation", {30, 5, 0}},
          {"RotationActive", {}, 1},
          {"RotationSpaceForLimitOnly", {}, 1},
          {"PreRotation", {-90, 10, 0}},
          {"RotationOrder", {}, eEulerZXY},
          {"RotationMax", {100, 0, 0}},
          {"RotationMaxX", {}, 1}});
}

TEST(AxisSystem, ConversionMatrixTakesAxesToAxes) {
  const FbxAMatrix m = FbxAxisSystem::Max.GetConversionMatrix(FbxAxisSystem());
  EXPECT_EQ(m.MultT({1, 2, 3}), FbxVector4(1, -3, 2));
  EXPECT_TRUE(FbxAxisSystem::Max.GetConversionMatrix(FbxAxisSystem::MayaZUp).IsIdentity());
  EXPECT_EQ(FbxAxisSystem(FbxAxisSystem::eMayaZUp), FbxAxisSystem::MayaZUp);
  EXPECT_EQ(FbxAxisSystem(FbxAxisSystem::eLightwave), FbxAxisSystem::Lightwave);
  // An axis named twice makes no system, and converts nothing.
  const FbxAxisSystem broken({1, 1}, {1, 1}, {0, 1});
  EXPECT_FALSE(broken.IsValid());
  EXPECT_TRUE(FbxAxisSystem::Max.GetConversionMatrix(broken).IsIdentity());
}

TEST(AxisConversion, EveryGlobalTransformIsMovedByTheMatrix) {
  const FbxAxisSystem sources[] = {FbxAxisSystem::MayaYUp, FbxAxisSystem({0, 1}, {1, 1}, {2, 1}),
                                   FbxAxisSystem({1, -1}, {0, 1}, {2, 1}),
                                   FbxAxisSystem({2, -1}, {1, 1}, {0, 1})};
  for (const FbxAxisSystem& source : sources) {
    AnimScene a;
    a.scene->GetGlobalSettings().SetAxisSystem(source);
    BuildZoo(a, {2, 3, 4});
    AddSpaceForLimits(a);
    a.Add<FbxNode>("hangs nowhere")->LclTranslation().Set(kT);
    ExpectConverted(a, FbxAxisSystem::Max);
  }
}

TEST(AxisConversion, HandednessIsCarriedByTheSignOfTheScaling) {
  for (const FbxAxisSystem& source : {FbxAxisSystem::DirectX, FbxAxisSystem({0, 1}, {2, 1}, {1, 1}),
                                      FbxAxisSystem({2, 1}, {1, -1}, {0, -1})}) {
    AnimScene a;
    a.scene->GetGlobalSettings().SetAxisSystem(source);
    BuildZoo(a, {2, 3, 4});
    FbxNode* top = a.scene->GetRootNode()->GetChild(0);
    FbxAnimStack* stack = a.scene->GetCurrentAnimationStack();
    for (const char* axis : {"X", "Y", "Z"}) {
      a.Drive(stack->GetLayer(0), top->LclScaling(), axis, {1, 3, 1});
    }
    // A factor whose Z is the property's value, used by a node below, too.
    FbxAnimCurveNode* factor = nullptr;
    for (const char* axis : {"X", "Y"}) {
      factor = a.Drive(stack->GetLayer(1), top->LclScaling(), axis, {1, 1, 5});
    }
    top->GetChild(0)->LclScaling().ConnectSrcObject(factor);
    ExpectConverted(a, FbxAxisSystem::Max);
  }
}

TEST(AxisConversion, CurvesChangePlacesWithTheirTangents) {
  AnimScene a;
  FbxNode* node = a.Node("n");
  FbxAnimLayer* layer = a.Stack();
  FbxAnimCurve* y = a.Linear({0, 0});
  const uint32_t user = Attr::kCubic | Attr::kTangentUser;
  y->curve.SetAttributes({{user, {0x40400000, 0xC0400000, 0, 0}}}, {2});  // slopes 3 and -3
  FbxAnimCurve* z = a.Linear({1, 2});
  FbxAnimCurveNode* curves = a.CurveNode(layer, node->LclTranslation());
  a.Connect(curves, "Y", y);
  a.Connect(curves, "Z", z);
  ExpectConverted(a, FbxAxisSystem::Max);
  // (x, -z, y): the curves themselves moved on, and there is no curve for X.
  EXPECT_EQ(node->LclTranslation().GetCurve(layer, "Z"), y);
  EXPECT_EQ(node->LclTranslation().GetCurve(layer, "Y"), z);
  EXPECT_EQ(node->LclTranslation().GetCurve(layer, "X"), nullptr);
  EXPECT_EQ(z->KeyGetValue(1), -2.0F);
  EXPECT_FLOAT_EQ(y->Evaluate(Seconds(0.5)), 0.75F);
}

TEST(AxisConversion, SharedCurvesAreConvertedOnce) {
  AnimScene a;
  FbxAnimLayer* layer = a.Stack();
  FbxNode* top = a.Node("top");
  FbxNode* twin = a.Node("twin");
  FbxNode* child = a.Node("child", top);
  // One curve for all channels; one curve node for two top-level nodes, a child and a scaling.
  FbxAnimCurve* curve = a.Linear({1, 2, 4});
  FbxAnimCurveNode* curves = a.CurveNode(layer, top->LclTranslation());
  for (const char* axis : {"X", "Y", "Z"}) a.Connect(curves, axis, curve);
  twin->LclTranslation().ConnectSrcObject(curves);
  child->LclTranslation().ConnectSrcObject(curves);
  top->LclScaling().ConnectSrcObject(curves);
  a.CurveNode(layer, top->LclTranslation());  // a second one, which stays second
  // Another curve node with the same curve, on a node that has it to itself.
  FbxNode* other = a.Node("other");
  a.Connect(a.CurveNode(layer, other->LclTranslation()), "Z", curve);
  ExpectConverted(a, FbxAxisSystem::Max);
  EXPECT_EQ(top->LclTranslation().GetCurveNode(layer), twin->LclTranslation().GetCurveNode(layer));
  EXPECT_EQ(child->LclTranslation().GetCurveNode(layer), curves);
}

TEST(AxisConversion, PosesAndClustersFollow) {
  AnimScene a;
  FbxNode* top = a.Node("top", nullptr, {{"Lcl Translation", kT}, {"Lcl Rotation", kR}});
  FbxNode* child = a.Node("child", top);
  auto* pose = a.Add<FbxPose>("bind");
  pose->SetIsBindPose(true);
  const FbxAMatrix matrix({1, 2, 3}, {40, 50, 60}, {1, 1, 1});
  for (const bool isLocal : {false, true}) {
    for (FbxNode* node : {top, child}) pose->Add(node, matrix.ToMatrix(), isLocal);
  }
  auto* cluster = a.Add<FbxCluster>("cluster");
  cluster->transformLink = matrix;
  const FbxAMatrix m = FbxAxisSystem::Max.GetConversionMatrix(FbxAxisSystem());
  FbxAxisSystem::Max.ConvertScene(a.scene);
  for (int i = 0; i < 3; ++i) ExpectNear(FbxAMatrix(pose->GetMatrix(i)), m * matrix);
  EXPECT_EQ(pose->GetMatrix(3), matrix.ToMatrix()) << "relative to its parent";
  ExpectNear(cluster->transformLink, m * matrix);
  ExpectNear(cluster->transform, m);
}

// Every value of its own costs a node memory.
TEST(AxisConversion, WritesOnlyWhatChanges) {
  for (const FbxAxisSystem& source : {FbxAxisSystem::Max, FbxAxisSystem::MayaYUp}) {
    AnimScene a;
    a.scene->GetGlobalSettings().SetAxisSystem(source);
    FbxNode* node = a.Node("n", nullptr, {{"Lcl Translation", kT}});
    FbxAxisSystem::Max.ConvertScene(a.scene);
    const bool converts = source == FbxAxisSystem::MayaYUp;
    EXPECT_EQ(node->FindProperty("PreRotation").Modified(), converts);
    EXPECT_EQ(node->LclTranslation().Get<FbxDouble3>() == kT, !converts);
    for (const char* name :
         {"ScalingPivot", "RotationOffset", "RotationOrder", "TranslationMaxX"}) {
      EXPECT_FALSE(node->FindProperty(name).Modified()) << name;
    }
  }
}

}  // namespace
