// Where control points come out, and which bones hold them.
#include "tests/converter/mesh/mesh_test.h"

namespace {

using testing::ElementsAre;

const std::vector<double> kPoints{0, 0, 0, 200, 0, 0, 0, 200, 0};

using ControlPoints = MeshTest;

TEST_F(ControlPoints, TransformThenScaleThenAxes) {
  const int64_t parent =
      scene_.Node("parent", SceneBuilder::kRoot, {P("Lcl Translation", {0, 0, 1000})});
  scene_.Mesh("m", kPoints, kOne, {}, parent,
              {P("Lcl Scaling", {2, 3, 1}), P("GeometricTranslation", {10.0, 0.0, 0.0})});
  EXPECT_EQ(Export({"--scale=0.5", "--up=y", "--front=z"}), kWritten);
  // x is (10 + 200) * 2 * 0.5; the third axis takes y, the second the negated z.
  const auto submesh = Submesh();
  EXPECT_THAT(PositionOf(*submesh, 1), ElementsAre(210, -500, 0));
  EXPECT_THAT(PositionOf(*submesh, 2), ElementsAre(10, -500, 300));
}

class Weights : public MeshTest {
 protected:
  Weights() { root_ = "RootNode/Hips"; }

  int64_t hips_ = scene_.Bone("Hips");
  int64_t zed_ = scene_.Bone("Zed", hips_);
  int64_t arm_ = scene_.Bone("Arm", hips_);
  int64_t mesh_ = scene_.Mesh("m", kPoints, kOne).mesh;
  int64_t skin_ = scene_.Skin(mesh_);
};

TEST_F(Weights, InTheOrderOfPathsAndNormalized) {
  scene_.Cluster(skin_, zed_, {0, 1}, {0.3, 0.25});
  scene_.Cluster(skin_, arm_, {1, 0, 0}, {0.25, 0.5, 0.1});
  scene_.Cluster(skin_, hips_, {0, 5, -3}, {0.0, 1.0, 1.0});
  EXPECT_EQ(Export(), kWritten);
  // The second entry of Arm for point 0 replaces the first; Hips has only a zero for it.
  EXPECT_EQ(InfluencesOf(0), "2:0.25 1:0.75");
  EXPECT_EQ(InfluencesOf(1), "2:0.5 1:0.5");
  EXPECT_EQ(InfluencesOf(2), "0:1") << "a point without weights hangs on the first bone";
}

TEST_F(Weights, TheLastClusterDecidesHowTheyCount) {
  scene_.Cluster(skin_, arm_, {0}, {0.25});
  scene_.Cluster(skin_, 0, {}, {}, "Additive");
  EXPECT_EQ(Export(), "WARNING: Unsupported cluster mode\n" + kWritten);
  EXPECT_EQ(InfluencesOf(0), "2:0.25");
}

TEST_F(Weights, ALaterSkinReplacesWeights) {
  scene_.Cluster(skin_, arm_, {0, 1}, {1.0, 0.5}, "Total1");
  scene_.Cluster(scene_.Skin(mesh_), arm_, {0}, {0.5});
  EXPECT_EQ(Export(), kWritten);
  EXPECT_EQ(InfluencesOf(0), "2:1") << "0.5 and no more, then normalized";
  EXPECT_EQ(InfluencesOf(1), "2:1");
}

TEST_F(Weights, AClusterOfManySkinsCostsNoMoreThanOne) {
  // Two clusters of one bone; the first is in all skins and so replaces the second's weights. Its
  // entries in all the skins together would be counted in hundreds of millions.
  const size_t entries = 100000;
  const int64_t shared = scene_.Cluster(skin_, arm_, std::vector<int32_t>(entries, 0),
                                        std::vector<double>(entries, 0.5));
  scene_.Cluster(skin_, arm_, {0, 1}, {1.0, 1.0});
  scene_.Cluster(skin_, zed_, {0}, {0.5});
  for (int i = 0; i < 5000; ++i) scene_.Connect(shared, scene_.Skin(mesh_));
  EXPECT_EQ(Export(), kWritten);
  EXPECT_EQ(InfluencesOf(0), "2:0.5 1:0.5");
  EXPECT_EQ(InfluencesOf(1), "2:1");
}

TEST_F(Weights, BonesOutsideTheSkeletonAreErrors) {
  scene_.Cluster(skin_, scene_.Bone("Other"), {0, 1, 2}, {0.5, 0.0, 0.5});
  const std::string error =
      "ERROR: Mesh m (RootNode/m) is skinned to bone [RootNode/Other] which is not in the "
      "specified skeleton hierarchy\n";
  EXPECT_EQ(Export(), error + error + kWritten);
  EXPECT_EQ(InfluencesOf(0), "0:1");
}

TEST_F(Weights, AMeshInTheSkeletonFollowsItsNode) {
  const int64_t mesh = scene_.Mesh("below", kPoints, kOne, {}, hips_).mesh;
  // A skin that holds nothing in the skeleton leaves it at that.
  scene_.Cluster(scene_.Skin(mesh), 0, {0}, {1.0}, "Additive");
  Export();
  const auto submesh = Submesh("below");
  ASSERT_EQ(submesh->influences().size(), 3U);
  for (const auto& influence : submesh->influences()) EXPECT_EQ(influence.boneId, 3);
}

TEST_F(ControlPoints, AMeshThatIsNotFoundLeavesItsGroupTheRest) {
  // Of siblings of one name the first is found.
  scene_.Node("m");
  scene_.Mesh("m", kPoints, kOne);
  EXPECT_EQ(Export(), "WARNING: m has no geometry\n");
  const int64_t group = scene_.Node("group");
  // A name with a "/" can't be searched for by its path.
  scene_.Material(scene_.Mesh("a/b", kPoints, kOne, {}, group).node, "x[4]");
  scene_.Material(scene_.Mesh("c", kPoints, kOne, {}, group).node, "y[6]");
  EXPECT_EQ(Export({"-lg"}), "MESH: group-a/b MATERIAL: 4,6  FILENAME: group-a%2Fb.xmf\n");
  const CalCoreMesh mesh = Load("group-a%2Fb");
  ASSERT_EQ(mesh.submeshes.size(), 1U);
  EXPECT_EQ(mesh.submeshes[0]->coreMaterialThreadId, 6);
}

}  // namespace
