// Which records of a file become objects, and in which order.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/anim/fbx_animation.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"
#include "tests/support/loaded_scene.h"

using testing::ElementsAre;

namespace {

TEST(ReadObjects, TakesTypesInTheirOrderAndRecordsInTheFiles) {
  SceneBuilder scene;
  const std::vector<std::pair<const char*, const char*>> types = {
      {"Geometry", "Mesh"},   {"Video", ""},       {"Model", ""},
      {"Texture", ""},        {"Material", ""},    {"NodeAttribute", "Light"},
      {"AnimationCurve", ""}, {"Pose", "BindPose"}};
  for (const auto& [type, subclass] : types) {
    for (const char* name : {"b", "a"})
      scene.AddObject(type, type, type + std::string(name), subclass);
  }
  std::vector<std::string> names = LoadedScene(scene).Names<FbxObject>();
  names.erase(names.begin(), names.begin() + 2);  // the root node and the settings
  EXPECT_THAT(names,
              ElementsAre("NodeAttributeb", "NodeAttributea", "Modelb", "Modela", "Materialb",
                          "Materiala", "Textureb", "Texturea", "Videob", "Videoa", "Geometryb",
                          "Geometrya", "AnimationCurveb", "AnimationCurvea", "Poseb", "Posea"));
}

TEST(ReadObjects, MakesTheClassOfTypeAndSubclass) {
  // Those that other tests read have no row; of a skeleton with its type.
  const std::vector<std::array<std::string, 3>> cases = {
      {"Model", "Whatever", "FbxNode"},
      {"NodeAttribute", "Null", "FbxNull"},
      {"NodeAttribute", "Light", "FbxLight"},
      {"NodeAttribute", "Camera", "FbxCamera"},
      {"NodeAttribute", "LimbNode", "FbxSkeleton2"},
      {"NodeAttribute", "Limb", "FbxSkeleton1"},
      {"NodeAttribute", "Root", "FbxSkeleton0"},
      {"NodeAttribute", "Effector", "FbxSkeleton3"},
      {"NodeAttribute", "LodGroup", ""},
      {"Geometry", "Shape", "FbxShape"},
      {"Geometry", "NurbsCurve", ""},
      {"Deformer", "VertexCacheDeformer", ""},
      {"Pose", "CharacterPose", ""},
      {"AnimationLayer", "x", "FbxAnimLayer"},
      {"NoSuchType", "", ""},
  };
  SceneBuilder scene;
  for (const auto& [type, subclass, expected] : cases) {
    scene.AddObject(type, type, type + subclass, subclass);
  }
  const LoadedScene file(scene);
  for (const auto& [type, subclass, expected] : cases) {
    const auto* object = file.Find<FbxObject>(type + subclass);
    std::string found = object == nullptr ? "" : object->GetClassId().GetName();
    if (found == "FbxSkeleton") {
      found += std::to_string(static_cast<const FbxSkeleton*>(object)->GetSkeletonType());
    }
    EXPECT_EQ(found, expected) << type << subclass;
  }
  EXPECT_TRUE(LoadedScene(scene.Write(), {"Shape"}).Names<FbxShape>().empty());
}

TEST(ReadObjects, PassesOverWhatHasNoBlockOrAKnownId) {
  FbxRecords records = SceneBuilder().Document();
  FbxRecords& objects = records[records.size() - 2].children;
  const auto model = [](int64_t id, const char* name) {
    return FbxRecord("Model", {id, std::string("Model::") + name, "Null"}, {{"Version", {232}}});
  };
  objects = {model(1, "first"),
             model(1, "second"),
             {"Model", {int64_t{2}, "Model::flat", "Null"}},
             {"Model", {"Model::nameless::id", "Null"}, {{"Version", {232}}}},
             {"Model", {int64_t{-4}, "Model::kindless"}, {{"Version", {232}}}},
             {"Material", {int64_t{3}, "Material::undefined", ""}, {{"Version"}}}};
  // Types without a definition are read all the same.
  for (FbxRecord& record : records) {
    if (record.name == "Definitions") record.Add({"ObjectType", {"Model"}});
  }
  for (const bool ascii : {false, true}) {
    const LoadedScene file(WriteFbx(records, {.ascii = ascii}));
    EXPECT_TRUE(file.isLoaded);
    EXPECT_THAT(file.Names<FbxNode>(),
                ElementsAre("RootNode", "first", "nameless::id", "kindless"));
    EXPECT_NE(file.Find<FbxSurfaceMaterial>("undefined"), nullptr);
  }
}

TEST(ReadObjects, NeedsNoDefinitions) {
  SceneBuilder scene;
  scene.AddObject("Pose", "Pose", "bind", "BindPose", {},
                  {{"NbPoseNodes", {1}},
                   {"PoseNode",
                    {},
                    {{"Node", {int64_t{1000001}}}, {"Matrix", {std::vector<double>(16, 1.0)}}}}});
  ASSERT_EQ(scene.AddModel("bone"), 1000001);
  FbxRecords records = scene.Document();
  for (const bool keepsPose : {true, false}) {
    for (FbxRecord& record : records) {
      if (record.name != "Definitions") continue;
      std::erase_if(record.children, [keepsPose](const FbxRecord& type) {
        return type.name == "ObjectType" && !(keepsPose && type.values[0] == FbxValue("Pose"));
      });
    }
    const LoadedScene file(WriteFbx(records));
    ASSERT_NE(file.Find<FbxNode>("bone"), nullptr);
    ASSERT_NE(file.Find<FbxPose>("bind"), nullptr);
    EXPECT_EQ(file.Find<FbxPose>("bind")->GetCount(), 1) << "poses find nodes behind them";
  }
}

TEST(ReadCurves, ReadsKeysAttributesAndExtrapolation) {
  SceneBuilder scene;
  const auto curve = [&](const char* name, FbxRecords records) {
    scene.AddObject("AnimationCurve", "AnimCurve", name, "", {}, std::move(records));
  };
  using Ints = std::vector<int32_t>;
  using Floats = std::vector<float>;
  const FbxRecord times("KeyTime", {std::vector<int64_t>{0, 100, 300}});
  curve("floats", {{"Default", {2.5}},
                   {"KeyVer", {4009}},
                   times,
                   {"KeyValueFloat", {Floats{1, 2, 4}}},
                   {"KeyAttrFlags", {Ints{4, 8}}},
                   {"KeyAttrDataFloat", {Floats{0, 0, 0, 0, 0.5F, 1e-20F, 0, 0}}},
                   {"KeyAttrRefCount", {Ints{1, 2}}},
                   {"Pre-Extrapolation", {}, {{"Type", {'M'}}, {"Repetition", {3}}}},
                   {"Post-Extrapolation", {}, {{"Type", {'K'}}, {"Repetition", {-1}}}}});
  curve("doubles", {times, {"KeyValueDouble", {std::vector<double>{1, 2, 4}}}});
  curve("empty", {{"Default", {7.0}}});
  // Fewer values than times, and counts that claim too many keys.
  curve("short", {times,
                  {"KeyValueFloat", {Floats{1}}},
                  {"KeyAttrFlags", {Ints{4}}},
                  {"KeyAttrRefCount", {Ints{0x7FFFFFFF}}}});
  // Version 4007 has attribute data as numbers in text, too: doubles here, since the builder
  // writes floats of this field as bits.
  curve("numbers", {{"KeyVer", {4007}},
                    times,
                    {"KeyValueFloat", {Floats{1}}},
                    {"KeyAttrFlags", {Ints{8}}},
                    {"KeyAttrDataFloat", {std::vector<double>{0.5, 2, 0, 0}}},
                    {"KeyAttrRefCount", {Ints{1}}}});
  for (const bool ascii : {false, true}) {
    const LoadedScene file(scene, {.ascii = ascii});
    const auto keys = [&](const char* name) { return file.Find<FbxAnimCurve>(name)->curve; };
    const KFCurve floats = keys("floats");
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
    EXPECT_EQ(keys("doubles").KeyGetValue(1), 2.0F);
    EXPECT_EQ(keys("doubles").GetPreExtrapolation().mode, KFCurve::eConstant);
    EXPECT_EQ(keys("doubles").GetPreExtrapolation().count, -1);
    EXPECT_EQ(keys("empty").Evaluate(FbxTime(50)), 7.0F);
    EXPECT_EQ(keys("short").KeyGetValue(0), 1.0F);
    EXPECT_EQ(keys("numbers").KeyGetAttr(0).words[0], ascii ? std::bit_cast<uint32_t>(0.5F) : 0);
  }
}

}  // namespace
