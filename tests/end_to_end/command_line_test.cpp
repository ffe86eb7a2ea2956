// What the program makes of its arguments, seen from outside. Most runs name a scene that isn't
// there: its records show that the command ran, and as what.
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Words = std::vector<std::string>;

const std::string kVersionLine = "VERSION: 012 FBX lib version 1.0.0\n";
const std::string kHelpStart = "veltrum version 012\n\nFBX lib version 1.0.0\n";

std::string Dump(const std::string& mode, const std::string& type, const std::string& input,
                 const std::string& names = "\texportObjectName = ALL OBJECTS",
                 const std::string& rest = "\tscaleFactor:1\tdirectoryForOutputFiles:") {
  return "\toption:NORMAL\tmode =" + mode + "\ttype =" + type + "\tinputFilename:" + input +
         "\toutputFilename:\tskeletonRootPath:" + names +
         "\tshowLabels:YES\tnormalizeWeight:NO\tuseEvaluatedLocal:NO\tencodeNames:NO" + rest + "\n";
}

// The records of a command whose scene isn't there.
std::string Missing(const std::string& input, const std::string& dump) {
  return "ERROR: exception occurred: [[" + input + "] does not exist]\n\nERROR: " + dump + "\n";
}

class CommandLine : public testing::Test {
 protected:
  // The output behind the version record; `arguments` follow the "-2".
  std::string Run(Words arguments) {
    arguments.insert(arguments.begin(), "-2");
    run_ = RunVeltrum(arguments, dir_.Path());
    EXPECT_THAT(run_.out, StartsWith(kVersionLine));
    return run_.out.substr(std::min(kVersionLine.size(), run_.out.size()));
  }

  // The dumps of the commands that ran, from the records of their missing scenes.
  Words Ran(const Words& arguments) {
    const std::string out = Run(arguments);
    EXPECT_EQ(run_.status, 0);
    Words dumps;
    const std::string start = "ERROR: \toption:";
    for (size_t at = out.find(start); at != std::string::npos; at = out.find(start, at + 1)) {
      const size_t first = at + std::string("ERROR: ").size();
      dumps.push_back(out.substr(first, out.find('\n', first) + 1 - first));
    }
    return dumps;
  }

  TempDir dir_;
  RunResult run_;
};

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
  EXPECT_EQ(run_.status, 0);
  EXPECT_THAT(help, StartsWith(kHelpStart + "\toption:HELP\tmode =UNKNOWN_MODE"));
  EXPECT_THAT(help, HasSubstr("\n  -h --help         Print usage and exit.\n"));
  EXPECT_THAT(help, HasSubstr("\nUSAGE:\n"));
  for (const Words& words : {Words{"-"}, Words{"-h"}, Words{"-l"}, Words{"--help=x"},
                             Words{"--nosuch"}, Words{"-", "a.fbx", "list"}, Words{"-l", "-"}}) {
    EXPECT_EQ(Run(words), help) << words.front();
  }
  // A verbose command has shown its dump while it was parsed.
  EXPECT_THAT(Run({"-v"}), StartsWith("\toption:NORMAL\t"));
  EXPECT_THAT(run_.out, HasSubstr("directoryForOutputFiles:\n" + kHelpStart + "  -h --help"));
}

TEST_F(CommandLine, SeparatorsCutCommands) {
  const std::string a = Dump("LIST", "ALL", "a.fbx");
  const std::string b = Dump("LIST", "ALL", "b.fbx");
  EXPECT_EQ(Run({"a.fbx", "list"}), Missing("a.fbx", a));
  EXPECT_EQ(run_.err, "");
  EXPECT_EQ(run_.status, 0);
  EXPECT_EQ(Run({"a.fbx", "list", "-", "b.fbx", "list"}),
            Missing("a.fbx", a) + Missing("b.fbx", b));
  EXPECT_EQ(Run({"a.fbx", "list", "-"}), Missing("a.fbx", a));
  EXPECT_EQ(Run({"a.fbx", "list", "-", "-", "b.fbx", "list"}), Missing("a.fbx", a));
  // No option goes over into the next command.
  EXPECT_THAT(Ran({"-s", "2", "a.fbx", "list", "-", "b.fbx", "list"}),
              testing::ElementsAre(HasSubstr("scaleFactor:2"), b));
}

TEST_F(CommandLine, ErrorsOfAllCommandsComeBeforeTheFirstRuns) {
  const std::string out = Run({"a.fbx", "list", "-", "b.fbx"});
  EXPECT_THAT(out, StartsWith("ERROR: Must specify a type\n" +
                              Missing("a.fbx", Dump("LIST", "ALL", "a.fbx")) + kHelpStart +
                              "\toption:HELP"));
  EXPECT_EQ(run_.err, "Must specify a type\n");
}

