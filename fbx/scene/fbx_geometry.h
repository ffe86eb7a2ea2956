// Geometry that a node can carry: control points with layers, and the deformers that act on them.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "fbx/core/fbx_status.h"
#include "fbx/scene/fbx_deformer.h"
#include "fbx/scene/fbx_layer.h"
#include "fbx/scene/fbx_node_attribute.h"

class FbxAnimCurve;
class FbxAnimLayer;

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

class FbxGeometryBase : public FbxLayerContainer {
  FBX_OBJECT(FbxGeometryBase)

  // Points in the geometry's own frame; the fourth component is 0 for points from a file.
  void SetControlPoints(std::vector<FbxVector4> points) { controlPoints_ = std::move(points); }
  virtual const std::vector<FbxVector4>& ControlPoints() const { return controlPoints_; }
  const FbxVector4* GetControlPoints() const { return ControlPoints().data(); }
  int GetControlPointsCount() const { return static_cast<int>(ControlPoints().size()); }
  // The origin for an index out of range.
  FbxVector4 GetControlPointAt(int index) const;

 private:
  std::vector<FbxVector4> controlPoints_;
};

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

  int GetControlPointIndicesCount() const { return static_cast<int>(indices.size()); }
  // The geometry that it is a target of; null while it is connected to none.
  FbxGeometry* GetBaseGeometry() const;

  // Own points where no offsets are listed, or there is no geometry to apply them to.
  const std::vector<FbxVector4>& ControlPoints() const override;

  std::vector<int> indices;               // of the base's control points
  std::vector<FbxVector4> offsets;        // parallel to the indices; may be shorter
  std::vector<FbxVector4> normalOffsets;  // the same

 protected:
  // Normals are by control point where the geometry's are, else by corner. Where the geometry has
  // none there are none.
  const std::vector<FbxLayer>& Layers() const override;

 private:
  mutable std::vector<FbxVector4> expandedPoints_;
  mutable std::vector<FbxLayer> expandedLayers_;
};
