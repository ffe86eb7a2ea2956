#include <algorithm>

#include "fbx/scene/fbx_mesh.h"

FBX_OBJECT_DEFINE(FbxShape, FbxGeometryBase, "Geometry", nullptr)

namespace {

// The normal that the first normal element of the geometry has at `position` of its mapping; null
// for an index out of range.
const FbxVector4* ReadNormal(const FbxLayerElementNormal& element, int position) {
  if (element.referenceMode == FbxLayerElement::eDirect) return element.At(position);
  if (position < 0 || static_cast<size_t>(position) >= element.index.size()) return nullptr;
  return element.At(element.index[static_cast<size_t>(position)]);
}

void AddOffset(FbxVector4& normal, const FbxVector4& offset) {
  normal += offset;
  normal.Normalize();
}

// Offsets of normals by control point, summed where the shape lists a point twice.
std::vector<FbxVector4> SpreadOffsets(const FbxShape& shape, size_t pointCount,
                                      std::vector<bool>& isListed) {
  std::vector<FbxVector4> spread(pointCount, FbxVector4(0.0, 0.0, 0.0, 0.0));
  isListed.assign(pointCount, false);
  const size_t count = std::min(shape.indices.size(), shape.normalOffsets.size());
  for (size_t i = 0; i < count; ++i) {
    const auto point = static_cast<size_t>(shape.indices[i]);
    if (shape.indices[i] < 0 || point >= pointCount) continue;
    spread[point] += shape.normalOffsets[i];
    isListed[point] = true;
  }
  return spread;
}

std::shared_ptr<FbxLayerElementNormal> ExpandNormals(const FbxShape& shape,
                                                     const FbxGeometryBase& base) {
  const FbxLayerElementNormal* from = base.GetElementNormal(0);
  if (from == nullptr || shape.normalOffsets.empty()) return nullptr;
  const auto pointCount = static_cast<size_t>(base.GetControlPointsCount());
  std::vector<bool> isListed;
  const std::vector<FbxVector4> offsets = SpreadOffsets(shape, pointCount, isListed);

  auto normals = std::make_shared<FbxLayerElementNormal>();
  if (from->mappingMode == FbxLayerElement::eByControlPoint) {
    normals->mappingMode = FbxLayerElement::eByControlPoint;
    normals->direct.resize(pointCount, FbxVector4(0.0, 0.0, 0.0, 0.0));
    for (size_t i = 0; i < pointCount; ++i) {
      if (const FbxVector4* normal = ReadNormal(*from, static_cast<int>(i))) {
        normals->direct[i] = *normal;
      }
      if (isListed[i]) AddOffset(normals->direct[i], offsets[i]);
    }
    return normals;
  }
  // One normal for a polygon or for the mesh can't tell its corners apart once they move, so every
  // other mapping becomes one by corner.
  if (!base.Is<FbxMesh>()) return nullptr;
  const auto& mesh = static_cast<const FbxMesh&>(base);
  normals->mappingMode = FbxLayerElement::eByPolygonVertex;
  const std::vector<int>& corners = mesh.PolygonVertices();
  normals->direct.resize(corners.size(), FbxVector4(0.0, 0.0, 0.0, 0.0));
  const bool byPolygon = from->mappingMode == FbxLayerElement::eByPolygon;
  const bool allSame = from->mappingMode == FbxLayerElement::eAllSame;
  for (int polygon = 0; polygon < mesh.GetPolygonCount(); ++polygon) {
    const int start = mesh.GetPolygonVertexIndex(polygon);
    for (int i = start; i < start + mesh.GetPolygonSize(polygon); ++i) {
      FbxVector4& target = normals->direct[static_cast<size_t>(i)];
      const int position = byPolygon ? polygon : allSame ? 0 : i;
      if (const FbxVector4* normal = ReadNormal(*from, position)) target = *normal;
      const auto point = static_cast<size_t>(corners[static_cast<size_t>(i)]);
      if (point < pointCount && isListed[point]) AddOffset(target, offsets[point]);
    }
  }
  return normals;
}

}  // namespace

FbxGeometry* FbxShape::GetBaseGeometry() const {
  const auto* channel = GetDstObject<FbxBlendShapeChannel>();
  const auto* blendShape = channel == nullptr ? nullptr : channel->GetDstObject<FbxBlendShape>();
  return blendShape == nullptr ? nullptr : blendShape->GetGeometry();
}

const std::vector<FbxVector4>& FbxShape::ControlPoints() const {
  if (!expandedPoints_.empty()) return expandedPoints_;
  const FbxGeometry* base = indices.empty() ? nullptr : GetBaseGeometry();
  if (base == nullptr) return FbxGeometryBase::ControlPoints();
  expandedPoints_ = base->ControlPoints();
  const size_t count = std::min(indices.size(), offsets.size());
  for (size_t i = 0; i < count; ++i) {
    const auto point = static_cast<size_t>(indices[i]);
    if (indices[i] >= 0 && point < expandedPoints_.size()) expandedPoints_[point] += offsets[i];
  }
  return expandedPoints_;
}

const std::vector<FbxLayer>& FbxShape::Layers() const {
  if (!expandedLayers_.empty()) return expandedLayers_;
  const FbxGeometry* base = normalOffsets.empty() ? nullptr : GetBaseGeometry();
  if (base == nullptr) return FbxGeometryBase::Layers();
  expandedLayers_.resize(1);
  expandedLayers_[0].normals = ExpandNormals(*this, *base);
  return expandedLayers_;
}
