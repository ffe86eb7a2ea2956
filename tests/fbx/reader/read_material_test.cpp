// Materials, textures and the media embedded in a file.
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/scene/fbx_material.h"
#include "tests/fbx/reader/imported.h"
#include "tests/support/temp_dir.h"

using testing::ElementsAre;
using testing::UnorderedElementsAre;

namespace {

TEST(ReadMaterials, MakeTheClassOfTheirShading) {
  struct Case {
    const char* subclass;
    const char* field;  // null for none
    const char* expectedClass;
    const char* expectedModel;
  };
  const std::vector<Case> cases = {
      {"", "phong", "FbxSurfacePhong", "Unknown"},
      {"", "Blinn", "FbxSurfacePhong", "Unknown"},
      {"lambert", "phong", "FbxSurfaceLambert", "Unknown"},
      {"", "LAMBERT", "FbxSurfaceLambert", "Unknown"},
      {"", nullptr, "FbxSurfacePhong", "Unknown"},
      {"", "Toon", "FbxSurfaceMaterial", "Toon"},
      {"Hair", "phong", "FbxSurfaceMaterial", "Hair"},
  };
  SceneBuilder scene;
  for (size_t i = 0; i < cases.size(); ++i) {
    FbxRecords records = {{"MultiLayer", {static_cast<int>(i % 3)}}};
    if (cases[i].field != nullptr) records.push_back({"ShadingModel", {cases[i].field}});
    scene.AddObject("Material", "Material", std::to_string(i), cases[i].subclass, {}, records);
  }
  const Imported file(scene);
  for (size_t i = 0; i < cases.size(); ++i) {
    const auto* material = file.Find<FbxSurfaceMaterial>(std::to_string(i));
    EXPECT_STREQ(material->GetClassId().GetName(), cases[i].expectedClass);
    EXPECT_EQ(material->GetShadingModel(), cases[i].expectedModel);
    EXPECT_EQ(material->FindProperty("MultiLayer").Get<bool>(), i % 3 != 0);
  }
}

TEST(ReadMaterials, OldVersionsMoveTheirProperties) {
  SceneBuilder scene;
  const auto material = [&](const char* name, int version, const char* shading) {
    const int64_t id = scene.AddObject(
        "Material", "Material", name, shading,
        {P("Emissive", "Vector3D", "Vector", "", {1, 2, 3}), P("EmissiveFactor", {0.5}),
         P("Diffuse", "Vector3D", "Vector", "", {4, 5, 6}), P("Opacity", {0.25}),
         P("Specular", "Vector3D", "Vector", "", {7, 8, 9}), P("Shininess", {30.0}),
         P("Reflectivity", {0.75})});
    scene.Object(id).children[0].values = {version};
  };
  material("old", 101, "Phong");
  material("oldLambert", 101, "Lambert");
  material("new", 102, "Phong");
  material("other", 100, "Toon");
  const Imported file(scene);
  const auto get = [&](const char* name, const char* property) -> std::string {
    return file.Find<FbxSurfaceMaterial>(name)->FindProperty(property).Get<FbxString>().Buffer();
  };
  EXPECT_EQ(get("old", "EmissiveColor"), "1 2 3");
  EXPECT_EQ(get("old", "EmissiveFactor"), "1");
  EXPECT_EQ(get("old", "AmbientColor"), "0.2 0.2 0.2");
  EXPECT_EQ(get("old", "DiffuseColor"), "4 5 6");
  EXPECT_EQ(get("old", "TransparencyFactor"), "0.75");
  EXPECT_EQ(get("old", "SpecularColor"), "7 8 9");
  EXPECT_EQ(get("old", "ShininessExponent"), "30");
  EXPECT_EQ(get("old", "ReflectionFactor"), "0.75");
  EXPECT_EQ(get("oldLambert", "DiffuseColor"), "4 5 6");
  EXPECT_FALSE(
      file.Find<FbxSurfaceMaterial>("oldLambert")->FindProperty("SpecularColor").IsValid());
  EXPECT_EQ(get("new", "DiffuseColor"), "0.8 0.8 0.8");
  EXPECT_EQ(get("new", "EmissiveFactor"), "0.5");
  EXPECT_EQ(get("new", "TransparencyFactor"), "0");
  EXPECT_EQ(get("new", "Opacity"), "0.25");
  EXPECT_FALSE(file.Find<FbxSurfaceMaterial>("other")->FindProperty("EmissiveColor").IsValid());
}

TEST(ReadTextures, HoldTheirNamesAndOldFields) {
  SceneBuilder scene;
  const int64_t id = scene.AddTexture("skin", "C:\\art\\skin.png");
  scene.Object(id).Add({"ModelUVTranslation", {0.5, 0.25}});
  scene.Object(id).Add({"ModelUVScaling", {2.0, 3.0}});
  scene.Object(id).Add({"Texture_Alpha_Source", {"Alpha_Black"}});
  const int64_t renamed = scene.AddTexture("object name", "x.png");
  scene.Object(renamed).children[2].values = {"Texture::field name"};
  const Imported file(scene);
  const auto* skin = file.Find<FbxFileTexture>("skin");
  EXPECT_STREQ(skin->GetFileName(), "C:\\art\\skin.png");
  EXPECT_STREQ(skin->GetRelativeFileName(), "C:\\art\\skin.png");
  EXPECT_STREQ(skin->GetMediaName(), "skin");
  EXPECT_EQ(skin->FindProperty("Translation").Get<FbxDouble3>(), (FbxDouble3{0.5, 0.25, 0}));
  EXPECT_EQ(skin->FindProperty("Scaling").Get<FbxDouble3>(), (FbxDouble3{2, 3, 1}));
  EXPECT_EQ(skin->FindProperty("UVSet").Get<FbxString>(), "default");
  EXPECT_NE(file.Find<FbxFileTexture>("field name"), nullptr);
}

TEST(ReadTextures, LayersKeepModesAndAlphasInTheirRange) {
  SceneBuilder scene;
  const auto layered = [&](const char* name, FbxRecords records) {
    return scene.AddObject("LayeredTexture", "LayeredTexture", name, "", {}, std::move(records));
  };
  layered("array", {{"BlendModes", {std::vector<int32_t>{30, 31, 2}}},
                    {"Alphas", {std::vector<double>{1.5, -1}}}});
  const int64_t values = layered("values", {{"BlendModes", {4}}, {"Alphas", {0.5, 0.25}}});
  for (const char* name : {"a", "b"}) scene.Connect(scene.AddTexture(name, "t"), values);
  for (const bool ascii : {false, true}) {
    const Imported file(scene, {.ascii = ascii});
    const auto inputs = [&](const char* name) {
      std::vector<std::pair<int, double>> all;
      for (const auto& [mode, alpha] : file.Find<FbxLayeredTexture>(name)->inputs) {
        all.emplace_back(mode, alpha);
      }
      return all;
    };
    EXPECT_THAT(inputs("array"),
                ElementsAre(std::pair(30, 1.0), std::pair(5, 0.0), std::pair(2, 1.0)));
    EXPECT_THAT(inputs("values"), ElementsAre(std::pair(4, 0.5), std::pair(0, 1.0)));
  }
}

// Loads a scene from `scene.fbx` in a folder.
class MediaTest : public testing::Test {
 protected:
  MediaTest() : manager_(FbxManager::Create()) {}
  ~MediaTest() override { manager_->Destroy(); }

