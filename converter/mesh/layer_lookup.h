// Which entry of a layer element belongs to a polygon corner. There are two rules, which differ in
// the mappings and the reference modes that they know; an index out of range finds nothing in
// either.
#pragma once

#include <vector>

#include "fbx/scene/fbx_mesh.h"

struct MeshCorner {
  int polygon;
  int polygonVertex;  // the corner's number over all polygons of the mesh
  int controlPoint;   // of the mesh; -1 for none
};

// The place of the corner in the order of the mapping; -1 for a mapping without one.
inline int MappedIndex(FbxLayerElement::EMappingMode mapping, const MeshCorner& corner) {
  switch (mapping) {
    case FbxLayerElement::eByControlPoint:
      return corner.controlPoint;
    case FbxLayerElement::eByPolygonVertex:
      return corner.polygonVertex;
    case FbxLayerElement::eByPolygon:
      return corner.polygon;
    case FbxLayerElement::eAllSame:
      return 0;
    case FbxLayerElement::eNone:
    case FbxLayerElement::eByEdge:
      break;
  }
  return -1;
}

// The entry that `position` leads to through the index array; null if it is out of range.
template <typename T>
const T* IndexedEntry(const FbxLayerElementTemplate<T>& element, int position) {
  if (position < 0 || static_cast<size_t>(position) >= element.index.size()) return nullptr;
  return element.At(element.index[static_cast<size_t>(position)]);
}

// The entry at a place of the mapping. Null without an element, for -1, and for a reference mode
// that is neither direct nor index to direct.
template <typename T>
const T* LayerElementLookup(const FbxLayerElementTemplate<T>* element, int index) {
  if (element == nullptr || index < 0) return nullptr;
  if (element->referenceMode == FbxLayerElement::eDirect) return element->At(index);
  if (element->referenceMode == FbxLayerElement::eIndexToDirect) {
    return IndexedEntry(*element, index);
  }
  return nullptr;
}

// The entry of the corner by the scene library's own rule: one entry for all is not known, but
// every reference mode other than direct goes through the index array.
template <typename T>
const T* CornerEntry(const FbxLayerElementTemplate<T>& element, const MeshCorner& corner) {
  if (element.mappingMode == FbxLayerElement::eAllSame) return nullptr;
  const int position = MappedIndex(element.mappingMode, corner);
  return element.referenceMode == FbxLayerElement::eDirect ? element.At(position)
                                                           : IndexedEntry(element, position);
}

inline bool HasKnownMapping(const FbxLayerElement& element) {
  return element.mappingMode != FbxLayerElement::eNone &&
         element.mappingMode != FbxLayerElement::eByEdge;
}

using NormalElements = std::vector<const FbxLayerElementNormal*>;

// The normal of the corner: of the elements, which must have a known mapping, the first that has a
// place for the corner decides. The zero vector when none does, or when that place is empty.
inline FbxVector4 getNormalFromElements(const NormalElements& elements, const MeshCorner& corner) {
  for (const FbxLayerElementNormal* element : elements) {
    const int index = MappedIndex(element->mappingMode, corner);
    if (index == -1) continue;
    const FbxVector4* normal = LayerElementLookup(element, index);
    return normal == nullptr ? FbxVector4(0.0, 0.0, 0.0) : *normal;
  }
  return {0.0, 0.0, 0.0};
}
