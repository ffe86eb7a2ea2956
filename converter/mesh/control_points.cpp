// Control points in the output space, and the weights that bind them to bones.
#include <algorithm>
#include <unordered_set>
#include <utility>

#include "converter/base/records.h"
#include "converter/mesh/mesh_stages.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/scene/node_paths.h"
#include "converter/skeleton/node_matrices.h"
#include "converter/space/axis_mod.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_node.h"

namespace {

// The clusters of all skins of the mesh, in order.
std::vector<const FbxCluster*> GatherClusters(const FbxMesh& mesh) {
  std::vector<const FbxCluster*> clusters;
  const int skins = mesh.GetSrcObjectCount<FbxSkin>();
  for (int s = 0; s < skins; ++s) {
    const auto* skin = mesh.GetSrcObject<FbxSkin>(s);
    const int count = skin->GetClusterCount();
    for (int c = 0; c < count; ++c) clusters.push_back(skin->GetCluster(c));
  }
  return clusters;
}

// Leaves of a cluster that several skins share only the last place, where its weights replace those
// of the earlier ones: a small file may name a large cluster very often.
void KeepLastPlaces(std::vector<const FbxCluster*>& clusters) {
  std::unordered_set<const FbxCluster*> seen;
  size_t kept = clusters.size();
  for (size_t i = clusters.size(); i-- > 0;) {
    if (seen.insert(clusters[i]).second) clusters[--kept] = clusters[i];
  }
  clusters.erase(clusters.begin(), clusters.begin() + static_cast<ptrdiff_t>(kept));
}

// Calls `visit(point, weight)` for the cluster's entries that count: of a point that is there, with
// a weight other than 0.
template <typename Visit>
void VisitWeights(const FbxCluster& cluster, size_t pointCount, Visit&& visit) {
  const size_t count = std::min(cluster.indices.size(), cluster.weights.size());
  for (size_t k = 0; k < count; ++k) {
    const int index = cluster.indices[k];
    if (index < 0 || static_cast<size_t>(index) >= pointCount || cluster.weights[k] == 0.0)
      continue;
    visit(static_cast<size_t>(index), cluster.weights[k]);
  }
}

// Scales the weights of a point to the sum 1, unless the sum is 0.
void NormalizeWeights(BoneWeight* weights, size_t count) {
  float sum = 0.0F;
  for (size_t i = 0; i < count; ++i) sum += weights[i].weight;
  if (sum == 0.0F) return;
  const float scale = 1.0F / sum;
  if (scale == 1.0F) return;
  for (size_t i = 0; i < count; ++i) weights[i].weight *= scale;
}

// False if no weight was stored.
bool FillInControlPointsForSkinnedBones(GroupMesh& mesh, const BoneNameMap& bones) {
  const size_t pointCount = mesh.controlPoints.size();
  const std::string beginOfError =
      "Mesh " + mesh.holder->name + " (" + mesh.holder->path + ") is skinned to bone [";
  int linkMode = -1;
  std::vector<const FbxCluster*> clusters;  // of bones of the skeleton
  for (const FbxCluster* cluster : GatherClusters(*mesh.mesh)) {
    linkMode = cluster->GetLinkMode();
    const FbxNode* link = cluster->GetLink();
    if (link == nullptr) continue;
    if (bones.Find(link) != nullptr) {
      clusters.push_back(cluster);
      continue;
    }
    std::string error;
    VisitWeights(*cluster, pointCount, [&](size_t, double) {
      if (error.empty()) {
        error = beginOfError + BuildRootNodeName(link, nullptr) +
                "] which is not in the specified skeleton hierarchy";
      }
      AddError(error);
    });
  }
  KeepLastPlaces(clusters);
  // In the order of bone paths, so that the weights of each point come in that order.
  std::vector<std::pair<Bone, const FbxCluster*>> byPath;
  for (const FbxCluster* cluster : clusters) {
    byPath.emplace_back(*bones.Find(cluster->GetLink()), cluster);
  }
  std::stable_sort(byPath.begin(), byPath.end(),
                   [](const auto& a, const auto& b) { return a.first.rank < b.first.rank; });

  // Counts first, so that the weights of all points fill one array.
  std::vector<ControlPoint>& points = mesh.controlPoints;
  for (const auto& [bone, cluster] : byPath) {
    VisitWeights(*cluster, pointCount, [&](size_t point, double) { ++points[point].weightCount; });
  }
  size_t total = 0;
  for (ControlPoint& point : points) {
    point.firstWeight = static_cast<uint32_t>(total);
    total += std::exchange(point.weightCount, 0);
  }
  if (total == 0) return false;

  mesh.weights.resize(total);
  for (const auto& [bone, cluster] : byPath) {
    VisitWeights(*cluster, pointCount, [&, id = bone.id](size_t index, double weight) {
      ControlPoint& point = points[index];
      // Of several weights of one bone the last counts.
      BoneWeight* at = mesh.weights.data() + point.firstWeight + point.weightCount;
      if (point.weightCount > 0 && at[-1].boneId == id) {
        --at;
      } else {
        ++point.weightCount;
      }
      *at = {id, static_cast<float>(weight)};
    });
  }
  if (linkMode == FbxCluster::eNormalize) {
    for (const ControlPoint& point : points) {
      NormalizeWeights(mesh.weights.data() + point.firstWeight, point.weightCount);
    }
  }
  if (linkMode != FbxCluster::eNormalize) AddWarning("Unsupported cluster mode");
  return true;
}

// Binds all points to the node's own bone. False if the node is none.
bool WeightMeshToParentNode(GroupMesh& mesh, const FbxNode* node, const BoneNameMap& bones) {
  const Bone* bone = bones.Find(node);
  if (bone == nullptr) return false;
  mesh.weights = {{bone->id, 1.0F}};
  for (ControlPoint& point : mesh.controlPoints) {
    point.firstWeight = 0;
    point.weightCount = 1;
  }
  return true;
}

}  // namespace

