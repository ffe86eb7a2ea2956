// Skins, blend shapes and poses.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_mesh.h"
#include "tests/fbx/near.h"
#include "tests/support/loaded_scene.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// Moved along X by `x`.
std::vector<double> Moved(double x) { return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, 0, 0, 1}; }

TEST(ReadDeformers, ClustersHoldTheirSkinsMatricesInTheWorld) {
  SceneBuilder scene;
  const int64_t mesh = scene.AddMesh("mesh", {0, 0, 0}, {});
  const int64_t bone = scene.AddModel("bone", "LimbNode");
  const int64_t skin = scene.AddSkin("skin");
  // The bone is turned by 90 degrees about Z.
  const int64_t cluster = scene.AddCluster("full", {3, 1}, {0.25, 0.75}, Moved(1),
                                           {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 10, 20, 30, 1});
  const int64_t bare = scene.AddCluster("bare", {}, {}, {}, {});
  scene.AddCluster("short", {1, 2, 3}, {0.5}, Moved(3), {1, 2});
  scene.Object(cluster).Add({"Mode", {"Total1"}});
  scene.Object(bare).Add({"Mode", {"Nonsense"}});
  scene.Object(skin).Add({"SkinningType", {"Blend"}});
  scene.Object(skin).Add({"Indexes", {std::vector<int32_t>{0, 1, 2}}});
  scene.Object(skin).Add({"BlendWeights", {std::vector<double>{0.5, 1}}});
  for (const int64_t c : {cluster, bare}) scene.Connect(c, skin);
  scene.Connect(skin, mesh);
  scene.Connect(bone, cluster);
  for (const FbxFormat& format : std::vector<FbxFormat>{{},
                                                        {.ascii = true},
                                                        {.version = 7700, .compress = true},
                                                        {.version = 7450, .wideOffsets = true},
                                                        {.bigEndian = true}}) {
    const LoadedScene file(scene, format);
    const auto* m = file.Find<FbxMesh>("mesh");
    ASSERT_EQ(m->GetDeformerCount(FbxDeformer::eSkin), 1);
    EXPECT_EQ(m->GetDeformerCount(FbxDeformer::eBlendShape), 0);
    const auto* s = static_cast<FbxSkin*>(m->GetDeformer(0, FbxDeformer::eSkin));
    EXPECT_EQ(s->skinningType, FbxSkin::eBlend);
    EXPECT_THAT(s->blendWeights, ElementsAre(0.5, 1.0, 0.0));
    ASSERT_EQ(s->GetClusterCount(), 2);
    const FbxCluster& full = *s->GetCluster(0);
    EXPECT_EQ(full.GetLink(), &file.Node("bone"));
    EXPECT_EQ(full.GetLinkMode(), FbxCluster::eTotalOne);
    EXPECT_THAT(full.indices, ElementsAre(3, 1));
    EXPECT_THAT(full.weights, ElementsAre(0.25, 0.75));
    const FbxVector4 turn(0, 0, 90);
    ExpectNear(full.transformLink, FbxAMatrix({10, 20, 30}, turn, {1, 1, 1}));
    // The move along the bone's X is one along the world's Y.
    ExpectNear(full.transform, FbxAMatrix({10, 21, 30}, turn, {1, 1, 1}));

    const FbxCluster& empty = *s->GetCluster(1);
    EXPECT_EQ(empty.GetControlPointIndices(), nullptr);
    EXPECT_EQ(empty.GetControlPointWeights(), nullptr);
    EXPECT_EQ(empty.GetLink(), nullptr);
    EXPECT_EQ(empty.GetLinkMode(), FbxCluster::eNormalize);
    EXPECT_TRUE(empty.transform.IsIdentity());
    const auto* cut = file.Find<FbxCluster>("short");
    EXPECT_THAT(cut->weights, ElementsAre(0.5, 0.0, 0.0));
    EXPECT_TRUE(cut->transformLink.IsIdentity());
    EXPECT_EQ(cut->transform.GetT()[0], 3.0);
  }
}

// A quad with a blend shape, and a channel for each shape.
class ShapeScene : public SceneBuilder {
 public:
  explicit ShapeScene(FbxRecords elements = {})
      : blendShape_(BlendShape(
            Mesh("mesh", {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}, {{0, 1, 2, 3}}, std::move(elements))
                .mesh)) {}
  void AddShape(const char* name, FbxRecords records) {
    const int64_t shape = AddObject("Geometry", "Geometry", name, "Shape", {}, std::move(records));
    const int64_t channel = AddObject("Deformer", "SubDeformer", name, "BlendShapeChannel",
                                      {P("DeformPercent", "Number", "", "A", {25.0})},
                                      {{"FullWeights", {std::vector<double>{100}}}});
    Connect(channel, blendShape_);
    Connect(shape, channel);
  }

 private:
  int64_t blendShape_;
};

