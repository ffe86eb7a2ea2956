// Mesh export where a scene with a case in each mesh doesn't do: large meshes and many of them, and
// the older form of command.
#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include <gmock/gmock.h>

#include "cal3d/io/loader.h"
#include "cal3d/model/core_mesh.h"
#include "converter/mesh/mesh_stages.h"
#include "fbx/math/fbx_matrix.h"
#include "tests/support/program_test.h"

namespace {

class LargeMeshes : public SceneTest {
 protected:
  std::string Export(const std::string& root = "RootNode", const std::string& option = "-n") {
    return Run({option, "--root=" + root, "s.fbx", "export", "mesh"});
  }
  // Of the mesh "m" as it was written.
  CalCoreSubmesh Submesh() const {
    const std::string bytes = File("m.xmf");
    return *CalLoader::loadCoreMesh(CalBufferSource(bytes.data(), bytes.size()))->submeshes.at(0);
  }
  static std::vector<std::vector<int>> Faces(const CalCoreSubmesh& submesh) {
    std::vector<std::vector<int>> faces;
    for (const CalCoreSubmesh::Face& face : submesh.faces()) {
      faces.push_back({face.vertexId[0], face.vertexId[1], face.vertexId[2]});
    }
    return faces;
  }
};

TEST(MeshSelection, ByTheNameOfVersion1) {
  MeshHolder_ holder;
  holder.name = "Body_1";
  ConversionArguments args;
  args.commandVersion = 1;
  args.exportObjectNames = {"Body_1"};
  EXPECT_FALSE(isMeshNameMatch(args, &holder));
  args.exportObjectName = "Body_1";
  EXPECT_TRUE(isMeshNameMatch(args, &holder));
}

TEST_F(LargeMeshes, ManyAreGroupedByDepth) {
  for (const int count : {100, 101}) {
    scene_ = SceneBuilder();
    const int64_t top = scene_.Node("top", scene_.Node("group"));
    for (int i = 0; i < count; ++i) scene_.Mesh("m" + std::to_string(i), {}, top);
    EXPECT_THAT(
        Export("RootNode", "-lg"),
        testing::EndsWith(count == 100 ? "\nMESH: group-top MATERIAL: 0  FILENAME: group-top.xmf\n"
                                       : "\nMESH: top-m0 MATERIAL: 0  FILENAME: top-m0.xmf\n"));
  }
}

TEST_F(LargeMeshes, AClusterOfManySkinsCostsNoMoreThanOne) {
  // Two clusters of one bone; the first is in all skins and so replaces the second's weights. Its
  // entries in all the skins together would be counted in hundreds of millions.
  const int64_t hips = scene_.Bone("Hips");
  const int64_t mesh = scene_.Mesh("m").mesh;
  const int64_t skin = scene_.Skin(mesh);
  const size_t entries = 100000;
  const int64_t shared =
      scene_.Cluster(skin, scene_.Bone("Arm", hips), std::vector<int32_t>(entries, 0),
                     std::vector<double>(entries, 0.5));
  scene_.Cluster(skin, scene_.Bone("Zed", hips), {0}, {0.25});
  for (int i = 0; i < 5000; ++i) scene_.Connect(shared, scene_.Skin(mesh));
  Export("RootNode/Hips");
  std::vector<std::pair<int, float>> weights;
  const CalCoreSubmesh submesh = Submesh();
  for (const auto& influence : submesh.influences()) {
    weights.emplace_back(influence.boneId, influence.weight);
  }
  EXPECT_THAT(weights, testing::ElementsAre(std::pair(1, 2 / 3.0F), std::pair(2, 1 / 3.0F),
                                            std::pair(0, 1.0F), std::pair(0, 1.0F)));
}

TEST_F(LargeMeshes, IndicesAboveSixteenBitsWrap) {
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
  EXPECT_EQ(Submesh().vertices().size(), 65700U);
  EXPECT_EQ(Faces(Submesh()).back(), (std::vector<int>{161, 162, 163}));
}

// A disc of triangles around a hub, where all of them have a corner.
struct Disc {
  explicit Disc(size_t count) {
    for (size_t i = 0; i < count; ++i) {
      const auto x = static_cast<double>(i);
      points.insert(points.end(), {200 + x, 10 * x, 0, 210 + x, 10 * x, 0});
      const auto corner = static_cast<int32_t>(2 * i);
      polygons.push_back({corner + 1, corner + 2, 0});
    }
  }
  std::vector<double> points{0, 0, 0};
  std::vector<std::vector<int32_t>> polygons;
};

// For each value the first before it that is the same, as a number among those that are the first
// of their own.
template <typename Value, typename IsSame>
std::vector<int> FirstOfTheSame(const std::vector<Value>& values, const IsSame& isSame) {
  std::vector<Value> list;
  std::vector<int> firsts;
  for (const Value& value : values) {
    const auto found = std::find_if(list.begin(), list.end(),
                                    [&](const Value& other) { return isSame(value, other); });
    firsts.push_back(static_cast<int>(found - list.begin()));
    if (found == list.end()) list.push_back(value);
  }
  return firsts;
}

constexpr size_t kTriangles = 1500;

// Each corner at the hub is the first vertex before it that agrees with it as far as neither has a
// NaN.
TEST_F(LargeMeshes, ANaNEndsAComparison) {
  std::mt19937 random(5);
  const Disc disc(kTriangles);
  std::vector<double> written;
  std::vector<std::array<double, 4>> colors(kTriangles);
  for (size_t i = 0; i < kTriangles; ++i) {
    for (size_t c = 0; c < 4; ++c) {
      const auto value = static_cast<double>(random() % (c == 0 ? 100 : 5));
      colors[i][c] = i > 60 && random() % 30 == 0 ? NAN : value;
      written.push_back(colors[i][c]);
    }
  }
  const auto expected = FirstOfTheSame(colors, [](const auto& color, const auto& other) {
    for (const size_t c : {0U, 2U, 1U, 3U}) {
      if (color[c] != other[c]) return std::isnan(color[c]) || std::isnan(other[c]);
    }
    return true;
  });
  scene_.Mesh("m", disc.points, disc.polygons, {Colors("ByPolygon", "Direct", written)});
  Export();
  const auto faces = Faces(Submesh());
  ASSERT_EQ(faces.size(), kTriangles);
  for (size_t i = 0; i < kTriangles; ++i) ASSERT_EQ(faces[i][2], expected[i]) << i;
}

// The corners at the hub differ in their morph normals alone: the mesh's own are all the same,
// since nobody knows the mapping of those that the morph starts from.
TEST_F(LargeMeshes, MorphNormalsMayBeALittleApart) {
  std::mt19937 random(7);
  const Disc disc(kTriangles);
  std::vector<double> written;
  std::vector<FbxVector4> normals(kTriangles);
  for (FbxVector4& normal : normals) {
    for (size_t axis = 0; axis < 3; ++axis) {
      normal[axis] =
          0.1 * static_cast<double>(random() % 7) + 3e-7 * static_cast<double>(random() % 9);
    }
    normal[2] += 1;
    for (int k = 0; k < 3; ++k) written.insert(written.end(), {normal[0], normal[1], normal[2]});
    normal.Normalize();
  }
  const auto expected = FirstOfTheSame(normals, [](const FbxVector4& a, const FbxVector4& b) {
    return std::abs(a[0] - b[0]) <= 1e-6 && std::abs(a[1] - b[1]) <= 1e-6 &&
           std::abs(a[2] - b[2]) <= 1e-6;
  });
  const auto ids = scene_.Mesh(
      "m", disc.points, disc.polygons,
      {Normals("Unheard of", "Direct", written), Normals("AllSame", "Direct", {0, 0, 1})});
  scene_.Target(scene_.Channel(scene_.BlendShape(ids.mesh), "a"), {1}, {1, 0, 0}, {1, 0, 0});
  Export();
  const auto faces = Faces(Submesh());
  ASSERT_EQ(faces.size(), kTriangles);
  for (size_t i = 0; i < kTriangles; ++i) ASSERT_EQ(faces[i][2], expected[i]) << i;
}

}  // namespace
