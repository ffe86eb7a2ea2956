// A scene loaded from the bytes of a file, for tests of the scene library.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "fbx/anim/fbx_animation.h"
#include "fbx/core/fbx_object.h"
#include "fbx/reader/fbx_importer.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"
#include "tests/support/scene_builder.h"

class LoadedScene {
 public:
  // `options` are switched off.
  explicit LoadedScene(std::string fileBytes, const std::vector<std::string>& options = {})
      : bytes_(std::move(fileBytes)),
        manager_(FbxManager::Create()),
        importer(FbxImporter::Create(manager_, "")),
        scene(FbxScene::Create(manager_, "scene")) {
    FbxIOSettings* settings = FbxIOSettings::Create(manager_, "");
    for (const std::string& option : options) {
      settings->SetBoolProp("Import|AdvOptGrp|FileFormat|Fbx|" + option, false);
    }
    isLoaded = importer->InitializeFromMemory(bytes_, settings) && importer->Import(scene);
    scene->SetCurrentAnimationStack(scene->GetSrcObject<FbxAnimStack>());
  }
  // A document whose load must succeed.
  explicit LoadedScene(const SceneBuilder& builder, const FbxFormat& format = {})
      : LoadedScene(builder.Write(format)) {
    EXPECT_TRUE(isLoaded) << importer->GetStatus().GetErrorString();
  }
  ~LoadedScene() { manager_->Destroy(); }
  LoadedScene(const LoadedScene&) = delete;
  LoadedScene& operator=(const LoadedScene&) = delete;

  // The first object of the class and name, null if there is none.
  template <typename T>
  T* Find(const std::string& name) const {
    for (int i = 0; i < scene->GetSrcObjectCount<T>(); ++i) {
      if (scene->GetSrcObject<T>(i)->Name() == name) return scene->GetSrcObject<T>(i);
    }
    return nullptr;
  }
  FbxNode& Node(const std::string& name) const { return *Find<FbxNode>(name); }

  // A layer of the first stack, which is the current one.
  FbxAnimLayer* AnimLayer(int index = 0) const {
    return scene->GetCurrentAnimationStack()->GetLayer(index);
  }

  // "code text" of the importer's status.
  std::string Status() const {
    const FbxStatus& status = importer->GetStatus();
    return std::to_string(status.GetCode()) + " " + status.GetErrorString();
  }

 private:
  std::string bytes_;
  FbxManager* manager_;

 public:
  FbxImporter* importer;
  FbxScene* scene;
  bool isLoaded = false;
};
