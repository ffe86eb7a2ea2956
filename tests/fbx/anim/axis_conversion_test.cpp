#include <gtest/gtest.h>

#include "fbx/anim/fbx_animation.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_scene.h"
#include "tests/fbx/anim/curves.h"
#include "tests/fbx/near.h"
#include "tests/support/loaded_scene.h"

namespace {

// The global matrices of all nodes but the root, without animation and at several times.
std::vector<FbxAMatrix> Globals(const LoadedScene& file) {
  std::vector<FbxAMatrix> matrices;
  for (const FbxTime time :
       {FbxTime::Infinite(), Seconds(0), Seconds(0.3), Seconds(1), Seconds(1.7)}) {
    for (int i = 1; i < file.scene->GetSrcObjectCount<FbxNode>(); ++i) {
      matrices.push_back(file.scene->GetSrcObject<FbxNode>(i)->EvaluateGlobalTransform(time));
    }
  }
  return matrices;
}

// Converts from `source` and checks every node's global transform against the conversion matrix
// times the old.
void ExpectConverted(const LoadedScene& file, const FbxAxisSystem& source = FbxAxisSystem()) {
  FbxGlobalSettings& settings = file.scene->GetGlobalSettings();
  settings.SetAxisSystem(source);
  const FbxAMatrix m = FbxAxisSystem::Max.GetConversionMatrix(source);
  const std::vector<FbxAMatrix> before = Globals(file);
  FbxAxisSystem::Max.ConvertScene(file.scene);
  const std::vector<FbxAMatrix> after = Globals(file);
  ASSERT_EQ(before.size(), after.size());
  for (size_t i = 0; i < before.size(); ++i) {
    SCOPED_TRACE(i);
    ExpectNear(after[i], m * before[i], 1e-5);
  }
  EXPECT_EQ(settings.GetAxisSystem(), FbxAxisSystem::Max);
}

const FbxRecord kTranslation = P("Lcl Translation", {1, 2, 3});
const FbxRecord kRotation = P("Lcl Rotation", {10, 20, 30});

// Top-level nodes of many kinds, each with children of every inherit type, all of it animated.
struct Zoo : SceneBuilder {
  Zoo() {
    const FbxRecord scaling = P("Lcl Scaling", {2, 3, 4});
    const std::vector<FbxRecords> kinds = {
        {kTranslation, kRotation, scaling},
        // The rotation space and its limits are there, but not in force.
        {kRotation, scaling, P("PreRotation", {5, 6, 7}), P("RotationOrder", {eEulerZYX}),
         P("RotationMaxX", {1}), P("RotationPivot", {3, 1, 2})},
        {kTranslation, kRotation, scaling, P("RotationOffset", {5, 6, 7}),
         P("RotationPivot", {1, -2, 3}), P("ScalingOffset", {-4, 5, 6}),
         P("ScalingPivot", {7, 8, -9}), P("PreRotation", {15, 25, 35}),
         P("PostRotation", {-5, 45, 65}), P("RotationOrder", {eEulerYZX}), P("RotationActive", {1}),
         P("RotationMax", {12, 0, 0}), P("RotationMaxX", {1})},
        {kTranslation, kRotation, P("PreRotation", {5, 6, 7}), P("RotationActive", {1}),
         P("RotationSpaceForLimitOnly", {1})},
        {kTranslation, scaling, P("TranslationActive", {1}), P("TranslationMin", {0, 2.5, 0}),
         P("TranslationMax", {4, 5, 6}), P("TranslationMinY", {1}), P("TranslationMaxX", {1}),
         P("ScalingActive", {1}), P("ScalingMax", {1.25, 1.25, 1.25}), P("ScalingMaxX", {1}),
         P("ScalingMaxY", {1}), P("ScalingMaxZ", {1}), P("InheritType", {2})}};
    const Frames seconds = {0, 30, 60};
    for (const FbxRecords& kind : kinds) {
      tops.push_back(Node("top", kRoot, kind));
      int64_t node = tops.back();
      for (const int type : {2, 2, 0, 1, 2}) {
        node = Node(
            "child", node,
            {kTranslation, P("Lcl Rotation", {40, -50, 60}), scaling, P("ScalingPivot", {1, 2, 3}),
             P("RotationPivot", {4, 5, 6}), P("InheritType", {type})});
      }
      Key(clip.layer, tops.back(), "TX", seconds, {0, 10, -3});
      Key(clip.layer, tops.back(), "TY", seconds, {4, 1, 2});
      Drive(second, tops.back(), "Lcl Translation", {"Z"}, seconds, {4, 8, 1});
      Drive(clip.layer, tops.back(), "Lcl Rotation", {"Y"}, seconds, {0, 90, 120});
      Drive(clip.layer, node, "Lcl Translation", {"X"}, seconds, {0, 5, 6});
    }
    // A node whose rotation space is for its limits alone; it isn't animated.
    Node("space", kRoot,
         {P("Lcl Rotation", {30, 5, 0}), P("RotationActive", {1}),
          P("RotationSpaceForLimitOnly", {1}), P("PreRotation", {-90, 10, 0}),
          P("RotationOrder", {eEulerZXY}), P("RotationMax", {100, 0, 0}), P("RotationMaxX", {1})});
  }

