#include "cal3d/model/core_mesh.h"

#include <algorithm>

CalCoreSubmesh::CalCoreSubmesh(int32_t vertexCount, bool hasTextureCoordinates, int32_t faceCount)
    : hasTextureCoordinates_(hasTextureCoordinates) {
  const uint32_t vertices = static_cast<uint32_t>(std::max(vertexCount, 0));
  vertices_.reserve(vertices);
  colors_.reserve(vertices);
  if (hasTextureCoordinates) textureCoordinates_.reserve(vertices);
  influences_.reserve(vertices);  // every vertex has one at least
  faces_.reserve(static_cast<size_t>(std::max(faceCount, 0)));
}

void CalCoreSubmesh::addVertex(const Vertex& vertex, uint32_t color,
                               const std::vector<Influence>& influences) {
  vertices_.push_back(vertex);
  colors_.push_back(color);
  if (hasTextureCoordinates_) textureCoordinates_.emplace_back();
  for (const Influence& influence : influences) {
    influences_.push_back({influence.boneId, influence.weight, 0});
  }
  if (influences.empty()) influences_.push_back({-1, 0, 0});
  influences_.back().lastInfluenceForThisVertex = 1;
}

void CalCoreSubmesh::setTextureCoordinate(int32_t index,
                                          const TextureCoordinate& textureCoordinate) {
  if (index < 0 || static_cast<size_t>(index) >= textureCoordinates_.size()) return;
  textureCoordinates_[static_cast<size_t>(index)] = textureCoordinate;
}
