// Questions about which nodes a stack animates.
#include <algorithm>

#include "converter/animation/export_animation.h"
#include "converter/base/output.h"
#include "converter/scene/scene_channels.h"
#include "fbx/anim/fbx_anim_stack.h"
#include "fbx/scene/fbx_node.h"

bool ExportAnimation::IsAnimationOnSkeleton(FbxAnimStack* stack, FbxNode* node,
                                            const std::set<std::string>& boneNames) {
  for (int i = 0; i < stack->GetLayerCount(); ++i) {
    if (IsAnimationOnNode(stack, stack->GetLayer(i), node, boneNames)) return true;
  }
  return false;
}

bool ExportAnimation::IsAnimationOnNode(FbxAnimStack* stack, FbxAnimLayer* layer, FbxNode* node,
                                        const std::set<std::string>& boneNames) {
  for (const NodeChannels& channels : Channels().Of(layer).Below(node)) {
    const bool moves =
        std::any_of(channels.transform.begin(), channels.transform.end(),
                    [](const ChannelCurve& curve) { return curve.channel->front() != 'S'; });
    if (!moves || !boneNames.contains(channels.node->Name())) continue;
    PrintFormatted("found skeletal animation in stack %s on node %s\n", stack->GetName(),
                   channels.node->GetName());
    return true;
  }
  return false;
}

std::shared_ptr<std::vector<FbxNode*>> ExportAnimation::GetMorphNodes(FbxNode* node,
                                                                      FbxAnimStack* stack) {
  auto nodes = std::make_shared<std::vector<FbxNode*>>();
  for (int i = 0; i < stack->GetLayerCount(); ++i) {
    GetMorphInLayer(stack->GetLayer(i), node, *nodes);
  }
  return nodes;
}

void ExportAnimation::GetMorphInLayer(FbxAnimLayer* layer, FbxNode* node,
                                      std::vector<FbxNode*>& nodes) {
  const NodeSpan morphed = Channels().Of(layer).MorphedBelow(node);
  nodes.insert(nodes.end(), morphed.begin(), morphed.end());
}

std::vector<std::string> ExportAnimation::GetMorphChannelName(FbxAnimLayer* layer, FbxNode* node) {
  const LayerChannels& channels = Channels().Of(layer);
  const NodeSpan morphed = channels.MorphedBelow(node);
  if (morphed.empty()) return {};
  return HasBlendShapeMorph(channels.Of(morphed.front()).front());
}

std::vector<std::string> ExportAnimation::GetMorphChannelName(FbxNode* node, FbxAnimStack* stack) {
  for (int i = 0; i < stack->GetLayerCount(); ++i) {
    std::vector<std::string> names = GetMorphChannelName(stack->GetLayer(i), node);
    if (!names.empty()) return names;
  }
  return {};
}
