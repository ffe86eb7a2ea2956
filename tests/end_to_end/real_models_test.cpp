// Runs the program over real scenes: every .fbx file in the folder that VELTRUM_MODELS names.
// Skipped without the variable, since such scenes are large and not ours to ship.
#include <cstdlib>
#include <filesystem>
#include <regex>

#include <gmock/gmock.h>

#include "tests/support/program_test.h"

namespace {

using testing::HasSubstr;
using testing::Not;

class RealModels : public ProgramTest {
 protected:
  // Every file that an export says it wrote is there, and without an error there is one.
  void Export(const Words& arguments) {
    run_ = RunVeltrum(arguments, dir_.Path());
    EXPECT_EQ(run_.status, run_.out.find("could not create") == std::string::npos ? 0 : 1);
    size_t files = 0;
    // Encoded names hold no blanks.
    const std::regex record("FILENAME: ([^ \n]+)");
    for (std::sregex_iterator at(run_.out.begin(), run_.out.end(), record), end; at != end; ++at) {
      EXPECT_NE(File((*at)[1]), "") << (*at)[1];
      ++files;
    }
    EXPECT_TRUE(files > 0 || run_.out.find("ERROR: ") != std::string::npos) << run_.out;
  }
};

TEST_F(RealModels, ListAndExport) {
  const char* folder = std::getenv("VELTRUM_MODELS");
  if (folder == nullptr || *folder == '\0') GTEST_SKIP() << "VELTRUM_MODELS is not set";
  for (const auto& model : std::filesystem::directory_iterator(folder)) {
    const std::string extension = model.path().extension().string();
    if (extension != ".fbx" && extension != ".FBX") continue;
    SCOPED_TRACE(model.path().filename().string());
    // A copy, since embedded media are unpacked beside the scene.
    dir_.Write("s.fbx", ReadFile(model.path().string()));
    const std::string list = Run({"s.fbx", "list"});
    EXPECT_THAT(list, Not(HasSubstr("ERROR: exception")));
    Export({"-2", "--root=find", "s.fbx", "export", "skel", "Found"});
    Export({"-2", "--root=RootNode", "s.fbx", "export", "skel", "Whole"});
    if (list.find("\nMESH: ") != std::string::npos) {
      Export({"-2", "--root=RootNode", "s.fbx", "export", "mesh"});
      Export({"-2", "s.fbx", "export", "texture"});
    }
    Words command{"-2", "-e", "--root=RootNode", "s.fbx", "export", "anim"};
    const std::string animations = Run({"-e", "--root=RootNode", "s.fbx", "list", "anim"});
    const std::regex record("ANIM: ([^ \n]+)");
    for (std::sregex_iterator at(animations.begin(), animations.end(), record), end; at != end;
         ++at) {
      command.push_back((*at)[1]);
    }
    if (command.size() > 6) Export(command);
    for (const auto& entry : std::filesystem::directory_iterator(dir_.Path())) {
      std::filesystem::remove_all(entry);
    }
  }
}

}  // namespace
