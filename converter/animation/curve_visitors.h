// The walk over animation curves that all animation work rests on, and its visitors. Discovery
// prints curves to text and compares it, export collects keys: since both run the same walk, what
// is listed, compared and exported agree on which curves exist.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "converter/scene/scene_channels.h"
#include "fbx/core/fbx_string.h"

class FbxAnimLayer;
class FbxNode;
class FbxProperty;
class LayerChannels;

// Whether it is one of the nine transform channels' names.
bool isSkeletal(std::string_view channel);

class AnimationCurveVisitor {
 public:
  virtual ~AnimationCurveVisitor() = default;
  // Comes before the curves of the node.
  virtual void VisitNode(FbxNode* node) { currentNode = node; }
  virtual void VisitCurve(const std::string& channel, FbxAnimCurve* curve) = 0;
  // A curve of one of the node's user properties.
  virtual void VisitCurveProperty(const std::string& /*name*/, FbxAnimCurve* /*curve*/,
                                  FbxProperty* /*property*/) {}
  // Whether to visit the curves of lights, cameras and user properties, too.
  virtual bool UseAdvancedCurves() { return false; }

 protected:
  FbxNode* currentNode = nullptr;
};

// Writes each curve on a line: node, channel, count of keys; then, on one line, its keys.
class AnimationCurveVisitorString : public AnimationCurveVisitor {
 public:
  void VisitCurve(const std::string& channel, FbxAnimCurve* curve) override;
  void VisitCurveProperty(const std::string& name, FbxAnimCurve* curve,
                          FbxProperty* property) override;

  std::string text;

 protected:
  void AppendCurve(const std::string& channel, const FbxAnimCurve& curve);

  int32_t detailLevel = 3;  // the keys are written from 3 on
};

// Leaves the node out: nodes with equal curves give equal text.
class AnimationCurveVisitorStringNoNode : public AnimationCurveVisitorString {
 public:
  void VisitCurve(const std::string& channel, FbxAnimCurve* curve) override;
};

// These call the visitor for every curve of at least three keys. For a stack, its layers in order;
// for a layer, the node and what is below it, parents first; for a node, its transform channels and
// then those of its geometry's blend shapes.
void DisplayAnimation(SceneChannels& channels, const FbxAnimStack* stack, const FbxNode* node,
                      AnimationCurveVisitor& visitor);
void DisplayAnimation(const LayerChannels& layer, const FbxNode* node,
                      AnimationCurveVisitor& visitor);
void DisplayChannels(const NodeChannels& channels, AnimationCurveVisitor& visitor);
void DisplaySkeletalChannels(const NodeChannels& channels, AnimationCurveVisitor& visitor);
void DisplayShapeChannels(const NodeChannels& channels, AnimationCurveVisitor& visitor);
void MaybeDisplayCurve(FbxAnimCurve* curve, AnimationCurveVisitor& visitor,
                       const std::string& channel);

// The text of all these curves.
std::string CurveText(const ChannelRuns& runs, bool withNodes);
// Compares the texts of two animations, as AnimationCurveVisitorString would write them (without
// the nodes' names as its NoNode form would), byte by byte. Less than 0, 0 or greater than 0. The
// texts aren't written, which for a large rig would take more time and memory than all the rest of
// a listing: lines of the same curve are passed over, and keys become text only where they differ.
int CompareCurveTexts(const ChannelRuns& a, const ChannelRuns& b, bool withNodes);

// The rest is the animation of lights, cameras and user properties, for visitors that want to see
// everything. No command reaches it.
//
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
