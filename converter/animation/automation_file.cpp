#include "converter/animation/automation_file.h"

#include "cal3d/io/file_kinds.h"
#include "converter/base/log.h"
#include "converter/base/names.h"
#include "converter/base/records.h"

void exportASingleAutomationFile(FbxWrapper& scene, const std::string& name,
                                 ConversionArguments& args, zevoMagicStops stops) {
  LOG_INFO(args.toString());
  if (args.outputFilename.empty()) {
    args.outputFilename = prependPathToFileName(args.directoryForOutputFiles,
                                                urlencode(name).append(kAnimationFile.extension));
  }
  args.exportObjectName = name;
  ExportAnimation(scene, args).Export(args, stops);
}
