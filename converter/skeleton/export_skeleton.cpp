#include "converter/skeleton/export_skeleton.h"

#include <cstdio>
#include <utility>

#include <boost/make_shared.hpp>

#include "cal3d/io/saver.h"
#include "converter/base/records.h"
#include "converter/scene/node_paths.h"
#include "converter/scene/scene_queries.h"
#include "converter/skeleton/bone_lights.h"
#include "converter/skeleton/node_matrices.h"
#include "converter/space/axis_mod.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

namespace {

using Bones = std::vector<boost::shared_ptr<CalCoreBone>>;

constexpr const char* kRoomRootName = "skeleton.Room";

// A pose matrix this near to the identity is no pose.
constexpr double kIdentityThreshold = 1e-6;

// The matrices that a bone is computed from.
struct RestMatrices {
  FbxAMatrix global;      // evaluated
  FbxAMatrix globalPose;  // from the bind pose, or evaluated where there is none
};

RestMatrices GetRestMatrices(const FbxNode* node, bool useBindPose) {
  RestMatrices rest;
  rest.global = node->EvaluateGlobalTransform();
  if (useBindPose) rest.globalPose = getBindPoseMatrix(node);
  if (rest.globalPose.IsIdentity(kIdentityThreshold)) rest.globalPose = rest.global;
  return rest;
}

bool UsesBindPose(const ConversionArguments& args) {
  return args.skeletonRootPath != kRootNodeName;
}

CalVector ToCalVector(const FbxVector4& v) {
  return {static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2])};
}

CalQuaternion ToCalQuaternion(const FbxQuaternion& q) {
  return {static_cast<float>(q[0]), static_cast<float>(q[1]), static_cast<float>(q[2]),
          static_cast<float>(q[3])};
}

void Dump(const char* label, const FbxAMatrix& matrix) {
  std::printf("%s", label);
  dumpMatrixInfo(matrix);
}

void DumpRestMatrices(const FbxNode* node, int parentId, const RestMatrices& child,
                      const FbxAMatrix& parentGlobal, const FbxAMatrix& transform,
                      bool useBindPose) {
  RestMatrices parent;
  if (parentId != -1 && node->GetParent() != nullptr) {
    parent = GetRestMatrices(node->GetParent(), useBindPose);
  }
  const FbxAMatrix local = node->EvaluateLocalTransform();
  const bool differs = !(child.globalPose == child.global);
  Dump("\n globalChild           ", child.global);
  Dump(differs ? "*globalChildPose      " : " globalChildPose      ", child.globalPose);
  Dump("globalParent*local     ", parent.global * local);
  Dump("globalPosition*local   ", parentGlobal * local);
  Dump(" globalParent          ", parent.global);
  Dump(" globalParentPose      ", parent.globalPose);
  Dump(" globalPosition        ", parentGlobal);
  Dump("EvaluateLocalTransform ", local);
  Dump("gParent.Inv * gChild   ", parent.global.Inverse() * child.global);
  Dump("gPsition.Inv*gChldPose ", parentGlobal.Inverse() * child.globalPose);
  Dump("transform              ", transform);
}

// The bone's name and, for a light, its light; an ambient light reaches the scene's settings too.
boost::shared_ptr<CalCoreBone> MakeBone(FbxNode* node, int parentId, NodeNames& names) {
  const std::string& name = names.try_emplace(node, node->Name()).first->second;
  CalLightType lightType = CalLightType::kNone;
  std::string lightName;
  CalVector color;
  getLightFromBone(node, name, lightType, lightName, color);
  const bool renamed = lightType != CalLightType::kNone && lightType != CalLightType::kAmbient;
  if (lightType == CalLightType::kAmbient) {
    node->GetScene()->GetGlobalSettings().SetAmbientColor({color.x, color.y, color.z, 1.0});
  }
  auto bone = boost::make_shared<CalCoreBone>(renamed ? lightName : name, parentId);
  bone->lightType = lightType;
  if (lightType != CalLightType::kNone) bone->lightColor = color;
  return bone;
}

