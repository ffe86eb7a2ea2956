// The files of one model, loaded: what a picture of it is made from. Nothing here is checked for
// fitting together; making the .glb tells what doesn't.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "cal3d/model/core_animation.h"
#include "cal3d/model/core_mesh.h"
#include "cal3d/model/core_skeleton.h"

// An object with the name of the file that it came from, without folders.
template <typename Core>
struct ViewPart {
  std::string file;
  boost::shared_ptr<Core> core;
};

struct ViewMaterial : ViewPart<CalCoreMaterial> {
  int32_t id = 0;      // the number by which submeshes name it
  std::string folder;  // where it came from, with a separator at the end; empty for here
};

struct ViewModel {
  std::string name;
  ViewPart<CalCoreSkeleton> skeleton;  // may have no core
  std::vector<ViewPart<CalCoreMesh>> meshes;
  std::vector<ViewMaterial> materials;
  std::vector<ViewPart<CalCoreAnimation>> animations;
  std::vector<ViewPart<CalCoreMorphAnimation>> morphAnimations;
};

// What somebody who looks at the picture must know.
struct ViewNotes {
  struct MissingTexture {
    std::string material;
    std::string file;
  };

  std::vector<std::string> warnings;
  std::vector<MissingTexture> missingTextures;
};

struct TextureFile {
  std::string path;
  std::string bytes;
};

// Finds the texture that a material names; nothing if it isn't there.
using TextureFinder = std::function<std::optional<TextureFile>(const ViewMaterial& material,
                                                               const std::string& name)>;

// The last component of a path without its extension.
std::string FileStem(const std::string& path);
