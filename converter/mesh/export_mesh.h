// Turns the meshes of the loaded scene into Cal3D mesh files and mesh listings. One group of meshes
// becomes one file, one material within a group one submesh of it. The class is the door; the work
// is done by the stages of mesh_stages.h.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "converter/base/conversion_arguments.h"
#include "converter/mesh/mesh_stages.h"
#include "converter/scene/mesh_holder.h"
#include "converter/skeleton/skeleton_roots.h"

class FbxWrapper;

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

class ExportMesh {
 public:
  using GroupMap = MeshGroupMap;

  // Both must stay alive as long as the exporter.
  ExportMesh(FbxWrapper& scene, const ConversionArguments& args)
      : scene_(scene), args_(args), trace_(args.verbosity) {}

  // Writes one file for each group of the selected meshes, in the order of the groups' names. False
  // if the command's root is no node, or at the first file that could not be written; the files
  // before it stay.
  bool Export(bool unused);

  // The meshes that the command selects, in the order of their unique names.
  std::vector<MeshHolder_*> BuildSelectedMeshList() const;
  // Sets the groups of the selected meshes: each by itself, or as the scene's nodes group them.
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
  // Doors to the stages.
  bool FillInControlPoints(GroupMesh& mesh, const FbxNode* node, const BoneNameMap& bones) const;
  bool FillInPolygonVertexIndexes(GroupMesh& mesh, MaterialMasterMap& master) const;
  bool Save(MeshGroup& group) const;

  FbxWrapper& scene_;
  const ConversionArguments& args_;
  MeshTrace trace_;
};
