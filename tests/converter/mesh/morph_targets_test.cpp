// Morph targets of submeshes: which vertices have an offset, and what it holds.
#include "tests/converter/mesh/mesh_test.h"

namespace {

using testing::HasSubstr;

// "name: vertex(x y z|normal)..." for each target, each on a line.
std::string TargetsOf(const CalCoreSubmesh& submesh) {
  std::ostringstream text;
  for (const auto& target : submesh.morphTargets()) {
    text << target->name() << ":";
    for (const VertexOffset& offset : target->vertexOffsets()) {
      text << " " << offset.vertexId << "(" << offset.position.x << " " << offset.position.y << " "
           << offset.position.z << "|" << offset.normal.x << " " << offset.normal.y << " "
           << offset.normal.z << ")";
    }
    text << "\n";
  }
  return text.str();
}

class Morphs : public MeshTest {
 protected:
  void AddMesh(FbxRecords elements, FbxRecords nodeProperties = {}) {
    mesh_ = scene_.Mesh("m", kQuad, kTwo, std::move(elements), SceneBuilder::kRoot,
                        std::move(nodeProperties));
    blendShape_ = scene_.BlendShape(mesh_.mesh);
  }
  // A channel of one target.
  void AddMorph(const std::string& name, std::vector<int32_t> points, std::vector<double> offsets,
                std::vector<double> normals = {}) {
    scene_.Target(scene_.Channel(blendShape_, name), std::move(points), std::move(offsets),
                  std::move(normals));
  }
  std::string Targets(size_t submesh = 0) { return TargetsOf(*Submesh("m", submesh)); }

