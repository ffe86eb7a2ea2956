// Which meshes a command means, how they are grouped into files, and what a listing shows.
#include <gtest/gtest.h>

#include "converter/mesh/export_mesh.h"
#include "tests/converter/mesh/mesh_scene.h"

namespace {

const std::vector<double> kCorners{0, 0, 0, 200, 0, 0, 0, 200, 0};
const std::vector<std::vector<int32_t>> kFace{{0, 1, 2}};

TEST(MeshSelection, ByTheNameOfVersion1) {
  MeshHolder_ holder;
  holder.name = "Body_1";
  ConversionArguments args;
  args.commandVersion = 1;
  args.exportObjectNames = {"Body_1"};
  EXPECT_FALSE(isMeshNameMatch(args, &holder));
  args.exportObjectName = "Body_1";
  EXPECT_TRUE(isMeshNameMatch(args, &holder));
  args.commandVersion = 3;
  EXPECT_FALSE(isMeshNameMatch(args, &holder));
}

TEST(MeshSelection, EachMeshItsFileInTheOrderOfNames) {
  MeshScene scene;
  scene.AddMaterial("skin", scene.AddMesh("b b", kCorners, kFace));
  const int64_t branch = scene.AddNode("branch");
  scene.AddMesh("a", kCorners, kFace);
  scene.AddMesh("a", kCorners, kFace, {}, branch);
  EXPECT_EQ(scene.Export(),
            "MESH: a MATERIAL: 0  FILENAME: a.xmf\n"
            "MESH: a_1 MATERIAL: 0  FILENAME: a_1.xmf\n"
            "MESH: b b MATERIAL: 1  FILENAME: b%20b.xmf\n");
  EXPECT_TRUE(scene.succeeded);
  scene.args.exportObjectNames = {"b b", "nothing"};
  scene.args.encodeNames = true;
  // Materials of meshes that are not selected take no numbers.
  EXPECT_EQ(scene.Export(), "MESH: b%20b MATERIAL: 0  FILENAME: b%20b.xmf\n");
  scene.args.exportObjectNames = {"nothing"};
  EXPECT_EQ(scene.Export(), "");
  EXPECT_TRUE(scene.succeeded);
}

TEST(MeshSelection, GroupsByName) {
  MeshScene scene;
  const int64_t group = scene.AddNode("MyGroup");
  const int64_t first = scene.AddMesh("two", kCorners, kFace, {}, group);
  scene.AddMaterial("skin", first);
  const int64_t inner = scene.AddNode("component inside", "Null", group);
  const int64_t second = scene.AddMesh("one", kCorners, kFace, {}, inner);
  scene.AddMaterial("skin", second);
  scene.AddMesh("alone", kCorners, kFace);
  scene.args.groupMeshes = true;
  // The group's name, and its first descendant's; one submesh of both meshes, in walk order.
  EXPECT_EQ(scene.Export(), "MESH: MyGroup-two MATERIAL: 1  FILENAME: MyGroup-two.xmf\n")
      << "the mesh outside all groups has taken material 0";
  const CalCoreMesh mesh = scene.Load("MyGroup-two");
  ASSERT_EQ(mesh.submeshes.size(), 1U);
  EXPECT_EQ(mesh.submeshes[0]->vertices().size(), 6U);
  EXPECT_EQ(FacesOf(*mesh.submeshes[0]), (std::vector<std::vector<int>>{{0, 1, 2}, {3, 4, 5}}));
}

TEST(MeshSelection, GroupsOfOneNameShareAFile) {
  MeshScene scene;
  scene.AddMesh("a", kCorners, kFace, {}, scene.AddNode("group"));
  scene.AddMesh("a", kCorners, kFace, {}, scene.AddNode("group", "Null", scene.AddNode("top")));
  scene.args.groupMeshes = true;
  EXPECT_EQ(scene.Export(), "MESH: group-a MATERIAL: 0  FILENAME: group-a.xmf\n");
  EXPECT_EQ(scene.Load("group-a").submeshes.at(0)->faces().size(), 2U) << "no mesh is lost";
}

TEST(MeshSelection, ManyMeshesAreGroupedByDepth) {
  for (const int count : {100, 101}) {
    MeshScene scene;
    const int64_t group = scene.AddNode("group");
    const int64_t top = scene.AddNode("top", "Null", group);
    for (int i = 0; i < count; ++i) {
      scene.AddMesh(std::string("m").append(std::to_string(i)), kCorners, kFace, {}, top);
    }
    scene.args.groupMeshes = true;
    EXPECT_EQ(scene.Export(), count == 100
                                  ? "MESH: group-top MATERIAL: 0  FILENAME: group-top.xmf\n"
                                  : "MESH: top-m0 MATERIAL: 0  FILENAME: top-m0.xmf\n");
  }
}

TEST(MeshListing, AllMeshesOrThoseOfTheSkeleton) {
  MeshScene scene;
  const int64_t hips = scene.AddNode("Hips", "LimbNode");
  const int64_t on = scene.AddMesh("on skin", kCorners, kFace, {}, hips);
  scene.AddMaterial("a", on);
  scene.AddMaterial("b[7]", on);
  scene.AddMesh("off", kCorners, kFace);
  scene.args.skeletonRootPath = "";
  EXPECT_EQ(scene.List(false), "off,,8 \non skin,,9 7 \n");
  scene.args.skeletonRootPath = "RootNode/Hips";
  scene.args.encodeNames = true;
  EXPECT_EQ(scene.List(true), "on%20skin\non%20skin,RootNode/Hips,8 7 \n");
  scene.args.skeletonRootPath = "RootNode";
  EXPECT_EQ(scene.List(true), "off\noff,RootNode,0 \n");
  std::string name;
  EXPECT_EQ(ExportMesh(*scene.scene, scene.args).BoneCountInSkeletonForListing(name), 2);
}

}  // namespace
