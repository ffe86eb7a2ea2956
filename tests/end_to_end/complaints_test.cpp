// What standard error says in plain words, a line for each cause, while the records stay as they
// are.
#include <filesystem>
#include <sstream>

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
    const SceneBuilder::MeshIds body = scene_.Mesh("Body", {"smile"});
    scene_.Cluster(scene_.Skin(body.mesh), hips);
    scene_.KeyMorph(scene_.AddClip("Talk", 0, 30).layer, body.channels[0], {0, 1, 2}, {1, 2, 3});
  }
  std::string Told(const Words& arguments, int expectedStatus = 0) {
    Run(arguments, expectedStatus);
    return run_.err;
  }
};

// The lines "veltrum: ..." of what was told, without those words.
std::string PlainWords(const std::string& told) {
  constexpr std::string_view kProgram = "veltrum: ";
  std::istringstream lines(told);
  std::string words;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(kProgram)) words += line.substr(kProgram.size()) + "\n";
  }
  return words;
}

TEST_F(Complaints, WordsOfACommand) {
  const std::string root = "--root=RootNode/Hips";
  const std::string oneAxis = " lie on one axis: coordinates stay as they are\n";
  const std::string first = ": options stand before the scene\n";
  const std::string noRoot = " needs --root, the path of a node; RootNode is the scene's root\n";
  const std::string noNumber = " is not wholly a finite number and counts as ";
  const std::string noSize = "0, which leaves nothing of the size\n";
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
      {{"-h"}, ""},
      {{"--rooot=x", "-q", "s.fbx", "list"}, "'--rooot' is no option\n'-q' is no option\n"},
      {{"--rooot=x"}, "'--rooot' is no option\n"},
      {{"-n", "-dout", "-", "-v"},
       "the command '-n -dout' names no input file\nthe command '-v' names no input file\n"},
      {{"s.fbx", "list", "-", "-", "b.fbx"},
       "an empty command ends them all, passed over: 'b.fbx'\n"},
      {{"-z", "/dev/null"}, "command file '/dev/null' holds no commands\n"},
      {{"-r"}, "Option 'r' requires an argument\n"},
      {{"--log=x.log", "s.fbx", "list"},
       "no log 'x.log' is opened: the first --log FILE or -g FILE of the command line, in two "
       "words, "
       "does\n"},
      {{"--scale="}, "Option '--scale=' requires an argument\n"},
      {{"s.fbx", "list", "mesh", root}, "'" + root + "' is taken as a name" + first},
      {{"s.fbx", root, "list"}, "'" + root + "' is taken as an action" + first},
      {{"s.fbx", "list", "-v"}, "'-v' is taken as a type" + first},
      {{"s.fbx", "export", "anim", "-v", root}, "'-v', '" + root + "' are taken as names" + first},
      {{root, "s.fbx", "export", "mesh", "Body", "-v"}, "'-v' is taken as a name" + first},
      {{"s.fbx", "list", "mesh", "-dash", "Body"}, "'-dash' is taken as a name" + first},
      {{"s.fbx", "list", "anim", "Walk"}, "list anim takes no names: 'Walk'\n"},
      {{"s.fbx", "export", "texture", "Skin"},
       "export texture takes no names, all materials are written\n"},
      {{root, "s.fbx", "export", "mesh", "Body", "Bdoy"}, "no mesh of 's.fbx' is called 'Bdoy'\n"},
      {{"-wg", root, "s.fbx", "export", "mesh"},
       "-g finds no group for these meshes, which aren't written: 'Body'\n"},
      {{root, "s.fbx", "export", "anim", "Walk", "Wlak"},
       "no animation under " + root + " is called 'Wlak'\n"},
      {{root, "s.fbx", "export", "morphanim", "Nope"},
       "no morph animation under " + root + " is called 'Nope'\n"},
      {{root, "s.fbx", "export", "morphanim"},
       "export morphanim without names writes nothing; list shows the names\n"},
      {{root, "s.fbx", "export"},
       "export without a type writes no skeletons and no animations: those go by name\n"},
      {{"s.fbx", "export", "anim", "Walk"}, "export anim" + noRoot},
      {{"--root=Hips", "s.fbx", "export", "anim", "Walk"},
       "the root 'Hips' is no node of 's.fbx'\n"},
      {{"--root=Hips", "s.fbx", "list"}, "the root 'Hips' is no node of 's.fbx'\n"},
      {{"--root=RootNode/Body", "s.fbx", "list", "node"},
       "no skeleton begins at the root 'RootNode/Body'\n"},
      {{"--root=find", "s.fbx", "list", "mesh"},
       "--root=find finds several skeletons: 'RootNode/Hips', 'RootNode'\n"},
      {{"--root=find", "s.fbx", "export", "anim", "Walk"},
       "--root=find finds several skeletons: 'RootNode/Hips', 'RootNode'\n"},
      {{"--root=find", "s.fbx", "export", "texture"},
       "--root=find finds several skeletons: 'RootNode/Hips', 'RootNode'\n"},
      {{"--root=find", "s.fbx", "list", "anim"},
       "list anim takes no --root=find, it needs the path of a node\n"},
      {{"--up=y", "s.fbx", "list"}, "--up 'y' and --front '-y', the default," + oneAxis},
      {{"--up=-x", "--front=x", "s.fbx", "list"}, "--up '-x' and --front 'x'" + oneAxis},
      {{"--up=n", "s.fbx", "list"}, "--up 'n' names no axis: coordinates stay as they are\n"},
      {{"--front=n", "s.fbx", "list"}, "--front 'n' names no axis: coordinates stay as they are\n"},
      {{"--coord=lfet", "s.fbx", "list"},
       "--coord 'lfet' is neither left nor right and counts as right\n"},
      {{"--scale=2,5", "s.fbx", "list"}, "--scale '2,5'" + noNumber + "2\n"},
      {{"--scale=1e99", "s.fbx", "list"}, "--scale '1e99'" + noNumber + "inf\n"},
      {{"--scale=two", "s.fbx", "list"}, "--scale 'two'" + noNumber + noSize},
      {{"--scale=1e-400", "s.fbx", "list"}, "--scale '1e-400' counts as " + noSize},
      {{"--cal3d2text=o.xsf", root, "s.fbx", "export", "skel", "A", "B"},
       "several skeletons are written to the one file 'o.xsf', which keeps the last\n"},
      {{"--cal3d2text=o.xsf", "s.fbx", "texture"},
       "'o.xsf' isn't written: --cal3d2text takes skel, mesh or anim\n"},
      // The same cause twice is told once.
      {{"none.fbx", "list", "-", "none.fbx", "list"},
       "'none.fbx' can't be opened: No such file or directory\n"},
  };
  for (const auto& [words, told] : cases) {
    EXPECT_EQ(PlainWords(Told(words)), told) << testing::PrintToString(words);
  }
  EXPECT_EQ(PlainWords(Told({"s.fbx", "export", "mesh", "Body"}, 1)), "export mesh" + noRoot);
  EXPECT_EQ(PlainWords(Told({"--root=find", "s.fbx", "export", "mesh"}, 1)),
            "export mesh takes no --root=find, it needs the path of a node\n");
  EXPECT_EQ(Told({"-w", root}, 2), "veltrum: the command '-w " + root + "' names no input file\n");
}

