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

// What has been made of the array stands in for it from now on.
template <typename T>
void Forget(FbxStoredArray<T>& array) {
  if (array.IsPacked()) {
    array.Release();
  } else {
    array = {};
  }
}

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

void FbxGeometryBase::SetControlPoints(FbxStoredArray<FbxDouble3> points) {
  storedPoints_ = std::move(points);
  controlPoints_.reset();
}

const std::vector<FbxVector4>& FbxGeometryBase::ControlPoints() const {
  if (controlPoints_.has_value()) return *controlPoints_;
  const std::span<const FbxDouble3> stored = storedPoints_.Values();
  std::vector<FbxVector4> points;
  points.reserve(stored.size());
  for (const FbxDouble3& point : stored) points.emplace_back(point, 0.0);
  Forget(storedPoints_);
  return controlPoints_.emplace(std::move(points));
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
  const std::vector<Polygon>& polygons = Table().polygons;
  const auto at = static_cast<size_t>(polygon);
  return polygon < 0 || at >= polygons.size() ? 0 : polygons[at].size;
}

int FbxMesh::GetPolygonVertex(int polygon, int corner) const {
  if (corner < 0 || corner >= GetPolygonSize(polygon)) return -1;
  return PolygonVertices()[static_cast<size_t>(GetPolygonVertexIndex(polygon) + corner)];
}

int FbxMesh::GetPolygonVertexIndex(int polygon) const {
  const std::vector<Polygon>& polygons = Table().polygons;
  const auto at = static_cast<size_t>(polygon);
  return polygon < 0 || at >= polygons.size() ? -1 : polygons[at].start;
}

void FbxMesh::SetPolygonsFromFile(FbxStoredArray<int> indices) {
  storedPolygons_ = std::move(indices);
  table_.reset();
}

const FbxMesh::PolygonTable& FbxMesh::MakeTable() const {
  const std::span<const int> indices = storedPolygons_.Values();
  PolygonTable table;
  table.vertices.assign(indices.begin(), indices.end());
  table.polygons.reserve(static_cast<size_t>(
      std::count_if(indices.begin(), indices.end(), [](int index) { return index < 0; }) + 1));
  const int count = static_cast<int>(indices.size());
  int start = 0;
  for (int i = 0; i < count; ++i) {
    int& index = table.vertices[static_cast<size_t>(i)];
    if (index >= 0) continue;
    // The lowest integer stands for one less than its complement.
    index = index == std::numeric_limits<int>::min() ? 0x7FFFFFFE : ~index;
    table.polygons.push_back({start, i + 1 - start});
    start = i + 1;
  }
  if (start < count) table.polygons.push_back({start, count - start});
  Forget(storedPolygons_);
  return table_.emplace(std::move(table));
}

void FbxMesh::Release() {
  ReleaseControlPoints();
  if (storedPolygons_.IsPacked()) table_.reset();
  const auto release = [](const auto& element) {
    if (element == nullptr) return;
    element->index.Release();
    if constexpr (requires { element->direct; }) element->direct.Release();
  };
  for (int i = 0; i < GetLayerCount(); ++i) {
    const FbxLayer& layer = *GetLayer(i);
    release(layer.normals);
    release(layer.vertexColors);
    release(layer.materials);
    for (const auto& element : layer.uvs) release(element);
  }
}

