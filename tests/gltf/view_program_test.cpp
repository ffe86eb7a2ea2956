// The program, from files to files.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/gltf/glb_file.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

const std::string kAvatar = SamplesDirectory() + "/avatar.fbx";

class ViewProgram : public testing::Test {
 protected:
  // The files of a sample in the folder "a".
  void Export() {
    std::filesystem::create_directory(dir_.File("a"));
    std::string commands;
    for (const std::string what :
         {"skel s", "mesh", "texture", "anim Wave Walk", "morphanim Wave-smile"}) {
      commands += "--directory=a --root=RootNode/Hips \"" + kAvatar + "\" export " + what + " -\n";
    }
    dir_.Write("commands", commands);
    RunVeltrum({"-2", "-z", "commands"}, dir_.Path());
  }

  RunResult View(const std::vector<std::string>& arguments) {
    return RunProgram("veltrum-view", arguments, dir_.Path());
  }

  static std::vector<std::string> Words(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
  }

  TempDir dir_;
};

// Checks every skinned vertex of the file, at rest, against the mesh's own position. Returns how
// many there are.
size_t CheckRestPose(const GlbFile& file, const std::string& scene) {
  double least = 1e30;
  double greatest = -1e30;
  double farthest = 0;
  size_t count = 0;
  for (size_t node = 0; node < file.json["nodes"].size(); ++node) {
    if (!file.json["nodes"][node].contains("skin")) continue;
    const size_t mesh = file.json["nodes"][node]["mesh"];
    const json& primitives = file.json["meshes"][mesh]["primitives"];
    for (size_t i = 0; i < primitives.size(); ++i) {
      const auto positions = file.Numbers(primitives[i]["attributes"]["POSITION"]);
      const auto skinned = file.SkinnedVertices(node, i);
      for (size_t k = 0; k < positions.size(); ++k) {
        least = std::min(least, positions[k]);
        greatest = std::max(greatest, positions[k]);
        farthest = std::max(farthest, std::abs(positions[k] - skinned[k / 3][k % 3]));
      }
      count += skinned.size();
    }
  }
  EXPECT_TRUE(count == 0 || farthest <= 1e-4 * (greatest - least)) << scene;
  return count;
}

TEST_F(ViewProgram, ScenesStandAtRestAsTheirMeshes) {
  std::vector<std::string> folders = {SamplesDirectory()};
  if (const char* models = std::getenv("VELTRUM_MODELS")) folders.emplace_back(models);
  size_t vertices = 0;
  for (const std::string& folder : folders) {
    for (const auto& scene : std::filesystem::directory_iterator(folder)) {
      if (scene.path().extension() != ".fbx") continue;
      RunProgram("veltrum-all", {scene.path(), "-o", "scene"}, dir_.Path());
      // Each skeleton is in a folder with its meshes.
      for (const auto& file : std::filesystem::recursive_directory_iterator(dir_.File("scene"))) {
        if (file.path().extension() != ".xsf") continue;
        const RunResult run = View({file.path().parent_path(), "-o", "m.glb"});
        EXPECT_EQ(run.status, 0) << scene.path() << run.err;
        vertices += CheckRestPose(GlbFile(ReadFile(dir_.File("m.glb"))), scene.path());
      }
      std::filesystem::remove_all(dir_.File("scene"));
    }
  }
  EXPECT_GT(vertices, 200U);
}

