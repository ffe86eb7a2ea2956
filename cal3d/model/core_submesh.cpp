#include "cal3d/model/core_submesh.h"

#include <algorithm>

CalCoreSubmesh::CalCoreSubmesh(std::int32_t vertexCount, bool hasTextureCoordinates,
                               std::int32_t faceCount)
    : has_texture_coordinates_(hasTextureCoordinates) {
  const std::uint32_t vertices = static_cast<std::uint32_t>(std::max(vertexCount, 0));
  vertices_.reserve(vertices);
  colors_.reserve(vertices);
  if (hasTextureCoordinates) texture_coordinates_.reserve(vertices);
  influences_.reserve(vertices);  // every vertex has one at least
  faces_.reserve(static_cast<std::size_t>(std::max(faceCount, 0)));
}

void CalCoreSubmesh::addVertex(const Vertex& vertex, std::uint32_t color,
                               const std::vector<Influence>& influences) {
  vertices_.push_back(vertex);
  colors_.push_back(color);
  if (has_texture_coordinates_) texture_coordinates_.emplace_back();
  for (const Influence& influence : influences) {
    influences_.push_back({influence.boneId, influence.weight, 0});
  }
  if (influences.empty()) influences_.push_back({-1, 0, 0});
  influences_.back().lastInfluenceForThisVertex = 1;
}

void CalCoreSubmesh::setTextureCoordinate(std::int32_t index,
                                          const TextureCoordinate& textureCoordinate) {
  if (index < 0 || static_cast<std::size_t>(index) >= texture_coordinates_.size()) return;
  texture_coordinates_[static_cast<std::size_t>(index)] = textureCoordinate;
}
