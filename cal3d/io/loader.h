// Reads the model's objects back, in the binary form and in the XML form, which are
// told apart by their first bytes. The block is untrusted: no bytes can crash a loader, send it
// into a loop or make it allocate for a count that the block can't hold.
#pragma once

#include <boost/shared_ptr.hpp>

#include "cal3d/io/input_file.h"
#include "cal3d/model/core_animation.h"
#include "cal3d/model/core_mesh.h"
#include "cal3d/model/core_skeleton.h"

// Every operation returns a new object, never an empty pointer, and throws std::runtime_error with
// a text that tells what is wrong when the block isn't a good file of its kind.
struct CalLoader {
  static boost::shared_ptr<CalCoreSkeleton> loadCoreSkeleton(CalBufferSource source);
  static boost::shared_ptr<CalCoreMesh> loadCoreMesh(CalBufferSource source);
  static boost::shared_ptr<CalCoreMaterial> loadCoreMaterial(CalBufferSource source);
  static boost::shared_ptr<CalCoreAnimation> loadCoreAnimation(CalBufferSource source);
  static boost::shared_ptr<CalCoreMorphAnimation> loadCoreMorphAnimation(CalBufferSource source);
};
