#include "fbx/reader/target_shapes.h"

#include <memory>
#include <vector>

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
