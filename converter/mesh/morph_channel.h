// What a blend shape channel makes of a mesh: where its points go and what the normals of its
// corners become. A face has dozens of channels that move a few points each, so both are kept as
// sparse as the file has them, and an index tells which channels touch a point: the cost of a
// vertex is that of the channels that change it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "converter/mesh/layer_lookup.h"
#include "fbx/math/fbx_matrix.h"

class FbxGeometryBase;
class FbxMesh;
class FbxShape;

// A channel of a mesh, in the order of the file.
struct MorphSource {
  std::string name;
  const FbxShape* shape = nullptr;  // the last target
  bool hasMoreTargets = false;
};

// The channels of all blend shapes of the mesh in deformer and channel order, without those that
// have no target.
std::vector<MorphSource> GatherMorphSources(const FbxMesh& mesh);

// How far components of vectors may be apart that count as equal.
inline constexpr double kVectorTolerance = 1e-6;
// Whether no component is further from 0 than that.
bool IsNearZero(const FbxVector4& vector);

// In the place of a normal that isn't there.
inline constexpr FbxVector4 kNoNormal{0.0, 0.0, 0.0, 0.0};

// Values of some control points, in ascending order of the points.
using PointValues = std::vector<std::pair<int, FbxVector4>>;

// Where a target shape has the points of the mesh, in the mesh's own frame.
class ShapePoints {
 public:
  ShapePoints() = default;
  ShapePoints(const FbxShape& shape, const FbxMesh& mesh);

  // Whether the shape has as many points as the mesh. If not, it moves none.
  bool Fits() const { return fits_; }
  // The points that it moves. All others stay.
  const PointValues& Moved() const { return moved_; }

 private:
  bool fits_ = false;
  PointValues moved_;
};

// A corner's normal as a shape finds it in the mesh, before it adds its own offset. That is the
// same for all shapes.
struct BaseNormal {
  FbxVector4 normal = kNoNormal;
  int point = -1;  // the control point whose offset belongs to the corner, if any
};

// The base normals of a mesh.
class BaseNormals {
 public:
  BaseNormals() = default;
  explicit BaseNormals(const FbxMesh& mesh);

  // None for a corner that no shape has a normal for.
  //
  // Which corners those are is odd, but exported files follow from it. Where normals go by control
  // point, a corner's point is looked up by the running number of the corner over all polygons, as
  // if that were its place in its own polygon. So there is a point, and maybe another corner's, in
  // the first polygon, and in one that has more corners than there are before it; nowhere else.
  std::optional<BaseNormal> At(const MeshCorner& corner) const;

 private:
  const FbxMesh* mesh_ = nullptr;
  const FbxLayerElementNormal* element_ = nullptr;
};

// The normals of a target shape by corner, in the mesh's own frame.
class ShapeNormals {
 public:
  ShapeNormals(const FbxShape& shape, const FbxMesh& mesh);

  // True if no corner has a normal.
  bool Empty() const { return elements_.empty() && !AreOffsets(); }
  // Whether they are the mesh's normals and what the shape adds at some points.
  bool AreOffsets() const { return base_.has_value(); }
  // In ascending order of points; empty unless AreOffsets.
  const PointValues& Offsets() const { return offsets_; }
  // The zero vector for a corner without one.
  FbxVector4 At(const MeshCorner& corner) const;

 private:
  const FbxMesh* mesh_;
  NormalElements elements_;          // of a shape that has normals of its own
  std::optional<BaseNormals> base_;  // otherwise
  PointValues offsets_;
};

// The base normal with the offset added.
FbxVector4 MovedNormal(FbxVector4 normal, const FbxVector4& offset);

// One morph of a mesh: all channels of one name.
struct MorphChannel {
  std::string name;
  ShapePoints points;                 // of the last channel that fits the mesh
  std::vector<ShapeNormals> normals;  // the last that has one for a corner counts

  // Whether it moves points and its normals are those of the mesh, with offsets at some points: the
  // usual case, in which the control point and the base normal tell what becomes of a corner.
  bool HasBaseNormals() const {
    return points.Fits() && normals.size() == 1 && normals.front().AreOffsets();
  }
  bool HasOtherNormals() const { return !normals.empty() && !HasBaseNormals(); }
  // The last normal that isn't near zero; false if there is none.
  bool NormalAt(const MeshCorner& corner, FbxVector4& normal) const;
};

// Values of many lists, by the points that they belong to.
class PointIndex {
 public:
  struct Entry {
    uint32_t channel;
    const FbxVector4* value;
  };

  PointIndex() = default;
  // `lists` holds a list for each channel, or null; they must stay where they are. Points that they
  // name must be below `pointCount`.
  PointIndex(const std::vector<const PointValues*>& lists, size_t pointCount);

  // The entries of the point, in the order of channels; none for a point out of range.
  std::span<const Entry> At(int point) const {
    const auto at = static_cast<size_t>(point);
    if (point < 0 || at + 1 >= firsts_.size()) return {};
    return {entries_.data() + firsts_[at], entries_.data() + firsts_[at + 1]};
  }

 private:
  std::vector<uint32_t> firsts_;  // by point, and the end
  std::vector<Entry> entries_;
};

// The morphs of a mesh.
struct MeshMorphs {
  MeshMorphs() = default;
  // With normals and as yet without points.
  explicit MeshMorphs(const FbxMesh& mesh);

  // The morph of that name, which must be among them.
  MorphChannel& Find(const std::string& name);
  // Makes the indices; to be called when the points are known. The channels must not change after.
  void Index(size_t pointCount);

  std::vector<MorphSource> sources;    // as the file has them
  std::vector<MorphChannel> channels;  // by name
  BaseNormals base;
  uint32_t baseNormalCount = 0;  // channels that have base normals
  PointIndex turns;              // their offsets of normals, by BaseNormal::point
  std::vector<uint32_t> others;  // channels with other normals
  PointIndex moves;              // moved points, by control point
};
