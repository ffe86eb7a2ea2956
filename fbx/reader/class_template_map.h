// The property templates of a file: for a class, the object whose property values are the defaults
// of all objects of exactly that class.
#pragma once

#include <unordered_map>

#include "fbx/core/fbx_class_id.h"

class FbxIO;
class FbxManager;
class FbxObject;

class ClassTemplateMap {
 public:
  void Clear() { templates_.clear(); }
  // Reads a `PropertyTemplate` record, which the cursor stands on. A class that isn't known, or
  // that has its template already, is passed over.
  void ReadTemplate(FbxIO& io, FbxManager& manager);
  // Gives a new object, which holds no properties yet, the defaults of its class's template. The
  // values aren't copied: the object looks them up there.
  void MergeWithTemplate(FbxObject& object) const;

 private:
  // The manager owns the objects, which live as long as those that look up their values there.
  std::unordered_map<const FbxClassRecord*, const FbxObject*> templates_;
};
