// A material: its texture maps. The model has no colours; a plain colour reaches it as a map too.
#pragma once

#include <string>
#include <vector>

struct CalCoreMaterial {
  struct Map {
    std::string filename;
    std::string type;
  };

  std::vector<Map> maps;
};
