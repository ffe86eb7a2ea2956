#include "converter/mesh/morph_channel.h"

#include <algorithm>
#include <cmath>

#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_mesh.h"

namespace {

constexpr double kVectorTolerance = 1e-6;

using PointValues = std::vector<std::pair<int, FbxVector4>>;

// Sums what `values` has for each point that `indices` lists, in file order, onto `start(point)`.
// Points out of range are skipped. Sorted by point.
template <typename Start>
PointValues SumByPoint(const std::vector<int>& indices, const std::vector<FbxVector4>& values,
                       size_t pointCount, Start&& start) {
  PointValues sums;
  const size_t count = std::min(indices.size(), values.size());
  sums.reserve(count);
  for (size_t i = 0; i < count; ++i) {
    if (indices[i] < 0 || static_cast<size_t>(indices[i]) >= pointCount) continue;
    sums.emplace_back(indices[i], values[i]);
  }
  const auto byPoint = [](const auto& a, const auto& b) { return a.first < b.first; };
  if (!std::is_sorted(sums.begin(), sums.end(), byPoint)) {
    std::stable_sort(sums.begin(), sums.end(), byPoint);
  }
  size_t last = 0;
  for (size_t i = 0; i < sums.size(); ++i) {
    const auto [point, value] = sums[i];
    if (i > 0 && sums[last].first == point) {
      sums[last].second += value;
    } else {
      last = i == 0 ? 0 : last + 1;
      sums[last] = {point, start(point) + value};
    }
  }
  if (!sums.empty()) sums.resize(last + 1);
  return sums;
}

const FbxVector4* FindPoint(const PointValues& values, int point) {
  const auto at =
      std::lower_bound(values.begin(), values.end(), point,
                       [](const auto& entry, int wanted) { return entry.first < wanted; });
  return at == values.end() || at->first != point ? nullptr : &at->second;
}

}  // namespace

std::vector<MorphSource> GatherMorphSources(const FbxMesh& mesh) {
  std::vector<MorphSource> sources;
  const int blendShapes = mesh.GetSrcObjectCount<FbxBlendShape>();
  for (int b = 0; b < blendShapes; ++b) {
    const auto* blendShape = mesh.GetSrcObject<FbxBlendShape>(b);
    const int channels = blendShape->GetBlendShapeChannelCount();
    for (int c = 0; c < channels; ++c) {
      const FbxBlendShapeChannel* channel = blendShape->GetBlendShapeChannel(c);
      if (channel == nullptr) continue;
      const int targets = channel->GetTargetShapeCount();
      const FbxShape* shape = channel->GetTargetShape(targets - 1);
      if (shape != nullptr) sources.push_back({channel->Name(), shape, targets > 1});
    }
  }
  return sources;
}

ShapePoints::ShapePoints(const FbxShape& shape) {
  // Not through the shape's own full list of points: all shapes of a mesh with theirs would take
  // many times what the file has.
  const FbxGeometry* base = shape.indices.empty() ? nullptr : shape.GetBaseGeometry();
  base_ = base == nullptr ? &shape.ControlPoints() : &base->ControlPoints();
  if (base == nullptr) return;
  moved_ = SumByPoint(shape.indices, shape.offsets, base_->size(),
                      [this](int point) { return (*base_)[static_cast<size_t>(point)]; });
}

const FbxVector4& ShapePoints::At(int point) const {
  const FbxVector4* moved = FindPoint(moved_, point);
  return moved == nullptr ? (*base_)[static_cast<size_t>(point)] : *moved;
}

ShapeNormals::ShapeNormals(const FbxShape& shape, const FbxMesh& mesh) : mesh_(&mesh) {
  if (!shape.normalOffsets.empty() && shape.GetBaseGeometry() == &mesh) {
    base_ = mesh.GetElementNormal(0);
    if (base_ == nullptr) return;
    offsets_ = SumByPoint(shape.indices, shape.normalOffsets,
                          static_cast<size_t>(mesh.GetControlPointsCount()),
                          [](int) { return FbxVector4(0.0, 0.0, 0.0, 0.0); });
    return;
  }
  const int count = shape.GetElementNormalCount();
  for (int i = 0; i < count; ++i) {
    const FbxLayerElementNormal* element = shape.GetElementNormal(i);
    if (HasKnownMapping(*element)) elements_.push_back(element);
  }
}

FbxVector4 ShapeNormals::At(const MeshCorner& corner) const {
  const int lookedUp = mesh_->GetPolygonVertex(corner.polygon, corner.polygonVertex);
  if (base_ == nullptr) {
    return getNormalFromElements(elements_, {corner.polygon, corner.polygonVertex, lookedUp});
  }
  // The shape takes over the mapping by control point; any other becomes one by corner.
  const bool byPoint = base_->mappingMode == FbxLayerElement::eByControlPoint;
  const int point = byPoint ? lookedUp : corner.controlPoint;
  if (byPoint && (point < 0 || point >= mesh_->GetControlPointsCount())) return {0.0, 0.0, 0.0};
  const int position =
      HasKnownMapping(*base_)
          ? MappedIndex(base_->mappingMode, {corner.polygon, corner.polygonVertex, point})
          : corner.polygonVertex;
  const FbxVector4* entry = base_->referenceMode == FbxLayerElement::eDirect
                                ? base_->At(position)
                                : IndexedEntry(*base_, position);
  FbxVector4 normal = entry == nullptr ? FbxVector4(0.0, 0.0, 0.0, 0.0) : *entry;
  if (const FbxVector4* offset = FindPoint(offsets_, point)) {
    normal += *offset;
    normal.Normalize();
  }
  return normal;
}

bool IsNearZero(const FbxVector4& vector) {
  for (size_t i = 0; i < 3; ++i) {
    if (!(std::abs(vector[i]) <= kVectorTolerance)) return false;
  }
  return true;
}

bool MorphChannel::NormalAt(const MeshCorner& corner, FbxVector4& normal) const {
  for (auto at = normals.rbegin(); at != normals.rend(); ++at) {
    normal = at->At(corner);
    if (!IsNearZero(normal)) return true;
  }
  return false;
}

std::vector<MorphChannel> MakeMorphChannels(const std::vector<MorphSource>& sources,
                                            const FbxMesh& mesh) {
  std::vector<const MorphSource*> byName;
  for (const MorphSource& source : sources) byName.push_back(&source);
  std::stable_sort(byName.begin(), byName.end(),
                   [](const auto* a, const auto* b) { return a->name < b->name; });
  std::vector<MorphChannel> channels;
  for (const MorphSource* source : byName) {
    if (channels.empty() || channels.back().name != source->name) {
      channels.emplace_back().name = source->name;
    }
    ShapeNormals normals(*source->shape, mesh);
    if (!normals.Empty()) channels.back().normals.push_back(std::move(normals));
  }
  return channels;
}

MorphChannel& FindMorphChannel(std::vector<MorphChannel>& channels, const std::string& name) {
  return *std::lower_bound(
      channels.begin(), channels.end(), name,
      [](const MorphChannel& channel, const std::string& wanted) { return channel.name < wanted; });
}
