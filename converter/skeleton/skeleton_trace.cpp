#include "converter/skeleton/skeleton_trace.h"

#include "converter/base/records.h"
#include "converter/scene/scene_queries.h"
#include "fbx/scene/fbx_node.h"

namespace {

void Dump(const char* label, const FbxAMatrix& matrix) {
  Print(label);
  dumpMatrixInfo(matrix);
}

}  // namespace

void TraceMatches(const ConversionArguments& args, const NodeNameVisitor& visitor) {
  if (args.verbosity < 1) return;
  for (const std::string& pattern : visitor.Patterns()) {
    PrintFormatted("found %zu nodes for %s\n", visitor.Matches(pattern).size(), pattern.c_str());
  }
}

void TraceRenaming(const ConversionArguments& args, const FbxNode& node, const std::string& name) {
  if (args.verbosity < 1) return;
  PrintFormatted("node %s was renamed %s\n", node.GetName(), name.c_str());
}

void TraceRoomRoot(const ConversionArguments& args, const FbxNode& root) {
  if (args.verbosity > 0) PrintFormatted(" from %s\n", root.GetInitialName());
}

void TraceBone(const ConversionArguments& args, const TracedBone& bone) {
  if (args.verbosity > 0) PrintFormatted("%s:%zu\n", bone.node.GetName(), bone.id);
  if (args.verbosity < 2) return;
  RestMatrices parent;
  if (!bone.isRoot && bone.node.GetParent() != nullptr) {
    parent = GetRestMatrices(bone.node.GetParent(), bone.useBindPose);
  }
  const FbxAMatrix local = bone.node.EvaluateLocalTransform();
  const bool differs = !(bone.rest.globalPose == bone.rest.global);
  Dump("\n globalChild           ", bone.rest.global);
  Dump(differs ? "*globalChildPose      " : " globalChildPose      ", bone.rest.globalPose);
  Dump("globalParent*local     ", parent.global * local);
  Dump("globalPosition*local   ", bone.parentGlobal * local);
  Dump(" globalParent          ", parent.global);
  Dump(" globalParentPose      ", parent.globalPose);
  Dump(" globalPosition        ", bone.parentGlobal);
  Dump("EvaluateLocalTransform ", local);
  Dump("gParent.Inv * gChild   ", parent.global.Inverse() * bone.rest.global);
  Dump("gPsition.Inv*gChldPose ", bone.parentGlobal.Inverse() * bone.rest.globalPose);
  Dump("transform              ", bone.transform);
}

void TraceBoneSpace(const ConversionArguments& args, const FbxAMatrix& skelTransform,
                    const FbxAMatrix& inverseBind) {
  if (args.verbosity < 2) return;
  Dump("skelTransform(glb) ", skelTransform);
  Dump("inverseBind        ", inverseBind);
  Dump("inverseBind * skel ", inverseBind * skelTransform);
}
