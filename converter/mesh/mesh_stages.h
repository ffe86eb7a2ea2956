// The way of a group of meshes from the scene to a file, in the order of the declarations below.
// Each stage is a free function over plain data and stands in a source file:
//
//   export_mesh.cpp       which meshes a command means, and which of them share a file
//   control_points.cpp    points in the output space, and their weights
//   polygon_corners.cpp   corners with their normals, polygons by material
//   triangulation.cpp     polygons become triangles
//   vertex_splitting.cpp  corners become vertices
//   morph_targets.cpp     blend shapes become offsets of vertices
//   save_mesh.cpp         all of that becomes a Cal3D mesh, its file, its warnings and its records
//
// The stages leave what the verbose modes show to mesh_trace.h.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "cal3d/model/core_mesh.h"
#include "converter/base/conversion_arguments.h"
#include "converter/material/material_master_map.h"
#include "converter/mesh/mesh_group.h"
#include "converter/mesh/mesh_trace.h"
#include "converter/scene/mesh_holder.h"
#include "converter/skeleton/skeleton_roots.h"

class FbxWrapper;
class PathIndex;

using MeshGroupMap = std::map<std::string, std::vector<MeshHolder_*>>;

// Whether the command selects the mesh.
bool isMeshNameMatch(const ConversionArguments& args, const MeshHolder_* holder);
// The meshes that the command selects, in the order of their unique names.
std::vector<MeshHolder_*> SelectMeshes(FbxWrapper& scene, const ConversionArguments& args,
                                       const MeshTrace& trace);
// The groups of the selected meshes: each by itself, or as the scene's nodes group them. Meshes
// that no group reaches are left out.
MeshGroupMap GroupMeshes(const FbxWrapper& scene, const ConversionArguments& args,
                         const std::vector<MeshHolder_*>& selected);

// The node that a search by the holder's path finds, which may be another one of that path. Null if
// there is none, or if it carries no mesh.
const FbxNode* FindMeshNode(const FbxWrapper& scene, const PathIndex& paths,
                            const MeshHolder_& holder);
// Takes over the control points of the mesh, with their weights and where morphs move them, and
// sets `meshInit`. False if the mesh has no points.
bool FillInControlPointsForMesh(GroupMesh& mesh, const FbxNode* node, const BoneNameMap& bones,
                                const ConversionArguments& args, const MeshTrace& trace);
// A point of the mesh in the output space.
FbxVector4 ToOutputSpace(const GroupMesh& mesh, const FbxVector4& point,
                         const ConversionArguments& args);

// Takes over the corners of the mesh, and sorts its polygons by the ids of their materials. A
// polygon with a corner whose control point isn't there is left out. False for a null mesh.
bool FillInPolygonVertexIndexes(GroupMesh& mesh, MaterialMasterMap& master,
                                const ConversionArguments& args, const MeshTrace& trace);

// The triangles of all polygons, in order, which keep corners and winding: a convex polygon becomes
// a fan, any other is clipped by ears. A triangle of a fan or an ear is dropped if two of its
// corners are at one place; so are all in a group of fewer than three control points.
std::vector<Triangle> Triangulate(const GroupMesh& mesh, size_t groupPointCount,
                                  const PolygonList& polygons, const MeshTrace& trace);

// Where the morphs move the points of the mesh. A channel whose last target has another number of
// points moves none.
void FillInControlPointsForMorph(GroupMesh& mesh, const ConversionArguments& args,
                                 const MeshTrace& trace);
// Adds the offsets of the vertices, of which `firstVertex` is the first in the submesh: one for
// each that a morph moves or gives another normal.
void BuildMorphListMap(MorphListMap& map, const GroupMesh& mesh,
                       const std::vector<uint32_t>& vertices, uint32_t firstVertex,
                       const ConversionArguments& args, const MeshTrace& trace);
// Adds the morph targets, in the order of their names, and empties the map.
void AddMorphs(MorphListMap& map, CalCoreSubmesh& submesh);

// Adds the mesh's triangles, vertices and morphs to the submeshes of their materials.
void AddToSubmeshes(GroupMesh& mesh, MeshGroup& group, const ConversionArguments& args,
                    const MeshTrace& trace);
// The submeshes that have triangles. Leaves the group without them.
CalCoreMesh BuildMesh(MeshGroup& group);

// Builds the mesh and writes its file and its records. True also for a mesh without submeshes,
// which gives only a warning; false if the file could not be written.
bool SaveMesh(const ConversionArguments& args, MeshGroup& group, const MeshTrace& trace);
