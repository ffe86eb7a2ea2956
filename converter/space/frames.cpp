#include "converter/space/frames.h"

#include <cmath>

#include "fbx/core/fbx_time.h"

namespace {

float FramesPerSecond(FbxTime::EMode mode) {
  switch (mode) {
    case FbxTime::eFrames120:
      return 120.0F;
    case FbxTime::eFrames100:
      return 100.0F;
    case FbxTime::eFrames60:
      return 60.0F;
    case FbxTime::eFrames50:
      return 50.0F;
    case FbxTime::eFrames48:
      return 48.0F;
    case FbxTime::eNTSCDropFrame:
    case FbxTime::eNTSCFullFrame:
      return 29.97F;
    case FbxTime::ePAL:
      return 25.0F;
    case FbxTime::eFrames24:
      return 24.0F;
    case FbxTime::eFrames1000:
      return 1000.0F;
    case FbxTime::eFilmFullFrame:
      return 23.976F;
    case FbxTime::eFrames96:
      return 96.0F;
    case FbxTime::eFrames72:
      return 72.0F;
    case FbxTime::eFrames59dot94:
      return 59.94F;
    default:
      return 30.0F;
  }
}

}  // namespace

float clampKeyValue(float value) {
  const float thousandths = std::trunc((value + 0.0005F) * 1000.0F);
  // Adding 0 turns the -0 of a small negative value into the 0 that an integer would give.
  return (thousandths + 0.0F) / 1000.0F;
}

float frameToSeconds(float frame) { return frame / FramesPerSecond(FbxTime::GetGlobalTimeMode()); }
