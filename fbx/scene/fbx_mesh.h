// Geometry that a node can carry: polygon meshes and the target shapes of their blend shapes.
#pragma once

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "fbx/core/fbx_string.h"
#include "fbx/io/fbx_stored_array.h"
#include "fbx/math/fbx_matrix.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_node.h"

class FbxAnimCurve;
class FbxAnimLayer;

// Per-element data of a geometry: normals, UVs, vertex colours, material indices. An element says
// by its mapping what one entry belongs to (a corner, a control point ...), and by its reference
// mode whether entries stand in that order or are reached through an index array.
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
  FbxStoredArray<int> index;  // empty in the direct mode

 protected:
  ~FbxLayerElement() = default;
};

template <typename T>
class FbxLayerElementTemplate : public FbxLayerElement {
 public:
  FbxStoredArray<T> direct;

  // Entry `i` of the direct array, null when it is out of range.
  const T* At(int i) const { return direct.At(i); }
};

class FbxLayerElementNormal : public FbxLayerElementTemplate<FbxDouble3> {
 public:
  // The fourth components, 1 behind the last. Nothing is made of them.
  FbxStoredArray<double> w;
};
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

class FbxLayerContainer : public FbxNodeAttribute {
  FBX_OBJECT(FbxLayerContainer)

  int GetLayerCount() const { return static_cast<int>(Layers().size()); }
  // Null past the end.
  FbxLayer* GetLayer(int index);
  const FbxLayer* GetLayer(int index) const;
  // Adds a layer and returns its index.
  int CreateLayer();

  // The elements of a kind over the layers in order; null past the end.
  int GetElementNormalCount() const;
  FbxLayerElementNormal* GetElementNormal(int index = 0) const;
  FbxLayerElementVertexColor* GetElementVertexColor(int index = 0) const;
  FbxLayerElementMaterial* GetElementMaterial(int index = 0) const;
  // UV elements of a channel (FbxLayerElement::eUVFirst and up), layer by layer; type 0 takes all
  // channels, within a layer by their numbers.
  int GetElementUVCount(int type = 0) const;
  FbxLayerElementUV* GetElementUV(int index = 0, int type = 0) const;
  // The first in that order with the name; null if there is none.
  FbxLayerElementUV* GetElementUV(const char* name) const;

 protected:
  virtual const std::vector<FbxLayer>& Layers() const { return layers_; }

 private:
  std::vector<FbxLayer> layers_;
};

// Control points with layers.
class FbxGeometryBase : public FbxLayerContainer {
  FBX_OBJECT(FbxGeometryBase)

  // Points in the geometry's own frame; the fourth component is 0 for points from a file.
  void SetControlPoints(FbxStoredArray<FbxDouble3> points);
  virtual const std::vector<FbxVector4>& ControlPoints() const;
  const FbxVector4* GetControlPoints() const { return ControlPoints().data(); }
  int GetControlPointsCount() const { return static_cast<int>(ControlPoints().size()); }
  // The origin for an index out of range.
  FbxVector4 GetControlPointAt(int index) const;

 protected:
  // As FbxMesh::Release.
  void ReleaseControlPoints() {
    if (storedPoints_.IsPacked()) controlPoints_.reset();
  }

 private:
  // The points are in the first until they are asked for, and in the second from then on.
  mutable FbxStoredArray<FbxDouble3> storedPoints_;
  mutable std::optional<std::vector<FbxVector4>> controlPoints_;
};

// The same with the deformers that act on it.
class FbxGeometry : public FbxGeometryBase {
  FBX_OBJECT(FbxGeometry)

  // Deformers of a type in connection order; null past the end.
  int GetDeformerCount(FbxDeformer::EDeformerType type) const;
  FbxDeformer* GetDeformer(int index, FbxDeformer::EDeformerType type,
                           FbxStatus* status = nullptr) const;
  // Target shapes over all blend shapes and channels.
  int GetShapeCount() const;
  // The curve that drives a channel's DeformPercent in a layer; null when there is none, with
  // `status` set for an index out of range.
  FbxAnimCurve* GetShapeChannel(int blendShape, int channel, const FbxAnimLayer* layer,
                                FbxStatus* status = nullptr) const;
};

