#include "fbx/scene/fbx_mesh.h"

#include <limits>
#include <utility>

FBX_OBJECT_DEFINE(FbxMesh, FbxGeometry, "Geometry", nullptr)

int FbxMesh::GetPolygonSize(int polygon) const {
  return polygon < 0 || polygon >= GetPolygonCount() ? 0
                                                     : polygons_[static_cast<size_t>(polygon)].size;
}

int FbxMesh::GetPolygonVertex(int polygon, int corner) const {
  if (corner < 0 || corner >= GetPolygonSize(polygon)) return -1;
  return polygonVertices_[static_cast<size_t>(polygons_[static_cast<size_t>(polygon)].start +
                                              corner)];
}

int FbxMesh::GetPolygonVertexIndex(int polygon) const {
  return polygon < 0 || polygon >= GetPolygonCount()
             ? -1
             : polygons_[static_cast<size_t>(polygon)].start;
}

void FbxMesh::SetPolygonsFromFile(std::vector<int> indices) {
  polygonVertices_ = std::move(indices);
  polygons_.clear();
  int start = 0;
  const int count = GetPolygonVertexCount();
  for (int i = 0; i < count; ++i) {
    int& index = polygonVertices_[static_cast<size_t>(i)];
    if (index >= 0) continue;
    // The lowest integer stands for one less than its complement.
    index = index == std::numeric_limits<int>::min() ? 0x7FFFFFFE : ~index;
    polygons_.push_back({start, i + 1 - start});
    start = i + 1;
  }
  if (start < count) polygons_.push_back({start, count - start});
}

bool FbxMesh::GetPolygonVertexLayerElementIndex(const FbxLayerElement& element, int polygon,
                                                int corner, int& out) const {
  out = -1;
  if (corner < 0 || corner >= GetPolygonSize(polygon)) return false;
  const int position = polygons_[static_cast<size_t>(polygon)].start + corner;
  int index = -1;
  switch (element.mappingMode) {
    case FbxLayerElement::eByPolygon:
      index = polygon;
      break;
    case FbxLayerElement::eByPolygonVertex:
      index = position;
      break;
    case FbxLayerElement::eByControlPoint:
      index = polygonVertices_[static_cast<size_t>(position)];
      break;
    case FbxLayerElement::eNone:
    case FbxLayerElement::eByEdge:
    case FbxLayerElement::eAllSame:
      return false;
  }
  if (element.referenceMode != FbxLayerElement::eDirect) {
    if (index < 0 || static_cast<size_t>(index) >= element.index.size()) return false;
    index = element.index[static_cast<size_t>(index)];
  }
  out = index;
  return true;
}

bool FbxMesh::GetPolygonVertexNormal(int polygon, int corner, FbxVector4& out) const {
  const FbxLayerElementNormal* element = GetElementNormal(0);
  int index = -1;
  if (element == nullptr || !GetPolygonVertexLayerElementIndex(*element, polygon, corner, index)) {
    return false;
  }
  const FbxVector4* normal = element->At(index);
  if (normal != nullptr) out = *normal;
  return normal != nullptr;
}

bool FbxMesh::GetPolygonVertexUV(int polygon, int corner, const char* uvSetName, FbxVector2& out,
                                 bool& unmapped) const {
  const FbxLayerElementUV* element = GetElementUV(uvSetName);
  int index = -1;
  unmapped = false;
  if (element == nullptr || !GetPolygonVertexLayerElementIndex(*element, polygon, corner, index)) {
    return false;
  }
  unmapped = index == -1;
  if (const FbxVector2* uv = element->At(index)) out = *uv;
  return true;
}
