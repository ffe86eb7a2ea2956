#include "converter/material/material_master_map.h"

#include <climits>

#include <gtest/gtest.h>

#include "converter/material/material_text.h"
#include "converter/mesh/mesh_holder.h"
#include "tests/support/printed.h"

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
  const std::vector<std::pair<std::string, int>> cases = {{"Skin", -1},
                                                          {"Skin[3]", 3},
                                                          {"a[1]b[2]c", 2},
                                                          {"Skin[]", -1},
                                                          {"Skin]3[", -1},
                                                          {"[3", -1},
                                                          {"3]", -1},
                                                          {"Skin[-5]", -5},
                                                          {"Skin[ \t+7x]", 7},
                                                          {"[+-7]", -1},
                                                          {"[x]", -1},
                                                          {"[ ]", -1},
                                                          {"[2147483647]", INT_MAX},
                                                          {"[2147483648]", -1},
                                                          {"[-2147483648]", INT_MIN},
                                                          {"[1]2]", 1},
                                                          {"[[4]", 4},
                                                          {"[0x10]", 0}};
  for (const auto& [name, slot] : cases) EXPECT_EQ(GetMaterialSlot(name), slot) << name;
}

TEST(MaterialMasterMap, OrderOfMaterials) {
  const CompareMaterialMap before;
  const MaterialMap a = Material("M", "a.png");
  const MaterialMap ab = Material("M", "a.png.b");
  EXPECT_TRUE(before(ab, a));  // the greater value stands first
  EXPECT_FALSE(before(a, ab));
  // Keys of one that the other lacks end the comparison where they stand.
  MaterialMap bump = Material("A", "z.png");
  bump["Bump"] = "bump.png";
  EXPECT_FALSE(before(bump, a));
  EXPECT_FALSE(before(a, bump));
  EXPECT_TRUE(before(Material("Z", "zz.png"), bump));
  EXPECT_FALSE(before({}, a));
  EXPECT_FALSE(before(a, {}));

  EXPECT_TRUE(CompareMaterialMap::equal({}, a));
  EXPECT_FALSE(CompareMaterialMap::equal(a, {}));
  EXPECT_TRUE(CompareMaterialMap::equal(a, a));
  EXPECT_TRUE(CompareMaterialMap::equal(ab, a));  // b's value is the lesser
  EXPECT_FALSE(CompareMaterialMap::equal(a, ab));
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
}

TEST(MaterialMasterMap, ASlotAtTheEndOfTheRangeLeavesTheSmallestFreeIds) {
  const Numbered run({{Material("Top[2147483647]", "z.png"), Material("One[1]", "y.png"),
                       Material("A", "c.png"), Material("B", "b.png"), Material("C", "a.png")}});
  EXPECT_EQ(run.Ids(), "Top[2147483647]=2147483647 One[1]=1 A=0 B=2 C=3 ");
}

TEST(MaterialMasterMap, OneMaterialForAName) {
  // The second definition is dropped, with a warning unless its first difference is a greater
  // value.
  const Numbered less({{Material("Skin", "a.png")}, {Material("Skin", "b.png")}});
  EXPECT_EQ(less.Ids(), "Skin=0 ");
  EXPECT_EQ(less.printed, "");
  Numbered run({{Material("Skin", "b.png"), Material("Hair", "h.png")},
                {Material("Skin", "a.png")},
                {Material("Skin", "b.png")}});
  EXPECT_EQ(run.Ids(), "Hair=0 Skin=1 ");
  EXPECT_EQ(run.printed, "WARNING: Two materials named Skin have different textures.\n");

  // The dropped one is entered as 0 when it is asked for.
  EXPECT_EQ(GetMaterialListFromMesh(run.holders[0], run.master), "1 0 ");
  EXPECT_EQ(GetMaterialListFromMesh(run.holders[1], run.master), "0 ");
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

  const Numbered none({});
  EXPECT_EQ(none.Ids(), "=0 ");  // one empty map
  EXPECT_TRUE(MaterialMasterMapToStrings(none.master).empty());
}

TEST(MaterialMasterMap, AGapInTheIndicesListsTheFirstMaterial) {
  Numbered run({{Material("A", "b.png"), Material("B", "a.png")}});
  run.holders[0].materialMaps.erase(0);
  EXPECT_EQ(GetMaterialListFromMesh(run.holders[0], run.master), "0 ");
  EXPECT_EQ(run.master.size(), 2U);
}

TEST(MaterialText, RecordsOfOneMaterial) {
  MaterialMap map = Material("My Skin", "C:\\art\\skin.png");
  map["NormalMap"] = "n.png";
  map["Bump"] = "a/bump.png";
  map["DiffuseColor0"] = "l.png";
  EXPECT_EQ(MaterialMapToString(map, false),
            "TEXTURE: DiffuseColor C:\\art\\skin.png TEXTURE: NormalMap n.png");
  EXPECT_EQ(MaterialMapToString({{_MATERIAL, "Bare"}}, true), "Bare ");

  MaterialMasterMap master;
  master[map] = 4;
  EXPECT_EQ(MaterialMasterMapToStrings(master),
            std::vector<std::string>{
                "4 My Skin TEXTURE: DiffuseColor C:\\art\\skin.png TEXTURE: NormalMap n.png"});
  std::string name;
  std::vector<std::string> textures;
  EXPECT_EQ(Printed([&] { textures = MaterialMasterMapToTextureStrings(master, name); }),
            "WARNING: Bump is not a supported use for texture map a/bump.png\n"
            "WARNING: DiffuseColor0 is not a supported use for texture map l.png\n");
  EXPECT_EQ(textures,
            (std::vector<std::string>{"DiffuseColor FILENAME: C:\\art\\skin.png MATERIAL: My Skin",
                                      "NormalMap FILENAME: n.png MATERIAL: My Skin"}));
  EXPECT_EQ(name, "My Skin");
}

}  // namespace
