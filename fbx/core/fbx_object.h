// The base of everything in a scene. An object has a runtime class, a name, properties and
// connections; relations between objects are connections and nothing else, and the typed accessors
// of the classes above are queries over the connection lists. Objects are made by their class's
// Create, belong to a manager, which makes them, and die with it or by Destroy.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fbx/core/fbx_class_id.h"
#include "fbx/core/fbx_property.h"

class FbxManager;
class FbxObject;
class FbxScene;

// Stands first in the body of every class of scene objects.
#define FBX_OBJECT(ClassName)                                              \
 public:                                                                   \
  static const FbxClassRecord kClassRecord;                                \
  static constexpr FbxClassId ClassId{&kClassRecord};                      \
  FbxClassId GetClassId() const override { return ClassId; }               \
  /* Null for a null manager. The manager owns the object. */              \
  static ClassName* Create(FbxManager* manager, const char* name) {        \
    return static_cast<ClassName*>(CreateOfClass(manager, ClassId, name)); \
  }                                                                        \
                                                                           \
 protected:                                                                \
  static FbxObject* MakeObject() { return new ClassName; }                 \
                                                                           \
 public:

// Stands in the source file of the class, with its parent, the type name of its records in files,
// and the function that declares its properties, or null.
#define FBX_OBJECT_DEFINE(ClassName, Parent, fileType, declare)                   \
  const FbxClassRecord ClassName::kClassRecord(#ClassName, &Parent::kClassRecord, \
                                               &ClassName::MakeObject, fileType, declare);

class FbxObject {
 public:
  static const FbxClassRecord kClassRecord;
  static constexpr FbxClassId ClassId{&kClassRecord};
  static FbxObject* Create(FbxManager* manager, const char* name) {
    return CreateOfClass(manager, ClassId, name);
  }

  FbxObject(const FbxObject&) = delete;
  FbxObject& operator=(const FbxObject&) = delete;
  // Takes the object out of its neighbours' lists and frees it. With `recursive`, its source
  // objects that nothing else uses go too.
  void Destroy(bool recursive = false);

  virtual FbxClassId GetClassId() const { return ClassId; }
  // The class in force, which is the one that the object was made as.
  FbxClassId GetRuntimeClassId() const { return GetClassId(); }
  template <typename T>
  bool Is() const {
    return GetClassId().Is(T::ClassId);
  }

  const char* GetName() const { return name_.c_str(); }
  const std::string& Name() const { return name_; }
  void SetName(std::string name);
  // The name at load, which SetName leaves alone.
  const char* GetInitialName() const { return InitialName().c_str(); }
  const std::string& InitialName() const { return initialName_ == nullptr ? name_ : *initialName_; }
  void SetInitialName(std::string_view name);
  // Counts up from 1 with every object that the manager makes.
  uint64_t GetUniqueID() const { return uniqueId_; }
  FbxManager* GetFbxManager() const { return manager_; }
  // The first scene among the objects that this one is a source of, directly or through others.
  FbxScene* GetScene() const;

  FbxProperty RootProperty() const { return {const_cast<FbxObject*>(this), FbxProperty::kRoot}; }
  // A property at the top of the tree; invalid if there is none.
  FbxProperty FindProperty(std::string_view name, bool caseSensitive = true) const {
    return RootProperty().Find(name, caseSensitive);
  }
  // All properties in index order, children among them: the next of the last one is invalid.
  FbxProperty GetFirstProperty() const;
  FbxProperty GetNextProperty(const FbxProperty& property) const;
  // Changes with every value that is written to one of the properties.
  uint64_t GetPropertyRevision() const;
  // Says that the object is about to get `count` values of its own. A hint: less room may be made.
  void ReserveProperties(int count);
  // Makes the properties of `source`, which must be of the same class and stay alive, the defaults
  // of this object's. Only while the object has no properties of its own; false if it can't.
  bool SetPropertyTemplate(const FbxObject& source);

