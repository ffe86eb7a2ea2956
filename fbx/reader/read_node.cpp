#include "fbx/reader/read_node.h"

#include "fbx/io/fbx_io.h"
#include "fbx/reader/read_properties.h"
#include "fbx/scene/fbx_node.h"

void ReadNode(FbxIO& io, FbxNode& node) {
  ReadProperties(io, node);
  node.UpdatePivotsAndLimitsFromProperties();
}

void ReadSkeleton(FbxIO& io, FbxSkeleton& skeleton, FbxSkeleton::ESkeletonType type) {
  skeleton.SetSkeletonType(type);
  const auto move = [&](const char* field, int count) {
    FbxDouble3 values{};
    if (!io.FieldReadBegin(field)) return;
    io.FieldReadDn(values.data(), count);
    FbxProperty property = skeleton.FindProperty(field);
    count == 1 ? property.Set(values[0]) : property.Set(values);
  };
  // Files of the first versions keep these apart from the properties.
  if (type == FbxSkeleton::eLimb) move("LimbLength", 1);
  if (type != FbxSkeleton::eEffector && io.FieldReadBegin("Properties") &&
      io.FieldReadBlockBegin()) {
    move("Size", 1);
    if (type != FbxSkeleton::eRoot) move("Color", 3);
    io.FieldReadBlockEnd();
  }
  ReadProperties(io, skeleton);
}
