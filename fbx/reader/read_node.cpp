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
  // Files of the first versions keep these apart from the properties.
  if (io.FieldReadBegin("Properties")) {
    if (io.FieldReadBlockBegin()) {
      const auto move = [&](const char* field, int count) {
        FbxDouble3 values{};
        if (!io.FieldReadBegin(field)) return;
        io.FieldReadDn(values.data(), count);
        FbxProperty property = skeleton.FindProperty(field);
        count == 1 ? property.Set(values[0]) : property.Set(values);
      };
      move("Size", 1);
      if (type == FbxSkeleton::eLimb || type == FbxSkeleton::eLimbNode) move("Color", 3);
      if (type == FbxSkeleton::eLimb) move("LimbLength", 1);
      io.FieldReadBlockEnd();
    }
    io.FieldReadEnd();
  }
  ReadProperties(io, skeleton);
}
