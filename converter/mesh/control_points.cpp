// Control points in the output space, and the weights that bind them to bones.
#include <algorithm>
#include <unordered_set>

#include "converter/base/records.h"
#include "converter/mesh/mesh_stages.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/scene/node_paths.h"
#include "converter/skeleton/node_matrices.h"
#include "converter/space/axis_mod.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_node.h"

namespace {

// One weight that a cluster gives a control point.
struct StoredWeight {
  int rank;
  int boneId;
  float weight;
};

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

// Sorts a point's weights by bone path and keeps the last of each bone. Returns the new end.
StoredWeight* SortAndUnite(StoredWeight* first, StoredWeight* last) {
  const auto byRank = [](const StoredWeight& a, const StoredWeight& b) { return a.rank < b.rank; };
  if (!std::is_sorted(first, last, byRank)) {
    // An insertion sort for the usual few, since stable_sort allocates.
    constexpr ptrdiff_t kFew = 32;
    if (last - first > kFew) {
      std::stable_sort(first, last, byRank);
    } else {
      for (StoredWeight* at = first + 1; at < last; ++at) {
        std::rotate(std::upper_bound(first, at, *at, byRank), at, at + 1);
      }
    }
  }
  StoredWeight* end = first;
  for (StoredWeight* at = first; at != last; ++at) {
    if (end != first && end[-1].rank == at->rank) --end;
    *end++ = *at;
  }
  return end;
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

  // Counts first, so that the weights of all points fill one array.
  std::vector<size_t> ends(pointCount + 1, 0);
  for (const FbxCluster* cluster : clusters) {
    VisitWeights(*cluster, pointCount, [&](size_t point, double) { ++ends[point + 1]; });
  }
  for (size_t i = 0; i < pointCount; ++i) ends[i + 1] += ends[i];
  if (ends[pointCount] == 0) return false;

  std::vector<StoredWeight> stored(ends[pointCount]);
  for (const FbxCluster* cluster : clusters) {
    const Bone bone = *bones.Find(cluster->GetLink());
    VisitWeights(*cluster, pointCount, [&](size_t point, double weight) {
      stored[ends[point]++] = {bone.rank, bone.id, static_cast<float>(weight)};
    });
  }

  // Each end has moved to where its point's weights end.
  mesh.weights.reserve(stored.size());
  StoredWeight* first = stored.data();
  for (size_t i = 0; i < pointCount; ++i) {
    StoredWeight* last = stored.data() + ends[i];
    const StoredWeight* end = SortAndUnite(first, last);
    ControlPoint& point = mesh.controlPoints[i];
    point.firstWeight = static_cast<uint32_t>(mesh.weights.size());
    point.weightCount = static_cast<uint32_t>(end - first);
    for (const StoredWeight* at = first; at != end; ++at) {
      mesh.weights.push_back({at->boneId, at->weight});
    }
    if (linkMode == FbxCluster::eNormalize) {
      NormalizeWeights(mesh.weights.data() + point.firstWeight, point.weightCount);
    }
    first = last;
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
