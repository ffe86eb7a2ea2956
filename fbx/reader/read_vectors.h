// Arrays and matrices of scene records as the scene's value types.
#pragma once

#include <string_view>
#include <vector>

#include "fbx/math/fbx_matrix.h"

class FbxIO;

// The doubles of the field by threes, a rest dropped; `w` goes into every fourth component. Empty
// if there is no such field.
std::vector<FbxVector4> ReadVectors(FbxIO& io, std::string_view field, double w);
// Sixteen doubles, as an array or one by one; false, with `out` untouched, if there aren't as many.
bool ReadMatrix(FbxIO& io, std::string_view field, FbxMatrix& out);
