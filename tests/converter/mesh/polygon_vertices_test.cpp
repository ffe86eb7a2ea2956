// The attributes of polygon corners under every mapping, and how control points split by them.
#include <algorithm>
#include <cmath>
#include <random>

#include "fbx/math/fbx_matrix.h"
#include "tests/converter/mesh/mesh_test.h"

namespace {

using testing::ElementsAre;

const std::vector<double> kXYZ{1, 0, 0, 0, 1, 0, 0, 0, 1};

class Corners : public MeshTest {
 protected:
  // Exports the two triangles with these elements and gives the one submesh.
  boost::shared_ptr<CalCoreSubmesh> ExportWith(FbxRecords elements) {
    scene_ = SceneBuilder();
    scene_.Mesh("m", kQuad, kTwo, std::move(elements));
    EXPECT_EQ(Export(), kWritten);
    return Submesh();
  }
};

// The axis of each vertex's normal, "0" where there is none.
std::string NormalsOf(const CalCoreSubmesh& submesh) {
  std::string axes;
  for (size_t i = 0; i < submesh.vertices().size(); ++i) {
    const std::vector<float> normal = NormalOf(submesh, i);
    axes += normal[0] != 0 ? "x" : normal[1] != 0 ? "y" : normal[2] != 0 ? "z" : "0";
  }
  return axes;
}

TEST_F(Corners, NormalsUnderEveryMapping) {
  const struct {
    const char* what;
    FbxRecords elements;
    const char* axes;
  } cases[] = {
      {"none", {}, "0000"},
      {"by point", {Normals("ByVertice", "Direct", {1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 0, 0})}, "xyzx"},
      {"by point, indexed", {Normals("ByVertice", "IndexToDirect", kXYZ, {2, 1, 1, 0})}, "zyyx"},
      {"by point, spelt right", {Normals("ByVertex", "Index", kXYZ, {2, 1, 1, 0})}, "zyyx"},
      {"by corner",
       {Normals("ByPolygonVertex", "IndexToDirect", kXYZ, {0, 0, 0, 1, 0, 2})},
       "xyxxz"},
      {"by polygon", {Normals("ByPolygon", "Direct", kXYZ)}, "xyxxyy"},
      {"all same", {Normals("AllSame", "Direct", kXYZ)}, "xxxx"},
      {"index out of range", {Normals("ByVertice", "IndexToDirect", kXYZ, {2, 1, -1, 9})}, "zy00"},
      {"too short", {Normals("ByVertice", "Direct", kXYZ)}, "xyz0"},
      {"plain index", {Normals("ByVertice", "Index", kXYZ, {1, 1, 1, 1})}, "yyyy"},
      {"by edge, then one for all",
       {Normals("ByEdge", "Direct", kXYZ), Normals("AllSame", "IndexToDirect", kXYZ, {2})},
       "zzzz"},
      {"of two elements the first",
       {Normals("AllSame", "Direct", {0, 1, 0}), Normals("AllSame", "Direct", kXYZ)},
       "yyyy"},
      {"lengths don't count", {Normals("ByPolygon", "Direct", {2, 0, 0, 7, 0, 0})}, "xxxx"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(NormalsOf(*ExportWith(c.elements)), c.axes);
  }
}

TEST_F(Corners, NormalsTurnWithTheNodeButNotWithTheAxes) {
  scene_.Mesh("m", kQuad, kTwo, {Normals("AllSame", "Direct", {1, 0, 0})}, SceneBuilder::kRoot,
              {P("Lcl Rotation", {0, 0, 90}), P("Lcl Scaling", {1, 5, 1})});
  Export({"--up=y", "--front=z"});
  const std::vector<float> normal = NormalOf(*Submesh(), 0);
  EXPECT_NEAR(normal[0], 0, 1e-7);
  EXPECT_NEAR(normal[1], 1, 1e-7);
}

TEST_F(Corners, ColorsUnderEveryMapping) {
  const std::vector<double> rgb{1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 0.5};
  constexpr uint32_t kRed = 0xFFFF0000;
  constexpr uint32_t kGreen = 0xFF00FF00;
  constexpr uint32_t kBlue = 0xFF0000FF;
  constexpr uint32_t kWhite = 0xFFFFFFFF;
  const struct {
    const char* what;
    FbxRecords elements;
    std::vector<uint32_t> words;
  } cases[] = {
      {"none", {}, std::vector<uint32_t>(4, kWhite)},
      {"by point", {Colors("ByVertice", "Direct", rgb)}, {kRed, kGreen, kBlue, kWhite}},
      {"by corner",
       {Colors("ByPolygonVertex", "IndexToDirect", rgb, {0, 1, 2, 0, 2, 1})},
       {kRed, kGreen, kBlue, kGreen}},
      {"by polygon: the points 0 and 2 split",
       {Colors("ByPolygon", "Direct", rgb)},
       {kRed, kGreen, kRed, kRed, kGreen, kGreen}},
      {"all same", {Colors("AllSame", "IndexToDirect", rgb, {2})}, {kBlue, kBlue, kBlue, kBlue}},
      {"plain index is not known",
       {Colors("ByVertice", "Index", rgb, {1, 1, 1, 1})},
       std::vector<uint32_t>(4, kWhite)},
      {"fractions are cut",
       {Colors("AllSame", "Direct", {0.5, 0.999, 0.1, 0.3})},
       std::vector<uint32_t>(4, 0xFF7FFE19)},
      {"alpha splits but is not written",
       {Colors("ByPolygon", "Direct", {1, 1, 1, 1, 1, 1, 1, 0.5})},
       std::vector<uint32_t>(6, kWhite)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(ExportWith(c.elements)->vertexColors(), c.words);
  }
}

TEST_F(Corners, OfUVsTheFirstSetIsWrittenAndAllAreCompared) {
  const FbxRecord first =
      UVs("a", "ByPolygonVertex", "IndexToDirect", {0, 0.25, 1, 0.75}, {0, 1, 1, 0, 1, -1});
  const auto submesh = ExportWith({first});
  ASSERT_EQ(submesh->vertices().size(), 4U);
  const auto& uvs = submesh->textureCoordinates();
  EXPECT_EQ(uvs[0].v, 0.75F) << "turned upside down";
  EXPECT_EQ(uvs[1].u, 1.0F);
  EXPECT_EQ(uvs[3].v, 1.0F) << "a corner without a coordinate has (0, 0)";

  const FbxRecord second = UVs("b", "ByPolygon", "Direct", {0, 0, 1, 1});
  EXPECT_EQ(ExportWith({first, second})->vertices().size(), 6U);
  // A set is read by its name, which finds the first.
  EXPECT_EQ(ExportWith({first, UVs("a", "ByPolygon", "Direct", {0, 0, 1, 1})})->vertices().size(),
            4U);
  // One entry for all is no mapping of UVs.
  EXPECT_EQ(ExportWith({UVs("a", "AllSame", "Direct", {1, 1})})->textureCoordinates()[0].u, 0.0F);
}

TEST_F(Corners, ACubeWithHardEdges) {
  std::vector<double> points;
  for (int i = 0; i < 8; ++i) {
    for (int axis = 0; axis < 3; ++axis) points.push_back((i >> axis & 1) * 200);
  }
  scene_.Mesh(
      "m", points,
      {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}},
      {Normals("ByPolygon", "Direct", {0, 0, -1, 0, 0, 1, 0, -1, 0, 0, 1, 0, -1, 0, 0, 1, 0, 0})});
  Export();
  const auto submesh = Submesh();
  ASSERT_EQ(submesh->vertices().size(), 24U);
  // By control point, and on each in the order of the polygons.
  EXPECT_THAT(NormalOf(*submesh, 0), ElementsAre(0, 0, -1));
  EXPECT_THAT(NormalOf(*submesh, 1), ElementsAre(0, -1, 0));
  EXPECT_THAT(NormalOf(*submesh, 2), ElementsAre(-1, 0, 0));
  EXPECT_THAT(PositionOf(*submesh, 3), ElementsAre(200, 0, 0));
  EXPECT_EQ(FacesOf(*submesh)[0], (std::vector<int>{0, 6, 9}));
  EXPECT_EQ(FacesOf(*submesh)[1], (std::vector<int>{0, 9, 3}));
}

TEST_F(Corners, ANaNEndsAComparison) {
  // A disc with colours of few values; each corner at the hub is the first vertex before it that
  // agrees with it as far as neither has a NaN.
  std::mt19937 random(5);
  constexpr size_t kCount = 1500;
  std::vector<double> points{0, 0, 0};
  std::vector<std::vector<int32_t>> polygons;
  std::vector<double> colors;
  std::vector<const double*> list;
  std::vector<int> expected;
  for (size_t i = 0; i < kCount; ++i) {
    const auto x = static_cast<double>(i);
    points.insert(points.end(), {200 + x, 10 * x, 0, 210 + x, 10 * x, 0});
    const auto corner = static_cast<int32_t>(2 * i);
    polygons.push_back({corner + 1, corner + 2, 0});
    for (int c = 0; c < 4; ++c) {
      const auto value = static_cast<double>(random() % (c == 0 ? 100 : 5));
      colors.push_back(i > 60 && random() % 30 == 0 ? NAN : value);
    }
  }
  for (size_t i = 0; i < kCount; ++i) {
    const double* color = &colors[4 * i];
    const auto isSame = [color](const double* other) {
      for (const int c : {0, 2, 1, 3}) {
        if (color[c] != other[c]) return std::isnan(color[c]) || std::isnan(other[c]);
      }
      return true;
    };
    const auto found = std::find_if(list.begin(), list.end(), isSame);
    expected.push_back(static_cast<int>(found - list.begin()));
    if (found == list.end()) list.push_back(color);
  }
  scene_.Mesh("m", points, polygons, {Colors("ByPolygon", "Direct", colors)});
  Export();
  const auto faces = FacesOf(*Submesh("m"));
  ASSERT_EQ(faces.size(), kCount);
  for (size_t i = 0; i < kCount; ++i) ASSERT_EQ(faces[i][2], expected[i]) << i;
}

TEST_F(Corners, MorphNormalsMayBeALittleApart) {
  // A disc whose corners at the hub differ in their morph normals alone: the mesh's own are all the
  // same, since nobody knows the mapping of those that the morph starts from.
  std::mt19937 random(7);
  constexpr size_t kCount = 1500;
  std::vector<double> points{0, 0, 0};
  std::vector<std::vector<int32_t>> polygons;
  std::vector<double> normals;
  std::vector<FbxVector4> list;
  std::vector<int> expected;
  for (size_t i = 0; i < kCount; ++i) {
    const auto x = static_cast<double>(i);
    points.insert(points.end(), {200 + x, 10 * x, 0, 210 + x, 10 * x, 0});
    const auto corner = static_cast<int32_t>(2 * i);
    polygons.push_back({corner + 1, corner + 2, 0});
    FbxVector4 normal;
    for (size_t axis = 0; axis < 3; ++axis) {
      normal[axis] =
          0.1 * static_cast<double>(random() % 7) + 3e-7 * static_cast<double>(random() % 9);
    }
    normal[2] += 1;
    for (int k = 0; k < 3; ++k) normals.insert(normals.end(), {normal[0], normal[1], normal[2]});
    normal.Normalize();
    const auto found = std::find_if(list.begin(), list.end(), [&](const FbxVector4& other) {
      return std::abs(normal[0] - other[0]) <= 1e-6 && std::abs(normal[1] - other[1]) <= 1e-6 &&
             std::abs(normal[2] - other[2]) <= 1e-6;
    });
    expected.push_back(static_cast<int>(found - list.begin()));
    if (found == list.end()) list.push_back(normal);
  }
  ASSERT_GT(list.size(), 400U);
  ASSERT_LT(list.size(), 1400U);
  const auto ids = scene_.Mesh(
      "m", points, polygons,
      {Normals("Unheard of", "Direct", normals), Normals("AllSame", "Direct", {0, 0, 1})});
  scene_.Target(scene_.Channel(scene_.BlendShape(ids.mesh), "a"), {1}, {1, 0, 0}, {1, 0, 0});
  Export();
  const auto faces = FacesOf(*Submesh("m"));
  ASSERT_EQ(faces.size(), kCount);
  for (size_t i = 0; i < kCount; ++i) ASSERT_EQ(faces[i][2], expected[i]) << i;
}

TEST_F(Corners, PolygonsGoByMaterial) {
  const std::vector<std::vector<int32_t>> polygons{
      {0, 1, 2}, {0, 2, 3}, {1, 2, 3}, {0, 1, 3}, {3, 2, 1}};
  const int64_t node = scene_.Mesh("m", kQuad, polygons, {Materials({1, 0, 7, -2})}).node;
  for (const char* name : {"a[5]", "b[2]"}) scene_.Material(node, name);
  EXPECT_EQ(Export(), "MESH: m MATERIAL: 2,5  FILENAME: m.xmf\n");
  const CalCoreMesh mesh = Load("m");
  ASSERT_EQ(mesh.submeshes.size(), 2U);
  EXPECT_EQ(mesh.submeshes[0]->coreMaterialThreadId, 2);
  EXPECT_EQ(mesh.submeshes[0]->faces().size(), 1U);
  // Slots out of range are slot 0, and a polygon behind the end has its predecessor's.
  EXPECT_EQ(mesh.submeshes[1]->faces().size(), 4U);
}

TEST_F(Corners, OfTwoSlotsWithOneIdAPlainExportKeepsTheLater) {
  for (const bool grouped : {false, true}) {
    scene_ = SceneBuilder();
    const int64_t group = scene_.Node("group");
    const int64_t node = scene_.Mesh("m", kQuad, kTwo, {Materials({0, 1})}, group).node;
    for (int i = 0; i < 2; ++i) scene_.Material(node, "same");
    Export({grouped ? "-lg" : "-l"});
    EXPECT_EQ(run_.err, grouped ? ""
                                : "veltrum: mesh 'm' has several material slots with one material; "
                                  "only the polygons of the last of them are written, and 1 "
                                  "polygon is lost\n");
    const CalCoreMesh mesh = Load(grouped ? "group-m" : "m");
    ASSERT_EQ(mesh.submeshes.size(), 1U);
    const CalCoreSubmesh& submesh = *mesh.submeshes[0];
    EXPECT_EQ(submesh.faces().size(), grouped ? 2U : 1U);
    // The later slot stands first, and the slot tells corners of one point apart.
    EXPECT_EQ(submesh.vertices().size(), grouped ? 6U : 3U);
    if (grouped) {
      EXPECT_EQ(FacesOf(submesh)[0], (std::vector<int>{0, 3, 5}));
    }
  }
}

TEST_F(Corners, PolygonsWithMissingPointsAreLeftOut) {
  const SceneBuilder::MeshIds ids = scene_.Mesh(
      "m", kQuad, {{0, 1, 2}, {0, 1, 4}, {2147483646, 0, 1}, {0, 2, 3}, {1}, {2, 3}},
      {Normals("ByPolygonVertex", "Direct", std::vector<double>(45, 1.0)),
       Normals("ByPolygonVertex", "IndexToDirect", {}, {}),
       UVs("", "ByPolygonVertex", "IndexToDirect", {NAN, 1}, {0, 0, 5, -7}),
       Colors("ByVertice", "IndexToDirect", {NAN, 1, 1, 1e300}, {0, 0, 0, -9}), Materials({})});
  scene_.Cluster(scene_.Skin(ids.mesh), scene_.Bone("bone"), {9, -1}, {1, NAN});
  EXPECT_EQ(Export(),
            "WARNING: Mesh m (RootNode/m) names control points that do not exist; polygons left "
            "out: 2\n" +
                kWritten);
  EXPECT_EQ(Submesh()->faces().size(), 2U);
}

}  // namespace
