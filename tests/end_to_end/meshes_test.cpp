// Scenes in, mesh listings and mesh files out, through the program.
#include <filesystem>
#include <set>

#include <gmock/gmock.h>

#include "tests/support/program_test.h"

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

class Meshes : public SceneTest {};

TEST_F(Meshes, Lists) {
  EXPECT_EQ(Run({"s.fbx", "list", "mesh"}), "WARNING: Fbx file contains no meshes\n");
  EXPECT_EQ(Run({"-n", "s.fbx", "list", "mesh"}), "");
  scene_.Mesh("Body");
  scene_.Mesh("Body");
  scene_.Material(scene_.Mesh("A b", {"smile"}).node, "Skin");
  scene_.Mesh("Zed", {}, scene_.AddModel("Other"));  // no part of the tree
  const std::string bodies = "MESH: Body MATERIALS: 0 \nMESH: Body_1 MATERIALS: 0 \n";
  EXPECT_EQ(Run({"s.fbx", "list", "mesh"}), "MESH: A b MATERIALS: 1 \n" + bodies);
  EXPECT_EQ(Run({"-rRootNode", "s.fbx", "list", "mesh"}), "MESH: A b MATERIALS: 1 \n" + bodies);
  // A root that isn't there stands for the scene's.
  EXPECT_EQ(Run({"-rRootNode/None", "s.fbx", "list", "mesh"}),
            "MESH: A b MATERIALS: 1 \n" + bodies);
  EXPECT_EQ(Run({"-n", "s.fbx", "list", "mesh"}), "A b\nBody\nBody_1\n");
  // A labelled name is encoded twice.
  EXPECT_EQ(Run({"-e", "s.fbx", "list", "mesh"}), "MESH: A%2520b MATERIALS: 1 \n" + bodies);
  EXPECT_EQ(Run({"-ne", "s.fbx", "list", "mesh"}), "A%20b\nBody\nBody_1\n");
  // A verbose listing ends its lines behind the morph targets.
  const std::string verbose = Run({"-v", "s.fbx", "list", "mesh"});
  EXPECT_THAT(verbose, HasSubstr("A b is RootNode/A b 0x"));
  EXPECT_THAT(verbose, EndsWith("\nMESH: A b MATERIALS: 1  MORPH: smile \n"
                                "MESH: Body MATERIALS: 0  \nMESH: Body_1 MATERIALS: 0  \n"));
}

TEST_F(Meshes, FailuresAreReportedAndGiveStatus1) {
  scene_.Mesh("m");
  const std::string start = "WARNING: could not create file for meshes from  s.fbx  with root  ";
  EXPECT_EQ(Run({"s.fbx", "export", "mesh"}, 1),
            "ERROR: Skeleton Root Node [] not found in FBX\n\n" + start + " for ALL OBJECTS\n");
  // From the middle of the list on, the closing quotes have a comma.
  Words command{"-dmissing", "-rRootNode", "s.fbx", "export", "mesh", "m", "b"};
  EXPECT_THAT(Run(command, 1), EndsWith(start + "RootNode  and mesh names  ' m '   ' b ',  \n"));
  command.push_back("c");
  EXPECT_THAT(Run(command, 1),
              EndsWith(start + "RootNode  and mesh names  ' m '   ' b '   ' c ',  \n"));
  // The last command decides; a help screen decides nothing.
  Run({"-rHips", "s.fbx", "export", "mesh", "-", "s.fbx", "list", "mesh"}, 0);
  Run({"-rHips", "s.fbx", "export", "mesh", "-", "-h"}, 1);
}

// `list texture` and `export texture` over scenes made for the purpose.

class Materials : public SceneTest {
 protected:
  // A mesh with one material that has one texture.
  void AddDressed(const std::string& mesh, const std::string& material, const std::string& path,
                  int64_t parent = SceneBuilder::kRoot) {
    scene_.Texture(scene_.Material(scene_.Mesh(mesh, {}, parent).node, material), "DiffuseColor",
                   path);
  }
};

TEST_F(Materials, AFileThatCannotBeWrittenLeavesNoRecord) {
  AddDressed("Body", "A", "a.png");
  AddDressed("Hat", "B", "b.png");
  std::filesystem::create_directories(dir_.File("B.xrf/in the way"));
  EXPECT_EQ(Run({"s.fbx", "export", "texture"}),
            "MATERIAL: 1 A FILENAME: A.xrf TEXTURE: DiffuseColor a.png\n");
  EXPECT_EQ(run_.err, "veltrum: 'B.xrf' can't be written: Is a directory\n");
}

TEST_F(Materials, FilesOfTheMediaFolderAreListed) {
  scene_.Mesh("Body");
  std::filesystem::create_directories(dir_.File("s.fbm/folder"));
  dir_.Write("s.fbm/my skin.png", "pixels");
  const std::string rest =
      "\nMATERIAL: 0 unused TEXTURE: DiffuseColor unused\n"
      "TEXTURE: DiffuseColor FILENAME: unused MATERIAL: unused\n";
  EXPECT_EQ(Run({"s.fbx", "list", "texture"}), "TEXTURE: s.fbm/my skin.png\n" + rest);
  EXPECT_EQ(Run({"-e", "s.fbx", "list", "texture"}), "TEXTURE: s.fbm%2Fmy%20skin.png\n" + rest);
}

}  // namespace
