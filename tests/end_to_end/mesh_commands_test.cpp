// Meshes from outside: the records of listings and exports, the exit status, and a whole file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/fbx_builder.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace {

using testing::HasSubstr;
using Words = std::vector<std::string>;

const std::string kVersionLine = "VERSION: 012 FBX lib version 1.0.0\n";

class MeshCommands : public testing::Test {
 protected:
  MeshCommands() { scene_.SetAxes(2, 1, 1, -1, 0, 1); }

  int64_t AddMesh(const std::string& name, int64_t parent, const std::string& material) {
    const int64_t node = scene_.AddModel(name, "Mesh");
    scene_.Connect(node, parent);
    geometry_ = scene_.AddMesh(name, {0, 0, 0, 150, 0, 0, 0, 150, 0.5}, {0, 1, -3});
    scene_.Connect(geometry_, node);
    if (!material.empty()) scene_.Connect(scene_.AddMaterial(material), node);
    return node;
  }
  void AddMorph(const std::string& name) {
    const int64_t blendShape = scene_.AddObject("Deformer", "Deformer", "", "BlendShape");
    scene_.Connect(blendShape, geometry_);
    const int64_t channel = scene_.AddObject("Deformer", "SubDeformer", name, "BlendShapeChannel");
    scene_.Connect(channel, blendShape);
    const int64_t shape = scene_.AddObject(
        "Geometry", "Geometry", name, "Shape", {},
        {{"Indexes", {std::vector<int32_t>{1}}}, {"Vertices", {std::vector<double>{0, 0, 2.5}}}});
    scene_.Connect(shape, channel);
  }
  std::string Run(Words arguments, const FbxFormat& format = {}) {
    dir_.Write("a.fbx", scene_.Write(format));
    arguments.insert(arguments.begin(), "-2");
    run_ = RunVeltrum(arguments, dir_.Path());
    return run_.out.substr(std::min(kVersionLine.size(), run_.out.size()));
  }

  TempDir dir_;
  SceneBuilder scene_;
  int64_t geometry_ = 0;
  RunResult run_;
};

TEST_F(MeshCommands, Lists) {
  AddMesh("b c", SceneBuilder::kRoot, "Skin");
  AddMorph("smile");
  AddMesh("a", SceneBuilder::kRoot, "");
  AddMesh("Zed", scene_.AddModel("Other"), "");  // connected nowhere, so no part of the tree
  EXPECT_EQ(Run({"a.fbx", "list", "mesh"}), "MESH: a MATERIALS: 0 \nMESH: b c MATERIALS: 1 \n");
  EXPECT_EQ(Run({"-n", "a.fbx", "list", "mesh"}), "a\nb c\n");
  // With labels a name is encoded twice.
  EXPECT_EQ(Run({"-e", "a.fbx", "list", "mesh"}),
            "MESH: a MATERIALS: 0 \nMESH: b%2520c MATERIALS: 1 \n");
  EXPECT_EQ(Run({"-e", "-n", "a.fbx", "list", "mesh"}), "a\nb%20c\n");
  const std::string verbose = Run({"-v", "a.fbx", "list", "mesh"});
  EXPECT_THAT(verbose, HasSubstr("b c is RootNode/b c 0x"));
  EXPECT_THAT(verbose,
              HasSubstr("MESH: a MATERIALS: 0  \nMESH: b c MATERIALS: 1  MORPH: smile \n"));
}

TEST_F(MeshCommands, ListsOfAnEmptyScene) {
  scene_.AddModel("lonely");
  EXPECT_EQ(Run({"a.fbx", "list", "mesh"}), "WARNING: Fbx file contains no meshes\n");
  EXPECT_EQ(Run({"-n", "a.fbx", "list", "mesh"}), "");
}

TEST_F(MeshCommands, ExportsAWholeFile) {
  AddMesh("m", SceneBuilder::kRoot, "Skin[3]");
  AddMorph("up");
  const std::string expected =
      R"(<MESH MAGIC="XMF" VERSION="919" NUMSUBMESH="1">
  <SUBMESH NUMVERTICES="3" NUMFACES="1" NUMLODSTEPS="0" NUMSPRINGS="0" NUMTEXCOORDS="1" NUMMORPHS="1" MATERIAL="3">
    <VERTEX ID="0" NUMINFLUENCES="1">
      <POS>0 0 0</POS>
      <NORM>0 0 0</NORM>
      <COLOR>1 1 1</COLOR>
      <TEXCOORD>0 1</TEXCOORD>
      <INFLUENCE ID="1">1</INFLUENCE>
    </VERTEX>
    <VERTEX ID="1" NUMINFLUENCES="1">
      <POS>150 0 0</POS>
      <NORM>0 0 0</NORM>
      <COLOR>1 1 1</COLOR>
      <TEXCOORD>0 1</TEXCOORD>
      <INFLUENCE ID="1">1</INFLUENCE>
    </VERTEX>
    <VERTEX ID="2" NUMINFLUENCES="1">
      <POS>0 150 0.5</POS>
      <NORM>0 0 0</NORM>
      <COLOR>1 1 1</COLOR>
      <TEXCOORD>0 1</TEXCOORD>
      <INFLUENCE ID="1">1</INFLUENCE>
    </VERTEX>
    <MORPH NAME="up" NUMBLENDVERTS="1" MORPHID="0">
      <BLENDVERTEX VERTEXID="1" POSDIFF="2.5">
        <POSITION>150 0 2.5</POSITION>
        <NORMAL>0 0 0</NORMAL>
        <TEXCOORD>0 1</TEXCOORD>
      </BLENDVERTEX>
    </MORPH>
    <FACE VERTEXID="0 1 2" />
  </SUBMESH>
</MESH>
)";
  for (const FbxFormat& format :
       {FbxFormat{}, FbxFormat{.ascii = true}, FbxFormat{.version = 7500, .compress = true}}) {
    EXPECT_EQ(Run({"-rRootNode", "-d.", "a.fbx", "export", "mesh"}, format),
              "MESH: m MATERIAL: 3  FILENAME: ./m.xmf\n");
    EXPECT_EQ(run_.status, 0);
    EXPECT_EQ(ReadFile(dir_.File("m.xmf")), expected);
  }
}

TEST_F(MeshCommands, FailuresAreReportedAndGiveStatus1) {
  AddMesh("m", SceneBuilder::kRoot, "");
  EXPECT_EQ(Run({"a.fbx", "export", "mesh"}),
            "ERROR: Skeleton Root Node [] not found in FBX\n\n"
            "WARNING: could not create file for meshes from  a.fbx  with root   for ALL OBJECTS\n");
  EXPECT_EQ(run_.status, 1);
  EXPECT_EQ(Run({"-dmissing", "-rRootNode", "a.fbx", "export", "mesh", "m", "n"}),
            "WARNING: could not create file for meshes from  a.fbx  with root  RootNode  and mesh "
            "names  ' m '   ' n ',  \n");
  EXPECT_EQ(run_.status, 1);
  // The status is that of the last command.
  EXPECT_THAT(Run({"a.fbx", "export", "mesh", "-", "a.fbx", "list", "mesh"}), HasSubstr("MESH: m"));
  EXPECT_EQ(run_.status, 0);
}

}  // namespace
