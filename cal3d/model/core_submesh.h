// The triangles of one material: vertices, faces, the bones that move each vertex, and morph
// targets. Everything per vertex lies in flat arrays, since a submesh may hold a million vertices
// and an allocation for each would dominate the cost of an export.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "cal3d/model/core_morph_target.h"
#include "cal3d/model/sse_array.h"
#include "cal3d/model/vector.h"

class CalCoreSubmesh {
 public:
  struct Vertex {
    CalVector4 position;
    CalVector4 normal;
  };

  struct TextureCoordinate {
    float u = 0;
    float v = 0;
  };

  struct Influence {
    std::int32_t boneId = 0;
    float weight = 0;
    std::uint32_t lastInfluenceForThisVertex = 0;  // 1 on the last one of a vertex, else 0
  };

  struct Face {
    std::uint16_t vertexId[3] = {0, 0, 0};
  };

  // How many vertices the 16-bit indices of a face can tell apart. A submesh may hold more.
  static constexpr std::int32_t kAddressableVertices = 65536;

  // Makes room for that many vertices and faces; there are none yet. A negative number counts as 0.
  CalCoreSubmesh(std::int32_t vertexCount, bool hasTextureCoordinates, std::int32_t faceCount);

  // The slot of the material that the faces wear.
  std::int32_t coreMaterialThreadId = 0;

  // Appends a vertex; its index is the number of vertices before the call. `color` is 0xAARRGGBB.
  // The flags that close the run of influences are set here, whatever the arguments hold. A vertex
  // without influences keeps one of bone -1 and weight 0, so that every vertex has a run.
  void addVertex(const Vertex& vertex, std::uint32_t color,
                 const std::vector<Influence>& influences);

  // Stores the texture coordinate of a vertex that was added before; (0, 0) until then. Nothing
  // happens for another index, or if the submesh has no texture coordinates.
  void setTextureCoordinate(std::int32_t index, const TextureCoordinate& textureCoordinate);

  void addFace(const Face& face) { faces_.push_back(face); }

  void addMorphTarget(const boost::shared_ptr<CalCoreMorphTarget>& target) {
    morph_targets_.push_back(target);
  }

  bool hasTextureCoordinates() const { return has_texture_coordinates_; }
  const cal3d::SSEArray<Vertex>& vertices() const { return vertices_; }
  const std::vector<std::uint32_t>& vertexColors() const { return colors_; }
  // One for each vertex, or none at all.
  const std::vector<TextureCoordinate>& textureCoordinates() const { return texture_coordinates_; }
  // The runs of all vertices, one after the other.
  const std::vector<Influence>& influences() const { return influences_; }
  const std::vector<Face>& faces() const { return faces_; }
  const std::vector<boost::shared_ptr<CalCoreMorphTarget>>& morphTargets() const {
    return morph_targets_;
  }

 private:
  bool has_texture_coordinates_;
  cal3d::SSEArray<Vertex> vertices_;
  std::vector<std::uint32_t> colors_;
  std::vector<TextureCoordinate> texture_coordinates_;
  std::vector<Influence> influences_;
  std::vector<Face> faces_;
  std::vector<boost::shared_ptr<CalCoreMorphTarget>> morph_targets_;
};
