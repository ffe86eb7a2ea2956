#include "fbx/reader/read_vectors.h"

#include <algorithm>

#include "fbx/io/fbx_io.h"

std::vector<FbxVector4> ReadVectors(FbxIO& io, std::string_view field, double w) {
  std::vector<double> values;
  io.FieldReadArray(field, values);
  std::vector<FbxVector4> vectors;
  vectors.reserve(values.size() / 3);
  for (size_t i = 0; i + 2 < values.size(); i += 3) {
    vectors.emplace_back(values[i], values[i + 1], values[i + 2], w);
  }
  return vectors;
}

bool ReadMatrix(FbxIO& io, std::string_view field, FbxMatrix& out) {
  if (!io.FieldReadBegin(field)) return false;
  const char type = io.FieldReadGetType();
  if (type == 'd' || type == 'a') {
    std::vector<double> values;
    io.FieldReadArray(values);
    if (values.size() < out.data.size()) return false;
    std::copy_n(values.begin(), out.data.size(), out.data.begin());
    return true;
  }
  if (io.FieldReadGetRemain() < static_cast<int32_t>(out.data.size())) return false;
  io.FieldReadDn(out.data.data(), static_cast<int>(out.data.size()));
  return true;
}
