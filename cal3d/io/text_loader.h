// Reads the XML form. Throws std::runtime_error for a text that isn't a good file of its kind.
// Elements and attributes that we don't know are passed over.
#pragma once

#include <string_view>

#include <boost/shared_ptr.hpp>

#include "cal3d/model/core_animation.h"
#include "cal3d/model/core_mesh.h"
#include "cal3d/model/core_skeleton.h"

boost::shared_ptr<CalCoreSkeleton> ReadTextSkeleton(std::string_view text);
boost::shared_ptr<CalCoreMesh> ReadTextMesh(std::string_view text);
boost::shared_ptr<CalCoreAnimation> ReadTextAnimation(std::string_view text);
