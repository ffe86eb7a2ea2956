// `list texture` and `export texture` over scenes made for the purpose.
#include <filesystem>

#include <gtest/gtest.h>

#include "tests/support/fbx_builder.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace {

class Materials : public testing::Test {
 protected:
  // A node with a triangle, below `parent`.
  int64_t AddMesh(const std::string& name, int64_t parent = SceneBuilder::kRoot) {
    const int64_t geometry = scene_.AddMesh(name, {0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, -3});
    const int64_t node = scene_.AddModel(name, "Mesh");
    scene_.Connect(geometry, node);
    scene_.Connect(node, parent);
    return node;
  }
  int64_t AddMaterial(int64_t node, const std::string& name, FbxRecords properties = {}) {
    const int64_t material = scene_.AddMaterial(name, "phong", std::move(properties));
    scene_.Connect(material, node);
    return material;
  }
  void AddTexture(int64_t material, const std::string& channel, const std::string& path) {
    scene_.ConnectProperty(scene_.AddTexture(path, path), material, channel);
  }

  // What the command prints below the version.
  std::string Run(std::vector<std::string> words) {
    dir_.Write("scene.fbx", scene_.Write());
    words.insert(words.begin(), "-2");
    const RunResult run = RunVeltrum(words, dir_.Path());
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(run.out.starts_with("VERSION: ")) << run.out;
    return run.out.substr(run.out.find('\n') + 1);
  }
  std::string File(const std::string& name) const { return ReadFile(dir_.File(name)); }
  bool Exists(const std::string& name) const { return FileExists(dir_.File(name)); }

  static std::string Xrf(int count, const std::string& maps) {
    return "<MATERIAL MAGIC=\"XRF\" VERSION=\"919\" NUMMAPS=\"" + std::to_string(count) +
           "\">\n"
           "  <AMBIENT>255 255 255 255</AMBIENT>\n"
           "  <DIFFUSE>255 255 255 255</DIFFUSE>\n"
           "  <SPECULAR>0 0 0 0</SPECULAR>\n"
           "  <SHININESS>0</SHININESS>\n" +
           maps + "</MATERIAL>\n";
  }

  SceneBuilder scene_;
  TempDir dir_;
};

