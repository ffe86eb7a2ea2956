// What the saver does to the file system, and what it refuses to write.
#include "cal3d/io/saver.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>
#include <sys/stat.h>

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
  // No loader reads these two kinds back.
  ASSERT_TRUE(CalSaver::saveCoreMaterial(folder.File("m.crf"), &material));
  EXPECT_EQ(ReadFile(folder.File("m.crf")),
            std::string("CRF\0\x97\3\0\0\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\0\0\0\0\0\0\0\0"
                        "\1\0\0\0\6\0\0\0a.png\0\3\0\0\0Up\0",
                        45));
  ASSERT_TRUE(CalSaver::saveCoreMorphAnimation(folder.File("m.cpf"), &morphs));
  EXPECT_EQ(ReadFile(folder.File("m.cpf")),
            std::string("CPF\0\x97\3\0\0\0\0\0@\1\0\0\0\4\0\0\0wry\0\1\0\0\0\0\0\x80?\0\0\0?", 36));
}

TEST(Saver, ReplacesAWholeFileWithThePermissionsOfANewOne) {
  const TempDir folder;
  const std::string path = folder.Write(std::string(255, 'n'), "old");  // as long as a name gets
  const CalCoreSkeleton skeleton = SampleSkeleton();
  const mode_t mask = umask(027);
  EXPECT_TRUE(CalSaver::saveCoreSkeleton(path, &skeleton));
  umask(mask);
  struct stat status {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640u);
  EXPECT_EQ(ReadFile(path), Saved(skeleton, ".xsf"));
  EXPECT_EQ(EntryCount(folder), 1u);
}

TEST(Saver, AFailedSaveLeavesNothing) {
  const TempDir folder;
  const CalCoreSkeleton skeleton = SampleSkeleton();
  std::filesystem::create_directory(folder.File("taken"));
  EXPECT_FALSE(CalSaver::saveCoreSkeleton(folder.File("taken"), &skeleton));
  EXPECT_FALSE(CalSaver::saveCoreSkeleton(folder.File("no/such/folder.xsf"), &skeleton));
  EXPECT_FALSE(CalSaver::saveCoreSkeleton(folder.File(std::string(256, 'n')), &skeleton));
  EXPECT_FALSE(CalSaver::saveCoreSkeleton("", &skeleton));
  EXPECT_FALSE(CalSaver::saveCoreSkeleton(folder.File(std::string_view("a\0b", 3)), &skeleton));
  EXPECT_FALSE(CalSaver::saveCoreSkeleton("/dev/full", &skeleton));
  EXPECT_EQ(EntryCount(folder), 1u);
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
