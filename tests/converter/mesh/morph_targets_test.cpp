// Morph targets of submeshes: which vertices have an offset, and what it holds.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/converter/mesh/mesh_scene.h"

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

class Morphs : public testing::Test {
 protected:
  void AddMesh(FbxRecords elements, FbxRecords nodeProperties = {}) {
    scene_.AddMesh("m", kQuad, kTwo, std::move(elements), SceneBuilder::kRoot,
                   std::move(nodeProperties));
    blendShape_ = scene_.AddBlendShape();
  }
  std::string Targets() { return TargetsOf(*scene_.Submesh("m")); }

  MeshScene scene_;
  int64_t blendShape_ = 0;
};

TEST_F(Morphs, WithoutNormalsOnlyMovedVerticesCount) {
  AddMesh({}, {P("Lcl Scaling", {2, 2, 2})});
  scene_.AddTarget(scene_.AddChannel("wide", blendShape_), {1, 2, 1, 9, -1},
                   {10, 0, 0, 0, 4, 0, 5, 0, 0, 1, 1, 1, 1, 1, 1});
  scene_.AddTarget(scene_.AddChannel("still", blendShape_), {0}, {0, 0, 0});
  EXPECT_EQ(scene_.Export(), kWritten);
  // Offsets are in the output space, a point that is listed twice has the sum; what changes nothing
  // makes no target.
  EXPECT_EQ(Targets(), "wide: 1(30 0 0|0 0 0) 2(0 8 0|0 0 0)\n");
}

TEST_F(Morphs, AShapeWithoutNormalsOffsetsAllVerticesWithNormals) {
  AddMesh({Normals("AllSame", "Direct", {0, 0, 1})});
  scene_.AddTarget(scene_.AddChannel("b", blendShape_), {1}, {0, 0, 5});
  scene_.AddTarget(scene_.AddChannel("a", blendShape_), {3}, {0, 0, 5});
  EXPECT_EQ(scene_.Export(), kWritten);
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
  scene_.AddTarget(scene_.AddChannel("a", blendShape_), {1, 3, 0}, {1, 0, 0, 0, 0, 0, 0, 0, 2},
                   {1, 0, -1, 0, 3, -1, 0, 0, 0});
  EXPECT_EQ(scene_.Export(), kWritten);
  EXPECT_EQ(Targets(), "a: 0(0 0 2|0 0 1) 1(0 1 0|0 1 0) 3(0 0 0|-1 0 0)\n");
}

TEST_F(Morphs, NormalsByPointAreFoundOnlyForTheFirstPolygon) {
  AddMesh({Normals("ByVertice", "Direct", {0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1})});
  scene_.AddTarget(scene_.AddChannel("a", blendShape_), {1}, {1, 0, 0}, {1, 0, -1});
  EXPECT_EQ(scene_.Export(), kWritten);
  // The points 0 and 2 are split, since their second corners have no morphed normal.
  EXPECT_EQ(Targets(), "a: 1(0 0 0|0 0 0) 2(1 0 0|1 0 0) 4(0 0 0|0 0 0) 5(0 0 0|0 0 0)\n");
}

TEST_F(Morphs, TheLastTargetAndTheLastChannelOfANameCount) {
  AddMesh({});
  const int64_t channel = scene_.AddChannel("in between", blendShape_);
  scene_.AddTarget(channel, {1}, {50, 0, 0});
  scene_.AddTarget(channel, {1}, {100, 0, 0});
  scene_.AddTarget(scene_.AddChannel("same", blendShape_), {1}, {1, 0, 0});
  scene_.AddTarget(scene_.AddChannel("same", scene_.AddBlendShape()), {2}, {2, 0, 0});
  scene_.AddChannel("no target", blendShape_);
  const std::string note =
      "Blend shape channel in between has more than 1 target shape, which isn't supported. Using "
      "final target shape only.";
  std::string notes;
  for (int i = 0; i < 7; ++i) notes += note;  // once for the points, once for each corner
  EXPECT_EQ(scene_.Export(), notes + kWritten);
  EXPECT_EQ(Targets(), "in between: 1(100 0 0|0 0 0)\nsame: 2(2 0 0|0 0 0)\n");
}

TEST_F(Morphs, AShapeOfAnotherSizeIsLeftOut) {
  AddMesh({});
  scene_.AddTarget(scene_.AddChannel("a", blendShape_), {}, {});
  EXPECT_EQ(scene_.Export(), "WARNING: Irregular morph target point count\n" + kWritten);
  EXPECT_EQ(Targets(), "");
}

TEST_F(Morphs, OnlySubmeshesThatMoveHaveTargets) {
  const int64_t node = scene_.AddMesh("m", kQuad, kTwo, {Materials({0, 1})});
  blendShape_ = scene_.AddBlendShape();
  scene_.AddMaterial("a", node);
  scene_.AddMaterial("b", node);
  scene_.AddTarget(scene_.AddChannel("t", blendShape_), {3}, {0, 0, 1});
  EXPECT_EQ(scene_.Export(), "MESH: m MATERIAL: 0,1  FILENAME: m.xmf\n");
  // Materials stand in the reverse order of their names.
  EXPECT_EQ(TargetsOf(*scene_.Submesh("m", 0)), "t: 2(0 0 1|0 0 0)\n");
  EXPECT_EQ(TargetsOf(*scene_.Submesh("m", 1)), "");
}

TEST(MorphsOfGroups, NamesMetBeforeAreOfferedToTheRest) {
  MeshScene scene;
  scene.args.groupMeshes = true;
  const int64_t group = scene.AddNode("group");
  const FbxRecords normals{Normals("AllSame", "Direct", {0, 0, 1})};
  for (const std::string name : {"a", "b"}) {
    scene.AddMesh(name, kQuad, {{0, 1, 2}}, normals, group);
    scene.AddTarget(scene.AddChannel("morph " + name, scene.AddBlendShape()), {0}, {1, 0, 0});
  }
  scene.AddMesh("plain", kQuad, {{0, 1, 2}}, normals, group);
  scene.Export();
  EXPECT_EQ(TargetsOf(*scene.Submesh("group-a")),
            "morph a: 0(1 0 0|0 0 0) 1(0 0 0|0 0 0) 2(0 0 0|0 0 0) 3(0 0 0|0 0 0) 4(0 0 0|0 0 0) "
            "5(0 0 0|0 0 0)\n"
            "morph b: 3(1 0 0|0 0 0) 4(0 0 0|0 0 0) 5(0 0 0|0 0 0)\n");
}

TEST_F(Morphs, DiagnosticsShowEachStep) {
  AddMesh({});
  scene_.AddTarget(scene_.AddChannel("wide", blendShape_), {1}, {10, 0, 0});
  scene_.args.verbosity = 3;
  scene_.args.scaleFactor = 2.0F;
  const std::string out = scene_.Export();
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
