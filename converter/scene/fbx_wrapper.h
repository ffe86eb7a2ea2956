// The loaded scene and everything derived from it that is expensive to compute: skeletons, meshes
// with their unique names, meshes by skeleton. Whatever points into it goes with it. Several scenes
// can be loaded side by side.
#pragma once

#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "converter/base/conversion_arguments.h"
#include "converter/scene/mesh_holder.h"
#include "converter/scene/node_visitors.h"

class FbxAnimStack;
class FbxCluster;
class FbxManager;
class FbxScene;
class SceneChannels;

// A scene file that isn't there, as commands report it; and in plain words.
class FbxMissingException : public std::runtime_error {
 public:
  explicit FbxMissingException(const std::string& fileName, const std::string& reason)
      : std::runtime_error("[" + fileName + "] does not exist"),
        complaint("'" + fileName + "' can't be opened: " + reason) {}

  const std::string complaint;
};

// A scene that can't be loaded ends the program, after its message was printed. Neither is a
// standard exception, so that the handler for failing commands lets them pass.
class FbxInitException {};
class FbxImportException {};

// A test on nodes: does a mesh's node, or a bone that it follows, belong?
class MeshCompareBase {
 public:
  virtual ~MeshCompareBase() = default;
  virtual bool MeshCompare(const FbxNode* node) = 0;
};

// True for the nodes of a skeleton.
class MeshComparePointer : public MeshCompareBase {
 public:
  explicit MeshComparePointer(NodeSpan nodes) : nodes_(nodes.begin(), nodes.end()) {}
  bool MeshCompare(const FbxNode* node) override { return nodes_.contains(node); }

 private:
  std::unordered_set<const FbxNode*> nodes_;
};

using MeshesBySkeleton = std::map<std::string, std::vector<MeshHolder_*>>;

class FbxWrapper {
 public:
  // Loads the scene. Throws FbxMissingException for a file that doesn't exist, FbxInitException or
  // FbxImportException for one that can't be read, after telling why on standard error.
  explicit FbxWrapper(const std::string& fileName);
  ~FbxWrapper();
  FbxWrapper(const FbxWrapper&) = delete;
  FbxWrapper& operator=(const FbxWrapper&) = delete;

  // The scene of `args` in the program's session, which defines this.
  static FbxWrapper* getInstance(const ConversionArguments& args);

  // Makes the scene's time mode and protocol those of the process, as loading did: the scene
  // library counts frames by them. Comes before work with frames, since another scene may have been
  // loaded.
  void UseTimeSettings() const;
  FbxScene* GetScene() const { return scene_; }
  FbxNode* GetRootNode() const;
  // Null when there is no such path; of several nodes with one path the first in walk order.
  FbxNode* GetNodeByPath(std::string_view path) const;
  void walkTree(NodeVisitorBase& visitor) const;
  static void walkTree(FbxNode* node, NodeVisitorBase& visitor) { WalkNodes(node, visitor); }

  // Each skeleton's root stands first. Computed by the first call; a later call's `room` plays no
  // part. For a room the nodes of skeletons also belong to the skeleton of the scene's root.
  const std::vector<NodeSpan>& BuildSkeletonList(bool room);

  // All meshes of the scene, in the order of their unique names.
  std::vector<MeshHolder_*> GetMeshList();
  // The meshes found so far, without looking for any.
  std::vector<MeshHolder_*> makeMeshList();
  std::vector<FbxAnimStack*> GetAnimList() const;
  // What each layer of the scene animates, found when a layer is first asked for.
  SceneChannels& Channels();

  // From skeleton path to the meshes on it, in the order of their names. A mesh can be on several
  // skeletons; the scene's root takes what no other skeleton took. Also sets the skeleton root of
  // holders that have none.
  MeshesBySkeleton BuildMeshesOnSkeletonsList(const ConversionArguments& args);
  // True if the mesh's node passes the test, or a bone that moves at least one of its points.
  static bool IsMeshOnSkeleton(const MeshHolder_& holder, MeshCompareBase& compare);

 private:
  void Load(const std::string& fileName);
  const NodeOrder& Order();
  using MeshesByName = std::map<std::string, MeshHolder_>;
  // Adds the node's mesh, if it has one. `nameCounts` holds the number of each name's next mesh.
  static void GetMeshListFromNode(FbxNode* node, std::map<std::string, int>& nameCounts,
                                  MeshesByName& meshes);

  struct ManagerDeleter {
    void operator()(FbxManager* manager) const;
  };
  std::unique_ptr<FbxManager, ManagerDeleter> manager_;
  FbxScene* scene_ = nullptr;

  std::unique_ptr<NodeOrder> order_;
  std::unique_ptr<SceneChannels> channels_;
  std::vector<FbxNode*> rootSkeleton_;  // behind the span of the scene root's skeleton
  std::vector<NodeSpan> skeletons_;
  // The holders live here, by unique mesh name, and everything else points at them.
  MeshesByName meshes_;
};

// The scene library's version.
const char* GetFBXVersion();
