#include "converter/scene/scene_queries.h"

#include "converter/base/records.h"
#include "converter/scene/node_paths.h"
#include "fbx/math/fbx_matrix.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"

namespace {

void PrintTriple(const char* label, const FbxVector4& v) {
  PrintFormatted("%s%3.3f %3.3f %3.3f ", label, v[0], v[1], v[2]);
}

}  // namespace

std::vector<std::string> getMorphTargetsOnMesh(const FbxMesh* mesh) {
  std::vector<std::string> names;
  const int count = mesh->GetDeformerCount(FbxDeformer::eBlendShape);
  for (int d = 0; d < count; ++d) {
    const auto* shape = static_cast<FbxBlendShape*>(mesh->GetDeformer(d, FbxDeformer::eBlendShape));
    for (int c = 0; c < shape->GetBlendShapeChannelCount(); ++c) {
      names.emplace_back(shape->GetBlendShapeChannel(c)->GetName());
    }
  }
  return names;
}

std::map<std::string, FbxCluster*> GetClusterMap(const std::vector<MeshHolder_*>& holders) {
  std::map<std::string, FbxCluster*> clusters;
  for (const MeshHolder_* holder : holders) {
    const int count = holder->mesh->GetDeformerCount(FbxDeformer::eSkin);
    for (int d = 0; d < count; ++d) {
      const auto* skin = static_cast<FbxSkin*>(holder->mesh->GetDeformer(d, FbxDeformer::eSkin));
      for (int c = 0; c < skin->GetClusterCount(); ++c) {
        FbxCluster* cluster = skin->GetCluster(c);
        if (const FbxNode* link = cluster->GetLink()) {
          clusters.emplace(BuildNodeName({}, link, nullptr), cluster);
        }
      }
    }
  }
  return clusters;
}

void PrintNode(const FbxNode* node) {
  PrintFormatted("%s\n", BuildRootNodeName(node, nullptr).c_str());
}

void PrintSkeleton(NodeSpan skeleton) {
  if (!skeleton.empty()) PrintNode(skeleton.front());
}

void PrintSkeletonList(const std::vector<NodeSpan>& skeletons) {
  for (const NodeSpan& skeleton : skeletons) {
    PrintFormatted("Skeleton Root: \t%s bones %zu\n", skeleton.front()->GetName(), skeleton.size());
  }
}

void dumpMatrixInfo(const FbxAMatrix& matrix) {
  PrintTriple("\tT:", matrix.GetT());
  PrintTriple("\tR:", matrix.GetR());
  PrintTriple("\tS:", matrix.GetS());
  Print("\n");
}
