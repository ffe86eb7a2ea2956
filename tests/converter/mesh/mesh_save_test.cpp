// The file of a group and the warnings and records that go with it.
#include "tests/converter/mesh/mesh_test.h"

namespace {

class MeshSave : public MeshTest {
 protected:
  std::string ExportSized(double x, double y, double z, double from = 0) {
    scene_ = SceneBuilder();
    scene_.Mesh("m", {from, from, from, from + x, from, from, from, from + y, from + z}, kOne);
    return Export();
  }
  static std::string Warning(const std::string& ratio, const std::string& size) {
    return "WARNING: Exported mesh m is " + ratio +
           " times the size of an ZEVO avatar, and may be too " + size + ".\n" + kWritten;
  }
};

TEST_F(MeshSave, WarnsOfUnlikelySizes) {
  EXPECT_EQ(ExportSized(100, 1, 1), kWritten);
  EXPECT_EQ(ExportSized(99.9, 1, 1), Warning("0.17", "small"));
  EXPECT_EQ(ExportSized(1, 60, 1), Warning("0.1", "small"));
  EXPECT_EQ(ExportSized(1, 1, 5000.9), kWritten);
  EXPECT_EQ(ExportSized(1, 1, 5001), Warning("8.3", "large"));
  EXPECT_EQ(ExportSized(252000, 1, 1), Warning("4.2e+02", "large"));
  // Below zero a mesh reaches to the origin.
  EXPECT_EQ(ExportSized(1, 1, 1, -150), kWritten);
  // Points without polygons count, too.
  scene_ = SceneBuilder();
  scene_.Mesh("m", {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 500}, kOne);
  EXPECT_EQ(Export(), kWritten);
}

TEST_F(MeshSave, MaterialsWhoseTrianglesVanishAreListedAllTheSame) {
  const int64_t node =
      scene_.Mesh("m", kQuad, {{0, 1, 2}, {0, 1, 1}, {2, 0, 1}}, {Materials({0, 1, 2})}).node;
  for (const char* name : {"c[0]", "b[1]", "a[2]"}) scene_.Material(node, name);
  EXPECT_EQ(Export(), "MESH: m MATERIAL: 0,1,2  FILENAME: m.xmf\n");
  const CalCoreMesh mesh = Load("m");
  ASSERT_EQ(mesh.submeshes.size(), 2U);
  EXPECT_EQ(mesh.submeshes[1]->coreMaterialThreadId, 2);
}

TEST_F(MeshSave, NoTrianglesNoFile) {
  scene_.Mesh("flat", kQuad, {{0, 1}, {2}, {0, 0, 1}});
  scene_.Mesh("no points", {}, kOne);
  scene_.Mesh("no polygons", {0, 0, 0, 1, 1, 1, 2, 2, 2}, {});
  EXPECT_EQ(Export(),
            "WARNING: flat has no geometry\n"
            "WARNING: no points has no geometry\n"
            "WARNING: no polygons has no geometry\n");
}

TEST_F(MeshSave, IndicesAboveSixteenBitsWrap) {
  constexpr int32_t kTriangles = 21900;  // 65,700 vertices
  std::vector<double> points;
  std::vector<std::vector<int32_t>> polygons;
  for (int32_t i = 0; i < kTriangles; ++i) {
    points.insert(points.end(), {i * 1.0, 0, 0, i * 1.0, 5, 0, i * 1.0, 0, 5});
    polygons.push_back({3 * i, 3 * i + 1, 3 * i + 2});
  }
  scene_.Mesh("m", points, polygons);
  Export();
  EXPECT_EQ(
      run_.err,
      "veltrum: mesh 'm' has 65700 vertices of material 0, more than the 65536 that faces can "
      "tell apart: its triangles come out wrong\n");
  const auto submesh = Submesh();
  EXPECT_EQ(submesh->vertices().size(), 65700U);
  EXPECT_EQ(FacesOf(*submesh).back(), (std::vector<int>{161, 162, 163}));
}

}  // namespace
