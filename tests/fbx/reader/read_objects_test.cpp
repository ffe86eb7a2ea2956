// Which records of a file become objects, and in which order.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/anim/fbx_anim_curve.h"
#include "fbx/anim/fbx_anim_stack.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node_attribute.h"
#include "fbx/scene/fbx_pose.h"
#include "tests/fbx/reader/imported.h"

using testing::ElementsAre;

namespace {

TEST(ReadObjects, TakesTypesInTheirOrderAndRecordsInTheFiles) {
  SceneBuilder scene;
  for (const char* type : {"Geometry", "Video", "Model", "Texture", "Material", "NodeAttribute",
                           "AnimationCurve", "Pose"}) {
    for (const char* name : {"b", "a"}) {
      const std::string subclass = std::string(type) == "Geometry"        ? "Mesh"
                                   : std::string(type) == "NodeAttribute" ? "Light"
                                   : std::string(type) == "Pose"          ? "BindPose"
                                                                          : "";
      scene.AddObject(type, type, std::string(type) + name, subclass);
    }
  }
  std::vector<std::string> names = Imported(scene).Names<FbxObject>();
  names.erase(names.begin(), names.begin() + 2);  // the root node and the settings
  EXPECT_THAT(names,
              ElementsAre("NodeAttributeb", "NodeAttributea", "Modelb", "Modela", "Materialb",
                          "Materiala", "Textureb", "Texturea", "Videob", "Videoa", "Geometryb",
                          "Geometrya", "AnimationCurveb", "AnimationCurvea", "Poseb", "Posea"));
}

TEST(ReadObjects, MakesTheClassOfTypeAndSubclass) {
  using C = std::tuple<std::string, std::string, std::string>;
  const std::vector<C> cases = {
      {"Model", "Whatever", "FbxNode"},
      {"NodeAttribute", "Null", "FbxNull"},
      {"NodeAttribute", "Light", "FbxLight"},
      {"NodeAttribute", "Camera", "FbxCamera"},
      {"NodeAttribute", "LimbNode", "FbxSkeleton"},
      {"NodeAttribute", "Limb", "FbxSkeleton"},
      {"NodeAttribute", "Root", "FbxSkeleton"},
      {"NodeAttribute", "Effector", "FbxSkeleton"},
      {"NodeAttribute", "LodGroup", ""},
      {"NodeAttribute", "", ""},
      {"Geometry", "Mesh", "FbxMesh"},
      {"Geometry", "Shape", "FbxShape"},
      {"Geometry", "NurbsCurve", ""},
      {"LayeredTexture", "", "FbxLayeredTexture"},
      {"Deformer", "Skin", "FbxSkin"},
      {"Deformer", "Cluster", "FbxCluster"},
      {"Deformer", "BlendShape", "FbxBlendShape"},
      {"Deformer", "BlendShapeChannel", "FbxBlendShapeChannel"},
      {"Deformer", "VertexCacheDeformer", ""},
      {"Pose", "BindPose", "FbxPose"},
      {"Pose", "CharacterPose", ""},
      {"AnimationStack", "", "FbxAnimStack"},
      {"AnimationLayer", "x", "FbxAnimLayer"},
      {"AnimationCurveNode", "", "FbxAnimCurveNode"},
      {"SceneInfo", "UserData", ""},
      {"NoSuchType", "", ""},
  };
  SceneBuilder scene;
  for (size_t i = 0; i < cases.size(); ++i) {
    const auto& [type, subclass, expected] = cases[i];
    scene.AddObject(type, type, std::to_string(i), subclass);
  }
  for (const bool ascii : {false, true}) {
    const Imported file(scene, {.ascii = ascii});
    for (size_t i = 0; i < cases.size(); ++i) {
      const auto* object = file.Find<FbxObject>(std::to_string(i));
      EXPECT_EQ(object == nullptr ? "" : object->GetClassId().GetName(), std::get<2>(cases[i]))
          << std::get<0>(cases[i]) << " " << std::get<1>(cases[i]);
    }
    EXPECT_EQ(file.Find<FbxSkeleton>("5")->GetSkeletonType(), FbxSkeleton::eLimb);
    EXPECT_EQ(file.Find<FbxSkeleton>("6")->GetSkeletonType(), FbxSkeleton::eRoot);
    EXPECT_EQ(file.Find<FbxSkeleton>("7")->GetSkeletonType(), FbxSkeleton::eEffector);
  }
  EXPECT_TRUE(Imported(scene.Write(), {"Shape"}).Names<FbxShape>().empty());
}

TEST(ReadObjects, PassesOverWhatHasNoBlockNoDefinitionOrAKnownId) {
  FbxRecords records = SceneBuilder().Document();
  FbxRecords& objects = records[records.size() - 2].children;
  const auto model = [](int64_t id, const char* name) {
    return FbxRecord("Model", {id, std::string("Model::") + name, "Null"}, {{"Version", {232}}});
  };
  objects.push_back(model(1, "first"));
  objects.push_back(model(1, "second"));
  objects.push_back(FbxRecord("Model", {int64_t{2}, "Model::flat", "Null"}));
  objects.push_back(FbxRecord("Model", {"Model::nameless::id", "Null"}, {{"Version", {232}}}));
  objects.push_back(FbxRecord("Model", {int64_t{-4}, "Model::kindless"}, {{"Version", {232}}}));
  objects.push_back(FbxRecord("Material", {int64_t{3}, "Material::undefined", ""}, {{"Version"}}));
  for (FbxRecord& record : records) {
    if (record.name == "Definitions") record.Add({"ObjectType", {"Model"}});
  }
  for (const bool ascii : {false, true}) {
    const Imported file(WriteFbx(records, {.ascii = ascii}));
    EXPECT_TRUE(file.isLoaded);
    EXPECT_THAT(file.Names<FbxNode>(),
                ElementsAre("RootNode", "first", "nameless::id", "kindless"));
    EXPECT_EQ(file.Find<FbxSurfaceMaterial>("undefined"), nullptr);
  }
}

// The first files of the version keep a bone's size apart from its properties.
TEST(ReadObjects, ReadsOldFieldsOfBones) {
  SceneBuilder scene;
  scene.AddNodeAttribute(
      "limb", "Limb", {},
      {{"LimbLength", {2.0}}, {"Properties", {}, {{"Size", {12.5}}, {"Color", {0.1, 0.2, 0.3}}}}});
  scene.AddNodeAttribute("root", "Root", {P("Size", {7})},
                         {{"Properties", {}, {{"Size", {12.5}}, {"Color", {0.1, 0.2, 0.3}}}}});
  const Imported file(scene);
  const auto* limb = file.Find<FbxSkeleton>("limb");
  EXPECT_EQ(limb->FindProperty("Size").Get<double>(), 12.5);
  EXPECT_EQ(limb->FindProperty("Color").Get<FbxDouble3>(), (FbxDouble3{0.1, 0.2, 0.3}));
  EXPECT_EQ(limb->FindProperty("LimbLength").Get<double>(), 2.0);
  const auto* root = file.Find<FbxSkeleton>("root");
  EXPECT_EQ(root->FindProperty("Size").Get<double>(), 7.0);
  EXPECT_FALSE(root->FindProperty("Color").Modified());
}

TEST(ReadObjects, CopiesPivotsOfNodes) {
  SceneBuilder scene;
  scene.AddModel("Node", "Null", {P("RotationPivot", {1, 2, 3}), P("PreRotation", {0, 0, 90})});
  const Imported file(scene);
  const FbxTransform& transform = file.Node("Node").GetTransform();
  EXPECT_TRUE(transform.hasRotationPivot && transform.hasPreRotation);
  EXPECT_FALSE(transform.hasScalingPivot);
  EXPECT_EQ(transform.rotationPivot[2], 3.0);
}

TEST(ReadCurves, ReadsKeysAttributesAndExtrapolation) {
  SceneBuilder scene;
  const auto curve = [&](const char* name, FbxRecords records) {
    scene.AddObject("AnimationCurve", "AnimCurve", name, "", {}, std::move(records));
  };
  const FbxRecord times("KeyTime", {std::vector<int64_t>{0, 100, 300}});
  curve("floats", {{"Default", {2.5}},
                   {"KeyVer", {4009}},
                   times,
                   {"KeyValueFloat", {std::vector<float>{1, 2, 4}}},
                   {"KeyAttrFlags", {std::vector<int32_t>{4, 8}}},
                   {"KeyAttrDataFloat", {std::vector<float>{0, 0, 0, 0, 0.5F, 1e-20F, 0, 0}}},
                   {"KeyAttrRefCount", {std::vector<int32_t>{1, 2}}},
                   {"Pre-Extrapolation", {}, {{"Type", {'M'}}, {"Repetition", {3}}}},
                   {"Post-Extrapolation", {}, {{"Type", {'K'}}, {"Repetition", {-1}}}}});
  curve("doubles", {times, {"KeyValueDouble", {std::vector<double>{1, 2, 4}}}});
  curve("empty", {{"Default", {7.0}}});
  // Fewer values than times, and counts that claim too many keys.
  curve("short", {times,
                  {"KeyValueFloat", {std::vector<float>{1}}},
                  {"KeyAttrFlags", {std::vector<int32_t>{4}}},
                  {"KeyAttrRefCount", {std::vector<int32_t>{0x7FFFFFFF}}}});
  for (const bool ascii : {false, true}) {
    const Imported file(scene, {.ascii = ascii});
    const KFCurve& floats = file.Find<FbxAnimCurve>("floats")->curve;
    ASSERT_EQ(floats.KeyGetCount(), 3);
    EXPECT_EQ(floats.GetDefaultValue(), 2.5F);
    EXPECT_EQ(floats.KeyGetTime(2).Get(), 300);
    EXPECT_EQ(floats.KeyGetValue(2), 4.0F);
    EXPECT_EQ(floats.KeyGetAttr(0).flags, 4U);
    EXPECT_EQ(floats.KeyGetAttr(1).flags, 8U);
    EXPECT_EQ(floats.KeyGetAttr(2).words[0], std::bit_cast<uint32_t>(0.5F));
    EXPECT_EQ(floats.KeyGetAttr(2).words[1], std::bit_cast<uint32_t>(1e-20F));
    EXPECT_EQ(floats.GetPreExtrapolation().mode, KFCurve::eMirrorRepetition);
    EXPECT_EQ(floats.GetPreExtrapolation().count, 3);
    EXPECT_EQ(floats.GetPostExtrapolation().mode, KFCurve::eKeepSlope);
    const KFCurve& doubles = file.Find<FbxAnimCurve>("doubles")->curve;
    EXPECT_EQ(doubles.KeyGetValue(1), 2.0F);
    EXPECT_EQ(doubles.GetPreExtrapolation().mode, KFCurve::eConstant);
    EXPECT_EQ(doubles.GetPreExtrapolation().count, -1);
    EXPECT_EQ(file.Find<FbxAnimCurve>("empty")->Evaluate(FbxTime(50)), 7.0F);
    EXPECT_EQ(file.Find<FbxAnimCurve>("short")->curve.KeyGetValue(0), 1.0F);
  }
}

// Version 4007 of a curve's record has attribute data as numbers in text, too.
TEST(ReadCurves, TellsNumbersFromBitPatternsInText) {
  SceneBuilder scene;
  scene.AddObject("AnimationCurve", "AnimCurve", "curve", "", {},
                  {{"KeyVer", {4007}},
                   {"KeyTime", {std::vector<int64_t>{0}}},
                   {"KeyValueFloat", {std::vector<float>{1}}},
                   {"KeyAttrFlags", {std::vector<int32_t>{8}}},
                   // As doubles, since the builder writes floats of this field as bits.
                   {"KeyAttrDataFloat", {std::vector<double>{0.5, 2, 0, 0}}},
                   {"KeyAttrRefCount", {std::vector<int32_t>{1}}}});
  const Imported file(scene, {.ascii = true});
  EXPECT_EQ(file.Find<FbxAnimCurve>("curve")->curve.KeyGetAttr(0).words[0],
            std::bit_cast<uint32_t>(0.5F));
}

}  // namespace
