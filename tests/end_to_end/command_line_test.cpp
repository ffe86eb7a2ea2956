// What the program makes of its arguments, seen from outside. Most runs name a scene that isn't
// there: its records show that the command ran, and as what.
#include <filesystem>

#include <gmock/gmock.h>

#include "tests/support/program_test.h"

namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::string kHelpStart = "veltrum version 012\n\nFBX lib version 1.0.0\n";
const std::string kHelpRecord = kHelpStart + "\toption:HELP\t";
const std::string kAllObjects = "\texportObjectName = ALL OBJECTS";

std::string Dump(const std::string& mode, const std::string& type, const std::string& input,
                 const std::string& names = kAllObjects, const std::string& directory = "") {
  return "\toption:NORMAL\tmode =" + mode + "\ttype =" + type + "\tinputFilename:" + input +
         "\toutputFilename:\tskeletonRootPath:" + names +
         "\tshowLabels:YES\tnormalizeWeight:NO\tuseEvaluatedLocal:NO\tencodeNames:NO"
         "\tscaleFactor:1\tdirectoryForOutputFiles:" +
         directory + "\n";
}

// What a command prints whose scene isn't there.
std::string Ran(const std::string& mode, const std::string& type, const std::string& input,
                const std::string& names = kAllObjects, const std::string& directory = "") {
  return "ERROR: exception occurred: [[" + input +
         "] does not exist]\n\nERROR: " + Dump(mode, type, input, names, directory) + "\n";
}

using CommandLine = ProgramTest;

TEST_F(CommandLine, WithoutTheFormWordOnlyTheVersion) {
  for (const Words& arguments : {Words{}, Words{"-1", "a.fbx", "list"}, Words{"a.fbx", "list"},
                                 Words{"-22"}, Words{"--", "-2"}}) {
    const RunResult run = RunVeltrum(arguments, dir_.Path());
    EXPECT_EQ(run.out, kVersionLine);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
  }
}

TEST_F(CommandLine, HelpScreen) {
  const std::string help = Run({});
  EXPECT_THAT(help, StartsWith(kHelpRecord));
  EXPECT_THAT(help, HasSubstr("\n  -h --help         Print usage and exit.\n"));
  EXPECT_THAT(help, HasSubstr("\nUSAGE:\n"));
  for (const Words& words : {Words{"-"}, Words{"-h"}, Words{"-l"}, Words{"--help=x"},
                             Words{"--nosuch"}, Words{"-", "a.fbx", "list"}, Words{"-l", "-"}}) {
    EXPECT_EQ(Run(words), help) << words.front();
  }
  // A verbose command has shown its dump while it was parsed.
  const std::string verbose = Run({"-v"});
  EXPECT_THAT(verbose, StartsWith("\toption:NORMAL\t"));
  EXPECT_THAT(verbose, HasSubstr("directoryForOutputFiles:\n" + kHelpStart + "  -h --help"));
}

TEST_F(CommandLine, SeparatorsCutCommands) {
  const std::string a = Ran("LIST", "ALL", "a.fbx");
  const std::string b = Ran("LIST", "ALL", "b.fbx");
  EXPECT_EQ(Run({"a.fbx", "list"}), a);
  EXPECT_EQ(Run({"a.fbx", "list", "-", "b.fbx", "list"}), a + b);
  EXPECT_EQ(Run({"a.fbx", "list", "-"}), a);
  EXPECT_EQ(Run({"a.fbx", "list", "-", "-", "b.fbx", "list"}), a);
  // No option goes over into the next command.
  EXPECT_THAT(Run({"-s", "2", "a.fbx", "list", "-", "b.fbx", "list"}), EndsWith("\n" + b));
  // The errors of all commands come before the first one runs.
  EXPECT_THAT(Run({"a.fbx", "list", "-", "b.fbx"}),
              StartsWith("ERROR: Must specify a type\n" + a + kHelpRecord));
  EXPECT_THAT(run_.err, StartsWith("Must specify a type\n"));
}

TEST_F(CommandLine, FileModeTypeAndNames) {
  EXPECT_EQ(Run({"A.FBX", "LIST", "MESHES"}), Ran("LIST", "MESH", "A.FBX"));
  EXPECT_EQ(Run({"-h", "a.fbx", "list", "mesh"}), Ran("LIST", "MESH", "a.fbx"));
  EXPECT_EQ(Run({"\"a b.fbx\"", "\"export\"", "\"skeleton\"", "\"Left Arm\"", "Head"}),
            Ran("EXPORT", "NODE", "a b.fbx", "\texportObjectNames = \t0:Left Arm\t1:Head"));
  const std::vector<std::pair<std::string, std::string>> types = {
      {"mesh", "MESH"},  {"skel", "NODE"},           {"NODES", "NODE"},     {"anim", "ANIM"},
      {"animx", "ANIM"}, {"morphanim", "MORPHANIM"}, {"texture", "TEXTURE"}};
  for (const auto& [word, type] : types) {
    EXPECT_EQ(Run({"a.fbx", "list", word}), Ran("LIST", type, "a.fbx"));
  }
  EXPECT_EQ(Run({"a.fbx", "export"}), Ran("EXPORT", "ALL", "a.fbx"));
}

