// The conversion of Cal3D files to text, through the program. A conversion that worked ends with
// status 1.
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Words = std::vector<std::string>;

const std::string kVersionLine = "VERSION: 012 FBX lib version 1.0.0\n";

constexpr char kSkeleton[] =
    R"(<SKELETON MAGIC="XSF" VERSION="919" NUMBONES="1" SCENEAMBIENTCOLOR="0.5 0.25 1">
  <BONE ID="0" NAME="lightSun" NUMCHILDS="0" LIGHTTYPE="1" LIGHTCOLOR="1 0 0">
    <TRANSLATION>1 2 3</TRANSLATION>
    <ROTATION>0 0 0 1</ROTATION>
    <LOCALTRANSLATION>-1 -2 -3</LOCALTRANSLATION>
    <LOCALROTATION>0 0 0 1</LOCALROTATION>
    <PARENTID>-1</PARENTID>
  </BONE>
</SKELETON>
)";

constexpr char kAnimation[] =
    R"(<ANIMATION MAGIC="XAF" VERSION="919" DURATION="0.5" NUMTRACKS="1">
  <TRACK BONEID="3" NUMKEYFRAMES="1">
    <KEYFRAME TIME="0.25">
      <TRANSLATION>1 2 3</TRANSLATION>
      <ROTATION>0 0 0 1</ROTATION>
    </KEYFRAME>
  </TRACK>
</ANIMATION>
)";

constexpr char kMesh[] =
    R"(<MESH MAGIC="XMF" VERSION="919" NUMSUBMESH="1">
  <SUBMESH NUMVERTICES="1" NUMFACES="1" NUMLODSTEPS="0" NUMSPRINGS="0" NUMTEXCOORDS="1" NUMMORPHS="0" MATERIAL="2">
    <VERTEX ID="0" NUMINFLUENCES="1">
      <POS>0 0 0</POS>
      <NORM>0 0 1</NORM>
      <COLOR>1 1 1</COLOR>
      <TEXCOORD>0 1</TEXCOORD>
      <INFLUENCE ID="0">1</INFLUENCE>
    </VERTEX>
    <FACE VERTEXID="0 0 0" />
  </SUBMESH>
</MESH>
)";

class Cal3dToText : public testing::Test {
 protected:
  RunResult Run(Words arguments) {
    arguments.insert(arguments.begin(), "-2");
    return RunVeltrum(arguments, dir_.Path());
  }

  TempDir dir_;
};

// Text to binary and back gives the same text for every kind, the ambient colour included.
TEST_F(Cal3dToText, ThereAndBack) {
  struct Kind {
    const char* word;
    const char* binary;
    const char* text;
  };
  for (const Kind& kind : {Kind{"skel", "b.csf", kSkeleton},
                           Kind{"ANIMATIONS", "b.caf", kAnimation}, Kind{"mesh", "b.cmf", kMesh}}) {
    SCOPED_TRACE(kind.word);
    dir_.Write("in.txt", kind.text);
    const RunResult there = Run({std::string("--cal3d2text=") + kind.binary, "in.txt", kind.word});
    EXPECT_EQ(there.out, kVersionLine);
    EXPECT_EQ(there.err, "");
    EXPECT_EQ(there.status, 1);
    EXPECT_EQ(ReadFile(dir_.File(kind.binary)).substr(0, 1), "C");
    // The name of the result is taken as it stands.
    EXPECT_EQ(Run({"--cal3d2text", "plain", kind.binary, kind.word}).status, 1);
    EXPECT_EQ(ReadFile(dir_.File("plain")), kind.text);
  }
}

// A mode word is read only where a type follows it.
TEST_F(Cal3dToText, AWordBeforeTheType) {
  dir_.Write("in.xsf", kSkeleton);
  EXPECT_EQ(Run({"--cal3d2text=out.xsf", "in.xsf", "convert", "skel"}).status, 1);
  EXPECT_EQ(ReadFile(dir_.File("out.xsf")), kSkeleton);
}

TEST_F(Cal3dToText, TypesWithoutATextForm) {
  dir_.Write("in.crf", "anything");
  const RunResult texture = Run({"--cal3d2text=out.xrf", "in.crf", "text"});
  EXPECT_EQ(texture.out, kVersionLine);
  EXPECT_EQ(texture.status, 0);
  EXPECT_THAT(Run({"--cal3d2text=out.xpf", "in.cpf", "morphanim"}).out,
              StartsWith(kVersionLine + "ERROR: type 'morphanim' is invalid\n"
                                        "ERROR: Must specify a type\nveltrum version"));
  EXPECT_FALSE(FileExists(dir_.File("out.xrf")));
  EXPECT_FALSE(FileExists(dir_.File("out.xpf")));
}

TEST_F(Cal3dToText, InputsThatCannotBeConverted) {
  dir_.Write("in.csf", std::string("CSF\0\x97\x03\0\0\xff\xff\xff\x7f", 12));
  dir_.Write("old.csf", "something else");
  std::filesystem::create_directory(dir_.File("dir.csf"));
  ASSERT_EQ(mkfifo(dir_.File("pipe.csf").c_str(), 0600), 0);  // nobody writes into it
  for (const char* input : {"none.csf", "dir.csf", "pipe.csf", "in.csf", "old.csf"}) {
    SCOPED_TRACE(input);
    const RunResult run = Run({"--cal3d2text=old.csf", input, "skel", "-", "x.fbx"});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr(std::string("\nveltrum: [") + input + "] "));
    EXPECT_THAT(run.out, testing::Not(HasSubstr("ERROR: exception")));
    EXPECT_EQ(ReadFile(dir_.File("old.csf")), "something else");
  }
  // An output that can't be written is a result, not an abnormal end.
  dir_.Write("good.xsf", kSkeleton);
  EXPECT_EQ(Run({"--cal3d2text=no/such/out.xsf", "good.xsf", "skel"}).status, 0);
}

}  // namespace
