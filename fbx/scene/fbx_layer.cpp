#include "fbx/scene/fbx_layer.h"

const std::array<const char*, FbxLayer::kUVChannels> kUVElementNames = {
    "LayerElementUV",
    "LayerElementDiffuseFactorUV",
    "LayerElementEmissiveUV",
    "LayerElementEmissiveFactorUV",
    "LayerElementAmbientUV",
    "LayerElementAmbientFactorUV",
    "LayerElementSpecularUV",
    "LayerElementSpecularFactorUV",
    "LayerElementShininessUV",
    "LayerElementNormalMapUV",
    "LayerElementBumpUV",
    "LayerElementTransparentUV",
    "LayerElementTransparencyFactorUV",
    "LayerElementReflectionUV",
    "LayerElementReflectionFactorUV",
    "LayerElementDisplacementUV",
    "LayerElementVectorDisplacementUV",
};

FbxLayerElement::EMappingMode MappingModeFromName(std::string_view name) {
  // Some writers spell it right.
  if (name == "ByVertice" || name == "ByVertex") return FbxLayerElement::eByControlPoint;
  if (name == "ByPolygonVertex") return FbxLayerElement::eByPolygonVertex;
  if (name == "ByPolygon") return FbxLayerElement::eByPolygon;
  if (name == "ByEdge") return FbxLayerElement::eByEdge;
  if (name == "AllSame") return FbxLayerElement::eAllSame;
  return FbxLayerElement::eNone;
}

FbxLayerElement::EReferenceMode ReferenceModeFromName(std::string_view name) {
  if (name == "Index") return FbxLayerElement::eIndex;
  if (name == "IndexToDirect") return FbxLayerElement::eIndexToDirect;
  return FbxLayerElement::eDirect;
}
