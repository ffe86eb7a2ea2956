// A mesh: its submeshes, one for each material, with their morph targets; and the materials.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "cal3d/model/sse_array.h"
#include "cal3d/model/vector.h"

struct VertexOffset {
  int32_t vertexId = 0;
  CalVector4 position;  // morphed position minus base position
  CalVector4 normal;    // the morphed normal itself, no difference
};

// One shape that a submesh can be blended into, told by the vertices that it moves. A vertex that
// it leaves where it is has no offset, so a smile on a large head costs what the mouth costs.
class CalCoreMorphTarget {
 public:
  // `vertexCount` is the number of vertices of the submesh, which the ids in `offsets` index into.
  CalCoreMorphTarget(std::string name, int32_t /*vertexCount*/,
                     cal3d::SSEArray<VertexOffset> offsets)
      : name_(std::move(name)), offsets_(std::move(offsets)) {}

  const std::string& name() const { return name_; }
  const cal3d::SSEArray<VertexOffset>& vertexOffsets() const { return offsets_; }

 private:
  std::string name_;
  cal3d::SSEArray<VertexOffset> offsets_;
};

// The triangles of one material: vertices, faces, the bones that move each vertex, and morph
// targets. Everything per vertex lies in flat arrays, since a submesh may hold a million vertices
// and an allocation for each would dominate the cost of an export.
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
    int32_t boneId = 0;
    float weight = 0;
    uint32_t lastInfluenceForThisVertex = 0;  // 1 on the last one of a vertex, else 0
  };

  struct Face {
    uint16_t vertexId[3] = {0, 0, 0};
  };

  // How many vertices the 16-bit indices of a face can tell apart. A submesh may hold more.
  static constexpr int32_t kAddressableVertices = 65536;

  // Makes room for that many vertices and faces; there are none yet. A negative number counts as 0.
  CalCoreSubmesh(int32_t vertexCount, bool hasTextureCoordinates, int32_t faceCount);

  // The slot of the material that the faces wear.
  int32_t coreMaterialThreadId = 0;

  // Appends a vertex; its index is the number of vertices before the call. `color` is 0xAARRGGBB.
  // The flags that close the run of influences are set here, whatever the arguments hold. A vertex
  // without influences keeps one of bone -1 and weight 0, so that every vertex has a run.
  void addVertex(const Vertex& vertex, uint32_t color, const std::vector<Influence>& influences);

  // Stores the texture coordinate of a vertex that was added before; (0, 0) until then. Nothing
  // happens for another index, or if the submesh has no texture coordinates.
  void setTextureCoordinate(int32_t index, const TextureCoordinate& textureCoordinate);

  void addFace(const Face& face) { faces_.push_back(face); }

  void addMorphTarget(const boost::shared_ptr<CalCoreMorphTarget>& target) {
    morphTargets_.push_back(target);
  }

  bool hasTextureCoordinates() const { return hasTextureCoordinates_; }
  const cal3d::SSEArray<Vertex>& vertices() const { return vertices_; }
  const std::vector<uint32_t>& vertexColors() const { return colors_; }
  // One for each vertex, or none at all.
  const std::vector<TextureCoordinate>& textureCoordinates() const { return textureCoordinates_; }
  // The runs of all vertices, one after the other.
  const std::vector<Influence>& influences() const { return influences_; }
  const std::vector<Face>& faces() const { return faces_; }
  const std::vector<boost::shared_ptr<CalCoreMorphTarget>>& morphTargets() const {
    return morphTargets_;
  }

 private:
  bool hasTextureCoordinates_;
  cal3d::SSEArray<Vertex> vertices_;
  std::vector<uint32_t> colors_;
  std::vector<TextureCoordinate> textureCoordinates_;
  std::vector<Influence> influences_;
  std::vector<Face> faces_;
  std::vector<boost::shared_ptr<CalCoreMorphTarget>> morphTargets_;
};

struct CalCoreMesh {
  std::vector<boost::shared_ptr<CalCoreSubmesh>> submeshes;
};

// A material: its texture maps. The model has no colours; a plain colour reaches it as a map too.
struct CalCoreMaterial {
  struct Map {
    std::string filename;
    std::string type;
  };

  std::vector<Map> maps;
};