  Clip clip = AddClip("clip", 0, 60);
  int64_t second = AddLayer(clip, {P("Weight", {50.0})});
  std::vector<int64_t> tops;
};

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
  for (const FbxAxisSystem& source :
       {FbxAxisSystem::MayaYUp, FbxAxisSystem({0, 1}, {1, 1}, {2, 1}),
        FbxAxisSystem({1, -1}, {0, 1}, {2, 1}), FbxAxisSystem({2, -1}, {1, 1}, {0, 1})}) {
    Zoo zoo;
    zoo.AddModel("hangs nowhere", "Null", {kTranslation});
    ExpectConverted(LoadedScene(zoo), source);
  }
}

TEST(AxisConversion, HandednessIsCarriedByTheSignOfTheScaling) {
  for (const FbxAxisSystem& source : {FbxAxisSystem::DirectX, FbxAxisSystem({0, 1}, {2, 1}, {1, 1}),
                                      FbxAxisSystem({2, 1}, {1, -1}, {0, -1})}) {
    Zoo zoo;
    zoo.Drive(zoo.clip.layer, zoo.tops[0], "Lcl Scaling", {"X", "Y", "Z"}, {0, 30, 60}, {1, 3, 1});
    const int64_t override = zoo.AddLayer(zoo.clip, {P("BlendMode", {1}), P("Weight", {50.0})});
    zoo.Drive(override, zoo.tops[1], "Lcl Scaling", {"Y"}, {0, 30, 60}, {2, 5, 1});
    // A factor whose Z is the property's value, used by a node below, too.
    const int64_t factor =
        zoo.Drive(zoo.second, zoo.tops[0], "Lcl Scaling", {"X", "Y"}, {0, 30, 60}, {1, 1, 5});
    zoo.ConnectProperty(factor, zoo.tops[0] + 1, "Lcl Scaling");
    ExpectConverted(LoadedScene(zoo), source);
  }
}

TEST(AxisConversion, CurvesChangePlacesWithTheirTangents) {
  SceneBuilder scene;
  const int64_t n = scene.Node("n");
  const int64_t layerId = scene.AddClip("clip", 0, 60).layer;
  const int64_t curves = scene.Drive(layerId, n, "Lcl Translation", {"Y"}, {0, 30}, {0, 0});
  scene.ConnectProperty(scene.AddAnimationCurve({0, FbxTime::kTicksPerSecond}, {1, 2}), curves,
                        "d|Z");
  scene.Object(curves).children.back().Add(P("d|Z", "Number", "", "A", {0.0}));
  const LoadedScene file(scene);
  const FbxProperty translation = file.Node("n").LclTranslation();
  FbxAnimLayer* layer = file.AnimLayer();
  FbxAnimCurve* y = translation.GetCurve(layer, "Y");
  FbxAnimCurve* z = translation.GetCurve(layer, "Z");
  constexpr uint32_t kUser = KFCurveKeyAttr::kCubic | KFCurveKeyAttr::kTangentUser;
  y->curve.SetAttributes({{kUser, {0x40400000, 0xC0400000, 0, 0}}}, {2});  // slopes 3 and -3
  ExpectConverted(file);
  // (x, -z, y): the curves themselves moved on, and there is no curve for X.
  EXPECT_EQ(translation.GetCurve(layer, "Z"), y);
  EXPECT_EQ(translation.GetCurve(layer, "Y"), z);
  EXPECT_EQ(translation.GetCurve(layer, "X"), nullptr);
  EXPECT_EQ(z->KeyGetValue(1), -2.0F);
  EXPECT_FLOAT_EQ(y->Evaluate(Seconds(0.5)), 0.75F);
}