  // Connections among objects: those of the root properties.
  bool ConnectSrcObject(FbxObject* source, bool repeat = false) {
    return RootProperty().ConnectSrcObject(source, repeat);
  }
  bool ConnectDstObject(FbxObject* destination) {
    return destination != nullptr && destination->ConnectSrcObject(this);
  }
  bool IsConnectedSrcObject(const FbxObject* source) const {
    return RootProperty().IsConnectedSrcObject(source);
  }
  int GetSrcObjectCount() const { return RootProperty().GetSrcObjectCount(); }
  FbxObject* GetSrcObject(int index = 0) const { return RootProperty().GetSrcObject(index); }
  int GetDstObjectCount() const { return RootProperty().GetDstObjectCount(); }
  FbxObject* GetDstObject(int index = 0) const { return RootProperty().GetDstObject(index); }

  // Sources of a class, in connection order. Of many sources a list once asked for is kept until
  // the next connection, so that a loop over the index costs what it returns.
  int GetSrcObjectCount(const FbxCriteria& criteria) const;
  FbxObject* GetSrcObject(const FbxCriteria& criteria, int index) const;
  template <typename T>
  int GetSrcObjectCount() const {
    return GetSrcObjectCount(FbxCriteria::ObjectType(T::ClassId));
  }
  template <typename T>
  T* GetSrcObject(int index = 0) const {
    return static_cast<T*>(GetSrcObject(FbxCriteria::ObjectType(T::ClassId), index));
  }
  // The first destination of a class, null if there is none.
  FbxObject* GetDstObject(const FbxCriteria& criteria, int index = 0) const;
  template <typename T>
  T* GetDstObject(int index = 0) const {
    return static_cast<T*>(GetDstObject(FbxCriteria::ObjectType(T::ClassId), index));
  }

 protected:
  FbxObject();
  virtual ~FbxObject();
  static FbxObject* MakeObject() { return new FbxObject; }
  static FbxObject* CreateOfClass(FbxManager* manager, FbxClassId classId, const char* name);

  // Called once the object has its class, name and manager.
  virtual void Construct() {}
  // Called on the destination when an object was connected to it as a source, or is about to go.
  virtual void ConnectNotify(FbxObject& source, bool connected);

 private:
  friend class FbxManager;
  friend class FbxProperty;

  FbxPropertyStore& Store() const { return store_ != nullptr ? *store_ : MakeStore(); }
  FbxPropertyStore& MakeStore() const;
  bool HasFewSources() const;
  const std::vector<FbxObject*>& SourcesOfClass(FbxClassId classId) const;
  // The sources have changed.
  void ForgetClassLists();
  // Takes every connection of this object and its properties out of the neighbours' lists.
  void Disconnect();

  std::string name_;
  std::unique_ptr<const std::string> initialName_;  // null as long as it is the name
  uint64_t uniqueId_ = 0;
  FbxManager* manager_ = nullptr;
  size_t managerIndex_ = 0;
  FbxConnectionLists connections_;
  mutable std::unique_ptr<FbxPropertyStore> store_;
  struct ClassLists;
  mutable std::unique_ptr<ClassLists> sourcesByClass_;
};

// Factory and root of a session: makes objects by class, owns all of them, and frees them together.
class FbxManager {
 public:
  // The caller ends the session with Destroy.
  static FbxManager* Create();
  // Frees the manager and everything that was made with it.
  void Destroy();
  FbxManager(const FbxManager&) = delete;
  FbxManager& operator=(const FbxManager&) = delete;

  // The scene library's own version; with `full` the release's, without it the interface's number.
  static const char* GetVersion(bool full = true);

  // Exact look-up; a null class for an empty or unknown name.
  FbxClassId FindClass(std::string_view name) const;
  // Makes an object, and connects it as a source of `container` if one is given. Null for a class
  // that has no objects of its own.
  FbxObject* CreateNewObjectFromClassId(FbxClassId classId, const char* name,
                                        FbxObject* container = nullptr);

 private:
  friend class FbxObject;
  FbxManager() = default;
  ~FbxManager();
  void Register(FbxObject* object);
  void Unregister(FbxObject* object);

  std::vector<FbxObject*> objects_;
  uint64_t lastUniqueId_ = 0;
};