TEST_F(Complaints, OutputsThatCannotBeWritten) {
  const std::string root = "--root=RootNode/Hips";
  const std::string reason = "' can't be written: No such file or directory\n";
  const std::pair<Words, std::string> cases[] = {
      {{root, "-dno", "s.fbx", "export", "anim", "Walk"}, "no/Walk.xaf"},
      {{root, "-dno", "s.fbx", "export", "morphanim", "Talk-smile"}, "no/Talk-smile.xpf"},
      {{root, "-dno", "s.fbx", "export", "skel", "Hips"}, "no/Hips.xsf"},
      {{root, "-dno", "s.fbx", "export", "mesh"}, "no/Body.xmf"}};
  for (const auto& [words, file] : cases) {
    EXPECT_EQ(Told(words, words.back() == "mesh" ? 1 : 0), "veltrum: '" + file + reason);
  }
  Run({root, "s.fbx", "export", "skel", "Hips"});
  EXPECT_EQ(Told({"--cal3d2text=no/a.xsf", "Hips.xsf", "skel"}), "veltrum: 'no/a.xsf" + reason);
}

TEST_F(Complaints, InputsThatCannotBeRead) {
  std::filesystem::create_directory(dir_.File("d.fbx"));
  dir_.Write("bad.fbx", "no scene at all");
  dir_.Write("old.fbx", "; FBX 5.8.0 project file\n");
  dir_.Write("cut.fbx", scene_.Write().substr(0, 3000));
  const std::pair<Words, std::string> cases[] = {
      {{"bad.fbx", "list"}, "'bad.fbx' can't be opened: File is corrupted " + dir_.File("bad.fbx")},
      {{"d.fbx", "list"}, "'d.fbx' can't be opened: Is a directory"},
      {{"cut.fbx", "list"}, "'cut.fbx' can't be read: File is corrupted (or invalid)"},
      {{"old.fbx", "list"},
       "'old.fbx' can't be opened: Unexpected file type, it is of FBX version 5.8 and versions 6 "
       "and 7 are read"},
      // This one opens and fails when it is read: none of the commands runs.
      {{"s.fbx", "list", "-", "-z", "/proc/self/mem"},
       "command file '/proc/self/mem' can't be read: Input/output error"}};
  for (const auto& [words, told] : cases) {
    EXPECT_EQ(Told(words, 2), "veltrum: " + told + "\n");
    EXPECT_EQ(run_.out.find("NODE"), std::string::npos);
  }
  EXPECT_EQ(Told({"s.fbx/x.fbx", "list"}),
            "veltrum: 's.fbx/x.fbx' can't be opened: Not a directory\n");
  EXPECT_EQ(Told({"-z", "none.txt"}),
            "veltrum: command file 'none.txt' can't be opened: No such file or directory\n");
}

