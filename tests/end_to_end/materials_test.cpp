// `list texture` and `export texture` over scenes made for the purpose.
#include <filesystem>

#include "tests/support/program_test.h"

namespace {

class Materials : public SceneTest {
 protected:
  // A mesh with one material that has one texture.
  void AddDressed(const std::string& mesh, const std::string& material, const std::string& path,
                  int64_t parent = SceneBuilder::kRoot) {
    scene_.Texture(scene_.Material(scene_.Mesh(mesh, {}, parent).node, material), "DiffuseColor",
                   path);
  }

  // The lines of a material file behind those that are the same in all.
  std::string Maps(const std::string& file) const {
    const std::string text = File(file);
    const std::string before = "<SHININESS>0</SHININESS>\n";
    return text.substr(std::min(text.find(before), text.size() - before.size()) + before.size());
  }
};

TEST_F(Materials, ListAndExport) {
  const int64_t body = scene_.Mesh("Body").node;
  const int64_t skin = scene_.Material(body, "My Skin");
  scene_.Texture(skin, "DiffuseColor", "C:\\art\\skin.png");
  scene_.Texture(skin, "NormalMap", "art/skin<n>.png");
  scene_.Texture(skin, "Bump", "art/bump.png");
  scene_.Material(body, "Glass[4]", {P("DiffuseColor", {1.0, 0.5, 0.0}), P("Opacity", {0.5})});
  scene_.Mesh("Bare");

  EXPECT_EQ(Run({"s.fbx", "list", "texture"}),
            "\n"
            "MATERIAL: 5 unused TEXTURE: DiffuseColor unused\n"
            "MATERIAL: 4 Glass[4] TEXTURE: DiffuseColor COLOR-FF7F00-Glass[4]-DiffuseColor "
            "TEXTURE: TransparencyFactor ALPHA-7F7F7F-Glass[4]-TransparencyFactor\n"
            "MATERIAL: 6 My Skin TEXTURE: DiffuseColor C:\\art\\skin.png "
            "TEXTURE: NormalMap art/skin<n>.png\n"
            "WARNING: Bump is not a supported use for texture map art/bump.png\n"
            "TEXTURE: DiffuseColor FILENAME: unused MATERIAL: unused\n"
            "TEXTURE: DiffuseColor FILENAME: COLOR-FF7F00-Glass[4]-DiffuseColor "
            "MATERIAL: Glass[4]\n"
            "TEXTURE: TransparencyFactor FILENAME: ALPHA-7F7F7F-Glass[4]-TransparencyFactor "
            "MATERIAL: Glass[4]\n"
            "TEXTURE: DiffuseColor FILENAME: C:\\art\\skin.png MATERIAL: My Skin\n"
            "TEXTURE: NormalMap FILENAME: art/skin<n>.png MATERIAL: My Skin\n");

  std::filesystem::create_directory(dir_.File("out"));
  EXPECT_EQ(Run({"--directory=out", "s.fbx", "export", "texture"}),
            "MATERIAL: 5 unused FILENAME: out/unused.xrf TEXTURE: DiffuseColor unused\n"
            "MATERIAL: 4 Glass[4] FILENAME: out/Glass%5B4%5D.xrf "
            "TEXTURE: DiffuseColor COLOR-FF7F00-Glass[4]-DiffuseColor "
            "TEXTURE: TransparencyFactor ALPHA-7F7F7F-Glass[4]-TransparencyFactor\n"
            "WARNING: Bump is not a supported use for texture map art/bump.png\n"
            "MATERIAL: 6 My Skin FILENAME: out/My%20Skin.xrf "
            "TEXTURE: DiffuseColor C:\\art\\skin.png TEXTURE: NormalMap art/skin<n>.png\n");
  EXPECT_EQ(Maps("out/My%20Skin.xrf"),
            "  <MAP TYPE=\"Diffuse Color\">skin.png</MAP>\n"
            "  <MAP TYPE=\"Normal\">skin&lt;n&gt;.png</MAP>\n</MATERIAL>\n");
  EXPECT_EQ(Maps("out/Glass%5B4%5D.xrf"),
            "  <MAP TYPE=\"Diffuse Color\">COLOR-FF7F00-Glass[4]-DiffuseColor</MAP>\n"
            "  <MAP TYPE=\"Opacity\">ALPHA-7F7F7F-Glass[4]-TransparencyFactor</MAP>\n"
            "</MATERIAL>\n");
  EXPECT_EQ(Maps("out/unused.xrf"), "  <MAP TYPE=\"Diffuse Color\">unused</MAP>\n</MATERIAL>\n");
}

TEST_F(Materials, WithARootOnlyThoseOfItsMeshes) {
  AddDressed("Coat", "Wool", "wool.png", scene_.Bone("Hips"));
  AddDressed("Ground", "Grass", "grass.png");
  const std::string wool = "MATERIAL: 0 Wool FILENAME: Wool.xrf TEXTURE: DiffuseColor wool.png\n";
  EXPECT_EQ(Run({"--root=RootNode/Hips", "s.fbx", "export", "texture"}), wool);
  EXPECT_FALSE(Exists("Grass.xrf"));
  EXPECT_EQ(Run({"s.fbx", "export", "texture"}),
            wool + "MATERIAL: 1 Grass FILENAME: Grass.xrf TEXTURE: DiffuseColor grass.png\n");
}

TEST_F(Materials, LayeredTexturesOfLayeredTexturesAreHarmless) {
  // Twenty levels of which each holds all below it, closed to a ring.
  const int64_t material =
      scene_.Material(scene_.Mesh("Body").node, "Skin", {P("DiffuseColor", {1.0, 0.0, 0.0})});
  std::vector<int64_t> levels;
  for (int i = 0; i < 20; ++i) {
    const int64_t level = scene_.AddObject("LayeredTexture", "LayeredTexture", "L", "");
    for (const int64_t below : levels) scene_.Connect(below, level);
    levels.push_back(level);
  }
  scene_.Connect(levels.back(), levels.front());
  scene_.ConnectProperty(levels.back(), material, "DiffuseColor");
  EXPECT_EQ(Run({"s.fbx", "export", "texture"}),
            "MATERIAL: 0 Skin FILENAME: Skin.xrf "
            "TEXTURE: DiffuseColor COLOR-FF0000-Skin-DiffuseColor\n");
}

TEST_F(Materials, AFileThatCannotBeWrittenLeavesNoRecord) {
  AddDressed("Body", "A", "a.png");
  AddDressed("Hat", "B", "b.png");
  std::filesystem::create_directories(dir_.File("B.xrf/in the way"));
  EXPECT_EQ(Run({"s.fbx", "export", "texture"}),
            "MATERIAL: 1 A FILENAME: A.xrf TEXTURE: DiffuseColor a.png\n");
}

TEST_F(Materials, FilesOfTheMediaFolderAreListed) {
  scene_.Mesh("Body");
  std::filesystem::create_directories(dir_.File("s.fbm/folder"));
  dir_.Write("s.fbm/my skin.png", "pixels");
  const std::string rest =
      "\nMATERIAL: 0 unused TEXTURE: DiffuseColor unused\n"
      "TEXTURE: DiffuseColor FILENAME: unused MATERIAL: unused\n";
  EXPECT_EQ(Run({"s.fbx", "list", "texture"}), "TEXTURE: s.fbm/my skin.png\n" + rest);
  EXPECT_EQ(Run({"-e", "s.fbx", "list", "texture"}), "TEXTURE: s.fbm%2Fmy%20skin.png\n" + rest);
}

}  // namespace
