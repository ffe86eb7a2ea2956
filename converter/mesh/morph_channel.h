// What a blend shape channel makes of a mesh: where its points go and what the normals of its
// corners become. Both are kept as sparse as the file has them and computed where they are asked
// for, since a face has dozens of channels that move a few points each.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "converter/mesh/layer_lookup.h"
#include "fbx/math/fbx_vector.h"

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

// Whether no component is further from 0 than vectors may be apart and still count as equal.
bool IsNearZero(const FbxVector4& vector);

// The points of a target shape, in the mesh's own frame.
class ShapePoints {
 public:
  ShapePoints() = default;
  explicit ShapePoints(const FbxShape& shape);

  size_t Count() const { return base_ == nullptr ? 0 : base_->size(); }
  // `point` must be below Count.
  const FbxVector4& At(int point) const;

 private:
  const std::vector<FbxVector4>* base_ = nullptr;
  std::vector<std::pair<int, FbxVector4>> moved_;  // by point
};

// The normals of a target shape by corner, in the mesh's own frame.
class ShapeNormals {
 public:
  ShapeNormals(const FbxShape& shape, const FbxMesh& mesh);

  // True if no corner has a normal.
  bool Empty() const { return elements_.empty() && base_ == nullptr; }
  // The zero vector for a corner without one. A corner's control point counts only for the first
  // polygon, or for one with more corners than there are before it: normals by control point are
  // looked up with the running number of the corner, and the output follows from that.
  FbxVector4 At(const MeshCorner& corner) const;

 private:
  const FbxMesh* mesh_;
  NormalElements elements_;  // of a shape that has normals of its own
  // Otherwise the mesh's normals, and what the shape adds at some of the points.
  const FbxLayerElementNormal* base_ = nullptr;
  std::vector<std::pair<int, FbxVector4>> offsets_;  // by point
};

// One morph of a mesh: all channels of one name.
struct MorphChannel {
  std::string name;
  bool hasPoints = false;
  ShapePoints points;                 // of the last channel that fits the mesh
  std::vector<ShapeNormals> normals;  // the last that has one for a corner counts

  // The last normal that isn't near zero; false if there is none.
  bool NormalAt(const MeshCorner& corner, FbxVector4& normal) const;
};

// The morphs of the mesh by name, with their normals and as yet without points.
std::vector<MorphChannel> MakeMorphChannels(const std::vector<MorphSource>& sources,
                                            const FbxMesh& mesh);
// The morph of that name, which must be among them.
MorphChannel& FindMorphChannel(std::vector<MorphChannel>& channels, const std::string& name);
