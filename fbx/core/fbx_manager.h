// Factory and root of a session: makes objects by class, owns all of them, and frees them together.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "fbx/core/fbx_class_id.h"

class FbxObject;

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
