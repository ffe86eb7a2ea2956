#include "converter/driver/export_commands.h"

#include <string>
#include <vector>

#include "converter/driver/log.h"
#include "converter/driver/names.h"
#include "converter/driver/records.h"
#include "converter/scene/fbx_wrapper.h"
#include "converter/skeleton/export_skeleton.h"
#include "converter/skeleton/skeleton_roots.h"

namespace {

void ExportSkeletonNamed(const std::string& name, ConversionArguments args) {
  if (args.outputFilename.empty()) {
    args.outputFilename =
        prependPathToFileName(args.directoryForOutputFiles, urlencode(name) + ".xsf");
  }
  args.exportObjectName = name;
  LOG_INFO(args.toString());
  const std::string shownName = encodeName(args.encodeNames, name);
  if (ExportSkeleton(args)) {
    AddOutput("SKELETON", shownName, false);
    AddOutput("FILENAME", args.outputFilename, true);
  } else {
    // Callers know this text, the wrong word included.
    AddError("Failed to create file " + args.outputFilename + " for ANIMATION " + shownName);
  }
}

}  // namespace

void ExportSkeletons(ConversionArguments& args) {
  // Sets the skeleton roots of the meshes, for whoever asks after this.
  FbxWrapper::getInstance(args)->BuildMeshesOnSkeletonsList(args);
  if (args.commandVersion == 1) {
    ExportSkeletonNamed(args.skeletonRootPath, args);
  } else {
    for (const std::string& name : args.exportObjectNames) ExportSkeletonNamed(name, args);
  }
}

bool ExportSkeleton(ConversionArguments& args) {
  FbxNode* const root = GetSkeletonRoot(FbxWrapper::getInstance(args), args);
  return root != nullptr && ExportCal3DSkeleton(root, args.outputFilename, args);
}
