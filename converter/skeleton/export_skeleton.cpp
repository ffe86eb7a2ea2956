#include "converter/skeleton/export_skeleton.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include "cal3d/io/saver.h"
#include "cal3d/model/core_skeleton.h"
#include "converter/base/records.h"
#include "converter/scene/node_paths.h"
#include "converter/skeleton/bone_lights.h"
#include "converter/skeleton/node_matrices.h"
#include "converter/skeleton/room_names.h"
#include "converter/skeleton/skeleton_trace.h"
#include "converter/space/axis_mod.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

namespace {

using Bones = std::vector<boost::shared_ptr<CalCoreBone>>;

constexpr const char* kRoomRootName = "skeleton.Room";

// Gives a node another name as long as it lives.
class BorrowedName {
 public:
  BorrowedName(FbxNode& node, std::string name) : node_(node), kept_(node.Name()) {
    node.SetName(std::move(name));
  }
  ~BorrowedName() { node_.SetName(std::move(kept_)); }
  BorrowedName(const BorrowedName&) = delete;
  BorrowedName& operator=(const BorrowedName&) = delete;

 private:
  FbxNode& node_;
  std::string kept_;
};

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
  NodeNameVisitor visitor(RoomPatterns(), false, false, true);
  WalkNodes(root, visitor);
  NodeNames names = RenameSpecialRoomNodes(visitor);
  TraceMatches(args, visitor);
  // In walk order, so that the report doesn't depend on where nodes lie in memory.
  SkeletonBuilderVisitor all;
  WalkNodes(root, all);
  for (FbxNode* node : all.nodes) {
    const auto renamed = names.find(node);
    if (renamed == names.end()) continue;
    TraceRenaming(args, *node, renamed->second);
    node->SetName(renamed->second);
  }
  return names;
}

// Appends the bone of `node`. `parentGlobal` is the parent's global transform as the bones describe
// it, the result is the node's own. Names come from `names`, where nodes without one are entered
// with their own. `skeletal` holds the Cal3D-side global transform of every bone, from the values
// that stand in the file: bone space is computed from it and not from the scene, so that it agrees
// with the file.
FbxAMatrix AddBoneToList(const FbxAMatrix& parentGlobal, Bones& bones,
                         std::vector<FbxAMatrix>& skeletal, FbxNode* node, int parentId,
                         const ConversionArguments& args, NodeNames& names) {
  const bool isRoot = parentId == -1;
  const bool useBindPose = args.skeletonRootPath != kRootNodeName;
  boost::shared_ptr<CalCoreBone> bone = MakeBone(node, parentId, names);
  const RestMatrices rest = GetRestMatrices(node, useBindPose);
  const FbxAMatrix transform = isRoot || !args.useEvaluatedLocal
                                   ? parentGlobal.Inverse() * rest.globalPose
                                   : node->EvaluateLocalTransform();
  TraceBone(args, {*node, bones.size(), isRoot, useBindPose, rest, parentGlobal, transform});
  bone->relativeTranslation = OutputTranslation(transform, rest.global, isRoot, args);
  bone->relativeRotation = OutputRotation(transform, args);

  FbxAMatrix own;
  getMatrixFromCalBone(own, *bone);
  const FbxAMatrix skelTransform = isRoot ? own : skeletal[static_cast<size_t>(parentId)] * own;
  const FbxAMatrix inverseBind = skelTransform.Inverse();
  bone->boneSpaceTranslation = ToCalVector(inverseBind.GetT());
  bone->boneSpaceRotation = ToCalQuaternion(inverseBind.GetQ());
  TraceBoneSpace(args, skelTransform, inverseBind);
  bones.push_back(std::move(bone));
  skeletal.push_back(skelTransform);
  return parentGlobal * transform;
}

// The bones of `root` and of everything below it, each behind its parent.
Bones BuildBones(FbxNode* root, const ConversionArguments& args, NodeNames& names) {
  struct PendingNode {
    FbxNode* node;
    int parentId;
    FbxAMatrix parentGlobal;
  };
  Bones bones;
  std::vector<FbxAMatrix> skeletal;
  // A stack of our own instead of recursion: the file decides how deep the hierarchy is.
  std::vector<PendingNode> pending{{root, -1, FbxAMatrix()}};
  while (!pending.empty()) {
    const PendingNode next = pending.back();
    pending.pop_back();
    const int id = static_cast<int>(bones.size());
    const FbxAMatrix global =
        AddBoneToList(next.parentGlobal, bones, skeletal, next.node, next.parentId, args, names);
    const std::vector<FbxNode*>& children = next.node->Children();
    for (size_t i = children.size(); i-- > 0;) pending.push_back({children[i], id, global});
  }
  return bones;
}

}  // namespace

bool ExportCal3DSkeleton(FbxNode* root, const std::string& fileName,
                         const ConversionArguments& args) {
  const FbxScene& scene = *root->GetScene();
  NodeNames names;
  if (args.treatAsRoom && args.renameRoomNodes) names = RenameRoomNodes(root, args);
  std::optional<BorrowedName> roomName;
  if (args.treatAsRoom && root->Name() != kRoomRootName) {
    AddWarning(root->Name() + " is renamed " + kRoomRootName);
    roomName.emplace(*root, kRoomRootName);
    TraceRoomRoot(args, *root);
  }
  const bool isRoom = args.treatAsRoom || root->Name() == kRoomRootName;

  Bones bones = BuildBones(root, args, names);
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
  return CalSaver::saveCoreSkeleton(fileName, &skeleton);
}
