// The first stage: control points in the output space, and the weights that bind them to bones.
#include <algorithm>
#include <cstdio>
#include <unordered_set>

#include "converter/base/records.h"
#include "converter/mesh/export_mesh.h"
#include "converter/mesh/mesh_diagnostics.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/scene/node_paths.h"
#include "converter/scene/path_index.h"
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

}  // namespace

FbxVector4 ExportMesh::ToOutputSpace(const GroupMesh& mesh, const FbxVector4& point) const {
  FbxVector4 result = mesh.meshInit.MultT(point);
  for (size_t i = 0; i < 3; ++i) result[i] *= static_cast<double>(args_.scaleFactor);
  AxisModOnVector(args_, result);
  return result;
}

bool ExportMesh::FillInControlPoints(GroupMesh& mesh, const PathIndex& paths,
                                     const BoneNameMap& bones, MeshGroup& group) const {
  const FbxNode* node = paths.FirstWithPathOf(mesh.holder->node);
  if (node == nullptr) node = scene_.GetNodeByPath(mesh.holder->path);
  if (node == nullptr || GetAttributeType(node) != FbxNodeAttribute::eMesh) return false;
  return FillInControlPointsForMesh(mesh, node, bones, group);
}

bool ExportMesh::FillInControlPointsForMesh(GroupMesh& mesh, const FbxNode* node,
                                            const BoneNameMap& bones, MeshGroup& group) const {
  const std::string path = BuildRootNodeName(node, nullptr);
  if (path != mesh.holder->path || mesh.mesh == nullptr) return false;
  mesh.meshInit = node->EvaluateGlobalTransform() * GetGeometry(node);
  const std::vector<FbxVector4>& points = mesh.mesh->ControlPoints();

  if (args_.verbosity >= 1) {
    std::printf("\nexporting %zu control points for %s %s", points.size(), path.c_str(),
                mesh.holder->name.c_str());
    dumpTransformTree(node);
  }
  if (args_.verbosity >= 2) PrintMeshMatrices(node, *mesh.holder, mesh.meshInit);
  if (points.empty()) return false;

  mesh.controlPointCount = static_cast<uint32_t>(points.size());
  ReserveMore(group.controlPoints, points.size());
  const auto meshIndex = static_cast<uint32_t>(&mesh - group.meshes.data());
  for (const FbxVector4& point : points) {
    group.controlPoints.push_back({ToOutputSpace(mesh, point), 0, 0, meshIndex});
  }

  if (args_.verbosity >= 3) {
    std::printf("\nraw points:");
    dumpControlPoints(points, FbxAMatrix());
    dumpControlPoints(points, mesh.meshInit);
    FbxAMatrix unscaled = mesh.meshInit;
    unscaled.SetS({1.0, 1.0, 1.0});
    std::printf("\nglobal position no scale:");
    dumpControlPoints(points, unscaled);
    std::vector<FbxVector4> positions;
    for (size_t i = 0; i < points.size(); ++i) {
      positions.push_back(group.controlPoints[mesh.firstControlPoint + i].position);
      PrintPoint("", points[i], "=>");
      PrintPoint("", positions.back(), "\t");
    }
    std::printf("\nscaled points:");
    dumpControlPoints(positions, FbxAMatrix());
  }
  if (args_.verbosity >= 1) std::printf("\n");

  if (mesh.mesh->GetShapeCount() > 0) FillInControlPointsForMorph(mesh);
  if (mesh.mesh->GetSrcObjectCount<FbxSkin>() > 0 &&
      FillInControlPointsForSkinnedBones(mesh, bones, group)) {
    return true;
  }
  WeightMeshToParentNode(mesh, node, bones, group);
  return true;
}

bool ExportMesh::FillInControlPointsForSkinnedBones(const GroupMesh& mesh, const BoneNameMap& bones,
                                                    MeshGroup& group) const {
  const size_t pointCount = mesh.controlPointCount;
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
  ReserveMore(group.weights, stored.size());
  StoredWeight* first = stored.data();
  for (size_t i = 0; i < pointCount; ++i) {
    StoredWeight* last = stored.data() + ends[i];
    const StoredWeight* end = SortAndUnite(first, last);
    ControlPoint& point = group.controlPoints[mesh.firstControlPoint + i];
    point.firstWeight = static_cast<uint32_t>(group.weights.size());
    point.weightCount = static_cast<uint32_t>(end - first);
    for (const StoredWeight* at = first; at != end; ++at) {
      group.weights.push_back({at->boneId, at->weight});
    }
    if (linkMode == FbxCluster::eNormalize) {
      NormalizeWeights(group.weights.data() + point.firstWeight, point.weightCount);
    }
    first = last;
  }
  if (linkMode != FbxCluster::eNormalize) AddWarning("Unsupported cluster mode");
  return true;
}

bool ExportMesh::WeightMeshToParentNode(const GroupMesh& mesh, const FbxNode* node,
                                        const BoneNameMap& bones, MeshGroup& group) {
  const Bone* bone = bones.Find(node);
  if (bone == nullptr) return false;
  const auto weight = static_cast<uint32_t>(group.weights.size());
  group.weights.push_back({bone->id, 1.0F});
  for (size_t i = 0; i < mesh.controlPointCount; ++i) {
    ControlPoint& point = group.controlPoints[mesh.firstControlPoint + i];
    point.firstWeight = weight;
    point.weightCount = 1;
  }
  return true;
}
