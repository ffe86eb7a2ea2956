// Materials, textures and the media embedded in a file.
#include <csignal>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/reader/media_folder.h"
#include "fbx/scene/fbx_material.h"
#include "tests/support/loaded_scene.h"
#include "tests/support/temp_dir.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::UnorderedElementsAre;

namespace {

volatile std::sig_atomic_t signalCame = 0;

TEST(ReadMaterials, MakeTheClassOfTheirShading) {
  struct Case {
    std::string subclass;
    FbxRecords shading;
    std::string expected;
  };
  const std::vector<Case> cases = {
      {"", {{"ShadingModel", {"Blinn"}}}, "FbxSurfacePhong Unknown"},
      {"lambert", {{"ShadingModel", {"phong"}}}, "FbxSurfaceLambert Unknown"},
      {"", {{"ShadingModel", {"LAMBERT"}}}, "FbxSurfaceLambert Unknown"},
      {"", {}, "FbxSurfacePhong Unknown"},
      {"", {{"ShadingModel", {"Toon"}}}, "FbxSurfaceMaterial Toon"},
      {"Hair", {{"ShadingModel", {"phong"}}}, "FbxSurfaceMaterial Hair"},
  };
  for (const Case& c : cases) {
    SceneBuilder scene;
    scene.AddObject("Material", "Material", "m", c.subclass, {}, c.shading);
    const LoadedScene file(scene);
    const auto* material = file.Find<FbxSurfaceMaterial>("m");
    const auto model = material->FindProperty("ShadingModel").Get<FbxString>();
    EXPECT_EQ(material->GetClassId().GetName() + (" " + model), c.expected);
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
  material("old lambert", 101, "Lambert");
  material("new", 102, "Phong");
  material("other", 100, "Toon");
  const LoadedScene file(scene);
  struct Case {
    const char* property;
    // By material; empty where there is no such property.
    std::vector<const char*> expected;
  };
  const std::vector<Case> cases = {
      {"EmissiveColor", {"1 2 3", "1 2 3", "0 0 0", ""}},
      {"EmissiveFactor", {"1", "1", "0.5", "0.5"}},
      {"AmbientColor", {"0.2 0.2 0.2", "0.2 0.2 0.2", "0.2 0.2 0.2", ""}},
      {"DiffuseColor", {"4 5 6", "4 5 6", "0.8 0.8 0.8", ""}},
      {"TransparencyFactor", {"0.75", "0.75", "0", ""}},
      {"DisplacementFactor", {"1", "1", "1", ""}},
      {"SpecularColor", {"7 8 9", "", "0.2 0.2 0.2", ""}},
      {"ShininessExponent", {"30", "", "20", ""}},
      {"ReflectionFactor", {"0.75", "", "1", ""}},
      {"Opacity", {"0.25", "0.25", "0.25", "0.25"}},
  };
  for (const Case& c : cases) {
    std::vector<std::string> values;
    for (const char* name : {"old", "old lambert", "new", "other"}) {
      const auto* found = file.Find<FbxSurfaceMaterial>(name);
      values.emplace_back(found->FindProperty(c.property).Get<FbxString>().Buffer());
    }
    EXPECT_THAT(values, ElementsAreArray(c.expected)) << c.property;
  }
}

TEST(ReadTextures, HoldTheirNamesAndOldFields) {
  SceneBuilder scene;
  const int64_t id = scene.AddTexture("skin", "C:\\art\\skin.png");
  scene.Object(id).Add({"ModelUVTranslation", {0.5, 0.25}});
  scene.Object(id).Add({"ModelUVScaling", {2.0, 3.0}});
  const int64_t renamed = scene.AddTexture("object name", "x.png");
  scene.Object(renamed).children[2].values = {"Texture::field name"};
  const LoadedScene file(scene);
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
  scene.AddObject("LayeredTexture", "LayeredTexture", "layers", "", {},
                  {{"BlendModes", {std::vector<int32_t>{30, 31, 2}}},
                   {"Alphas", {std::vector<double>{1.5, -1}}}});
  const LoadedScene file(scene);
  std::vector<std::pair<int, double>> inputs;
  for (const auto& input : file.Find<FbxLayeredTexture>("layers")->inputs) {
    inputs.emplace_back(input.blendMode, input.alpha);
  }
  EXPECT_THAT(inputs, ElementsAre(std::pair(30, 1.0), std::pair(5, 0.0), std::pair(2, 1.0)));
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
  // A texture whose file is called `relative` beside the scene.
  static int64_t AddTexture(SceneBuilder& builder, const std::string& absolute,
                            const char* relative) {
    const int64_t id = builder.AddTexture("texture", absolute);
    builder.Object(id).children[5].values = {relative};
    return id;
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
  static std::vector<std::string> TextureFiles(const FbxScene& scene) {
    std::vector<std::string> names;
    for (int i = 0; i < scene.GetSrcObjectCount<FbxFileTexture>(); ++i) {
      names.emplace_back(scene.GetSrcObject<FbxFileTexture>(i)->GetFileName());
    }
    return names;
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
  AddTexture(builder, "C:\\art\\here.png", "here.png");
  AddTexture(builder, "/no/such/skin.png", "textures\\..\\textures\\skin.png");
  AddTexture(builder, folder.File("here.png"), "textures\\skin.png");
  AddTexture(builder, "C:\\art\\gone.png", "gone.png");
  AddTexture(builder, "C:\\art\\gone.png", "textures");
  EXPECT_THAT(TextureFiles(*Load(builder)),
              ElementsAre(folder.File("here.png"), folder.File("textures/skin.png"),
                          folder.File("here.png"), "C:\\art\\gone.png", "C:\\art\\gone.png"));
}

// What the disk refuses changes no name, or a scene's materials would depend on it.
TEST_F(MediaTest, ThatCantBeWrittenKeepTheirNames) {
  SceneBuilder builder;
  const int64_t texture = builder.AddTexture("by video", "C:\\art\\b.png");
  builder.Connect(AddVideo(builder, "C:\\art\\b.png", "b"), texture);
  for (const bool isRefused : {false, true}) {
    if (isRefused) {
      std::filesystem::remove_all(folder.File("scene.fbm"));
      folder.Write("scene.fbm", "in the way");
    }
    const FbxScene* scene = Load(builder);
    EXPECT_THAT(TextureFiles(*scene), ElementsAre(folder.File("scene.fbm/b.png")));
    EXPECT_STREQ(scene->GetSrcObject<FbxVideo>(0)->GetRelativeFileName(), "scene.fbm/b.png");
    EXPECT_EQ(FileExists(folder.File("scene.fbm/b.png")), !isRefused);
  }
}

TEST_F(MediaTest, StandInTheirFolderOnlyWhole) {
  FbxMediaFolder media(folder.File("scene.fbx"));
  const auto files = [&] {
    size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.File("scene.fbm"))) {
      count += entry.is_regular_file() ? 1 : 0;
    }
    return count;
  };
  std::string_view rest = "bytes";
  const auto before = std::signal(SIGTERM, [](int) { signalCame = 1; });
  media.Write("a.png", [&] {
    EXPECT_EQ(files(), 0U);
    std::raise(SIGTERM);
    EXPECT_EQ(signalCame, 0) << "it would leave half a file";
    return std::exchange(rest, std::string_view());
  });
  EXPECT_EQ(signalCame, 1);
  std::signal(SIGTERM, before);
  EXPECT_EQ(files(), 1U);
  EXPECT_TRUE(media.GetMessages().empty());
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.File("scene.fbm")), {}), 1);

  std::filesystem::create_directory(folder.File("scene.fbm/b.png"));
  EXPECT_EQ(media.Write("b.png", [] { return std::string_view(); }).relative, "scene.fbm/b.png");
  EXPECT_THAT(media.GetMessages(),
              ElementsAre("the embedded picture '" + folder.File("scene.fbm/b.png") +
                          "' can't be written: Is a directory"));
}

// Textures are read before videos, and yet find their media the first time that a file is read.
TEST_F(MediaTest, TexturesFindTheirEmbeddedMedia) {
  SceneBuilder builder;
  AddTexture(builder, "C:\\art\\a.png", "scene.fbm\\a.png");
  AddVideo(builder, "C:\\art\\a.png", "a");
  const int64_t byVideo = builder.AddTexture("by video", "C:\\art\\b.png");
  builder.Connect(AddVideo(builder, "C:\\art\\b.png", "b"), byVideo);
  const int64_t present = builder.AddTexture("present", folder.Write("c.png", "disk"));
  builder.Connect(AddVideo(builder, "c.png", "c"), present);
  EXPECT_THAT(TextureFiles(*Load(builder)),
              ElementsAre(folder.File("scene.fbm/a.png"), folder.File("scene.fbm/b.png"),
                          folder.File("c.png")));
}

}  // namespace
