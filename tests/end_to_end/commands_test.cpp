// What commands on a scene report and write, seen from outside.
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/fbx_builder.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Words = std::vector<std::string>;

const std::string kVersionLine = "VERSION: 012 FBX lib version 1.0.0\n";

class Commands : public testing::Test {
 protected:
  int64_t AddNode(const std::string& name, const std::string& type, int64_t parent) {
    const int64_t node = scene_.AddModel(name, type);
    scene_.Connect(node, parent);
    if (type == "LimbNode") scene_.Connect(scene_.AddNodeAttribute(name, type), node);
    if (type == "Mesh") {
      scene_.Connect(scene_.AddMesh(name, {0, 0, 0, 100, 0, 0, 0, 100, 0}, {0, 1, -3}), node);
    }
    return node;
  }
  void Save(const std::string& name) { dir_.Write(name, scene_.Write()); }

  // The output behind the version record; `arguments` follow the "-2".
  std::string Run(Words arguments) {
    arguments.insert(arguments.begin(), "-2");
    run_ = RunVeltrum(arguments, dir_.Path());
    EXPECT_THAT(run_.out, StartsWith(kVersionLine));
    return run_.out.substr(std::min(kVersionLine.size(), run_.out.size()));
  }

  TempDir dir_;
  SceneBuilder scene_;
  RunResult run_;
};

TEST_F(Commands, ListSkeletonsWithTheirMeshes) {
  const int64_t group = AddNode("group", "Null", SceneBuilder::kRoot);
  AddNode("Spine", "LimbNode", AddNode("Hips", "LimbNode", group));
  AddNode("zz", "Mesh", SceneBuilder::kRoot);
  AddNode("Body", "Mesh", SceneBuilder::kRoot);
  AddNode("Hair", "Mesh", AddNode("Tail", "LimbNode", SceneBuilder::kRoot));
  Save("a.fbx");
  const std::string others =
      "NODE: RootNode/Tail MESHCOUNT: 1 FRIENDLYSKELNAME: Tail MESHNAME: Hair BONECOUNT: 2\n"
      "NODE: RootNode MESHCOUNT: 2 FRIENDLYSKELNAME: No Skeleton MESHNAME: Body MESHNAME: zz "
      "BONECOUNT: 4\n";
  EXPECT_EQ(
      Run({"a.fbx", "list", "skel"}),
      "NODE: RootNode/group/Hips MESHCOUNT: 0 FRIENDLYSKELNAME: Hips BONECOUNT: 2\n" + others);
  EXPECT_EQ(run_.status, 0);
  // Of two skeletons with one name the paths are shown.
  AddNode("Hips", "LimbNode", SceneBuilder::kRoot);
  Save("b.fbx");
  EXPECT_EQ(Run({"b.fbx", "list", "node"}),
            "NODE: RootNode/group/Hips MESHCOUNT: 0 FRIENDLYSKELNAME: RootNode/group/Hips "
            "BONECOUNT: 2\n"
            "NODE: RootNode/Tail MESHCOUNT: 1 FRIENDLYSKELNAME: Tail MESHNAME: Hair BONECOUNT: 2\n"
            "NODE: RootNode/Hips MESHCOUNT: 0 FRIENDLYSKELNAME: RootNode/Hips BONECOUNT: 1\n" +
                others.substr(others.find('\n') + 1));
}

TEST_F(Commands, ListTheNodesOfOneSkeleton) {
  const int64_t hips = AddNode("Hips", "LimbNode", SceneBuilder::kRoot);
  AddNode("Spine", "LimbNode", hips);
  AddNode("bare", "Null", hips);
  AddNode("Body", "Mesh", SceneBuilder::kRoot);
  Save("a.fbx");
  EXPECT_EQ(Run({"-rRootNode/Hips", "a.fbx", "list", "node"}),
            "NODE: Hips\nNODE: Hips/Spine\nNODE: Hips/bare\n");
  // The numbers are by full path, so a skeleton below the scene's root shows none.
  EXPECT_THAT(Run({"-v", "-rRootNode/Hips", "a.fbx", "list", "node"}),
              EndsWith("\nNODE 0:eSkeleton: Hips\nNODE 0:eSkeleton: Hips/Spine\n"
                       "NODE 0:eNull: Hips/bare\n"));
  EXPECT_THAT(Run({"-v", "-rRootNode", "a.fbx", "list", "node"}),
              EndsWith("\nNODE 0:eNull: RootNode\nNODE 1:eMesh: RootNode/Body\n"));
  EXPECT_THAT(Run({"-vvv", "-rRootNode/Hips", "a.fbx", "list", "node"}),
              HasSubstr("\nNODE 0:eSkeleton: Hips\n\tT:"));
  // A path without a skeleton shows no nodes, and no error.
  EXPECT_EQ(Run({"-rRootNode/Hips/Spine", "a.fbx", "list", "node"}), "");
}

