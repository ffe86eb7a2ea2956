// The conversion of Cal3D files to text, through the program. A conversion that worked ends with
// status 1.
#include <filesystem>

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "tests/support/program_test.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class Cal3dToText : public ProgramTest {
 protected:
  // A skeleton with lights and an ambient colour, a mesh and an animation.
  Cal3dToText() {
    const std::string samples = SamplesDirectory();
    Run({"-rRootNode", "--room", samples + "/room.fbx", "export", "skel", "s", "-",  //
         "-rRootNode/Hips", samples + "/avatar.fbx", "export", "mesh", "Body", "-",  //
         "-rRootNode/Hips", samples + "/avatar.fbx", "export", "anim", "Walk"});
  }
};

// Text to binary and back gives the same text for every kind.
TEST_F(Cal3dToText, ThereAndBack) {
  EXPECT_THAT(File("s.xsf"), HasSubstr("SCENEAMBIENTCOLOR=\"0.1882353 "));
  EXPECT_THAT(File("s.xsf"), HasSubstr("LIGHTTYPE=\"3\""));
  struct Kind {
    const char* word;
    const char* text;
    const char* binary;
  };
  for (const auto& [word, text, binary] :
       {Kind{"skel", "s.xsf", "b.csf"}, Kind{"ANIMATIONS", "Walk.xaf", "b.caf"},
        Kind{"mesh", "Body.xmf", "b.cmf"}}) {
    EXPECT_EQ(Run({std::string("--cal3d2text=") + binary, text, word}, 1), "");
    EXPECT_EQ(run_.err, "");
    EXPECT_EQ(File(binary)[0], 'C');
    // The name of the result is taken as it stands, and a mode word is read where a type follows.
    Run({"--cal3d2text", "plain", binary, "convert", word}, 1);
    EXPECT_TRUE(File("plain") == File(text)) << word;
  }
}

TEST_F(Cal3dToText, TypesWithoutATextForm) {
  dir_.Write("in.crf", "anything");
  EXPECT_EQ(Run({"--cal3d2text=out.xrf", "in.crf", "text"}), "");
  EXPECT_THAT(Run({"--cal3d2text=out.xpf", "in.cpf", "morphanim"}),
              StartsWith("ERROR: type 'morphanim' is invalid\n"
                         "ERROR: Must specify a type\nveltrum version"));
  EXPECT_FALSE(Exists("out.xrf"));
  EXPECT_FALSE(Exists("out.xpf"));
}

// A write error like any other: no signal, and nothing left behind.
TEST_F(Cal3dToText, OutputBeyondTheLimitOfFileSizes) {
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit small = {2000, limit.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  EXPECT_EQ(Run({"--cal3d2text=out.xmf", "Body.xmf", "mesh"}), "");
  setrlimit(RLIMIT_FSIZE, &limit);
  const std::filesystem::directory_iterator entries(dir_.Path());
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 3);
}

TEST_F(Cal3dToText, InputsThatCannotBeConverted) {
  dir_.Write("in.csf", std::string("CSF\0\x97\x03\0\0\xff\xff\xff\x7f", 12));
  dir_.Write("old.csf", "something else");
  std::filesystem::create_directory(dir_.File("dir.csf"));
  ASSERT_EQ(mkfifo(dir_.File("pipe.csf").c_str(), 0600), 0);  // nobody writes into it
  const std::pair<std::string, std::string> inputs[] = {
      {"none.csf", "' can't be opened: No such file or directory"},
      {"dir.csf", "' can't be opened: Is a directory"},
      {"pipe.csf", "' is no regular file"},
      {"in.csf", "': the file ends early: 4 bytes are due and 0 are left"},
      {"old.csf", "': the file is no Cal3D skeleton: it begins neither with CSF nor as XML"}};
  for (const auto& [input, told] : inputs) {
    EXPECT_THAT(Run({"--cal3d2text=old.csf", input, "skel", "-", "x.fbx"}, 2),
                Not(HasSubstr("ERROR: exception")));
    EXPECT_THAT(run_.err, EndsWith("\nveltrum: '" + input + told + "\n"));
    EXPECT_EQ(File("old.csf"), "something else");
  }
  // An output that can't be written is a result, not an abnormal end.
  Run({"--cal3d2text=no/such/out.xsf", "s.xsf", "skel"}, 0);
}

}  // namespace
