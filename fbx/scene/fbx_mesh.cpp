#include "fbx/scene/fbx_mesh.h"

#include <algorithm>
#include <limits>
#include <utility>

const std::array<const char*, FbxLayer::kUVChannels> kUVElementNames = {
    "LayerElementUV",
    "LayerElementDiffuseFactorUV",
    "LayerElementEmissiveUV",
    "LayerElementEmissiveFactorUV",
    "LayerElementAmbientUV",
    "LayerElementAmbientFactorUV",
    "LayerElementSpecularUV",
    "LayerElementSpecularFactorUV",
    "LayerElementShininessUV",
    "LayerElementNormalMapUV",
    "LayerElementBumpUV",
    "LayerElementTransparentUV",
    "LayerElementTransparencyFactorUV",
    "LayerElementReflectionUV",
    "LayerElementReflectionFactorUV",
    "LayerElementDisplacementUV",
    "LayerElementVectorDisplacementUV",
};

FbxLayerElement::EMappingMode MappingModeFromName(std::string_view name) {
  // Some writers spell it right.
  if (name == "ByVertice" || name == "ByVertex") return FbxLayerElement::eByControlPoint;
  if (name == "ByPolygonVertex") return FbxLayerElement::eByPolygonVertex;
  if (name == "ByPolygon") return FbxLayerElement::eByPolygon;
  if (name == "ByEdge") return FbxLayerElement::eByEdge;
  if (name == "AllSame") return FbxLayerElement::eAllSame;
  return FbxLayerElement::eNone;
}

FbxLayerElement::EReferenceMode ReferenceModeFromName(std::string_view name) {
  if (name == "Index") return FbxLayerElement::eIndex;
  if (name == "IndexToDirect") return FbxLayerElement::eIndexToDirect;
  return FbxLayerElement::eDirect;
}

FBX_OBJECT_DEFINE(FbxLayerContainer, FbxNodeAttribute, "", nullptr)
FBX_OBJECT_DEFINE(FbxGeometryBase, FbxLayerContainer, "Geometry", nullptr)
FBX_OBJECT_DEFINE(FbxGeometry, FbxGeometryBase, "", nullptr)
FBX_OBJECT_DEFINE(FbxMesh, FbxGeometry, "Geometry", nullptr)
FBX_OBJECT_DEFINE(FbxShape, FbxGeometryBase, "Geometry", nullptr)

namespace {

template <typename Element>
using Member = std::shared_ptr<Element> FbxLayer::*;

template <typename Element>
Element* NthElement(const std::vector<FbxLayer>& layers, Member<Element> member, int index) {
  for (const FbxLayer& layer : layers) {
    if (layer.*member != nullptr && index-- == 0) return (layer.*member).get();
  }
  return nullptr;
}

// Calls `function` on the UV elements of a channel, or of all for type 0, until it returns true.
template <typename Function>
void VisitUVElements(const std::vector<FbxLayer>& layers, int type, Function&& function) {
  size_t first = 0;
  size_t last = FbxLayer::kUVChannels;
  if (type != 0) {
    if (type < FbxLayerElement::eUVFirst || type > FbxLayerElement::eUVLast) return;
    first = static_cast<size_t>(type - FbxLayerElement::eUVFirst);
    last = first + 1;
  }
  for (const FbxLayer& layer : layers) {
    for (size_t channel = first; channel < last; ++channel) {
      if (layer.uvs[channel] != nullptr && function(*layer.uvs[channel])) return;
    }
  }
}

}  // namespace

FbxLayer* FbxLayerContainer::GetLayer(int index) {
  return const_cast<FbxLayer*>(std::as_const(*this).GetLayer(index));
}

const FbxLayer* FbxLayerContainer::GetLayer(int index) const {
  return index < 0 || index >= GetLayerCount() ? nullptr : &Layers()[static_cast<size_t>(index)];
}

int FbxLayerContainer::CreateLayer() {
  layers_.emplace_back();
  return static_cast<int>(layers_.size()) - 1;
}

