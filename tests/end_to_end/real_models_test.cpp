// Runs the program over real scenes: every .fbx file in the folder that VELTRUM_MODELS names.
// Skipped without the variable, since such scenes are large and not ours to ship.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace {

// The values of all records with `label` in the output, each up to the next blank or line end: the
// names in a scene are unknown here, but file names are encoded and hold no blanks.
std::vector<std::string> Values(const std::string& out, const std::string& label) {
  std::vector<std::string> values;
  const std::string start = label + ": ";
  for (size_t at = out.find(start); at != std::string::npos; at = out.find(start, at + 1)) {
    const size_t first = at + start.size();
    values.push_back(out.substr(first, out.find_first_of(" \n", first) - first));
  }
  return values;
}

class RealModels : public testing::Test {
 protected:
  void SetUp() override {
    const char* folder = std::getenv("VELTRUM_MODELS");
    if (folder == nullptr || *folder == '\0') GTEST_SKIP() << "VELTRUM_MODELS is not set";
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      std::string extension = entry.path().extension().string();
      for (char& c : extension) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
      if (extension == ".fbx") models_.push_back(entry.path());
    }
    std::sort(models_.begin(), models_.end());
    ASSERT_FALSE(models_.empty()) << "no scene in " << folder;
  }

  // A run that ends by itself, with status 0, or with 1 and a record that tells why.
  static RunResult Run(std::vector<std::string> arguments, const TempDir& dir) {
    arguments.insert(arguments.begin(), "-2");
    RunResult run = RunVeltrum(arguments, dir.Path());
    EXPECT_TRUE(run.out.starts_with("VERSION: ")) << run.out;
    EXPECT_TRUE(run.status == 0 ||
                (run.status == 1 && run.out.find("WARNING: could not create") != std::string::npos))
        << "status " << run.status << "\n"
        << run.out << run.err;
    return run;
  }

  // An export: every file that it says it wrote is there, and without an error there is one.
  static void Export(const std::vector<std::string>& arguments, const TempDir& dir) {
    const RunResult run = Run(arguments, dir);
    const std::vector<std::string> files = Values(run.out, "FILENAME");
    for (const std::string& file : files) {
      const std::string path = dir.File(file);
      EXPECT_TRUE(FileExists(path) && std::filesystem::file_size(path) > 0) << file;
    }
    EXPECT_TRUE(!files.empty() || run.out.find("ERROR: ") != std::string::npos) << run.out;
  }

  std::vector<std::filesystem::path> models_;
};

TEST_F(RealModels, ListAndExport) {
  for (const std::filesystem::path& model : models_) {
    SCOPED_TRACE(model.filename().string());
    // A copy, since embedded media are unpacked beside the scene.
    const TempDir dir;
    dir.Write("scene.fbx", ReadFile(model.string()));

    const RunResult list = Run({"scene.fbx", "list"}, dir);
    EXPECT_EQ(list.status, 0);
    EXPECT_EQ(list.out.find("ERROR: exception"), std::string::npos) << list.out;

    Export({"--root=find", "scene.fbx", "export", "skel", "Found"}, dir);
    Export({"--root=RootNode", "scene.fbx", "export", "skel", "Whole"}, dir);
    EXPECT_TRUE(FileExists(dir.File("Whole.xsf")));
    if (!Values(list.out, "MESH").empty()) {
      Export({"--root=RootNode", "scene.fbx", "export", "mesh"}, dir);
      Export({"scene.fbx", "export", "texture"}, dir);
    }

    // With -e the names of animations hold no blanks.
    const std::string root = "--root=RootNode";
    const RunResult animations = Run({"-e", root, "scene.fbx", "list", "anim"}, dir);
    std::vector<std::string> command{"-e", root, "scene.fbx", "export", "anim"};
    for (const std::string& name : Values(animations.out, "ANIM")) command.push_back(name);
    if (command.size() > 5) Export(command, dir);
  }
}

}  // namespace