TEST_F(Commands, ScenesWithoutSkeletons) {
  Save("empty.fbx");
  EXPECT_THAT(Run({"empty.fbx", "list"}),
              StartsWith("ERROR: Fbx file contains no skeleton hierarchies\n"));
  EXPECT_EQ(run_.status, 0);
  AddNode("Body", "Mesh", SceneBuilder::kRoot);
  Save("mesh.fbx");
  EXPECT_EQ(Run({"mesh.fbx", "list", "skel"}),
            "NODE: RootNode MESHCOUNT: 1 FRIENDLYSKELNAME: No Skeleton MESHNAME: Body "
            "BONECOUNT: 2\n");
}

TEST_F(Commands, ExportSkeletons) {
  AddNode("Left Hip", "LimbNode", SceneBuilder::kRoot);
  Save("a.fbx");
  std::filesystem::create_directory(dir_.File("out"));
  const std::string root = "--root=RootNode/Left Hip";
  EXPECT_EQ(Run({root, "a.fbx", "export", "skel", "Left Hip", "x/y"}),
            "SKELETON: Left Hip FILENAME: Left%20Hip.xsf\nSKELETON: x/y FILENAME: x%2Fy.xsf\n");
  EXPECT_EQ(ReadFile(dir_.File("Left%20Hip.xsf")), ReadFile(dir_.File("x%2Fy.xsf")));
  EXPECT_EQ(Run({"-e", "-dout", root, "a.fbx", "export", "skel", "Left Hip"}),
            "SKELETON: Left%20Hip FILENAME: out/Left%20Hip.xsf\n");
  EXPECT_TRUE(FileExists(dir_.File("out/Left%20Hip.xsf")));
  // No names, no skeletons.
  EXPECT_EQ(Run({root, "a.fbx", "export", "skel"}), "");
  EXPECT_EQ(Run({"-rNone", "a.fbx", "export", "skel", "My Hip"}),
            "ERROR: Failed to create file My%20Hip.xsf for ANIMATION My Hip\n");
  EXPECT_EQ(Run({"-dno/such", root, "a.fbx", "export", "skel", "b"}),
            "ERROR: Failed to create file no/such/b.xsf for ANIMATION b\n");
  EXPECT_EQ(run_.status, 0);
}

TEST_F(Commands, ListMeshes) {
  Save("empty.fbx");
  EXPECT_EQ(Run({"empty.fbx", "list", "mesh"}), "WARNING: Fbx file contains no meshes\n");
  EXPECT_EQ(Run({"-n", "empty.fbx", "list", "mesh"}), "");
  AddNode("Body", "Mesh", SceneBuilder::kRoot);
  AddNode("A b", "Mesh", SceneBuilder::kRoot);
  AddNode("Body", "Mesh", SceneBuilder::kRoot);
  Save("a.fbx");
  EXPECT_EQ(Run({"a.fbx", "list", "mesh"}),
            "MESH: A b MATERIALS: 0 \nMESH: Body MATERIALS: 0 \nMESH: Body_1 MATERIALS: 0 \n");
  EXPECT_EQ(Run({"-n", "a.fbx", "list", "mesh"}), "A b\nBody\nBody_1\n");
  // A labelled name is encoded twice.
  EXPECT_THAT(Run({"-e", "a.fbx", "list", "mesh"}), StartsWith("MESH: A%2520b MATERIALS: 0 \n"));
  EXPECT_EQ(Run({"-ne", "a.fbx", "list", "mesh"}), "A%20b\nBody\nBody_1\n");
  // A verbose listing ends its lines behind the morph targets.
  EXPECT_THAT(Run({"-v", "a.fbx", "list", "mesh"}), EndsWith("\nMESH: Body_1 MATERIALS: 0  \n"));
  EXPECT_THAT(Run({"-v", SamplesDirectory() + "/avatar.fbx", "list", "mesh"}),
              EndsWith("\nMESH: Body MATERIALS: 0 1  MORPH: smile MORPH: blink \n"));
}

TEST_F(Commands, ExportMeshes) {
  AddNode("My Body", "Mesh", SceneBuilder::kRoot);
  Save("a.fbx");
  EXPECT_EQ(Run({"-rRootNode", "a.fbx", "export", "mesh"}),
            "MESH: My Body MATERIAL: 0  FILENAME: My%20Body.xmf\n");
  EXPECT_EQ(run_.status, 0);
  EXPECT_TRUE(FileExists(dir_.File("My%20Body.xmf")));
  const std::string noRoot = "ERROR: Skeleton Root Node [Hips] not found in FBX\n\n";
  EXPECT_EQ(Run({"-rHips", "a.fbx", "export", "mesh"}),
            noRoot +
                "WARNING: could not create file for meshes from  a.fbx  with root  Hips "
                "for ALL OBJECTS\n");
  EXPECT_EQ(run_.status, 1);
  // From the middle of the list on, the closing quotes have a comma.
  EXPECT_EQ(Run({"-rHips", "a.fbx", "export", "mesh", "a", "b", "c"}),
            noRoot +
                "WARNING: could not create file for meshes from  a.fbx  with root  Hips "
                " and mesh names  ' a '   ' b '   ' c ',  \n");
  EXPECT_EQ(run_.status, 1);
  // The last command decides; a help screen decides nothing.
  Run({"-rHips", "a.fbx", "export", "mesh", "-", "a.fbx", "list", "mesh"});
  EXPECT_EQ(run_.status, 0);
  Run({"-rHips", "a.fbx", "export", "mesh", "-", "-h"});
  EXPECT_EQ(run_.status, 1);
}

