// Meshes: polygons, layers and their elements, and what a corner finds in them.
#include <cmath>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/scene/fbx_mesh.h"
#include "tests/support/loaded_scene.h"

using testing::ElementsAre;

namespace {

constexpr const char* kByCorner = "ByPolygonVertex";

// The record of a layer that names elements by type and number.
FbxRecord Layer(int number, const std::vector<std::pair<std::string, int>>& elements) {
  FbxRecord layer("Layer", {number}, {{"Version", {100}}});
  for (const auto& [type, index] : elements) {
    layer.Add({"LayerElement", {}, {{"Type", {type}}, {"TypedIndex", {index}}}});
  }
  return layer;
}

SceneBuilder WithMesh(FbxRecords records, std::vector<int32_t> polygons = {0, 1, -3, 0, 2, 1, -4}) {
  SceneBuilder scene;
  scene.AddMesh("mesh", {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0}, std::move(polygons),
                std::move(records));
  return scene;
}

TEST(ReadMesh, CutsIndicesIntoPolygons) {
  using Polygons = std::vector<std::vector<int>>;
  const std::vector<std::pair<std::vector<int32_t>, Polygons>> cases = {
      {{-1, -2}, {{0}, {1}}},
      {{0, 1, -3, 3, 2, 1, -1}, {{0, 1, 2}, {3, 2, 1, 0}}},
      {{0, 1, -3, 3, 2}, {{0, 1, 2}, {3, 2}}},
      {{5, std::numeric_limits<int>::min()}, {{5, 0x7FFFFFFE}}},
      {{}, {}}};
  for (const auto& [indices, expected] : cases) {
    const LoadedScene file(WithMesh({}, indices));
    const auto* mesh = file.Find<FbxMesh>("mesh");
    Polygons polygons(static_cast<size_t>(mesh->GetPolygonCount()));
    int start = 0;
    for (int p = 0; p < mesh->GetPolygonCount(); ++p) {
      EXPECT_EQ(mesh->GetPolygonVertexIndex(p), start);
      start += mesh->GetPolygonSize(p);
      for (int k = 0; k < mesh->GetPolygonSize(p); ++k) {
        polygons[static_cast<size_t>(p)].push_back(mesh->GetPolygonVertex(p, k));
      }
    }
    EXPECT_EQ(polygons, expected);
  }
}

TEST(ReadMesh, TakesPointsByThrees) {
  SceneBuilder scene;
  scene.AddMesh("rest", {1, 2, 3, 4, 5, 6, 7, 8}, {});
  scene.AddMesh("few", {1, 2}, {});
  scene.AddObject("Geometry", "Geometry", "none", "Mesh");
  const LoadedScene file(scene);
  EXPECT_THAT(file.Find<FbxMesh>("rest")->ControlPoints(),
              ElementsAre(FbxVector4(1, 2, 3, 0), FbxVector4(4, 5, 6, 0)));
  for (const char* name : {"few", "none"}) {
    EXPECT_EQ(file.Find<FbxMesh>(name)->GetControlPointsCount(), 0) << name;
  }
}

TEST(ReadMesh, ReadsElementsByTheirVersions) {
  using Doubles = std::vector<double>;
  const FbxRecords data = {{"Normals", {Doubles{0, 0, 1, 0, 1, 0, 1, 0}}},
                           {"NormalsW", {Doubles{5, 6, 7}}}};
  const LoadedScene file(WithMesh({
      Element("LayerElementNormal", "ByVertice", "Direct", data, "Class::plain"),
      Element("LayerElementNormal", "ByPolygon", "Index", data, "weighted", 102),
      Element("LayerElementNormal", "something", "else", data, "unread", 100),
      UVs("map1", "ByEdge", "IndexToDirect", {0.5, 1, 2}, {0, -1}),
      Colors(kByCorner, "Direct", {1, 2, 3, 4, 5}, {3}),
      Materials({2}),
      Element("LayerElementMaterial", "AllSame", "Direct",
              {{"Materials", {std::vector<int32_t>{2}}}}),
      Layer(0, {{"LayerElementNormal", 0},
                {"LayerElementUV", 0},
                {"LayerElementColor", 0},
                {"LayerElementMaterial", 0}}),
      Layer(1, {{"LayerElementNormal", 1}, {"LayerElementMaterial", 1}}),
      Layer(2, {{"LayerElementNormal", 2}}),
  }));
  const auto* mesh = file.Find<FbxMesh>("mesh");
  ASSERT_EQ(mesh->GetElementNormalCount(), 3);
  const FbxLayerElementNormal& plain = *mesh->GetElementNormal(0);
  EXPECT_EQ(plain.GetName(), "plain");
  EXPECT_EQ(plain.GetMappingMode(), FbxLayerElement::eByControlPoint);
  EXPECT_THAT(plain.direct, ElementsAre(FbxVector4(0, 0, 1, 1), FbxVector4(0, 1, 0, 1)));
  const FbxLayerElementNormal& weighted = *mesh->GetElementNormal(1);
  EXPECT_EQ(weighted.GetMappingMode(), FbxLayerElement::eByPolygon);
  EXPECT_EQ(weighted.GetReferenceMode(), FbxLayerElement::eIndex);
  EXPECT_EQ(weighted.direct[1][3], 6.0);
  const FbxLayerElementNormal& unread = *mesh->GetElementNormal(2);
  EXPECT_EQ(unread.GetName(), "");
  EXPECT_EQ(unread.GetMappingMode(), FbxLayerElement::eNone);
  EXPECT_EQ(unread.GetReferenceMode(), FbxLayerElement::eDirect);
  const FbxLayerElementUV& uv = *mesh->GetElementUV("map1");
  EXPECT_EQ(uv.GetMappingMode(), FbxLayerElement::eByEdge);
  EXPECT_THAT(uv.direct, ElementsAre(FbxVector2(0.5, 1)));
  EXPECT_THAT(uv.index, ElementsAre(0, -1));
  const FbxLayerElementVertexColor& color = *mesh->GetElementVertexColor();
  EXPECT_THAT(color.direct, ElementsAre(FbxColor{1, 2, 3, 4}));
  EXPECT_TRUE(color.index.empty());
  EXPECT_EQ(mesh->GetElementMaterial()->GetMappingMode(), FbxLayerElement::eAllSame);
  EXPECT_THAT(mesh->GetElementMaterial()->index, ElementsAre(2));
  EXPECT_TRUE(mesh->GetElementMaterial(1)->index.empty());
}

TEST(ReadMesh, PutsElementsIntoTheLayersThatNameThem) {
  const auto uv = [](const char* field, const char* name) {
    return Element(field, kByCorner, "Direct", {{"UV", {std::vector<double>{1, 2}}}}, name);
  };
  const LoadedScene file(WithMesh({
      uv("LayerElementUV", "a"),
      uv("LayerElementUV", "b"),
      uv("LayerElementUV", "unnamed by layers"),
      uv("LayerElementBumpUV", "bump"),
      // Layers out of order, in two records of one number, with numbers out of range.
      Layer(1, {{"LayerElementUV", 1}, {"LayerElementNormal", 0}}),
      Layer(0, {{"LayerElementBumpUV", 0}, {"LayerElementUV", 7}, {"LayerElementUV", -1}}),
      Layer(0, {{"LayerElementUV", 0}, {"NoSuchElement", 0}}),
      Layer(-5, {{"LayerElementUV", 0}}),
      Layer(2000000000, {{"LayerElementUV", 0}}),
  }));
  const auto* mesh = file.Find<FbxMesh>("mesh");
  EXPECT_EQ(mesh->GetElementNormalCount(), 0);
  std::vector<std::string> names;
  for (int i = 0; i < mesh->GetElementUVCount(); ++i) {
    names.push_back(mesh->GetElementUV(i)->GetName());
  }
  EXPECT_THAT(names, ElementsAre("a", "bump", "b", "a"));
  EXPECT_EQ(mesh->GetElementUVCount(FbxLayerElement::eUVFirst), 3);
  EXPECT_EQ(mesh->GetElementUV(1, FbxLayerElement::eUVFirst)->GetName(), "b");
  EXPECT_EQ(mesh->GetElementUV("unnamed by layers"), nullptr);
}

// No export asks so.
TEST(ReadMesh, FindsWhatACornerHas) {
  const LoadedScene file(
      WithMesh({Normals("ByVertice", "IndexToDirect", {1, 0, 0, 2, 0, 0}, {1, 0, -1, 0}),
                UVs("map1", kByCorner, "IndexToDirect", {1, 2, 3, 4}, {-1, 1}),
                Layer(0, {{"LayerElementNormal", 0}, {"LayerElementUV", 0}})}));
  const auto* mesh = file.Find<FbxMesh>("mesh");
  std::string found;
  for (const auto& [p, k] : {std::pair(0, 0), {0, 1}, {0, 2}, {1, 3}, {2, 0}, {0, 3}, {-1, 0}}) {
    FbxVector4 normal;
    const bool has = mesh->GetPolygonVertexNormal(p, k, normal);
    found += has ? std::to_string(std::lround(normal[0])) : "-";
  }
  EXPECT_EQ(found, "21-1---");
  FbxVector2 uv(-1, -1);
  bool unmapped = false;
  EXPECT_TRUE(mesh->GetPolygonVertexUV(0, 0, "map1", uv, unmapped));
  EXPECT_TRUE(unmapped && uv == FbxVector2(-1, -1)) << "kept where there is none";
  EXPECT_TRUE(mesh->GetPolygonVertexUV(0, 1, "map1", uv, unmapped));
  EXPECT_TRUE(!unmapped && uv == FbxVector2(3, 4));
  EXPECT_FALSE(mesh->GetPolygonVertexUV(1, 0, "map1", uv, unmapped));
  EXPECT_FALSE(mesh->GetPolygonVertexUV(0, 0, "map2", uv, unmapped));
}

}  // namespace
