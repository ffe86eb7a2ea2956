#include "converter/mesh/morph_channel.h"

#include <algorithm>
#include <cmath>

#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_mesh.h"

namespace {

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

ShapePoints::ShapePoints(const FbxShape& shape, const FbxMesh& mesh) {
  // Not through the shape's own full list of points: all shapes of a mesh with theirs would take
  // many times what the file has.
  const FbxGeometry* base = shape.indices.empty() ? nullptr : shape.GetBaseGeometry();
  const std::vector<FbxVector4>& points =
      base == nullptr ? shape.ControlPoints() : base->ControlPoints();
  fits_ = points.size() == mesh.ControlPoints().size();
  if (!fits_) return;
  if (base != nullptr) {
    moved_ = SumByPoint(shape.indices, shape.offsets, points.size(),
                        [&](int point) { return points[static_cast<size_t>(point)]; });
  }
  if (base == &mesh) return;
  // Points of the shape's own, or of another geometry that its blend shape deforms as well.
  PointValues moved;
  auto listed = moved_.begin();
  for (size_t i = 0; i < points.size(); ++i) {
    const int point = static_cast<int>(i);
    const bool isListed = listed != moved_.end() && listed->first == point;
    const FbxVector4& value = isListed ? (listed++)->second : points[i];
    if (!(value == mesh.ControlPoints()[i])) moved.emplace_back(point, value);
  }
  moved_ = std::move(moved);
}

BaseNormals::BaseNormals(const FbxMesh& mesh) : mesh_(&mesh), element_(mesh.GetElementNormal(0)) {}

std::optional<BaseNormal> BaseNormals::At(const MeshCorner& corner) const {
  if (element_ == nullptr) return std::nullopt;
  MeshCorner place = corner;
  if (element_->mappingMode == FbxLayerElement::eByControlPoint) {
    place.controlPoint = mesh_->GetPolygonVertex(corner.polygon, corner.polygonVertex);
    const int pointCount = mesh_->GetControlPointsCount();
    if (place.controlPoint < 0 || place.controlPoint >= pointCount) return std::nullopt;
  }
  const int position =
      HasKnownMapping(*element_) ? MappedIndex(element_->mappingMode, place) : corner.polygonVertex;
  const FbxVector4* entry = element_->referenceMode == FbxLayerElement::eDirect
                                ? element_->At(position)
                                : IndexedEntry(*element_, position);
  BaseNormal base;
  if (entry != nullptr) base.normal = *entry;
  base.point = place.controlPoint;
  return base;
}

FbxVector4 MovedNormal(FbxVector4 normal, const FbxVector4& offset) {
  normal += offset;
  normal.Normalize();
  return normal;
}

ShapeNormals::ShapeNormals(const FbxShape& shape, const FbxMesh& mesh) : mesh_(&mesh) {
  if (!shape.normalOffsets.empty() && shape.GetBaseGeometry() == &mesh) {
    if (mesh.GetElementNormal(0) == nullptr) return;
    base_.emplace(mesh);
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
  if (!base_.has_value()) {
    const int point = mesh_->GetPolygonVertex(corner.polygon, corner.polygonVertex);
    return getNormalFromElements(elements_, {corner.polygon, corner.polygonVertex, point});
  }
  const std::optional<BaseNormal> base = base_->At(corner);
  if (!base.has_value()) return {0.0, 0.0, 0.0};
  const FbxVector4* offset = FindPoint(offsets_, base->point);
  return offset == nullptr ? base->normal : MovedNormal(base->normal, *offset);
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

PointIndex::PointIndex(const std::vector<const PointValues*>& lists, size_t pointCount)
    : firsts_(pointCount + 1, 0) {
  for (const PointValues* list : lists) {
    if (list == nullptr) continue;
    for (const auto& [point, value] : *list) ++firsts_[static_cast<size_t>(point) + 1];
  }
  for (size_t i = 0; i < pointCount; ++i) firsts_[i + 1] += firsts_[i];
  entries_.resize(firsts_.back());
  std::vector<uint32_t> ends(firsts_.begin(), firsts_.end() - 1);
  for (uint32_t channel = 0; channel < lists.size(); ++channel) {
    if (lists[channel] == nullptr) continue;
    for (const auto& [point, value] : *lists[channel]) {
      entries_[ends[static_cast<size_t>(point)]++] = {channel, &value};
    }
  }
}

MeshMorphs::MeshMorphs(const FbxMesh& mesh) : sources(GatherMorphSources(mesh)), base(mesh) {
  std::vector<const MorphSource*> byName;
  for (const MorphSource& source : sources) byName.push_back(&source);
  std::stable_sort(byName.begin(), byName.end(),
                   [](const auto* a, const auto* b) { return a->name < b->name; });
  for (const MorphSource* source : byName) {
    if (channels.empty() || channels.back().name != source->name) {
      channels.emplace_back().name = source->name;
    }
    ShapeNormals normals(*source->shape, mesh);
    if (!normals.Empty()) channels.back().normals.push_back(std::move(normals));
  }
}

MorphChannel& MeshMorphs::Find(const std::string& name) {
  return *std::lower_bound(
      channels.begin(), channels.end(), name,
      [](const MorphChannel& channel, const std::string& wanted) { return channel.name < wanted; });
}

void MeshMorphs::Index(size_t pointCount) {
  std::vector<const PointValues*> moved;
  std::vector<const PointValues*> offsets;
  for (uint32_t i = 0; i < channels.size(); ++i) {
    const MorphChannel& channel = channels[i];
    moved.push_back(&channel.points.Moved());
    offsets.push_back(channel.HasBaseNormals() ? &channel.normals.front().Offsets() : nullptr);
    if (channel.HasBaseNormals()) ++baseNormalCount;
    if (channel.HasOtherNormals()) others.push_back(i);
  }
  moves = PointIndex(moved, pointCount);
  turns = PointIndex(offsets, pointCount);
}
