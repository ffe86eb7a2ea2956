// A polygon mesh: control points, a table of polygons and layers of per-element data.
#pragma once

#include <vector>

#include "fbx/scene/fbx_geometry.h"

class FbxMesh : public FbxGeometry {
  FBX_OBJECT(FbxMesh)
  EType GetAttributeType() const override { return eMesh; }

  int GetPolygonCount() const { return static_cast<int>(polygons_.size()); }
  // Corners of a polygon; 0 out of range.
  int GetPolygonSize(int polygon) const;
  // The control point of a corner; -1 out of range. The index comes from the file and may point
  // past the control points.
  int GetPolygonVertex(int polygon, int corner) const;
  // The corners of all polygons, one after the other.
  const std::vector<int>& PolygonVertices() const { return polygonVertices_; }
  int GetPolygonVertexCount() const { return static_cast<int>(polygonVertices_.size()); }
  // Where a polygon's corners begin in PolygonVertices; -1 out of range.
  int GetPolygonVertexIndex(int polygon) const;

  // Fills the polygon table from a file's array, in which a corner's bit complement ends its
  // polygon.
  void SetPolygonsFromFile(std::vector<int> indices);

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

 private:
  struct Polygon {
    int start;
    int size;
  };
  std::vector<Polygon> polygons_;
  std::vector<int> polygonVertices_;
};
