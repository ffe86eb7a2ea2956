// What is read of scenes made for the purpose. Beside each lies the text of it, in which every case
// is named after what it is.
#include <array>
#include <cmath>
#include <filesystem>

#include <gtest/gtest.h>

#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_mesh.h"
#include "tests/fbx/reader/scene_text.h"
#include "tests/support/expected_text.h"
#include "tests/support/loaded_scene.h"
#include "tests/support/run_program.h"

namespace {

std::string PathOf(const std::string& name) {
  return TestsDirectory() + "/fbx/reader/scenes/" + name;
}

TEST(Scenes, ReadAsTheyDid) {
  for (const auto& entry : std::filesystem::directory_iterator(PathOf(""))) {
    std::filesystem::path path = entry.path();
    if (path.extension() != ".fbx") continue;
    SCOPED_TRACE(path);
    const LoadedScene file(ReadFile(path));
    EXPECT_TRUE(file.isLoaded) << file.Status();
    ExpectKept(SceneText(*file.scene), path.replace_extension(".txt"));
  }
}

TEST(Scenes, OptionsSwitchKindsOff) {
  const std::array<std::string, 3> cases[] = {{"objects.fbx", "Shape", "FbxShape"},
                                              {"version6_objects.fbx", "Shape", "FbxShape"},
                                              {"version6_takes.fbx", "Animation", "FbxAnim"}};
  for (const auto& [name, option, kind] : cases) {
    const LoadedScene file(ReadFile(PathOf(name)), {option});
    EXPECT_TRUE(file.isLoaded);
    EXPECT_EQ(SceneText(*file.scene).find(kind), std::string::npos) << name;
  }
}

// What objects say where no file says anything.
TEST(Scenes, ObjectsBeginAsTheirClassesDeclare) {
  FbxManager* manager = FbxManager::Create();
  std::string text;
  for (const char* name :
       {"FbxNode", "FbxNull", "FbxSkeleton", "FbxLight", "FbxBlendShapeChannel", "FbxSurfacePhong",
        "FbxFileTexture", "FbxGlobalSettings", "FbxAnimLayer", "FbxAnimStack"}) {
    text += PropertiesText(*manager->CreateNewObjectFromClassId(manager->FindClass(name), ""));
  }
  ExpectKept(text, PathOf("classes.txt"));
  manager->Destroy();
}

// A text has no types; the scenes above say what is read of it.
TEST(Scenes, EveryFormOfFileSaysTheSame) {
  SceneBuilder scene;
  scene.SetGlobal(P("UnitScaleFactor", "double", "Number", "", {2.54}));
  const int64_t bone =
      scene.Bone("bone", SceneBuilder::kRoot,
                 {P("Lcl Translation", {1, 2, 3}), P("bool", "bool", "", "", {5}),
                  P("enum", "enum", "", "", {-3}), P("byte", "Byte", "", "", {int8_t{-5}}),
                  P("short", "Short", "", "", {int16_t{-300}}), P("long", "LongLong", "", "", {7}),
                  P("time", "KTime", "Time", "", {int64_t{1} << 41}),
                  P("float", "Float", "", "", {0.25F}), P("text", "KString", "", "", {"a b"})});
  // Heads of properties that came before, with other letters, in another order, among others.
  for (const char* letters : {"", "A", "A+", "A"}) {
    scene.Bone(std::string("again") + letters, bone,
               {P("Lcl Scaling", "Lcl Scaling", "", letters, {1.0, 2.0, 3.0}),
                P("text", "KString", "", "", {"c"}), P("RotationActive", "bool", "", letters, {1}),
                P("Lcl Translation", "Lcl Translation", "", "A", {4.0, 5.0, 6.0})});
  }
  const auto mesh = scene.Mesh("mesh", {0, 0, 0, 1, 0, 0, 0, 1, 0}, {{0, 1, 2}},
                               {Normals("ByVertice", "IndexToDirect", {0, 0, 1}, {0, 0, 0}),
                                UVs("map", "ByPolygonVertex", "Direct", {0, 0, 1, 0, 0.5, 1})});
  scene.Cluster(scene.Skin(mesh.mesh), bone, {0, 2}, {0.25, 0.75}, "Total1");
  scene.Target(scene.Channel(scene.BlendShape(mesh.mesh), "smile"), {1}, {0, 0, 5}, {1, 0, 0});
  scene.Texture(scene.Material(mesh.node, "skin"), "DiffuseColor", "skin.png");
  const int64_t curve = scene.AddAnimationCurve({0, 100, int64_t{1} << 40}, {1, 2, 0.1F}, 1032);
  scene.Object(curve).Add({"Pre-Extrapolation", {}, {{"Type", {'M'}}, {"Repetition", {3}}}});
  // Attributes of the curve before, for fewer keys, then others.
  for (const int flags : {1032, 4, 4}) scene.AddAnimationCurve({0, 100}, {1, 2}, flags);
  scene.AddObject("Pose", "Pose", "bind", "BindPose", {},
                  {{"NbPoseNodes", {1}}, {"PoseNode", {}, {{"Node", {bone}}}}});
  const std::string text = SceneText(*LoadedScene(scene, {.ascii = true}).scene);
  for (const FbxFormat& format :
       {FbxFormat{}, FbxFormat{.version = 7700, .compress = true},
        FbxFormat{.version = 7450, .wideOffsets = true}, FbxFormat{.bigEndian = true},
        FbxFormat{.bigEndian = true, .compress = true}}) {
    const LoadedScene file(scene, format);
    EXPECT_EQ(SceneText(*file.scene), text);
    file.Find<FbxMesh>("mesh")->Release();
    EXPECT_EQ(SceneText(*file.scene), text);
  }
}

// No export asks so.
TEST(Scenes, FindsWhatACornerHas) {
  SceneBuilder scene;
  scene.Mesh("mesh", {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0}, {{0, 1, 2}, {0, 2, 1, 3}},
             {Normals("ByVertice", "IndexToDirect", {1, 0, 0, 2, 0, 0}, {1, 0, -1, 0}),
              UVs("map1", "ByPolygonVertex", "IndexToDirect", {1, 2, 3, 4}, {-1, 1})});
  const LoadedScene file(scene);
  const auto* mesh = file.Find<FbxMesh>("mesh");
  std::string found;
  for (const auto& [p, k] : {std::pair(0, 0), {0, 1}, {0, 2}, {1, 3}, {2, 0}, {0, 3}, {-1, 0}}) {
    FbxVector4 normal;
    FbxVector2 uv(9, 9);
    bool unmapped = false;
    const bool has = mesh->GetPolygonVertexNormal(p, k, normal);
    found += has ? std::to_string(std::lround(normal[0])) : "-";
    const bool hasUv = mesh->GetPolygonVertexUV(p, k, "map1", uv, unmapped);
    found += hasUv ? (unmapped ? "u" : "") + std::to_string(std::lround(uv[0])) + " " : "- ";
  }
  EXPECT_EQ(mesh->GetElementUV("none"), nullptr);
  EXPECT_EQ(mesh->GetPolygonVertexIndex(2), -1);
  EXPECT_EQ(found, "2u9 13 -- 1- -- -- -- ") << "kept where there is none";
}

// Nor do commands ask so.
TEST(Scenes, PosesFindTheirNodes) {
  const LoadedScene file(ReadFile(PathOf("deformers.fbx")));
  const auto* bind = file.Find<FbxPose>("bind");
  EXPECT_EQ(bind->Find(&file.Node("b")), 0);
  EXPECT_EQ(bind->Find("a", FbxPose::eInitialName), 1);
  EXPECT_EQ(bind->Find("a", 0), -1);
  EXPECT_TRUE(bind->GetNode(99) == nullptr && bind->GetMatrix(99) == FbxMatrix{});
}

}  // namespace
