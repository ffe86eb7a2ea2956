#include <filesystem>

#include <gtest/gtest.h>

#include "converter/driver/media_folder.h"
#include "converter/material/material_text.h"
#include "tests/support/printed.h"
#include "tests/support/temp_dir.h"

namespace {

TEST(TextureType, ChannelsWithAMeaning) {
  EXPECT_EQ(getCal3dTextureType("SpecularColor"), "Specular");
  EXPECT_EQ(getCal3dTextureType("TransparentColor"), "Opacity");
  EXPECT_EQ(getCal3dTextureType("diffusecolor"), "");
  EXPECT_FALSE(isSupportedTextureType("DiffuseColo"));
}

TEST(TextureType, AWarningShortensLongFolders) {
  const auto warning = [](const std::string& file) {
    return Printed([&] { AddTextureWarning("Bump", file); });
  };
  const std::string start = "WARNING: Bump is not a supported use for texture map ";
  const std::string fifty = std::string(49, 'd') + "/";
  EXPECT_EQ(warning(fifty + "b.png"), start + fifty + "b.png\n");
  EXPECT_EQ(warning("e" + fifty + "b.png"), start + "e" + std::string(49, 'd') + "...\\b.png\n");
}

TEST(MediaFolder, MovesToTheFolderOfTexturesWithoutItsSuffix) {
  const TempDir dir;
  const std::string scene = dir.File("Model.FBX");
  const std::string texture = dir.Write("skin.png", "pixels");
  ConversionArguments args;
  const auto move = [&](const std::string& file) {
    return MoveFileFromSDKTextureDirectoryToZEVOTextureDirectory(scene, file, args);
  };
  // Nothing happens without a media folder or a texture.
  EXPECT_TRUE(move(texture));
  std::filesystem::create_directory(dir.File("Model.fbm"));
  EXPECT_TRUE(move(""));
  EXPECT_FALSE(FileExists(dir.File("Model_textures")));
  EXPECT_TRUE(move(std::filesystem::relative(texture)));  // a relative path is copied
  EXPECT_TRUE(FileExists(texture));
  EXPECT_TRUE(move(texture));
  EXPECT_TRUE(std::filesystem::is_directory(dir.File("Model_textures")));
  EXPECT_EQ(ReadFile(dir.File("Model")), "pixels");
  EXPECT_FALSE(FileExists(texture));

  // Whatever lies in the folder of textures, there is nothing to move.
  dir.Write("Model_textures/skin.png", "pixels");
  EXPECT_TRUE(gatherTextureListFromDirectory(scene).empty());

  args.directoryForOutputFiles = dir.File("no/such/");
  EXPECT_THROW(move(dir.File("Model")), std::exception);
}

}  // namespace
