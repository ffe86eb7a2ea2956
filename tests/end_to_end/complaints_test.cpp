// What standard error says in plain words, a line for each cause, while the records stay as they
// are.
#include <filesystem>

#include <gmock/gmock.h>

#include "tests/support/program_test.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

class Complaints : public SceneTest {
 protected:
  Complaints() {
    const int64_t hips = scene_.Bone("Hips");
    scene_.Key(scene_.AddClip("Walk", 0, 30).layer, hips, "TX", {0, 10, 20}, {1, 2, 3});
    scene_.Cluster(scene_.Skin(scene_.Mesh("Body").mesh), hips);
  }
  std::string Told(const Words& arguments, int expectedStatus = 0) {
    Run(arguments, expectedStatus);
    return run_.err;
  }
};

TEST_F(Complaints, WordsOfACommand) {
  const std::string root = "--root=RootNode/Hips";
  const std::string oneAxis = " lie on one axis: coordinates stay as they are\n";
  struct Case {
    Words words;
    std::string told;
  };
  const Case cases[] = {
      {{root, "--up=z", "--front=-Y", "--coord=left", "--scale=1e-3", "s.fbx", "list"}, ""},
      {{root, "s.fbx", "export", "mesh", "Body"}, ""},
      {{root, "s.fbx", "export", "anim", "Walk"}, ""},
      {{root, "s.fbx", "export", "skel", "Any"}, ""},
      {{"s.fbx", "export", "texture"}, ""},
      {{"--rooot=x", "-q", "s.fbx", "list"},
       "'--rooot' is no option\nveltrum: '-q' is no option\n"},
      {{"s.fbx", "list", "mesh", root},
       "'" + root + "' is taken as a name: options stand before the scene\n"},
      {{"s.fbx", "list", "mesh", "-dash", "Body"},
       "'-dash' is taken as a name: options stand before the scene\n"},
      {{"s.fbx", "list", "anim", "Walk"}, "list anim takes no names: 'Walk'\n"},
      {{"s.fbx", "export", "texture", "Skin"},
       "export texture takes no names, all materials are written\n"},
      {{root, "s.fbx", "export", "mesh", "Body", "Bdoy"}, "no mesh of 's.fbx' is called 'Bdoy'\n"},
      {{root, "s.fbx", "export", "anim", "Walk", "Wlak"},
       "no animation of the root 'RootNode/Hips' is called 'Wlak'\n"},
      {{root, "s.fbx", "export", "morphanim"},
       "export morphanim without names writes nothing; list shows the names\n"},
      {{root, "s.fbx", "export"},
       "export without a type writes no skeletons and no animations: those go by name\n"},
      {{"--root=Hips", "s.fbx", "list"}, "the root 'Hips' is no node of 's.fbx'\n"},
      {{"--root=RootNode/Body", "s.fbx", "list", "node"},
       "no skeleton begins at the root 'RootNode/Body'\n"},
      {{"--root=find", "s.fbx", "list", "mesh"},
       "--root=find finds several skeletons: 'RootNode/Hips', 'RootNode'\n"},
      {{"--root=find", "s.fbx", "list", "anim"},
       "list anim takes no --root=find, it needs the path of a node\n"},
      {{"--up=y", "s.fbx", "list"}, "--up 'y' and --front '-y', the default," + oneAxis},
      {{"--up=-x", "--front=x", "s.fbx", "list"}, "--up '-x' and --front 'x'" + oneAxis},
      {{"--front=n", "s.fbx", "list"}, "--front 'n' names no axis: coordinates stay as they are\n"},
      {{"--coord=lfet", "s.fbx", "list"},
       "--coord 'lfet' is neither left nor right and counts as right\n"},
      {{"--scale=2,5", "s.fbx", "list"},
       "--scale '2,5' is not wholly a finite number and counts as 2\n"},
      {{"--scale=1e99", "s.fbx", "list"},
       "--scale '1e99' is not wholly a finite number and counts as inf\n"},
      {{"--cal3d2text=o.xsf", root, "s.fbx", "export", "skel", "A", "B"},
       "several skeletons are written to the one file 'o.xsf', which keeps the last\n"},
      // The same cause twice is told once.
      {{"none.fbx", "list", "-", "none.fbx", "list"}, "[none.fbx] does not exist\n"},
  };
  for (const auto& [words, told] : cases) {
    EXPECT_EQ(Told(words), told.empty() ? told : "veltrum: " + told)
        << testing::PrintToString(words);
  }
  EXPECT_THAT(Told({"s.fbx", "export", "mesh"}, 1),
              StartsWith("veltrum: export mesh needs --root, "));
}

TEST_F(Complaints, OutputsThatCannotBeWritten) {
  const std::string root = "--root=RootNode/Hips";
  const std::string reason = "' can't be written: No such file or directory\n";
  const std::pair<Words, std::string> cases[] = {
      {{root, "-dno", "s.fbx", "export", "anim", "Walk"}, "no/Walk.xaf"},
      {{root, "-dno", "s.fbx", "export", "skel", "Hips"}, "no/Hips.xsf"},
      {{root, "-dno", "s.fbx", "export", "mesh"}, "no/Body.xmf"}};
  for (const auto& [words, file] : cases) {
    EXPECT_EQ(Told(words, words.back() == "mesh" ? 1 : 0), "veltrum: '" + file + reason);
  }
  Run({root, "s.fbx", "export", "skel", "Hips"});
  EXPECT_EQ(Told({"--cal3d2text=no/a.xsf", "Hips.xsf", "skel"}), "veltrum: 'no/a.xsf" + reason);
}

TEST_F(Complaints, ScenesLogsAndCommandFiles) {
  dir_.Write("bad.fbx", "no scene at all");
  EXPECT_THAT(Told({"bad.fbx", "list"}, 2), StartsWith("veltrum: 'bad.fbx' can't be opened: "));
  EXPECT_EQ(Told({"--log", "no/log", "s.fbx", "list"}),
            "veltrum: the log 'no/log' can't be opened: No such file or directory\n");
  EXPECT_EQ(Told({"-z", "none.txt"}),
            "veltrum: command file 'none.txt' can't be opened: No such file or directory\n");
  EXPECT_THAT(Told({"-g", "s.fbx", "list"}, 2),
              StartsWith("veltrum: the log that -g names replaces the scene 's.fbx'\n"));
  // This one opens and fails when it is read: none of the commands runs.
  const std::string out = Run({"s.fbx", "list", "-", "-z", "/proc/self/mem"}, 2);
  EXPECT_EQ(out, "");
  EXPECT_EQ(run_.err, "veltrum: command file '/proc/self/mem' can't be read: Input/output error\n");
}

// A stack may bear the name that another one gets.
TEST_F(Complaints, AnimationsKeepFilesOfTheirOwn) {
  const int64_t hips = scene_.Bone("Tail");
  float height = 5;
  for (const std::string name : {"Run", "Run", "Run_1"}) {
    scene_.Key(scene_.AddClip(name, 0, 30).layer, hips, "TX", {0, 10, 20}, {height++, 2, 3});
  }
  const std::string out =
      Run({"--root=RootNode/Tail", "s.fbx", "export", "anim", "Run", "Run_1", "Run_1_1"});
  for (const std::string name : {"Run", "Run_1", "Run_1_1"}) {
    EXPECT_THAT(out, HasSubstr("ANIMATION: " + name + " FILENAME: " + name + ".xaf\n"));
  }
}

}  // namespace
