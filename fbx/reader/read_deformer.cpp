// Skins, blend shapes and what belongs to them.
#include <memory>
#include <vector>

#include "fbx/io/fbx_io.h"
#include "fbx/reader/read_records.h"
#include "fbx/scene/fbx_geometry.h"
#include "fbx/scene/fbx_mesh.h"
#include "fbx/scene/fbx_scene.h"

namespace {

// The sum of the normals of the polygon's fan of triangles, each twice its triangle's area long.
FbxVector4 PolygonNormal(const FbxMesh& mesh, int polygon) {
  FbxVector4 normal(0.0, 0.0, 0.0, 0.0);
  const int size = mesh.GetPolygonSize(polygon);
  const FbxVector4 first = mesh.GetControlPointAt(mesh.GetPolygonVertex(polygon, 0));
  for (int i = 1; i + 1 < size; ++i) {
    const FbxVector4 a = mesh.GetControlPointAt(mesh.GetPolygonVertex(polygon, i));
    const FbxVector4 b = mesh.GetControlPointAt(mesh.GetPolygonVertex(polygon, i + 1));
    normal += (a - first).CrossProduct(b - first);
  }
  return normal;
}

// The normal of a control point is the sum of its polygons' normals, so that larger ones count for
// more.
void GenerateNormals(FbxMesh& mesh) {
  const std::vector<int>& corners = mesh.PolygonVertices();
  std::vector<FbxVector4> byPoint(static_cast<size_t>(mesh.GetControlPointsCount()),
                                  FbxVector4(0.0, 0.0, 0.0, 0.0));
  for (int polygon = 0; polygon < mesh.GetPolygonCount(); ++polygon) {
    const FbxVector4 normal = PolygonNormal(mesh, polygon);
    const int start = mesh.GetPolygonVertexIndex(polygon);
    for (int i = start; i < start + mesh.GetPolygonSize(polygon); ++i) {
      const auto point = static_cast<size_t>(corners[static_cast<size_t>(i)]);
      if (point < byPoint.size()) byPoint[point] += normal;
    }
  }
  auto normals = std::make_shared<FbxLayerElementNormal>();
  normals->mappingMode = FbxLayerElement::eByPolygonVertex;
  normals->direct.reserve(corners.size());
  for (const int corner : corners) {
    const auto point = static_cast<size_t>(corner);
    FbxVector4 normal = point < byPoint.size() ? byPoint[point] : FbxVector4(0.0, 0.0, 0.0, 0.0);
    normal.Normalize();
    normals->direct.push_back(normal);
  }
  if (mesh.GetLayerCount() == 0) mesh.CreateLayer();
  mesh.GetLayer(0)->normals = std::move(normals);
}

}  // namespace

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

void RebuildTargetShapes(FbxScene& scene) {
  const int count = scene.GetSrcObjectCount<FbxShape>();
  for (int i = 0; i < count; ++i) {
    const FbxShape& shape = *scene.GetSrcObject<FbxShape>(i);
    if (shape.normalOffsets.empty()) continue;
    FbxGeometry* base = shape.GetBaseGeometry();
    if (base != nullptr && base->Is<FbxMesh>() && base->GetElementNormalCount() == 0) {
      GenerateNormals(static_cast<FbxMesh&>(*base));
    }
  }
}
