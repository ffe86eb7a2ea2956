// A mesh: its submeshes, one for each material.
#pragma once

#include <vector>

#include <boost/shared_ptr.hpp>

#include "cal3d/model/core_submesh.h"

struct CalCoreMesh {
  std::vector<boost::shared_ptr<CalCoreSubmesh>> submeshes;
};
