#include "converter/animation/animation_cache.h"

#include "converter/animation/export_animation.h"
#include "converter/scene/fbx_wrapper.h"

AnimationCache _currentAnimationCache;  // NOLINT(bugprone-reserved-identifier)

void AnimationCache::Update(ConversionArguments& args) {
  const uint64_t load = FbxWrapper::getInstance(args)->LoadNumber();
  if (fileName == args.inputFilename && loadNumber == load) return;
  fileName.clear();
  skeletalAnimations.clear();
  morphAnimations.clear();
  ExportAnimation(args).BuildAnimLists(skeletalAnimations, morphAnimations);
  fileName = args.inputFilename;
  loadNumber = load;
}
