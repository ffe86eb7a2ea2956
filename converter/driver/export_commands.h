// The exports: one operation for each type of object, each running its exporter and reporting what
// came of it.
#pragma once

#include "converter/base/conversion_arguments.h"

// One file for each animation of the command's root that the names in `args` select; all that is
// left of the scene's analysis for later commands is in the animation cache.
void ExportAnimations(ConversionArguments& args);
void ExportMorphAnimations(ConversionArguments& args);
// One skeleton file for each name in `args`, in the output directory. No names, no files.
void ExportSkeletons(ConversionArguments& args);
// The skeleton that `args` names, to its output file. True if the file was written.
bool ExportSkeleton(ConversionArguments& args);

// False, after a report on standard output, if the root was missing or a file wasn't written.
bool ExportMeshes(ConversionArguments& args);
