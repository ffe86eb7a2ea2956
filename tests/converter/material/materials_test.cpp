#include <climits>
#include <filesystem>

#include <gtest/gtest.h>

#include "converter/driver/material_export.h"
#include "converter/material/material_map.h"
#include "converter/material/material_master_map.h"
#include "converter/material/material_text.h"
#include "converter/scene/mesh_holder.h"
#include "fbx/scene/fbx_material.h"
#include "tests/support/printed.h"
#include "tests/support/temp_dir.h"

namespace {

MaterialMap Material(const std::string& name, const std::string& diffuse) {
  return {{_MATERIAL, name}, {"DiffuseColor", diffuse}};
}

// A mesh for each list of materials, numbered together.
struct Numbered {
  explicit Numbered(std::vector<std::vector<MaterialMap>> meshes) {
    holders.resize(meshes.size());
    std::vector<MeshHolder_*> list;
    for (size_t i = 0; i < meshes.size(); ++i) {
      for (MaterialMap& map : meshes[i]) {
        const int index = static_cast<int>(holders[i].materialMaps.size());
        holders[i].materialMaps[index] = std::move(map);
      }
      list.push_back(&holders[i]);
    }
    printed = Printed([&] { master = BuildMaterialMasterMap(list); });
  }
  // Names with their ids, in master order.
  std::string Ids() const {
    std::string text;
    for (const auto& [map, id] : master) {
      text += MaterialName(map) + "=" + std::to_string(id) + " ";
    }
    return text;
  }