TEST(ReadDeformers, ShapesAreTheirMeshWithOffsets) {
  ShapeScene scene;
  scene.AddShape("one", {{"Indexes", {std::vector<int32_t>{2}}},
                         {"Vertices", {std::vector<double>{0, 0, 5}}}});
  scene.AddShape("odd", {{"Indexes", {std::vector<int32_t>{1, 1, -1, 99, 0}}},
                         {"Vertices", {std::vector<double>{1, 0, 0, 1, 0, 0, 7, 7, 7, 7, 7, 7}}}});
  scene.AddShape("none", {{"Vertices", {std::vector<double>{1, 2, 3}}}});
  const LoadedScene file(scene);
  const auto* mesh = file.Find<FbxMesh>("mesh");
  EXPECT_EQ(mesh->GetShapeCount(), 3);
  const auto* blendShape =
      static_cast<FbxBlendShape*>(mesh->GetDeformer(0, FbxDeformer::eBlendShape));
  ASSERT_EQ(blendShape->GetBlendShapeChannelCount(), 3);
  const FbxBlendShapeChannel& channel = *blendShape->GetBlendShapeChannel(0);
  EXPECT_EQ(channel.DeformPercent().Get<double>(), 25.0);
  EXPECT_THAT(channel.GetTargetShapeFullWeights(), ElementsAre(100.0));
  EXPECT_EQ(channel.GetTargetShape(0), file.Find<FbxShape>("one"));

  const auto points = [&](const char* name) { return file.Find<FbxShape>(name)->ControlPoints(); };
  const FbxVector4 a(0, 0, 0, 0), d(0, 1, 0, 0);
  EXPECT_THAT(points("one"), ElementsAre(a, FbxVector4(1, 0, 0, 0), FbxVector4(1, 1, 5, 0), d));
  EXPECT_THAT(points("odd"), ElementsAre(a, FbxVector4(3, 0, 0, 0), FbxVector4(1, 1, 0, 0), d));
  EXPECT_THAT(points("none"), IsEmpty());
  FbxStatus status;
  EXPECT_EQ(mesh->GetShapeChannel(0, 3, nullptr, &status), nullptr);
  EXPECT_EQ(status.GetCode(), FbxStatus::eIndexOutOfRange);
}

TEST(ReadDeformers, ShapesTurnTheNormalsOfTheirPoints) {
  const FbxRecords shape = {{"Indexes", {std::vector<int32_t>{2}}},
                            {"Vertices", {std::vector<double>{0, 0, 5}}},
                            {"Normals", {std::vector<double>{1, 0, 0}}}};
  // By polygon, so that the corners of the polygon come apart; and none, so that they are made.
  const FbxRecords byPolygon = {Normals("ByPolygon", "Direct", {0, 0, 1})};
  for (const FbxRecords& normals : {byPolygon, FbxRecords{}}) {
    ShapeScene scene(normals);
    scene.AddShape("one", shape);
    scene.AddShape("none", {{"Normals", {std::vector<double>{1, 0, 0}}}});
    const LoadedScene file(scene);
    EXPECT_EQ(file.Find<FbxShape>("none")->GetElementNormal(), nullptr);
    EXPECT_EQ(file.Find<FbxMesh>("mesh")->GetElementNormalCount(), 1);
    const FbxLayerElementNormal* element = file.Find<FbxShape>("one")->GetElementNormal();
    ASSERT_NE(element, nullptr);
    EXPECT_EQ(element->GetMappingMode(), FbxLayerElement::eByPolygonVertex);
    ASSERT_EQ(element->direct.size(), 4U);
    ExpectNear(element->direct[1], {0, 0, 1});
    ExpectNear(element->direct[2], {std::sqrt(0.5), 0, std::sqrt(0.5)});
  }
}

TEST(ReadPoses, HoldTheNodesThatExist) {
  SceneBuilder scene;
  const int64_t a = scene.AddModel("a");
  const int64_t b = scene.AddModel("b");
  const int64_t mesh = scene.AddMesh("mesh", {}, {});
  const auto pose = [&](const char* name, const char* kind, int32_t count, FbxRecords nodes) {
    nodes.insert(nodes.begin(), {"NbPoseNodes", {count}});
    scene.AddObject("Pose", "Pose", name, kind, {}, std::move(nodes));
  };
  const auto node = [](int64_t id, double x, int32_t local = 0) {
    return FbxRecord("PoseNode", {}, {{"Node", {id}}, {"Matrix", {Moved(x)}}, {"Local", {local}}});
  };
  pose("bind", "BindPose", 100,
       {node(424242, 1),
        node(b, 2, 1),
        node(mesh, 3),
        node(a, 4),
        node(b, 5),
        {"PoseNode", {}, {{"Node", {a}}}}});
  pose("cut", "BindPose", 1, {node(a, 6), node(b, 7)});
  pose("negative", "BindPose", -3, {node(a, 6), node(b, 7)});
  pose("rest", "RestPose", 1, {node(b, 8)});
  const LoadedScene file(scene);
  const auto* bind = file.Find<FbxPose>("bind");
  ASSERT_EQ(bind->GetCount(), 4);
  EXPECT_EQ(bind->TypeLetter(), 'b');
  EXPECT_EQ(bind->Find(&file.Node("b")), 0);
  EXPECT_EQ(bind->Find(&file.Node("a")), 1);
  EXPECT_EQ(bind->Find("a", FbxPose::eInitialName), 1);
  EXPECT_EQ(bind->Find("a", 0), -1);
  EXPECT_EQ(bind->GetMatrix(1).Get(3, 0), 4.0);
  EXPECT_TRUE(bind->IsLocalMatrix(0) && !bind->IsLocalMatrix(1));
  EXPECT_TRUE(bind->GetMatrix(3) == FbxMatrix{} && bind->GetMatrix(99) == FbxMatrix{});
  EXPECT_EQ(file.Find<FbxPose>("cut")->GetCount(), 1);
  EXPECT_EQ(file.Find<FbxPose>("negative")->GetCount(), 0);
  EXPECT_EQ(file.Find<FbxPose>("rest")->TypeLetter(), 'r');
}

}  // namespace
