// The scene that commands work on and what was derived from it. Commands on one file in a row load
// and analyse it once; a command on another file replaces all of it at once, so that nothing is
// left that points into a scene that is gone. Sessions don't know of each other.
#pragma once

#include <memory>

#include "converter/animation/animation_info.h"
#include "converter/base/conversion_arguments.h"
#include "converter/scene/fbx_wrapper.h"

class Session {
 public:
  // The scene of `args.inputFilename`, loaded unless it is the current one already; no other
  // argument plays a part. The old scene goes before the new one is loaded: two large scenes need
  // not be in memory together. Throws as FbxWrapper's constructor does, and is empty then.
  FbxWrapper& SceneOf(const ConversionArguments& args);
  // The animations of that scene, as the first command that asked for them found them.
  const AnimationCache& AnimationsOf(const ConversionArguments& args);
  // Null as long as no scene is loaded; then empty until AnimationsOf is called.
  const AnimationCache* Animations() const;
  // The next command loads its scene anew.
  void DropScene() { loaded_.reset(); }

  // The one that the program's commands share.
  static Session& OfProgram();

 private:
  struct Loaded {
    explicit Loaded(const ConversionArguments& args)
        : fileName(args.inputFilename), scene(args.inputFilename) {}

    std::string fileName;
    FbxWrapper scene;
    AnimationCache animations;
  };
  std::unique_ptr<Loaded> loaded_;
};

// The program's animation cache by its old name.
const AnimationCache* _currentAnimationCache();  // NOLINT(bugprone-reserved-identifier)
