#include "converter/mesh/export_mesh.h"

#include <algorithm>

#include "converter/base/log.h"
#include "converter/base/records.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/scene/group_visitors.h"
#include "converter/scene/path_index.h"
#include "converter/skeleton/skeleton_roots.h"

namespace {

// From this many selected meshes on, groups are told by depth instead of by name.
constexpr size_t kManyMeshes = 101;

}  // namespace

bool isMeshNameMatch(const ConversionArguments& args, const MeshHolder_* holder) {
  if (args.commandVersion == 1) return holder->name == args.exportObjectName;
  if (args.commandVersion != 2) return false;
  const std::vector<std::string>& names = args.exportObjectNames;
  return names.empty() || std::find(names.begin(), names.end(), holder->name) != names.end();
}

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
  // Over all groups, so that a material has one id in all files of the run.
  MaterialMasterMap master = BuildMaterialMasterMap(selected);
  const PathIndex paths(scene_.GetRootNode());
  return std::all_of(groups.begin(), groups.end(), [&](const auto& group) {
    return ExportMeshesGroupedAsSubmeshes(group.first, group.second, paths, bones, master);
  });
}

std::vector<MeshHolder_*> ExportMesh::BuildSelectedMeshList() const {
  std::vector<MeshHolder_*> selected;
  for (MeshHolder_* holder : scene_.GetMeshList()) {
    if (args_.verbosity != 0) AddWarning("ExportMesh::Export " + holder->name);
    if (isMeshNameMatch(args_, holder)) selected.push_back(holder);
  }
  return selected;
}

void ExportMesh::BuildGroupedMeshLists(GroupMap& groups,
                                       const std::vector<MeshHolder_*>& selected) const {
  if (!args_.groupMeshes) {
    for (MeshHolder_* holder : selected) groups[holder->name] = {holder};
    return;
  }
  if (selected.size() < kManyMeshes) {
    GroupFinderVisitor finder(selected);
    scene_.walkTree(finder);
    groups = std::move(finder.groups);
  } else {
    ExtremeGroupFinderVisitor finder(selected);
    scene_.walkTree(finder);
    groups = std::move(finder.groups);
  }
}

bool ExportMesh::ExportMeshesGroupedAsSubmeshes(const std::string& groupName,
                                                const std::vector<MeshHolder_*>& holders,
                                                const PathIndex& paths, const BoneNameMap& bones,
                                                MaterialMasterMap& master) {
  MeshGroup group;
  group.meshes.reserve(holders.size());
  for (MeshHolder_* holder : holders) {
    GroupMesh& mesh = group.meshes.emplace_back();
    mesh.holder = holder;
    mesh.mesh = holder->mesh;
    mesh.firstControlPoint = static_cast<uint32_t>(group.controlPoints.size());
    mesh.firstCorner = static_cast<uint32_t>(group.corners.size());
    if (mesh.mesh != nullptr) {
      mesh.morphSources = GatherMorphSources(*mesh.mesh);
      mesh.morphs = MakeMorphChannels(mesh.morphSources, *mesh.mesh);
    }
    FillInControlPoints(mesh, paths, bones, group);
    FillInPolygonVertexIndexes(mesh, master, group);
  }
  return Save(groupName, group);
}
