// Where textures are looked for: beside the material's file, in the media and texture folders there
// ("Model.fbm", "Model_textures", "textures"), and in the folders that the user names, with theirs.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "gltf/view_model.h"

class TextureSearch {
 public:
  explicit TextureSearch(std::vector<std::string> folders) : folders_(std::move(folders)) {}

  // The first file of that name, in any case where none has its own. Folders in the name don't
  // count: they are those of the artist's machine. Nothing when no such file can be read.
  std::optional<TextureFile> Find(const ViewMaterial& material, const std::string& name);

 private:
  struct Folder {
    std::map<std::string, std::string> files;  // names in lower case, to paths
    std::vector<std::string> below;            // folders for textures
  };

  const Folder& List(const std::string& folder);
  std::optional<std::string> FindIn(const std::string& folder, const std::string& name);

  std::vector<std::string> folders_;
  std::map<std::string, Folder> lists_;
};
