// Nodes, their attributes that are no geometry, and poses.
#include <algorithm>

#include "fbx/io/fbx_io.h"
#include "fbx/reader/read_records.h"
#include "fbx/scene/fbx_deformer.h"
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
  if (type != FbxSkeleton::eEffector && io.FieldReadBlockBegin("Properties")) {
    move("Size", 1);
    if (type != FbxSkeleton::eRoot) move("Color", 3);
    io.FieldReadBlockEnd();
  }
  ReadProperties(io, skeleton);
}

void ReadPose(FbxIO& io, FbxPose& pose, FbxObjectReferences& references) {
  ReadProperties(io, pose);
  const int32_t count =
      std::min(io.FieldReadI("NbPoseNodes"), io.FieldGetInstanceCount("PoseNode"));
  for (int32_t i = 0; i < count; ++i) {
    io.FieldReadBegin("PoseNode", i);
    if (!io.FieldReadBlockBegin()) continue;
    FbxObject* node = io.FieldReadBegin("Node") ? references.ReadObject() : nullptr;
    if (node != nullptr && node->Is<FbxNode>()) {
      FbxMatrix matrix;
      ReadMatrix(io, "Matrix", matrix);
      pose.Add(static_cast<FbxNode*>(node), matrix, io.FieldReadI("Local") != 0);
    }
    io.FieldReadBlockEnd();
  }
}
