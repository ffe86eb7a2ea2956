// The base of the exporters that handle nodes: keeps a copy of the command.
#pragma once

#include <unordered_map>

#include "converter/base/conversion_arguments.h"
#include "converter/scene/node_visitors.h"

class ExportNode {
 public:
  // Logs the command when a log is open.
  explicit ExportNode(const ConversionArguments& args);
  // From node to its index in `nodes`.
  static std::unordered_map<const FbxNode*, int> BuildBoneIdMap(NodeSpan nodes);

 protected:
  ConversionArguments args_;
};
