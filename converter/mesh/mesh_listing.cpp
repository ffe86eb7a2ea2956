#include <utility>

#include "converter/base/log.h"
#include "converter/base/records.h"
#include "converter/mesh/export_mesh.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/skeleton/skeleton_roots.h"

BoneNameMap ExportMesh::BoneNameMapForSkeleton(std::string& skeletonName) const {
  CommandSkeleton skeleton = GetCommandSkeleton(&scene_, args_);
  skeletonName = std::move(skeleton.name);
  return BuildBoneNameMap(skeleton.nodes);
}

int ExportMesh::BoneCountInSkeletonForListing(std::string& skeletonName) const {
  return BoneNameMapForSkeleton(skeletonName).Count();
}

SkeletonMeshes ExportMesh::ListMeshesForSkeleton() const {
  if (args_.skeletonRootPath.empty()) return {{}, {}, scene_.GetMeshList()};
  MeshesBySkeleton meshes = scene_.BuildMeshesOnSkeletonsList(args_);
  CommandSkeleton skeleton = GetCommandSkeleton(&scene_, args_);
  std::vector<MeshHolder_*> listed;
  if (const auto found = meshes.find(skeleton.name); found != meshes.end()) {
    listed = std::move(found->second);
  }
  return {std::move(skeleton.rootPath), std::move(skeleton.name), std::move(listed)};
}

std::string ExportMesh::WalkListReturnListPrint(bool print, std::vector<sMesh>* rows) const {
  LOG_INFO(args_.toString());
  SkeletonMeshes listed = ListMeshesForSkeleton();
  MaterialMasterMap master = BuildMaterialMasterMap(listed.meshes);
  for (MeshHolder_* holder : listed.meshes) {
    trace_.Listed(*holder);
    const std::string name = encodeName(args_.encodeNames, holder->name);
    if (print) Print(name + "\n");
    if (rows != nullptr) {
      rows->push_back(
          {name, listed.skeletonName, GetMaterialListFromMesh(*holder, master), holder->mesh});
    }
  }
  return std::move(listed.rootPath);
}