TEST_F(ViewProgram, TexturesAndNumbersOfMaterials) {
  Export();
  const RunResult bare = View({"a", "-o", "m.glb"});
  EXPECT_THAT(bare.err, HasSubstr("material Skin: the texture skin.png isn't there"));
  EXPECT_THAT(bare.out, HasSubstr("12 bones, 1 mesh with 170 vertices, 2 materials, 3 animations"));
  const std::string first = ReadFile(dir_.File("m.glb"));
  View({"a", "-o", "m.glb"});
  EXPECT_TRUE(ReadFile(dir_.File("m.glb")) == first);

  const auto materialOf = [this](size_t primitive) {
    const GlbFile file(ReadFile(dir_.File("m.glb")));
    return file.json["meshes"][0]["primitives"][primitive]["extras"]["material"];
  };
  // The export's own records tell which number is whose.
  const RunResult list = RunVeltrum({"-2", kAvatar, "list", "texture"}, dir_.Path());
  EXPECT_THAT(list.out, HasSubstr("MATERIAL: 0 Skin"));
  EXPECT_EQ(materialOf(0), "Skin");
  EXPECT_EQ(materialOf(1), "Shirt");
  dir_.Write("a/a.json",
             R"({"materials": [{"id": 0, "file": "x/Shirt.xrf"}, {"id": 1, "file": "Skin.xrf"}, 7,
                             {"id": "2", "file": "Skin.xrf"}], "warnings": ["beware", {"text": "of dogs"}, 3],
                  "errors": [{"text": "of cats", "about": "a.xmf"}]})");
  std::filesystem::create_directory(dir_.File("a/Avatar.fbm"));
  std::filesystem::copy(SamplesDirectory() + "/textures/skin.png",
                        dir_.File("a/Avatar.fbm/SKIN.PNG"));
  const RunResult run = View({"-t", SamplesDirectory() + "/textures", "a", "-o", "m.glb"});
  EXPECT_EQ(run.err, "veltrum-view: beware\nveltrum-view: of dogs\nveltrum-view: of cats\n");
  EXPECT_EQ(materialOf(0), "Shirt");
  // The manifest above the folders of several skeletons counts for the files that it names.
  std::filesystem::remove(dir_.File("a/a.json"));
  dir_.Write("a.json",
             R"({"skeletons": [{"materials": [{"id": 0, "file": "b/Skin.xrf"}]}, {"materials": [
                           {"id": 0, "file": "a/Shirt.xrf"}, {"id": 1, "file": "a/Skin.xrf"}]}],
               "files": ["a/Skin.xrf", "b/Skin.xrf"], "warnings": [{"text": "of others", "about": "b/Skin.xrf"},
               {"text": "of us", "about": "a/Skin.xrf"}]})");
  EXPECT_EQ(View({"-t", SamplesDirectory() + "/textures", "a", "-o", "m.glb"}).err,
            "veltrum-view: of us\n");
  EXPECT_EQ(materialOf(0), "Shirt");
  const GlbFile file(ReadFile(dir_.File("m.glb")));
  EXPECT_EQ(file.json["images"].size(), 2U);
  EXPECT_EQ(file.json["images"][0]["mimeType"], "image/png");
  // Or it is named like the scene's folder, which holds theirs.
  std::filesystem::create_directory(dir_.File("x"));
  std::filesystem::rename(dir_.File("a"), dir_.File("x/a"));
  dir_.Write("x.json", R"({"materials": [{"id": 0, "file": "x/a/Shirt.xrf"},
                                         {"id": 1, "file": "x/a/Skin.xrf"}]})");
  EXPECT_EQ(View({"x/a", "-o", "m.glb"}).status, 0);
  EXPECT_EQ(materialOf(0), "Shirt");
}

