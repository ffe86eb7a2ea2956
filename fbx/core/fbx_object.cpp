#include "fbx/core/fbx_object.h"

#include <algorithm>
#include <unordered_map>

#include "fbx/core/fbx_property_page.h"

const FbxClassRecord FbxObject::kClassRecord("FbxObject", nullptr, &FbxObject::MakeObject, "",
                                             nullptr);

struct FbxObject::ClassLists {
  // Of the sources, in their order: a scene's objects are too many to be looked at for each list.
  std::vector<FbxClassId> classes;
  std::unordered_map<const FbxClassRecord*, std::vector<FbxObject*>> lists;
};

FbxObject::FbxObject() = default;
FbxObject::~FbxObject() = default;

FbxObject* FbxObject::CreateOfClass(FbxManager* manager, FbxClassId classId, const char* name) {
  return manager == nullptr ? nullptr : manager->CreateNewObjectFromClassId(classId, name);
}

void FbxObject::Destroy(bool recursive) {
  // Collected first and freed last, without recursion: chains of sources can be long.
  std::vector<FbxObject*> doomed{this};
  for (size_t i = 0; i < doomed.size(); ++i) {
    std::vector<FbxObject*> sources;
    if (recursive) {
      for (const FbxProperty& source : doomed[i]->connections_.sources) {
        sources.push_back(source.GetFbxObject());
      }
    }
    doomed[i]->Disconnect();
    for (FbxObject* source : sources) {
      if (source->connections_.destinations.empty() &&
          std::find(doomed.begin(), doomed.end(), source) == doomed.end()) {
        doomed.push_back(source);
      }
    }
  }
  for (FbxObject* object : doomed) {
    object->manager_->Unregister(object);
    delete object;
  }
}

void FbxObject::ConnectNotify(FbxObject& /*source*/, bool /*connected*/) {}

void FbxObject::Disconnect() {
  const auto detach = [](const FbxProperty& end, FbxConnectionLists& lists) {
    for (const FbxProperty& source : lists.sources) {
      // A node, for one, is its children's parent.
      if (end.IsRoot() && source.IsRoot()) {
        end.GetFbxObject()->ConnectNotify(*source.GetFbxObject(), false);
      }
      if (FbxConnectionLists* other = source.Connections()) EraseEnd(other->destinations, end);
    }
    for (const FbxProperty& destination : lists.destinations) {
      FbxObject& object = *destination.GetFbxObject();
      if (end.IsRoot() && destination.IsRoot()) object.ConnectNotify(*end.GetFbxObject(), false);
      if (FbxConnectionLists* other = destination.Connections()) EraseEnd(other->sources, end);
      object.ForgetClassLists();
    }
    lists.sources.clear();
    lists.destinations.clear();
  };
  if (store_ != nullptr) {
    store_->ForEachLocal([&](FbxPropertyLocal& local) {
      if (local.rare != nullptr) detach(FbxProperty(this, local.index), local.rare->connections);
    });
  }
  detach(RootProperty(), connections_);
  ForgetClassLists();
}

void FbxObject::SetName(std::string name) {
  if (initialName_ == nullptr && name != name_) {
    initialName_ = std::make_unique<const std::string>(name_);
  }
  name_ = std::move(name);
}

void FbxObject::SetInitialName(std::string_view name) {
  initialName_ = name == name_ ? nullptr : std::make_unique<const std::string>(name);
}

FbxPropertyStore& FbxObject::MakeStore() const {
  store_ = std::make_unique<FbxPropertyStore>(GetClassId().Record()->Page());
  return *store_;
}

FbxProperty FbxObject::GetFirstProperty() const {
  return Store().Count() > 0 ? FbxProperty(const_cast<FbxObject*>(this), 0) : FbxProperty();
}

FbxProperty FbxObject::GetNextProperty(const FbxProperty& property) const {
  if (property.object_ != this || property.index_ + 1 >= Store().Count()) return {};
  return {property.object_, property.index_ + 1};
}

uint64_t FbxObject::GetPropertyRevision() const {
  return store_ == nullptr ? 0 : store_->Revision();
}

void FbxObject::ReserveProperties(int count) {
  constexpr int kMostReserved = 64;
  Store().Reserve(static_cast<size_t>(std::clamp(count, 0, kMostReserved)));
}

bool FbxObject::SetPropertyTemplate(const FbxObject& source) {
  return source.GetClassId() == GetClassId() && Store().SetTemplate(&source.Store());
}

void FbxObject::ForgetClassLists() { sourcesByClass_.reset(); }

bool FbxObject::HasFewSources() const {
  constexpr size_t kFew = 8;
  return connections_.sources.size() <= kFew;
}

const std::vector<FbxObject*>& FbxObject::SourcesOfClass(FbxClassId classId) const {
  if (sourcesByClass_ == nullptr) {
    auto made = std::make_unique<ClassLists>();
    made->classes.reserve(connections_.sources.size());
    for (const FbxProperty& source : connections_.sources) {
      made->classes.push_back(source.IsRoot() ? source.GetFbxObject()->GetClassId() : FbxClassId());
    }
    sourcesByClass_ = std::move(made);
  }
  auto& [classes, lists] = *sourcesByClass_;
  const auto found = lists.find(classId.Record());
  if (found != lists.end()) return found->second;
  std::vector<FbxObject*> list;
  for (size_t i = 0; i < classes.size(); ++i) {
    if (classes[i].Is(classId)) list.push_back(connections_.sources[i].GetFbxObject());
  }
  return lists.emplace(classId.Record(), std::move(list)).first->second;
}

int FbxObject::GetSrcObjectCount(const FbxCriteria& criteria) const {
  if (HasFewSources()) return RootProperty().GetSrcObjectCount(criteria);
  return static_cast<int>(SourcesOfClass(criteria.ClassId()).size());
}

FbxObject* FbxObject::GetSrcObject(const FbxCriteria& criteria, int index) const {
  if (HasFewSources()) return RootProperty().GetSrcObject(criteria, index);
  const std::vector<FbxObject*>& list = SourcesOfClass(criteria.ClassId());
  return index < 0 || static_cast<size_t>(index) >= list.size() ? nullptr
                                                                : list[static_cast<size_t>(index)];
}

FbxObject* FbxObject::GetDstObject(const FbxCriteria& criteria, int index) const {
  for (const FbxProperty& destination : connections_.destinations) {
    if (destination.IsRoot() && criteria.Matches(*destination.GetFbxObject()) && index-- == 0) {
      return destination.GetFbxObject();
    }
  }
  return nullptr;
}

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
  if (name != nullptr) object->name_ = name;
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