  std::vector<MeshHolder_> holders;
  MaterialMasterMap master;
  std::string printed;
};

TEST(MaterialMasterMap, SlotInAName) {
  const std::map<int, std::vector<std::string>> cases = {
      {-1, {"Skin", "Skin[]", "Skin]3[", "[3", "3]", "[+-7]", "[x]", "[ ]", "[2147483648]"}},
      {0, {"[0x10]"}},
      {1, {"[1]2]"}},
      {2, {"a[1]b[2]c"}},
      {4, {"[[4]"}},
      {7, {"Skin[ \t+7x]"}},
      {-5, {"Skin[-5]"}},
      {INT_MAX, {"[2147483647]"}},
      {INT_MIN, {"[-2147483648]"}}};
  for (const auto& [slot, names] : cases) {
    for (const std::string& name : names) EXPECT_EQ(GetMaterialSlot(name), slot) << name;
  }
}

TEST(MaterialMasterMap, OrderOfMaterials) {
  const MaterialMap a = Material("M", "a.png");
  const MaterialMap ab = Material("M", "a.png.b");
  MaterialMap bump = Material("A", "z.png");
  bump["Bump"] = "bump.png";
  const struct {
    MaterialMap first, second;
    bool isBefore, isEqual;
  } cases[] = {
      {ab, a, true, true},  // the greater value stands first
      {a, ab, false, false},
      {a, a, false, true},
      {{}, a, false, true},
      {a, {}, false, false},
      // Keys of one that the other lacks end the comparison where they stand.
      {bump, a, false, false},
      {a, bump, false, false},
      {Material("Z", "zz.png"), bump, true, true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(CompareMaterialMap()(c.first, c.second), c.isBefore) << &c - cases;
    EXPECT_EQ(CompareMaterialMap::equal(c.first, c.second), c.isEqual) << &c - cases;
  }
}

TEST(MaterialMasterMap, SlotsFirstThenUpwardFromAboveTheHighest) {
  const Numbered run({{Material("B", "a.png"), Material("Hair[2]", "k.png")},
                      {Material("A", "z.png"), Material("Skin[2]", "m.png")},
                      {Material("Low[-5]", "b.png"), Material("Zero[0]", "c.png")}});
  EXPECT_EQ(run.Ids(), "A=3 Skin[2]=2 Hair[2]=4 Zero[0]=0 Low[-5]=-5 B=5 ");
  EXPECT_EQ(run.printed,
            "WARNING: Multiple materials using slot 2: assigned to Skin[2]. Hair[2] is assigned "
            "another slot\n");

  const Numbered three(
      {{Material("a[7]", "1.png"), Material("b[7]", "2.png"), Material("c[7]", "3.png")}});
  EXPECT_EQ(three.Ids(), "c[7]=7 b[7]=8 a[7]=9 ");
  EXPECT_EQ(three.printed,
            "WARNING: Multiple materials using slot 7: assigned to c[7]. b[7] a[7] are assigned "
            "other slots\n");

  const Numbered zero({{Material("Zero[0]", "b.png"), Material("A", "a.png")}});
  EXPECT_EQ(zero.Ids(), "Zero[0]=0 A=1 ");

  // A slot at the end of the range leaves the smallest free ids.
  const Numbered end({{Material("Top[2147483647]", "z.png"), Material("One[1]", "y.png"),
                       Material("A", "c.png"), Material("B", "b.png"), Material("C", "a.png")}});
  EXPECT_EQ(end.Ids(), "Top[2147483647]=2147483647 One[1]=1 A=0 B=2 C=3 ");
}

TEST(MaterialMasterMap, OneMaterialForAName) {
  // The second definition is dropped, with a warning unless its first difference is a greater
  // value.
  const Numbered less({{Material("Skin", "a.png")}, {Material("Skin", "b.png")}});
  EXPECT_EQ(less.Ids(), "Skin=0 ");
  EXPECT_EQ(less.printed, "");
  Numbered run({{Material("Hair", "h.png"), Material("Skin", "b.png")},
                {Material("Skin", "a.png")},
                {Material("Skin", "b.png")}});
  EXPECT_EQ(run.Ids(), "Hair=0 Skin=1 ");
  EXPECT_EQ(run.printed, "WARNING: Two materials named Skin have different textures.\n");

  // The dropped one is entered as 0 when it is asked for.
  EXPECT_EQ(GetMaterialListFromMesh(run.holders[0], run.master), "0 1 ");
  EXPECT_EQ(GetMaterialListFromMesh(run.holders[1], run.master), "0 ");
  // A gap in a mesh's indices lists the first material, and those behind it are listed too.
  run.holders[0].materialMaps.erase(0);
  EXPECT_EQ(GetMaterialListFromMesh(run.holders[0], run.master), "0 1 ");
  EXPECT_EQ(run.master.size(), 3U);
}

TEST(MaterialMasterMap, MapsThatRankAlikeMerge) {
  // Each has a first key that the other lacks, so neither comes before the other.
  MaterialMap bump = Material("Bumpy", "a.png");
  bump["Bump"] = "bump.png";
  MaterialMap ambient = Material("Ambient[3]", "b.png");
  ambient["AmbientColor"] = "sky.png";
  Numbered run({{bump, ambient}});
  EXPECT_EQ(run.Ids(), "Bumpy=0 ");
  EXPECT_EQ(GetMaterialListFromMesh(run.holders[0], run.master), "0 0 ");

  // A map without the others' key parts neither them nor the search for their places.
  const Numbered apart({{MaterialMap{{_MATERIAL, "M"}, {"NormalMap", "n.png"}},
                         Material("A", "b.png"), Material("N", "a.png")}});
  EXPECT_EQ(apart.Ids(), "M=0 A=1 N=2 ");

  // The third is held against the second of two first, and so against X alone. It is the same as
  // X, though I comes before it.
  const MaterialMap x{{"Bump", "b"}, {_MATERIAL, "X"}, {"NormalMap", "b"}};
  const MaterialMap i{{"Bump", "c"}, {"DiffuseColor", "a"}, {_MATERIAL, "I"}, {"NormalMap", "c"}};
  Numbered halved({{x, i, Material("L", "a")}});
  EXPECT_EQ(halved.Ids(), "I=0 X=1 ");

  const Numbered none({});
  EXPECT_EQ(none.Ids(), "=0 ");  // one empty map
  EXPECT_TRUE(MaterialMasterMapToStrings(none.master).empty());
}

TEST(MaterialText, ANameWithoutTextures) {
  EXPECT_EQ(MaterialMapToString({{_MATERIAL, "Bare"}, {"Bump", "b.png"}}, true), "Bare ");
}

// No command asks so.
TEST(MaterialText, WithoutADiffuseColor) {
  FbxManager* manager = FbxManager::Create();
  const auto* material = FbxSurfaceMaterial::Create(manager, "m");
  MaterialMap map;
  EXPECT_EQ(
      Printed([&] { AssignMissingTextureToMaterial(map, material, material->RootProperty()); }),
      "WARNING: DiffuseColor is not valid\n");
  manager->Destroy();
}

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
