// What whole scenes give, byte for byte, on every machine. The expected texts lie beside the
// scenes.
#include <filesystem>
#include <set>

#include "tests/support/expected_text.h"
#include "tests/support/program_test.h"

namespace {

using WordLists = std::vector<Words>;

class Samples : public ProgramTest {
 protected:
  // Everything that is printed and written.
  std::string ResultOf(const std::string& document, const WordLists& commands) {
    const std::string scene = dir_.Write("s.fbx", document);
    std::filesystem::create_directory(dir_.File("y"));
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
    // Pictures are found under the test's own folder, and logs begin with the program.
    for (const auto& [path, name] :
         {std::pair(dir_.Path(), "FOLDER"), {ProgramPath("veltrum"), "PROGRAM"}}) {
      for (size_t at; (at = text.find(path)) != std::string::npos;) {
        text.replace(at, path.size(), name);
      }
    }
    return text;
  }
  static std::string Sample(const std::string& name) {
    return ReadFile(SamplesDirectory() + "/" + name + ".fbx");
  }
};

TEST_F(Samples, GiveWhatTheyGave) {
  const std::string hips = "-rRootNode/Hips";
  const std::vector<std::pair<std::string, WordLists>> cases = {
      {"avatar",
       {{"s.fbx", "list"},
        {hips, "s.fbx", "list"},
        {hips, "s.fbx", "export", "skel", "bones"},
        {hips, "s.fbx", "export", "mesh"},
        {hips, "s.fbx", "export", "anim", "Walk", "Wave"},
        {hips, "s.fbx", "export", "morph", "Walk-blink", "Wave-smile"},
        {"s.fbx", "export", "texture"},
        {hips, "-dy", "-u", "-s2", "--up=y", "--front=z", "s.fbx", "export", "skel", "bones"},
        {hips, "-dy", "-s2", "--up=y", "--front=z", "s.fbx", "export", "anim", "Wave"},
        {hips, "-v", "s.fbx", "list", "node"},
        {hips, "-vvv", "s.fbx", "list", "anim"},
        {hips, "-vvv", "s.fbx", "export", "skel", "bones"},
        {hips, "-vvv", "s.fbx", "export", "anim", "Wave"}}},
      {"room",
       {{"-h"},
        {"s.fbx", "list"},
        {"-rfind", "--room", "--rename", "s.fbx", "export", "skel", "room"},
        {"-rRootNode", "s.fbx", "export", "mesh"},
        {"-rRootNode", "-vvv", "s.fbx", "list", "node"},
        {"-rRootNode", "-vvv", "s.fbx", "export", "mesh"},
        {"--log", "log", "-rRootNode/skeleton.room", "--room", "--rename", "-vvv", "s.fbx",
         "export", "skel", "room"}}}};
  for (const auto& [sample, commands] : cases) {
    ExpectKept(ResultOf(Sample(sample), commands),
               SamplesDirectory() + "/expected/" + sample + ".txt");
  }
}

// A text may be laid out otherwise.
TEST_F(Samples, LayoutsDoNotShow) {
  const WordLists commands = {{"s.fbx", "list"}, {"-rRootNode/Hips", "s.fbx", "export", "mesh"}};
  const std::string expected = ResultOf(Sample("avatar"), commands);
  const std::vector<std::pair<std::string, std::string>> layouts = {
      {"\n", "\r\n"}, {"\n", "\n\n"},      {"\t", ""},
      {",", " , "},   {" {\n", "  {  \n"}, {"}\n", "}\n; a comment, \"quoted\" {\n"}};
  for (const auto& [from, to] : layouts) {
    SCOPED_TRACE(to);
    std::string text = Sample("avatar");
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
      text.replace(at, from.size(), to);
    }
    ExpectSame(ResultOf(text, commands), expected);
  }
}

TEST_F(Samples, SkeletonsOfEveryKind) {
  const std::string scene = TestsDirectory() + "/end_to_end/scenes/skeletons";
  const std::string hips = "-rRootNode/twin/Hips";
  const std::string posed = "-rRootNode/Posed";
  const std::string left = "-rRootNode/Left Hip";
  ExpectKept(ResultOf(ReadFile(scene + ".fbx"),
                      {{"s.fbx", "list", "skel"},
                       {"--room", "s.fbx", "list", "nodes"},
                       {hips, "s.fbx", "list", "node"},
                       {hips, "-v", "s.fbx", "list", "node"},
                       {"-rRootNode", "-v", "s.fbx", "list", "node"},
                       {"-rRootNode/twin/Hips/Spine", "s.fbx", "list", "node"},
                       {posed, "s.fbx", "export", "skel", "bound"},
                       {posed, "-u", "s.fbx", "export", "skel", "rest"},
                       {"-rRootNode", "s.fbx", "export", "skel", "from the scene's root"},
                       {left, "s.fbx", "export", "skel", "Left Hip", "x/y"},
                       {left, "-e", "-dy", "s.fbx", "export", "skel", "Left Hip"},
                       {left, "s.fbx", "export", "skel"},
                       {left, "-dno/such", "s.fbx", "export", "skel", "b"},
                       {"-rNone", "s.fbx", "export", "skel", "My Hip"},
                       {"--room", "-rRootNode/roomRoot", "s.fbx", "export", "skel", "r", "-",
                        "s.fbx", "list", "skel"}}),
             scene + ".txt");
}

