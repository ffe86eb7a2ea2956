// The media embedded in a file, and the files that textures name.
#include <csignal>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/reader/media_folder.h"
#include "fbx/scene/fbx_material.h"
#include "tests/support/loaded_scene.h"
#include "tests/support/temp_dir.h"

namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

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
    builder.Object(id).children.back().values = {relative};
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

TEST_F(MediaTest, KeepPermissions) {
  SceneBuilder builder;
  AddVideo(builder, "a.png", "new");
  std::filesystem::create_directory(folder.File("scene.fbm"));
  folder.Write("scene.fbm/a.png", "old");
  const auto mine = std::filesystem::perms::owner_read | std::filesystem::perms::group_write;
  std::filesystem::permissions(folder.File("scene.fbm/a.png"), mine);
  Load(builder);
  EXPECT_EQ(ReadFile(folder.File("scene.fbm/a.png")), "new");
  EXPECT_EQ(std::filesystem::status(folder.File("scene.fbm/a.png")).permissions(), mine);
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

volatile std::sig_atomic_t signalCame = 0;

TEST_F(MediaTest, StandInTheirFolderOnlyWhole) {
  FbxMediaFolder media(folder.File("scene.fbx"));
  std::string_view rest = "bytes";
  const auto before = std::signal(SIGTERM, [](int) { signalCame = 1; });
  media.Write("a.png", [&] {
    EXPECT_FALSE(FileExists(folder.File("scene.fbm/a.png")));
    std::raise(SIGTERM);
    EXPECT_EQ(signalCame, 0) << "it would leave half a file";
    return std::exchange(rest, std::string_view());
  });
  EXPECT_EQ(signalCame, 1);
  std::signal(SIGTERM, before);
  EXPECT_THAT(FilesBelow(), ElementsAre("scene.fbm/a.png"));
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