// The translation in the file's axes and scale: a child's carries the node's global scaling, which
// a bone has no other place for. In single precision.
CalVector OutputTranslation(const FbxAMatrix& transform, const FbxAMatrix& global, bool isRoot,
                            const ConversionArguments& args) {
  const FbxVector4 translation = transform.GetT();
  const FbxVector4 scaling = global.GetS();
  FloatQuad t{};
  for (size_t i = 0; i < 3; ++i) {
    t[i] = static_cast<float>(translation[i]);
    if (!isRoot) t[i] *= static_cast<float>(scaling[i]);
    t[i] *= args.scaleFactor;
  }
  AxisMod(args, t);
  return {t[0], t[1], t[2]};
}

CalQuaternion OutputRotation(const FbxAMatrix& transform, const ConversionArguments& args) {
  const CalQuaternion rotation = ToCalQuaternion(transform.GetQ());
  FloatQuad q{rotation.x, rotation.y, rotation.z, rotation.w};
  AxisMod(args, q);
  return {q[0], q[1], q[2], q[3]};
}

struct PendingNode {
  FbxNode* node;
  int parentId;
  FbxAMatrix parentGlobal;
};

// The camera that a room gets when it has none of its own.
void AddDefaultCamera(Bones& bones) {
  constexpr int kParentId = 0;
  auto camera = boost::make_shared<CalCoreBone>("camera.01.01.root", kParentId);
  camera->relativeTranslation = {600.0F, -600.0F, 600.0F};
  camera->relativeRotation = {0.103707F, 0.69946F, 0.580116F, -0.404309F};
  camera->boneSpaceTranslation = {-600.0F, 600.0F, -600.0F};
  camera->boneSpaceRotation = {0.103707F, 0.69946F, 0.580116F, 0.404309F};
  bones.push_back(std::move(camera));
  auto target = boost::make_shared<CalCoreBone>("camera.01.01.root.Target", kParentId);
  target->relativeTranslation = {0.0F, 0.0F, 100.0F};
  target->relativeRotation = {0.0F, 0.0F, 0.0F, -1.0F};
  target->boneSpaceTranslation = {0.0F, 0.0F, -100.0F};
  target->boneSpaceRotation = {0.0F, 0.0F, 0.0F, -1.0F};
  bones.push_back(std::move(target));
}

// The scene's ambient colour, white where it is black.
CalVector SceneAmbientColor(const FbxScene& scene) {
  const FbxColor color = scene.GetGlobalSettings().GetAmbientColor();
  if (color.mRed <= 0.0 && color.mGreen <= 0.0 && color.mBlue <= 0.0) return {1.0F, 1.0F, 1.0F};
  return {static_cast<float>(color.mRed), static_cast<float>(color.mGreen),
          static_cast<float>(color.mBlue)};
}

// Renames the special nodes below `root`, on the nodes themselves too, so that a renamed camera is
// found as one.
NodeNames RenameRoomNodes(FbxNode* root, const ConversionArguments& args) {
  NodeNameVisitor visitor(RoomPatterns(), false, false);
  WalkNodes(root, visitor);
  NodeNames names = RenameSpecialRoomNodes(visitor);
  if (args.verbosity > 0) {
    for (const NamePattern& pattern : visitor.Patterns()) {
      std::printf("found %zu nodes for %s\n", visitor.Matches(pattern.text).size(), pattern.text);
    }
  }
  // In walk order, so that the report doesn't depend on where nodes lie in memory.
  SkeletonBuilderVisitor all;
  WalkNodes(root, all);
  for (FbxNode* node : all.nodes) {
    const auto renamed = names.find(node);
    if (renamed == names.end()) continue;
    if (args.verbosity > 0) {
      std::printf("node %s was renamed %s\n", node->GetName(), renamed->second.c_str());
    }
    node->SetName(renamed->second);
  }
  return names;
}

}  // namespace

