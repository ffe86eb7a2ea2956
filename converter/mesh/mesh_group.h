// The data of one output file on its way from the scene to the submeshes: control points, polygon
// corners and polygons by material of all meshes of a group.
//
// Everything lies in flat arrays and refers to the rest by index. A corner holds only what had to
// be computed, its normal; colours, texture coordinates and morph normals stay in the scene's layer
// elements and are looked up there when corners are compared, so that a million corners with many
// attributes cost no more than the scene itself does.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <vector>

#include "converter/mesh/layer_lookup.h"
#include "converter/mesh/morph_channel.h"
#include "converter/scene/mesh_holder.h"
#include "fbx/math/fbx_matrix.h"
#include "fbx/scene/fbx_mesh.h"

// Makes room for `count` entries behind those that are there. A plain reserve for each of many
// meshes would copy all the entries before it every time.
template <typename T>
void ReserveMore(std::vector<T>& entries, size_t count) {
  const size_t needed = entries.size() + count;
  if (needed > entries.capacity()) entries.reserve(std::max(needed, 2 * entries.capacity()));
}

struct BoneWeight {
  int32_t boneId;  // index in the skeleton
  float weight;
};

struct ControlPoint {
  FbxVector4 position;       // in the output space
  uint32_t firstWeight = 0;  // in MeshGroup::weights, in the order of bone paths
  uint32_t weightCount = 0;
  uint32_t mesh = 0;  // in MeshGroup::meshes
};

// A polygon corner. Its place in the corners of its mesh is the running number that layer elements
// by polygon vertex are indexed with.
struct PolygonVertexAttributes {
  FbxDouble3 normal;          // in world orientation, of length 1 or 0
  int32_t controlPoint = -1;  // in MeshGroup::controlPoints, -1 if the mesh has no such point
  int32_t polygon = 0;        // of its mesh
  int32_t materialIndex = 0;  // the polygon's material slot in its mesh
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
// Those of one material slot of a mesh.
struct SlotPolygons {
  bool isUsed = false;
  PolygonList list;
};

// Three corners. A corner of several triangles is the same vertex in all of them.
using Triangle = std::array<uint32_t, 3>;

// One mesh of the group, with the parts of the scene that its corners look up.
struct GroupMesh {
  MeshHolder_* holder = nullptr;
  const FbxMesh* mesh = nullptr;
  uint32_t firstControlPoint = 0;
  uint32_t controlPointCount = 0;
  uint32_t firstCorner = 0;
  FbxAMatrix meshInit;                                 // from the mesh's points to world space
  FbxAMatrix rotation;                                 // the same for normals, turning only
  const FbxLayerElementVertexColor* colors = nullptr;  // null: all corners are white
  std::vector<const FbxLayerElementUV*> uvs;
  std::vector<MorphSource> morphSources;  // as the file has them
  std::vector<MorphChannel> morphs;       // by name

  // A normal of the mesh in world orientation, of length 1 unless it is zero.
  FbxVector4 TurnNormal(const FbxVector4& normal) const {
    FbxVector4 turned = rotation.MultT(normal);
    turned.Normalize();
    return turned;
  }
};

struct MeshGroup {
  std::vector<GroupMesh> meshes;
  std::vector<ControlPoint> controlPoints;
  std::vector<BoneWeight> weights;
  std::vector<PolygonVertexAttributes> corners;
  PolygonMap polygons;

  const ControlPoint& PointOf(uint32_t corner) const {
    return controlPoints[static_cast<size_t>(corners[corner].controlPoint)];
  }
  const GroupMesh& MeshOf(uint32_t corner) const { return meshes[PointOf(corner).mesh]; }
  // Where the corner stands in its mesh.
  MeshCorner CornerOf(const GroupMesh& mesh, uint32_t corner) const {
    return {corners[corner].polygon, static_cast<int>(corner - mesh.firstCorner),
            corners[corner].controlPoint - static_cast<int>(mesh.firstControlPoint)};
  }
};
