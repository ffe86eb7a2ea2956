// veltrum-all: the files of the single commands, and a manifest that says what they are.
#include <filesystem>
#include <map>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/support/program_test.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Json = nlohmann::json;
namespace fs = std::filesystem;

class VeltrumAll : public ProgramTest {
 protected:
  VeltrumAll() {
    for (const char* sample : {"avatar.fbx", "room.fbx"}) {
      dir_.Write(sample, ReadFile(SamplesDirectory() + "/" + sample));
    }
    fs::create_directory(dir_.File("textures"));
    dir_.Write("textures/skin.png", "picture");
  }

  RunResult All(const Words& words, int expectedStatus = 0) {
    RunResult run = RunProgram("veltrum-all", words, dir_.Path());
    EXPECT_EQ(run.status, expectedStatus) << run.out << run.err;
    return run;
  }
  Json Manifest(const std::string& name) { return Json::parse(File(name)); }

  // The files below a folder with their bytes.
  std::map<std::string, std::string> FilesOf(const std::string& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(dir_.File(folder))) {
      if (entry.is_directory() || entry.path().extension() == ".json") continue;
      files[fs::relative(entry.path(), dir_.File(folder)).string()] = ReadFile(entry.path());
    }
    return files;
  }
};

TEST_F(VeltrumAll, WritesTheFilesOfTheSingleCommands) {
  fs::create_directory(dir_.File("single"));
  const std::string avatar = "-s2 -rRootNode/Hips -d single avatar.fbx export ";
  dir_.Write("commands.txt", avatar + "skel Hips -\n" + avatar + "mesh -\n" + avatar +
                                 "texture -\n" + avatar + "anim Wave Walk -\n" + avatar +
                                 "morphanim Wave-smile Walk-blink\n");
  Run({"-z", "commands.txt"});
  All({"--scale=2", "avatar.fbx", "-o", "all"});
  EXPECT_EQ(FilesOf("all"), FilesOf("single"));
  EXPECT_EQ(FilesOf("all").size(), 8U);

  const std::string first = File("all/avatar.json");
  All({"avatar.fbx", "--scale", "2", "-o", "all/"});
  EXPECT_EQ(File("all/avatar.json"), first);
  const Json manifest = Manifest("all/avatar.json");
  EXPECT_EQ(manifest["version"], 1);
  EXPECT_EQ(manifest["state"], "done");
  EXPECT_EQ(manifest["options"]["scale"], 2);
  const Json& skeleton = manifest["skeletons"].at(0);
  EXPECT_EQ(skeleton["file"], "Hips.xsf");
  EXPECT_EQ(skeleton["bones"].at(4), Json({{"name", "LeftArm"}, {"parent", 1}}));
  const Json& mesh = skeleton["meshes"].at(0);
  EXPECT_EQ(mesh["vertices"], 170);
  EXPECT_EQ(mesh["submeshes"].at(0)["morphTargets"], Json({"blink", "smile"}));
  const Json& map = skeleton["materials"].at(0)["maps"].at(0);
  EXPECT_EQ(map["exists"], true);
  EXPECT_EQ(skeleton["materials"].at(1)["maps"].at(0)["exists"], false);
  const Json& walk = skeleton["animations"].at(1);
  EXPECT_EQ(walk, Json({{"name", "Walk"},
                        {"file", "Walk.xaf"},
                        {"kind", "skeletal"},
                        {"start", 0},
                        {"end", 30},
                        {"rate", "30 frames/s"},
                        {"duration", 1.0},
                        {"tracks", 7},
                        {"keys", walk["keys"]}}));
  EXPECT_GT(walk["keys"], 20);
  EXPECT_EQ(manifest["warnings"].at(0)["kind"], "missing-texture");
}

// Renaming works on the nodes of the scene: what is exported behind it must not notice.
TEST_F(VeltrumAll, RenamesRooms) {
  fs::create_directory(dir_.File("single"));
  const std::string room = "--room --rename -rRootNode/skeleton.room -d single room.fbx export ";
  dir_.Write("commands.txt",
             room + "mesh -\n" + room + "texture -\n" + room + "skel skeleton.room\n");
  Run({"-z", "commands.txt"});
  All({"--room", "--rename", "room.fbx", "-o", "all"});
  EXPECT_EQ(FilesOf("all"), FilesOf("single"));
  EXPECT_THAT(Manifest("all/room.json")["warnings"].dump(), HasSubstr("renamed"));
}

// Skeletons inside each other, with a room's names in both and a light that changes the scene's
// ambient colour on the way.
TEST_F(VeltrumAll, SkeletonsDoNotDisturbEachOther) {
  SceneBuilder scene;
  const int64_t outer = scene.Bone("outer root");
  const int64_t inner = scene.Bone("inner root", outer);
  scene.Bone("seat01", inner);
  scene.Bone("seat02", inner);
  scene.Bone("lightAmbient_rgb102030", outer);
  scene.Mesh("Loose");
  dir_.Write("s.fbx", scene.Write());
  for (const Words& options : {Words{"--room"}, Words{"--room", "--rename"}}) {
    Words words = options;
    words.insert(words.end(), {"s.fbx", "-oall"});
    All(words);
    const Json skeletons = Manifest("all/s.json")["skeletons"];
    ASSERT_EQ(skeletons.size(), 3U);
    for (const Json& skeleton : skeletons) {
      const std::string root = skeleton["root"];
      Words single = options;
      single.insert(single.end(), {"--root=" + root, "--cal3d2text=one.xsf", "s.fbx", "export",
                                   "skel", std::string(skeleton["name"])});
      Run(single);
      EXPECT_EQ(File("one.xsf"), File("all/" + std::string(skeleton["file"]))) << root;
    }
  }
}

