// Runs the program over real scenes: every .fbx file in the folder that VELTRUM_MODELS names.
// Skipped without the variable, since such scenes are large and not ours to ship.
#include <cstdlib>
#include <filesystem>
#include <set>

#include <gmock/gmock.h>

#include "tests/support/program_test.h"

namespace {

using testing::HasSubstr;
using testing::Not;

const std::string kNoMesh = "WARNING: could not create file for meshes";

// The values of all records with `label` in the output, each up to the next blank or line end: the
// names in a scene are unknown here, but file names are encoded and hold no blanks.
Words Values(const std::string& out, const std::string& label) {
  Words values;
  const std::string start = label + ": ";
  for (size_t at = out.find(start); at != std::string::npos; at = out.find(start, at + 1)) {
    const size_t first = at + start.size();
    values.push_back(out.substr(first, out.find_first_of(" \n", first) - first));
  }
  return values;
}

class RealModels : public ProgramTest {
 protected:
  // Every file that an export says it wrote is there, and without an error there is one.
  void Export(const Words& arguments) {
    run_ = RunVeltrum(arguments, dir_.Path());
    const std::string& out = run_.out;
    EXPECT_EQ(run_.status, out.find(kNoMesh) == std::string::npos ? 0 : 1) << out << run_.err;
    const Words files = Values(out, "FILENAME");
    for (const std::string& file : files) EXPECT_NE(File(file), "") << file;
    EXPECT_TRUE(!files.empty() || out.find("ERROR: ") != std::string::npos) << out;
  }
};

TEST_F(RealModels, ListAndExport) {
  const char* folder = std::getenv("VELTRUM_MODELS");
  if (folder == nullptr || *folder == '\0') GTEST_SKIP() << "VELTRUM_MODELS is not set";
  std::set<std::filesystem::path> models;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const std::string extension = entry.path().extension().string();
    if (extension == ".fbx" || extension == ".FBX") models.insert(entry.path());
  }
  ASSERT_FALSE(models.empty()) << "no scene in " << folder;
  for (const std::filesystem::path& model : models) {
    SCOPED_TRACE(model.filename().string());
    // A copy, since embedded media are unpacked beside the scene.
    dir_.Write("s.fbx", ReadFile(model.string()));
    const std::string list = Run({"s.fbx", "list"});
    EXPECT_THAT(list, Not(HasSubstr("ERROR: exception")));
    Export({"-2", "--root=find", "s.fbx", "export", "skel", "Found"});
    Export({"-2", "--root=RootNode", "s.fbx", "export", "skel", "Whole"});
    EXPECT_TRUE(Exists("Whole.xsf"));
    if (!Values(list, "MESH").empty()) {
      Export({"-2", "--root=RootNode", "s.fbx", "export", "mesh"});
      Export({"-2", "s.fbx", "export", "texture"});
    }
    // With -e the names of animations hold no blanks.
    Words command{"-2", "-e", "--root=RootNode", "s.fbx", "export", "anim"};
    for (const std::string& name :
         Values(Run({"-e", "--root=RootNode", "s.fbx", "list", "anim"}), "ANIM")) {
      command.push_back(name);
    }
    if (command.size() > 6) Export(command);
    for (const auto& entry : std::filesystem::directory_iterator(dir_.Path())) {
      std::filesystem::remove_all(entry);
    }
  }
}

}  // namespace