void AddBoneToList(const FbxAMatrix& parentGlobal, Bones& bones, FbxNode* node, int parentId,
                   const ConversionArguments& args, NodeNames& names) {
  const bool useBindPose = UsesBindPose(args);
  // The Cal3D-side global transform of every bone, from the values that stand in the file. Bone
  // space is computed from it and not from the scene, so that it agrees with the file.
  std::vector<FbxAMatrix> skeletal(bones.size());
  for (size_t i = 0; i < bones.size(); ++i) {
    getSkeletalMatrix(skeletal[i], bones, static_cast<int>(i));
  }
  // A stack of our own instead of recursion: the file decides how deep the hierarchy is.
  std::vector<PendingNode> pending{{node, parentId, parentGlobal}};
  while (!pending.empty()) {
    const PendingNode next = pending.back();
    pending.pop_back();
    const bool isRoot = next.parentId == -1;
    boost::shared_ptr<CalCoreBone> bone = MakeBone(next.node, next.parentId, names);

    const RestMatrices rest = GetRestMatrices(next.node, useBindPose);
    const FbxAMatrix transform = isRoot || !args.useEvaluatedLocal
                                     ? next.parentGlobal.Inverse() * rest.globalPose
                                     : next.node->EvaluateLocalTransform();
    if (args.verbosity > 0) std::printf("%s:%zu\n", next.node->GetName(), bones.size());
    if (args.verbosity > 1) {
      DumpRestMatrices(next.node, next.parentId, rest, next.parentGlobal, transform, useBindPose);
    }
    bone->relativeTranslation = OutputTranslation(transform, rest.global, isRoot, args);
    bone->relativeRotation = OutputRotation(transform, args);

    FbxAMatrix own;
    getMatrixFromCalBone(own, *bone);
    const FbxAMatrix skelTransform =
        isRoot ? own : skeletal[static_cast<size_t>(next.parentId)] * own;
    const FbxAMatrix inverseBind = skelTransform.Inverse();
    bone->boneSpaceTranslation = ToCalVector(inverseBind.GetT());
    bone->boneSpaceRotation = ToCalQuaternion(inverseBind.GetQ());
    if (args.verbosity > 1) {
      Dump("skelTransform(glb) ", skelTransform);
      Dump("inverseBind        ", inverseBind);
      Dump("inverseBind * skel ", inverseBind * skelTransform);
    }

    const int boneId = static_cast<int>(bones.size());
    bones.push_back(std::move(bone));
    skeletal.push_back(skelTransform);
    const FbxAMatrix global = next.parentGlobal * transform;
    const std::vector<FbxNode*>& children = next.node->Children();
    for (size_t i = children.size(); i-- > 0;) pending.push_back({children[i], boneId, global});
  }
}

bool ExportCal3DSkeleton(FbxNode* root, const std::string& fileName,
                         const ConversionArguments& args) {
  const FbxScene& scene = *root->GetScene();
  NodeNames names;
  if (args.treatAsRoom && args.renameRoomNodes) names = RenameRoomNodes(root, args);
  const std::string keptName = root->Name();
  if (args.treatAsRoom && keptName != kRoomRootName) {
    AddOutput("WARNING", keptName + " is renamed " + kRoomRootName, true);
    root->SetName(kRoomRootName);
    if (args.verbosity > 0) std::printf(" from %s\n", root->GetInitialName());
  }
  const bool isRoom = args.treatAsRoom || root->Name() == kRoomRootName;

  Bones bones;
  AddBoneToList(FbxAMatrix(), bones, root, -1, args, names);
  if (isRoom) {
    NodeNameFinderVisitor camera(kRoomCameraPattern);
    WalkNodes(root, camera);
    if (!camera.Found()) {
      AddWarning("Adding camera.01.01.root and Target");
      AddDefaultCamera(bones);
    }
  }
  CalCoreSkeleton skeleton(bones);
  if (isRoom) skeleton.sceneAmbientColor = SceneAmbientColor(scene);
  const bool saved = CalSaver::saveCoreSkeleton(fileName, &skeleton);
  if (args.treatAsRoom) root->SetName(keptName);
  return saved;
}
