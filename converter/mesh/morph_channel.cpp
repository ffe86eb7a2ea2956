#include "converter/mesh/morph_channel.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_mesh.h"

namespace {

// Whether the points are in range, in ascending order, and each is there once.
bool AreInOrder(std::span<const int> points, size_t pointCount) {
  if (points.empty()) return true;
  return points.front() >= 0 && static_cast<size_t>(points.back()) < pointCount &&
         std::ranges::adjacent_find(points, std::ranges::greater_equal()) == points.end();
}

}  // namespace

PointValues::PointValues(std::span<const int> points, std::span<const FbxDouble3> offsets,
                         const FbxVector4* start, size_t pointCount)
    : isOwn_(false), listed_(points.first(offsets.size())), offsets_(offsets), start_(start) {
  if (AreInOrder(listed_, pointCount)) return;
  isOwn_ = true;
  std::vector<std::pair<int, size_t>> places;
  for (size_t i = 0; i < listed_.size(); ++i) {
    if (listed_[i] >= 0 && static_cast<size_t>(listed_[i]) < pointCount) {
      places.emplace_back(listed_[i], i);
    }
  }
  std::ranges::sort(places);
  for (const auto& [point, place] : places) {
    if (ownPoints_.empty() || ownPoints_.back() != point) {
      ownPoints_.push_back(point);
      ownValues_.push_back(StartOf(point));
    }
    ownValues_.back() += FbxVector4(offsets[place], 0.0);
  }
}

PointValues::PointValues(std::vector<int> points, std::vector<FbxVector4> values)
    : ownPoints_(std::move(points)), ownValues_(std::move(values)) {}

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
  const FbxGeometry* base = shape.Indices().empty() ? nullptr : shape.GetBaseGeometry();
  const std::vector<FbxVector4>& points =
      base == nullptr ? shape.ControlPoints() : base->ControlPoints();
  fits_ = points.size() == mesh.ControlPoints().size();
  if (!fits_) return;
  if (base != nullptr) {
    moved_ = PointValues(shape.Indices(), shape.Offsets(), points.data(), points.size());
  }
  if (base == &mesh) return;
  // Points of the shape's own, or of another geometry that its blend shape deforms as well.
  std::vector<int> moved;
  std::vector<FbxVector4> values;
  const std::span<const int> listed = moved_.Points();
  size_t place = 0;
  for (size_t i = 0; i < points.size(); ++i) {
    const int point = static_cast<int>(i);
    const bool isListed = place < listed.size() && listed[place] == point;
    const FbxVector4 value = isListed ? moved_.At(place++) : points[i];
    if (value == mesh.ControlPoints()[i]) continue;
    moved.push_back(point);
    values.push_back(value);
  }
  moved_ = PointValues(std::move(moved), std::move(values));
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
  const FbxDouble3* entry = element_->referenceMode == FbxLayerElement::eDirect
                                ? element_->At(position)
                                : IndexedEntry<FbxDouble3>(*element_, position);
  BaseNormal base;
  if (entry != nullptr) base.normal = FbxVector4(*entry);
  base.point = place.controlPoint;
  return base;
}

FbxVector4 MovedNormal(FbxVector4 normal, const FbxVector4& offset) {
  normal += offset;
  normal.Normalize();
  return normal;
}

ShapeNormals::ShapeNormals(const FbxShape& shape, const FbxMesh& mesh) : mesh_(&mesh) {
  if (!shape.NormalOffsets().empty() && shape.GetBaseGeometry() == &mesh) {
    if (mesh.GetElementNormal(0) == nullptr) return;
    base_.emplace(mesh);
    offsets_ = PointValues(shape.Indices(), shape.NormalOffsets(), nullptr,
                           static_cast<size_t>(mesh.GetControlPointsCount()));
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
    return FbxVector4(
        getNormalFromElements(elements_, {corner.polygon, corner.polygonVertex, point}));
  }
  const std::optional<BaseNormal> base = base_->At(corner);
  if (!base.has_value()) return {0.0, 0.0, 0.0};
  const std::span<const int> points = offsets_.Points();
  const auto found = std::ranges::lower_bound(points, base->point);
  if (found == points.end() || *found != base->point) return base->normal;
  return MovedNormal(base->normal, offsets_.At(static_cast<size_t>(found - points.begin())));
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

PointIndex::PointIndex(const std::vector<std::span<const int>>& lists, size_t pointCount)
    : firsts_(pointCount + 1, 0) {
  for (const std::span<const int> list : lists) {
    for (const int point : list) ++firsts_[static_cast<size_t>(point) + 1];
  }
  for (size_t i = 0; i < pointCount; ++i) firsts_[i + 1] += firsts_[i];
  entries_.resize(firsts_.back());
  std::vector<uint32_t> ends(firsts_.begin(), firsts_.end() - 1);
  for (uint32_t channel = 0; channel < lists.size(); ++channel) {
    for (uint32_t place = 0; place < lists[channel].size(); ++place) {
      entries_[ends[static_cast<size_t>(lists[channel][place])]++] = {channel, place};
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
  std::vector<std::span<const int>> moved;
  std::vector<std::span<const int>> turned;
  for (uint32_t i = 0; i < channels.size(); ++i) {
    const MorphChannel& channel = channels[i];
    moved.push_back(channel.points.Moved().Points());
    turned.emplace_back();
    if (channel.HasBaseNormals()) turned.back() = channel.normals.front().Offsets().Points();
    if (channel.HasBaseNormals()) ++baseNormalCount;
    if (channel.HasOtherNormals()) others.push_back(i);
  }
  moves_ = PointIndex(moved, pointCount);
  turnsAreMoves_ = std::ranges::equal(moved, turned, [](const auto& a, const auto& b) {
    return a.data() == b.data() && a.size() == b.size();
  });
  if (!turnsAreMoves_) turns_ = PointIndex(turned, pointCount);
}
