#include "fbx/reader/read_deformer.h"

#include "fbx/io/fbx_io.h"
#include "fbx/reader/read_properties.h"
#include "fbx/reader/read_vectors.h"
#include "fbx/scene/fbx_geometry.h"

void ReadSkin(FbxIO& io, FbxSkin& skin) {
  ReadProperties(io, skin);
  skin.deformAccuracy = io.FieldReadD("Link_DeformAcuracy");
  const std::string_view type = io.FieldReadC("SkinningType");
  if (type == "DualQuaternion") skin.skinningType = FbxSkin::eDualQuaternion;
  if (type != "Blend") return;
  skin.skinningType = FbxSkin::eBlend;
  io.FieldReadArray("Indexes", skin.blendIndices);
  io.FieldReadArray("BlendWeights", skin.blendWeights);
  skin.blendWeights.resize(skin.blendIndices.size());
}

void ReadCluster(FbxIO& io, FbxCluster& cluster) {
  ReadProperties(io, cluster);
  const std::string_view mode = io.FieldReadC("Mode");
  if (mode == "Additive") cluster.linkMode = FbxCluster::eAdditive;
  if (mode == "Total1") cluster.linkMode = FbxCluster::eTotalOne;
  io.FieldReadArray("Indexes", cluster.indices);
  io.FieldReadArray("Weights", cluster.weights);
  cluster.weights.resize(cluster.indices.size());

  FbxMatrix transform;
  FbxMatrix transformLink;
  ReadMatrix(io, "Transform", transform);
  ReadMatrix(io, "TransformLink", transformLink);
  cluster.transformLink = FbxAMatrix(transformLink);
  // The file holds the geometry's matrix relative to the bone's.
  cluster.transform = cluster.transformLink * FbxAMatrix(transform);
}

void ReadBlendShape(FbxIO& io, FbxBlendShape& blendShape) { ReadProperties(io, blendShape); }

void ReadBlendShapeChannel(FbxIO& io, FbxBlendShapeChannel& channel) {
  ReadProperties(io, channel);
  io.FieldReadArray("FullWeights", channel.fullWeights);
}

void ReadShape(FbxIO& io, FbxShape& shape) {
  io.FieldReadArray("Indexes", shape.indices);
  shape.offsets = ReadVectors(io, "Vertices", 0.0);
  shape.normalOffsets = ReadVectors(io, "Normals", 0.0);
  // What lies behind the last index belongs to no point. Without indices the shape is empty.
  for (std::vector<FbxVector4>* entries : {&shape.offsets, &shape.normalOffsets}) {
    if (entries->size() > shape.indices.size()) entries->resize(shape.indices.size());
  }
  ReadProperties(io, shape);
}
