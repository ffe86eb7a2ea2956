// Reads the binary form. The source stands behind the magic; each function reads the version first
// and throws std::runtime_error for a block that isn't good. Bytes behind the content are left.
#pragma once

#include <boost/shared_ptr.hpp>

#include "cal3d/io/buffer_source.h"
#include "cal3d/model/core_animation.h"
#include "cal3d/model/core_mesh.h"
#include "cal3d/model/core_skeleton.h"

boost::shared_ptr<CalCoreSkeleton> ReadBinarySkeleton(CalBufferSource& source);
boost::shared_ptr<CalCoreMesh> ReadBinaryMesh(CalBufferSource& source);
boost::shared_ptr<CalCoreAnimation> ReadBinaryAnimation(CalBufferSource& source);