TEST_F(CommandLine, WordsThatAreWrong) {
  EXPECT_THAT(Run({"a.fbx"}), StartsWith("ERROR: Must specify a type\n" + kHelpRecord));
  EXPECT_EQ(run_.err, "Must specify a type\n");
  EXPECT_THAT(
      Run({"a.fbx", "list", "BONES"}),
      StartsWith("ERROR: type 'bones' is invalid\nERROR: Must specify a type\n" + kHelpRecord));
  EXPECT_EQ(run_.err, "type 'bones' is invalid\nMust specify a type\n");
  EXPECT_THAT(Run({"a.fbx", "LISTS"}),
              StartsWith("ERROR: Must specify a mode - gotlists\nERROR: Must specify a type\n"));
  // A command that reaches a type runs all the same.
  EXPECT_EQ(
      Run({"A.TXT", "list", "mesh"}),
      "ERROR: FBX file must have a fbx extension - gota.txt\n" + Ran("LIST", "MESH", "A.TXT"));
  EXPECT_EQ(Run({"a.fbx", "foo", "mesh"}),
            "ERROR: Must specify a mode - gotfoo\n" + Ran("UNKNOWN_MODE", "MESH", "a.fbx"));
}

TEST_F(CommandLine, Options) {
  for (const char* directory : {"--directory=out", "--directory=out/", "-d\"out\""}) {
    EXPECT_EQ(Run({directory, "a.fbx", "export"}),
              Ran("EXPORT", "ALL", "a.fbx", kAllObjects, "out/"));
  }
  EXPECT_THAT(Run({"-nwueg", "--root", "\"RootNode/My Hips\"", "-s0.5", "a.fbx", "list"}),
              AllOf(HasSubstr("skeletonRootPath:RootNode/My Hips\t"),
                    HasSubstr("showLabels:NO\tnormalizeWeight:YES\tuseEvaluatedLocal:YES"
                              "\tencodeNames:YES\tscaleFactor:0.5\t")));
  EXPECT_THAT(Run({"--up=-Y", "--front", "Z", "--coord=LEFT", "--room", "--rename", "--weight",
                   "a.fbx", "list"}),
              HasSubstr("normalizeWeight:YES"));
  // The dump of a verbose command comes when it is parsed, when it runs, and with its failure.
  const std::string dump = Dump("LIST", "ALL", "a.fbx");
  EXPECT_EQ(Run({"-vv", "a.fbx", "list"}), dump + dump + Ran("LIST", "ALL", "a.fbx"));
}

TEST_F(CommandLine, OptionsThatAreWrong) {
  for (const char* scale : {"-s0", "-sbig"}) {
    EXPECT_THAT(Run({scale, "a.fbx", "list"}),
                AllOf(HasSubstr("scaleFactor:0\t"), Not(HasSubstr("--scale option"))));
    EXPECT_THAT(run_.err, StartsWith("--scale option required a value\n"));
  }
  // A value that is missing stops the parsing, and the command runs as an empty one.
  const std::string empty = Ran("UNKNOWN_MODE", "UNKNOWN_OBJECT", "");
  EXPECT_EQ(Run({"-v", "--root=", "a.fbx", "list"}),
            "ERROR: Option '--root=' requires an argument\n\n" + empty);
  EXPECT_EQ(Run({"a.fbx", "list", "-", "-e", "--log"}),
            "ERROR: Option '--log' requires an argument\n\n" + Ran("LIST", "ALL", "a.fbx") + empty);
  // The compare option's row takes no value.
  EXPECT_EQ(Run({"-c", "a.fbx", "list", "mesh"}),
            "ERROR: --compare command requires filename of cal3d file to compare to fbx file\n\n" +
                Ran("LIST", "MESH", "a.fbx"));
}

