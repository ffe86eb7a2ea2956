// What the verbose modes show of points and matrices, on standard output.
#pragma once

#include <string>
#include <vector>

#include "fbx/math/fbx_matrix.h"

class FbxNode;
struct MeshHolder_;
struct MorphSource;

// "[x, y, z]" to two decimals, with `before` and `after` around it.
void PrintPoint(const char* before, const FbxVector4& point, const char* after);
// One line for each point's image.
void dumpControlPoints(const std::vector<FbxVector4>& points, const FbxAMatrix& matrix);
// The node's and its ancestors' local matrices, from the scene's root down.
void dumpTransformTree(const FbxNode* node);
// The matrix under a title of its own line.
void PrintTitledMatrix(const char* title, const FbxAMatrix& matrix);
// meshInit, the node's bind pose and the transforms of the mesh's clusters.
void PrintMeshMatrices(const FbxNode* node, MeshHolder_& holder, const FbxAMatrix& meshInit);
// The note on a channel of which only the last target is exported.
void PrintIgnoredTargets(const MorphSource& source);