  FbxScene* Load(const SceneBuilder& builder, const FbxFormat& format = {}) {
    folder.Write("scene.fbx", builder.Write(format));
    FbxImporter* importer = FbxImporter::Create(manager_, "");
    FbxScene* scene = FbxScene::Create(manager_, "");
    EXPECT_TRUE(importer->Initialize(folder.File("scene.fbx").c_str()) && importer->Import(scene));
    return scene;
  }
  static int64_t AddVideo(SceneBuilder& builder, const std::string& path,
                          const std::string& content) {
    FbxRecords records = {{"UseMipMap", {0}}, {"Filename", {path}}, {"RelativeFilename", {path}}};
    if (!content.empty()) records.push_back({"Content", {FbxRaw{content}}});
    return builder.AddObject("Video", "Video", path, "Clip", {}, std::move(records));
  }
  std::vector<std::string> FilesBelow() const {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.Path())) {
      if (!entry.is_directory()) {
        files.push_back(std::filesystem::relative(entry.path(), folder.Path()).string());
      }
    }
    return files;
  }

  TempDir folder;

 private:
  FbxManager* manager_;
};

TEST_F(MediaTest, AreWrittenAsPlainNamesInTheirFolder) {
  const std::string bytes("\x89PNG\0\r\n\"", 8);
  SceneBuilder builder;
  for (const char* path : {"../../up.png", "/tmp/absolute.png", "C:\\art\\back\\slash.png", "", ".",
                           "..", "dir/..", "sub/", "a\\.."}) {
    AddVideo(builder, path, bytes);
  }
  AddVideo(builder, "not embedded.png", "");
  for (const bool ascii : {false, true}) {
    const FbxScene* scene = Load(builder, {.ascii = ascii});
    EXPECT_THAT(FilesBelow(),
                UnorderedElementsAre("scene.fbx", "scene.fbm/up.png", "scene.fbm/absolute.png",
                                     "scene.fbm/slash.png"));
    EXPECT_EQ(ReadFile(folder.File("scene.fbm/slash.png")), bytes);
    EXPECT_EQ(scene->GetSrcObject<FbxVideo>(0)->GetFileName(), folder.File("scene.fbm/up.png"));
    EXPECT_STREQ(scene->GetSrcObject<FbxVideo>(0)->GetRelativeFileName(), "scene.fbm/up.png");
    EXPECT_STREQ(scene->GetSrcObject<FbxVideo>(4)->GetFileName(), ".");
  }
}