// The labels that lines begin with, each once for a run of lines.
Words LineLabels(const std::string& out) {
  Words labels;
  size_t end = 0;
  for (size_t at = 0; at < out.size(); at = end + 1) {
    end = out.find('\n', at);
    const std::string label = out.substr(at, std::min(out.find(':', at), end) - at);
    if (labels.empty() || labels.back() != label) labels.push_back(label);
  }
  return labels;
}

TEST_F(Commands, AllTypesRunInAFixedOrder) {
  dir_.Write("a.fbx", ReadFile(SamplesDirectory() + "/avatar.fbx"));
  EXPECT_THAT(LineLabels(Run({"a.fbx", "list"})),
              testing::ElementsAre("NODE", "MESH", "ANIM", "MORPH", "", "MATERIAL", "TEXTURE"));
  // A root that is no skeleton's has nothing, but every type is looked at.
  EXPECT_EQ(Run({"-rRootNode/None", "a.fbx", "list"}), "WARNING: Fbx file contains no meshes\n\n");
  // Without names no skeleton and no animation is exported.
  EXPECT_THAT(LineLabels(Run({"-rRootNode/Hips", "a.fbx", "export"})),
              testing::ElementsAre("MESH", "MATERIAL"));
  EXPECT_EQ(run_.status, 0);
}

// The analysis of a scene is kept for the commands that follow, but never beyond the scene.
TEST_F(Commands, AnimationsOfScenesInTurn) {
  dir_.Write("a.fbx", ReadFile(SamplesDirectory() + "/avatar.fbx"));
  dir_.Write("b.fbx", ReadFile(SamplesDirectory() + "/room.fbx"));
  const std::string list = Run({"b.fbx", "list", "skel"});
  const Words exportAnim{"-rRootNode/Hips", "a.fbx", "export", "anim", "Wave", "none"};
  const std::string wave = Run(exportAnim);
  EXPECT_EQ(wave, "ANIMATION: Wave FILENAME: Wave.xaf\n");
  const std::string bytes = ReadFile(dir_.File("Wave.xaf"));
  dir_.Write("all.txt",
             "-rRootNode/Hips a.fbx export anim Wave -\n"
             "-rRootNode/Hips a.fbx export morph Wave-smile -\n"
             "b.fbx list skel -\n"
             "none.fbx list -\n"
             "-rRootNode/Hips a.fbx export anim Wave -\n");
  const std::string out = Run({"-z", "all.txt"});
  EXPECT_THAT(out, StartsWith(wave + "MORPHANIMS: Wave-smile FILENAME: Wave-smile.xpf\n" + list));
  EXPECT_THAT(out, EndsWith("\n\n" + wave));
  EXPECT_EQ(ReadFile(dir_.File("Wave.xaf")), bytes);
}

TEST_F(Commands, ASceneThatCannotBeLoadedEndsTheRun) {
  AddNode("Hips", "LimbNode", SceneBuilder::kRoot);
  Save("good.fbx");
  dir_.Write("bad.fbx", "no scene at all");
  std::filesystem::create_directory(dir_.File("dir.fbx"));
  const std::string good = "NODE: RootNode/Hips MESHCOUNT: 0 FRIENDLYSKELNAME: Hips BONECOUNT: 1\n";
  for (const std::string bad : {"bad.fbx", "dir.fbx"}) {
    SCOPED_TRACE(bad);
    EXPECT_THAT(Run({"good.fbx", "list", "skel", "-", bad, "list", "-", "good.fbx", "list"}),
                StartsWith(good + "Error calling FbxImporter.Initialize on file " + bad + ": "));
    EXPECT_EQ(run_.out.find('\n', kVersionLine.size() + good.size()), run_.out.size() - 1);
    EXPECT_EQ(run_.err, "veltrum: a scene can't be opened; the last line of the output says why\n");
    EXPECT_EQ(run_.status, 2);
  }
  // A file that isn't there does not: the scenes around it are read.
  const std::string out =
      Run({"good.fbx", "list", "skel", "-", "none.fbx", "list", "-", "good.fbx", "list", "skel"});
  EXPECT_THAT(out, StartsWith(good + "ERROR: exception occurred: [[none.fbx] does not exist]\n\n"));
  EXPECT_THAT(out, EndsWith("\n\n" + good));
  EXPECT_EQ(run_.status, 0);
}

// A mode that means nothing still loads its scene.
TEST_F(Commands, NoModeNoRecords) {
  Save("a.fbx");
  EXPECT_EQ(Run({"a.fbx", "look", "mesh"}), "ERROR: Must specify a mode - gotlook\n");
  EXPECT_EQ(run_.status, 0);
}

}  // namespace
