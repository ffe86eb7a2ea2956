// Small questions about a loaded scene, and its diagnostics.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "converter/scene/mesh_holder.h"
#include "converter/scene/node_visitors.h"

class FbxAMatrix;
class FbxCluster;

// The names of the mesh's blend shape channels, in deformer and channel order.
std::vector<std::string> getMorphTargetsOnMesh(const FbxMesh* mesh);

// From bone path to the cluster through which the meshes follow that bone; the first one found.
std::map<std::string, FbxCluster*> GetClusterMap(const std::vector<MeshHolder_*>& holders);

// One line each on standard output: a node's path, that of a skeleton's root, and every skeleton
// with its count of bones.
void PrintNode(const FbxNode* node);
void PrintSkeleton(NodeSpan skeleton);
void PrintSkeletonList(const std::vector<NodeSpan>& skeletons);

// Translation, rotation in degrees and scaling, on one line on standard output.
void dumpMatrixInfo(const FbxAMatrix& matrix);
