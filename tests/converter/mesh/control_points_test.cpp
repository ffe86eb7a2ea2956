// Where control points come out, and which bones hold them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/converter/mesh/mesh_scene.h"

namespace {

using testing::ElementsAre;

const std::vector<double> kPoints{0, 0, 0, 200, 0, 0, 0, 200, 0};
const std::vector<std::vector<int32_t>> kTriangle{{0, 1, 2}};

TEST(ControlPoints, TransformThenScaleThenAxes) {
  MeshScene scene;
  const int64_t parent =
      scene.AddNode("parent", "Null", SceneBuilder::kRoot, {P("Lcl Translation", {0, 0, 1000})});
  scene.AddMesh("m", kPoints, kTriangle, {}, parent,
                {P("Lcl Scaling", {2, 3, 1}),
                 P("GeometricTranslation", "Vector3D", "Vector", "", {10.0, 0.0, 0.0})});
  scene.args.scaleFactor = 0.5F;
  scene.args.upAxis = "y";
  scene.args.frontAxis = "z";
  EXPECT_EQ(scene.Export(), kWritten);
  // x is (10 + 200) * 2 * 0.5; the third axis takes y, the second the negated z.
  const auto submesh = scene.Submesh("m");
  EXPECT_THAT(PositionOf(*submesh, 1), ElementsAre(210, -500, 0));
  EXPECT_THAT(PositionOf(*submesh, 2), ElementsAre(10, -500, 300));
}

class Weights : public testing::Test {
 protected:
  Weights() {
    scene_.args.skeletonRootPath = "RootNode/Hips";
    scene_.AddMesh("m", kPoints, kTriangle);
    skin_ = scene_.AddSkin();
  }
  std::string Of(size_t vertex) { return InfluencesOf(*scene_.Submesh("m"), vertex); }

  MeshScene scene_;
  int64_t hips_ = scene_.AddNode("Hips", "LimbNode");
  int64_t zed_ = scene_.AddNode("Zed", "LimbNode", hips_);
  int64_t arm_ = scene_.AddNode("Arm", "LimbNode", hips_);
  int64_t skin_ = 0;
};

TEST_F(Weights, InTheOrderOfPathsAndNormalized) {
  scene_.AddCluster(skin_, zed_, {0, 1}, {0.3, 0.25});
  scene_.AddCluster(skin_, arm_, {1, 0, 0}, {0.25, 0.5, 0.1});
  scene_.AddCluster(skin_, hips_, {0, 5, -3}, {0.0, 1.0, 1.0});
  EXPECT_EQ(scene_.Export(), kWritten);
  // The second entry of Arm for point 0 replaces the first; Hips has only a zero for it.
  EXPECT_EQ(Of(0), "2:0.25 1:0.75");
  EXPECT_EQ(Of(1), "2:0.5 1:0.5");
  EXPECT_EQ(Of(2), "0:1") << "a point without weights hangs on the first bone";
}

TEST_F(Weights, TheLastClusterDecidesHowTheyCount) {
  scene_.AddCluster(skin_, arm_, {0}, {0.25});
  scene_.AddCluster(skin_, 0, {}, {}, "Additive");
  EXPECT_EQ(scene_.Export(), "WARNING: Unsupported cluster mode\n" + kWritten);
  EXPECT_EQ(Of(0), "2:0.25");
}

TEST_F(Weights, ALaterSkinReplacesWeights) {
  scene_.AddCluster(skin_, arm_, {0, 1}, {1.0, 0.5}, "Total1");
  scene_.AddCluster(scene_.AddSkin(), arm_, {0}, {0.5});
  EXPECT_EQ(scene_.Export(), kWritten);
  EXPECT_EQ(Of(0), "2:1") << "0.5 and no more, then normalized";
  EXPECT_EQ(Of(1), "2:1");
}

TEST_F(Weights, AClusterOfManySkinsCostsNoMoreThanOne) {
  // Two clusters of one bone; the first is in all skins and so replaces the second's weights. Its
  // entries in all the skins together would be counted in billions.
  const size_t entries = 100000;
  const int64_t shared = scene_.AddCluster(skin_, arm_, std::vector<int32_t>(entries, 0),
                                           std::vector<double>(entries, 0.5));
  scene_.AddCluster(skin_, arm_, {0, 1}, {1.0, 1.0});
  scene_.AddCluster(skin_, zed_, {0}, {0.5});
  for (int i = 0; i < 20000; ++i) scene_.builder.Connect(shared, scene_.AddSkin());
  EXPECT_EQ(scene_.Export(), kWritten);
  EXPECT_EQ(Of(0), "2:0.5 1:0.5");
  EXPECT_EQ(Of(1), "2:1");
}

TEST_F(Weights, BonesOutsideTheSkeletonAreErrors) {
  const int64_t other = scene_.AddNode("Other", "LimbNode");
  scene_.AddCluster(skin_, other, {0, 1, 2}, {0.5, 0.0, 0.5});
  const std::string error =
      "ERROR: Mesh m (RootNode/m) is skinned to bone [RootNode/Other] which is not in the "
      "specified skeleton hierarchy\n";
  EXPECT_EQ(scene_.Export(), error + error + kWritten);
  EXPECT_EQ(Of(0), "0:1");
}

TEST(WeightsWithoutSkin, AMeshInTheSkeletonFollowsItsNode) {
  MeshScene scene;
  const int64_t hips = scene.AddNode("Hips", "LimbNode");
  scene.AddNode("Arm", "LimbNode", hips);
  scene.AddMesh("m", kPoints, kTriangle, {}, hips);
  // A skin that holds nothing in the skeleton leaves it at that.
  scene.AddCluster(scene.AddSkin(), 0, {0}, {1.0}, "Additive");
  scene.args.skeletonRootPath = "RootNode/Hips";
  EXPECT_EQ(scene.Export(), kWritten);
  for (size_t i = 0; i < 3; ++i) EXPECT_EQ(InfluencesOf(*scene.Submesh("m"), i), "2:1");
}

TEST(ControlPoints, OfSiblingsOfOneNameTheFirstIsFound) {
  MeshScene scene;
  scene.AddNode("m");
  scene.AddMesh("m", kPoints, kTriangle);
  EXPECT_EQ(scene.Export(), "WARNING: m has no geometry\n");
  EXPECT_TRUE(scene.succeeded);
  EXPECT_FALSE(scene.HasFile("m"));
}

TEST(ControlPoints, AMeshThatIsNotFoundLeavesItsGroupTheRest) {
  MeshScene scene;
  scene.args.groupMeshes = true;
  const int64_t group = scene.AddNode("group");
  // A name with a "/" can't be searched for by its path.
  const int64_t slash = scene.AddMesh("a/b", kPoints, kTriangle, {}, group);
  scene.AddMaterial("x[4]", slash);
  const int64_t other = scene.AddMesh("c", kPoints, kTriangle, {}, group);
  scene.AddMaterial("y[6]", other);
  EXPECT_EQ(scene.Export(), "MESH: group-a/b MATERIAL: 4,6  FILENAME: group-a%2Fb.xmf\n");
  const CalCoreMesh mesh = scene.Load("group-a%2Fb");
  ASSERT_EQ(mesh.submeshes.size(), 1U);
  EXPECT_EQ(mesh.submeshes[0]->coreMaterialThreadId, 6);
}

}  // namespace
