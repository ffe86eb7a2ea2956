// What becomes of a file that the disk gives only in part.
#include <cerrno>

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "fbx/core/fbx_object.h"
#include "fbx/reader/fbx_importer.h"
#include "fbx/scene/fbx_scene.h"
#include "tests/support/scene_builder.h"
#include "tests/support/temp_dir.h"

namespace {

// The read that fails, counted down; none while negative. Every other one is interrupted once.
int failingRead = -1;
bool failsOnce = false;  // or all from there on
bool isInterrupted = false;
bool hasFailed = false;

}  // namespace

// In place of the system's, for this whole test program.
extern "C" ssize_t pread(int descriptor, void* out, size_t count, off_t position) {
  if (failingRead == 0) {
    hasFailed = true;
    if (failsOnce) failingRead = -1;
    errno = EIO;
    return -1;
  }
  if (failingRead > 0) {
    isInterrupted = !isInterrupted;
    if (isInterrupted) {
      errno = EINTR;
      return -1;
    }
    --failingRead;
  }
  return syscall(SYS_pread64, descriptor, out, count, position);
}

namespace {

TEST(ReadErrors, FailTheImportAtAnyRead) {
  SceneBuilder builder;
  for (int i = 0; i < 3; ++i) builder.AddMesh("mesh", std::vector<double>(30000), {0, 1, -3});
  TempDir folder;
  for (const auto& [ascii, once] :
       {std::pair(false, false), {false, true}, {true, false}, {true, true}}) {
    failsOnce = once;
    const std::string path = folder.Write("scene.fbx", builder.Write({.ascii = ascii}));
    int reads = 0;
    for (bool isLoaded = false; !isLoaded; ++reads) {
      ASSERT_LT(reads, 1000);
      FbxManager* manager = FbxManager::Create();
      FbxImporter* importer = FbxImporter::Create(manager, "");
      failingRead = reads;
      hasFailed = false;
      isLoaded =
          importer->Initialize(path.c_str()) && importer->Import(FbxScene::Create(manager, ""));
      failingRead = -1;
      // The last round reads to the end.
      EXPECT_EQ(isLoaded, !hasFailed) << reads;
      if (!isLoaded) {
        EXPECT_EQ(importer->GetStatus().GetErrorString(),
                  "Unable to read file " + path + ": Input/output error");
      }
      manager->Destroy();
    }
    EXPECT_GT(reads, 5);
  }
}

}  // namespace