TEST_F(Materials, ListAndExport) {
  const int64_t body = AddMesh("Body");
  const int64_t skin = AddMaterial(body, "My Skin");
  AddTexture(skin, "DiffuseColor", "C:\\art\\skin.png");
  AddTexture(skin, "NormalMap", "art/skin<n>.png");
  AddTexture(skin, "Bump", "art/bump.png");
  AddMaterial(body, "Glass[4]", {P("DiffuseColor", {1.0, 0.5, 0.0}), P("Opacity", {0.5})});
  AddMesh("Bare");

  EXPECT_EQ(Run({"scene.fbx", "list", "texture"}),
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
  EXPECT_EQ(Run({"--directory=out", "scene.fbx", "export", "texture"}),
            "MATERIAL: 5 unused FILENAME: out/unused.xrf TEXTURE: DiffuseColor unused\n"
            "MATERIAL: 4 Glass[4] FILENAME: out/Glass%5B4%5D.xrf "
            "TEXTURE: DiffuseColor COLOR-FF7F00-Glass[4]-DiffuseColor "
            "TEXTURE: TransparencyFactor ALPHA-7F7F7F-Glass[4]-TransparencyFactor\n"
            "WARNING: Bump is not a supported use for texture map art/bump.png\n"
            "MATERIAL: 6 My Skin FILENAME: out/My%20Skin.xrf "
            "TEXTURE: DiffuseColor C:\\art\\skin.png TEXTURE: NormalMap art/skin<n>.png\n");
  EXPECT_EQ(File("out/My%20Skin.xrf"), Xrf(2,
                                           "  <MAP TYPE=\"Diffuse Color\">skin.png</MAP>\n"
                                           "  <MAP TYPE=\"Normal\">skin&lt;n&gt;.png</MAP>\n"));
  EXPECT_EQ(File("out/Glass%5B4%5D.xrf"),
            Xrf(2,
                "  <MAP TYPE=\"Diffuse Color\">COLOR-FF7F00-Glass[4]-DiffuseColor</MAP>\n"
                "  <MAP TYPE=\"Opacity\">ALPHA-7F7F7F-Glass[4]-TransparencyFactor</MAP>\n"));
  EXPECT_EQ(File("out/unused.xrf"), Xrf(1, "  <MAP TYPE=\"Diffuse Color\">unused</MAP>\n"));
}

TEST_F(Materials, WithARootOnlyThoseOfItsMeshes) {
  const int64_t hips = scene_.AddModel("Hips", "LimbNode");
  const int64_t attribute = scene_.AddNodeAttribute("Hips", "LimbNode");
  scene_.Connect(attribute, hips);
  scene_.Connect(hips, SceneBuilder::kRoot);
  AddTexture(AddMaterial(AddMesh("Coat", hips), "Wool"), "DiffuseColor", "wool.png");
  AddTexture(AddMaterial(AddMesh("Ground"), "Grass"), "DiffuseColor", "grass.png");

  EXPECT_EQ(Run({"--root=RootNode/Hips", "scene.fbx", "export", "texture"}),
            "MATERIAL: 0 Wool FILENAME: Wool.xrf TEXTURE: DiffuseColor wool.png\n");
  EXPECT_FALSE(Exists("Grass.xrf"));
  EXPECT_EQ(Run({"scene.fbx", "export", "texture"}),
            "MATERIAL: 0 Wool FILENAME: Wool.xrf TEXTURE: DiffuseColor wool.png\n"
            "MATERIAL: 1 Grass FILENAME: Grass.xrf TEXTURE: DiffuseColor grass.png\n");
}

TEST_F(Materials, LayeredTexturesAreOnlyWarnedOf) {
  const int64_t material = AddMaterial(AddMesh("Body"), "Skin");
  const int64_t layered = scene_.AddObject("LayeredTexture", "LayeredTexture", "Layers", "");
  scene_.ConnectProperty(layered, material, "DiffuseColor");
  for (const char* path : {"a.png", "b.png"}) {
    scene_.Connect(scene_.AddTexture(path, path), layered);
  }
  EXPECT_EQ(Run({"scene.fbx", "export", "texture"}),
            "WARNING: DiffuseColor0 is not a supported use for texture map a.png\n"
            "WARNING: DiffuseColor1 is not a supported use for texture map b.png\n");
  EXPECT_FALSE(Exists("Skin.xrf"));
}

TEST_F(Materials, LayeredTexturesOfLayeredTexturesAreHarmless) {
  // Twenty levels of which each holds all below it, closed to a ring, and a long chain.
  const int64_t material =
      AddMaterial(AddMesh("Body"), "Skin", {P("DiffuseColor", {1.0, 0.0, 0.0})});
  std::vector<int64_t> levels;
  for (int i = 0; i < 20; ++i) {
    levels.push_back(scene_.AddObject("LayeredTexture", "LayeredTexture", "L", ""));
    for (size_t below = 0; below + 1 < levels.size(); ++below) {
      scene_.Connect(levels[below], levels.back());
    }
  }
  scene_.Connect(levels.back(), levels.front());
  scene_.ConnectProperty(levels.back(), material, "DiffuseColor");
  int64_t last = levels.back();
  for (int i = 0; i < 20'000; ++i) {
    const int64_t next = scene_.AddObject("LayeredTexture", "LayeredTexture", "C", "");
    scene_.Connect(last, next);
    last = next;
  }
  scene_.ConnectProperty(last, material, "NormalMap");
  EXPECT_EQ(Run({"scene.fbx", "export", "texture"}),
            "MATERIAL: 0 Skin FILENAME: Skin.xrf "
            "TEXTURE: DiffuseColor COLOR-FF0000-Skin-DiffuseColor\n");
}

TEST_F(Materials, AFileThatCannotBeWrittenLeavesNoRecord) {
  const int64_t body = AddMesh("Body");
  AddTexture(AddMaterial(body, "A"), "DiffuseColor", "a.png");
  AddTexture(AddMaterial(body, "B"), "DiffuseColor", "b.png");
  std::filesystem::create_directories(dir_.File("B.xrf/in the way"));
  EXPECT_EQ(Run({"scene.fbx", "export", "texture"}),
            "MATERIAL: 1 A FILENAME: A.xrf TEXTURE: DiffuseColor a.png\n");
}

TEST_F(Materials, FilesOfTheMediaFolderAreListed) {
  AddMesh("Body");
  std::filesystem::create_directories(dir_.File("scene.fbm/folder"));
  dir_.Write("scene.fbm/my skin.png", "pixels");
  const std::string rest =
      "\nMATERIAL: 0 unused TEXTURE: DiffuseColor unused\n"
      "TEXTURE: DiffuseColor FILENAME: unused MATERIAL: unused\n";
  EXPECT_EQ(Run({"scene.fbx", "list", "texture"}), "TEXTURE: scene.fbm/my skin.png\n" + rest);
  EXPECT_EQ(Run({"-e", "scene.fbx", "list", "texture"}),
            "TEXTURE: scene.fbm%2Fmy%20skin.png\n" + rest);
}

}  // namespace
