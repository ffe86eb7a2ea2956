// The diagnostic that sets an exported animation beside the scene that it came from.

#include "cal3d/model/core_animation.h"
#include "converter/animation/export_animation.h"
#include "converter/base/output.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/skeleton/skeleton_roots.h"
#include "converter/space/frames.h"
#include "fbx/scene/fbx_node.h"

namespace {

void PrintTransform(size_t bone, float seconds, const FbxQuaternion& r, const FbxVector4& t) {
  PrintFormatted("%2.2zu\t %2.2f r:%2.2f %2.2f %2.2f %2.2f t:%2.2f %2.2f %2.2f \n", bone,
                 static_cast<double>(seconds), r[0], r[1], r[2], r[3], t[0], t[1], t[2]);
}

void CompareBone(size_t bone, const FbxNode& node, const CalCoreTrack& track, float seconds) {
  FbxTime time;
  time.SetSecondDouble(static_cast<double>(seconds));
  const CalTransform transform = track.getCurrentTransform(seconds);
  const FbxVector4 fbxTranslation = node.EvaluateLocalTranslation(time);
  const CalVector4 t = transform.translation.asCalVector4();
  const FbxVector4 calTranslation(static_cast<double>(t.x), static_cast<double>(t.y),
                                  static_cast<double>(t.z), 1.0);
  const FbxQuaternion fbxRotation = node.EvaluateLocalTransform(time).GetQ();
  const CalQuaternion& r = transform.rotation;
  const FbxQuaternion calRotation(static_cast<double>(r.x), static_cast<double>(r.y),
                                  static_cast<double>(r.z), static_cast<double>(r.w));
  if (fbxRotation != calRotation) {
    PrintFormatted("rotation mismatch at %zu, frame %d \n", bone,
                   Truncated<int>(static_cast<double>(seconds)));
  }
  PrintTransform(bone, seconds, fbxRotation, fbxTranslation);
  PrintTransform(bone, seconds, calRotation, calTranslation);
}

}  // namespace

bool ExportAnimation::Compare(const ConversionArguments& args, const CalCoreAnimation& animation) {
  const FbxNode* root = GetSkeletonRoot(&scene_, args).node;
  if (root == nullptr) return false;
  const NodeSpan skeleton = BuildSkeleton(&scene_, root, args);
  constexpr int kSteps = 120;
  for (int i = 0; i < kSteps; ++i) {
    const float seconds = static_cast<float>(i) * args.frameRate;
    for (size_t bone = 0; bone < skeleton.size(); ++bone) {
      const CalCoreTrack* track = animation.getCoreTrack(static_cast<int>(bone));
      if (track != nullptr) CompareBone(bone, *skeleton[bone], *track, seconds);
    }
  }
  return true;
}
