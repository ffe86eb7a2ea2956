#include "converter/driver/command_set.h"

#include <exception>
#include <new>
#include <stdexcept>
#include <string>

#include "cal3d/io/input_file.h"
#include "cal3d/io/loader.h"
#include "cal3d/io/saver.h"
#include "converter/animation/export_animation.h"
#include "converter/base/complaint.h"
#include "converter/base/log.h"
#include "converter/base/records.h"
#include "converter/driver/command_checks.h"
#include "converter/driver/export_commands.h"
#include "converter/driver/list_commands.h"
#include "converter/driver/material_export.h"
#include "converter/driver/usage.h"
#include "converter/scene/fbx_wrapper.h"

namespace {

// Whether a listing shows the type.
bool Lists(const ConversionArguments& args, ObjectType type) {
  return args.type == LIST_ALL_OBJECT || (args.type & type) != 0;
}

void List(FbxWrapper& scene, ConversionArguments& args) {
  if (Lists(args, NODE_OBJECT)) ListNodes(scene, args);
  // The root that is found for the meshes is the root for what follows.
  if (Lists(args, MESH_OBJECT)) args.skeletonRootPath = ListMeshes(scene, args);
  // One listing for both kinds, which looks at the type itself.
  if (Lists(args, ANIM_OBJECT) || Lists(args, MORPHANIM_OBJECT)) {
    ExportAnimation(scene, args).List();
  }
  if (Lists(args, TEXTURE_OBJECT)) PrintTextureList(scene, args);
}

// The steps run in a fixed order that callers know from the records. Returns the exit status.
int Export(Session& session, const ConversionArguments& args) {
  FbxWrapper& scene = session.SceneOf(args);
  if ((args.type & ANIM_OBJECT) != 0) ExportAnimations(session, args);
  if ((args.type & MORPHANIM_OBJECT) != 0) ExportMorphAnimations(session, args);
  if ((args.type & NODE_OBJECT) != 0) ExportSkeletons(scene, args);
  const bool meshesFailed = (args.type & MESH_OBJECT) != 0 && !ExportMeshes(scene, args);
  if ((args.type & TEXTURE_OBJECT) != 0) ExportMaterials(scene, args);
  return meshesFailed ? 1 : 0;
}

// What became of the command.
std::string PlainWords(const std::exception& exception, const ConversionArguments& args) {
  if (const auto* missing = dynamic_cast<const FbxMissingException*>(&exception)) {
    return missing->complaint;
  }
  if (dynamic_cast<const std::bad_alloc*>(&exception) != nullptr) {
    return "there is not enough memory for '" + args.inputFilename + "'";
  }
  return exception.what();
}

// A command that needs a scene; it is loaded whatever the mode is.
int RunOnScene(Session& session, ConversionArguments& args) {
  FbxWrapper& scene = session.SceneOf(args);
  CheckCommand(scene, args);
  if (args.mode == EXPORT_MODE) return Export(session, args);
  if (args.mode == LIST_MODE) List(scene, args);
  return 0;
}

}  // namespace

int processCommandSet(ConversionArguments args, Session& session) {
  LOG_INFO("processCommandSet: " + args.toString());
  if (args.option == ConversionArguments::HELP) {
    PrintHelp();
    if (args.verbosity != 0) PrintExportHelp();
    return 0;
  }
  if (args.verbosity != 0) Print(args.toString());
  if (args.mode == CAL3D_2_TEXT_MODE) return Cal3d2Text(args) ? 1 : 0;
  try {
    return RunOnScene(session, args);
  } catch (const std::exception& exception) {
    // What the command left unfinished goes with its scene, and makes room for the report.
    session.DropScene();
    AddError(std::string("exception occurred: [") + exception.what() + "]\n");
    LOG_INFO("processCommandSet: " + args.toString());
    AddError(args.toString());
    // A command without a file is told where its words were read.
    if (!args.inputFilename.empty()) Complain(PlainWords(exception, args));
    return 0;
  }
}

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
