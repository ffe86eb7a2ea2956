#include "converter/mesh/export_mesh.h"

#include <algorithm>
#include <set>
#include <utility>

#include "converter/base/complaint.h"
#include "converter/base/log.h"
#include "converter/base/records.h"
#include "converter/mesh/mesh_stages.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/scene/node_paths.h"
#include "converter/scene/node_visitors.h"
#include "converter/skeleton/skeleton_roots.h"

namespace {

void ComplainOfMeshesLeftOut(const MeshGroupMap& groups,
                             const std::vector<MeshHolder_*>& selected) {
  std::set<const MeshHolder_*> grouped;
  for (const auto& [name, holders] : groups) grouped.insert(holders.begin(), holders.end());
  std::vector<std::string> names;
  for (const MeshHolder_* holder : selected) {
    if (!grouped.contains(holder)) names.push_back(holder->name);
  }
  if (names.empty()) return;
  Complain("-g finds no group for these meshes, which aren't written: " + QuotedList(names));
}

}  // namespace

bool ExportMesh::Export(bool /*unused*/) {
  LOG_INFO("Starting ExportMesh::Export");
  const FbxNode* root = scene_.GetNodeByPath(args_.skeletonRootPath);
  if (root == nullptr) {
    AddError("Skeleton Root Node [" + args_.skeletonRootPath + "] not found in FBX\n");
    return false;
  }
  scene_.BuildMeshesOnSkeletonsList(args_);
  const BoneNameMap bones = BuildBoneNameMap(BuildSkeleton(&scene_, root, args_));
  const std::vector<MeshHolder_*> selected = BuildSelectedMeshList();
  GroupMap groups;
  BuildGroupedMeshLists(groups, selected);
  ComplainOfMeshesLeftOut(groups, selected);
  if (!args_.outputFilename.empty() && groups.size() > 1) {
    Complain("several meshes are written to the one file '" + args_.outputFilename +
             "', which keeps the last");
  }
  // Over all groups, so that a material has one id in all files of the run.
  MaterialMasterMap master = BuildMaterialMasterMap(selected);
  const PathIndex paths(scene_.GetRootNode());
  return std::all_of(groups.begin(), groups.end(), [&](const auto& group) {
    return ExportMeshesGroupedAsSubmeshes(group.first, group.second, paths, bones, master);
  });
}

std::vector<MeshHolder_*> ExportMesh::BuildSelectedMeshList() const {
  return SelectMeshes(scene_, args_, trace_);
}

void ExportMesh::BuildGroupedMeshLists(GroupMap& groups,
                                       const std::vector<MeshHolder_*>& selected) const {
  groups = GroupMeshes(scene_, args_, selected);
}

bool ExportMesh::ExportMeshesGroupedAsSubmeshes(const std::string& groupName,
                                                const std::vector<MeshHolder_*>& holders,
                                                const PathIndex& paths, const BoneNameMap& bones,
                                                MaterialMasterMap& master) {
  MeshGroup group;
  group.name = groupName;
  std::vector<const FbxNode*> nodes;
  for (const MeshHolder_* holder : holders) {
    nodes.push_back(FindMeshNode(scene_, paths, *holder));
    if (nodes.back() == nullptr || holder->mesh == nullptr) continue;
    group.controlPointCount += holder->mesh->ControlPoints().size();
  }
  for (size_t i = 0; i < holders.size(); ++i) {
    {
      GroupMesh mesh(*holders[i]);
      FillInControlPoints(mesh, nodes[i], bones);
      FillInPolygonVertexIndexes(mesh, master);
      AddToSubmeshes(mesh, group, args_, trace_);
    }
    FbxMesh* source = holders[i]->mesh;
    // Other nodes that show it would have it decoded again.
    if (source != nullptr && source->GetDstObject<FbxNode>(1) == nullptr) source->Release();
  }
  return Save(group);
}

bool ExportMesh::FillInControlPoints(GroupMesh& mesh, const FbxNode* node,
                                     const BoneNameMap& bones) const {
  return FillInControlPointsForMesh(mesh, node, bones, args_, trace_);
}

bool ExportMesh::FillInPolygonVertexIndexes(GroupMesh& mesh, MaterialMasterMap& master) const {
  return ::FillInPolygonVertexIndexes(mesh, master, args_, trace_);
}

bool ExportMesh::Save(MeshGroup& group) const { return SaveMesh(args_, group, trace_); }

namespace {

// From this many selected meshes on, groups are told by depth instead of by name.
constexpr size_t kManyMeshes = 101;

template <typename Finder>
MeshGroupMap FindGroups(const FbxWrapper& scene, const std::vector<MeshHolder_*>& selected) {
  Finder finder(selected);
  scene.walkTree(finder);
  return std::move(finder.groups);
}

}  // namespace

bool isMeshNameMatch(const ConversionArguments& args, const MeshHolder_* holder) {
  if (args.commandVersion == 1) return holder->name == args.exportObjectName;
  if (args.commandVersion != 2) return false;
  const std::vector<std::string>& names = args.exportObjectNames;
  return names.empty() || std::find(names.begin(), names.end(), holder->name) != names.end();
}

std::vector<MeshHolder_*> SelectMeshes(FbxWrapper& scene, const ConversionArguments& args,
                                       const MeshTrace& trace) {
  std::vector<MeshHolder_*> selected;
  for (MeshHolder_* holder : scene.GetMeshList()) {
    trace.Considered(*holder);
    if (isMeshNameMatch(args, holder)) selected.push_back(holder);
  }
  return selected;
}

MeshGroupMap GroupMeshes(const FbxWrapper& scene, const ConversionArguments& args,
                         const std::vector<MeshHolder_*>& selected) {
  if (args.groupMeshes) {
    return selected.size() < kManyMeshes ? FindGroups<GroupFinderVisitor>(scene, selected)
                                         : FindGroups<ExtremeGroupFinderVisitor>(scene, selected);
  }
  MeshGroupMap groups;
  for (MeshHolder_* holder : selected) groups[holder->name] = {holder};
  return groups;
}
