#include "fbx/scene/fbx_geometry.h"

#include <algorithm>

FBX_OBJECT_DEFINE(FbxLayerContainer, FbxNodeAttribute, "", nullptr)
FBX_OBJECT_DEFINE(FbxGeometryBase, FbxLayerContainer, "Geometry", nullptr)
FBX_OBJECT_DEFINE(FbxGeometry, FbxGeometryBase, "", nullptr)

namespace {

template <typename Element>
using Member = std::shared_ptr<Element> FbxLayer::*;

template <typename Element>
Element* NthElement(const std::vector<FbxLayer>& layers, Member<Element> member, int index) {
  for (const FbxLayer& layer : layers) {
    if (layer.*member != nullptr && index-- == 0) return (layer.*member).get();
  }
  return nullptr;
}

// Calls `function` on the UV elements of a channel, or of all for type 0, until it returns true.
template <typename Function>
void VisitUVElements(const std::vector<FbxLayer>& layers, int type, Function&& function) {
  size_t first = 0;
  size_t last = FbxLayer::kUVChannels;
  if (type != 0) {
    if (type < FbxLayerElement::eUVFirst || type > FbxLayerElement::eUVLast) return;
    first = static_cast<size_t>(type - FbxLayerElement::eUVFirst);
    last = first + 1;
  }
  for (const FbxLayer& layer : layers) {
    for (size_t channel = first; channel < last; ++channel) {
      if (layer.uvs[channel] != nullptr && function(*layer.uvs[channel])) return;
    }
  }
}

}  // namespace

FbxLayer* FbxLayerContainer::GetLayer(int index) {
  return const_cast<FbxLayer*>(std::as_const(*this).GetLayer(index));
}

const FbxLayer* FbxLayerContainer::GetLayer(int index) const {
  return index < 0 || index >= GetLayerCount() ? nullptr : &Layers()[static_cast<size_t>(index)];
}

int FbxLayerContainer::CreateLayer() {
  layers_.emplace_back();
  return static_cast<int>(layers_.size()) - 1;
}

int FbxLayerContainer::GetElementNormalCount() const {
  const std::vector<FbxLayer>& layers = Layers();
  return static_cast<int>(std::count_if(layers.begin(), layers.end(), [](const FbxLayer& layer) {
    return layer.normals != nullptr;
  }));
}

FbxLayerElementNormal* FbxLayerContainer::GetElementNormal(int index) const {
  return NthElement(Layers(), &FbxLayer::normals, index);
}

FbxLayerElementVertexColor* FbxLayerContainer::GetElementVertexColor(int index) const {
  return NthElement(Layers(), &FbxLayer::vertexColors, index);
}

FbxLayerElementMaterial* FbxLayerContainer::GetElementMaterial(int index) const {
  return NthElement(Layers(), &FbxLayer::materials, index);
}

int FbxLayerContainer::GetElementUVCount(int type) const {
  int count = 0;
  VisitUVElements(Layers(), type, [&](const FbxLayerElementUV&) {
    ++count;
    return false;
  });
  return count;
}

FbxLayerElementUV* FbxLayerContainer::GetElementUV(int index, int type) const {
  FbxLayerElementUV* found = nullptr;
  VisitUVElements(Layers(), type, [&](FbxLayerElementUV& element) {
    if (index-- != 0) return false;
    found = &element;
    return true;
  });
  return found;
}

FbxLayerElementUV* FbxLayerContainer::GetElementUV(const char* name) const {
  FbxLayerElementUV* found = nullptr;
  const std::string_view wanted = name == nullptr ? "" : name;
  VisitUVElements(Layers(), 0, [&](FbxLayerElementUV& element) {
    if (element.name != wanted) return false;
    found = &element;
    return true;
  });
  return found;
}

FbxVector4 FbxGeometryBase::GetControlPointAt(int index) const {
  const std::vector<FbxVector4>& points = ControlPoints();
  return index < 0 || static_cast<size_t>(index) >= points.size()
             ? FbxVector4(0.0, 0.0, 0.0, 0.0)
             : points[static_cast<size_t>(index)];
}

int FbxGeometry::GetDeformerCount(FbxDeformer::EDeformerType type) const {
  const int all = GetSrcObjectCount<FbxDeformer>();
  int count = 0;
  for (int i = 0; i < all; ++i) {
    if (GetSrcObject<FbxDeformer>(i)->GetDeformerType() == type) ++count;
  }
  return count;
}

FbxDeformer* FbxGeometry::GetDeformer(int index, FbxDeformer::EDeformerType type,
                                      FbxStatus* status) const {
  const int all = GetSrcObjectCount<FbxDeformer>();
  for (int i = 0; i < all; ++i) {
    FbxDeformer* deformer = GetSrcObject<FbxDeformer>(i);
    if (deformer->GetDeformerType() == type && index-- == 0) return deformer;
  }
  if (status != nullptr) status->SetCode(FbxStatus::eIndexOutOfRange);
  return nullptr;
}

int FbxGeometry::GetShapeCount() const {
  int count = 0;
  const int blendShapes = GetSrcObjectCount<FbxBlendShape>();
  for (int b = 0; b < blendShapes; ++b) {
    const FbxBlendShape* blendShape = GetSrcObject<FbxBlendShape>(b);
    const int channels = blendShape->GetBlendShapeChannelCount();
    for (int c = 0; c < channels; ++c) {
      count += blendShape->GetBlendShapeChannel(c)->GetTargetShapeCount();
    }
  }
  return count;
}

FbxAnimCurve* FbxGeometry::GetShapeChannel(int blendShape, int channel, const FbxAnimLayer* layer,
                                           FbxStatus* status) const {
  const FbxBlendShape* shape = GetSrcObject<FbxBlendShape>(blendShape);
  const FbxBlendShapeChannel* target =
      shape == nullptr ? nullptr : shape->GetBlendShapeChannel(channel);
  if (target == nullptr) {
    if (status != nullptr) status->SetCode(FbxStatus::eIndexOutOfRange);
    return nullptr;
  }
  return target->DeformPercent().GetCurve(layer);
}
