// A loaded scene. Every object of a file is a source of the scene, in the order of reading, and so
// scene.GetSrcObject<T>(i) lists all objects of a class.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "fbx/core/fbx_object.h"
#include "fbx/core/fbx_time.h"
#include "fbx/scene/fbx_global_settings.h"

class FbxAnimEvaluator;
class FbxAnimStack;
class FbxNode;

class FbxCollection : public FbxObject {
  FBX_OBJECT(FbxCollection)
};

// What a take of the file's list says; the animation itself is in objects.
struct FbxTakeInfo {
  std::string name;
  FbxTimeSpan localTime;
  FbxTimeSpan referenceTime;
};

class FbxDocument : public FbxCollection {
  FBX_OBJECT(FbxDocument)
  void SetTakeInfo(const FbxTakeInfo& info);
  // Null for an unknown name.
  const FbxTakeInfo* GetTakeInfo(const char* name) const;

 private:
  std::unordered_map<std::string, FbxTakeInfo> takes_;
};

class FbxScene : public FbxDocument {
  FBX_OBJECT(FbxScene)

  // The node "RootNode", which exists from creation.
  FbxNode* GetRootNode() const { return rootNode_; }
  FbxGlobalSettings& GetGlobalSettings() const { return *globalSettings_; }

  // The stack whose animation evaluations show; null for none. Setting it makes the evaluator
  // forget what it has computed.
  void SetCurrentAnimationStack(FbxAnimStack* stack);
  FbxAnimStack* GetCurrentAnimationStack() const;
  // Made on first use.
  FbxAnimEvaluator& GetAnimationEvaluator() const;
  // Changes whenever animation that was connected may have gone, or another stack is current.
  uint64_t GetAnimationRevision() const { return animationRevision_; }

  // Gives skeleton children that are marked for it, and whose parent is no skeleton, inherit type 1
  // instead of 2. No reader marks any node.
  void FixInheritType(FbxNode* node);

 protected:
  void Construct() override;
  void ConnectNotify(FbxObject& source, bool connected) override;

 private:
  FbxNode* rootNode_ = nullptr;
  FbxGlobalSettings* globalSettings_ = nullptr;
  FbxObject* currentStack_ = nullptr;
  uint64_t animationRevision_ = 0;
  // A shared pointer, since it can be destroyed where the class isn't known.
  mutable std::shared_ptr<FbxAnimEvaluator> evaluator_;
};

class FbxDocumentInfo : public FbxObject {
  FBX_OBJECT(FbxDocumentInfo)
};
