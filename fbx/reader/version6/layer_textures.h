// Textures of materials in documents of version 6: a texture is connected to a model, and the layer
// elements of the model's mesh say for which channel and which polygons it is used.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

class FbxDocument;
class FbxIO;
class FbxMesh;

class FbxLayerTextures {
 public:
  // Reads the texture elements of a mesh's layers; the current list is the mesh's record.
  void Read(FbxIO& io, const FbxMesh& mesh);
  // Makes the textures sources of their materials' properties, once all else is connected.
  void Connect(const FbxDocument& document) const;

 private:
  // Some polygon of this material has this texture. Both are numbers among those of the model.
  struct Use {
    size_t channel;
    int32_t material;
    int32_t texture;
  };

  std::unordered_map<const FbxMesh*, std::vector<Use>> uses_;
};
