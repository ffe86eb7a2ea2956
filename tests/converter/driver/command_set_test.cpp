// What no command line reaches: help as a command, and commands of the older version.
#include "converter/driver/command_set.h"

#include <gmock/gmock.h>
#include <stdlib.h>

#include "tests/support/printed.h"
#include "tests/support/scene_builder.h"
#include "tests/support/temp_dir.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

std::string PrintedBy(const ConversionArguments& args, int expectedStatus) {
  return Printed([&] { EXPECT_EQ(processCommandSet(args), expectedStatus); });
}

TEST(CommandSet, HelpIsAsWideAsTheTerminal) {
  ConversionArguments args;
  args.option = ConversionArguments::HELP;
  args.verbosity = 1;
  setenv("COLUMNS", "200", 1);
  const std::string wide = PrintedBy(args, 0);
  unsetenv("COLUMNS");
  const std::string normal = PrintedBy(args, 0);
  EXPECT_THAT(wide, StartsWith("veltrum version 012\n\nFBX lib version 1.0.0\n  -h --help  "));
  EXPECT_THAT(wide, HasSubstr("use more v's for more detail.\n"));
  EXPECT_THAT(normal, HasSubstr("use more v's for more\n"));
  // The blank line stands between the two export texts.
  EXPECT_THAT(normal, HasSubstr("as a node name.\n\n    export skel <input fbx file>"));
  EXPECT_THAT(normal, EndsWith("The node path to the root of the skeleton."));
}

TEST(CommandSet, TheOlderVersionTakesOneName) {
  const TempDir dir;
  SceneBuilder scene;
  scene.Bone("Hips");
  ConversionArguments args;
  args.inputFilename = dir.Write("a.fbx", scene.Write());
  args.mode = EXPORT_MODE;
  args.type = NODE_OBJECT;
  args.skeletonRootPath = "RootNode/Hips";
  args.outputFilename = dir.File("out.xsf");
  EXPECT_EQ(PrintedBy(args, 0), "SKELETON: RootNode/Hips FILENAME: " + args.outputFilename + "\n");
  args.type = MESH_OBJECT;
  args.skeletonRootPath = "Hips";
  args.exportObjectName = "Body";
  EXPECT_EQ(PrintedBy(args, 1),
            "ERROR: Skeleton Root Node [Hips] not found in FBX\n\n"
            "could not create file " +
                args.outputFilename + " from " + args.inputFilename +
                " with root Hips and mesh Body\n");
}

}  // namespace
