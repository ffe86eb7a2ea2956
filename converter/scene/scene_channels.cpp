#include "converter/scene/scene_channels.h"

#include <algorithm>
#include <array>
#include <tuple>

#include "fbx/anim/fbx_animation.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_node.h"

namespace {

const std::array<std::array<std::string, 3>, 3> kTransformChannels = {
    {{"TX", "TY", "TZ"}, {"RX", "RY", "RZ"}, {"SX", "SY", "SZ"}}};
constexpr std::array<const char*, 3> kComponents = {"X", "Y", "Z"};

FbxProperty TransformProperty(const FbxNode& node, int property) {
  switch (property) {
    case 0:
      return node.LclTranslation();
    case 1:
      return node.LclRotation();
    default:
      return node.LclScaling();
  }
}

bool HasValidCurve(const NodeChannels& channels, char property) {
  return std::any_of(channels.transform.begin(), channels.transform.end(),
                     [property](const ChannelCurve& curve) {
                       return curve.channel->front() == property && IsCurveValid(curve.curve);
                     });
}

// Objects that the object is a source of.
template <typename T, typename Visit>
void ForEachDestination(const FbxObject& object, Visit visit) {
  for (const FbxProperty& destination : object.RootProperty().Destinations()) {
    if (!destination.IsRoot() || !destination.GetFbxObject()->Is<T>()) continue;
    visit(static_cast<T*>(destination.GetFbxObject()));
  }
}

bool ShowsGeometry(const FbxNode& node) {
  const FbxNodeAttribute* attribute = node.GetNodeAttribute();
  if (attribute == nullptr) return false;
  const FbxNodeAttribute::EType type = attribute->GetAttributeType();
  return type == FbxNodeAttribute::eMesh || type == FbxNodeAttribute::eNurbs ||
         type == FbxNodeAttribute::ePatch;
}

}  // namespace

bool IsCurveValid(const FbxAnimCurve* curve) {
  constexpr int kMinKeys = 3;
  return curve != nullptr && curve->KeyGetCount() >= kMinKeys;
}

bool IsBlendCurveValid(const FbxAnimCurve* curve) { return IsCurveValid(curve); }

bool IsScaleCurveValid(const FbxAnimCurve* curve) { return IsCurveValid(curve); }

bool HasTranslation(const NodeChannels& channels) { return HasValidCurve(channels, 'T'); }

bool HasRotation(const NodeChannels& channels) { return HasValidCurve(channels, 'R'); }

std::vector<std::string> HasBlendShapeMorph(const NodeChannels& channels) {
  std::vector<std::string> names;
  for (const ChannelCurves& shape : channels.morphs) {
    for (const ChannelCurve& morph : shape) {
      if (IsBlendCurveValid(morph.curve)) names.push_back(*morph.channel);
    }
  }
  return names;
}

void LayerChannels::NodeRun::Add(int index, FbxNode* node) {
  indices.push_back(index);
  nodes.push_back(node);
}

NodeSpan LayerChannels::NodeRun::Below(const NodeOrder& order, const FbxNode* node) const {
  const int first = order.Index(node);
  if (first < 0) return {};
  const int end = first + static_cast<int>(order.Subtree(node).size());
  const auto from = std::lower_bound(indices.begin(), indices.end(), first);
  const auto to = std::lower_bound(from, indices.end(), end);
  return NodeSpan(nodes).subspan(static_cast<size_t>(from - indices.begin()),
                                 static_cast<size_t>(to - from));
}

std::span<const NodeChannels> LayerChannels::Below(const FbxNode* node) const {
  const NodeSpan nodes = animated_.Below(order_, node);
  if (nodes.empty()) return {};
  const auto first = static_cast<size_t>(nodes.data() - animated_.nodes.data());
  return std::span(channels_).subspan(first, nodes.size());
}

std::span<const NodeChannels> LayerChannels::Of(const FbxNode* node) const {
  const std::span<const NodeChannels> below = Below(node);
  return below.empty() || below.front().node != node ? std::span<const NodeChannels>()
                                                     : below.first(1);
}