TEST_F(CommandLine, ANameTooShortForAnExtensionEndsTheRun) {
  for (const Words& words :
       {Words{"fbx", "list"}, Words{"-r", "Hips"}, Words{"-c"}, Words{"--cal3d2text=out.xsf"},
        Words{"a.fbx", "list", "-", "b", "list"}}) {
    EXPECT_THAT(Run(words, 2), Not(HasSubstr("does not exist")));  // nothing ran before
    EXPECT_THAT(run_.err, AnyOf(StartsWith("veltrum: input file name '"),
                                EndsWith("' names no input file\n")));
  }
  Run({"a\nb", "list"}, 2);
  EXPECT_EQ(run_.err, "veltrum: input file name 'a b' is too short to hold an extension\n");
}

TEST_F(CommandLine, CommandFiles) {
  const std::string b = Ran("EXPORT", "ALL", "b.fbx");
  const std::string both =
      Ran("LIST", "MESH", "a b.fbx", "\texportObjectNames = \t0:Left Arm\t1:x") + b;
  dir_.Write("list.txt", "\"a b.fbx\" list mesh \"Left Arm\" \"x\"\n\n   \n-\nb.fbx\nexport");
  // The options around -z are dropped with everything else in its command.
  EXPECT_EQ(Run({"-v", "-s", "3", "-z", "list.txt", "c.fbx", "list"}), both);
  EXPECT_EQ(Run({"-zlist.txt"}), both);
  EXPECT_EQ(Run({"-z", "\"list.txt\"", "-", "b.fbx", "export"}), both + b);
  dir_.Write("outer.txt", "\xEF\xBB\xBF-z list.txt -\r\nb.fbx export -\r\n");  // from Windows
  EXPECT_EQ(Run({"-z", "outer.txt"}), both + b);
  // The form word belongs to the command line alone: here it is an unknown option.
  dir_.Write("cut.txt", "-2 b.fbx export - - a.fbx list\n");
  EXPECT_EQ(Run({"-z", "cut.txt"}), b);
}

TEST_F(CommandLine, CommandFilesThatAreWrong) {
  const std::string help = Run({});
  for (const std::string value : {"\"no such\"", "."}) {
    EXPECT_EQ(Run({"-z", value}), "Unable to open command file: " + value + help);
  }
  dir_.Write("empty.txt", "");
  EXPECT_EQ(Run({"-z", "empty.txt"}), help);
  dir_.Write("loop.txt", "-z loop2.txt -\nb.fbx export\n");
  dir_.Write("loop2.txt", "-z ./loop.txt\n");
  EXPECT_EQ(Run({"-z", "loop.txt"}),
            "ERROR: command file './loop.txt' reads itself\n" + Ran("EXPORT", "ALL", "b.fbx"));
}

TEST_F(CommandLine, Log) {
  const std::string dump = Dump("LIST", "ALL", "a.fbx");
  EXPECT_EQ(Run({"--log", "\"my log.txt\"", "a.fbx", "list"}), Ran("LIST", "ALL", "a.fbx"));
  const std::string words = "--log \"my log.txt\" a.fbx list\n\n";
  const std::string log = File("my log.txt");
  EXPECT_THAT(log, StartsWith(kVersionLine + "\t[main.cpp] info\tARGUMENTS: COMMAND:  "));
  EXPECT_THAT(log, EndsWith(" -2 " + words + "\t[command_line.cpp] info\tCOMMAND:  -2 " + words +
                            "\t[command_line.cpp] info\tCOMMAND:  " + words +
                            "\t[command_line.cpp] info\tCOMMAND:  " + words +
                            "\t[command_set.cpp] info\tprocessCommandSet: " + dump + "\n" +
                            "ERROR: exception occurred: [[a.fbx] does not exist]\n\n" +
                            "\t[command_set.cpp] info\tprocessCommandSet: " + dump +
                            "\nERROR: " + dump + "\n"));
}

TEST_F(CommandLine, LogNames) {
  Run({"--log=x.txt", "a.fbx", "list"});  // not the form that opens a log
  EXPECT_TRUE(std::filesystem::is_empty(dir_.Path()));
  Run({"--log", "one.txt", "--log", "two.txt"});
  EXPECT_FALSE(Exists("two.txt"));
  EXPECT_THAT(File("one.txt"),
              EndsWith("] info\tUSAGE: veltrum version 012 FBX lib version 1.0.0\n"));
  // The scan takes -g for the log option, whatever the word behind it is.
  Run({"-g", "-e", "a.fbx", "list"});
  EXPECT_THAT(File("-e"), HasSubstr("encodeNames:YES"));
  EXPECT_THAT(RunVeltrum({"-2", "-g", "", "x"}, dir_.Path()).out,
              StartsWith("WARNING: -g=error opening logfile\n"));
  EXPECT_EQ(Run({"--log", "no/such/log", "a.fbx", "list"}), Ran("LIST", "ALL", "a.fbx"));
}

// Commands of several types or on several scenes, seen from outside.

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