// A scene may name any file, and two in one place on a disk where case doesn't count.
TEST_F(VeltrumAll, OnlyPicturesAreCopied) {
  SceneBuilder scene;
  const auto body = scene.Mesh("Body");
  scene.Texture(scene.Material(body.node, "Skin"), "DiffuseColor", dir_.Write("secret.txt", "x"));
  scene.Texture(scene.Material(body.node, "skin"), "DiffuseColor", "skin.png");
  dir_.Write("s.fbx", scene.Write());
  All({"s.fbx", "-oall", "--textures"});
  EXPECT_FALSE(Exists("all/secret.txt"));
  EXPECT_EQ(File("all/skin.png"), "picture");
  const std::string warnings = Manifest("all/s.json")["warnings"].dump();
  EXPECT_THAT(warnings, HasSubstr("texture-kind"));
  EXPECT_THAT(warnings, HasSubstr(R"("kind":"case")"));
}

TEST_F(VeltrumAll, ManyScenesAndBadOnes) {
  fs::create_directory(dir_.File("other"));
  dir_.Write("other/Avatar.fbx", ReadFile(dir_.File("avatar.fbx")));
  dir_.Write("bad.fbx", "no scene");
  const RunResult run = All({"avatar.fbx", "bad.fbx", "other/Avatar.fbx", "none.fbx", "-oall",
                             "--textures", "--only=mesh,texture"},
                            2);
  EXPECT_THAT(run.err, HasSubstr("veltrum-all: bad.fbx: "));
  EXPECT_THAT(run.err, HasSubstr("veltrum-all: none.fbx: "));
  EXPECT_EQ(Manifest("all/bad.json")["state"], "unreadable");
  EXPECT_EQ(Manifest("all/none.json")["errors"].at(0)["kind"], "unreadable");
  EXPECT_EQ(Manifest("all/Avatar_2.json")["files"].at(0), "Avatar_2/Body.xmf");
  Words names;
  for (const auto& [name, bytes] : FilesOf("all")) names.push_back(name);
  EXPECT_THAT(names, ElementsAre("Avatar_2/Body.xmf", "Avatar_2/Shirt.xrf", "Avatar_2/Skin.xrf",
                                 "avatar/Body.xmf", "avatar/Shirt.xrf", "avatar/Skin.xrf",
                                 "avatar/skin.png"));
}

TEST_F(VeltrumAll, WhatCannotBeWrittenIsTold) {
  const RunResult dry = All({"avatar.fbx", "-odry", "--dry-run"});
  EXPECT_THAT(dry.out, HasSubstr("  dry/Walk-blink.xpf\n"));
  EXPECT_FALSE(Exists("dry"));

  fs::create_directories(dir_.File("all/Body.xmf/in the way"));
  fs::create_directories(dir_.File("all/skin.png/in the way"));
  const RunResult run = All({"avatar.fbx", "-oall", "--textures"}, 1);
  EXPECT_THAT(run.err, HasSubstr("all/Body.xmf: "));
  EXPECT_THAT(run.err, HasSubstr("all/skin.png: Is a directory"));
  const Json manifest = Manifest("all/avatar.json");
  EXPECT_EQ(manifest["state"], "partial");
  EXPECT_EQ(manifest["errors"].at(0)["about"], "Body.xmf");
  EXPECT_THAT(manifest["files"].dump(), Not(HasSubstr("skin.png")));
  EXPECT_THAT(manifest["skeletons"].at(0)["meshes"], IsEmpty());
  fs::create_directories(dir_.File("m/avatar.json/in the way"));
  EXPECT_EQ(All({"avatar.fbx", "-om"}, 1).err,
            "veltrum-all: 'm/avatar.json' can't be written: Is a directory\n");
  EXPECT_EQ(All({"avatar.fbx", "-oavatar.fbx"}, 2).err,
            "veltrum-all: 'avatar.fbx/' can't be made: File exists\n");
  const std::string full = ProgramPath("veltrum-all") + " avatar.fbx -ofull >/dev/full";
  EXPECT_EQ(RunProgram("/bin/sh", {"-c", full}, dir_.Path()).err,
            "veltrum-all: standard output can't be written: No space left on device\n");
}

TEST_F(VeltrumAll, WrongCommandLines) {
  for (const Words& words : std::vector<Words>{{"avatar.fbx"},
                                               {"-oall"},
                                               {"avatar.fbx", "-oall", "--scale=2x"},
                                               {"avatar.fbx", "-oall", "--scale=nan"},
                                               {"avatar.fbx", "-oall", "--up=y", "--front=-Y"},
                                               {"avatar.fbx", "-oall", "--up=-y"},
                                               {"avatar.fbx", "-oall", "--front=w"},
                                               {"avatar.fbx", "-oall", "--coord=up"},
                                               {"avatar.fbx", "-oall", "--only=mesh,bone"},
                                               {"avatar.fbx", "-oall", "--rooms"}}) {
    EXPECT_FALSE(All(words, 2).err.empty());
    EXPECT_FALSE(Exists("all"));
  }
}

}  // namespace
