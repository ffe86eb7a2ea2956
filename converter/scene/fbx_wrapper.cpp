#include "converter/scene/fbx_wrapper.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <sys/stat.h>

#include "converter/base/complaint.h"
#include "converter/base/names.h"
#include "converter/base/records.h"
#include "converter/scene/node_paths.h"
#include "converter/scene/node_visitors.h"
#include "converter/scene/scene_channels.h"
#include "fbx/anim/fbx_animation.h"
#include "fbx/core/fbx_object.h"
#include "fbx/reader/fbx_importer.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_scene.h"

namespace {

template <typename T>
T* RequireObject(T* object, const char* message) {
  if (object == nullptr) {
    Print(message);
    Complain(message);
    throw FbxInitException();
  }
  return object;
}

// `what` couldn't be done with the file.
void ComplainOfFile(const FbxImporter& importer, const std::string& fileName, const char* what) {
  std::string text = "'" + fileName + "' can't be " + what + ": ";
  text += importer.GetSystemError() == 0
              ? importer.GetStatus().GetErrorString()
              : std::generic_category().message(importer.GetSystemError());
  int major = 0;
  int minor = 0;
  int revision = 0;
  importer.GetFileVersion(major, minor, revision);
  if (major != 0 && (major < 6 || major > 7)) {
    text += ", it is of FBX version " + std::to_string(major) + "." + std::to_string(minor) +
            " and versions 6 and 7 are read";
  }
  Complain(text);
}

// True if the cluster moves at least one control point.
bool HasInfluence(const FbxCluster& cluster) {
  return std::any_of(cluster.weights.begin(), cluster.weights.end(),
                     [](double weight) { return weight != 0.0; });
}

// The nodes that tie a mesh to a skeleton: its own, and the bones that move any of its points.
std::vector<const FbxNode*> TyingNodes(const MeshHolder_& holder) {
  std::vector<const FbxNode*> nodes;
  if (holder.node != nullptr) nodes.push_back(holder.node);
  const int skins = holder.mesh->GetDeformerCount(FbxDeformer::eSkin);
  for (int s = 0; s < skins; ++s) {
    const auto* skin = static_cast<FbxSkin*>(holder.mesh->GetDeformer(s, FbxDeformer::eSkin));
    const int clusters = skin->GetClusterCount();
    for (int c = 0; c < clusters; ++c) {
      const FbxCluster* cluster = skin->GetCluster(c);
      const FbxNode* link = cluster->GetLink();
      if (link != nullptr && HasInfluence(*cluster)) nodes.push_back(link);
    }
  }
  return nodes;
}

}  // namespace

FbxWrapper::FbxWrapper(const std::string& fileName) { Load(fileName); }

FbxWrapper::~FbxWrapper() = default;

void FbxWrapper::ManagerDeleter::operator()(FbxManager* manager) const { manager->Destroy(); }

void FbxWrapper::Load(const std::string& fileName) {
  if (struct stat status{}; stat(fileName.c_str(), &status) != 0) {
    throw FbxMissingException(fileName, std::generic_category().message(errno));
  }
  manager_.reset(RequireObject(FbxManager::Create(), "Error creating FbxManager."));
  FbxIOSettings* settings = RequireObject(FbxIOSettings::Create(manager_.get(), "IOSRoot"),
                                          "Error creating FbxIOSettings.");
  FbxImporter* importer =
      RequireObject(FbxImporter::Create(manager_.get(), ""), "Error creating FbxImporter.");
  if (!importer->Initialize(fileName.c_str(), -1, settings)) {
    PrintFormatted("Error calling FbxImporter.Initialize on file %s: %s\n", fileName.c_str(),
                   importer->GetStatus().GetErrorString());
    ComplainOfFile(*importer, fileName, "opened");
    throw FbxInitException();
  }
  scene_ = RequireObject(FbxScene::Create(manager_.get(), ""), "Error creating FbxScene.");
  if (!importer->Import(scene_, false)) {
    PrintFormatted("Error calling FbxImporter.Import: %s\n",
                   importer->GetStatus().GetErrorString());
    ComplainOfFile(*importer, fileName, "read");
    throw FbxImportException();
  }
  for (const std::string& message : importer->GetMessages()) Complain(message);
  importer->Destroy();
  FbxAxisSystem(FbxAxisSystem::eMax).ConvertScene(scene_);
}

void FbxWrapper::UseTimeSettings() const {
  const FbxGlobalSettings& settings = scene_->GetGlobalSettings();
  FbxTime::SetGlobalTimeMode(settings.GetTimeMode(), settings.GetCustomFrameRate());
  FbxTime::SetGlobalTimeProtocol(settings.GetTimeProtocol());
}

FbxNode* FbxWrapper::GetRootNode() const { return scene_->GetRootNode(); }

FbxNode* FbxWrapper::GetNodeByPath(std::string_view path) const {
  const std::vector<std::string> parts = Split(path, '/');
  if (parts.empty() || GetRootNode()->Name() != parts[0]) return nullptr;
  // Siblings may share a name, so each of them is tried before the search goes back up.
  std::vector<std::pair<FbxNode*, int>> tried{{GetRootNode(), 0}};
  while (!tried.empty()) {
    auto& [node, next] = tried.back();
    if (tried.size() == parts.size()) return node;
    const std::vector<FbxNode*>& children = node->Children();
    while (next < static_cast<int>(children.size()) &&
           children[static_cast<size_t>(next)]->Name() != parts[tried.size()]) {
      ++next;
    }
    if (next == static_cast<int>(children.size())) {
      tried.pop_back();
    } else {
      FbxNode* child = children[static_cast<size_t>(next++)];
      tried.emplace_back(child, 0);
    }
  }
  return nullptr;
}

