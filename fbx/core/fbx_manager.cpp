#include "fbx/core/fbx_manager.h"

#include <algorithm>

#include "fbx/core/fbx_object.h"

FbxManager* FbxManager::Create() { return new FbxManager; }

void FbxManager::Destroy() { delete this; }

FbxManager::~FbxManager() {
  // All objects go at once, so nobody needs to be taken out of anybody's lists.
  for (FbxObject* object : objects_) delete object;
}

const char* FbxManager::GetVersion(bool full) { return full ? "1.0.0" : "1"; }

FbxClassId FbxManager::FindClass(std::string_view name) const {
  const std::vector<const FbxClassRecord*>& all = FbxClassRecord::All();
  const auto at = std::lower_bound(
      all.begin(), all.end(), name,
      [](const auto* record, std::string_view n) { return std::string_view(record->Name()) < n; });
  return at == all.end() || name != (*at)->Name() ? FbxClassId() : FbxClassId(*at);
}

FbxObject* FbxManager::CreateNewObjectFromClassId(FbxClassId classId, const char* name,
                                                  FbxObject* container) {
  if (!classId.IsValid() || classId.Record()->MakeObject() == nullptr) return nullptr;
  FbxObject* object = classId.Record()->MakeObject()();
  object->SetName(name == nullptr ? "" : name);
  object->SetInitialName(object->Name());
  Register(object);
  object->Construct();
  if (container != nullptr) container->ConnectSrcObject(object);
  return object;
}

void FbxManager::Register(FbxObject* object) {
  object->manager_ = this;
  object->uniqueId_ = ++lastUniqueId_;
  object->managerIndex_ = objects_.size();
  objects_.push_back(object);
}

void FbxManager::Unregister(FbxObject* object) {
  FbxObject* last = objects_.back();
  objects_[object->managerIndex_] = last;
  last->managerIndex_ = object->managerIndex_;
  objects_.pop_back();
}
