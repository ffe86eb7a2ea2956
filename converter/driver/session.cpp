#include "converter/driver/session.h"

#include <utility>

#include "converter/animation/export_animation.h"

FbxWrapper& Session::SceneOf(const ConversionArguments& args) {
  if (loaded_ == nullptr || loaded_->fileName != args.inputFilename) {
    loaded_.reset();
    loaded_ = std::make_unique<Loaded>(args);
  }
  return loaded_->scene;
}

const AnimationCache& Session::AnimationsOf(const ConversionArguments& args) {
  FbxWrapper& scene = SceneOf(args);
  if (loaded_->animations.fileName.empty()) {
    // Built aside: a failure halfway leaves no half of it to later commands.
    AnimationCache animations;
    ExportAnimation(scene, args)
        .BuildAnimLists(animations.skeletalAnimations, animations.morphAnimations);
    animations.fileName = args.inputFilename;
    loaded_->animations = std::move(animations);
  }
  return loaded_->animations;
}

const AnimationCache* Session::Animations() const {
  return loaded_ == nullptr ? nullptr : &loaded_->animations;
}

Session& Session::OfProgram() {
  // Never freed: the system takes all memory back at once, where freeing a scene of many nodes
  // object by object costs a seventh of the time of listing it.
  static Session& session = *new Session;
  return session;
}

const AnimationCache* _currentAnimationCache() { return Session::OfProgram().Animations(); }

FbxWrapper* FbxWrapper::getInstance(const ConversionArguments& args) {
  return &Session::OfProgram().SceneOf(args);
}
