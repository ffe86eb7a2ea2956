#include "converter/driver/cal3d_to_text.h"

#include <stdexcept>
#include <string>

#include "cal3d/io/input_file.h"
#include "cal3d/io/loader.h"
#include "cal3d/io/saver.h"
#include "converter/base/complaint.h"

namespace {

// Passes `saved` on; a failure is told.
bool Told(bool saved, const ConversionArguments& args) {
  if (!saved) ComplainOfOutput(args.outputFilename);
  return saved;
}

bool Convert(const CalBufferSource& source, const ConversionArguments& args) {
  if ((args.type & NODE_OBJECT) != 0) {
    const auto loaded = CalLoader::loadCoreSkeleton(source);
    CalCoreSkeleton skeleton(loaded->coreBones);
    skeleton.sceneAmbientColor = loaded->sceneAmbientColor;
    return Told(CalSaver::saveCoreSkeleton(args.outputFilename, &skeleton), args);
  }
  if ((args.type & MESH_OBJECT) != 0) {
    const CalCoreMesh mesh{CalLoader::loadCoreMesh(source)->submeshes};
    return Told(CalSaver::saveCoreMesh(args.outputFilename, &mesh), args);
  }
  if ((args.type & ANIM_OBJECT) != 0) {
    const auto loaded = CalLoader::loadCoreAnimation(source);
    const CalCoreAnimation animation{loaded->duration, loaded->tracks};
    return Told(CalSaver::saveCoreAnimation(args.outputFilename, &animation), args);
  }
  Complain("'" + args.outputFilename + "' isn't written: --cal3d2text takes skel, mesh or anim");
  return false;
}

}  // namespace

bool Cal3d2Text(const ConversionArguments& args) {
  const std::string bytes = ReadInputFile(args.inputFilename);
  try {
    return Convert(CalBufferSource(bytes.data(), bytes.size()), args);
  } catch (const std::runtime_error& fault) {
    throw std::runtime_error("'" + args.inputFilename + "': " + fault.what());
  }
}