const FbxNode* FindMeshNode(const FbxWrapper& scene, const PathIndex& paths,
                            const MeshHolder_& holder) {
  const FbxNode* node = paths.FirstWithPathOf(holder.node);
  if (node == nullptr) node = scene.GetNodeByPath(holder.path);
  if (node == nullptr || GetAttributeType(node) != FbxNodeAttribute::eMesh) return nullptr;
  return BuildRootNodeName(node, nullptr) == holder.path ? node : nullptr;
}

FbxVector4 ToOutputSpace(const GroupMesh& mesh, const FbxVector4& point,
                         const ConversionArguments& args) {
  FbxVector4 result = mesh.meshInit.MultT(point);
  for (size_t i = 0; i < 3; ++i) result[i] *= static_cast<double>(args.scaleFactor);
  AxisModOnVector(args, result);
  return result;
}

bool FillInControlPointsForMesh(GroupMesh& mesh, const FbxNode* node, const BoneNameMap& bones,
                                const ConversionArguments& args, const MeshTrace& trace) {
  if (node == nullptr || mesh.mesh == nullptr) return false;
  mesh.meshInit = node->EvaluateGlobalTransform() * GetGeometry(node);
  trace.PlacingPoints(mesh, node);
  const std::vector<FbxVector4>& points = mesh.mesh->ControlPoints();
  if (points.empty()) return false;
  mesh.controlPoints.reserve(points.size());
  for (const FbxVector4& point : points) {
    mesh.controlPoints.push_back({ToOutputSpace(mesh, point, args), 0, 0});
  }
  trace.PlacedPoints(mesh);

  if (mesh.mesh->GetShapeCount() > 0) FillInControlPointsForMorph(mesh, args, trace);
  mesh.morphs.Index(points.size());
  if (mesh.mesh->GetSrcObjectCount<FbxSkin>() == 0 ||
      !FillInControlPointsForSkinnedBones(mesh, bones)) {
    WeightMeshToParentNode(mesh, node, bones);
  }
  return true;
}
