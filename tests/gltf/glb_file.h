// A .glb taken apart again, as a viewer does it.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

using Point = std::array<double, 3>;

struct GlbFile {
  // A test failure unless the bytes are a .glb whose lengths agree.
  explicit GlbFile(const std::string& bytes);

  // All numbers of an accessor, sparse ones filled in.
  std::vector<double> Numbers(size_t accessor) const;
  std::vector<double> Numbers(const nlohmann::json& accessor) const {
    return Numbers(accessor.get<size_t>());
  }
  // The bytes of a picture.
  std::string Image(size_t image) const;
  // Where the vertices of a primitive of the mesh of a skinned node stand when no animation runs,
  // below the turn of node 0.
  std::vector<Point> SkinnedVertices(size_t node, size_t primitive) const;

  nlohmann::json json;
  std::string buffer;
};