TEST_F(Complaints, LogsAndFullDisks) {
  const std::string full = "can't be written: No space left on device\n";
  EXPECT_EQ(Told({"--log", "no/log", "s.fbx", "list"}),
            "veltrum: the log 'no/log' can't be opened: No such file or directory\n");
  EXPECT_EQ(Told({"--log", "/dev/full", "s.fbx", "list"}), "veltrum: the log '/dev/full' " + full);
  const std::string program = ProgramPath("veltrum") + " -2 s.fbx list >/dev/full";
  EXPECT_EQ(RunProgram("/bin/sh", {"-c", program}, dir_.Path()).err,
            "veltrum: standard output " + full);
  // A log may take the scene's place under any name of it.
  dir_.Write("own.log", "");
  const auto replaced = [&](const Words& words, int status) {
    return Told(words, status).find("replaces the scene") != std::string::npos;
  };
  EXPECT_FALSE(replaced({"--log", "own.log", "s.fbx", "list", "-", "--log", "own.log", "-h"}, 0));
  EXPECT_TRUE(replaced({"-g", "s.fbx", "list"}, 2));
  EXPECT_TRUE(replaced({"-g", "own.log", "list"}, 2));
  std::filesystem::create_hard_link(dir_.File("s.fbx"), dir_.File("link"));
  EXPECT_TRUE(replaced({"--log", "link", "s.fbx", "list"}, 2));
}

TEST_F(Complaints, TwoSlotsWithOneMaterial) {
  const int64_t node = scene_
                           .Mesh("m", {0, 0, 0, 9, 0, 0, 9, 9, 0, 0, 9, 0}, {{0, 1, 2}, {0, 2, 3}},
                                 {Materials({0, 1})})
                           .node;
  for (int i = 0; i < 2; ++i) scene_.Material(node, "same");
  EXPECT_EQ(Told({"--root=RootNode", "s.fbx", "export", "mesh", "m"}),
            "veltrum: mesh 'm' has several material slots with one material; only the polygons of "
            "the last of them are written, and 1 polygon is lost\n");
  EXPECT_THAT(Told({"--cal3d2text=o.xmf", "--root=RootNode", "s.fbx", "export", "mesh"}),
              StartsWith("veltrum: several meshes are written to the one file 'o.xmf', which "));
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
