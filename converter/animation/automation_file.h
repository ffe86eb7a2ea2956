// Export of one animation by the older route, for command loops.
#pragma once

#include <string>

#include "converter/animation/export_animation.h"

// Exports the stack `name`. Sets the object name in `args` and, if it has none, the output file:
// `name` with .xaf in the output directory, which so holds for later calls with the same record.
void exportASingleAutomationFile(FbxWrapper& scene, const std::string& name,
                                 ConversionArguments& args, zevoMagicStops stops);
