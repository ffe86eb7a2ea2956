// The older route to animation files. No command reaches it; tools were built on what it writes, so
// it stays as it was. Its operations are the members of ExportAnimation from Export on: stack by
// stack, they take curves with fewer keys, know no axis conversion, count time by the command's
// frame rate and make a track for each layer.
#pragma once

#include <string>

#include "converter/animation/export_animation.h"

// Exports the stack `name`. Sets the object name in `args` and, if it has none, the output file:
// `name` with .xaf in the output directory, which so holds for later calls with the same record.
void exportASingleAutomationFile(FbxWrapper& scene, const std::string& name,
                                 ConversionArguments& args, zevoMagicStops stops);
