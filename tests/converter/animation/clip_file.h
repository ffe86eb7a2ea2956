// A clip scene that is written to a file and loaded, for tests of animation code in process.
#pragma once

#include <memory>

#include <gtest/gtest.h>

#include "converter/base/conversion_arguments.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/scene/scene_channels.h"
#include "fbx/anim/fbx_animation.h"
#include "tests/support/scene_builder.h"
#include "tests/support/temp_dir.h"

class ClipFile : public testing::Test {
 protected:
  // Writes and loads the scene; later changes of `scene_` have no effect.
  FbxWrapper& Load() {
    args_.inputFilename = folder_.Write("s.fbx", scene_.Write());
    args_.outputFilename = folder_.File("out.xaf");
    args_.skeletonRootPath = "RootNode/Hips";
    loaded_ = std::make_unique<FbxWrapper>(args_.inputFilename);
    return *loaded_;
  }
  static FbxAnimStack* Stack(const FbxWrapper& wrapper, size_t index = 0) {
    return wrapper.GetAnimList().at(index);
  }

  SceneBuilder scene_;
  TempDir folder_;
  ConversionArguments args_;
  std::unique_ptr<FbxWrapper> loaded_;
};
