// Materials of a model as materials of glTF, with their textures embedded.
//
// The files know textures alone: colours and plain opacities stand in them as made-up texture names
// ("COLOR-FF7F00-Skin-DiffuseColor", "ALPHA-7F7F7F-Glass-TransparencyFactor").
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "gltf/glb_builder.h"
#include "gltf/picture.h"
#include "gltf/view_model.h"

class MaterialTable {
 public:
  // Adds all materials of the model. Textures that can't be shown are told in `notes`.
  MaterialTable(GlbBuilder& glb, const ViewModel& model, const TextureFinder& find,
                ViewNotes& notes);

  struct Entry {
    size_t index;
    std::string name;
  };
  // The material that submeshes name by that number, null if there is none.
  const Entry* Find(int32_t id) const;

 private:
  struct Textures;
  // A texture whose alpha came from another one.
  struct Blend {
    size_t texture;
    Opacity opacity;
  };

  Json MaterialOf(const ViewMaterial& material);
  std::optional<size_t> TextureOf(const ViewMaterial& material, const std::string& name,
                                  Json& missing);
  void SetBase(const ViewMaterial& material, const Textures& textures, Json& json, Json& missing);
  // Null without an opacity, or when one of the pictures is damaged.
  const Blend* BlendOf(const ViewMaterial& material, const std::optional<TextureFile>& color,
                       const std::optional<TextureFile>& opacity);
  std::optional<TextureFile> Load(const ViewMaterial& material, const std::string& name,
                                  Json& missing);
  size_t AddTexture(const std::string& bytes, const std::string& mimeType);
  size_t CheckerTexture();

  GlbBuilder& glb_;
  const TextureFinder& find_;
  ViewNotes& notes_;
  std::map<int32_t, Entry> entries_;
  // Textures by the paths that they are made of; a texture in many materials is embedded once.
  std::map<std::string, size_t> plain_;
  std::map<std::pair<std::string, std::string>, Blend> blends_;
  std::optional<size_t> checker_;
};