void FbxWrapper::walkTree(NodeVisitorBase& visitor) const { WalkNodes(GetRootNode(), visitor); }

const NodeOrder& FbxWrapper::Order() {
  if (order_ == nullptr) order_ = std::make_unique<NodeOrder>(GetRootNode());
  return *order_;
}

const std::vector<NodeSpan>& FbxWrapper::BuildSkeletonList(bool room) {
  if (!skeletons_.empty()) return skeletons_;
  SkeletonRootFinderVisitor finder(Order());
  walkTree(finder);
  RootNodeSkeletonBuilderVisitor rest(room ? std::vector<NodeSpan>() : finder.skeletons);
  walkTree(rest);
  // Built aside and put in place whole, as all that is kept here: a command that runs out of memory
  // on the way leaves no half list to the next.
  std::vector<NodeSpan> skeletons = std::move(finder.skeletons);
  if (rest.sawMesh && rest.nodes.size() >= 2) {
    skeletons.emplace_back(rest.nodes);
    rootSkeleton_ = std::move(rest.nodes);
  }
  skeletons_ = std::move(skeletons);
  return skeletons_;
}

std::vector<MeshHolder_*> FbxWrapper::GetMeshList() {
  if (meshes_.empty()) {
    MeshesByName meshes;
    std::map<std::string, int> nameCounts;
    for (FbxNode* node : Order().All()) GetMeshListFromNode(node, nameCounts, meshes);
    meshes_ = std::move(meshes);
  }
  return makeMeshList();
}

std::vector<MeshHolder_*> FbxWrapper::makeMeshList() {
  std::vector<MeshHolder_*> list;
  list.reserve(meshes_.size());
  for (auto& [name, holder] : meshes_) list.push_back(&holder);
  return list;
}

void FbxWrapper::GetMeshListFromNode(FbxNode* node, std::map<std::string, int>& nameCounts,
                                     MeshesByName& meshes) {
  FbxMesh* mesh = node->GetMesh();
  if (mesh == nullptr) return;
  int& count = nameCounts[node->Name()];
  std::string name = count == 0 ? node->Name() : node->Name() + "_" + std::to_string(count);
  // A scene may hold a mesh that is really called "Body_1" beside two called "Body"; counting on
  // until the name is free keeps all three.
  while (meshes.contains(name)) name = node->Name() + "_" + std::to_string(++count);
  ++count;
  MeshHolder_ holder;
  holder.mesh = mesh;
  holder.node = node;
  holder.path = BuildNodeName({}, node, nullptr);
  holder.name = name;
  meshes.emplace(std::move(name), std::move(holder));
}

std::vector<FbxAnimStack*> FbxWrapper::GetAnimList() const {
  std::vector<FbxAnimStack*> stacks;
  for (int i = 0; i < scene_->GetSrcObjectCount<FbxAnimStack>(); ++i) {
    stacks.push_back(scene_->GetSrcObject<FbxAnimStack>(i));
  }
  return stacks;
}

SceneChannels& FbxWrapper::Channels() {
  if (channels_ == nullptr) channels_ = std::make_unique<SceneChannels>(Order());
  return *channels_;
}

MeshesBySkeleton FbxWrapper::BuildMeshesOnSkeletonsList(const ConversionArguments& args) {
  const std::vector<NodeSpan>& skeletons = BuildSkeletonList(args.treatAsRoom);
  GetMeshList();
  std::span<const NodeSpan> named(skeletons);
  if (!rootSkeleton_.empty()) named = named.first(named.size() - 1);
  SkeletonNesting nesting(Order(), named);
  MeshComparePointer atRoot(rootSkeleton_);
  std::vector<std::vector<MeshHolder_*>> bySkeleton(skeletons.size());
  for (auto& [name, holder] : meshes_) {
    const std::vector<int> around = nesting.Around(TyingNodes(holder));
    for (const int skeleton : around) bySkeleton[static_cast<size_t>(skeleton)].push_back(&holder);
    if (around.empty() && IsMeshOnSkeleton(holder, atRoot)) bySkeleton.back().push_back(&holder);
  }
  MeshesBySkeleton result;
  for (size_t i = 0; i < skeletons.size(); ++i) {
    // Moved out, so that one of the two lists is gone when the next is made.
    const std::vector<MeshHolder_*> onSkeleton = std::move(bySkeleton[i]);
    if (onSkeleton.empty()) continue;
    for (MeshHolder_* holder : onSkeleton) {
      if (holder->skeletonRoot == nullptr) holder->skeletonRoot = skeletons[i].front();
    }
    std::vector<MeshHolder_*>& meshes = result[BuildNodeName({}, skeletons[i].front(), nullptr)];
    meshes.insert(meshes.end(), onSkeleton.begin(), onSkeleton.end());
  }
  return result;
}

bool FbxWrapper::IsMeshOnSkeleton(const MeshHolder_& holder, MeshCompareBase& compare) {
  const std::vector<const FbxNode*> nodes = TyingNodes(holder);
  return std::any_of(nodes.begin(), nodes.end(),
                     [&](const FbxNode* node) { return compare.MeshCompare(node); });
}

const char* GetFBXVersion() { return FbxManager::GetVersion(true); }