int FbxLayerContainer::GetElementNormalCount() const {
  const std::vector<FbxLayer>& layers = Layers();
  return static_cast<int>(std::count_if(layers.begin(), layers.end(), [](const FbxLayer& layer) {
    return layer.normals != nullptr;
  }));
}

FbxLayerElementNormal* FbxLayerContainer::GetElementNormal(int index) const {
  return NthElement(Layers(), &FbxLayer::normals, index);
}

FbxLayerElementVertexColor* FbxLayerContainer::GetElementVertexColor(int index) const {
  return NthElement(Layers(), &FbxLayer::vertexColors, index);
}

FbxLayerElementMaterial* FbxLayerContainer::GetElementMaterial(int index) const {
  return NthElement(Layers(), &FbxLayer::materials, index);
}

int FbxLayerContainer::GetElementUVCount(int type) const {
  int count = 0;
  VisitUVElements(Layers(), type, [&](const FbxLayerElementUV&) {
    ++count;
    return false;
  });
  return count;
}

FbxLayerElementUV* FbxLayerContainer::GetElementUV(int index, int type) const {
  FbxLayerElementUV* found = nullptr;
  VisitUVElements(Layers(), type, [&](FbxLayerElementUV& element) {
    if (index-- != 0) return false;
    found = &element;
    return true;
  });
  return found;
}

FbxLayerElementUV* FbxLayerContainer::GetElementUV(const char* name) const {
  FbxLayerElementUV* found = nullptr;
  const std::string_view wanted = name == nullptr ? "" : name;
  VisitUVElements(Layers(), 0, [&](FbxLayerElementUV& element) {
    if (element.name != wanted) return false;
    found = &element;
    return true;
  });
  return found;
}

FbxVector4 FbxGeometryBase::GetControlPointAt(int index) const {
  const std::vector<FbxVector4>& points = ControlPoints();
  return index < 0 || static_cast<size_t>(index) >= points.size()
             ? FbxVector4(0.0, 0.0, 0.0, 0.0)
             : points[static_cast<size_t>(index)];
}

int FbxGeometry::GetDeformerCount(FbxDeformer::EDeformerType type) const {
  const int all = GetSrcObjectCount<FbxDeformer>();
  int count = 0;
  for (int i = 0; i < all; ++i) {
    if (GetSrcObject<FbxDeformer>(i)->GetDeformerType() == type) ++count;
  }
  return count;
}

FbxDeformer* FbxGeometry::GetDeformer(int index, FbxDeformer::EDeformerType type,
                                      FbxStatus* status) const {
  const int all = GetSrcObjectCount<FbxDeformer>();
  for (int i = 0; i < all; ++i) {
    FbxDeformer* deformer = GetSrcObject<FbxDeformer>(i);
    if (deformer->GetDeformerType() == type && index-- == 0) return deformer;
  }
  if (status != nullptr) status->SetCode(FbxStatus::eIndexOutOfRange);
  return nullptr;
}

int FbxGeometry::GetShapeCount() const {
  int count = 0;
  const int blendShapes = GetSrcObjectCount<FbxBlendShape>();
  for (int b = 0; b < blendShapes; ++b) {
    const FbxBlendShape* blendShape = GetSrcObject<FbxBlendShape>(b);
    const int channels = blendShape->GetBlendShapeChannelCount();
    for (int c = 0; c < channels; ++c) {
      count += blendShape->GetBlendShapeChannel(c)->GetTargetShapeCount();
    }
  }
  return count;
}

FbxAnimCurve* FbxGeometry::GetShapeChannel(int blendShape, int channel, const FbxAnimLayer* layer,
                                           FbxStatus* status) const {
  const FbxBlendShape* shape = GetSrcObject<FbxBlendShape>(blendShape);
  const FbxBlendShapeChannel* target =
      shape == nullptr ? nullptr : shape->GetBlendShapeChannel(channel);
  if (target == nullptr) {
    if (status != nullptr) status->SetCode(FbxStatus::eIndexOutOfRange);
    return nullptr;
  }
  return target->DeformPercent().GetCurve(layer);
}

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
