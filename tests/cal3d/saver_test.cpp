// What the saver does to the file system, and what it refuses to write.
#include "cal3d/io/saver.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "cal3d/io/output_file.h"
#include "tests/cal3d/sample_models.h"
#include "tests/support/temp_dir.h"

namespace {

size_t EntryCount(const TempDir& folder) {
  const std::filesystem::directory_iterator entries(folder.Path());
  return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

TEST(Saver, EndingChoosesTheForm) {
  const TempDir folder;
  const CalCoreSkeleton skeleton = SampleSkeleton();
  const CalCoreMaterial material{{{"a.png", "Up"}}};
  const CalCoreMorphAnimation morphs{2, {{"wry", {{1, 0.5F}}}}};
  for (const char* name : {"a.xsf", "csf", "plain", "a.csf.txt", "a.bsf"}) {
    ASSERT_TRUE(CalSaver::saveCoreSkeleton(folder.File(name), &skeleton));
    EXPECT_EQ(ReadFile(folder.File(name))[0], '<') << name;
  }
  // The object makes the content, whichever binary ending it gets.
  for (const char* name : {"a.csf", "a.CSF", ".cSf", "a.cmf", "a.crf", "a.caf", "a.cpf"}) {
    ASSERT_TRUE(CalSaver::saveCoreSkeleton(folder.File(name), &skeleton));
    EXPECT_EQ(ReadFile(folder.File(name)).substr(0, 4), std::string("CSF\0", 4)) << name;
  }
  ASSERT_TRUE(CalSaver::saveCoreMaterial(folder.File("m.crf"), &material));
  EXPECT_EQ(ReadFile(folder.File("m.crf")),
            std::string("CRF\0\x97\3\0\0\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\0\0\0\0\0\0\0\0"
                        "\1\0\0\0\6\0\0\0a.png\0\3\0\0\0Up\0",
                        45));
  ASSERT_TRUE(CalSaver::saveCoreMorphAnimation(folder.File("m.cpf"), &morphs));
  EXPECT_EQ(ReadFile(folder.File("m.cpf")),
            std::string("CPF\0\x97\3\0\0\0\0\0@\1\0\0\0\4\0\0\0wry\0\1\0\0\0\0\0\x80?\0\0\0?", 36));
}

TEST(Saver, ReplacesAWholeFileAndKeepsItsPermissions) {
  const TempDir folder;
  const std::string name(255, 'n');  // as long as a name gets
  const CalCoreSkeleton skeleton = SampleSkeleton();
  const auto permissions = [&] { return std::filesystem::status(folder.File(name)).permissions(); };
  const mode_t mask = umask(027);
  EXPECT_TRUE(CalSaver::saveCoreSkeleton(folder.File(name), &skeleton));
  EXPECT_EQ(permissions(), std::filesystem::perms{0640});
  folder.Write(name, "old");
  std::filesystem::permissions(folder.File(name), std::filesystem::perms{0426});
  EXPECT_TRUE(CalSaver::saveCoreSkeleton(folder.File(name), &skeleton));
  EXPECT_EQ(permissions(), std::filesystem::perms{0426});
  umask(mask);
  EXPECT_EQ(ReadFile(folder.File(name)), Saved(skeleton, ".xsf"));
  EXPECT_EQ(EntryCount(folder), 1u);
}

TEST(Saver, AFailedSaveLeavesNothingAndSaysWhy) {
  const TempDir folder;
  const CalCoreSkeleton skeleton = SampleSkeleton();
  std::filesystem::create_directory(folder.File("taken"));
  for (const auto& [path, reason] : std::vector<std::pair<std::string, std::string>>{
           {folder.File("taken"), "Is a directory"},
           {folder.File("no/such/folder.xsf"), "No such file or directory"},
           {folder.File("taken/../taken/"), "Is a directory"},
           {folder.File(std::string(256, 'n')), "File name too long"},
           {"", "No such file or directory"},
           {folder.File(std::string_view("a\0b", 3)), "Invalid argument"},
           {"/dev/full", "No space left on device"}}) {
    EXPECT_FALSE(CalSaver::saveCoreSkeleton(path, &skeleton));
    EXPECT_EQ(CalSaver::lastError(), reason) << path;
  }
  EXPECT_EQ(EntryCount(folder), 1u);
}

TEST(Saver, SignalsTakeTheTemporaryFileAlong) {
  const TempDir folder;
  const std::string path = folder.Write("x", "old");
  const auto write = [&path](int signal) {
    RemoveUnfinishedFilesOnSignals();
    OutputFile file(path);
    file.Append(std::string(3 << 20, 'x'));
    std::raise(signal);
    std::exit(file.Commit() ? 0 : 1);
  };
  for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
    EXPECT_EXIT(write(signal), testing::KilledBySignal(signal), "");
    EXPECT_EQ(ReadFile(path), "old");
    EXPECT_EQ(EntryCount(folder), 1u);
  }
  // SIGKILL can't be met, but the earlier file is whole.
  EXPECT_EXIT(write(SIGKILL), testing::KilledBySignal(SIGKILL), "");
  EXPECT_EQ(ReadFile(path), "old");
  // A program started under nohup goes on.
  const auto ignored = std::signal(SIGHUP, SIG_IGN);
  EXPECT_EXIT(write(SIGHUP), testing::ExitedWithCode(0), "");
  std::signal(SIGHUP, ignored);
  EXPECT_EQ(ReadFile(path).size(), size_t{3} << 20);
}

TEST(Saver, KeepsDevicesAndLinks) {
  const TempDir folder;
  const CalCoreSkeleton skeleton = SampleSkeleton();
  std::filesystem::create_symlink("/dev/null", folder.File("sink"));
  EXPECT_TRUE(CalSaver::saveCoreSkeleton(folder.File("sink"), &skeleton));
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
  folder.Write("real", "old");
  std::filesystem::create_symlink("real", folder.File("link"));
  EXPECT_TRUE(CalSaver::saveCoreSkeleton(folder.File("link"), &skeleton));
  EXPECT_TRUE(std::filesystem::is_symlink(folder.File("link")));
  EXPECT_EQ(ReadFile(folder.File("real")), Saved(skeleton, ".xsf"));
  EXPECT_EQ(EntryCount(folder), 3u);
}

TEST(Saver, RefusesWhatNoLoaderWouldTake) {
  const TempDir folder;
  const std::string path = folder.Write("x", "old");
  const auto bone = [](int parent) { return boost::make_shared<CalCoreBone>("b", parent); };
  const std::vector<std::vector<boost::shared_ptr<CalCoreBone>>> bad_bones = {
      {nullptr}, {bone(1)}, {bone(-2)}, {bone(0)}, {bone(-1), bone(2), bone(3), bone(1)}};
  for (const auto& bones : bad_bones) {
    const CalCoreSkeleton skeleton(bones);
    EXPECT_FALSE(CalSaver::saveCoreSkeleton(path, &skeleton));
    EXPECT_THAT(CalSaver::lastError(), testing::StartsWith("bone "));
  }

  const auto vertex_of_bone = [](int id) {
    auto submesh = boost::make_shared<CalCoreSubmesh>(1, false, 1);
    submesh->addVertex({}, 0, {{id, 1, 1}});
    return submesh;
  };
  const auto outside_face = vertex_of_bone(0);
  outside_face->addFace({{0, 0, 1}});
  const auto outside_morph = vertex_of_bone(0);
  cal3d::SSEArray<VertexOffset> offsets;
  offsets.push_back({1, {}, {}});
  outside_morph->addMorphTarget(boost::make_shared<CalCoreMorphTarget>("m", 2, offsets));
  const auto no_morph = vertex_of_bone(0);
  no_morph->addMorphTarget(nullptr);
  for (const auto& submesh : std::vector<boost::shared_ptr<CalCoreSubmesh>>{
           nullptr, vertex_of_bone(-2), outside_face, outside_morph, no_morph}) {
    const CalCoreMesh mesh{{submesh}};
    EXPECT_FALSE(CalSaver::saveCoreMesh(path, &mesh));
  }

  CalCoreAnimation animation;
  animation.tracks.emplace_back(-1, std::vector<CalCoreKeyframe>());
  EXPECT_FALSE(CalSaver::saveCoreAnimation(path, &animation));
  EXPECT_FALSE(CalSaver::saveCoreMaterial(path, nullptr));
  EXPECT_FALSE(CalSaver::saveCoreMorphAnimation(path, nullptr));
  EXPECT_EQ(ReadFile(path), "old");
}

}  // namespace
