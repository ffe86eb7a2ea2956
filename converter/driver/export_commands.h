// The exports: one operation for each type of object, each running its exporter and reporting what
// came of it.
#pragma once

#include "converter/base/conversion_arguments.h"
#include "converter/driver/session.h"

// One file for each animation of the command's root that the names in `args` select; what
// the scene's analysis found stays in the session for later commands.
void ExportAnimations(Session& session, const ConversionArguments& args);
void ExportMorphAnimations(Session& session, const ConversionArguments& args);
// One skeleton file for each name in `args`, in the output directory. No names, no files.
void ExportSkeletons(FbxWrapper& scene, const ConversionArguments& args);
// The skeleton that `args` names, to its output file. True if the file was written.
bool ExportSkeleton(FbxWrapper& scene, const ConversionArguments& args);

// False, after a report on standard output, if the root was missing or a file wasn't written.
bool ExportMeshes(FbxWrapper& scene, const ConversionArguments& args);