TEST_F(CommandLine, FileModeTypeAndNames) {
  EXPECT_THAT(Ran({"A.FBX", "LIST", "MESHES"}),
              testing::ElementsAre(Dump("LIST", "MESH", "A.FBX")));
  EXPECT_THAT(Ran({"-h", "a.fbx", "list", "mesh"}),
              testing::ElementsAre(Dump("LIST", "MESH", "a.fbx")));
  EXPECT_THAT(Ran({"\"a b.fbx\"", "\"export\"", "\"skeleton\"", "\"Left Arm\"", "Head"}),
              testing::ElementsAre(
                  Dump("EXPORT", "NODE", "a b.fbx", "\texportObjectNames = \t0:Left Arm\t1:Head")));
  const std::vector<std::pair<std::string, std::string>> types = {
      {"mesh", "MESH"},  {"skel", "NODE"},           {"NODES", "NODE"},     {"anim", "ANIM"},
      {"animx", "ANIM"}, {"morphanim", "MORPHANIM"}, {"texture", "TEXTURE"}};
  for (const auto& [word, type] : types) {
    EXPECT_THAT(Ran({"a.fbx", "list", word}), testing::ElementsAre(Dump("LIST", type, "a.fbx")));
  }
  EXPECT_THAT(Ran({"a.fbx", "export"}), testing::ElementsAre(Dump("EXPORT", "ALL", "a.fbx")));
}

TEST_F(CommandLine, WordsThatAreWrong) {
  const std::string help = kHelpStart + "\toption:HELP\t";
  EXPECT_THAT(Run({"a.fbx"}), StartsWith("ERROR: Must specify a type\n" + help));
  EXPECT_EQ(run_.err, "Must specify a type\n");
  EXPECT_EQ(run_.status, 0);
  EXPECT_THAT(Run({"a.fbx", "list", "BONES"}),
              StartsWith("ERROR: type 'bones' is invalid\nERROR: Must specify a type\n" + help));
  EXPECT_EQ(run_.err, "type 'bones' is invalid\nMust specify a type\n");
  EXPECT_THAT(Run({"a.fbx", "LISTS"}),
              StartsWith("ERROR: Must specify a mode - gotlists\nERROR: Must specify a type\n"));
  // A command that reaches a type runs all the same.
  EXPECT_EQ(Run({"A.TXT", "list", "mesh"}),
            "ERROR: FBX file must have a fbx extension - gota.txt\n" +
                Missing("A.TXT", Dump("LIST", "MESH", "A.TXT")));
  EXPECT_EQ(Run({"a.fbx", "foo", "mesh"}),
            "ERROR: Must specify a mode - gotfoo\n" +
                Missing("a.fbx", Dump("UNKNOWN_MODE", "MESH", "a.fbx")));
}

TEST_F(CommandLine, Options) {
  const std::string names = "\texportObjectName = ALL OBJECTS";
  for (const char* directory : {"--directory=out", "--directory=out/", "-d\"out\""}) {
    EXPECT_THAT(Ran({directory, "a.fbx", "export"}),
                testing::ElementsAre(Dump("EXPORT", "ALL", "a.fbx", names,
                                          "\tscaleFactor:1\tdirectoryForOutputFiles:out/")));
  }
  EXPECT_THAT(Ran({"-nwueg", "--root", "\"RootNode/My Hips\"", "-s0.5", "a.fbx", "list"}),
              testing::ElementsAre(
                  AllOf(HasSubstr("skeletonRootPath:RootNode/My Hips\t"),
                        HasSubstr("showLabels:NO\tnormalizeWeight:YES\tuseEvaluatedLocal:YES"
                                  "\tencodeNames:YES\tscaleFactor:0.5\t"))));
  EXPECT_THAT(Ran({"--up=-Y", "--front", "Z", "--coord=LEFT", "--room", "--rename", "--weight",
                   "a.fbx", "list"}),
              testing::ElementsAre(HasSubstr("normalizeWeight:YES")));
  // The dump of a verbose command comes when it is parsed, when it runs, and with its failure.
  const std::string dump = Dump("LIST", "ALL", "a.fbx");
  EXPECT_EQ(Run({"-vv", "a.fbx", "list"}), dump + dump + Missing("a.fbx", dump));
}

TEST_F(CommandLine, OptionsThatAreWrong) {
  EXPECT_THAT(Ran({"-s", "0", "a.fbx", "list"}),
              testing::ElementsAre(HasSubstr("scaleFactor:0\t")));
  EXPECT_EQ(run_.err, "--scale option required a value\n");
  EXPECT_THAT(run_.out, Not(HasSubstr("--scale option")));
  EXPECT_THAT(Ran({"-sbig", "a.fbx", "list"}), testing::ElementsAre(HasSubstr("scaleFactor:0\t")));
  // A value that is missing stops the parsing, and the command runs as an empty one.
  const std::string empty = Missing("", Dump("UNKNOWN_MODE", "UNKNOWN_OBJECT", ""));
  EXPECT_EQ(Run({"-v", "--root=", "a.fbx", "list"}),
            "ERROR: Option '--root=' requires an argument\n\n" + empty);
  EXPECT_EQ(Run({"-er"}), "ERROR: Option 'r' requires an argument\n\n" + empty);
  EXPECT_EQ(Run({"a.fbx", "list", "-", "--log"}),
            "ERROR: Option '--log' requires an argument\n\n" +
                Missing("a.fbx", Dump("LIST", "ALL", "a.fbx")) + empty);
  // The compare option's row takes no value.
  EXPECT_EQ(Run({"-c", "a.fbx", "list", "mesh"}),
            "ERROR: --compare command requires filename of cal3d file to compare to fbx file\n\n" +
                Missing("a.fbx", Dump("LIST", "MESH", "a.fbx")));
}

