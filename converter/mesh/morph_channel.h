// What a blend shape channel makes of a mesh: where its points go and what the normals of its
// corners become. A face has dozens of channels that move a few points each, so both are as sparse
// as the file has them, and an index tells which channels touch a point: the cost of a vertex is
// that of the channels that change it. Fifty channels of a large mesh are the most that an export
// holds, so that what a shape lists in order, as nearly all do, is read where it lies in the scene.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
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
class PointValues {
 public:
  PointValues() = default;
  // What a shape adds to `start`, the values of all points, which may be null where they are zero.
  // Points out of range are skipped; what is listed for one point several times is summed in the
  // order of the file. The shape's lists and `start` must stay where they are.
  PointValues(std::span<const int> points, std::span<const FbxDouble3> offsets,
              const FbxVector4* start, size_t pointCount);
  // Of points in ascending order.
  PointValues(std::vector<int> points, std::vector<FbxVector4> values);

  std::span<const int> Points() const {
    return isOwn_ ? std::span<const int>(ownPoints_) : listed_;
  }
  // The value of the point at that place among those.
  FbxVector4 At(size_t place) const {
    return isOwn_ ? ownValues_[place] : StartOf(listed_[place]) + FbxVector4(offsets_[place], 0.0);
  }

 private:
  FbxVector4 StartOf(int point) const {
    return start_ == nullptr ? FbxVector4(0.0, 0.0, 0.0, 0.0) : start_[point];
  }

  // Where the shape lists points in order, as nearly all do, they are read there.
  bool isOwn_ = true;
  std::span<const int> listed_;
  std::span<const FbxDouble3> offsets_;
  const FbxVector4* start_ = nullptr;
  std::vector<int> ownPoints_;
  std::vector<FbxVector4> ownValues_;
};

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

// Where lists of points, one for each channel, name a point.
class PointIndex {
 public:
  struct Entry {
    uint32_t channel;
    uint32_t place;  // in the channel's list
  };

  PointIndex() = default;
  // Points must be below `pointCount`.
  PointIndex(const std::vector<std::span<const int>>& lists, size_t pointCount);

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

  using Entries = std::span<const PointIndex::Entry>;
  // The channels that move the point.
  Entries MovesOf(int point) const { return moves_.At(point); }
  // The channels with base normals that turn that of the point, which is a BaseNormal's.
  Entries TurnsOf(int point) const { return (turnsAreMoves_ ? moves_ : turns_).At(point); }
  // Where a channel takes the point.
  FbxVector4 Moved(const PointIndex::Entry& move) const {
    return channels[move.channel].points.Moved().At(move.place);
  }
  // What becomes of the base normal.
  FbxVector4 Turned(const FbxVector4& normal, const PointIndex::Entry& turn) const {
    return MovedNormal(normal, channels[turn.channel].normals.front().Offsets().At(turn.place));
  }

  std::vector<MorphSource> sources;    // as the file has them
  std::vector<MorphChannel> channels;  // by name
  BaseNormals base;
  uint32_t baseNormalCount = 0;  // channels that have base normals
  std::vector<uint32_t> others;  // channels with other normals

 private:
  PointIndex moves_;
  // Shapes mostly list a point and a normal in one place: then one index serves for both.
  bool turnsAreMoves_ = false;
  PointIndex turns_;
};
