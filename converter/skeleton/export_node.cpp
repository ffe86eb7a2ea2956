#include "converter/skeleton/export_node.h"

#include "converter/base/log.h"

ExportNode::ExportNode(const ConversionArguments& args) : args_(args) {
  LOG_INFO(args_.toString());
}

std::unordered_map<const FbxNode*, int> ExportNode::BuildBoneIdMap(NodeSpan nodes) {
  std::unordered_map<const FbxNode*, int> indices;
  for (size_t i = 0; i < nodes.size(); ++i) indices[nodes[i]] = static_cast<int>(i);
  return indices;
}