TEST_F(CommandLine, ANameTooShortForAnExtensionEndsTheRun) {
  for (const Words& words :
       {Words{"fbx", "list"}, Words{"-r", "Hips"}, Words{"-c"}, Words{"--cal3d2text=out.xsf"},
        Words{"a.fbx", "list", "-", "b", "list"}}) {
    Run(words);
    EXPECT_EQ(run_.status, 2) << words.front();
    EXPECT_THAT(run_.err, StartsWith("veltrum: input file name '"));
    EXPECT_THAT(run_.err, EndsWith("' is too short to hold an extension\n"));
    EXPECT_THAT(run_.out, Not(HasSubstr("does not exist")));  // nothing ran before
  }
  Run({"a\nb", "list"});
  EXPECT_EQ(run_.err, "veltrum: input file name 'a b' is too short to hold an extension\n");
}

TEST_F(CommandLine, CommandFiles) {
  const std::string a = Dump("LIST", "MESH", "a b.fbx", "\texportObjectNames = \t0:Left Arm\t1:x");
  const std::string b = Dump("EXPORT", "ALL", "b.fbx");
  const std::string both = Missing("a b.fbx", a) + Missing("b.fbx", b);
  dir_.Write("list.txt", "\"a b.fbx\" list mesh \"Left Arm\" \"x\"\n\n   \n-\nb.fbx\nexport");
  // The options around -z are dropped with everything else in its command.
  EXPECT_EQ(Run({"-v", "-s", "3", "-z", "list.txt", "c.fbx", "list"}), both);
  EXPECT_EQ(Run({"-zlist.txt"}), both);
  EXPECT_EQ(Run({"-z", "\"list.txt\"", "-", "b.fbx", "export"}), both + Missing("b.fbx", b));
  dir_.Write("outer.txt", "\xEF\xBB\xBF-z list.txt -\r\nb.fbx export -\r\n");  // from Windows
  EXPECT_EQ(Run({"-z", "outer.txt"}), both + Missing("b.fbx", b));
  dir_.Write("cut.txt", "b.fbx export - - a.fbx list\n");
  EXPECT_EQ(Run({"-z", "cut.txt"}), Missing("b.fbx", b));
  // The form word belongs to the command line alone: here it is an unknown option.
  dir_.Write("form.txt", "-2 b.fbx export\n");
  EXPECT_EQ(Run({"-z", "form.txt"}), Missing("b.fbx", b));
}

TEST_F(CommandLine, CommandFilesThatAreWrong) {
  const std::string help = Run({});
  EXPECT_EQ(Run({"-z=list.txt"}), "Unable to open command file: =list.txt" + help);
  EXPECT_EQ(run_.status, 0);
  EXPECT_EQ(Run({"-z", "\"no such\""}), "Unable to open command file: \"no such\"" + help);
  EXPECT_EQ(Run({"-z", "."}), "Unable to open command file: ." + help);
  dir_.Write("empty.txt", "");
  EXPECT_EQ(Run({"-z", "empty.txt"}), help);
  dir_.Write("loop.txt", "-z loop2.txt -\nb.fbx export\n");
  dir_.Write("loop2.txt", "-z ./loop.txt\n");
  EXPECT_EQ(Run({"-z", "loop.txt"}), "ERROR: command file './loop.txt' reads itself\n" +
                                         Missing("b.fbx", Dump("EXPORT", "ALL", "b.fbx")));
}

TEST_F(CommandLine, Log) {
  const std::string dump = Dump("LIST", "ALL", "a.fbx");
  EXPECT_EQ(Run({"--log", "\"my log.txt\"", "a.fbx", "list"}), Missing("a.fbx", dump));
  const std::string words = "--log \"my log.txt\" a.fbx list\n\n";
  const std::string log = ReadFile(dir_.File("my log.txt"));
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
  EXPECT_TRUE(FileExists(dir_.File("one.txt")));
  EXPECT_FALSE(FileExists(dir_.File("two.txt")));
  EXPECT_THAT(ReadFile(dir_.File("one.txt")),
              EndsWith("] info\tUSAGE: veltrum version 012 FBX lib version 1.0.0\n"));
  // The scan takes -g for the log option, whatever the word behind it is.
  Run({"-g", "-e", "a.fbx", "list"});
  EXPECT_THAT(ReadFile(dir_.File("-e")), HasSubstr("encodeNames:YES"));
  EXPECT_EQ(RunVeltrum({"-2", "-g", "", "x"}, dir_.Path())
                .out.find("WARNING: -g=error opening logfile\n"),
            0U);
  EXPECT_EQ(Run({"--log", "no/such/log", "a.fbx", "list"}),
            Missing("a.fbx", Dump("LIST", "ALL", "a.fbx")));
}

}  // namespace
