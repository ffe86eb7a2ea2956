// The file of a group and the warnings and records that go with it.
#include <gtest/gtest.h>

#include "tests/converter/mesh/mesh_scene.h"

namespace {

std::string ExportSized(double x, double y, double z, double from = 0) {
  MeshScene scene;
  scene.AddMesh("m", {from, from, from, from + x, from, from, from, from + y, from + z},
                {{0, 1, 2}});
  return scene.Export();
}

std::string Warning(const std::string& ratio, const std::string& size) {
  return "WARNING: Exported mesh m is " + ratio +
         " times the size of an ZEVO avatar, and may be too " + size + ".\n" + kWritten;
}

TEST(MeshSave, WarnsOfUnlikelySizes) {
  EXPECT_EQ(ExportSized(100, 1, 1), kWritten);
  EXPECT_EQ(ExportSized(99.9, 1, 1), Warning("0.17", "small"));
  EXPECT_EQ(ExportSized(1, 60, 1), Warning("0.1", "small"));
  EXPECT_EQ(ExportSized(1, 1, 5000.9), kWritten);
  EXPECT_EQ(ExportSized(1, 1, 5001), Warning("8.3", "large"));
  EXPECT_EQ(ExportSized(252000, 1, 1), Warning("4.2e+02", "large"));
  // Below zero a mesh reaches to the origin.
  EXPECT_EQ(ExportSized(1, 1, 1, -150), kWritten);
}

TEST(MeshSave, BoundsTakeInPointsWithoutPolygons) {
  MeshScene scene;
  scene.AddMesh("m", {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 500}, {{0, 1, 2}});
  EXPECT_EQ(scene.Export(), kWritten);
}

TEST(MeshSave, MaterialsWhoseTrianglesVanishAreListedAllTheSame) {
  MeshScene scene;
  const int64_t node = scene.AddMesh("m", {0, 0, 0, 200, 0, 0, 0, 200, 0},
                                     {{0, 1, 2}, {0, 1, 1}, {2, 0, 1}}, {Materials({0, 1, 2})});
  for (const char* name : {"c[0]", "b[1]", "a[2]"}) scene.AddMaterial(name, node);
  EXPECT_EQ(scene.Export(), "MESH: m MATERIAL: 0,1,2  FILENAME: m.xmf\n");
  const CalCoreMesh mesh = scene.Load("m");
  ASSERT_EQ(mesh.submeshes.size(), 2U);
  EXPECT_EQ(mesh.submeshes[1]->coreMaterialThreadId, 2);
}

TEST(MeshSave, NoTrianglesNoFile) {
  MeshScene scene;
  scene.AddMesh("flat", {0, 0, 0, 200, 0, 0, 0, 200, 0}, {{0, 1}, {2}, {0, 0, 1}});
  scene.AddMesh("no points", {}, {{0, 1, 2}});
  scene.AddMesh("no polygons", {0, 0, 0, 1, 1, 1, 2, 2, 2}, {});
  EXPECT_EQ(scene.Export(),
            "WARNING: flat has no geometry\n"
            "WARNING: no points has no geometry\n"
            "WARNING: no polygons has no geometry\n");
  EXPECT_TRUE(scene.succeeded);
}

TEST(MeshSave, AnOutputFileNameIsUsedAsItStands) {
  MeshScene scene;
  scene.AddMesh("m", {0, 0, 0, 200, 0, 0, 0, 200, 0}, {{0, 1, 2}});
  scene.List(false);
  scene.args.outputFilename = scene.args.directoryForOutputFiles + "other name.xmf";
  EXPECT_EQ(scene.Export(), "MESH: m MATERIAL: 0  FILENAME: other name.xmf\n");
  EXPECT_TRUE(scene.HasFile("other name"));
}

TEST(MeshSave, IndicesAboveSixteenBitsWrap) {
  MeshScene scene;
  constexpr int32_t kTriangles = 21900;  // 65,700 vertices
  std::vector<double> points;
  std::vector<std::vector<int32_t>> polygons;
  for (int32_t i = 0; i < kTriangles; ++i) {
    points.insert(points.end(), {i * 1.0, 0, 0, i * 1.0, 5, 0, i * 1.0, 0, 5});
    polygons.push_back({3 * i, 3 * i + 1, 3 * i + 2});
  }
  scene.AddMesh("m", points, polygons);
  scene.Export();
  EXPECT_TRUE(scene.succeeded);
  const CalCoreMesh mesh = scene.Load("m");
  EXPECT_EQ(mesh.submeshes[0]->vertices().size(), 65700U);
  EXPECT_EQ(FacesOf(*mesh.submeshes[0]).back(), (std::vector<int>{161, 162, 163}));
}

}  // namespace
