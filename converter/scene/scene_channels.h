// Which nodes of a scene each layer animates, and through which curves. Found once for a layer,
// from the layer's side: a property knows the curve nodes of all stacks, so that asking every node
// for its curve in every layer would cost the square of the number of clips, and walking the tree
// anew for every stack, skeleton and mesh would cost their product. With the animated nodes in walk
// order, the tree below a node is a run of them.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "converter/scene/node_visitors.h"

class FbxAnimCurve;
class FbxAnimCurveNode;
class FbxAnimLayer;
class FbxAnimStack;
class FbxBlendShape;
class FbxBlendShapeChannel;
class FbxGeometry;

// A curve and the name of the channel that it drives: "TX" ... "SZ" for the local transform, or a
// blend shape channel's own.
struct ChannelCurve {
  const std::string* channel = nullptr;
  FbxAnimCurve* curve = nullptr;
};
using ChannelCurves = std::span<const ChannelCurve>;

// What a layer animates on one node. Curves of any number of keys are here.
struct NodeChannels {
  FbxNode* node = nullptr;
  ChannelCurves transform;                // translation, rotation, scaling, each X, Y, Z
  std::span<const ChannelCurves> morphs;  // of the node's geometry, by blend shape
  // Whether that geometry is the node's own attribute: only then its channels are visited.
  bool showsMorphs = false;
};

// A curve counts as animation from three keys on. A null curve doesn't.
bool IsCurveValid(const FbxAnimCurve* curve);
bool IsBlendCurveValid(const FbxAnimCurve* curve);
bool IsScaleCurveValid(const FbxAnimCurve* curve);
// Whether one of the three curves is valid.
bool HasTranslation(const NodeChannels& channels);
bool HasRotation(const NodeChannels& channels);
// The names of the blend shape channels with valid curves, by deformer and channel. A name may come
// twice.
std::vector<std::string> HasBlendShapeMorph(const NodeChannels& channels);

class LayerChannels {
 public:
  LayerChannels(const LayerChannels&) = delete;
  LayerChannels& operator=(const LayerChannels&) = delete;

  const FbxAnimLayer* Layer() const { return layer_; }
  // The node and everything below it, animated or not.
  NodeSpan Subtree(const FbxNode* node) const { return order_.Subtree(node); }
  // Everything that is animated on the node and what is below it, in walk order.
  std::span<const NodeChannels> Below(const FbxNode* node) const;
  // One element, or none for a node without a curve in this layer.
  std::span<const NodeChannels> Of(const FbxNode* node) const;
  // Among the same nodes those that move, by translation or rotation, and those that morph.
  NodeSpan MovedBelow(const FbxNode* node) const { return moved_.Below(order_, node); }
  NodeSpan MorphedBelow(const FbxNode* node) const { return morphed_.Below(order_, node); }

 private:
  friend class SceneChannels;

  // Some nodes in walk order, with their indices in it.
  struct NodeRun {
    void Add(int index, FbxNode* node);
    NodeSpan Below(const NodeOrder& order, const FbxNode* node) const;

    std::vector<int> indices;
    std::vector<FbxNode*> nodes;
  };

  LayerChannels(const FbxAnimLayer* layer, const NodeOrder& order) : layer_(layer), order_(order) {}

  const FbxAnimLayer* layer_;
  const NodeOrder& order_;
  NodeRun animated_;
  std::vector<NodeChannels> channels_;  // parallel to it
  NodeRun moved_;
  NodeRun morphed_;
  // Behind the spans of the channels.
  std::vector<ChannelCurve> transforms_;
  std::unordered_map<const FbxBlendShape*, std::vector<ChannelCurve>> shapes_;
  std::unordered_map<const FbxGeometry*, std::vector<ChannelCurves>> geometries_;
};

class SceneChannels {
 public:
  // `order`, of the scene's tree, must stay alive. The scene's animation must not change any more.
  explicit SceneChannels(const NodeOrder& order) : order_(order) {}

  const LayerChannels& Of(const FbxAnimLayer* layer);
  // The layers of a stack, in their order.
  std::vector<const LayerChannels*> Of(const FbxAnimStack* stack);

 private:
  struct DrivenTransform {
    int node = 0;      // index in the walk order
    int property = 0;  // translation, rotation, scaling
    FbxAnimCurveNode* curves = nullptr;
  };
  struct DrivenMorph {
    FbxAnimCurveNode* curves = nullptr;
    bool ambiguous = false;  // there were others
  };
  // Of one layer.
  struct Driven {
    std::vector<DrivenTransform> transforms;
    std::unordered_map<FbxBlendShapeChannel*, DrivenMorph> morphs;
  };

  void Build(const FbxAnimLayer& layer, LayerChannels& channels);
  Driven FindDriven(const FbxAnimLayer& layer) const;
  // From index in the walk order to channels.
  using ChannelsByIndex = std::vector<std::pair<int, NodeChannels>>;
  void AddTransforms(const Driven& driven, LayerChannels& channels, ChannelsByIndex& found) const;
  void AddMorphs(const Driven& driven, LayerChannels& channels, ChannelsByIndex& found);
  int PlaceInShape(const FbxBlendShape* shape, const FbxBlendShapeChannel* channel);

  const NodeOrder& order_;
  std::unordered_map<const FbxAnimLayer*, std::unique_ptr<LayerChannels>> layers_;
  std::unordered_map<const FbxBlendShape*, std::unordered_map<const FbxBlendShapeChannel*, int>>
      places_;
};

// Parts of layers, one after the other: what a visitor walks, or what makes up an animation.
using ChannelRuns = std::vector<std::span<const NodeChannels>>;

// In every layer of the stack the tree below the node.
ChannelRuns ChannelsBelow(SceneChannels& channels, const FbxAnimStack* stack, const FbxNode* node);
// In every layer of the stack each of the nodes.
ChannelRuns ChannelsOfNodes(SceneChannels& channels, const FbxAnimStack* stack,
                            const std::vector<NodeSpan>& nodes);
