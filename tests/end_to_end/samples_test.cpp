// What the samples give, byte for byte, on every machine. The expected texts lie beside the
// samples; VELTRUM_UPDATE=1 writes them anew.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

#include "tests/support/program_test.h"

namespace {

class Samples : public ProgramTest {
 protected:
  // Everything that is printed and written.
  std::string ResultOf(const std::string& sample, const std::vector<Words>& commands) {
    const std::string scene = dir_.Write("s.fbx", ReadFile(SamplesDirectory() + "/" + sample));
    std::string text;
    for (const Words& command : commands) text += Run(command);
    std::filesystem::remove(scene);
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(dir_.Path())) {
      if (entry.is_regular_file()) {
        names.insert(std::filesystem::relative(entry.path(), dir_.Path()).string());
      }
    }
    for (const std::string& name : names) {
      text += "---- " + name + "\n" + File(name);
      std::filesystem::remove(dir_.File(name));
    }
    return text;
  }
};

TEST_F(Samples, GiveWhatTheyGave) {
  const std::string hips = "-rRootNode/Hips";
  std::filesystem::create_directory(dir_.File("y"));
  const std::vector<std::pair<std::string, std::vector<Words>>> cases = {
      {"avatar",
       {{"s.fbx", "list"},
        {hips, "s.fbx", "list"},
        {hips, "s.fbx", "export", "skel", "bones"},
        {hips, "s.fbx", "export", "mesh"},
        {hips, "s.fbx", "export", "anim", "Walk", "Wave"},
        {hips, "s.fbx", "export", "morph", "Walk-blink", "Wave-smile"},
        {"s.fbx", "export", "texture"},
        {hips, "-dy", "-u", "-s2", "--up=y", "--front=z", "s.fbx", "export", "skel", "bones"},
        {hips, "-dy", "-s2", "--up=y", "--front=z", "s.fbx", "export", "anim", "Wave"}}},
      {"room",
       {{"s.fbx", "list"},
        {"-rfind", "--room", "--rename", "s.fbx", "export", "skel", "room"},
        {"-rRootNode", "s.fbx", "export", "mesh"}}}};
  for (const auto& [sample, commands] : cases) {
    const std::string result = ResultOf(sample + ".fbx", commands);
    const std::string path = SamplesDirectory() + "/expected/" + sample + ".txt";
    if (std::getenv("VELTRUM_UPDATE") != nullptr) std::ofstream(path) << result;
    const std::string expected = ReadFile(path);
    const auto at = std::mismatch(result.begin(), result.end(), expected.begin(), expected.end());
    EXPECT_TRUE(result == expected)
        << sample << ": " << std::string(at.first, result.end()).substr(0, 200);
  }
}

}  // namespace