TEST_F(MediaTest, FollowNoLinks) {
  SceneBuilder builder;
  AddVideo(builder, "a.png", "new");
  folder.Write("victim", "old");
  std::filesystem::create_directory(folder.File("scene.fbm"));
  std::filesystem::create_symlink(folder.File("victim"), folder.File("scene.fbm/a.png"));
  Load(builder);
  EXPECT_EQ(ReadFile(folder.File("victim")), "old");
  EXPECT_EQ(ReadFile(folder.File("scene.fbm/a.png")), "new");

  std::filesystem::remove_all(folder.File("scene.fbm"));
  std::filesystem::create_directory(folder.File("elsewhere"));
  std::filesystem::create_directory_symlink(folder.File("elsewhere"), folder.File("scene.fbm"));
  Load(builder);
  EXPECT_FALSE(FileExists(folder.File("elsewhere/a.png")));
}

TEST_F(MediaTest, TexturesFindFilesBesideTheScene) {
  folder.Write("here.png", "x");
  std::filesystem::create_directory(folder.File("textures"));
  folder.Write("textures/skin.png", "x");
  SceneBuilder builder;
  const auto add = [&](const char* name, const std::string& absolute, const char* relative) {
    const int64_t id = builder.AddTexture(name, absolute);
    builder.Object(id).children[5].values = {relative};
  };
  add("beside", "C:\\art\\here.png", "here.png");
  add("below", "/no/such/skin.png", "textures\\..\\textures\\skin.png");
  add("present", folder.File("here.png"), "textures\\skin.png");
  add("missing", "C:\\art\\gone.png", "gone.png");
  add("folder", "C:\\art\\gone.png", "textures");
  const FbxScene* scene = Load(builder);
  std::vector<std::string> names;
  for (int i = 0; i < scene->GetSrcObjectCount<FbxFileTexture>(); ++i) {
    names.emplace_back(scene->GetSrcObject<FbxFileTexture>(i)->GetFileName());
  }
  EXPECT_THAT(names,
              ElementsAre(folder.File("here.png"), folder.File("textures/skin.png"),
                          folder.File("here.png"), "C:\\art\\gone.png", "C:\\art\\gone.png"));
}

// Textures are read before videos, and yet find their media the first time that a file is read.
TEST_F(MediaTest, TexturesFindTheirEmbeddedMedia) {
  SceneBuilder builder;
  const int64_t byName = builder.AddTexture("by name", "C:\\art\\a.png");
  builder.Object(byName).children[5].values = {"scene.fbm\\a.png"};
  AddVideo(builder, "C:\\art\\a.png", "a");
  const int64_t byVideo = builder.AddTexture("by video", "C:\\art\\b.png");
  builder.Connect(AddVideo(builder, "C:\\art\\b.png", "b"), byVideo);
  const int64_t present = builder.AddTexture("present", folder.Write("c.png", "disk"));
  builder.Connect(AddVideo(builder, "c.png", "c"), present);
  const FbxScene* scene = Load(builder);
  const auto name = [&](int i) {
    return std::string(scene->GetSrcObject<FbxFileTexture>(i)->GetFileName());
  };
  EXPECT_EQ(name(0), folder.File("scene.fbm/a.png"));
  EXPECT_EQ(name(1), folder.File("scene.fbm/b.png"));
  EXPECT_EQ(name(2), folder.File("c.png"));
}

}  // namespace
