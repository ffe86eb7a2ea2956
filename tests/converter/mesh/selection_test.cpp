// Which meshes a command means, how they are grouped into files, and what a listing shows.
#include "converter/mesh/export_mesh.h"
#include "tests/converter/mesh/mesh_test.h"

namespace {

class MeshSelection : public MeshTest {
 protected:
  SceneBuilder::MeshIds AddMesh(const std::string& name, int64_t parent = SceneBuilder::kRoot) {
    return scene_.Mesh(name, kQuad, kOne, {}, parent);
  }
};

TEST_F(MeshSelection, ByTheNameOfVersion1) {
  MeshHolder_ holder;
  holder.name = "Body_1";
  ConversionArguments args;
  args.commandVersion = 1;
  args.exportObjectNames = {"Body_1"};
  EXPECT_FALSE(isMeshNameMatch(args, &holder));
  args.exportObjectName = "Body_1";
  EXPECT_TRUE(isMeshNameMatch(args, &holder));
}

TEST_F(MeshSelection, EachMeshItsFileInTheOrderOfNames) {
  scene_.Material(AddMesh("b b").node, "skin");
  AddMesh("a");
  AddMesh("a", scene_.Node("branch"));
  EXPECT_EQ(Export(),
            "MESH: a MATERIAL: 0  FILENAME: a.xmf\n"
            "MESH: a_1 MATERIAL: 0  FILENAME: a_1.xmf\n"
            "MESH: b b MATERIAL: 1  FILENAME: b%20b.xmf\n");
  // Materials of meshes that are not selected take no numbers.
  EXPECT_EQ(Export({"-e"}, {"b b", "nothing"}), "MESH: b%20b MATERIAL: 0  FILENAME: b%20b.xmf\n");
  EXPECT_EQ(Export({}, {"nothing"}), "");
}

TEST_F(MeshSelection, GroupsByName) {
  const int64_t group = scene_.Node("MyGroup");
  scene_.Material(AddMesh("two", group).node, "skin");
  scene_.Material(AddMesh("one", scene_.Node("component inside", group)).node, "skin");
  AddMesh("alone");
  // The group's name, and its first descendant's; one submesh of both meshes, in walk order.
  EXPECT_EQ(Export({"-lg"}), "MESH: MyGroup-two MATERIAL: 1  FILENAME: MyGroup-two.xmf\n")
      << "the mesh outside all groups has taken material 0";
  const CalCoreMesh mesh = Load("MyGroup-two");
  ASSERT_EQ(mesh.submeshes.size(), 1U);
  EXPECT_EQ(mesh.submeshes[0]->vertices().size(), 6U);
  EXPECT_EQ(FacesOf(*mesh.submeshes[0]), (std::vector<std::vector<int>>{{0, 1, 2}, {3, 4, 5}}));
}

TEST_F(MeshSelection, GroupsOfOneNameShareAFile) {
  AddMesh("a", scene_.Node("group"));
  AddMesh("a", scene_.Node("group", scene_.Node("top")));
  EXPECT_EQ(Export({"-lg"}), "MESH: group-a MATERIAL: 0  FILENAME: group-a.xmf\n");
  EXPECT_EQ(Submesh("group-a")->faces().size(), 2U) << "no mesh is lost";
}

TEST_F(MeshSelection, ManyMeshesAreGroupedByDepth) {
  for (const int count : {100, 101}) {
    scene_ = SceneBuilder();
    const int64_t top = scene_.Node("top", scene_.Node("group"));
    for (int i = 0; i < count; ++i) AddMesh(std::string("m").append(std::to_string(i)), top);
    EXPECT_EQ(Export({"-lg"}), count == 100
                                   ? "MESH: group-top MATERIAL: 0  FILENAME: group-top.xmf\n"
                                   : "MESH: top-m0 MATERIAL: 0  FILENAME: top-m0.xmf\n");
  }
}

}  // namespace