TEST(AxisConversion, SharedCurvesAreConvertedOnce) {
  SceneBuilder scene;
  const int64_t layerId = scene.AddClip("clip", 0, 60).layer;
  const int64_t top = scene.Node("top");
  // One curve for all channels; one curve node for two top-level nodes, a child and a scaling.
  const int64_t curves =
      scene.Drive(layerId, top, "Lcl Translation", {"X", "Y", "Z"}, {0, 30, 60}, {1, 2, 4});
  scene.ConnectProperty(curves, scene.Node("twin"), "Lcl Translation");
  scene.ConnectProperty(curves, scene.Node("child", top), "Lcl Translation");
  scene.ConnectProperty(curves, top, "Lcl Scaling");
  scene.Drive(layerId, top, "Lcl Translation", {}, {}, {});  // a second one, which stays second
  // Another curve node with the same curve, on a node that has it to itself.
  const int64_t other = scene.AddAnimationCurveNode("T", {P("d|Z", "Number", "", "A", {0.0})});
  scene.Connect(other, layerId);
  scene.ConnectProperty(other, scene.Node("other"), "Lcl Translation");
  scene.ConnectProperty(curves + 1, other, "d|Z");
  const LoadedScene file(scene);
  const auto curveNode = [&](const char* name) {
    return file.Node(name).LclTranslation().GetCurveNode(file.AnimLayer());
  };
  const FbxAnimCurveNode* before = curveNode("child");
  ExpectConverted(file);
  EXPECT_EQ(curveNode("top"), curveNode("twin"));
  EXPECT_EQ(curveNode("child"), before);
}

TEST(AxisConversion, PosesAndClustersFollow) {
  SceneBuilder scene;
  const int64_t top = scene.Node("top", SceneBuilder::kRoot, {kTranslation, kRotation});
  scene.Node("child", top);
  const LoadedScene file(scene);
  FbxManager* manager = file.scene->GetFbxManager();
  auto* pose = FbxPose::Create(manager, "bind");
  auto* cluster = FbxCluster::Create(manager, "cluster");
  for (FbxObject* object : std::vector<FbxObject*>{pose, cluster}) {
    file.scene->ConnectSrcObject(object);
  }
  pose->SetIsBindPose(true);
  const FbxAMatrix matrix({1, 2, 3}, {40, 50, 60}, {1, 1, 1});
  for (const bool isLocal : {false, true}) {
    for (const char* name : {"top", "child"}) {
      pose->Add(&file.Node(name), matrix.ToMatrix(), isLocal);
    }
  }
  cluster->transformLink = matrix;
  const FbxAMatrix m = FbxAxisSystem::Max.GetConversionMatrix(FbxAxisSystem());
  file.scene->GetGlobalSettings().SetAxisSystem(FbxAxisSystem());
  FbxAxisSystem::Max.ConvertScene(file.scene);
  for (int i = 0; i < 3; ++i) ExpectNear(FbxAMatrix(pose->GetMatrix(i)), m * matrix);
  EXPECT_EQ(pose->GetMatrix(3), matrix.ToMatrix()) << "relative to its parent";
  ExpectNear(cluster->transformLink, m * matrix);
  ExpectNear(cluster->transform, m);
}

}  // namespace
