// The exports: one operation for each type of object, each running its exporter and reporting what
// came of it.
#pragma once

#include "converter/driver/conversion_arguments.h"

// One skeleton file for each name in `args`, in the output directory. No names, no files.
void ExportSkeletons(ConversionArguments& args);
// The skeleton that `args` names, to its output file. True if the file was written.
bool ExportSkeleton(ConversionArguments& args);

// False, after a report on standard output, if the root was missing or a file wasn't written.
bool ExportMeshes(ConversionArguments& args);
