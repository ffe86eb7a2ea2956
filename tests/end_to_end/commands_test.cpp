// Commands of several types or on several scenes, seen from outside.
#include <filesystem>

#include <gmock/gmock.h>

#include "tests/support/program_test.h"

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;

class Commands : public SceneTest {
 protected:
  void Copy(const std::string& sample) {
    dir_.Write(sample, ReadFile(SamplesDirectory() + "/" + sample));
  }
};

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
  Copy("avatar.fbx");
  EXPECT_THAT(LineLabels(Run({"avatar.fbx", "list"})),
              ElementsAre("NODE", "MESH", "ANIM", "MORPH", "", "MATERIAL", "TEXTURE"));
  // A root that is no skeleton's has nothing, but every type is looked at.
  EXPECT_EQ(Run({"-rRootNode/None", "avatar.fbx", "list"}),
            "WARNING: Fbx file contains no meshes\n\n");
  // Without names no skeleton and no animation is exported.
  EXPECT_THAT(LineLabels(Run({"-rRootNode/Hips", "avatar.fbx", "export"})),
              ElementsAre("MESH", "MATERIAL"));
  // A mode that means nothing still loads its scene.
  EXPECT_EQ(Run({"s.fbx", "look", "mesh"}), "ERROR: Must specify a mode - gotlook\n");
}

// The analysis of a scene is kept for the commands that follow, but never beyond the scene, and
// each command's options are its own.
TEST_F(Commands, AnimationsOfScenesInTurn) {
  Copy("avatar.fbx");
  Copy("room.fbx");
  const std::string list = Run({"room.fbx", "list"});
  const std::string wave =
      Run({"-s2", "-rRootNode/Hips", "avatar.fbx", "export", "anim", "Wave", "none"});
  EXPECT_EQ(wave, "ANIMATION: Wave FILENAME: Wave.xaf\n");
  const std::string bytes = File("Wave.xaf");
  dir_.Write("all.txt",
             "-rRootNode/Hips avatar.fbx export anim Wave -\n"
             "-rRootNode/Hips avatar.fbx export morph Wave-smile -\n"
             "room.fbx list -\n"
             "none.fbx list -\n"
             "-rRootNode/Hips avatar.fbx export anim Wave -\n"
             "-s2 -rRootNode/Hips avatar.fbx export anim Wave -\n");
  const std::string out = Run({"-z", "all.txt"});
  EXPECT_THAT(out, StartsWith(wave + "MORPHANIMS: Wave-smile FILENAME: Wave-smile.xpf\n" + list));
  EXPECT_THAT(out, EndsWith("\n\n" + wave + wave));
  EXPECT_EQ(File("Wave.xaf"), bytes);
}

TEST_F(Commands, ASceneThatCannotBeLoadedEndsTheRun) {
  scene_.Bone("Hips");
  dir_.Write("bad.fbx", "no scene at all");
  std::filesystem::create_directory(dir_.File("dir.fbx"));
  const std::string good = "NODE: RootNode/Hips MESHCOUNT: 0 FRIENDLYSKELNAME: Hips BONECOUNT: 1\n";
  for (const std::string bad : {"bad.fbx", "dir.fbx"}) {
    const std::string out =
        Run({"s.fbx", "list", "skel", "-", bad, "list", "-", "s.fbx", "list"}, 2);
    EXPECT_THAT(out,
                StartsWith(good + "Error calling FbxImporter.Initialize on file " + bad + ": "));
    EXPECT_EQ(out.find('\n', good.size()), out.size() - 1);
  }
  // A file that isn't there does not: the scenes around it are read.
  const std::string out =
      Run({"s.fbx", "list", "skel", "-", "none.fbx", "list", "-", "s.fbx", "list", "skel"});
  EXPECT_THAT(out, StartsWith(good + "ERROR: exception occurred: [[none.fbx] does not exist]\n\n"));
  EXPECT_THAT(out, EndsWith("\n\n" + good));
}

}  // namespace
