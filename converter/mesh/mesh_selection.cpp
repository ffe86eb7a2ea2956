#include <algorithm>
#include <utility>

#include "converter/mesh/mesh_stages.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/scene/group_visitors.h"

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