  SceneBuilder::MeshIds mesh_;
  int64_t blendShape_ = 0;
};

TEST_F(Morphs, WithoutNormalsOnlyMovedVerticesCount) {
  AddMesh({}, {P("Lcl Scaling", {2, 2, 2})});
  AddMorph("wide", {1, 2, 1, 9, -1}, {10, 0, 0, 0, 4, 0, 5, 0, 0, 1, 1, 1, 1, 1, 1});
  AddMorph("still", {0}, {0, 0, 0});
  EXPECT_EQ(Export(), kWritten);
  // Offsets are in the output space, a point that is listed twice has the sum; what changes nothing
  // makes no target.
  EXPECT_EQ(Targets(), "wide: 1(30 0 0|0 0 0) 2(0 8 0|0 0 0)\n");
}

TEST_F(Morphs, AShapeWithoutNormalsOffsetsAllVerticesWithNormals) {
  AddMesh({Normals("AllSame", "Direct", {0, 0, 1})});
  AddMorph("b", {1}, {0, 0, 5});
  AddMorph("a", {3}, {0, 0, 5});
  EXPECT_EQ(Export(), kWritten);
  EXPECT_EQ(Targets(),
            "a: 0(0 0 0|0 0 0) 1(0 0 0|0 0 0) 2(0 0 0|0 0 0) 3(0 0 5|0 0 0)\n"
            "b: 0(0 0 0|0 0 0) 1(0 0 5|0 0 0) 2(0 0 0|0 0 0) 3(0 0 0|0 0 0)\n");
}

TEST_F(Morphs, NormalsByCornerLeaveUnchangedVerticesOut) {
  AddMesh({Normals("ByPolygonVertex", "Direct",
                   {0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1})},
          {P("Lcl Rotation", {0, 0, 90})});
  // Normals turn with the node, as points do. Point 1 moves and turns, point 3 only turns, point 0
  // only moves.
  AddMorph("a", {1, 3, 0}, {1, 0, 0, 0, 0, 0, 0, 0, 2}, {1, 0, -1, 0, 3, -1, 0, 0, 0});
  EXPECT_EQ(Export(), kWritten);
  EXPECT_EQ(Targets(), "a: 0(0 0 2|0 0 1) 1(0 1 0|0 1 0) 3(0 0 0|-1 0 0)\n");
}

TEST_F(Morphs, NormalsByPointAreFoundOnlyForTheFirstPolygon) {
  AddMesh({Normals("ByVertice", "Direct", {0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1})});
  AddMorph("a", {1}, {1, 0, 0}, {1, 0, -1});
  EXPECT_EQ(Export(), kWritten);
  // The points 0 and 2 are split, since their second corners have no morphed normal.
  EXPECT_EQ(Targets(), "a: 1(0 0 0|0 0 0) 2(1 0 0|1 0 0) 4(0 0 0|0 0 0) 5(0 0 0|0 0 0)\n");
}

TEST_F(Morphs, TheLastTargetAndTheLastChannelOfANameCount) {
  AddMesh({});
  const int64_t channel = scene_.Channel(blendShape_, "in between");
  scene_.Target(channel, {1}, {50, 0, 0});
  scene_.Target(channel, {1}, {100, 0, 0});
  AddMorph("same", {1}, {1, 0, 0});
  scene_.Channel(blendShape_, "no target");
  blendShape_ = scene_.BlendShape(mesh_.mesh);
  AddMorph("same", {2}, {2, 0, 0});
  const std::string note =
      "Blend shape channel in between has more than 1 target shape, which isn't supported. Using "
      "final target shape only.";
  std::string notes;
  for (int i = 0; i < 7; ++i) notes += note;  // once for the points, once for each corner
  EXPECT_EQ(Export(), notes + kWritten);
  EXPECT_EQ(Targets(), "in between: 1(100 0 0|0 0 0)\nsame: 2(2 0 0|0 0 0)\n");
}

TEST_F(Morphs, AShapeOfAnotherSizeIsLeftOut) {
  AddMesh({});
  AddMorph("a", {}, {});
  EXPECT_EQ(Export(), "WARNING: Irregular morph target point count\n" + kWritten);
  EXPECT_EQ(Targets(), "");
}

TEST_F(Morphs, OnlySubmeshesThatMoveHaveTargets) {
  AddMesh({Materials({0, 1})});
  for (const char* name : {"a", "b"}) scene_.Material(mesh_.node, name);
  AddMorph("t", {3}, {0, 0, 1});
  EXPECT_EQ(Export(), "MESH: m MATERIAL: 0,1  FILENAME: m.xmf\n");
  // Materials stand in the reverse order of their names.
  EXPECT_EQ(Targets(0), "t: 2(0 0 1|0 0 0)\n");
  EXPECT_EQ(Targets(1), "");
}

TEST_F(Morphs, NamesMetBeforeAreOfferedToTheRestOfTheGroup) {
  const int64_t group = scene_.Node("group");
  const FbxRecords normals{Normals("AllSame", "Direct", {0, 0, 1})};
  for (const std::string name : {"a", "b", "plain"}) {
    blendShape_ = scene_.BlendShape(scene_.Mesh(name, kQuad, kOne, normals, group).mesh);
    if (name != "plain") AddMorph("morph " + name, {0}, {1, 0, 0});
  }
  Export({"-lg"});
  EXPECT_EQ(TargetsOf(*Submesh("group-a")),
            "morph a: 0(1 0 0|0 0 0) 1(0 0 0|0 0 0) 2(0 0 0|0 0 0) 3(0 0 0|0 0 0) 4(0 0 0|0 0 0) "
            "5(0 0 0|0 0 0)\n"
            "morph b: 3(1 0 0|0 0 0) 4(0 0 0|0 0 0) 5(0 0 0|0 0 0)\n");
}

TEST_F(Morphs, DiagnosticsShowEachStep) {
  AddMesh({});
  AddMorph("wide", {1}, {10, 0, 0});
  const std::string out = Export({"-vvv", "--scale=2"});
  for (const char* text :
       {"WARNING: ExportMesh::Export m\n", "\nexporting 4 control points for RootNode/m m",
        "\nglobal position:\tT:", "\npose:\tT:",
        "\nraw points:\n\t[0.00, 0.00, 0.00]\n\t[200.00, 0.00, 0.00]",
        "[200.00, 0.00, 0.00]=>[400.00, 0.00, 0.00]\t", "\nscaled points:\n\t[0.00, 0.00, 0.00]",
        "exporting 1 morph blend deformer:wide \nposition: ",
        "\nexporting 4 morph control points for wide\n", "\nscaled morph points:\n\t[0.00",
        "\nnormals:\nDEBUG: ExportMesh::FillInPolygonVertexIndexes m : #polys= 2\n",
        "\n1\t morph pos:[420.00, 0.00, 0.00]\t vert pos:[400.00, 0.00, 0.00]\t delta:[20.00, 0.00",
        "\t norm:[0.00, 0.00, 0.00]\t deltaNorm:[0.00, 0.00, 0.00]\t",
        "\n mesh min:0.000000,0.000000,0.000000 max:400.000000,400.000000,0.000000\n"}) {
    EXPECT_THAT(out, HasSubstr(text));
  }
}

}  // namespace
