// The manifest of a scene: its account as JSON.
#pragma once

#include <string>

#include "programs/veltrum-all/options.h"
#include "programs/veltrum-all/scene_report.h"

// The whole text, ending in a newline. Bytes that are no UTF-8 are replaced.
std::string ManifestText(const SceneReport& report, const Options& options);