// Names of stacks say what the case is.
TEST_F(Samples, AnimationsOfEveryKind) {
  const std::string scene = TestsDirectory() + "/end_to_end/scenes/animations";
  const std::string hips = "-rRootNode/Hips";
  WordLists commands;
  for (const char* root :
       {"-rRootNode", "-rRootNode/Other", "-rRootNode/None", "-rRootNode/Hips"}) {
    for (const char* type : {"anim", "morphanim"})
      commands.push_back({root, "s.fbx", "list", type});
  }
  const WordLists others = {
      {"s.fbx", "list", "anim"},
      {"s.fbx", "list", "morphanim"},
      {"-e", hips, "s.fbx", "list", "anim"},
      {hips, "s.fbx", "export", "anim", "Walk", "My Walk_1", "upper layer", "none"},
      {hips, "s.fbx", "export", "anim", "scaled by the last moved node"},
      {hips, "s.fbx", "export", "morphanim", "Talk-smile-blink"},
      {hips, "-dy", "-s2", "s.fbx", "export", "anim", "First by text"},
      {hips, "-dy", "--up=y", "--front=-z", "s.fbx", "export", "anim", "Second by text"},
      {hips, "-e", "-dy", "s.fbx", "export", "anim", "My%20Walk_1"},
      {"-rRootNode/Prop", "s.fbx", "export", "anim", "Both"},
      // What exports nothing.
      {hips, "s.fbx", "export", "anim"},
      {"-dy", "s.fbx", "export", "anim", "Walk"},
      {"-rRootNode/None", "s.fbx", "export", "anim", "Walk"},
      {"-rCOMPLETE_SKELETAL_ANIM_LIST", "-dy", "s.fbx", "export", "anim", "Walk"},
      {hips, "-dno.folder", "s.fbx", "export", "anim", "Walk", "Both"}};
  commands.insert(commands.end(), others.begin(), others.end());
  ExpectKept(ResultOf(ReadFile(scene + ".fbx"), commands), scene + ".txt");
}

// Names of meshes say what the case is.
TEST_F(Samples, MeshesOfEveryKind) {
  const std::string scene = TestsDirectory() + "/end_to_end/scenes/meshes";
  const std::string root = "-rRootNode";
  ExpectKept(
      ResultOf(
          ReadFile(scene + ".fbx"),
          {{root, "s.fbx", "export", "mesh"},
           {"-rRootNode/Hips", "-dy", "s.fbx", "export", "mesh",
            "weights as they are by the last cluster", "weights by the node",
            "weights in the order of paths, normalized", "weights of a later skin"},
           {root, "-dy", "-lg", "s.fbx", "export", "mesh"},
           {root, "-dy", "-v", "s.fbx", "export", "mesh", "polygon with a corner that points in"},
           {root, "-dy", "-s.5", "--up=y", "--front=z", "s.fbx", "export", "mesh",
            "points turn, scale and change axes", "normals turn with the node, not with axes"},
           {root, "-dy", "-e", "s.fbx", "export", "mesh", "size 100 1 1", "nothing"}}),
      scene + ".txt");
}

// Names of materials say what the case is.
TEST_F(Samples, MaterialsOfEveryKind) {
  const std::string scene = TestsDirectory() + "/end_to_end/scenes/materials";
  ExpectKept(ResultOf(ReadFile(scene + ".fbx"),
                      {{"s.fbx", "list", "texture"},
                       {"s.fbx", "export", "texture"},
                       {"-dy", "-rRootNode/Hips", "s.fbx", "export", "texture"}}),
             scene + ".txt");
}

// A scene that both versions of documents can say: every kind of key and tangent, of mapping and of
// texture.
TEST_F(Samples, Version6SaysWhatVersion7Says) {
  const std::string root = "--root=RootNode/Hips";
  const WordLists commands = {
      {"s.fbx", "list"},
      {"--room", "s.fbx", "list"},
      {"-vvv", "--root=RootNode", "s.fbx", "list", "node"},
      {root, "-vvv", "s.fbx", "list", "anim", "-", root, "s.fbx", "list", "morphanim"},
      {root, "s.fbx", "export", "skel", "bound"},
      {"-u", "--up=y", "--front=z", root, "s.fbx", "export", "skel", "rest"},
      {root, "-vvv", "s.fbx", "export", "mesh"},
      {"-lg", "-dy", root, "s.fbx", "export", "mesh", "-", "s.fbx", "export", "texture"},
      {root, "s.fbx", "export", "anim", "Walk", "Still"},
      {root, "-dy", "-vvv", "-u", "--up=y", "--front=z", "s.fbx", "export", "anim", "Walk"},
      {root, "s.fbx", "export", "morphanim", "Walk-frown"},
      {"--room", "--rename", "--root=RootNode/room_skeleton", "s.fbx", "export", "skel", "room"}};
  for (const char* version : {"/version7.fbx", "/version6.fbx"}) {
    SCOPED_TRACE(version);
    ExpectKept(ResultOf(ReadFile(TestsDirectory() + "/end_to_end/scenes" + version), commands),
               TestsDirectory() + "/end_to_end/scenes/version7.txt");
  }
}

}  // namespace
