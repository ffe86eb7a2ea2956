#include <cstdint>
#include <cstdio>

#include "converter/base/log.h"
#include "converter/base/records.h"
#include "converter/mesh/export_mesh.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/scene/node_paths.h"
#include "converter/skeleton/skeleton_roots.h"

BoneNameMap ExportMesh::BoneNameMapForSkeleton(std::string& skeletonName) {
  skeletonName = kRootNodeName;
  if (args_.skeletonRootPath.empty()) return {};
  FbxWrapper* wrapper = FbxWrapper::getInstance(args_);
  const FbxNode* root = GetSkeletonRoot(wrapper, args_);
  for (const NodeSpan skeleton : wrapper->BuildSkeletonList(args_.treatAsRoom)) {
    if (root == nullptr || skeleton.empty() || skeleton.front() != root) continue;
    skeletonName = BuildRootNodeName(root, nullptr);
    return BuildBoneNameMap(skeleton);
  }
  return {};
}

int ExportMesh::BoneCountInSkeletonForListing(std::string& skeletonName) {
  return BoneNameMapForSkeleton(skeletonName).Count();
}

std::vector<MeshHolder_*> ExportMesh::ListMeshesForSkeleton(std::string& skeletonName) {
  FbxWrapper* wrapper = FbxWrapper::getInstance(args_);
  if (args_.skeletonRootPath.empty()) {
    skeletonName.clear();
    return wrapper->GetMeshList();
  }
  const MeshesBySkeleton meshes = wrapper->BuildMeshesOnSkeletonsList(args_);
  BoneNameMapForSkeleton(skeletonName);
  const auto found = meshes.find(skeletonName);
  return found == meshes.end() ? std::vector<MeshHolder_*>() : found->second;
}

void ExportMesh::WalkListReturnListPrint(bool print, std::vector<sMesh>* rows) {
  std::string skeletonName(kRootNodeName);
  LOG_INFO(args_.toString());
  const std::vector<MeshHolder_*> holders = ListMeshesForSkeleton(skeletonName);
  MaterialMasterMap master = BuildMaterialMasterMap(holders);
  for (MeshHolder_* holder : holders) {
    if (args_.verbosity != 0) {
      std::printf("%s is %s 0x%jx\n", holder->name.c_str(), holder->path.c_str(),
                  static_cast<uintmax_t>(reinterpret_cast<uintptr_t>(holder->mesh)));
    }
    const std::string name = encodeName(args_.encodeNames, holder->name);
    if (print) {
      std::fwrite(name.data(), 1, name.size(), stdout);
      std::fputc('\n', stdout);
    }
    if (rows != nullptr) {
      rows->push_back({name, skeletonName, GetMaterialListFromMesh(*holder, master), holder->mesh});
    }
  }
}