bool FbxMesh::GetPolygonVertexLayerElementIndex(const FbxLayerElement& element, int polygon,
                                                int corner, int& out) const {
  out = -1;
  if (corner < 0 || corner >= GetPolygonSize(polygon)) return false;
  const int position = GetPolygonVertexIndex(polygon) + corner;
  int index = -1;
  switch (element.mappingMode) {
    case FbxLayerElement::eByPolygon:
      index = polygon;
      break;
    case FbxLayerElement::eByPolygonVertex:
      index = position;
      break;
    case FbxLayerElement::eByControlPoint:
      index = PolygonVertices()[static_cast<size_t>(position)];
      break;
    case FbxLayerElement::eNone:
    case FbxLayerElement::eByEdge:
    case FbxLayerElement::eAllSame:
      return false;
  }
  if (element.referenceMode != FbxLayerElement::eDirect) {
    const int* entry = element.index.At(index);
    if (entry == nullptr) return false;
    index = *entry;
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
  const FbxDouble3* normal = element->At(index);
  if (normal == nullptr) return false;
  const double* w = element->w.At(index);
  out = FbxVector4(*normal, w == nullptr ? 1.0 : *w);
  return true;
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

// The normal that the first normal element of the geometry has at `position` of its mapping; the
// zero vector for an index out of range.
FbxDouble3 ReadNormal(const FbxLayerElementNormal& element, int position) {
  if (element.referenceMode != FbxLayerElement::eDirect) {
    const int* index = element.index.At(position);
    if (index == nullptr) return {};
    position = *index;
  }
  const FbxDouble3* normal = element.At(position);
  return normal == nullptr ? FbxDouble3{} : *normal;
}

void AddOffset(FbxDouble3& normal, const FbxVector4& offset) {
  FbxVector4 moved(normal);
  moved += offset;
  moved.Normalize();
  normal = moved.Xyz();
}

// Offsets of normals by control point, summed where the shape lists a point twice.
std::vector<FbxVector4> SpreadOffsets(const FbxShape& shape, size_t pointCount,
                                      std::vector<bool>& isListed) {
  std::vector<FbxVector4> spread(pointCount, FbxVector4(0.0, 0.0, 0.0, 0.0));
  isListed.assign(pointCount, false);
  const std::span<const int> indices = shape.Indices();
  const std::span<const FbxDouble3> offsets = shape.NormalOffsets();
  for (size_t i = 0; i < offsets.size(); ++i) {
    const auto point = static_cast<size_t>(indices[i]);
    if (indices[i] < 0 || point >= pointCount) continue;
    spread[point] += FbxVector4(offsets[i], 0.0);
    isListed[point] = true;
  }
  return spread;
}

std::shared_ptr<FbxLayerElementNormal> ExpandNormals(const FbxShape& shape,
                                                     const FbxGeometryBase& base) {
  const FbxLayerElementNormal* from = base.GetElementNormal(0);
  if (from == nullptr || shape.NormalOffsets().empty()) return nullptr;
  const auto pointCount = static_cast<size_t>(base.GetControlPointsCount());
  std::vector<bool> isListed;
  const std::vector<FbxVector4> offsets = SpreadOffsets(shape, pointCount, isListed);

  auto normals = std::make_shared<FbxLayerElementNormal>();
  std::vector<FbxDouble3> values;
  if (from->mappingMode == FbxLayerElement::eByControlPoint) {
    normals->mappingMode = FbxLayerElement::eByControlPoint;
    values.resize(pointCount);
    for (size_t i = 0; i < pointCount; ++i) {
      values[i] = ReadNormal(*from, static_cast<int>(i));
      if (isListed[i]) AddOffset(values[i], offsets[i]);
    }
    normals->direct = values;
    return normals;
  }
  // One normal for a polygon or for the mesh can't tell its corners apart once they move, so every
  // other mapping becomes one by corner.
  if (!base.Is<FbxMesh>()) return nullptr;
  const auto& mesh = static_cast<const FbxMesh&>(base);
  normals->mappingMode = FbxLayerElement::eByPolygonVertex;
  const std::vector<int>& corners = mesh.PolygonVertices();
  values.resize(corners.size());
  const bool byPolygon = from->mappingMode == FbxLayerElement::eByPolygon;
  const bool allSame = from->mappingMode == FbxLayerElement::eAllSame;
  for (int polygon = 0; polygon < mesh.GetPolygonCount(); ++polygon) {
    const int start = mesh.GetPolygonVertexIndex(polygon);
    for (int i = start; i < start + mesh.GetPolygonSize(polygon); ++i) {
      FbxDouble3& target = values[static_cast<size_t>(i)];
      target = ReadNormal(*from, byPolygon ? polygon : allSame ? 0 : i);
      const auto point = static_cast<size_t>(corners[static_cast<size_t>(i)]);
      if (point < pointCount && isListed[point]) AddOffset(target, offsets[point]);
    }
  }
  normals->direct = values;
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
  const std::span<const int> points = Indices();
  const FbxGeometry* base = points.empty() ? nullptr : GetBaseGeometry();
  if (base == nullptr) return FbxGeometryBase::ControlPoints();
  expandedPoints_ = base->ControlPoints();
  const std::span<const FbxDouble3> moves = Offsets();
  for (size_t i = 0; i < moves.size(); ++i) {
    const auto point = static_cast<size_t>(points[i]);
    if (points[i] < 0 || point >= expandedPoints_.size()) continue;
    expandedPoints_[point] += FbxVector4(moves[i], 0.0);
  }
  return expandedPoints_;
}

const std::vector<FbxLayer>& FbxShape::Layers() const {
  if (!expandedLayers_.empty()) return expandedLayers_;
  const FbxGeometry* base = NormalOffsets().empty() ? nullptr : GetBaseGeometry();
  if (base == nullptr) return FbxGeometryBase::Layers();
  expandedLayers_.resize(1);
  expandedLayers_[0].normals = ExpandNormals(*this, *base);
  return expandedLayers_;
}
