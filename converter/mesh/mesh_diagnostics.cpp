#include "converter/mesh/mesh_diagnostics.h"

#include <cstdio>

#include "converter/mesh/morph_channel.h"
#include "converter/scene/mesh_holder.h"
#include "converter/scene/scene_queries.h"
#include "converter/skeleton/node_matrices.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_node.h"

void PrintPoint(const char* before, const FbxVector4& point, const char* after) {
  std::printf("%s[%2.2f, %2.2f, %2.2f]%s", before, point[0], point[1], point[2], after);
}

void dumpControlPoints(const std::vector<FbxVector4>& points, const FbxAMatrix& matrix) {
  for (const FbxVector4& point : points) PrintPoint("\n\t", matrix.MultT(point), "");
  std::printf("\n");
}

void dumpTransformTree(const FbxNode* node) {
  std::vector<const FbxNode*> chain;
  for (const FbxNode* at = node; at != nullptr; at = at->GetParent()) chain.push_back(at);
  for (auto at = chain.rbegin(); at != chain.rend(); ++at) {
    std::printf("\n%s", (*at)->GetName());
    dumpMatrixInfo((*at)->EvaluateLocalTransform());
  }
}

void PrintTitledMatrix(const char* title, const FbxAMatrix& matrix) {
  std::printf("\n%s", title);
  dumpMatrixInfo(matrix);
}

void PrintMeshMatrices(const FbxNode* node, MeshHolder_& holder, const FbxAMatrix& meshInit) {
  PrintTitledMatrix("global position:", meshInit);
  PrintTitledMatrix("pose:", getBindPoseMatrix(node));
  for (const auto& [bone, cluster] : GetClusterMap({&holder})) {
    FbxAMatrix transform;
    cluster->GetTransformMatrix(transform);
    PrintTitledMatrix("meshInit:", transform);
  }
}

void PrintIgnoredTargets(const MorphSource& source) {
  std::printf(
      "Blend shape channel %s has more than 1 target shape, which isn't supported. Using final "
      "target shape only.",
      source.name.c_str());
}
