#include "fbx/reader/read_pose.h"

#include <algorithm>

#include "fbx/io/fbx_io.h"
#include "fbx/reader/read_properties.h"
#include "fbx/reader/read_vectors.h"
#include "fbx/scene/fbx_node.h"
#include "fbx/scene/fbx_pose.h"

void ReadPose(FbxIO& io, FbxPose& pose, const FbxObjectsById& objects) {
  ReadProperties(io, pose);
  const int32_t count =
      std::min(io.FieldReadI("NbPoseNodes"), io.FieldGetInstanceCount("PoseNode"));
  for (int32_t i = 0; i < count; ++i) {
    io.FieldReadBegin("PoseNode", i);
    if (!io.FieldReadBlockBegin()) continue;
    const auto found = objects.find(io.FieldReadLL("Node"));
    if (found != objects.end() && found->second->Is<FbxNode>()) {
      FbxMatrix matrix;
      ReadMatrix(io, "Matrix", matrix);
      pose.Add(static_cast<FbxNode*>(found->second), matrix, io.FieldReadI("Local") != 0);
    }
    io.FieldReadBlockEnd();
  }
}
