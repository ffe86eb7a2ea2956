// Turns the meshes of the loaded scene into Cal3D mesh files and mesh listings. One group of meshes
// becomes one file, one material within a group one submesh of it. A group goes through the stages
// in the order of the private functions below, each of which has a source file: control points,
// polygon corners, triangles, vertices, morph targets, save.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "converter/base/conversion_arguments.h"
#include "converter/material/material_master_map.h"
#include "converter/mesh/mesh_group.h"
#include "converter/scene/mesh_holder.h"
#include "converter/skeleton/bone_name_map.h"

class CalCoreSubmesh;
class FbxWrapper;
class PathIndex;

// A row of a labelled listing.
struct sMesh {
  std::string name;  // encoded if the command says so
  std::string skeletonName;
  std::string materials;  // the ids, each followed by a blank
  FbxMesh* mesh = nullptr;

  friend bool operator<(const sMesh& a, const sMesh& b) { return a.name < b.name; }
};

// By name, byte-wise.
struct compareMeshReturnValues_ {
  bool operator()(const sMesh& a, const sMesh& b) const { return a < b; }
};

// The meshes on the skeleton that a command names.
struct SkeletonMeshes {
  std::string rootPath;      // of the command, "find" resolved
  std::string skeletonName;  // the path of the skeleton's root
  std::vector<MeshHolder_*> meshes;
};

// Whether the command selects the mesh.
bool isMeshNameMatch(const ConversionArguments& args, const MeshHolder_* holder);

class ExportMesh {
 public:
  using GroupMap = std::map<std::string, std::vector<MeshHolder_*>>;

  // Both must stay alive as long as the exporter.
  ExportMesh(FbxWrapper& scene, const ConversionArguments& args) : scene_(scene), args_(args) {}

  // Writes one file for each group of the selected meshes, in the order of the groups' names. False
  // if the command's root is no node, or at the first file that could not be written; the files
  // before it stay.
  bool Export(bool unused);

  // The meshes that the command selects, in the order of their unique names.
  std::vector<MeshHolder_*> BuildSelectedMeshList() const;
  // Adds the groups of the selected meshes: each by itself, or as the scene's nodes group them.
  // Meshes that no group reaches are left out.
  void BuildGroupedMeshLists(GroupMap& groups, const std::vector<MeshHolder_*>& selected) const;

  // The bones of the skeleton that the command names and, in `skeletonName`, the path of its root.
  // Empty, and "RootNode", if it names none.
  BoneNameMap BoneNameMapForSkeleton(std::string& skeletonName) const;
  // The number of those bones.
  int BoneCountInSkeletonForListing(std::string& skeletonName) const;
  // The meshes on that skeleton; all meshes of the scene, and no name, if the command has no root.
  SkeletonMeshes ListMeshesForSkeleton() const;
  // Prints the names of the listed meshes if `print` is set, and appends the rows of a labelled
  // listing to `rows` unless it is null. Returns the path of the command's root, "find" resolved.
  std::string WalkListReturnListPrint(bool print, std::vector<sMesh>* rows) const;

 private:
  bool ExportMeshesGroupedAsSubmeshes(const std::string& groupName,
                                      const std::vector<MeshHolder_*>& holders,
                                      const PathIndex& paths, const BoneNameMap& bones,
                                      MaterialMasterMap& master);

  // These append the control points of a mesh, with their weights, and set the parts of `mesh` that
  // have to do with points. False if the mesh can't be found again or has no points; then nothing
  // is appended.
  bool FillInControlPoints(GroupMesh& mesh, const PathIndex& paths, const BoneNameMap& bones,
                           MeshGroup& group) const;
  bool FillInControlPointsForMesh(GroupMesh& mesh, const FbxNode* node, const BoneNameMap& bones,
                                  MeshGroup& group) const;
  void FillInControlPointsForMorph(GroupMesh& mesh) const;
  void DumpMorphPoints(const GroupMesh& mesh, const MorphChannel& channel) const;
  bool FillInControlPointsForSkinnedBones(const GroupMesh& mesh, const BoneNameMap& bones,
                                          MeshGroup& group) const;
  static bool WeightMeshToParentNode(const GroupMesh& mesh, const FbxNode* node,
                                     const BoneNameMap& bones, MeshGroup& group);
  // A point of the mesh in the output space.
  FbxVector4 ToOutputSpace(const GroupMesh& mesh, const FbxVector4& point) const;

  // Appends the corners of a mesh, and its polygons to those of their materials. A polygon with a
  // corner whose control point isn't there is left out. False for a null mesh.
  bool FillInPolygonVertexIndexes(GroupMesh& mesh, MaterialMasterMap& master,
                                  MeshGroup& group) const;
  // Appends the corners, and the polygons of each material slot to its list.
  void FillInCorners(const GroupMesh& mesh, MeshGroup& group,
                     std::vector<SlotPolygons>& slots) const;

  void AddVertices(const MeshGroup& group, const std::vector<uint32_t>& vertices,
                   CalCoreSubmesh& submesh) const;
  // One offset for each vertex that a morph moves or gives another normal.
  void AddMorphs(const MeshGroup& group, const std::vector<uint32_t>& vertices,
                 CalCoreSubmesh& submesh) const;

  // Writes the group's file and its records. True also for a group without triangles, which gives
  // only a warning; false if the file could not be written.
  bool Save(const std::string& name, MeshGroup& group) const;

  FbxWrapper& scene_;
  const ConversionArguments& args_;
};