TEST_F(ViewProgram, PageHoldsModelAndManifest) {
  Export();
  View({"a", "-n", "A<b>&", "-o", "m.glb"});
  // The template lies where an installed program finds it.
  std::filesystem::create_directories(dir_.File("bin"));
  std::filesystem::create_directories(dir_.File("share/veltrum"));
  std::filesystem::copy(ProgramPath("veltrum-view"), dir_.File("bin/veltrum-view"));
  const std::string title = "<title>veltrum</title>";
  const std::string model =
      R"(<script id="veltrum-model" type="application/gltf-binary;deflate;base64">)";
  const std::string manifest = R"(<script id="veltrum-manifest" type="application/json">)";
  dir_.Write("share/veltrum/viewer.html", title + model + "</script>|" + manifest + "</script>|");
  const RunResult run =
      RunProgram(dir_.File("bin/veltrum-view"), {"a", "-n", "A<b>&", "-o", "p.html"}, dir_.Path());
  ASSERT_EQ(run.status, 0) << run.err;
  const std::string page = ReadFile(dir_.File("p.html"));
  EXPECT_THAT(page, testing::StartsWith("<title>A&lt;b>&amp; - veltrum</title>" + model + "eJ"));
  const size_t base64 = page.find("</script>") - page.find(model) - model.size();
  EXPECT_LT(base64, std::filesystem::file_size(dir_.File("m.glb")) / 2);
  const size_t words = page.find(manifest) + manifest.size();
  const std::string text = page.substr(words, page.find("</script>", words) - words);
  EXPECT_EQ(text.find('<'), std::string::npos);
  const json told = json::parse(text);
  EXPECT_EQ(told["name"], "A<b>&");
  EXPECT_EQ(told["skeleton"], json({{"file", "s.xsf"}, {"bones", 12}}));
  EXPECT_EQ(told["meshes"][0]["submeshes"].size(), 2U);
  EXPECT_EQ(told["meshes"][0]["submeshes"][0]["material"], "Skin");
  EXPECT_EQ(told["animations"].size(), 3U);
  EXPECT_EQ(told["missingTextures"][0], json({{"material", "Shirt"}, {"file", "shirt.png"}}));
  EXPECT_NEAR(told["size"][2], 174, 1);

  dir_.Write("share/veltrum/viewer.html", title);
  const RunResult broken =
      RunProgram(dir_.File("bin/veltrum-view"), {"a", "-o", "q.html"}, dir_.Path());
  EXPECT_EQ(broken.status, 2);
  EXPECT_FALSE(FileExists(dir_.File("q.html")));
}

TEST_F(ViewProgram, WhatCannotBeUsedIsToldAndTheRestShown) {
  Export();
  const std::string mesh = ReadFile(dir_.File("a/Body.xmf"));
  dir_.Write("a/Broken.xmf", mesh.substr(0, mesh.size() / 2));
  dir_.Write("a/Other.xsf", ReadFile(dir_.File("a/s.xsf")));
  dir_.Write("a/bad.json", "[");
  dir_.Write("a/s.txt", "");
  dir_.Write("a/Lost.xpf", std::string("CPF\0\x97\x03\0\0\0\0\0\0\xff\xff\xff\x7f", 16));
  const RunResult run = View({"a", "gone.xaf", "a/s.txt", "none", "-o", "m.glb"});
  EXPECT_EQ(run.status, 1);
  for (const char* line :
       {"veltrum-view: 'a/Broken.xmf': the XML is broken at byte",
        "veltrum-view: 'gone.xaf' can't be opened: No such file or directory",
        "'a/s.xsf': not shown: the skeleton is Other.xsf", "'a/bad.json' is no manifest",
        "'a/Lost.xpf': a count of 2147483647 tracks", "'a/s.txt' has a name of no kind",
        "'none' can't be opened: No such file or directory"}) {
    EXPECT_THAT(run.err, HasSubstr(line));
  }
  EXPECT_EQ(GlbFile(ReadFile(dir_.File("m.glb"))).json["meshes"].size(), 1U);

  std::filesystem::create_directories(dir_.File("empty/below"));
  for (const auto& [words, text] : std::vector<std::pair<std::string, std::string>>{
           {"empty -o m.glb",
            "'empty' holds no Cal3D files; there may be some in its folder below"},
           {"a/Skin.xrf -o m.glb", "neither a skeleton nor a mesh"},
           {"a -o no/such/m.glb", "'no/such/m.glb' can't be written: No such file or directory"},
           {"a -o m.obj", "should end in .glb or .html"},
           {"a", "where to?"},
           {"-o m.glb", "what is to be shown?"},
           {"--wrong a", "wrong"}}) {
    const RunResult failed = View(Words(words));
    EXPECT_EQ(failed.status, 2) << words;
    EXPECT_THAT(failed.err, HasSubstr(text));
  }
}

}  // namespace
