// The data of one output file on its way from the scene to the submeshes.
//
// Meshes of a group go through the stages one after the other, and each is dropped when its
// submeshes are filled: a small scene may show one geometry from thousands of nodes. That is
// possible because a control point belongs to one mesh, so that neither triangles nor vertices of
// two meshes depend on each other.
//
// Everything lies in flat arrays and refers to the rest by index. A corner holds only what had to
// be computed, its normal; colours, texture coordinates and morph normals stay in the scene's layer
// elements and are looked up there when corners are compared, so that a million corners with many
// attributes cost no more than the scene itself does.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "cal3d/model/core_mesh.h"
#include "converter/mesh/layer_lookup.h"
#include "converter/mesh/morph_channel.h"
#include "converter/scene/mesh_holder.h"
#include "fbx/math/fbx_matrix.h"
#include "fbx/scene/fbx_mesh.h"

struct BoneWeight {
  int32_t boneId;  // index in the skeleton
  float weight;
};

struct ControlPoint {
  FbxVector4 position;       // in the output space
  uint32_t firstWeight = 0;  // in GroupMesh::weights, in the order of bone paths
  uint32_t weightCount = 0;
};

// A polygon corner. Its place in the corners of its mesh is the running number that layer elements
// by polygon vertex are indexed with.
struct PolygonVertexAttributes {
  FbxDouble3 normal;          // in world orientation, of length 1 or 0
  int32_t controlPoint = -1;  // -1 if the mesh has no such point
  int32_t polygon = 0;
  int32_t materialIndex = 0;  // the polygon's material slot
  int32_t vertexIndex = -1;   // of the vertex in the making, -1 until it has one
};

// A run of corners in the winding order of the file.
struct Polygon {
  uint32_t firstCorner;
  uint32_t cornerCount;
};
using PolygonList = std::vector<Polygon>;
// By material id. A material all of whose polygons had to be left out has an empty list.
using PolygonMap = std::map<int, PolygonList>;

// Three corners. A corner of several triangles is the same vertex in all of them.
using Triangle = std::array<uint32_t, 3>;

// The mesh at work.
struct GroupMesh {
  GroupMesh() = default;
  explicit GroupMesh(MeshHolder_& meshHolder) : holder(&meshHolder), mesh(meshHolder.mesh) {
    if (mesh != nullptr) morphs = MeshMorphs(*mesh);
  }

  MeshHolder_* holder = nullptr;
  const FbxMesh* mesh = nullptr;  // null for a holder without one, which gives nothing
  FbxAMatrix meshInit;            // from the mesh's points to world space
  FbxAMatrix rotation;            // the same for normals, turning only
  std::vector<ControlPoint> controlPoints;
  std::vector<BoneWeight> weights;
  std::vector<PolygonVertexAttributes> corners;
  PolygonMap polygons;
  const FbxLayerElementVertexColor* colors = nullptr;  // null: all corners are white
  std::vector<CornerEntries<FbxVector2>> uvs;
  MeshMorphs morphs;

  const ControlPoint& PointOf(uint32_t corner) const {
    return controlPoints[static_cast<size_t>(corners[corner].controlPoint)];
  }
  MeshCorner CornerOf(uint32_t corner) const {
    return {corners[corner].polygon, static_cast<int>(corner), corners[corner].controlPoint};
  }
  // A normal of the mesh in world orientation, of length 1 unless it is zero.
  FbxVector4 TurnNormal(const FbxVector4& normal) const {
    FbxVector4 turned = rotation.MultT(normal);
    turned.Normalize();
    return turned;
  }
};

// The box around control points. What lies wholly below 0 on an axis measures up to about 0 there,
// not up to its own upper end: the size warnings of avatars standing on the ground count on it.
struct Bounds {
  FbxDouble3 min{std::numeric_limits<float>::max(), std::numeric_limits<float>::max(),
                 std::numeric_limits<float>::max()};
  FbxDouble3 max{std::numeric_limits<float>::min(), std::numeric_limits<float>::min(),
                 std::numeric_limits<float>::min()};

  void Extend(const FbxVector4& point) {
    for (size_t i = 0; i < 3; ++i) {
      if (point[i] < min[i]) min[i] = point[i];
      if (point[i] > max[i]) max[i] = point[i];
    }
  }
};

// The offsets of a submesh's vertices by morph, each list in the order of vertices.
struct MorphListMap {
  std::map<std::string, cal3d::SSEArray<VertexOffset>> offsets;
  uint64_t count = 0;        // over all morphs
  std::string tooManyError;  // if the submesh goes without morphs, why
};

// The submesh of one material id.
struct SubmeshDraft {
  boost::shared_ptr<CalCoreSubmesh> submesh;  // null until there is a triangle
  MorphListMap morphs;
  // What the verbose modes show of it, stage by stage over all meshes.
  std::string triangulationTrace;
  std::string morphTrace;
};

struct MeshGroup {
  std::string name;
  size_t controlPointCount = 0;  // of all its meshes, those still to come included
  Bounds bounds;
  std::map<int, SubmeshDraft> submeshes;  // by material id, those without triangles included
};
