#include "converter/material/material_map.h"

#include <cmath>

#include <gtest/gtest.h>

#include "converter/scene/mesh_holder.h"
#include "fbx/core/fbx_manager.h"
#include "fbx/scene/fbx_material.h"
#include "fbx/scene/fbx_node.h"
#include "tests/support/printed.h"

namespace {

class MaterialMapTest : public testing::Test {
 protected:
  ~MaterialMapTest() override { manager_->Destroy(); }

  template <typename Class>
  Class* Make(const char* name) {
    return Class::Create(manager_, name);
  }
  FbxFileTexture* File(const char* path) {
    auto* texture = Make<FbxFileTexture>("texture");
    texture->SetFileName(path);
    return texture;
  }
  FbxSurfacePhong* Phong(const char* name, FbxDouble3 diffuse = {1, 0.5, 0}) {
    auto* material = Make<FbxSurfacePhong>(name);
    material->FindProperty("DiffuseColor").Set(diffuse);
    return material;
  }
  template <typename Value>
  static void SetOwn(FbxObject* object, FbxDataType type, const char* name, const Value& value) {
    ASSERT_TRUE(FbxProperty::Create(object, type, name).Set(value)) << name;
  }
  // The material's map, read through a node; what reading prints goes to `printed_`.
  MaterialMap Read(FbxSurfaceMaterial* material) {
    MeshHolder_ holder;
    holder.node = Make<FbxNode>("node");
    holder.node->ConnectSrcObject(material);
    printed_ = Printed([&] { GetMeshMaterialMap(holder); });
    EXPECT_EQ(Printed([&] { GetMeshMaterialMap(holder); }), "");  // warnings come once
    return holder.materialMaps.at(0);
  }