// A target of a blend shape. It lists control points of the geometry that its blend shape deforms,
// with their offsets, as the file has them. Its own control points and normals are the geometry's
// with the offsets applied; they are made when first asked for, since a head may have hundreds of
// targets that nobody exports.
class FbxShape : public FbxGeometryBase {
  FBX_OBJECT(FbxShape)
  EType GetAttributeType() const override { return eShape; }

  int GetControlPointIndicesCount() const { return static_cast<int>(Indices().size()); }
  // The geometry that it is a target of; null while it is connected to none.
  FbxGeometry* GetBaseGeometry() const;

  // Own points where no offsets are listed, or there is no geometry to apply them to.
  const std::vector<FbxVector4>& ControlPoints() const override;

  // Of the base's control points, from the file and unchecked.
  std::span<const int> Indices() const { return indices.Values(); }
  // Parallel to the indices; may be shorter.
  std::span<const FbxDouble3> Offsets() const { return Listed(offsets); }
  std::span<const FbxDouble3> NormalOffsets() const { return Listed(normalOffsets); }
  FbxStoredArray<int> indices;
  // What lies behind the last index belongs to no point. Without indices the shape is empty.
  FbxStoredArray<FbxDouble3> offsets;
  FbxStoredArray<FbxDouble3> normalOffsets;

 protected:
  // Normals are by control point where the geometry's are, else by corner. Where the geometry has
  // none there are none.
  const std::vector<FbxLayer>& Layers() const override;

 private:
  std::span<const FbxDouble3> Listed(const FbxStoredArray<FbxDouble3>& values) const {
    return values.Values().first(std::min(values.Values().size(), Indices().size()));
  }

  mutable std::vector<FbxVector4> expandedPoints_;
  mutable std::vector<FbxLayer> expandedLayers_;
};

// A polygon mesh: control points, a table of polygons and layers of per-element data.
class FbxMesh : public FbxGeometry {
  FBX_OBJECT(FbxMesh)
  EType GetAttributeType() const override { return eMesh; }

  int GetPolygonCount() const { return static_cast<int>(Table().polygons.size()); }
  // Corners of a polygon; 0 out of range.
  int GetPolygonSize(int polygon) const;
  // The control point of a corner; -1 out of range. The index comes from the file and may point
  // past the control points.
  int GetPolygonVertex(int polygon, int corner) const;
  // The corners of all polygons, one after the other.
  const std::vector<int>& PolygonVertices() const { return Table().vertices; }
  int GetPolygonVertexCount() const { return static_cast<int>(PolygonVertices().size()); }
  // Where a polygon's corners begin in PolygonVertices; -1 out of range.
  int GetPolygonVertexIndex(int polygon) const;

  // Fills the polygon table from a file's array, in which a corner's bit complement ends its
  // polygon.
  void SetPolygonsFromFile(FbxStoredArray<int> indices);

  // The position of a corner in an element's direct array, or in its index array's target. False,
  // with `out` -1, when the mapping isn't by polygon, corner or control point, or an index is out
  // of range.
  bool GetPolygonVertexLayerElementIndex(const FbxLayerElement& element, int polygon, int corner,
                                         int& out) const;
  // From the first normal element; false if it has no normal for the corner.
  bool GetPolygonVertexNormal(int polygon, int corner, FbxVector4& out) const;
  // From the UV element of that name. An index of -1 means that the corner has no UV: true with
  // `unmapped` set and `out` untouched. False if there is no such element or its index fails.
  bool GetPolygonVertexUV(int polygon, int corner, const char* uvSetName, FbxVector2& out,
                          bool& unmapped) const;

  // Gives back the memory of points, polygons and layers as far as they can be decoded again when
  // they are asked for. What refers to them is invalid then.
  void Release();

 private:
  struct Polygon {
    int start;
    int size;
  };
  struct PolygonTable {
    std::vector<Polygon> polygons;
    std::vector<int> vertices;
  };
  const PolygonTable& Table() const { return table_.has_value() ? *table_ : MakeTable(); }
  const PolygonTable& MakeTable() const;

  // The same.
  mutable FbxStoredArray<int> storedPolygons_;
  mutable std::optional<PolygonTable> table_;
};