const LayerChannels& SceneChannels::Of(const FbxAnimLayer* layer) {
  std::unique_ptr<LayerChannels>& channels = layers_[layer];
  if (channels == nullptr) {
    channels.reset(new LayerChannels(layer, order_));
    Build(*layer, *channels);
  }
  return *channels;
}

std::vector<const LayerChannels*> SceneChannels::Of(const FbxAnimStack* stack) {
  std::vector<const LayerChannels*> layers;
  for (int i = 0; i < stack->GetLayerCount(); ++i) layers.push_back(&Of(stack->GetLayer(i)));
  return layers;
}

void SceneChannels::Build(const FbxAnimLayer& layer, LayerChannels& channels) {
  const Driven driven = FindDriven(layer);
  ChannelsByIndex found;
  AddTransforms(driven, channels, found);
  AddMorphs(driven, channels, found);
  std::stable_sort(found.begin(), found.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  for (const auto& [index, part] : found) {
    if (channels.animated_.indices.empty() || channels.animated_.indices.back() != index) {
      channels.animated_.Add(index, part.node);
      channels.channels_.push_back(part);
    } else {  // a node's morphs after its transform
      channels.channels_.back().morphs = part.morphs;
      channels.channels_.back().showsMorphs = part.showsMorphs;
    }
  }
  for (size_t i = 0; i < channels.channels_.size(); ++i) {
    const NodeChannels& node = channels.channels_[i];
    const int index = channels.animated_.indices[i];
    if (HasTranslation(node) || HasRotation(node)) channels.moved_.Add(index, node.node);
    if (!HasBlendShapeMorph(node).empty()) channels.morphed_.Add(index, node.node);
  }
}

// Where a property has several curve nodes in the layer, the first in the property's order counts.
SceneChannels::Driven SceneChannels::FindDriven(const FbxAnimLayer& layer) const {
  Driven driven;
  for (const FbxProperty& source : layer.RootProperty().Sources()) {
    if (!source.IsRoot() || !source.GetFbxObject()->Is<FbxAnimCurveNode>()) continue;
    auto* curves = static_cast<FbxAnimCurveNode*>(source.GetFbxObject());
    for (const FbxProperty& destination : curves->RootProperty().Destinations()) {
      if (destination.IsRoot()) continue;
      FbxObject* object = destination.GetFbxObject();
      if (object->Is<FbxNode>()) {
        const auto* node = static_cast<const FbxNode*>(object);
        const int index = order_.Index(node);
        for (int property = 0; index >= 0 && property < 3; ++property) {
          if (destination == TransformProperty(*node, property)) {
            driven.transforms.push_back({index, property, curves});
          }
        }
      } else if (object->Is<FbxBlendShapeChannel>()) {
        auto* channel = static_cast<FbxBlendShapeChannel*>(object);
        if (destination != channel->DeformPercent()) continue;
        const auto [found, added] = driven.morphs.try_emplace(channel, DrivenMorph{curves});
        if (!added && !found->second.ambiguous) {
          found->second = {destination.GetCurveNode(&layer), true};
        }
      }
    }
  }
  const auto key = [](const DrivenTransform& d) { return std::tie(d.node, d.property); };
  std::vector<DrivenTransform>& transforms = driven.transforms;
  std::stable_sort(
      transforms.begin(), transforms.end(),
      [key](const DrivenTransform& a, const DrivenTransform& b) { return key(a) < key(b); });
  for (size_t i = 0; i + 1 < transforms.size(); ++i) {
    const bool first = i == 0 || key(transforms[i - 1]) != key(transforms[i]);
    if (!first || key(transforms[i]) != key(transforms[i + 1])) continue;
    const FbxNode* node = order_.All()[static_cast<size_t>(transforms[i].node)];
    transforms[i].curves = TransformProperty(*node, transforms[i].property).GetCurveNode(&layer);
  }
  const auto end = std::unique(
      transforms.begin(), transforms.end(),
      [key](const DrivenTransform& a, const DrivenTransform& b) { return key(a) == key(b); });
  transforms.erase(end, transforms.end());
  return driven;
}

void SceneChannels::AddTransforms(const Driven& driven, LayerChannels& channels,
                                  ChannelsByIndex& found) const {
  std::vector<size_t> ends;  // of each node's curves
  for (const DrivenTransform& transform : driven.transforms) {
    const size_t before = channels.transforms_.size();
    for (size_t i = 0; i < 3; ++i) {
      auto* curve = transform.curves->GetChannel(kComponents[i]).GetSrcObject<FbxAnimCurve>();
      if (curve == nullptr) continue;
      const auto property = static_cast<size_t>(transform.property);
      channels.transforms_.push_back({&kTransformChannels[property][i], curve});
    }
    if (channels.transforms_.size() == before) continue;
    if (found.empty() || found.back().first != transform.node) {
      NodeChannels node;
      node.node = order_.All()[static_cast<size_t>(transform.node)];
      found.emplace_back(transform.node, node);
      ends.push_back(0);
    }
    ends.back() = channels.transforms_.size();
  }
  size_t begin = 0;
  for (size_t i = 0; i < found.size(); ++i) {
    found[i].second.transform = ChannelCurves(channels.transforms_).subspan(begin, ends[i] - begin);
    begin = ends[i];
  }
}

void SceneChannels::AddMorphs(const Driven& driven, LayerChannels& channels,
                              ChannelsByIndex& found) {
  struct Placed {
    int place;
    ChannelCurve curve;
  };
  std::unordered_map<FbxBlendShape*, std::vector<Placed>> shapes;
  for (const auto& [channel, morph] : driven.morphs) {
    FbxAnimCurve* curve = morph.curves->GetCurve(0);
    if (curve == nullptr) continue;
    ForEachDestination<FbxBlendShape>(*channel, [&, c = channel](FbxBlendShape* shape) {
      shapes[shape].push_back({PlaceInShape(shape, c), {&c->Name(), curve}});
    });
  }
  std::vector<const FbxGeometry*> geometries;
  for (auto& [shape, placed] : shapes) {
    std::sort(placed.begin(), placed.end(),
              [](const Placed& a, const Placed& b) { return a.place < b.place; });
    std::vector<ChannelCurve>& curves = channels.shapes_[shape];
    for (const Placed& p : placed) curves.push_back(p.curve);
    ForEachDestination<FbxGeometry>(*shape, [&](const FbxGeometry* geometry) {
      if (channels.geometries_.try_emplace(geometry).second) geometries.push_back(geometry);
    });
  }
  for (const FbxGeometry* geometry : geometries) {
    std::vector<ChannelCurves>& morphs = channels.geometries_[geometry];
    const int count = geometry->GetDeformerCount(FbxDeformer::eBlendShape);
    for (int i = 0; i < count; ++i) {
      const auto shape = channels.shapes_.find(
          static_cast<FbxBlendShape*>(geometry->GetDeformer(i, FbxDeformer::eBlendShape)));
      if (shape != channels.shapes_.end()) morphs.emplace_back(shape->second);
    }
    ForEachDestination<FbxNode>(*geometry, [&](FbxNode* node) {
      const int index = order_.Index(node);
      if (index < 0 || node->GetGeometry() != geometry) return;
      NodeChannels part;
      part.node = node;
      part.morphs = morphs;
      part.showsMorphs = ShowsGeometry(*node);
      found.emplace_back(index, part);
    });
  }
}

int SceneChannels::PlaceInShape(const FbxBlendShape* shape, const FbxBlendShapeChannel* channel) {
  const auto [places, added] = places_.try_emplace(shape);
  if (added) {
    const int count = shape->GetBlendShapeChannelCount();
    for (int i = 0; i < count; ++i) places->second.emplace(shape->GetBlendShapeChannel(i), i);
  }
  return places->second[channel];
}

ChannelRuns ChannelsBelow(SceneChannels& channels, const FbxAnimStack* stack, const FbxNode* node) {
  ChannelRuns runs;
  for (const LayerChannels* layer : channels.Of(stack)) runs.push_back(layer->Below(node));
  return runs;
}

ChannelRuns ChannelsOfNodes(SceneChannels& channels, const FbxAnimStack* stack,
                            const std::vector<NodeSpan>& nodes) {
  ChannelRuns runs;
  for (const LayerChannels* layer : channels.Of(stack)) {
    for (const NodeSpan& run : nodes) {
      for (const FbxNode* node : run) runs.push_back(layer->Of(node));
    }
  }
  return runs;
}