  FbxManager* manager_ = FbxManager::Create();
  std::string printed_;
};

TEST_F(MaterialMapTest, TexturesAsTheSceneNamesThem) {
  FbxSurfacePhong* skin = Phong("Skin");
  skin->FindProperty("DiffuseColor").ConnectSrcObject(File("first.png"));
  skin->FindProperty("DiffuseColor").ConnectSrcObject(File("C:\\art\\skin.png"));
  skin->FindProperty("NormalMap").ConnectSrcObject(File("dir/.png"));
  skin->FindProperty("Bump").ConnectSrcObject(File("noextension"));
  skin->FindProperty("EmissiveColor").ConnectSrcObject(Make<FbxVideo>("video"));
  EXPECT_EQ(Read(skin), (MaterialMap{{"MATERIAL", "Skin"},
                                     {"DiffuseColor", "C:\\art\\skin.png"},
                                     {"NormalMap", "dir/.png"}}));
  EXPECT_EQ(printed_, "");
}

TEST_F(MaterialMapTest, RejectedNamesFallBackToTheColour) {
  const MaterialMap color = {{"MATERIAL", "Skin"},
                             {"DiffuseColor", "COLOR-FF7F00-Skin-DiffuseColor"}};
  EXPECT_EQ(Read(Phong("Skin")), color);
  for (const char* name : {"", "skin", "skin.", ".png", "dir.x/", "dir.x\\"}) {
    FbxSurfacePhong* skin = Phong("Skin");
    skin->FindProperty("DiffuseColor").ConnectSrcObject(File(name));
    EXPECT_EQ(Read(skin), color) << name;
  }
}

TEST_F(MaterialMapTest, ColoursOfEveryKind) {
  auto* own = Make<FbxSurfaceMaterial>("Own");
  SetOwn(own, FbxColor3DT, "DiffuseColor", FbxDouble3{0, 1, 0});
  auto* vector = Make<FbxSurfaceMaterial>("Vector");
  SetOwn(vector, FbxDouble3DT, "DiffuseColor", FbxDouble3{0, 1, 0});
  const std::vector<std::pair<FbxSurfaceMaterial*, std::string>> cases = {
      {Make<FbxSurfaceLambert>("L"), "COLOR-CCCCCC-L-DiffuseColor"},
      // Components out of range: nothing below 0, as many digits as it takes above 1.
      {Phong("P", {-1, 2, 1e300}), "COLOR-001FEFFFFFFFF-P-DiffuseColor"},
      {Phong("P", {NAN, 0.2, 1}), "COLOR-0033FF-P-DiffuseColor"},
      {own, "COLOR-00FF00-Own-DiffuseColor"},
      {vector, "MISSING-Vector-DiffuseColor"},
  };
  for (const auto& [material, expected] : cases) {
    EXPECT_EQ(Read(material).at("DiffuseColor"), expected);
  }

  MaterialMap map;
  auto* none = Make<FbxSurfaceMaterial>("None");
  const FbxProperty other = FbxProperty::Create(none, FbxDoubleDT, "Other");
  EXPECT_EQ(Printed([&] { AssignMissingTextureToMaterial(map, none, other); }),
            "WARNING: DiffuseColor is not valid\n");
  EXPECT_EQ(map["Other"], "MISSING-None-Other");
}

TEST_F(MaterialMapTest, Transparency) {
  const std::string grey = "WARNING: TransparentColor is not consistant.\n";
  const std::string invisible = "WARNING: Glass is a fully transparent material\n";
  const struct {
    double factor;
    double opacity;  // below 0: the material has no such property
    FbxDouble3 color;
    std::string alpha;  // "" for no entry
    std::string printed;
  } cases[] = {
      {0, 0.5, {0, 0, 0}, "7F7F7F", ""},
      {1, 1, {1, 1, 1}, "", ""},  // the opacity has the last word
      {0, -1, {1, 1, 1}, "", ""},
      {0.25, -1, {0, 0, 0}, "", ""},
      {0.25, -1, {0.5, 0.5, 0.5}, "7F7F7F", ""},  // the factor itself doesn't count
      {1, -1, {0.25, 0.5, 0.25}, "BFBFBF", grey},
      {1, -1, {1, 1, 1}, "000000", invisible},
      {0, 0, {0, 0, 0}, "000000", invisible},
      {0, 0.5, {1, 1, 1}, "7F7F7F", ""},  // the colour only stands in for the opacity
      {0, 2, {0, 0, 0}, "", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    FbxSurfacePhong* glass = Phong("Glass");
    glass->FindProperty("TransparencyFactor").Set(c.factor);
    glass->FindProperty("TransparentColor").Set(c.color);
    if (c.opacity >= 0) SetOwn(glass, FbxDoubleDT, "Opacity", c.opacity);
    EXPECT_EQ(Read(glass)["TransparencyFactor"],
              c.alpha.empty() ? "" : "ALPHA-" + c.alpha + "-Glass-TransparencyFactor");
    EXPECT_EQ(printed_, c.printed);
  }
}

TEST_F(MaterialMapTest, LayersHaveEntriesOfTheirOwn) {
  const auto layers = [this](const std::vector<const char*>& paths) {
    auto* layered = Make<FbxLayeredTexture>("layers");
    for (const char* path : paths) layered->ConnectSrcObject(File(path));
    return layered;
  };
  FbxLayeredTexture* few = layers({"a.png", "none", "c.png"});
  few->ConnectSrcObject(layers({"n.png"}));  // layers of layers aren't read
  FbxSurfacePhong* skin = Phong("Skin");
  skin->FindProperty("DiffuseColor").ConnectSrcObject(few);
  EXPECT_EQ(
      Read(skin),
      (MaterialMap{{"MATERIAL", "Skin"}, {"DiffuseColor0", "a.png"}, {"DiffuseColor2", "c.png"}}));

  FbxSurfacePhong* many = Phong("Many");
  many->FindProperty("DiffuseColor")
      .ConnectSrcObject(layers(std::vector<const char*>(kMaxTextureLayers + 1, "x.png")));
  EXPECT_EQ(Read(many).size(), kMaxTextureLayers + 1U);
  EXPECT_EQ(printed_,
            "WARNING: Material Many has 65 texture layers on DiffuseColor, and only the first 64 "
            "are used.\n");
}

TEST_F(MaterialMapTest, MaterialsByTheirIndexOnTheNode) {
  const MaterialMaps unused = {{0, {{"MATERIAL", "unused"}, {"DiffuseColor", "unused"}}}};
  MeshHolder_ nowhere;
  EXPECT_EQ(GetMeshMaterialMap(nowhere), unused);
  // A material without any entry leaves a gap.
  MeshHolder_ holder;
  holder.node = Make<FbxNode>("node");
  holder.node->ConnectSrcObject(Make<FbxSurfaceMaterial>("Nothing"));
  holder.node->ConnectSrcObject(Phong("Skin"));
  const MaterialMaps& maps = GetMeshMaterialMap(holder);
  ASSERT_EQ(maps.size(), 1U);
  EXPECT_EQ(MaterialName(maps.at(1)), "Skin");
}

}  // namespace
