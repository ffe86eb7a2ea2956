// A shelf: what no command reaches of the handling of nodes, kept by its names for other callers.
#pragma once

#include <unordered_map>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "cal3d/model/core_skeleton.h"
#include "converter/base/conversion_arguments.h"
#include "converter/scene/node_visitors.h"
#include "fbx/core/fbx_time.h"
#include "fbx/math/fbx_matrix.h"

class FbxPose;

// The base of the exporters that handle nodes: keeps a copy of the command.
class ExportNode {
 public:
  // Logs the command when a log is open.
  explicit ExportNode(const ConversionArguments& args);
  // From node to its index in `nodes`.
  static std::unordered_map<const FbxNode*, int> BuildBoneIdMap(NodeSpan nodes);

 protected:
  ConversionArguments args_;
};

// The node's place in the world: as the pose has it if the pose holds the node, otherwise evaluated
// at `time`. A pose that stores the node relative to its parent is multiplied by `parentGlobal`, or
// by the parent's own place when that is null. `pose` may be null.
FbxAMatrix GetGlobalPosition(const FbxNode* node, FbxTime time, const FbxPose* pose,
                             const FbxAMatrix* parentGlobal = nullptr);
// The child's transform relative to the parent, with the scaling of both left out.
FbxAMatrix getLocalTransform(const FbxAMatrix& parent, const FbxAMatrix& child);

// The product of the matrices of bones from the root down to the bone; the identity for a bone id
// of -1. A bone's parent stands before it.
void getSkeletalMatrix(FbxAMatrix& matrix, const std::vector<boost::shared_ptr<CalCoreBone>>& bones,
                       int boneId);
