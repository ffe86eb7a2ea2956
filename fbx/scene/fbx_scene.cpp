#include "fbx/scene/fbx_scene.h"

#include <unordered_set>

#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_node_attribute.h"

FBX_OBJECT_DEFINE(FbxCollection, FbxObject, "Collection", nullptr)
FBX_OBJECT_DEFINE(FbxDocument, FbxCollection, "Document", nullptr)
FBX_OBJECT_DEFINE(FbxScene, FbxDocument, "Scene", nullptr)
FBX_OBJECT_DEFINE(FbxDocumentInfo, FbxObject, "SceneInfo", nullptr)

FbxScene* FbxObject::GetScene() const {
  // Nearly everything is connected to the scene itself; only what isn't is worth a search.
  if (auto* scene = GetDstObject<FbxScene>()) return scene;
  std::unordered_set<const FbxObject*> seen{this};
  std::vector<const FbxObject*> next{this};
  for (size_t i = 0; i < next.size(); ++i) {
    if (auto* scene = next[i]->GetDstObject<FbxScene>()) return scene;
    for (const FbxProperty& destination : next[i]->RootProperty().Destinations()) {
      const FbxObject* object = destination.GetFbxObject();
      if (seen.insert(object).second) next.push_back(object);
    }
  }
  return nullptr;
}

void FbxDocument::SetTakeInfo(const FbxTakeInfo& info) { takes_[info.name] = info; }

const FbxTakeInfo* FbxDocument::GetTakeInfo(const char* name) const {
  const auto found = takes_.find(name == nullptr ? "" : name);
  return found == takes_.end() ? nullptr : &found->second;
}

void FbxScene::Construct() {
  rootNode_ = FbxNode::Create(GetFbxManager(), "RootNode");
  globalSettings_ = FbxGlobalSettings::Create(GetFbxManager(), "GlobalSettings");
  ConnectSrcObject(rootNode_);
  ConnectSrcObject(globalSettings_);
}

void FbxScene::ConnectNotify(FbxObject& source, bool connected) {
  if (connected) return;
  // What goes may be the animation that evaluations show.
  if (&source == currentStack_) currentStack_ = nullptr;
  ++animationRevision_;
}

void FbxScene::FixInheritType(FbxNode* node) {
  const auto isSkeleton = [](const FbxNode& n) {
    const FbxNodeAttribute* attribute = n.GetNodeAttribute();
    return attribute != nullptr && attribute->GetAttributeType() == FbxNodeAttribute::eSkeleton;
  };
  std::vector<FbxNode*> nodes;
  if (node != nullptr) nodes.push_back(node);
  for (size_t i = 0; i < nodes.size(); ++i) {
    FbxNode& parent = *nodes[i];
    for (FbxNode* child : parent.Children()) {
      nodes.push_back(child);
      FbxProperty type = child->Property(&FbxNode::PropertyIndex::inheritType);
      if (child->GetCorrectInheritType() && isSkeleton(*child) && !isSkeleton(parent) &&
          type.Get<int>() == eInheritRrs) {
        type.Set(int{eInheritRSrs});
      }
    }
  }
}
