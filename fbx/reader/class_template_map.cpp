#include "fbx/reader/class_template_map.h"

#include <string>

#include "fbx/core/fbx_manager.h"
#include "fbx/core/fbx_object.h"
#include "fbx/io/fbx_io.h"
#include "fbx/reader/read_properties.h"

void ClassTemplateMap::ReadTemplate(FbxIO& io, FbxManager& manager) {
  const FbxClassId classId = manager.FindClass(io.FieldReadC());
  if (!classId.IsValid() || templates_.contains(classId.Record())) return;
  const std::string name = std::string(classId.GetName()) + "_TemplateObject";
  FbxObject* object = manager.CreateNewObjectFromClassId(classId, name.c_str());
  if (object == nullptr) return;
  templates_.emplace(classId.Record(), object);
  if (io.FieldReadBlockBegin()) {
    ReadProperties(io, *object);
    io.FieldReadBlockEnd();
  }
}

void ClassTemplateMap::MergeWithTemplate(FbxObject& object) const {
  const auto found = templates_.find(object.GetRuntimeClassId().Record());
  if (found != templates_.end()) object.SetPropertyTemplate(*found->second);
}
