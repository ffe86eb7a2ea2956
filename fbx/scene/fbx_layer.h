// Layers of per-element data of a geometry: normals, UVs, vertex colours, material indices. Each
// element says by its mapping what one entry belongs to (a corner, a control point ...), and by its
// reference mode whether entries stand in that order or are reached through an index array.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "fbx/math/fbx_vector.h"

class FbxLayerElement {
 public:
  enum EType {
    eUnknown = 0,
    eNormal = 1,
    eVertexColor = 2,
    eMaterial = 3,
    eUVFirst = 14,
    eUVLast = 30
  };
  enum EMappingMode { eNone = 0, eByControlPoint, eByPolygonVertex, eByPolygon, eByEdge, eAllSame };
  enum EReferenceMode { eDirect = 0, eIndex = 1, eIndexToDirect = 2 };

  // The material properties that textures feed.
  static constexpr std::array<const char*, 17> sTextureChannelNames = {"DiffuseColor",
                                                                       "DiffuseFactor",
                                                                       "EmissiveColor",
                                                                       "EmissiveFactor",
                                                                       "AmbientColor",
                                                                       "AmbientFactor",
                                                                       "SpecularColor",
                                                                       "SpecularFactor",
                                                                       "ShininessExponent",
                                                                       "NormalMap",
                                                                       "Bump",
                                                                       "TransparentColor",
                                                                       "TransparencyFactor",
                                                                       "ReflectionColor",
                                                                       "ReflectionFactor",
                                                                       "DisplacementColor",
                                                                       "VectorDisplacementColor"};

  EMappingMode GetMappingMode() const { return mappingMode; }
  EReferenceMode GetReferenceMode() const { return referenceMode; }
  const std::string& GetName() const { return name; }

  EMappingMode mappingMode = eNone;
  EReferenceMode referenceMode = eDirect;
  std::string name;
  std::vector<int> index;  // empty in the direct mode

 protected:
  ~FbxLayerElement() = default;
};

template <typename T>
class FbxLayerElementTemplate : public FbxLayerElement {
 public:
  std::vector<T> direct;

  // Entry `i` of the direct array, null when it is out of range.
  const T* At(int i) const {
    return i < 0 || static_cast<size_t>(i) >= direct.size() ? nullptr
                                                            : &direct[static_cast<size_t>(i)];
  }
};

using FbxLayerElementNormal = FbxLayerElementTemplate<FbxVector4>;
using FbxLayerElementUV = FbxLayerElementTemplate<FbxVector2>;
using FbxLayerElementVertexColor = FbxLayerElementTemplate<FbxColor>;
// Material numbers of the node stand in the index array; the direct array stays empty.
class FbxLayerElementMaterial : public FbxLayerElement {};

// At most one element of each kind. Elements are shared: a file may name one in several layers.
struct FbxLayer {
  static constexpr size_t kUVChannels = 17;

  std::shared_ptr<FbxLayerElementNormal> normals;
  std::shared_ptr<FbxLayerElementVertexColor> vertexColors;
  std::shared_ptr<FbxLayerElementMaterial> materials;
  std::array<std::shared_ptr<FbxLayerElementUV>, kUVChannels> uvs;
};

// The type numbers of the UV channels run from eUVFirst in the order of these names.
extern const std::array<const char*, FbxLayer::kUVChannels> kUVElementNames;

FbxLayerElement::EMappingMode MappingModeFromName(std::string_view name);
FbxLayerElement::EReferenceMode ReferenceModeFromName(std::string_view name);
