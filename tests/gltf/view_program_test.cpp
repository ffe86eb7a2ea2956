// The program, from files to files.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <string>
#include <string_view>
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

class ViewProgram : public testing::Test {
 protected:
  // The files of the scene's first skeleton in the folder `name`.
  void Export(const std::string& scene, const std::string& name) {
    std::filesystem::create_directory(dir_.File(name));
    const std::string list = RunVeltrum({"-2", scene, "list"}, dir_.Path()).out;
    std::smatch node;
    ASSERT_TRUE(std::regex_search(list, node, std::regex("NODE: ([^ ]*)"))) << list;
    std::vector<std::string> words = {"-2"};
    for (const char* what :
         {"skel s", "mesh", "texture", "anim Wave Walk", "morphanim Wave-smile"}) {
      words.insert(words.end(), {"--directory=" + name, "--root=" + node.str(1), scene, "export"});
      for (const std::string& word : Words(what)) words.push_back(word);
      words.push_back("-");
    }
    words.pop_back();
    RunVeltrum(words, dir_.Path());
  }

  RunResult View(const std::vector<std::string>& arguments) {
    return RunProgram("veltrum-view", arguments, dir_.Path());
  }

  static std::vector<std::string> Words(std::string_view text) {
    std::vector<std::string> words(1);
    for (const char c : text) {
      if (c == ' ') {
        words.emplace_back();
      } else {
        words.back() += c;
      }
    }
    return words;
  }

  TempDir dir_;
};

// Every skinned vertex of the file, at rest, against the mesh's own position.
void ExpectRestPose(const GlbFile& file, const std::string& scene) {
  double least = 1e30;
  double greatest = -1e30;
  double farthest = 0;
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
    }
  }
  EXPECT_GT(greatest, least) << scene << " has no skinned mesh";
  EXPECT_LE(farthest, 1e-4 * (greatest - least)) << scene;
}

TEST_F(ViewProgram, ScenesStandAtRestAsTheirMeshes) {
  std::vector<std::string> scenes = {SamplesDirectory() + "/avatar.fbx",
                                     SamplesDirectory() + "/room.fbx"};
  if (const char* models = std::getenv("VELTRUM_MODELS")) {
    for (const auto& entry : std::filesystem::directory_iterator(models)) {
      if (entry.path().extension() == ".fbx") scenes.push_back(entry.path());
    }
  }
  for (size_t i = 0; i < scenes.size(); ++i) {
    const std::string name = "scene" + std::to_string(i);
    Export(scenes[i], name);
    const RunResult run = View({name, "-o", name + ".glb"});
    EXPECT_EQ(run.status, 0) << scenes[i] << run.err;
    ExpectRestPose(GlbFile(ReadFile(dir_.File(name + ".glb"))), scenes[i]);
  }
}

TEST_F(ViewProgram, TexturesAndNumbersOfMaterials) {
  Export(SamplesDirectory() + "/avatar.fbx", "a");
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
  const RunResult list =
      RunVeltrum({"-2", SamplesDirectory() + "/avatar.fbx", "list", "texture"}, dir_.Path());
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
  Export(SamplesDirectory() + "/avatar.fbx", "a");
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
  Export(SamplesDirectory() + "/avatar.fbx", "a");
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
