// A Cal3D vertex has one normal, one colour and one texture coordinate, a control point of the
// scene as many as it has corners. So each control point is split into as many vertices as its
// corners have distinct attributes, material slots and morph normals among them.
#pragma once

#include <bitset>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "converter/mesh/mesh_group.h"
#include "converter/mesh/mesh_trace.h"

// The order of corners, from high to low: by control point, normal, colour (red, blue, green,
// alpha), texture coordinates, morph normals, material slot. Comparisons are exact, but for morph
// normals, which may be 1e-6 apart, and a NaN in a normal or a colour ends the comparison as equal.
class ComparePolygonVertexPair {
 public:
  explicit ComparePolygonVertexPair(const GroupMesh& mesh) : mesh_(mesh) {}

  // Whether corner `a` stands before corner `b`.
  bool operator()(uint32_t a, uint32_t b) const { return Compare(a, b) > 0; }
  // Whether the corners make one vertex.
  bool IsSame(uint32_t a, uint32_t b) const { return Compare(a, b) == 0; }

 private:
  // Above 0 if `a` stands before `b`, below 0 if it stands behind, 0 if they are one vertex.
  int Compare(uint32_t a, uint32_t b) const;
  int CompareMorphNormals(const MeshCorner& a, const MeshCorner& b) const;
  // Of all morphs that turn the mesh's own normals.
  int CompareMovedNormals(const std::optional<BaseNormal>& a,
                          const std::optional<BaseNormal>& b) const;
  int CompareNormals(const FbxVector4& a, const FbxVector4& b) const;

  const GroupMesh& mesh_;
};

// The attributes of a corner as they lie in the scene: white, or (0, 0), where it has none.
const FbxColor& getColor(const GroupMesh& mesh, const MeshCorner& corner);
// In the order of the mesh's UV elements.
inline const FbxVector2& getUV(const CornerEntries<FbxVector2>& uvs, const MeshCorner& corner) {
  static constexpr FbxVector2 kNone;
  const FbxVector2* uv = uvs.At(corner);
  return uv == nullptr ? kNone : *uv;
}

// Splits the control points of a mesh, one submesh after the other. What it needs for each control
// point is kept from submesh to submesh, so that many small ones of a large mesh cost what they
// hold.
class VertexSplitter {
 public:
  VertexSplitter(GroupMesh& mesh, const MeshTrace& trace);

  // Splits the control points of the triangles, whose corners must belong to no earlier submesh.
  // Returns for each vertex the corner that was the first to have its attributes. Vertices stand by
  // control point and on each in the order in which the triangles reach them.
  std::vector<uint32_t> BuildControlPointNormalGroupMap(const std::vector<Triangle>& triangles);
  // The vertex of a corner of those triangles.
  uint32_t VertexOf(uint32_t corner) const {
    return vertices_[static_cast<size_t>(mesh_.corners[corner].vertexIndex)].number;
  }

 private:
  static constexpr uint32_t kNone = 0xFFFFFFFF;

  // A vertex in the list of its control point. Corners refer to it by its place in vertices_, which
  // is the order of appearance over all control points.
  struct Vertex {
    uint32_t corner;
    uint32_t next;
    uint32_t number;  // in the submesh
  };
  // The vertices of a control point that has so many that a search from the front would take too
  // long, from the place on where searching gives up.
  //
  // A NaN in a normal or a colour ends a comparison, so such a corner is the same vertex as every
  // one that agrees with it before the NaN; and the first of all that are the same counts. Hashes
  // of what stands before a NaN find it. All other vertices are found by a hash of what is compared
  // exactly, and of the cell of space that their morph normals add up to.
  struct LongList {
    uint32_t first = 0;
    uint32_t last = 0;
    std::bitset<7> nanPlaces;  // first NaNs of vertices
    std::bitset<7> prefixes;   // lengths of beginnings by which vertices can be found
    std::unordered_map<uint64_t, std::vector<uint32_t>> byHash;  // in the order of the list
  };

  uint32_t FindOrAdd(uint32_t corner);
  uint32_t FindOrAddInLongList(uint32_t corner, uint32_t last);
  // A sum of the corner's morph normals, each with its weight. Those of equal corners are apart by
  // no more than the tolerance times the sum of weights.
  FbxVector4 SumOfMorphNormals(uint32_t corner) const;
  // kNone if none is the same as the corner.
  uint32_t FindInLongList(LongList& list, uint32_t corner);
  void EnterInLongList(LongList& list, uint32_t vertex);
  uint32_t Append(uint32_t corner, uint32_t previous);
  std::vector<uint32_t> NumberVertices();
  void CheckCorners(const std::vector<Triangle>& triangles,
                    const std::vector<uint32_t>& vertices) const;

  GroupMesh& mesh_;
  const MeshTrace& trace_;
  ComparePolygonVertexPair compare_;
  std::vector<double> weights_;  // of the morph channels in SumOfMorphNormals
  double baseWeight_ = 0.0;      // of all channels that have base normals together
  double reach_ = 0.0;           // how far sums of equal corners may be apart
  std::vector<uint32_t> heads_;  // by control point, into vertices_
  std::vector<int32_t> used_;    // control points with a list
  std::vector<Vertex> vertices_;
  std::unordered_map<int32_t, LongList> longLists_;
};
