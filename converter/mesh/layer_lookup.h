// Which entry of a layer element belongs to a polygon corner. There are two rules, which differ in
// the mappings and the reference modes that they know; an index out of range finds nothing in
// either.
#pragma once

#include <cstddef>
#include <span>
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
  const int* index = element.index.At(position);
  return index == nullptr ? nullptr : element.At(*index);
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

// The entries of an element by corner, by the scene library's own rule: one entry for all is not
// known, but every reference mode other than direct goes through the index array. Corners are
// looked up by the million, so the element's arrays are looked up but once; they must stay decoded.
template <typename T>
class CornerEntries {
 public:
  explicit CornerEntries(const FbxLayerElementTemplate<T>& element)
      : mapping_(element.mappingMode == FbxLayerElement::eAllSame ? FbxLayerElement::eNone
                                                                  : element.mappingMode),
        isDirect_(element.referenceMode == FbxLayerElement::eDirect),
        index_(element.index.Values()),
        direct_(element.direct.Values()) {}

  // Null if there is none.
  const T* At(const MeshCorner& corner) const {
    // As a size, a negative position is out of range, too.
    auto position = static_cast<size_t>(MappedIndex(mapping_, corner));
    if (!isDirect_) {
      if (position >= index_.size()) return nullptr;
      position = static_cast<size_t>(index_[position]);
    }
    return position < direct_.size() ? &direct_[position] : nullptr;
  }

 private:
  FbxLayerElement::EMappingMode mapping_;
  bool isDirect_;
  std::span<const int> index_;
  std::span<const T> direct_;
};

inline bool HasKnownMapping(const FbxLayerElement& element) {
  return element.mappingMode != FbxLayerElement::eNone &&
         element.mappingMode != FbxLayerElement::eByEdge;
}

using NormalElements = std::vector<const FbxLayerElementNormal*>;

// The normal of the corner: of the elements, which must have a known mapping, the first that has a
// place for the corner decides. The zero vector when none does, or when that place is empty.
inline const FbxDouble3& getNormalFromElements(const NormalElements& elements,
                                               const MeshCorner& corner) {
  static constexpr FbxDouble3 kNone{};
  for (const FbxLayerElementNormal* element : elements) {
    const int index = MappedIndex(element->mappingMode, corner);
    if (index == -1) continue;
    const FbxDouble3* normal = LayerElementLookup<FbxDouble3>(element, index);
    return normal == nullptr ? kNone : *normal;
  }
  return kNone;
}
