// The animation of lights, cameras and user properties, for visitors that want to see everything.
// No command reaches it.
#pragma once

#include "fbx/core/fbx_string.h"

class AnimationCurveVisitor;
class FbxAnimLayer;
class FbxNode;
class LayerChannels;

// Calls the visitor for every curve of at least three keys: the attribute's under their labels
// ("Red" ... "Intensity" ... "Field of View" ...), and those of the node's animatable user
// properties as properties ("Property:speed (Label: Speed)", for a vector with ":X" behind).
void DisplayAdvancedChannels(const FbxAnimLayer* layer, FbxNode* node,
                             AnimationCurveVisitor& visitor);

// Whether the layer has any curve on the node that a visitor could be shown.
bool HasChannels(const LayerChannels& layer, FbxNode* node);
// The names of the nodes of the tree for which HasChannels gives `wanted`, each as "[name] ", in
// walk order.
FbxString DisplayAnimationNodes(const LayerChannels& layer, const FbxNode* node, bool wanted);
