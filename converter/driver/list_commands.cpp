#include "converter/driver/list_commands.h"

#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <vector>

#include "converter/base/records.h"
#include "converter/mesh/export_mesh.h"
#include "converter/scene/node_paths.h"
#include "converter/scene/scene_queries.h"
#include "converter/skeleton/skeleton_roots.h"
#include "fbx/math/fbx_matrix.h"
#include "fbx/scene/fbx_node.h"

namespace {

constexpr char kNoSkeleton[] = "No Skeleton";

// By attribute type number.
constexpr std::array<const char*, 22> _nodeTypeStrings{"eUnknown",
                                                       "eNull",
                                                       "eMarker",
                                                       "eSkeleton",
                                                       "eMesh",
                                                       "eNurbs",
                                                       "ePatch",
                                                       "eCamera",
                                                       "eCameraStereo",
                                                       "eCameraSwitcher",
                                                       "eLight",
                                                       "eOpticalReference",
                                                       "eOpticalMarker",
                                                       "eNurbsCurve",
                                                       "eTrimNurbsSurface",
                                                       "eBoundary",
                                                       "eNurbsSurface",
                                                       "eShape",
                                                       "eLODGroup",
                                                       "eSubDiv",
                                                       "eCachedEffect",
                                                       "eLine"};

const char* NodeTypeString(const FbxNode* node) {
  const auto type = static_cast<size_t>(GetAttributeType(node));
  return type < _nodeTypeStrings.size() ? _nodeTypeStrings[type] : _nodeTypeStrings[0];
}

void ListSkeletons(FbxWrapper& scene, const ConversionArguments& args) {
  for (const ListedSkeleton& skeleton : SkeletonsToList(scene, args)) {
    AddOutput("NODE", skeleton.path, false);
    AddOutput("MESHCOUNT", static_cast<int64_t>(skeleton.meshNames.size()), false);
    AddOutput("FRIENDLYSKELNAME", skeleton.friendlyName, false);
    for (const std::string& name : skeleton.meshNames) AddOutput("MESHNAME", name, false);
    AddOutput("BONECOUNT", static_cast<int64_t>(skeleton.boneCount), true);
  }
}

void ListNodesOfSkeleton(NodeSpan skeleton, const ConversionArguments& args) {
  const FbxNode* root = skeleton.front();
  const BoneNameMap bones = args.verbosity > 0 ? BuildBoneNameMap(skeleton) : BoneNameMap();
  for (const FbxNode* node : skeleton) {
    const std::string name = BuildRootNodeName(node, root);
    std::string label = "NODE";
    if (args.verbosity > 0) {
      // The map is by full path, so only the skeleton at the scene's root shows numbers.
      const Bone* bone = bones.Find(name);
      const int number = bone == nullptr ? 0 : bone->id;
      label.append(" ").append(std::to_string(number)).append(":").append(NodeTypeString(node));
    }
    AddOutput(label, name, true);
    if (args.verbosity >= 3) dumpMatrixInfo(node->EvaluateGlobalTransform());
  }
}

}  // namespace

std::vector<ListedSkeleton> SkeletonsToList(FbxWrapper& scene, const ConversionArguments& args) {
  const std::vector<NodeSpan>& skeletons = scene.BuildSkeletonList(args.treatAsRoom);
  std::map<std::string, int> nameCounts;
  for (const NodeSpan skeleton : skeletons) {
    const FbxNode* root = skeleton.front();
    const bool sceneRoot = BuildRootNodeName(root, nullptr) == kRootNodeName;
    ++nameCounts[sceneRoot ? kNoSkeleton : root->Name()];
  }
  const MeshesBySkeleton meshesBySkeleton = scene.BuildMeshesOnSkeletonsList(args);
  std::vector<ListedSkeleton> listed;
  for (const NodeSpan skeleton : skeletons) {
    ListedSkeleton row;
    row.path = BuildRootNodeName(skeleton.front(), nullptr);
    row.friendlyName = skeleton.front()->Name();
    if (nameCounts[row.friendlyName] >= 2) row.friendlyName = row.path;
    const auto meshes = meshesBySkeleton.find(row.path);
    if (row.path == kRootNodeName) {
      if (meshes == meshesBySkeleton.end()) continue;
      row.friendlyName = kNoSkeleton;
    }
    if (meshes != meshesBySkeleton.end()) {
      for (const MeshHolder_* holder : meshes->second) row.meshNames.push_back(holder->name);
    }
    std::sort(row.meshNames.begin(), row.meshNames.end());
    row.boneCount = skeleton.size();
    listed.push_back(std::move(row));
  }
  return listed;
}

void ListNodes(FbxWrapper& scene, const ConversionArguments& args) {
  const std::vector<NodeSpan>& skeletons = scene.BuildSkeletonList(args.treatAsRoom);
  if (skeletons.empty()) {
    AddError("Fbx file contains no skeleton hierarchies");
    return;
  }
  if (args.skeletonRootPath.empty()) {
    ListSkeletons(scene, args);
    return;
  }
  const auto skeleton =
      std::find_if(skeletons.begin(), skeletons.end(), [&args](const NodeSpan nodes) {
        return BuildRootNodeName(nodes.front(), nullptr) == args.skeletonRootPath;
      });
  if (skeleton != skeletons.end()) ListNodesOfSkeleton(*skeleton, args);
}

std::string ListMeshes(FbxWrapper& scene, const ConversionArguments& args) {
  const ExportMesh exporter(scene, args);
  if (!args.showLabels) return exporter.WalkListReturnListPrint(true, nullptr);
  std::vector<sMesh> rows;
  std::string rootPath = exporter.WalkListReturnListPrint(false, &rows);
  std::stable_sort(rows.begin(), rows.end(), compareMeshReturnValues_());
  if (rows.empty()) AddWarning("Fbx file contains no meshes");
  for (const sMesh& row : rows) {
    // The name of the row is encoded already; callers expect it twice encoded.
    AddOutput("MESH", encodeName(args.encodeNames, row.name), row.materials.empty());
    const bool showMorphs = args.verbosity != 0 && row.mesh != nullptr;
    if (!row.materials.empty()) AddOutput("MATERIALS", row.materials, !showMorphs);
    if (!showMorphs) continue;
    for (const std::string& morph : getMorphTargetsOnMesh(row.mesh)) {
      AddOutput("MORPH", morph, false);
    }
    AddOutput("", true);
  }
  return rootPath;
}
